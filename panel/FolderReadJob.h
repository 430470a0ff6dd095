#pragma once

#include "panel/FolderEntries.h"

#include <QObject>
#include <QRunnable>

#include <atomic>
#include <memory>

/// One reading of one folder, run once by a thread pool, which then deletes it.
class FolderReadJob : public QObject, public QRunnable
{
    Q_OBJECT

public:
    /// @param folder absolute path
    /// @param foldersOnly leave out everything but real folders
    /// @param before entries of the last reading, compared with what is found; null for a first reading
    /// @param abandoned shared flag; once set the job ends without a result
    /// @param serial number that its results bear
    FolderReadJob(QString folder, bool foldersOnly, std::unique_ptr<const FolderEntries> before,
        std::shared_ptr<const std::atomic<bool>> abandoned, quint64 serial = 0);

    void run() override;

signals:
    /// Emitted on the pool's thread: once, after an optional incomplete reading of a slow folder.
    void done(const FolderReading& reading, qint64 tookMs, quint64 serial);

private:
    bool wanted() const { return !m_abandoned->load(std::memory_order_relaxed); }
    bool isListed(const QFileInfo& info) const;
    FolderEntries readEntries();
    void showFirstPart(const FolderEntries& soFar, qint64 elapsedMs);

    QString m_folder;
    bool m_foldersOnly;
    std::unique_ptr<const FolderEntries> m_before;
    std::shared_ptr<const std::atomic<bool>> m_abandoned;
    quint64 m_serial;
    bool m_firstPartDecided = false;
    quint64 m_device = 0;
    quint64 m_number = 0;
};
