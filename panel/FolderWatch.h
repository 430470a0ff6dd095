#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class FolderEvents;

/// Tells which folders have changed: entries made, removed or renamed, and the content or facts of entries.
/// Lives on the GUI thread and waits for nothing. Where the system has no watches left, a folder is simply
/// not watched. One that may not be read cannot be watched either: the folder above tells when that changes.
class FolderWatch : public QObject
{
    Q_OBJECT

public:
    /// @param parent owner
    explicit FolderWatch(QObject* parent);
    ~FolderWatch() override;

    /// Watches @p folder (absolute path); one that is watched already stays so, also after it was made anew.
    /// Where it may not be read, the nearest folder above that may be is watched for it; where links lead to
    /// it, the folders that hold them are watched as well.
    /// @return false if there is no such folder at this moment; true also where it cannot be watched
    bool add(const QString& folder);
    void remove(const QString& folder);
    /// @return whether the folder itself is watched
    bool watches(const QString& folder) const { return m_watches.contains(folder); }
    /// @return number of its watch, another one for another folder at the same path; below 0 where it has
    /// none
    int watchOf(const QString& folder) const { return m_watches.value(folder, -1); }
    /// @return whether the path still leads to the folder that is watched for it
    bool leadsToWatched(const QString& folder) const;

signals:
    /// Something in @p folder, or the folder itself, has changed, or may have.
    void changed(const QString& folder);

private slots:
    void tell(int watch);
    void tellAll();
    void drop(int watch);

private:
    QList<int> watchAbove(const QString& folder, bool isClosed);

    std::shared_ptr<FolderEvents> m_events; ///< shared with all other objects of this class
    QMultiHash<QString, int> m_watches; ///< folder to watch, one for each
    QMultiHash<QString, int> m_watchesAbove; ///< folder to watches of others that tell where its path leads
};
