#include "app/aGlobal.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestMain.h"
#include "tests/support/TwoPanels.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHeaderView>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QSignalSpy>
#include <QSplitter>

#include <memory>
#include <string>

/// Keys for what the mouse does in a panel.
class TestMPanelShortcuts : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void openFolderAndUp();
    void openNothing();
    void openInTheTree();
    void openTheRootReadsItAgain();
    void contextMenu_data();
    void contextMenu();
    void sortByColumn_data();
    void sortByColumn();
    void copyToTheOtherPanel();
    void moveToTheOtherPanel();
    void copyTheFolderOfTheTree();
    void nothingToSend();
    void nowhereToSend();
    void splitterByKeys();
    void columnsByKeys();
    void keysStayInTheirPanel();
    void returnStaysWithTheViews_data();
    void returnStaysWithTheViews();
    void plusAndMinusStayWithTheTree_data();
    void plusAndMinusStayWithTheTree();
    void typedLettersStillSearch_data();
    void typedLettersStillSearch();
    void nothingBehindAMenu();
    void commandsDoNotRepeat();

private:
    MPanel* other() const { return panels->other; }

    std::unique_ptr<TwoPanels> panels;
    TestDir* dir = nullptr;
    MPanel* panel = nullptr;
};

void TestMPanelShortcuts::init()
{
    panels = std::make_unique<TwoPanels>();
    QVERIFY(panels->ready());
    dir = &panels->dir;
    panel = panels->panel;
}

void TestMPanelShortcuts::cleanup()
{
    panels.reset();
}

// --- What a double-click does.

void TestMPanelShortcuts::openFolderAndUp()
{
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("d")));
    QTest::keyClick(panel->list, Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("d")));
    QVERIFY(waitForList(panel));
    panel->list->setFocus();
    QTest::keyClick(panel->list, Qt::Key_Down);
    QCOMPARE(panel->list->currentIndex().data().toString(), QStringLiteral(".."));
    QTest::keyClick(panel->list, Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(panel->currentPath, dir->path());
}

void TestMPanelShortcuts::openNothing()
{
    QVERIFY(!panel->list->currentIndex().isValid());
    QTest::keyClick(panel->list, Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(panel->currentPath, dir->path());
    panel->tree->setCurrentIndex(QModelIndex());
    panel->tree->setFocus();
    QTest::keyClick(panel->tree, Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(panel->currentPath, dir->path());
}

void TestMPanelShortcuts::openInTheTree()
{
    dir->folder(QStringLiteral("d/in/deep"));
    const auto index
        = [this](const char* path) { return panel->treeModel->index(dir->path(QLatin1String(path))); };
    panel->tree->setFocus();
    panel->setTreePath(dir->path(QStringLiteral("d")));
    QVERIFY(!panel->tree->isExpanded(index("d")));
    QTest::keyClick(panel->tree, Qt::Key_O, Qt::ControlModifier);
    QVERIFY(panel->tree->isExpanded(index("d")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("d/in"))));
    panel->tree->expand(index("d/in"));
    QTest::keyClick(panel->tree, Qt::Key_O, Qt::ControlModifier);
    QVERIFY(panel->tree->isExpanded(index("d")));
    QVERIFY(!panel->tree->isExpanded(index("d/in")));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("d")));
}

void TestMPanelShortcuts::openTheRootReadsItAgain()
{
    const QPointer<myFileSystemModel> before = panel->treeModel;
    panel->tree->setFocus();
    QTest::keyClick(panel->tree, Qt::Key_O, Qt::ControlModifier);
    QVERIFY(panel->treeModel != before);
    QVERIFY(panel->tree->isExpanded(panel->treeModel->index(dir->path())));
    panel->tree->collapse(panel->treeModel->index(dir->path()));
    QTest::keyClick(panel->tree, Qt::Key_O, Qt::ControlModifier);
    QVERIFY(!panel->tree->isExpanded(panel->treeModel->index(dir->path()))); // as a double-click leaves it
}

// --- What a right click does.

