#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/ContextMenuPanel.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/TestMain.h"
#include "tests/support/TypedAnswers.h"

#include <QMenu>
#include <QWindow>

namespace {

QPoint centre(const QAbstractItemView* view, const QModelIndex& index)
{
    return view->visualRect(index).center();
}

} // namespace

/// How the tree and the list ask for the context menu: what it is for, and where it is shown.
class TestMPanelContextMenuSlots : public QObject, private ContextMenuPanel
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }

    void treeSlotTakesTheFolder();
    void treeSlotOffersFolderEntries();
    void treeSlotOnEmptySpace();
    void treeSlotPlace();
    void newFolderInTheTreesFolder();
    void listSlotTakesTheItem_data();
    void listSlotTakesTheItem();
    void listSlotOnEmptySpace();
    void listSlotPlace();
    void renameOfTheListsItem();
    void rightClickInTheTree();
    void rightClickInTheList();
};

void TestMPanelContextMenuSlots::treeSlotTakesTheFolder()
{
    const QString beta = root + QStringLiteral("/beta.d");
    const QPersistentModelIndex index = panel->treeModel->index(beta);
    const QPoint pos = centre(panel->tree, index);
    QCOMPARE(panel->tree->indexAt(pos), QModelIndex(index));
    const QStringList namesBefore = listNames(panel);
    const QAbstractItemModel* modelBefore = panel->listModel;
    gsLastPath1 = QStringLiteral("untouched");
    panel->contextPath = QStringLiteral("/before");

    shownBy([&] { panel->ShowContextMenuTree(pos); });
    QCOMPARE(panel->currentTreeIndex, index);
    QCOMPARE(panel->currentPath, beta);
    QCOMPARE(panel->contextPath, beta);

    // The listing shows what it did.
    QCOMPARE(static_cast<const QAbstractItemModel*>(panel->listModel), modelBefore);
    QCOMPARE(panel->listModel->rootPath(), root);
    QCOMPARE(listNames(panel), namesBefore);
    QCOMPARE(gsLastPath1, QStringLiteral("untouched"));
}

void TestMPanelContextMenuSlots::treeSlotOffersFolderEntries()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("file"), QStringLiteral("|*|")),
        entry(QStringLiteral("suffix"), QStringLiteral("|d|"))};
    const QModelIndex index = panel->treeModel->index(root + QStringLiteral("/beta.d"));
    const Shown shown = shownBy([&] { panel->ShowContextMenuTree(centre(panel->tree, index)); });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("folder")});
}

void TestMPanelContextMenuSlots::treeSlotOnEmptySpace()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("file"), QStringLiteral("|*|"))};
    const QPersistentModelIndex indexBefore = panel->currentTreeIndex;
    panel->contextPath = QStringLiteral("/before");
    const QPoint pos(20, panel->tree->viewport()->height() - 4);
    QVERIFY(!panel->tree->indexAt(pos).isValid());
    const Shown shown = shownBy([&] { panel->ShowContextMenuTree(pos); });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("folder")});
    QCOMPARE(panel->contextPath, QString());
    QCOMPARE(panel->currentPath, root); // the panel stays where it is
    QCOMPARE(panel->currentTreeIndex, indexBefore);
}

void TestMPanelContextMenuSlots::treeSlotPlace()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|"))};
    const QPoint pos = centre(panel->tree, panel->treeModel->index(root + QStringLiteral("/alpha")));
    const QPoint expected = panel->tree->mapToGlobal(pos);
    QVERIFY(expected != panel->tree->viewport()->mapToGlobal(pos));
    QCOMPARE(shownBy([&] { panel->ShowContextMenuTree(pos); }).place, expected);
}

void TestMPanelContextMenuSlots::newFolderInTheTreesFolder()
{
    gstMenu = {entry(QStringLiteral("New"), QStringLiteral("|.|"), CommandNewDir)};
    ModalAnswers answers;
    answers.meet<QMenu>([](QMenu* menu) { choose(menu, 0); });
    typeNewFolder(answers, QStringLiteral("made"));
    panel->ShowContextMenuTree(
        centre(panel->tree, panel->treeModel->index(root + QStringLiteral("/beta.d"))));
    QCOMPARE(dir->tree(QStringLiteral("root/beta.d")), QStringList{QStringLiteral("made/")});
    QVERIFY(!dir->exists(QStringLiteral("root/made")));
}

