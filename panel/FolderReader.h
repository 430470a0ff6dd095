#pragma once

#include "panel/FolderEntries.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <memory>

class FolderWatch;
class MountWatch;

/// Reads folders on threads of a pool and keeps the readings up to date: a folder that was asked for once is
/// watched and read again, at measured intervals, when something in it changes. Lives on the GUI thread. A
/// folder that is slow to answer keeps one thread of the pool busy and nothing else; whoever destroys the
/// reader does not wait for it.
class FolderReader : public QObject
{
    Q_OBJECT

public:
    /// @param parent owner
    explicit FolderReader(QObject* parent);
    ~FolderReader() override;

    /// Sets whether only real folders are listed, as the tree wants it. To be called before the first read().
    void setFoldersOnly(bool only) { m_foldersOnly = only; }
    /// Reads @p folder (absolute path) and watches it from now on.
    void read(const QString& folder);
    /// Reads everything again that has been read, whether it is watched or not.
    void refresh();
    /// Reads those folders again that are not watched themselves: that may not be read, or for which the
    /// system has no watch left.
    void refreshUnwatched();
    /// @return whether @p folder has been asked for
    bool knows(const QString& folder) const { return m_folders.contains(folder); }
    /// @return what the last reading of @p folder found; nothing for one that has not been read
    FolderEntries entries(const QString& folder) const { return m_folders.value(folder).entries; }
    /// Forgets a folder that is gone, and everything below it.
    void forget(const QString& folder);

signals:
    /// A reading is there. Emitted on the GUI thread; for a known folder only when something has changed, or
    /// when only a part of it was there before.
    void readingDone(const FolderReading& reading);

private slots:
    void folderChanged(const QString& folder);
    void mountsChanged();
    void takeReading(FolderReading reading, qint64 tookMs, quint64 serial);
    void readDueFolders();

private:
    struct Folder
    {
        FolderEntries entries;
        bool read = false; ///< `entries` holds a reading
        bool partTold = false; ///< of a slow folder, the rest of which is still to come
        bool running = false; ///< a job is under way
        quint64 serial = 0; ///< of the job that was started last
        bool due = false; ///< to be read again
        int watch = -1; ///< number of its last watch; below 0 where it never had one
        bool another = false; ///< another folder has come to stand there since it was read
        quint64 device = 0; ///< with `number`, which folder was read last
        quint64 number = 0;
        qint64 tookMs = 0; ///< duration of the last reading
        QElapsedTimer since; ///< time since the last reading ended
    };

    void start(const QString& folder, Folder& state);
    void watch(const QString& folder, Folder& state);
    static bool isReplaced(const Folder& state, const FolderReading& reading);
    void wakeDueTimer();

    bool m_foldersOnly = false;
    quint64 m_lastSerial = 0; ///< a folder that was forgotten and asked for again gets new numbers
    QHash<QString, Folder> m_folders;
    FolderWatch* m_watch; ///< child of this
    std::shared_ptr<MountWatch> m_mounts; ///< shared with all other objects of this class
    QTimer m_dueTimer;
    std::shared_ptr<std::atomic<bool>>
        m_abandoned; ///< set once, tells running jobs that nobody waits for them
};
