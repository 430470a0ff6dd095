#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

/// Tells of volumes that are mounted and unmounted anywhere. What is mounted over a folder that is watched is
/// told neither to the folder nor to the one above. One for the process, on the GUI thread; it waits for
/// nothing, and keeps no volume busy.
class MountWatch : public QObject
{
    Q_OBJECT

public:
    /// @return the one object, which lives as long as somebody holds it
    static std::shared_ptr<MountWatch> shared();
    ~MountWatch() override;

signals:
    /// The system's table of mounts is another one now.
    void changed();

private:
    MountWatch();

    int m_table; ///< descriptor; below 0 on a system that shows none, where nothing is told
    QSocketNotifier* m_notifier = nullptr; ///< deleted before the descriptor is closed
};
