#pragma once

#include <QHash>
#include <QObject>
#include <QRegularExpression>

#include <sys/types.h>

class DialogFileSize;
class FolderWalk;

/// Counts what lies below the path of a disk usage dialog. Lives on a thread of its own; it reads path,
/// device and running flag in the dialog and adds to the three counts there.
class SizeWorkerClass : public QObject
{
    Q_OBJECT

public:
    /// @param parent the dialog to count for, which outlives the worker; not its owner
    explicit SizeWorkerClass(DialogFileSize* parent);

    /// Adds everything below a folder to the counts, but not the folder itself. Left out are folders whose
    /// path matches gsNoRecurse, folders on another device than the dialog's, and a folder that lies in
    /// itself by way of a link. Returns within one entry once the running flag is 0.
    /// @param path absolute path of the folder
    void RecursiveSize(const QString& path);

public slots:
    /// The whole work. Ends with finished(), whatever happens.
    void StartWork();

signals:
    void finished();

private:
    void countEntry(FolderWalk& walk);
    bool isToEnter(const QString& path, dev_t device);
    bool isSkipped(const QString& path) const;
    bool isOnDevice(dev_t device, const QString& path);

    DialogFileSize* m_parent;
    QRegularExpression m_noRecurse;
    QHash<dev_t, bool> m_isOnDevice; ///< volumes that were looked up: whether they are the dialog's device
};
