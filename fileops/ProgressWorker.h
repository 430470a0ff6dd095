#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstddef>
#include <memory>
#include <sys/types.h>

class Descriptor;
class FolderListing;
class HeldFolder;
class MProgress;
class QWidget;
struct dirent;
struct stat;

/// The work of a copy, move or delete, on a thread of its own. It reads and writes the fields of its dialog
/// and asks its questions there; each question stops the thread until the user has answered.
///
/// A path is bytes here, so that names in a tree that are not UTF-8 stay what they are. Items come as text,
/// which is written as UTF-8. The order of the system calls, and which of their results count, is part of the
/// behaviour that users rely on.
///
/// Everything but the constructor and the fields runs on the worker's thread.
class ProgressWorker : public QObject
{
    Q_OBJECT

public:
    /// @param parent the MProgress that shows the work. It outlives the worker and is no parent of it, for a
    ///        parent would keep the worker from moving to its thread
    explicit ProgressWorker(QWidget* parent);

    /// Adds an item, with all that is in it, to the dialog's counts and its total.
    void RecursiveCount(const QString& path) { countItem(path.toUtf8()); }
    /// Copies one file, or makes a symbolic link anew.
    /// @param dst full path of the copy
    void CopyOneFile(const QString& src, const QString& dst) { copyFile(src.toUtf8(), dst.toUtf8()); }
    /// Copies an item, a folder with all that is in it. Into a folder that exists it is merged.
    /// @param dst full path of the copy
    void RecursiveCopy(const QString& src, const QString& dst) { copyItem(src.toUtf8(), dst.toUtf8()); }
    /// Deletes one file, or a symbolic link itself, after a question unless all are to be deleted.
    void DeleteOneFile(const QString& path) { deleteFile(path.toUtf8()); }
    /// Deletes an item, a folder with all that is in it.
    void RecursiveDelete(const QString& path) { deleteItem(path.toUtf8()); }

    MProgress* dialog;
    QWidget* panel = nullptr; ///< where the operation was started
    std::shared_ptr<const HeldFolder> itemsFolder; ///< that the items to delete were chosen in; may be null
    QString sourceBase; ///< gsDragBase when the copy or move began
    QString destinationBase; ///< gsDropBase when the copy or move began, for a copy with "/" at its end

public slots:
    /// The whole operation. Emits finished() last, once.
    void StartWork();

signals:
    void finished();
    /// Asks whether to go on; returns once the dialog has stored the answer.
    void myQuestion(const QString& text);
    /// Reports a failure; returns once the dialog has stored the answer.
    void myWarning(const QString& text);

private:
    /// How a step of a file ended: at its end, or with the wish to begin the file anew.
    enum class Step { Ended, Again };

    // Flow and counting.
    void perform();
    void deleteItems();
    void copyItems();
    void moveItems();
    void moveItem(const QString& item, const QString& target);
    void copyToName();
    void takeBases();
    void makeFolders(const QString& target);
    void countItem(const QByteArray& path);
    bool countEntries(const QByteArray& path);
    void countFile(const struct stat& info);

    // What all routines share.
    bool aborted() const;
    void addDone(qint64 amount);
    void showPath(const QString& text);
    void showPath(const QByteArray& path) { showPath(QString::fromUtf8(path)); }
    int askQuestion(const QString& text);
    int report(const char* prefix, const QByteArray& path, int error);

    // Copying.
    static constexpr std::size_t blockBytes = 1048576;
    char* block = nullptr; ///< of blockBytes, on the thread's stack while the operation runs

    void copyItem(const QByteArray& src, const QByteArray& dst);
    bool makeFolder(const QByteArray& path, mode_t mode);
    void copyEntries(const QByteArray& src, const QByteArray& dst);
    void copyFile(const QByteArray& src, const QByteArray& dst);
    Step tryCopy(const QByteArray& src, const QByteArray& dst);
    bool mayReplace(
        const QByteArray& src, const struct stat& source, const QByteArray& dst, const struct stat& target);
    Step copyLink(const QByteArray& src, const QByteArray& dst);
    Step copyContent(const QByteArray& src, const QByteArray& dst, const struct stat& source);
    bool openSource(Descriptor& from, const QByteArray& src);
    int copyBlocks(int from, int to, int error);

    // Deleting.
    void deleteItem(const QByteArray& path, const FolderListing* folder = nullptr);
    bool deleteEntries(const QByteArray& path, const FolderListing* folder);
    void deleteEntry(const QByteArray& path, const struct stat& info, const FolderListing& folder);
    void deleteFile(const QByteArray& path, const FolderListing* folder = nullptr);
    bool mayDelete(const QByteArray& path);
    bool leadsInto(const FolderListing* folder, const QByteArray& path) const;
    bool lookAt(
        const QByteArray& path, const dirent& entry, const FolderListing& folder, struct stat& info) const;
    void removeRepeatedly(
        const char* prefix, const QByteArray& path, const FolderListing* folder, bool seenJustNow);
};

/// @return @p folder + "/" + @p name
inline QByteArray childPath(const QByteArray& folder, const char* name)
{
    QByteArray path;
    path.reserve(folder.size() + 1 + static_cast<int>(qstrlen(name)));
    path.append(folder).append('/').append(name);
    return path;
}
