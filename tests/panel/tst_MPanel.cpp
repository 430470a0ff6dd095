#include "panel/MPanel.h"

#include "app/aGlobal.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MNavBar.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/ObjectCount.h"
#include "tests/support/PanelFixture.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>

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

/// What a panel is made of, the roots that it is given, and that it leaves nothing over.
class TestMPanel : public QObject, protected PanelFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

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

    void tenThousandFolderChanges();
    void treeRootChangesLeaveNothing();
    void destroyedWhileLoading();
};

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
