#include "panel/MPanel.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MNavBar.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/PanelFixture.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include <sys/stat.h>
#include <unistd.h>

/// The ways from folder to folder, the path that is kept of them, the order of the listing, and folders that
/// vanish.
class TestMPanelBrowse : public QObject, protected PanelFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

    void openingAFolder();
    void openingFocusesTheTree();
    void sortAndSelectionStartAfresh();
    void collapseChildren();
    void treeDoubleClickOnTheRoot();
    void treeDoubleClickOnAFoldedFolder();
    void treeDoubleClickOnAnOpenFolder();
    void treeDoubleClickClearsTheSelection();
    void listDoubleClickOnAFolder();
    void listDoubleClickOnTheParent();
    void parentOfTheRootDoesNothing_data();
    void parentOfTheRootDoesNothing();
    void listDoubleClickOnALink_data();
    void listDoubleClickOnALink();
    void realDoubleClicks();

    void lastPathsAreCrossed();

    void firstHeaderClickSortsDescending();
    void oneFlagForAllColumns();
    void orderByTime();
    void realHeaderClick();

    void vanishedFolder_data();
    void vanishedFolder();
    void vanishedRoot();
    void vanishedRootComesBack();
    void vanishedFolderOnBothPanels();
    void manyRemovalsKeepTheOrder();
};

void TestMPanelBrowse::openingAFolder()
{
    const QPointer<myFileSystemModel> model = panel->listModel;
    const QPointer<QItemSelectionModel> selection = panel->list->selectionModel();
    panel->treeRowChanged(dir->path(QStringLiteral("a")));
    QVERIFY(model.isNull());
    QVERIFY(selection.isNull());
    QVERIFY(waitForList(panel));
    QCOMPARE(panel->list->model(), panel->listModel);
    QCOMPARE(listNames(panel), (QStringList{"..", "b"}));
    QCOMPARE(panel->navBar->buttons.constLast()->text(), QStringLiteral("a/"));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
}

void TestMPanelBrowse::openingFocusesTheTree()
{
    panel->list->setFocus();
    panel->treeRowChanged(dir->path(QStringLiteral("a")));
    QVERIFY(panel->tree->hasFocus());
}

void TestMPanelBrowse::sortAndSelectionStartAfresh()
{
    panel->list->setFocus();
    panel->headerClicked(0);
    QCOMPARE(listNames(panel).constFirst(), QStringLiteral("two"));
    select({"one"});
    QVERIFY(openFolder(panel, dir->path()));
    QCOMPARE(listNames(panel).constFirst(), QStringLiteral(".."));
    QVERIFY(!panel->list->selectionModel()->hasSelection());
}

void TestMPanelBrowse::collapseChildren()
{
    panel->tree->expand(treeAt(QStringLiteral("a")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
    panel->tree->expand(treeAt(QStringLiteral("a/b")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b/c"))));
    QStringList order;
    connect(panel->tree, &QTreeView::collapsed, this,
        [&](const QModelIndex& index) { order.append(index.data().toString()); });
    panel->collapseChildren(QModelIndex());
    QVERIFY(order.isEmpty());
    panel->collapseChildren(treeAt(QStringLiteral("a")));
    QCOMPARE(order, (QStringList{"b", "a"}));
    QVERIFY(panel->tree->isExpanded(treeAt(QString())));
}

void TestMPanelBrowse::treeDoubleClickOnTheRoot()
{
    const QPointer<myFileSystemModel> before = panel->treeModel;
    panel->tree->expand(treeAt(QString()));
    panel->on_TreeView_DoubleClicked(treeAt(QString()));
    QVERIFY(before.isNull());
    QVERIFY(panel->tree->isExpanded(treeAt(QString())));
    panel->tree->collapse(treeAt(QString()));
    panel->on_TreeView_DoubleClicked(treeAt(QString()));
    QVERIFY(!panel->tree->isExpanded(treeAt(QString())));
    QCOMPARE(panel->currentPath, dir->path());
}

void TestMPanelBrowse::treeDoubleClickOnAFoldedFolder()
{
    const QPointer<myFileSystemModel> before = panel->treeModel;
    panel->on_TreeView_DoubleClicked(treeAt(QStringLiteral("a")));
    QCOMPARE(panel->treeModel, before.data());
    QVERIFY(!panel->tree->isExpanded(treeAt(QStringLiteral("a"))));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
    QCOMPARE(QModelIndex(panel->currentTreeIndex), treeAt(QStringLiteral("a")));
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("a")));
}

void TestMPanelBrowse::treeDoubleClickOnAnOpenFolder()
{
    panel->tree->expand(treeAt(QStringLiteral("a")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
    panel->tree->expand(treeAt(QStringLiteral("a/b")));
    panel->on_TreeView_DoubleClicked(treeAt(QStringLiteral("a")));
    QVERIFY(panel->tree->isExpanded(treeAt(QStringLiteral("a"))));
    QVERIFY(!panel->tree->isExpanded(treeAt(QStringLiteral("a/b"))));
}

void TestMPanelBrowse::treeDoubleClickClearsTheSelection()
{
    select({"one"});
    panel->on_TreeView_DoubleClicked(treeAt(QStringLiteral("d")));
    QVERIFY(!panel->list->selectionModel()->hasSelection());
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), QStringList{".."});
}

void TestMPanelBrowse::listDoubleClickOnAFolder()
{
    panel->on_ListView_DoubleClicked(listIndex(panel, QStringLiteral("a")));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
    QCOMPARE(panel->contextPath, dir->path(QStringLiteral("a")));
    QVERIFY(panel->tree->isExpanded(treeAt(QStringLiteral("a"))));
    QCOMPARE(panel->tree->currentIndex(), treeAt(QStringLiteral("a")));
    QCOMPARE(QModelIndex(panel->currentTreeIndex), treeAt(QStringLiteral("a")));
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), (QStringList{"..", "b"}));
}

