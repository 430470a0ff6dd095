#include "panel/MPanel.h"

#include "app/TextHelpers.h"
#include "app/aGlobal.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MNavBar.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/ObjectCount.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSplitter>
#include <QStatusBar>
#include <QStorageInfo>

#include <memory>

namespace {

/// Notes how wide a panel's splitter is when it is first shown.
class SplitterNotes : public QObject
{
public:
    SplitterNotes() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (const auto* splitter = qobject_cast<QSplitter*>(watched)) {
            if (event->type() == QEvent::ShowToParent && width == 0) {
                width = splitter->width();
            }
        }
        return QObject::eventFilter(watched, event);
    }

    int width = 0;
};

} // namespace

class TestMPanel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void construction();
    void filters();
    void childrenInTheirOrder();
    void statusFields();
    void treeSettings();
    void listSettings();
    void splitterSettings();
    void firstSizesComeFromTheSplitter();
    void slotsByName_data();
    void slotsByName();
    void connectionsOfTheViews();
    void accessibleNames();

    void layout_data();
    void layout();
    void fieldsOverlapByTenPixels();

    void startsAtTheTopWithoutDrives();
    void startsAtTheFirstDrive();
    void rootIsTheOnlyTopItem();
    void topShowsAllFolders();
    void setTreeRootAgain();
    void rootsThatAreNone_data();
    void rootsThatAreNone();
    void lastPathsAreCrossed();
    void lastPathOfASelection();

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

    void counts_data();
    void counts();
    void countsFollowTheDisk();
    void folderTextIsPlain();
    void selectionOfTheTree();
    void selectionOfTheList();
    void parentIsNotCounted();
    void selectionTexts_data();
    void selectionTexts();
    void freeSpaceText();
    void freeSpaceWithoutStorage_data();
    void freeSpaceWithoutStorage();
    void selectionOrder();
    void selectAllInABigFolder();

    void firstHeaderClickSortsDescending();
    void oneFlagForAllColumns();
    void realHeaderClick();

    void vanishedFolder_data();
    void vanishedFolder();
    void vanishedRoot();
    void vanishedRootComesBack();
    void vanishedFolderOnBothPanels();
    void manyRemovalsKeepTheOrder();
    void tenThousandFolderChanges();
    void treeRootChangesLeaveNothing();
    void destroyedWhileLoading();

private:
    QModelIndex treeAt(const QString& relative) const { return panel->treeModel->index(dir->path(relative)); }
    QString status() const { return panel->selectionLabel->text(); }
    void select(const QStringList& names);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
};

void TestMPanel::init()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("a/b/c"));
    dir->folder(QStringLiteral("d"));
    dir->file(QStringLiteral("one"), "1");
    dir->file(QStringLiteral("two"), "22");
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a"))));
}

void TestMPanel::cleanup()
{
    window.reset();
    dir.reset();
}

