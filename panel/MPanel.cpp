// Construction and layout of a panel, and its models.

#include "panel/MPanel.h"

#include "app/aGlobal.h"
#include "panel/FolderReturn.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MNavBar.h"
#include "panel/MTree.h"
#include "panel/MountWatch.h"
#include "panel/myFileSystemModel.h"

#include <QHeaderView>
#include <QLabel>
#include <QSplitter>
#include <QStatusBar>

namespace {

constexpr int rowHeight = 18;

/// Gives a view a model and frees the selection model of the one before, which the view leaves behind.
void giveModel(QAbstractItemView* view, QAbstractItemModel* model)
{
    const QItemSelectionModel* before = view->selectionModel();
    view->setModel(model);
    delete before;
}

} // namespace

MPanel::MPanel(QWidget* parent)
    : QFrame(parent)
    , rootPath(QStringLiteral("/"))
    , folderReturn(new FolderReturn(this))
    , mounts(MountWatch::shared())
{
    connect(folderReturn, SIGNAL(returned(QString)), this, SLOT(showReturned(QString)));
    connect(mounts.get(), SIGNAL(changed()), this, SLOT(showVolume()));
    newTreeModel();
    newListModel();
    makeBars();
    makeStatusBar();
    makeTree();
    makeList();
    makeSplitter();
    tree->partner = list;
    list->partner = tree;
    setTreeRoot(gstDrives.isEmpty() ? QStringLiteral("/") : gstDrives.constFirst().path);
    tree->header()->setMinimumWidth(splitter->width() * 3 / 10);
    tree->resizeColumnToContents(0);
    tree->setContextMenuPolicy(Qt::CustomContextMenu);
    list->setContextMenuPolicy(Qt::CustomContextMenu);
    connectViews();
    makeShortcuts();
    window()->installEventFilter(this);
}

void MPanel::makeBars()
{
    driveBar = new MDriveBar(this);
    driveBar->show();
    driveBar->setGeometry(0, 0, width(), giDriveBarHeight);
    navBar = new MNavBar(this);
    navBar->show();
    navBar->setGeometry(0, giDriveBarHeight, width(), giNavBarHeight);
}

void MPanel::makeStatusBar()
{
    statusBar = new QStatusBar(this);
    statusBar->show();
    const auto makeLabel = [this](const QString& description) {
        auto* label = new QLabel(statusBar);
        label->setObjectName(QStringLiteral("StatusBar"));
        label->setTextFormat(Qt::PlainText); // folder names are no markup
        label->setAccessibleDescription(description); // the name is the text
        return label;
    };
    selectionLabel = makeLabel(QStringLiteral("Selection or free space"));
    folderLabel = makeLabel(QStringLiteral("Contents of the folder"));
}

void MPanel::makeTree()
{
    tree = new MTree(this);
    tree->setModel(treeModel);
    tree->setAlternatingRowColors(true);
    tree->setHeaderHidden(true);
    for (const int column : {1, 2, 3}) {
        tree->hideColumn(column);
    }
    tree->setUniformRowHeights(true);
    tree->show();
}

void MPanel::makeList()
{
    list = new MList(this);
    list->setModel(listModel);
    list->setAlternatingRowColors(true);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
    list->horizontalHeader()->setHighlightSections(false);
    list->horizontalHeader()->setSortIndicatorShown(true);
    list->verticalHeader()->hide();
    list->setWordWrap(false); // of a second line not half could be seen
    list->verticalHeader()->setMinimumSectionSize(rowHeight); // the style would have more
    list->verticalHeader()->setDefaultSectionSize(rowHeight);
    list->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    list->setShowGrid(false);
    list->show();
}

void MPanel::makeSplitter()
{
    splitter = new QSplitter(this);
    splitter->addWidget(tree);
    splitter->addWidget(list);
    splitter->setHandleWidth(1);
    splitter->show();
    const int w = splitter->width();
    splitter->setSizes({w * 3 / 10, w * 7 / 10});
}

void MPanel::connectViews()
{
    connect(tree, SIGNAL(customContextMenuRequested(const QPoint&)), this,
        SLOT(ShowContextMenuTree(const QPoint&)));
    connect(list, SIGNAL(customContextMenuRequested(const QPoint&)), this,
        SLOT(ShowContextMenuList(const QPoint&)));
    connect(list->horizontalHeader(), SIGNAL(sectionClicked(int)), this, SLOT(headerClicked(int)));
    connect(tree, SIGNAL(doubleClicked(const QModelIndex)), this,
        SLOT(on_TreeView_DoubleClicked(const QModelIndex)));
    connect(list, SIGNAL(doubleClicked(const QModelIndex)), this,
        SLOT(on_ListView_DoubleClicked(const QModelIndex)));
}

void MPanel::resizeEvent(QResizeEvent* /*event*/)
{
    const int W = width();
    const int H = height();
    const int bars = giDriveBarHeight + giNavBarHeight;
    splitter->setGeometry(0, bars, W, H - bars - giStatusBarHeight);
    driveBar->setGeometry(0, -2, W, giDriveBarHeight); // two pixels above the top edge on purpose
    navBar->setGeometry(0, giDriveBarHeight, W, giNavBarHeight);
    statusBar->setGeometry(2, H - giStatusBarHeight, W - 4, giStatusBarHeight);
    const int SW = statusBar->width();
    // The two fields overlap by ten pixels on purpose.
    selectionLabel->setGeometry(10, 1, SW / 3, giStatusBarHeight);
    folderLabel->setGeometry(SW / 3, 1, SW * 2 / 3, giStatusBarHeight);
}

void MPanel::newTreeModel()
{
    myFileSystemModel* before = treeModel;
    treeModel = new myFileSystemModel(this);
    treeModel->setFilter(QDir::AllDirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    treeModel->setColumns(1);
    connect(treeModel, SIGNAL(entriesGone(QString, QStringList)), this,
        SLOT(treeEntriesGone(QString, QStringList)));
    connect(treeModel, SIGNAL(rootGone(QString)), this, SLOT(treeRootGone()), Qt::QueuedConnection);
    if (tree != nullptr) {
        giveModel(tree, treeModel);
    }
    if (before != nullptr) {
        before->retire();
    }
}

void MPanel::newListModel()
{
    myFileSystemModel* before = listModel;
    listModel = new myFileSystemModel(this);
    listModel->setFilter(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDot);
    listModel->setColumns(4);
    connect(listModel, SIGNAL(directoryLoaded(QString)), this, SLOT(listDirectoryLoaded(QString)));
    connect(listModel, SIGNAL(rootGone(QString)), this, SLOT(leaveGoneFolder()), Qt::QueuedConnection);
    connect(listModel, SIGNAL(reloadWanted()), this, SLOT(reloadList()), Qt::QueuedConnection);
    connect(listModel, SIGNAL(rootReplaced()), this, SLOT(listAnotherFolder()), Qt::QueuedConnection);
    if (list != nullptr) {
        giveModel(list, listModel);
    }
    if (before != nullptr) {
        before->retire();
    }
}
