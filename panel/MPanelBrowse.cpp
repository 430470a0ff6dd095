// Browsing: what a panel shows, and what a double-click or a header click does.

#include "panel/MPanel.h"

#include "app/TextHelpers.h"
#include "app/aGlobal.h"
#include "panel/FolderReturn.h"
#include "panel/MList.h"
#include "panel/MNavBar.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"

#include <QDesktopServices>
#include <QEvent>
#include <QHeaderView>
#include <QPointer>
#include <QUrl>

void MPanel::setTreeRoot(QString path)
{
    rootPath = cleanAbsolutePath(path);
    newTreeModel();
    treeModel->showFolder(rootPath);
    tree->startChangeWatcher();
    tree->reset();
    tree->setRootIndex(rootPath == QLatin1String("/") ? treeModel->index(QString())
                                                      : treeModel->index(xs_UpOneLevel(rootPath)));
    currentTreeIndex = treeModel->index(rootPath);
    tree->expand(currentTreeIndex);
    currentPath = rootPath;
    setTreePath(rootPath);
    treeRowChanged(rootPath);
    if (treeModel->showsNothing()) {
        folderReturn->waitFor(rootPath); // also where it has come back since, and is listed
    }
}

void MPanel::setTreePath(QString path)
{
    tree->selectionModel()->setCurrentIndex(
        treeModel->index(path), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void MPanel::treeRowChanged(QString path)
{
    currentPath = path;
    listFolder(path);
    tree->setFocus(Qt::OtherFocusReason);
    tree->showCurrent(treeModel->index(path));
    tree->scrollTo(treeModel->index(path), QAbstractItemView::EnsureVisible);
    navBar->SetNavBar(path);
    noteLastPath(path);
    listSelectionChanged();
}

/// Lists a folder in a new model, without rows where it is not there.
/// @return whether it is
bool MPanel::listFolder(const QString& path)
{
    newListModel();
    list->setRootIndex(listModel->showFolder(path));
    if (showsFolder()) {
        folderReturn->stop();
    } else {
        folderReturn->waitFor(path);
        showCounts(path, 0, 0, 0); // nothing will be loaded: the counts of the folder before must not stay
    }
    return showsFolder();
}

bool MPanel::showsFolder() const
{
    return !listModel->showsNothing();
}

bool MPanel::takesCommands() const
{
    return showsFolder() && !list->isRestoring();
}

void MPanel::noteLastPath(const QString& path)
{
    // Crosswise on purpose: the panels are told apart by who writes, and the compare command reads both.
    QString& lastPath = this == gwPanel1 ? gsLastPath2 : gsLastPath1;
    lastPath = path;
}

void MPanel::collapseChildren(const QModelIndex& index)
{
    if (!index.isValid()) {
        return;
    }
    const int rows = treeModel->rowCount(index);
    for (int row = 0; row < rows; ++row) {
        collapseChildren(treeModel->index(row, 0, index));
    }
    if (tree->isExpanded(index)) {
        tree->collapse(index);
    }
}

void MPanel::on_TreeView_DoubleClicked(const QModelIndex index)
{
    const bool wasExpanded = tree->isExpanded(index);
    currentTreeIndex = index;
    currentPath = treeModel->filePath(index);
    if (currentPath == rootPath) {
        setTreeRoot(rootPath); // a fresh model: the index that was clicked is gone with the old one
        tree->setExpanded(treeModel->index(rootPath), wasExpanded);
    } else if (wasExpanded) {
        collapseChildren(index);
        tree->expand(index);
    } else {
        tree->collapse(index);
    }
    list->clearSelection();
    treeRowChanged(currentPath);
}

void MPanel::on_ListView_DoubleClicked(const QModelIndex index)
{
    static const QString upEntry = QStringLiteral("/..");
    // The folder that opens takes the model of the index with it: everything is taken out of it first.
    const QString path = listModel->filePath(index);
    const QString name = listModel->entryName(index);
    const QFileInfo info(path);
    if (info.isSymLink()) {
        // Its text may be none that leads anywhere; whether it leads to a folder is asked of the link itself.
        if (info.isDir() || QFileInfo(info.symLinkTarget()).isSymLink()) {
            return;
        }
    } else if (listModel->isDir(index)) {
        if (path.endsWith(upEntry)) {
            const QString up = xs_UpOneLevel(path.left(path.length() - upEntry.length()));
            if (up.length() < rootPath.length()) {
                return;
            }
            setTreePath(up);
        } else {
            tree->expand(treeModel->index(path));
            setTreePath(path);
        }
        contextPath = currentPath;
        return;
    }
    openFile(path, name);
}

void MPanel::openFile(const QString& path, const QString& name)
{
    contextPath = path;
    const QString command = associatedCommand(name);
    if (command.isEmpty()) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    } else {
        Launcher(command, path, QString(), QString());
    }
}

QString MPanel::associatedCommand(const QString& name)
{
    // The inserting subscript is wanted: a suffix without a program is in the map afterwards, with an empty
    // command.
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const QString command = gmFileAssn[name.mid(dot + 1).toLower()];
    if (command.isEmpty() && dot < 0) {
        return gmFileAssn[QString()];
    }
    return command;
}

void MPanel::headerClicked(int section)
{
    if (!showsFolder()) {
        return; // nothing to sort, and the next folder's first click stays the one it is
    }
    const Qt::SortOrder order = sortDescendingNext ? Qt::DescendingOrder : Qt::AscendingOrder;
    sortDescendingNext = !sortDescendingNext;
    list->horizontalHeader()->setSortIndicator(section, order);
    listModel->sort(section, order);
}

void MPanel::treeEntriesGone(const QString& folder, const QStringList& names)
{
    for (const QString& name : names) {
        const QString gone = folder == QLatin1String("/") ? folder + name : folder + QLatin1Char('/') + name;
        if (currentPath == gone || currentPath.startsWith(gone + QLatin1Char('/'))) {
            leaveGoneFolder();
            return;
        }
    }
}

void MPanel::leaveGoneFolder()
{
    // A link to a folder is none of the tree's, unless it is the root.
    const auto isShown = [this](const QFileInfo& info) {
        return info.isDir() && (info.filePath() == rootPath || !info.isSymLink());
    };
    QString path = currentPath;
    while (!isShown(QFileInfo(path)) && path.length() > rootPath.length()) {
        path = xs_UpOneLevel(path);
    }
    if (!QFileInfo(path).isDir()) {
        // Not even the root is there. The model that reports it is still in use and cannot be replaced now.
        QMetaObject::invokeMethod(this, "showRootAgain", Qt::QueuedConnection);
        return;
    }
    const QPointer<QWidget> focused(window()->focusWidget());
    if (path != currentPath) {
        setTreePath(path);
    }
    if (path != currentPath || !showsFolder() || listModel->rowCount(list->rootIndex()) == 0) {
        treeRowChanged(path); // the tree did not take it, or it was gone for a moment only
    }
    leaveFocusTo(focused);
}

void MPanel::treeRootGone()
{
    if (sender() == treeModel) { // else reported by a model that has been replaced since
        showRootAgain(); // also where it was gone for a moment only: the model has let go of it
    }
}

/// A folder that was not there when it was to be shown is there.
void MPanel::showReturned(const QString& folder)
{
    if (folder == rootPath) {
        showRootAgain();
    } else if (folder == currentPath && !showsFolder()) {
        listFolder(folder);
        listSelectionChanged();
    }
}

/// Shows the root from its beginning, or no rows where it is not there.
void MPanel::showRootAgain()
{
    if (!QFileInfo(rootPath).isDir() && treeModel->showsNothing()) {
        folderReturn->waitFor(rootPath); // it is shown as it is
        return;
    }
    const QPointer<QWidget> focused(window()->focusWidget());
    setTreeRoot(rootPath);
    leaveFocusTo(focused);
}

/// Who works in the other panel goes on there, whatever happens to the folder of this one. Who works in this
/// listing stays in it: in the tree, the next key would mean the whole folder that is shown instead.
void MPanel::leaveFocusTo(QWidget* focused)
{
    if (focused != nullptr) {
        focused->setFocus(Qt::OtherFocusReason);
    }
}

void MPanel::reloadList()
{
    if (!QFileInfo(currentPath).isDir()) {
        leaveGoneFolder();
        if (QFileInfo(currentPath).isDir()) {
            return; // else the root is gone, and nothing is to be listed
        }
    }
    if (!showsFolder()) {
        return; // asked for by a model that has been replaced since
    }
    // Not the current folder, which a right click in the tree changes.
    const QString folder = listModel->rootPath();
    const MList::Place place = list->place();
    const int section = listModel->sortColumn();
    const Qt::SortOrder order = listModel->sortOrder();
    if (listFolder(folder)) {
        listModel->sort(section, order);
        list->restoreWhenLoaded(place);
    }
}

void MPanel::listAnotherFolder()
{
    if (!showsFolder()) {
        return; // it has gone since
    }
    const QString folder = listModel->rootPath();
    listFolder(folder);
    noteLastPath(folder);
    listSelectionChanged();
}

void MPanel::refresh()
{
    treeModel->refresh();
    listModel->refresh();
    folderReturn->look();
}

void MPanel::refreshUnwatched()
{
    treeModel->refreshUnwatched();
    listModel->refreshUnwatched();
    folderReturn->look();
}

bool MPanel::eventFilter(QObject* watched, QEvent* event)
{
    // A modal dialog has ended: whatever it did shows, also where the system has no watches left to tell of
    // it.
    if (event->type() == QEvent::WindowUnblocked && watched == window()) {
        refresh();
    }
    // The panel is looked at again, after something may have been done elsewhere so that folders can be read.
    if (event->type() == QEvent::WindowActivate && watched == window()) {
        refreshUnwatched();
    }
    return QFrame::eventFilter(watched, event);
}