void TestMPanel::select(const QStringList& names)
{
    panel->list->clearSelection();
    for (const QString& name : names) {
        QVERIFY(listIndex(panel, name).isValid());
        panel->list->selectionModel()->select(
            listIndex(panel, name), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

void TestMPanel::construction()
{
    QCOMPARE(panel->metaObject()->superClass()->className(), "QFrame");
    QCOMPARE(panel->parentWidget(), &window->window);
    QCOMPARE(panel->rootPath, dir->path());
    QCOMPARE(panel->currentPath, dir->path());
    QCOMPARE(QModelIndex(panel->currentTreeIndex), treeAt(QString()));
    QCOMPARE(panel->contextPath, QString());
    QVERIFY(panel->selectedPaths.isEmpty());
    QCOMPARE(panel->selectedCount, 0);
    QCOMPARE(panel->selectedBytes, qint64(0));
    QVERIFY(panel->sortDescendingNext);
    QCOMPARE(panel->treeModel->parent(), panel);
    QCOMPARE(panel->listModel->parent(), panel);
}

void TestMPanel::filters()
{
    QCOMPARE(int(panel->treeModel->filter()), 0x6508);
    QCOMPARE(int(panel->listModel->filter()), 0x2307);
    QCOMPARE(panel->treeModel->headerData(1, Qt::Horizontal, Qt::DisplayRole), QVariant());
    QCOMPARE(panel->listModel->headerData(3, Qt::Horizontal, Qt::DisplayRole).toString(),
        QStringLiteral("Modified"));
}

void TestMPanel::childrenInTheirOrder()
{
    QCOMPARE(panel->findChildren<MDriveBar*>(), QList<MDriveBar*>{panel->driveBar});
    QCOMPARE(panel->findChildren<MNavBar*>(), QList<MNavBar*>{panel->navBar});
    QCOMPARE(panel->findChildren<MTree*>(), QList<MTree*>{panel->tree});
    QCOMPARE(panel->findChildren<MList*>(), QList<MList*>{panel->list});
    QCOMPARE(panel->tree->partner, panel->list);
    QCOMPARE(panel->list->partner, panel->tree);
    for (const QWidget* child :
        std::initializer_list<const QWidget*>{panel->driveBar, panel->navBar, panel->statusBar, panel->tree,
            panel->list, panel->splitter, panel->selectionLabel, panel->folderLabel}) {
        QVERIFY(child->isVisible());
    }
}

void TestMPanel::statusFields()
{
    QCOMPARE(panel->selectionLabel->parent(), panel->statusBar);
    QCOMPARE(panel->folderLabel->parent(), panel->statusBar);
    QCOMPARE(panel->selectionLabel->objectName(), QStringLiteral("StatusBar"));
    QCOMPARE(panel->folderLabel->objectName(), QStringLiteral("StatusBar"));
    QCOMPARE(panel->findChildren<QLabel*>(QStringLiteral("StatusBar")).size(), 2);
}

void TestMPanel::treeSettings()
{
    const MTree* tree = panel->tree;
    QCOMPARE(tree->model(), panel->treeModel);
    QVERIFY(tree->alternatingRowColors());
    QVERIFY(tree->isHeaderHidden());
    QVERIFY(!tree->isColumnHidden(0));
    for (int column = 1; column < 4; ++column) {
        QVERIFY(tree->isColumnHidden(column));
    }
    QCOMPARE(tree->contextMenuPolicy(), Qt::CustomContextMenu);
}

void TestMPanel::listSettings()
{
    const MList* list = panel->list;
    QCOMPARE(list->model(), panel->listModel);
    QVERIFY(list->alternatingRowColors());
    QCOMPARE(list->selectionBehavior(), QAbstractItemView::SelectRows);
    QVERIFY(!list->horizontalHeader()->highlightSections());
    QVERIFY(list->horizontalHeader()->isSortIndicatorShown());
    QVERIFY(!list->verticalHeader()->isVisible());
    QVERIFY(!list->wordWrap());
    QCOMPARE(list->verticalHeader()->defaultSectionSize(), 18);
    QCOMPARE(list->rowHeight(0), 18);
    QCOMPARE(list->rowHeight(3), 18);
    QVERIFY(!list->showGrid());
    QCOMPARE(list->contextMenuPolicy(), Qt::CustomContextMenu);
}

void TestMPanel::splitterSettings()
{
    QCOMPARE(panel->splitter->count(), 2);
    QCOMPARE(panel->splitter->widget(0), panel->tree);
    QCOMPARE(panel->splitter->widget(1), panel->list);
    QCOMPARE(panel->splitter->handleWidth(), 1);
    QCOMPARE(panel->splitter->orientation(), Qt::Horizontal);
    const QList<int> sizes = panel->splitter->sizes();
    QCOMPARE(sizes.at(0) + sizes.at(1), panel->splitter->width() - 1);
    QVERIFY2(qAbs(sizes.at(0) - 300) <= 3, QByteArray::number(sizes.at(0)).constData());
}

void TestMPanel::firstSizesComeFromTheSplitter()
{
    const SplitterNotes notes;
    QWidget other;
    const MPanel fresh(&other);
    QVERIFY(notes.width > 0);
    QCOMPARE(fresh.tree->header()->minimumWidth(), notes.width * 3 / 10);
}

void TestMPanel::slotsByName_data()
{
    QTest::addColumn<QByteArray>("signature");
    for (const char* name : {"listDirectoryLoaded(QString)", "headerClicked(int)",
             "on_TreeView_DoubleClicked(QModelIndex)", "on_ListView_DoubleClicked(QModelIndex)",
             "ShowContextMenuTree(QPoint)", "ShowContextMenuList(QPoint)"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

void TestMPanel::slotsByName()
{
    QFETCH(QByteArray, signature);
    QVERIFY(panel->metaObject()->indexOfSlot(signature.constData()) >= 0);
}

void TestMPanel::connectionsOfTheViews()
{
    QVERIFY(QObject::disconnect(panel->tree, SIGNAL(customContextMenuRequested(const QPoint&)), panel,
        SLOT(ShowContextMenuTree(const QPoint&))));
    QVERIFY(QObject::disconnect(panel->list, SIGNAL(customContextMenuRequested(const QPoint&)), panel,
        SLOT(ShowContextMenuList(const QPoint&))));
    QVERIFY(QObject::disconnect(
        panel->list->horizontalHeader(), SIGNAL(sectionClicked(int)), panel, SLOT(headerClicked(int))));
    QVERIFY(QObject::disconnect(panel->tree, SIGNAL(doubleClicked(const QModelIndex)), panel,
        SLOT(on_TreeView_DoubleClicked(const QModelIndex))));
    QVERIFY(QObject::disconnect(panel->list, SIGNAL(doubleClicked(const QModelIndex)), panel,
        SLOT(on_ListView_DoubleClicked(const QModelIndex))));
    QVERIFY(QObject::disconnect(
        panel->listModel, SIGNAL(directoryLoaded(QString)), panel, SLOT(listDirectoryLoaded(QString))));
}

void TestMPanel::accessibleNames()
{
    QCOMPARE(panel->tree->accessibleName(), QStringLiteral("Folder tree"));
    QCOMPARE(panel->list->accessibleName(), QStringLiteral("File list"));
    const QList<QWidget*> widgets = panel->findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        const auto* button = qobject_cast<const QPushButton*>(widget);
        const bool named
            = !widget->accessibleName().isEmpty() || (button != nullptr && !button->text().isEmpty());
        const bool reachable = widget->focusPolicy() != Qt::NoFocus && widget->isVisible();
        QVERIFY2(named || !reachable, widget->metaObject()->className());
    }
}

void TestMPanel::layout_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("wide") << QSize(1200, 700);
    QTest::newRow("odd") << QSize(701, 433);
    QTest::newRow("narrow") << QSize(320, 240);
    QTest::newRow("not divisible") << QSize(1000, 601);
}

void TestMPanel::layout()
{
    QFETCH(QSize, size);
    panel->resize(size);
    const int W = size.width();
    const int H = size.height();
    QCOMPARE(panel->splitter->geometry(), QRect(0, 54, W, H - 78));
    QCOMPARE(panel->driveBar->geometry(), QRect(0, -2, W, 30));
    QCOMPARE(panel->navBar->geometry(), QRect(0, 30, W, 24));
    QCOMPARE(panel->statusBar->geometry(), QRect(2, H - 24, W - 4, 24));
    const int SW = W - 4;
    QCOMPARE(panel->selectionLabel->geometry(), QRect(10, 1, SW / 3, 24));
    QCOMPARE(panel->folderLabel->geometry(), QRect(SW / 3, 1, (SW * 2) / 3, 24));
}

void TestMPanel::fieldsOverlapByTenPixels()
{
    QCOMPARE((panel->selectionLabel->geometry() & panel->folderLabel->geometry()).width(), 10);
}

void TestMPanel::startsAtTheTopWithoutDrives()
{
    gstDrives.clear();
    const PanelWindow top{QString()};
    QCOMPARE(top.panel->rootPath, QStringLiteral("/"));
    QCOMPARE(top.panel->currentPath, QStringLiteral("/"));
    QVERIFY(waitForList(top.panel));
    QVERIFY(listNames(top.panel).contains(QStringLiteral("usr")));
}

void TestMPanel::startsAtTheFirstDrive()
{
    gstDrives = {LSDRIVE{dir->path(QStringLiteral("d")), QStringLiteral("D")},
        LSDRIVE{dir->path(QStringLiteral("a")), QStringLiteral("A")}};
    const PanelWindow other{QString()};
    QCOMPARE(other.panel->rootPath, dir->path(QStringLiteral("d")));
    QCOMPARE(other.panel->treeModel->rootPath(), dir->path(QStringLiteral("d")));
}

void TestMPanel::rootIsTheOnlyTopItem()
{
    panel->setTreeRoot(dir->path(QStringLiteral("a")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
    QCOMPARE(panel->tree->rootIndex(), treeAt(QString()));
    QCOMPARE(treeNames(panel), (QStringList{"a", "b"}));
    QVERIFY(panel->tree->isExpanded(treeAt(QStringLiteral("a"))));
    QCOMPARE(panel->tree->currentIndex(), treeAt(QStringLiteral("a")));
    QCOMPARE(QModelIndex(panel->currentTreeIndex), treeAt(QStringLiteral("a")));
}

void TestMPanel::topShowsAllFolders()
{
    panel->setTreeRoot(QStringLiteral("/"));
    QCOMPARE(panel->tree->rootIndex(), panel->treeModel->index(QString()));
    QTRY_VERIFY(treeNames(panel).contains(QStringLiteral("usr")));
    QCOMPARE(treeNames(panel).constFirst(), QStringLiteral("/"));
}

void TestMPanel::setTreeRootAgain()
{
    const QPointer<myFileSystemModel> treeModel = panel->treeModel;
    const QPointer<QItemSelectionModel> selection = panel->tree->selectionModel();
    panel->setTreeRoot(dir->path());
    QVERIFY(treeModel.isNull());
    QVERIFY(selection.isNull());
    QCOMPARE(panel->tree->model(), panel->treeModel);
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a"))));
    QCOMPARE(treeNames(panel).mid(1), (QStringList{"a", "d"}));
}

void TestMPanel::rootsThatAreNone_data()
{
    QTest::addColumn<QString>("relative");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("missing below missing") << QStringLiteral("missing/deeper");
    QTest::newRow("file") << QStringLiteral("one");
    QTest::newRow("dangling link") << QStringLiteral("dangling");
}

void TestMPanel::rootsThatAreNone()
{
    QFETCH(QString, relative);
    dir->link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    const QString path = dir->path(relative);
    panel->setTreeRoot(path);
    QCOMPARE(panel->rootPath, path);
    QCOMPARE(panel->currentPath, path);
    QCOMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 0 files, 0 Bytes"));
    QVERIFY(readAnotherFolder());
    QCOMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 0 files, 0 Bytes"));
    for (const QString& name : listNames(panel)) {
        QCOMPARE(name, QString()); // whatever is there is blank
    }
    panel->setTreeRoot(dir->path());
    QVERIFY(waitForList(panel));
    QVERIFY(listNames(panel).contains(QStringLiteral("one")));
}

void TestMPanel::lastPathsAreCrossed()
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

void TestMPanel::lastPathOfASelection()
{
    panel->list->setFocus();
    select({"two", "one"});
    QCOMPARE(gsLastPath1, dir->path(QStringLiteral("two")));
    QCOMPARE(gsLastPath2, QString());
    gwPanel1 = panel;
    select({"one"});
    QCOMPARE(gsLastPath2, dir->path(QStringLiteral("one")));
    panel->list->clearSelection();
    QCOMPARE(gsLastPath2, dir->path(QStringLiteral("one"))); // an empty selection names nothing
    panel->tree->setFocus();
    select({"two"});
    QCOMPARE(gsLastPath2, dir->path(QStringLiteral("one")));
}

void TestMPanel::openingAFolder()
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

void TestMPanel::openingFocusesTheTree()
{
    panel->list->setFocus();
    panel->treeRowChanged(dir->path(QStringLiteral("a")));
    QVERIFY(panel->tree->hasFocus());
}

void TestMPanel::sortAndSelectionStartAfresh()
{
    panel->list->setFocus();
    panel->headerClicked(0);
    QCOMPARE(listNames(panel).constFirst(), QStringLiteral("two"));
    select({"one"});
    QVERIFY(openFolder(panel, dir->path()));
    QCOMPARE(listNames(panel).constFirst(), QStringLiteral(".."));
    QVERIFY(!panel->list->selectionModel()->hasSelection());
}

void TestMPanel::collapseChildren()
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

void TestMPanel::treeDoubleClickOnTheRoot()
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

void TestMPanel::treeDoubleClickOnAFoldedFolder()
{
    const QPointer<myFileSystemModel> before = panel->treeModel;
    panel->on_TreeView_DoubleClicked(treeAt(QStringLiteral("a")));
    QCOMPARE(panel->treeModel, before.data());
    QVERIFY(!panel->tree->isExpanded(treeAt(QStringLiteral("a"))));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
    QCOMPARE(QModelIndex(panel->currentTreeIndex), treeAt(QStringLiteral("a")));
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("a")));
}

void TestMPanel::treeDoubleClickOnAnOpenFolder()
{
    panel->tree->expand(treeAt(QStringLiteral("a")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
    panel->tree->expand(treeAt(QStringLiteral("a/b")));
    panel->on_TreeView_DoubleClicked(treeAt(QStringLiteral("a")));
    QVERIFY(panel->tree->isExpanded(treeAt(QStringLiteral("a"))));
    QVERIFY(!panel->tree->isExpanded(treeAt(QStringLiteral("a/b"))));
}

void TestMPanel::treeDoubleClickClearsTheSelection()
{
    select({"one"});
    panel->on_TreeView_DoubleClicked(treeAt(QStringLiteral("d")));
    QVERIFY(!panel->list->selectionModel()->hasSelection());
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), QStringList{".."});
}

void TestMPanel::listDoubleClickOnAFolder()
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

void TestMPanel::listDoubleClickOnTheParent()
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

void TestMPanel::parentOfTheRootDoesNothing_data()
{
    QTest::addColumn<QString>("root");
    QTest::newRow("folder") << QStringLiteral("folder");
    QTest::newRow("top") << QStringLiteral("/");
}

void TestMPanel::parentOfTheRootDoesNothing()
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
    if (top && !up.isValid()) {
        return; // the top has no such row
    }
    QVERIFY(up.isValid());
    panel->on_ListView_DoubleClicked(up);
    QCOMPARE(panel->currentPath, path);
    if (!top) {
        QCOMPARE(panel->listModel, before.data());
        QCOMPARE(panel->contextPath, QStringLiteral("before"));
    }
}

void TestMPanel::listDoubleClickOnALink_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("opens");
    QTest::newRow("to a folder") << QStringLiteral("to folder.x") << false;
    QTest::newRow("to a link") << QStringLiteral("to link.x") << false;
    QTest::newRow("to a file") << QStringLiteral("to file.x") << true;
    QTest::newRow("dangling") << QStringLiteral("dangling.x") << true;
    QTest::newRow("to a link that dangles") << QStringLiteral("to dangling.x") << false;
}

void TestMPanel::listDoubleClickOnALink()
{
    QFETCH(QString, name);
    QFETCH(bool, opens);
    dir->link(QStringLiteral("to folder.x"), QStringLiteral("a"));
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

void TestMPanel::realDoubleClicks()
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

void TestMPanel::counts_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"plain", "%1 %2 %3", "<b>x<b>", "a\nb", "a b"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
    QTest::newRow("255 bytes") << QString(255, QLatin1Char('x'));
}

void TestMPanel::counts()
{
    QFETCH(QString, name);
    const QString path = dir->folder(name);
    dir->file(name + QStringLiteral("/f"), QByteArray(1536, 'x'));
    dir->file(name + QStringLiteral("/.g"), QByteArray(1, 'x'));
    const qint64 folderBytes = QFileInfo(dir->folder(name + QStringLiteral("/sub"))).size();
    QVERIFY(openFolder(panel, path));
    QCOMPARE(panel->folderLabel->text(),
        path + QStringLiteral(" has 1 dirs, 2 files, ") + FormatBytes(1537 + folderBytes));
}

void TestMPanel::countsFollowTheDisk()
{
    const QString path = dir->folder(QStringLiteral("new"));
    QVERIFY(openFolder(panel, path));
    QCOMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 0 files, 0 Bytes"));
    dir->file(QStringLiteral("new/f"), "12");
    QTRY_COMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 1 files, 2 Bytes"));
    dir->setTimes(QStringLiteral("new/f"), 1000);
    dir->file(QStringLiteral("new/f"), "12345");
    dir->setTimes(QStringLiteral("new/f"), 1000);
    QTRY_COMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 1 files, 5 Bytes"));
    QCOMPARE(listText(panel, QStringLiteral("f"), 1), QStringLiteral("5"));
    QVERIFY(QFile::remove(dir->path(QStringLiteral("new/f"))));
    QTRY_COMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 0 files, 0 Bytes"));
}

void TestMPanel::folderTextIsPlain()
{
    QCOMPARE(panel->folderLabel->textFormat(), Qt::PlainText);
    QCOMPARE(panel->selectionLabel->textFormat(), Qt::PlainText);
}

void TestMPanel::selectionOfTheTree()
{
    select({"one"});
    panel->tree->setFocus();
    panel->selectedCount = 7;
    panel->selectedBytes = 7;
    panel->selectedPaths = QStringList{"old"};
    panel->getSelection();
    QCOMPARE(panel->selectedPaths, QStringList{dir->path()});
    QCOMPARE(panel->selectedCount, 0);
    QCOMPARE(panel->selectedBytes, qint64(0));
    panel->driveBar->buttons.constFirst()->setFocus();
    panel->getSelection();
    QVERIFY(panel->selectedPaths.isEmpty());
}

void TestMPanel::selectionOfTheList()
{
    panel->list->setFocus();
    select({"two", "a", "one"});
    panel->getSelection();
    QCOMPARE(panel->selectedPaths,
        (QStringList{dir->path(QStringLiteral("two")), dir->path(QStringLiteral("a")),
            dir->path(QStringLiteral("one"))}));
    QCOMPARE(panel->selectedCount, 3);
    QCOMPARE(panel->selectedBytes, qint64(3)); // the size of a folder in the listing is 0
}

void TestMPanel::parentIsNotCounted()
{
    panel->list->setFocus();
    select({".."});
    QVERIFY(panel->selectedPaths.isEmpty());
    QCOMPARE(status(), QStringLiteral("Selected 0 file(s), 0 Bytes"));
    select({"..", "two"});
    QCOMPARE(panel->selectedPaths, QStringList{dir->path(QStringLiteral("two"))});
}

void TestMPanel::selectionTexts_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("1") << 1 << QStringLiteral("Selected 1 file(s), 1 Bytes");
    QTest::newRow("1 KB") << 1024 << QStringLiteral("Selected 1 file(s), 1KB");
    QTest::newRow("1.5 KB") << 1536 << QStringLiteral("Selected 1 file(s), 1.50KB");
}

void TestMPanel::selectionTexts()
{
    QFETCH(int, bytes);
    QFETCH(QString, text);
    dir->file(QStringLiteral("d/it"), QByteArray(bytes, 'x'));
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    panel->list->setFocus();
    select({"it"});
    QCOMPARE(status(), text);
}

void TestMPanel::freeSpaceText()
{
    panel->tree->setFocus();
    panel->listSelectionChanged();
    const QStorageInfo storage(dir->path());
    const float used = static_cast<float>(storage.bytesTotal() - storage.bytesFree())
        / static_cast<float>(storage.bytesTotal()) * 100.0F;
    const QString start = QString::fromLocal8Bit(storage.device()) + QStringLiteral(": ")
        + FormatBytes(storage.bytesTotal()) + QLatin1Char(' ');
    QVERIFY2(status().startsWith(start), qPrintable(status()));
    const QRegularExpression rest(QStringLiteral("^(\\d+\\.\\d\\d)% used$"));
    const QRegularExpressionMatch match = rest.match(status().mid(start.length()));
    QVERIFY2(match.hasMatch(), qPrintable(status()));
    QVERIFY(qAbs(match.captured(1).toFloat() - used) < 1.0F);
}

void TestMPanel::freeSpaceWithoutStorage_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("end");
    QTest::newRow("no blocks at all") << QStringLiteral("/proc") << QStringLiteral("proc: 0 Bytes nan% used");
    QTest::newRow("no such folder") << QStringLiteral("/no/such/folder") << QStringLiteral("% used");
}

