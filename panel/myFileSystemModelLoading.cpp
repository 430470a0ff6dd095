// Loading of folders: readings come from the FolderReader and go to the base class in slices.

#include "panel/myFileSystemModel.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QScopedValueRollback>
#include <QSet>

#include <algorithm>

namespace {

/// Entries of the first slice: more than a screenful, few enough to be painted at once.
constexpr int firstSlice = 256;
/// Entries of the first slice of changes, each of which costs a search through the rows.
constexpr int firstSliceOfChanges = 16;
constexpr int largestSlice = 16384;

/// A slice that takes longer than this is followed by smaller ones, one that takes less than half by larger
/// ones.
constexpr qint64 sliceMs = 16;

/// Removing rows one by one costs a search through all rows each, and where they are selected another one
/// through what is left of the selection. Beyond this product of rows to go and rows there are (less than a
/// tenth of a second) a new model is cheaper.
constexpr qint64 costlyRemovals = 2'500'000;

/// The base class's own ways in, which its gatherer calls: facts of new or changed entries, and the list of
/// all names.
struct BaseSlots
{
    QMetaMethod changed;
    QMetaMethod listed;

    BaseSlots()
    {
        const QMetaObject& meta = QFileSystemModel::staticMetaObject;
        changed = meta.method(
            meta.indexOfSlot("_q_fileSystemChanged(QString,QVector<QPair<QString,QFileInfo> >)"));
        listed = meta.method(meta.indexOfSlot("_q_directoryChanged(QString,QStringList)"));
    }
};

const BaseSlots& baseSlots()
{
    static const BaseSlots methods;
    return methods;
}

} // namespace

bool myFileSystemModel::isLoadable(const QString& folder) const
{
    const QString root = rootPath();
    if (folder.endsWith(QLatin1String("/.."))) {
        return false; // the row that leads up
    }
    return folder == root || root == QLatin1String("/") || folder.startsWith(root + QLatin1Char('/'));
}

bool myFileSystemModel::canFetchMore(const QModelIndex& parent) const
{
    if (!parent.isValid() || parent.column() > 0 || !isDir(parent)) {
        return false;
    }
    const QString folder = filePath(parent);
    return isLoadable(folder) && !m_reader->knows(folder);
}

void myFileSystemModel::fetchMore(const QModelIndex& parent)
{
    if (canFetchMore(parent)) {
        m_reader->setFoldersOnly(!filter().testFlag(QDir::Files));
        m_reader->read(filePath(parent));
    }
}

void myFileSystemModel::takeReading(const FolderReading& reading)
{
    if (m_showsNothing) {
        return;
    }
    if (!reading.exists) {
        dropFolder(reading.folder);
        return;
    }
    if (reading.replaced && reading.folder == rootPath()
        && isSignalConnected(QMetaMethod::fromSignal(&myFileSystemModel::rootReplaced))) {
        emit rootReplaced();
        return;
    }
    m_feeds.append(reading);
    if (!m_feedTimer.isActive()) {
        m_slice = 0;
        m_feedTimer.start();
    }
}

void myFileSystemModel::dropFolder(const QString& folder)
{
    const bool isRoot = folder == rootPath();
    m_reader->forget(folder);
    m_loaded = FolderReading();
    if (!m_feeds.isEmpty() && m_feeds.constFirst().folder == folder) {
        m_fed = 0;
    }
    m_feeds.erase(std::remove_if(m_feeds.begin(), m_feeds.end(),
                      [&folder](const FolderReading& feed) { return feed.folder == folder; }),
        m_feeds.end());
    if (!index(folder).isValid()) {
        return; // its row went before; the base class would take the top's rows for the folder's
    }
    const int rows = rowCount(index(folder));
    if (!isRoot || !leavesRemoval(rows, rows)) {
        removeAllBut(folder, QStringList());
        emit directoryLoaded(folder);
    }
    if (isRoot) {
        emit rootGone(folder);
    }
}

