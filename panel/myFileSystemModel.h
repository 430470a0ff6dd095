#pragma once

#include "panel/FolderReader.h"
#include "panel/LoadingIconProvider.h"

#include <QFileSystemModel>
#include <QHash>
#include <QIcon>
#include <QList>
#include <QTimer>

class MPanel;

/// The file system as a panel's views show it, one instance for the tree (one column) and one for the listing
/// (four).
///
/// What the base class reports is changed in the columns, texts, icons and alignment, and every item outside
/// the panel's root is blanked. Besides, folders are not loaded by the base class's own gatherer but by a
/// FolderReader, which reads and sorts them on a thread: the base class then gets the rows in slices and in
/// their final order, so that the GUI thread neither waits nor sorts. Folders above the model's root path are
/// never loaded.
class myFileSystemModel : public QFileSystemModel
{
    Q_OBJECT

public:
    /// @param owner panel that owns the model, and source of the root path and the current tree index
    explicit myFileSystemModel(MPanel* owner);

    /// Sets the number of columns that headerData() and data() answer for.
    void setColumns(int n);

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    void sort(int column, Qt::SortOrder order) override;
    /// @return what the rows are sorted by, which is not what a header shows that was never clicked
    int sortColumn() const { return m_sortColumn; }
    Qt::SortOrder sortOrder() const { return m_sortOrder; }

    /// Loads a folder and follows it, the only one and once for each model.
    /// @param path clean absolute path. Where no folder is there, the model has no rows from then on: the
    /// base class
    ///        would show its working folder, or the top of the file system
    /// @return its index; invalid where it is not there
    QModelIndex showFolder(const QString& path);
    /// @return whether showFolder() has found no folder
    bool showsNothing() const { return m_showsNothing; }
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    using QFileSystemModel::index;
    /// @return index of a path; invalid where nothing is shown, or where nothing has that path
    QModelIndex index(const QString& path, int column = 0) const;

    /// The base class gives the text that is shown in the index's column, which need not be the name: what
    /// acts on a row takes filePath() or entryName(), which are the same for every column and whatever is
    /// shown.
    QString fileName(const QModelIndex& index) const = delete;
    /// @return name of an entry as the file system has it; empty for no entry
    QString entryName(const QModelIndex& index) const;

    /// Counts the loaded entries of a folder; no disk access, no recursion.
    /// @param path the folder
    /// @param dirs becomes the number of folders, ".." not counted
    /// @param files becomes the number of everything else
    /// @param bytes becomes the sum of all sizes; the file system's size of a folder entry is added on
    /// purpose
    void getFolderStats(QString path, qint64& dirs, qint64& files, qint64& bytes);

    /// Frees the model, which no view may show any more: at once, or, where that would take long, on a thread
    /// of its own.
    void retire();

    /// @return whether rows are being removed, one after the other: who asks for all selected rows waits for
    /// the end
    bool isRemoving() const { return m_isRemoving; }

    /// Reads all loaded folders again, for changes that the system did not announce.
    void refresh();
    /// Reads those loaded folders again of which the system announces no changes.
    void refreshUnwatched();

signals:
    /// Entries of a loaded folder are gone from disk; their rows go after this.
    void entriesGone(const QString& folder, const QStringList& names);
    /// The root folder itself is gone. Whoever replaces the model for it must not do so directly.
    void rootGone(const QString& folder);
    /// Another folder has come to stand where the root folder was, as when a volume is mounted over it. The
    /// rows are still those of the other one; whoever is connected makes a new model, but not directly.
    void rootReplaced();
    /// So many rows are to go that a new model is cheaper than this one. Nothing is removed if somebody is
    /// connected. Comes before rootGone() where they are those of the root folder that is gone.
    void reloadWanted();

protected:
    bool event(QEvent* event) override;

private slots:
    void takeReading(const FolderReading& reading);
    void feed();

private:
    bool isLoadable(const QString& folder) const;
    bool isOutsideRoot(const QModelIndex& index) const;
    QVariant displayText(const QModelIndex& index) const;
    QIcon icon(const QModelIndex& index) const;
    void dropFolder(const QString& folder);
    void removeAllBut(const QString& folder, const QStringList& names);
    bool leavesRemoval(int rows, int removed);
    bool dropRows(const FolderReading& reading);
    void feedSlice(const FolderReading& reading, int count);
    void endFeed();
    void sortNow();
    void sortListing();
    QString ownerTextOf(const QFileInfo& info) const;

    MPanel* panel;
    int columns = 0;
    bool m_showsNothing = false;
    bool m_isRemoving = false;

    LoadingIconProvider m_provider;
    /// A call of the base class to itself is being delivered. Stands before m_reader, whose making sends an
    /// event.
    bool m_inQueuedCall = false;
    FolderReader* m_reader; ///< child of this
    QList<FolderReading> m_feeds; ///< readings that wait for their turn, the first one under way
    int m_fed = 0; ///< entries of the first feed that the base class has
    int m_slice = 0; ///< entries to hand over at once
    QTimer m_feedTimer;
    int m_sortColumn = 0;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    bool m_needsSort = false; ///< rows have come that are not in their place
    bool m_ranked = false; ///< the entries' types tell their places in the sorted column
    FolderReading m_loaded; ///< totals of the folder that was loaded last, without its entries
    mutable QHash<uint, QString> m_owners; ///< user names by user id, for the life of the model
};
