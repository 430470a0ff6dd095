#pragma once

#include <QHash>
#include <QObject>
#include <QString>

class QSocketNotifier;

/// Tells which folders have changed: entries made, removed or renamed, and the content or facts of entries.
/// Lives on the GUI thread and waits for nothing. Where the system has no watches left, a folder is simply
/// not watched.
class FolderWatch : public QObject
{
    Q_OBJECT

public:
    /// @param parent owner
    explicit FolderWatch(QObject* parent);
    ~FolderWatch() override;

    /// Watches @p folder (absolute path); one that is watched already stays so, also after it was made anew.
    void add(const QString& folder);
    void remove(const QString& folder);

signals:
    /// Something in @p folder, or the folder itself, has changed.
    void changed(const QString& folder);

private slots:
    void readEvents();

private:
    int m_descriptor;
    QSocketNotifier* m_notifier = nullptr; ///< deleted before the descriptor is closed
    QHash<int, QString> m_folders; ///< watch to folder
    QHash<QString, int> m_watches; ///< folder to watch
};