void myFileSystemModel::removeAllBut(const QString& folder, const QStringList& names)
{
    const QScopedValueRollback<bool> removing(m_isRemoving, true);
    baseSlots().listed.invoke(this, Qt::DirectConnection, Q_ARG(QString, folder), Q_ARG(QStringList, names));
}

/// Asks for a new model instead where removing rows would take long.
/// @return whether somebody hears that, and nothing is to be removed
bool myFileSystemModel::leavesRemoval(int rows, int removed)
{
    if (qint64(rows) * removed <= costlyRemovals
        || !isSignalConnected(QMetaMethod::fromSignal(&myFileSystemModel::reloadWanted))) {
        return false;
    }
    emit reloadWanted();
    return true;
}

bool myFileSystemModel::dropRows(const FolderReading& reading)
{
    const QModelIndex parent = index(reading.folder);
    if (leavesRemoval(rowCount(parent), reading.removed.size())) {
        return false;
    }
    emit entriesGone(reading.folder, reading.removed);
    const QSet<QString> removed(reading.removed.begin(), reading.removed.end());
    QStringList left;
    for (int row = 0; row < rowCount(parent); ++row) {
        const QString name = entryName(index(row, 0, parent));
        if (!removed.contains(name)) {
            left.append(name);
        }
    }
    removeAllBut(reading.folder, left);
    const QString below
        = reading.folder.endsWith(QLatin1Char('/')) ? reading.folder : reading.folder + QLatin1Char('/');
    for (const QString& name : reading.removed) {
        m_reader->forget(below + name);
    }
    return true;
}

void myFileSystemModel::feed()
{
    if (m_feeds.isEmpty()) {
        m_feedTimer.stop();
        return;
    }
    const FolderReading& reading = m_feeds.constFirst();
    if (!index(reading.folder).isValid()) {
        m_feeds.removeFirst(); // gone since it was read; the base class would take the entries for the top's
        m_fed = 0;
        return;
    }
    QElapsedTimer clock;
    clock.start();
    if (m_fed == 0) {
        m_slice = reading.first ? firstSlice : firstSliceOfChanges;
        m_provider.nextRound();
        if (!reading.removed.isEmpty() && !dropRows(reading)) {
            m_feeds.clear();
            return;
        }
    }
    feedSlice(reading, qMin(m_slice, reading.changed.size() - m_fed));
    if (m_fed >= reading.changed.size()) {
        endFeed();
    } else if (clock.elapsed() > sliceMs) {
        m_slice = qMax(1, m_slice / 2);
    } else if (clock.elapsed() < sliceMs / 2) {
        m_slice = qMin(largestSlice, m_slice * 2);
    }
}

void myFileSystemModel::feedSlice(const FolderReading& reading, int count)
{
    if (count <= 0) {
        return;
    }
    const QModelIndex parent = index(reading.folder);
    const int rows = rowCount(parent);
    const bool inOrder
        = reading.first && m_sortColumn == 0 && m_sortOrder == Qt::AscendingOrder && rows == m_fed;
    FolderEntries slice = reading.changed.mid(m_fed, count);
    m_fed += count;
    m_ranked = false;
    baseSlots().changed.invoke(this, Qt::DirectConnection, Q_ARG(QString, reading.folder),
        QGenericArgument("QVector<QPair<QString,QFileInfo> >", &slice));
    const bool grown = rowCount(parent) != rows;
    m_needsSort = m_needsSort || (grown && !inOrder) || (!grown && m_sortColumn != 0);
}

void myFileSystemModel::endFeed()
{
    m_loaded = m_feeds.takeFirst();
    // Let go, not cleared: clear() would first copy what the reader shares.
    m_loaded.entries = FolderEntries();
    m_loaded.changed = FolderEntries();
    m_fed = 0;
    if (m_needsSort) {
        sortNow();
    }
    if (m_loaded.complete) {
        emit directoryLoaded(m_loaded.folder);
    }
}
