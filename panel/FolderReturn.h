#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class FolderReader;
struct FolderReading;

/// Waits for one folder that is gone to be a folder again. It looks twice a second, on the threads that read
/// folders, and only while there is something to wait for. Lives on the GUI thread and waits for nothing
/// there.
class FolderReturn : public QObject
{
    Q_OBJECT

public:
    /// @param parent owner
    explicit FolderReturn(QObject* parent);

    /// Waits for @p folder (absolute path) and for no other any more.
    void waitFor(const QString& folder);
    /// Waits for nothing any more.
    void stop();
    /// Looks at once, where something is waited for.
    void look();
    bool isWaiting() const { return m_timer.isActive(); }

signals:
    /// The folder is there. It is not waited for any more.
    void returned(const QString& folder);

private slots:
    void readFolder();
    void takeReading(const FolderReading& reading);

private:
    QString m_folder; ///< empty while nothing is waited for
    FolderReader* m_reader; ///< child of this
    QTimer m_timer;
};
