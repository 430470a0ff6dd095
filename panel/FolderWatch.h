#pragma once

#include <QHash>
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
    /// Where it may not be read, the nearest folder above that may be is watched for it.
    /// @return false if there is no such folder at this moment; true also where it cannot be watched
    bool add(const QString& folder);
    void remove(const QString& folder);
    /// @return whether the folder itself is watched
    bool watches(const QString& folder) const { return m_watches.contains(folder); }

signals:
    /// Something in @p folder, or the folder itself, has changed, or may have.
    void changed(const QString& folder);

private slots:
    void tell(int watch);
    void tellAll();
    void drop(int watch);

private:
    void watchAbove(const QString& folder);
    void unwatch(QHash<QString, int>& watches, const QString& folder);

    std::shared_ptr<FolderEvents> m_events; ///< shared with all other objects of this class
    QHash<QString, int> m_watches; ///< folder to watch
    QHash<QString, int> m_watchesAbove; ///< folder that may not be read to the watch of one above it
};