void TestMPanelShortcuts::contextMenu_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<QString>("item");
    QTest::newRow("row") << false << QStringLiteral("a");
    QTest::newRow("folder of the tree") << true << QStringLiteral("d");
}

void TestMPanelShortcuts::contextMenu()
{
    QFETCH(bool, inTree);
    QFETCH(QString, item);
    gstMenu = {LSMENU{CommandProperties, QStringLiteral("|*|.|"), QStringLiteral("Facts"), QString()}};
    QAbstractItemView* view = panel->list;
    if (inTree) {
        view = panel->tree;
        panel->setTreePath(dir->path(item));
    } else {
        view->setCurrentIndex(listIndex(panel, item));
    }
    view->setFocus();
    const QRect row = view->visualRect(view->currentIndex());
    const QPoint at = (inTree ? view : view->viewport())->mapToGlobal(row.center());
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) {
        QCOMPARE(menu->geometry().topLeft(), at);
        QCOMPARE(menu->actions().size(), 1);
        QTest::keyClick(menu, Qt::Key_Escape);
    });
    QTest::keyClick(view, Qt::Key_F10, Qt::ShiftModifier);
    QTRY_COMPARE(answers.left(), 0);
    QCOMPARE(panel->contextPath, dir->path(item));
}

// --- What a click on a header does.

void TestMPanelShortcuts::sortByColumn_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("column");
    QTest::newRow("name") << int(Qt::Key_1) << 0;
    QTest::newRow("size") << int(Qt::Key_2) << 1;
    QTest::newRow("owner") << int(Qt::Key_3) << 2;
    QTest::newRow("modified") << int(Qt::Key_4) << 3;
}

void TestMPanelShortcuts::sortByColumn()
{
    QFETCH(int, key);
    QFETCH(int, column);
    const QHeaderView* header = panel->list->horizontalHeader();
    QTest::keyClick(panel->list, static_cast<Qt::Key>(key), Qt::ControlModifier);
    QCOMPARE(header->sortIndicatorSection(), column);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    panel->tree->setFocus();
    QTest::keyClick(panel->tree, static_cast<Qt::Key>(key), Qt::ControlModifier);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    if (column == 1) {
        QTRY_VERIFY(
            listIndex(panel, QStringLiteral("b")).row() < listIndex(panel, QStringLiteral("a")).row());
    }
}

// --- What a drag to the other panel does.

void TestMPanelShortcuts::copyToTheOtherPanel()
{
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("a")));
    BoxAnswers boxes;
    boxes.click(QStringLiteral("Yes"));
    QTest::keyClick(panel->list, Qt::Key_F5);
    QCOMPARE(boxes.texts(),
        QStringList(QStringLiteral("Copy selected files to folder: \n\n") + dir->path(QStringLiteral("e"))));
    QTRY_COMPARE(dir->read(QStringLiteral("e/a")), QByteArray("1234"));
    QVERIFY(dir->exists(QStringLiteral("a")));
    QCOMPARE(gsDragBase, dir->path());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestMPanelShortcuts::moveToTheOtherPanel()
{
    panel->list->selectAll(); // ".." with all others, of which one is the destination
    panel->list->selectionModel()->select(
        listIndex(panel, QStringLiteral("e")), QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
    BoxAnswers boxes;
    boxes.click(QStringLiteral("Yes"));
    QTest::keyClick(panel->list, Qt::Key_F6);
    QCOMPARE(boxes.texts(),
        QStringList(QStringLiteral("Move selected files to folder: \n\n") + dir->path(QStringLiteral("e"))));
    QTRY_COMPARE(dir->tree(), QStringList({"e/", "e/a", "e/b", "e/d/"}));
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
}

void TestMPanelShortcuts::copyTheFolderOfTheTree()
{
    panel->tree->setFocus();
    panel->setTreePath(dir->path(QStringLiteral("d")));
    BoxAnswers boxes;
    boxes.click(QStringLiteral("No"));
    QTest::keyClick(panel->tree, Qt::Key_F5);
    QCOMPARE(boxes.seen().size(), 1);
    QCOMPARE(gslDragList, QStringList(dir->path(QStringLiteral("d"))));
    QCOMPARE(gsDragBase, dir->path());
    QCOMPARE(gsDropBase, dir->path(QStringLiteral("e")));
}

void TestMPanelShortcuts::nothingToSend()
{
    const BoxAnswers boxes;
    QTest::keyClick(panel->list, Qt::Key_F5); // nothing is selected
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("..")));
    QTest::keyClick(panel->list, Qt::Key_F6);
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("a")));
    gslDragList.clear();
    panel->driveBar->buttons.first()->setFocus();
    QTest::keyClick(panel->driveBar->buttons.first(), Qt::Key_F5); // neither view has the focus
    QVERIFY(gslDragList.isEmpty());
    QVERIFY(boxes.seen().isEmpty());
}