void TestMPanelContextMenuSlots::listSlotTakesTheItem_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("expected");
    QTest::newRow("file") << "Report.TXT" << 0 << "file,suffix";
    QTest::newRow("file, another column") << "Report.TXT" << 3 << "file,suffix";
    QTest::newRow("file without a dot") << "Makefile" << 1 << "file";
    QTest::newRow("folder") << "alpha" << 0 << "folder";
    QTest::newRow("folder with a suffix") << "beta.d" << 2 << "folder";
    QTest::newRow("link to a folder") << "zlink" << 0 << "folder";
    QTest::newRow("the folder above") << ".." << 0 << "folder";
}

void TestMPanelContextMenuSlots::listSlotTakesTheItem()
{
    QFETCH(QString, name);
    QFETCH(int, column);
    QFETCH(QString, expected);
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("file"), QStringLiteral("|*|")),
        entry(QStringLiteral("suffix"), QStringLiteral("|txt|d|"))};
    const QPersistentModelIndex treeIndex = panel->currentTreeIndex;
    const QModelIndex index = listIndex(panel, name, column);
    QVERIFY(index.isValid());
    const Shown shown = shownBy([&] { panel->ShowContextMenuList(centre(panel->list, index)); });
    QCOMPARE(shown.entries.join(QLatin1Char(',')), expected);
    QCOMPARE(panel->contextPath, root + QLatin1Char('/') + name);
    QCOMPARE(panel->currentPath, root);
    QCOMPARE(panel->currentTreeIndex, treeIndex);
}

void TestMPanelContextMenuSlots::listSlotOnEmptySpace()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("file"), QStringLiteral("|*|"))};
    panel->contextPath = QStringLiteral("/before");
    const QPoint pos(20, panel->list->viewport()->height() - 4);
    QVERIFY(!panel->list->indexAt(pos).isValid());
    const Shown shown = shownBy([&] { panel->ShowContextMenuList(pos); });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("folder")});
    QCOMPARE(panel->contextPath, QString());
    QCOMPARE(panel->currentPath, root);
}

void TestMPanelContextMenuSlots::listSlotPlace()
{
    gstMenu = {entry(QStringLiteral("file"), QStringLiteral("|*|"))};
    const QPoint pos = centre(panel->list, listIndex(panel, QStringLiteral("Makefile")));
    const QPoint expected = panel->list->viewport()->mapToGlobal(pos);
    QVERIFY(expected != panel->list->mapToGlobal(pos));
    QCOMPARE(shownBy([&] { panel->ShowContextMenuList(pos); }).place, expected);
}

void TestMPanelContextMenuSlots::renameOfTheListsItem()
{
    gstMenu = {entry(QStringLiteral("Rename"), QStringLiteral("|*|"), CommandRename)};
    ModalAnswers answers;
    answers.meet<QMenu>([](QMenu* menu) { choose(menu, 0); });
    typeNewName(answers, QStringLiteral("Renamed"));
    panel->ShowContextMenuList(centre(panel->list, listIndex(panel, QStringLiteral("Makefile"))));
    QVERIFY(dir->exists(QStringLiteral("root/Renamed")));
    QVERIFY(!dir->exists(QStringLiteral("root/Makefile")));
}

void TestMPanelContextMenuSlots::rightClickInTheTree()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|"))};
    const QString alpha = root + QStringLiteral("/alpha");
    const QPoint pos = centre(panel->tree, panel->treeModel->index(alpha));
    const QPoint inWindow = panel->tree->viewport()->mapTo(&window->window, pos);
    const Shown shown = shownBy([&] {
        QTest::mouseClick(window->window.windowHandle(), Qt::RightButton, Qt::NoModifier, inWindow);
        QTRY_COMPARE(panel->contextPath, alpha);
    });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("folder")});
    QCOMPARE(panel->currentPath, alpha);
    QCOMPARE(panel->currentTreeIndex, QPersistentModelIndex(panel->treeModel->index(alpha)));
}

void TestMPanelContextMenuSlots::rightClickInTheList()
{
    gstMenu = {entry(QStringLiteral("file"), QStringLiteral("|*|"))};
    const QPoint pos = centre(panel->list, listIndex(panel, QStringLiteral("Makefile"), 1));
    const QPoint inWindow = panel->list->viewport()->mapTo(&window->window, pos);
    const Shown shown = shownBy([&] {
        QTest::mouseClick(window->window.windowHandle(), Qt::RightButton, Qt::NoModifier, inWindow);
        QTRY_COMPARE(panel->contextPath, root + QStringLiteral("/Makefile"));
    });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("file")});
    QCOMPARE(shown.place, panel->list->viewport()->mapToGlobal(pos));
}

VANTREL_TEST_MAIN(TestMPanelContextMenuSlots)
#include "tst_MPanelContextMenuSlots.moc"