void TestMPanel::freeSpaceWithoutStorage()
{
    QFETCH(QString, path);
    QFETCH(QString, end);
    panel->currentPath = path;
    panel->tree->setFocus();
    panel->listSelectionChanged();
    QString text = status();
    QVERIFY2(text.remove(QLatin1Char('-')).endsWith(end), qPrintable(status()));
}

void TestMPanel::selectionOrder()
{
    panel->list->setFocus();
    panel->headerClicked(0);
    panel->list->selectAll();
    QStringList expected;
    for (const QString& name : listNames(panel)) {
        if (name != QLatin1String("..")) {
            expected.append(dir->path(name));
        }
    }
    QCOMPARE(panel->selectedPaths, expected);
}

void TestMPanel::selectAllInABigFolder()
{
    dir->files(QStringLiteral("d"), 5000);
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    QTRY_COMPARE(listNames(panel).size(), 5001);
    panel->list->setFocus();
    QElapsedTimer clock;
    clock.start();
    panel->list->selectAll();
    QVERIFY2(clock.elapsed() < 1000, QByteArray::number(clock.elapsed()).constData());
    QCOMPARE(panel->selectedCount, 5000);
    QCOMPARE(status(), QStringLiteral("Selected 5000 file(s), 0 Bytes"));
}