void TestMPanelShortcuts::nowhereToSend()
{
    const BoxAnswers boxes;
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("a")));
    panels->arrange("actionSingle_Panel");
    QTest::keyClick(panel->list, Qt::Key_F5);
    QTest::keyClick(panel->list, Qt::Key_F6);
    QVERIFY(boxes.seen().isEmpty());
    QVERIFY(gslDragList.isEmpty());
}

// --- What a drag of the splitter does.

void TestMPanelShortcuts::splitterByKeys()
{
    const QList<int> before = panel->splitter->sizes();
    QTest::keyClick(panel->list, Qt::Key_Greater, Qt::ControlModifier);
    const QList<int> wider = panel->splitter->sizes();
    QVERIFY(wider.at(0) > before.at(0));
    QCOMPARE(wider.at(0) + wider.at(1), before.at(0) + before.at(1));
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(panel->list, Qt::Key_Less, Qt::ControlModifier);
    }
    QVERIFY(panel->splitter->sizes().at(0) < before.at(0));
    // To the end and back.
    for (int i = 0; i < 60; ++i) {
        QTest::keyClick(panel->list, Qt::Key_Less, Qt::ControlModifier);
    }
    for (int i = 0; i < 60; ++i) {
        QTest::keyClick(panel->list, Qt::Key_Greater, Qt::ControlModifier);
    }
    QVERIFY(panel->splitter->sizes().at(0) > before.at(0));
    QTest::keyClick(panel->list, Qt::Key_Less, Qt::ControlModifier);
    QVERIFY(panel->splitter->sizes().at(1) > 0);
}

void TestMPanelShortcuts::columnsByKeys()
{
    QTest::keyClick(panel->list, Qt::Key_Home);
    QTest::keyClick(panel->list, Qt::Key_Right);
    const int column = panel->list->currentIndex().column();
    const int before = panel->list->columnWidth(column);
    QTest::keyClick(panel->list, Qt::Key_BracketRight, Qt::ControlModifier);
    QCOMPARE(panel->list->columnWidth(column), before + 10);
    QTest::keyClick(panel->list, Qt::Key_BracketLeft, Qt::ControlModifier);
    QCOMPARE(panel->list->columnWidth(column), before);
    for (int i = 0; i < 200; ++i) {
        QTest::keyClick(panel->list, Qt::Key_BracketLeft, Qt::ControlModifier);
    }
    QCOMPARE(panel->list->columnWidth(column), panel->list->horizontalHeader()->minimumSectionSize());
}

void TestMPanelShortcuts::keysStayInTheirPanel()
{
    QTest::keyClick(panel->list, Qt::Key_3, Qt::ControlModifier);
    QCOMPARE(panel->list->horizontalHeader()->sortIndicatorSection(), 2);
    QCOMPARE(other()->list->horizontalHeader()->sortIndicatorSection(), 0);
    other()->list->setFocus();
    QTest::keyClick(other()->list, Qt::Key_2, Qt::ControlModifier);
    QCOMPARE(panel->list->horizontalHeader()->sortIndicatorSection(), 2);
    QCOMPARE(other()->list->horizontalHeader()->sortIndicatorSection(), 1);
}

// --- Keys that mean something to the views.

void TestMPanelShortcuts::returnStaysWithTheViews_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ControlModifier}) {
            const int modifiers = static_cast<int>(modifier);
            QTest::newRow(qPrintable(QKeySequence(key + modifiers).toString())) << key << modifiers;
        }
    }
}

