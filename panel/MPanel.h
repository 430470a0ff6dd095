#pragma once

#include <QFrame>
#include <QPersistentModelIndex>
#include <QStringList>

#include <memory>

class FolderReturn;
class MDriveBar;
class MList;
class MNavBar;
class MTree;
class MountWatch;
class QKeyEvent;
class QLabel;
class QSplitter;
class QStatusBar;
class myFileSystemModel;

/// One of the two file panels: drive bar, navigation bar, folder tree beside the folder's listing, status
/// bar. It keeps the current folder, opens folders and files, keeps the selection and its totals for the
/// commands, and runs them. GUI thread only. Child widgets belong to Qt's parent-child tree; the two models
/// are owned and replaced by the panel.
class MPanel : public QFrame
{
    Q_OBJECT

public:
    /// @param parent the main window, owner of the panel
    explicit MPanel(QWidget* parent);

    /// Makes a new model for the tree or the listing, gives it to the view and frees the old one.
    void newTreeModel();
    void newListModel();

    /// Roots the tree at a folder and opens it.
    /// @param path spelt anyhow, as a drive's is; what is opened is its clean absolute form, links included.
    /// One
    ///        that is no folder gives an empty tree and listing until it is one
    void setTreeRoot(QString path);
    /// Makes a folder the tree's current row, which opens it.
    void setTreePath(QString path);
    /// Opens a folder in the listing.
    void treeRowChanged(QString path);
    /// Collapses an item of the tree and everything below it, deepest first.
    void collapseChildren(const QModelIndex& index);

    /// Fills selectedPaths, selectedCount and selectedBytes: the current folder if the tree has the focus,
    /// the selected rows if the listing has it.
    void getSelection();
    /// Rewrites the left status field: totals of the selection while the listing has the focus, else the free
    /// space.
    void listSelectionChanged();

    /// Ends a drag in this panel: runs the copy or move command for the dragged items.
    /// @param target folder that the items were dropped into
    void gotDrop(Qt::DropAction action, const QString& target);
    /// Runs the command of a key.
    /// @return whether the key stands for a command
    bool mykeyPressEvent(QKeyEvent* event);

    /// @return whether the current folder is there and listed. Where it is not, the listing has no rows, and
    /// keys,
    ///         menus and drops do nothing
    bool showsFolder() const;
    /// @return whether commands have something to act on: the folder is shown, and its rows are not being
    /// read anew,
    ///         when the selection is still to come back
    bool takesCommands() const;

    /// @return what Tab goes through, in this order: drive buttons, path buttons, tree, listing
    QList<QWidget*> tabStops() const;

    /// Starts an external program, detached; it is never waited for. A start that fails is told in a message
    /// box.
    /// @param command program and arguments, separated by blanks; quotes have no meaning
    /// @param arg1 further argument, blanks and all; left out if empty
    /// @param arg2 the same
    /// @param workdir working folder; the home folder if empty
    void Launcher(const QString& command, const QString& arg1, const QString& arg2, const QString& workdir);

    /// Runs a command.
    /// @param code CommandCode; unknown codes do nothing
    /// @param path item that the command applies to, where it does not work on the selection
    /// @param command command text of the menu entry, for commands that launch a program
    void DoAction(int code, const QString& path, const QString& command);
    /// Builds, runs and dispatches a context menu.
    /// @param path item that the menu is for
    /// @param isFolder whether it is a folder
    /// @param globalPos where the menu opens, in screen coordinates
    void ShowContextMenu(const QString& path, int isFolder, const QPoint& globalPos);

    QSplitter* splitter = nullptr;
    MTree* tree = nullptr;
    MList* list = nullptr;
    myFileSystemModel* treeModel = nullptr;
    myFileSystemModel* listModel = nullptr;
    MDriveBar* driveBar = nullptr;
    MNavBar* navBar = nullptr;
    QStatusBar* statusBar = nullptr;
    QLabel* selectionLabel = nullptr; ///< left status field: totals of the selection, or free space
    QLabel* folderLabel = nullptr; ///< right status field: counts of the folder
    QString rootPath; ///< folder that the tree is rooted at
    QPersistentModelIndex currentTreeIndex; ///< current folder in treeModel, drawn with the open-folder icon
    QString currentPath; ///< current folder, listed on the right
    QString contextPath; ///< path that the commands of the context menu act on
    QStringList selectedPaths;
    int selectedCount = 0;
    qint64 selectedBytes = 0;
    bool sortDescendingNext
        = true; ///< the next header click sorts descending; one flag for all columns on purpose

public slots:
    void listDirectoryLoaded(const QString& path);
    void headerClicked(int section);
    void on_TreeView_DoubleClicked(const QModelIndex index);
    void on_ListView_DoubleClicked(const QModelIndex index);
    void ShowContextMenuTree(const QPoint& pos);
    void ShowContextMenuList(const QPoint& pos);
    /// Leaves a folder that is gone from disk for the nearest one above it that is there, not above the root;
    /// a root that is gone itself is waited for.
    void leaveGoneFolder();
    /// Lists the current folder anew, with the same order and place, after more rows went than a model
    /// removes fast.
    void reloadList();
    /// Lists the current folder as one that was not shown before: at its path there is another one now.
    /// Nothing is selected in it.
    void listAnotherFolder();
    /// Reads what both views show again, for changes that the system did not announce.
    void refresh();
    /// Reads those folders again of which the system announces no changes, as they may not be read, or there
    /// are no watches left.
    void refreshUnwatched();
    /// Copies or moves what the view with the focus has selected into the other panel's folder, as a drag
    /// there does.
    void copyToOther();
    void moveToOther();
    void widenTree();
    void narrowTree();
    /// Gives the listing's current column, the first where there is none, ten pixels more or less, not less
    /// than the header allows.
    void widenColumn();
    void narrowColumn();

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void treeEntriesGone(const QString& folder, const QStringList& names);
    void treeRootGone();
    void showReturned(const QString& folder);
    void showRootAgain();
    void showVolume();

private:
    void makeBars();
    void makeStatusBar();
    void makeTree();
    void makeList();
    void makeSplitter();
    void connectViews();
    void makeShortcuts();
    void sendToOther(Qt::DropAction action);
    void moveSplitter(int steps);
    void resizeColumn(int pixels);
    void leaveFocusTo(QWidget* focused);
    bool listFolder(const QString& path);
    void noteLastPath(const QString& path);
    void openFile(const QString& path, const QString& name);
    QString keyPath() const;
    QString associatedCommand(const QString& name);
    void showFreeSpace();
    void showCounts(const QString& path, qint64 dirs, qint64 files, qint64 bytes);

    /// What the copy command takes from the listing.
    struct CopySource
    {
        QStringList paths;
        QString name; ///< display name of the last one
        bool hasFolder = false;
    };
    CopySource listSelectionForCopy();
    void copySelected(const QString& path);
    void deleteSelected();
    void dropPending(int code);
    void copyPathsToClipboard();

    FolderReturn* folderReturn; ///< waits while the current folder is none; child of this
    std::shared_ptr<MountWatch> mounts; ///< shared with all who want to know of mounts
};