void TestMPanel::firstHeaderClickSortsDescending()
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

void TestMPanel::oneFlagForAllColumns()
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

void TestMPanel::realHeaderClick()
{
    QHeaderView* header = panel->list->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(10, header->height() / 2));
    QCOMPARE(listNames(panel).constFirst(), QStringLiteral("two"));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
}

void TestMPanel::vanishedFolder_data()
{
    QTest::addColumn<QString>("open");
    QTest::addColumn<QString>("removed");
    QTest::addColumn<QString>("expected");
    QTest::newRow("the folder itself")
        << QStringLiteral("a/b/c") << QStringLiteral("a/b/c") << QStringLiteral("a/b");
    QTest::newRow("one above") << QStringLiteral("a/b/c") << QStringLiteral("a/b") << QStringLiteral("a");
    QTest::newRow("two above") << QStringLiteral("a/b/c") << QStringLiteral("a") << QString();
}

void TestMPanel::vanishedFolder()
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

void TestMPanel::vanishedRoot()
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

void TestMPanel::vanishedRootComesBack()
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

void TestMPanel::vanishedFolderOnBothPanels()
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

void TestMPanel::manyRemovalsKeepTheOrder()
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

void TestMPanel::tenThousandFolderChanges()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr int changes = 1000;
#else
    constexpr int changes = 10000;