void TestMPanelBrowse::listDoubleClickOnTheParent()
{
    panel->setTreePath(dir->path(QStringLiteral("a/b")));
    QVERIFY(waitForList(panel));
    panel->on_ListView_DoubleClicked(listIndex(panel, QStringLiteral("..")));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
    QCOMPARE(panel->contextPath, dir->path(QStringLiteral("a")));
    QVERIFY(waitForList(panel));
    panel->on_ListView_DoubleClicked(listIndex(panel, QStringLiteral("..")));
    QCOMPARE(panel->currentPath, dir->path());
}

void TestMPanelBrowse::parentOfTheRootDoesNothing_data()
{
    QTest::addColumn<QString>("root");
    QTest::newRow("folder") << QStringLiteral("folder");
    QTest::newRow("top") << QStringLiteral("/");
}

void TestMPanelBrowse::parentOfTheRootDoesNothing()
{
    QFETCH(QString, root);
    const bool top = root == QLatin1String("/");
    if (top) {
        panel->setTreeRoot(root);
        QVERIFY(waitForList(panel));
    }
    const QPointer<myFileSystemModel> before = panel->listModel;
    const QString path = panel->currentPath;
    panel->contextPath = QStringLiteral("before");
    const QModelIndex up = listIndex(panel, QStringLiteral(".."));
    QVERIFY(up.isValid());
    panel->on_ListView_DoubleClicked(up);
    QCOMPARE(panel->currentPath, path);
    QCOMPARE(panel->listModel, before.data());
    QCOMPARE(panel->contextPath, QStringLiteral("before"));
}

void TestMPanelBrowse::listDoubleClickOnALink_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("opens");
    QTest::newRow("to a folder") << QStringLiteral("to folder.x") << false;
    QTest::newRow("to a folder whose name is no text") << QStringLiteral("to bytes.x") << false;
    QTest::newRow("to a link") << QStringLiteral("to link.x") << false;
    QTest::newRow("to a file") << QStringLiteral("to file.x") << true;
    QTest::newRow("dangling") << QStringLiteral("dangling.x") << true;
    QTest::newRow("to a link that dangles") << QStringLiteral("to dangling.x") << false;
}

