#pragma once

#include <QHash>
#include <QObject>

#include <memory>

class QSocketNotifier;

/// The system's reports about watched folders, for all FolderWatch objects of the process: closing a
/// descriptor for such reports makes the caller wait for some milliseconds, far too long for each change of
/// folder. Lives on the GUI thread and waits for nothing.
class FolderEvents : public QObject
{
    Q_OBJECT

public:
    /// @return the one object, which lives as long as somebody holds it
    static std::shared_ptr<FolderEvents> shared();
    ~FolderEvents() override;

    /// Watches the folder that has this path now.
    /// @return number of the watch, the same for every path of one folder; the negative errno if it cannot be
    ///         watched
    int watch(const QString& folder);
    /// Takes one watch() back.
    void unwatch(int watch);

signals:
    /// Something in the folder, or the folder itself, has changed.
    void touched(int watch);
    /// So much has happened that the system gave up telling: anything may have changed.
    void everythingTouched();
    /// The watch went with its folder.
    void lost(int watch);

private slots:
    void readEvents();

private:
    FolderEvents();

    int m_descriptor;
    QSocketNotifier* m_notifier = nullptr; ///< deleted before the descriptor is closed
    QHash<int, int> m_users; ///< watch to the number of calls of watch() that hold it
};