#endif
    const QString folders[] = {dir->path(QStringLiteral("a")), dir->path(QStringLiteral("d"))};
    const auto change = [&](int times) {
        for (int i = 0; i < times; ++i) {
            panel->treeRowChanged(folders[i % 2]);
            if (i % 8 == 0) {
                QCoreApplication::processEvents();
            }
        }
        QCOMPARE(panel->currentPath, folders[1]);
        QVERIFY(waitForList(panel));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(readAnotherFolder());
    };
    change(200);
    startObjectCount();
    const int children = panel->findChildren<QObject*>().size();
    const int descriptors = descriptorCount();
    const int threads = threadCount();
    change(changes / 2); // the memory that threads and caches come to need once
    const long before = residentKib();
    change(changes / 2);
    QVERIFY2(qAbs(panel->findChildren<QObject*>().size() - children) <= 2,
        QByteArray::number(panel->findChildren<QObject*>().size() - children).constData());
    // The reading threads, eight at most, are objects as well and come when the machine is busy.
    QTRY_VERIFY2(qAbs(objectCount()) <= 16, QByteArray::number(objectCount()).constData());
    // A reading that nobody wants any more has its folder open until it notices, and each thread has a
    // descriptor to be woken by.
    QTRY_VERIFY2(descriptorCount() - qMax(0, threadCount() - threads) <= descriptors + 2,
        QByteArray::number(descriptorCount() - descriptors).constData());
    QVERIFY2(threadCount() <= qMax(threads, 12), QByteArray::number(threadCount() - threads).constData());
    // The path bar's connections, one more for each change, take half a MiB of this.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    const long grown = residentKib() - before;
    QVERIFY2(grown < 24576, QByteArray::number(static_cast<qlonglong>(grown)).constData());