void TestMPanelBrowse::listDoubleClickOnALink()
{
    QFETCH(QString, name);
    QFETCH(bool, opens);
    dir->link(QStringLiteral("to folder.x"), QStringLiteral("a"));
    const QByteArray bytes = QFile::encodeName(dir->path()) + "/x\xe9";
    QCOMPARE(::mkdir(bytes.constData(), 0755), 0);
    QCOMPARE(
        ::symlink(bytes.constData(), QFile::encodeName(dir->path(QStringLiteral("to bytes.x"))).constData()),
        0);
    dir->link(QStringLiteral("to file.x"), QStringLiteral("one"));
    dir->link(QStringLiteral("to link.x"), QStringLiteral("to file.x"));
    dir->link(QStringLiteral("dangling.x"), QStringLiteral("nowhere"));
    dir->link(QStringLiteral("to dangling.x"), QStringLiteral("dangling.x"));
    QTRY_VERIFY(listIndex(panel, name).isValid());
    const TestDir tools;
    gmFileAssn.insert(QStringLiteral("x"),
        tools.file(QStringLiteral("opener"), "#!/bin/sh\nprintf '%s\\n' \"$1\" >> \"$0.out\"\n", 0755));
    panel->contextPath = QStringLiteral("before");
    panel->on_ListView_DoubleClicked(listIndex(panel, name));
    QCOMPARE(panel->currentPath, dir->path());
    QCOMPARE(panel->contextPath, opens ? dir->path(name) : QStringLiteral("before"));
    // Where nothing opens, another link that is opened afterwards is alone.
    const QString opened = opens ? name : QStringLiteral("to file.x");
    if (!opens) {
        panel->on_ListView_DoubleClicked(listIndex(panel, opened));
    }
    QTRY_COMPARE(QString::fromUtf8(tools.read(QStringLiteral("opener.out"))), dir->path(opened) + '\n');
}

void TestMPanelBrowse::realDoubleClicks()
{
    const auto doubleClick = [this](const QString& name) {
        const QPoint place = panel->list->visualRect(listIndex(panel, name)).center();
        QTest::mouseClick(panel->list->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(panel->list->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    };
    doubleClick(QStringLiteral("a"));
    QVERIFY(waitForList(panel));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
    doubleClick(QStringLiteral("b"));
    QVERIFY(waitForList(panel));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a/b")));
    QCOMPARE(treeNames(panel).mid(1), (QStringList{"a", "b", "c", "d"}));
    doubleClick(QStringLiteral(".."));
    QVERIFY(waitForList(panel));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
}

void TestMPanelBrowse::lastPathsAreCrossed()
{
    QCOMPARE(gsLastPath1, dir->path());
    QCOMPARE(gsLastPath2, QString());
    gwPanel1 = panel;
    panel->treeRowChanged(dir->path(QStringLiteral("a")));
    QCOMPARE(gsLastPath2, dir->path(QStringLiteral("a")));
    QCOMPARE(gsLastPath1, dir->path());
    gwPanel1 = nullptr;
    gwPanel2 = panel;
    panel->treeRowChanged(dir->path(QStringLiteral("d")));
    QCOMPARE(gsLastPath1, dir->path(QStringLiteral("d")));
    QCOMPARE(gsLastPath2, dir->path(QStringLiteral("a")));
}

void TestMPanelBrowse::firstHeaderClickSortsDescending()
{
    panel->headerClicked(0);
    QVERIFY(!panel->sortDescendingNext);
    const QHeaderView* header = panel->list->horizontalHeader();
    QCOMPARE(header->sortIndicatorSection(), 0);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    QCOMPARE(listNames(panel), (QStringList{"two", "one", "d", "a", ".."}));
    panel->headerClicked(0);
    QVERIFY(panel->sortDescendingNext);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    QCOMPARE(listNames(panel), (QStringList{"..", "a", "d", "one", "two"}));
}

void TestMPanelBrowse::oneFlagForAllColumns()
{
    const QHeaderView* header = panel->list->horizontalHeader();
    panel->headerClicked(1);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    QCOMPARE(listNames(panel).mid(0, 2), (QStringList{"two", "one"}));
    panel->headerClicked(0);
    QCOMPARE(header->sortIndicatorSection(), 0);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    QCOMPARE(listNames(panel), (QStringList{"..", "a", "d", "one", "two"}));
    panel->headerClicked(3);
    QCOMPARE(header->sortIndicatorSection(), 3);
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
}

// Files and folders are mixed.
void TestMPanelBrowse::orderByTime()
{
    qint64 time = 1000;
    for (const char* name : {"two", "a", "one", "d"}) {
        dir->setTimes(QString::fromLatin1(name), time += 1000);
    }
    QVERIFY(openFolder(panel, dir->path()));
    const auto order = [this] {
        QStringList names = listNames(panel);
        names.removeAll(QStringLiteral("..")); // its time is not ours
        return names;
    };
    QCOMPARE(order(), (QStringList{"a", "d", "one", "two"}));
    panel->headerClicked(3);
    QCOMPARE(order(), (QStringList{"d", "one", "a", "two"}));
    panel->headerClicked(3);
    QCOMPARE(order(), (QStringList{"two", "a", "one", "d"}));
}

void TestMPanelBrowse::realHeaderClick()
{
    QHeaderView* header = panel->list->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(10, header->height() / 2));
    QCOMPARE(listNames(panel).constFirst(), QStringLiteral("two"));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
}

void TestMPanelBrowse::vanishedFolder_data()
{
    QTest::addColumn<QString>("open");
    QTest::addColumn<QString>("removed");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the folder itself")
        << QStringLiteral("a/b/c") << QStringLiteral("a/b/c") << QStringLiteral("a/b");
    QTest::newRow("one above") << QStringLiteral("a/b/c") << QStringLiteral("a/b") << QStringLiteral("a");
    QTest::newRow("two above") << QStringLiteral("a/b/c") << QStringLiteral("a") << QString();
}

void TestMPanelBrowse::vanishedFolder()
{
    QFETCH(QString, open);
    QFETCH(QString, removed);
    QFETCH(QString, expected);
    panel->tree->expand(treeAt(QStringLiteral("a")));
    panel->setTreePath(dir->path(open));
    QVERIFY(waitForList(panel));
    QVERIFY(QDir(dir->path(removed)).removeRecursively());
    QTRY_COMPARE(panel->currentPath, dir->path(expected));
    QTRY_COMPARE(panel->listModel->rootPath(), dir->path(expected));
    QVERIFY(waitForList(panel));
    QCOMPARE(
        panel->navBar->buttons.constLast()->text(), dir->path(expected).section('/', -1) + QLatin1Char('/'));
    QTRY_VERIFY(!listNames(panel).contains(QFileInfo(removed).fileName()));
    QCOMPARE(panel->rootPath, dir->path());
}

void TestMPanelBrowse::vanishedRoot()
{
    panel->setTreeRoot(dir->path(QStringLiteral("d")));
    QVERIFY(waitForList(panel));
    QVERIFY(QDir().rmdir(dir->path(QStringLiteral("d"))));
    QTRY_COMPARE(listNames(panel), QStringList());
    QVERIFY(readAnotherFolder());
    QCOMPARE(panel->rootPath, dir->path(QStringLiteral("d")));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("d")));
    QCOMPARE(panel->folderLabel->text(),
        dir->path(QStringLiteral("d")) + QStringLiteral(" has 0 dirs, 0 files, 0 Bytes"));
}