void TestMPanelShortcuts::returnStaysWithTheViews()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("d")));
    const QList<QAbstractItemView*> views = {panel->list, panel->tree};
    for (QAbstractItemView* view : views) {
        const QSignalSpy activated(view, SIGNAL(activated(QModelIndex)));
        view->setFocus();
        QTest::keyClick(view, static_cast<Qt::Key>(key), static_cast<Qt::KeyboardModifiers>(modifiers));
        QCOMPARE(activated.size(), 1);
        QCOMPARE(panel->currentPath, dir->path());
    }
}

void TestMPanelShortcuts::plusAndMinusStayWithTheTree_data()
{
    QTest::addColumn<int>("modifiers");
    QTest::newRow("alone") << int(Qt::NoModifier);
    QTest::newRow("with Ctrl") << int(Qt::ControlModifier);
}

void TestMPanelShortcuts::plusAndMinusStayWithTheTree()
{
    QFETCH(int, modifiers);
    dir->folder(QStringLiteral("d/in"));
    panel->tree->setFocus();
    panel->setTreePath(dir->path(QStringLiteral("d")));
    const QList<int> sizes = panel->splitter->sizes();
    for (const bool open : {true, false}) {
        QTest::keyClick(
            panel->tree, open ? Qt::Key_Plus : Qt::Key_Minus, static_cast<Qt::KeyboardModifiers>(modifiers));
        QCOMPARE(panel->tree->isExpanded(panel->tree->currentIndex()), open);
    }
    QCOMPARE(panel->splitter->sizes(), sizes);
}

void TestMPanelShortcuts::typedLettersStillSearch_data()
{
    QTest::addColumn<char>("letter");
    for (const char letter : {'o', '1', '4', '<', '>', '+'}) {
        QTest::newRow(std::string(1, letter).c_str()) << letter;
    }
}

void TestMPanelShortcuts::typedLettersStillSearch()
{
    QFETCH(char, letter);
    const QString name = QLatin1Char(letter) + QStringLiteral("-file");
    dir->file(name);
    QTRY_VERIFY(listIndex(panel, name).isValid());
    QTest::keyClick(panel->list, letter);
    QCOMPARE(panel->list->currentIndex().data().toString(), name);
    QCOMPARE(panel->currentPath, dir->path());
    QVERIFY(panel->sortDescendingNext);
}

// An open menu has all keys.
void TestMPanelShortcuts::nothingBehindAMenu()
{
    gstMenu = {LSMENU{CommandProperties, QStringLiteral("|*|.|"), QStringLiteral("Facts"), QString()}};
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("a")));
    const BoxAnswers boxes;
    ModalAnswers answers;
    answers.meet<QMenu>([](QMenu* menu) {
        QTest::keyClick(menu, Qt::Key_F5);
        QTest::keyClick(menu, Qt::Key_3, Qt::ControlModifier);
        QTest::keyClick(menu, Qt::Key_Escape);
    });
    QTest::keyClick(panel->list, Qt::Key_F10, Qt::ShiftModifier);
    QTRY_COMPARE(answers.left(), 0);
    QVERIFY(boxes.seen().isEmpty());
    QVERIFY(panel->sortDescendingNext);
}

/// Only what moves something goes on while its key is held.
void TestMPanelShortcuts::commandsDoNotRepeat()
{
    QStringList repeating;
    const QList<QShortcut*> shortcuts = panels->panel->findChildren<QShortcut*>();
    for (const QShortcut* shortcut : shortcuts) {
        if (shortcut->autoRepeat()) {
            repeating.append(shortcut->key().toString());
        }
    }
    repeating.sort();
    QCOMPARE(repeating, (QStringList{"Ctrl+<", "Ctrl+>", "Ctrl+[", "Ctrl+]"}));
    QCOMPARE(shortcuts.size(), 14);
}

VANTREL_TEST_MAIN(TestMPanelShortcuts)
#include "tst_MPanelShortcuts.moc"