#else
    Q_UNUSED(before)
#endif
    QCOMPARE(listNames(panel), QStringList{".."});
}

void TestMPanel::treeRootChangesLeaveNothing()
{
    const QString folders[] = {dir->path(QStringLiteral("a")), dir->path(QStringLiteral("d"))};
    const auto change = [&](int times) {
        for (int i = 0; i < times; ++i) {
            panel->setTreeRoot(folders[i % 2]);
            QCoreApplication::processEvents();
        }
        QVERIFY(waitForList(panel));
        QVERIFY(readAnotherFolder());
    };
    change(20);
    startObjectCount();
    const int descriptors = descriptorCount();
    change(500);
    QTRY_VERIFY2(qAbs(objectCount()) <= 4, QByteArray::number(objectCount()).constData());
    QVERIFY(descriptorCount() <= descriptors + 2);
}

void TestMPanel::destroyedWhileLoading()
{
    dir->files(QStringLiteral("d"), 3000);
    for (int i = 0; i < 20; ++i) {
        MPanel other(&window->window);
        other.treeRowChanged(dir->path(QStringLiteral("d")));
        for (int k = 0; k < i; ++k) {
            QCoreApplication::processEvents();
        }
    }
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    QTRY_COMPARE(listNames(panel).size(), 3001);
}

VANTREL_TEST_MAIN(TestMPanel)
#include "tst_MPanel.moc"