void TestMPanelBrowse::vanishedRootComesBack()
{
    panel->setTreeRoot(dir->path(QStringLiteral("d")));
    QVERIFY(waitForList(panel));
    QVERIFY(QDir().rmdir(dir->path(QStringLiteral("d"))));
    QTRY_COMPARE(listNames(panel), QStringList());
    dir->file(QStringLiteral("d/new"));
    panel->setTreeRoot(dir->path(QStringLiteral("d")));
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), (QStringList{"..", "new"}));
}

void TestMPanelBrowse::vanishedFolderOnBothPanels()
{
    MPanel other(&window->window);
    other.show();
    for (MPanel* each : {panel, &other}) {
        each->setTreePath(dir->path(QStringLiteral("d")));
        if (each->currentPath != dir->path(QStringLiteral("d"))) {
            each->treeRowChanged(dir->path(QStringLiteral("d")));
        }
        QVERIFY(waitForList(each));
    }
    QVERIFY(QDir().rmdir(dir->path(QStringLiteral("d"))));
    QTRY_COMPARE(panel->currentPath, dir->path());
    QTRY_COMPARE(other.currentPath, dir->path());
    QTRY_VERIFY(listNames(&other).contains(QStringLiteral("one")));
}

void TestMPanelBrowse::manyRemovalsKeepTheOrder()
{
    dir->files(QStringLiteral("d"), 4000, QStringLiteral("f%1"));
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    QTRY_COMPARE(listNames(panel).size(), 4001);
    panel->headerClicked(0);
    for (int i = 0; i < 3995; ++i) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("d/f%1").arg(i))));
    }
    QTRY_COMPARE(listNames(panel), (QStringList{"f3999", "f3998", "f3997", "f3996", "f3995", ".."}));
    QCOMPARE(panel->list->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    QTRY_VERIFY(panel->folderLabel->text().contains(QStringLiteral(" has 0 dirs, 5 files, ")));
}

VANTREL_TEST_MAIN(TestMPanelBrowse)
#include "tst_MPanelBrowse.moc"
