#include "app/PosixHandles.h"
#include "fileops/MProgress.h"
#include "fileops/ProgressWorker.h"

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>

namespace {

// Everything is deleted by its path, and what a path leads to can change: whoever may write to a folder on
// the way can put a link in its place while the user is asked. So the path of a folder is compared with the
// folder that is open, wherever time has gone by since it was looked at, and what the link leads to stays.

constexpr const char* folderFailure = "Error deleting directory:\n";

/// @return whether the listing is open and of the folder that the path leads to; else errno tells why
bool isListingOf(const FolderListing& entries, const QByteArray& path)
{
    return entries.isOpen() && entries.isAt(path.constData());
}

/// @param info facts of the folder that the path leads to; those of an empty path are not looked at
/// @return whether that is the top of the file system, by whatever path, or nothing is named at all: neither
/// is
///         deleted, nor anything in it
bool isTop(const QByteArray& path, const struct stat& info)
{
    struct stat top;
    return path.isEmpty() || path == "/"
        || (::lstat("/", &top) == 0 && top.st_dev == info.st_dev && top.st_ino == info.st_ino);
}

} // namespace

/// @param folder the open folder that the entry was found in; null for an item that the user has chosen
/// @return whether a path still leads into that folder; else errno tells why
bool ProgressWorker::leadsInto(const FolderListing* folder, const QByteArray& path) const
{
    const QByteArray above = path.left(path.lastIndexOf('/'));
    if (folder != nullptr) {
        return isListingOf(*folder, above);
    }
    return itemsFolder == nullptr || !itemsFolder->isHeld()
        || itemsFolder->isAt(above.isEmpty() ? "/" : above.constData());
}

/// Looks at an entry of an open folder.
/// @return whether its path leads to it; else errno tells why
bool ProgressWorker::lookAt(
    const QByteArray& path, const dirent& entry, const FolderListing& folder, struct stat& info) const
{
    if (::lstat(path.constData(), &info) != 0) {
        return false;
    }
    // Where the folder tells another number, as for a mounted file system, the folder itself is compared.
    return info.st_ino == entry.d_ino || leadsInto(&folder, path);
}

/// @param folder the open folder that the item was found in; null for an item that the user has chosen
void ProgressWorker::deleteItem(const QByteArray& path, const FolderListing* folder)
{
    showPath(path);
    if (aborted()) {
        return;
    }
    struct stat info = {};
    if (::lstat(path.constData(), &info) == 0 && !S_ISDIR(info.st_mode)) {
        deleteFile(path, folder);
        return;
    }
    if (folder == nullptr && isTop(path, info)) {
        while (report(folderFailure, path, EBUSY) == AnswerRetry) { }
        return;
    }
    if (deleteEntries(path, folder) && !aborted()) {
        removeRepeatedly(folderFailure, path, folder, false);
    }
}

/// @return whether the folder is to be removed now: it was listed to its end
bool ProgressWorker::deleteEntries(const QByteArray& path, const FolderListing* folder)
{
    FolderListing entries(path.constData());
    while (!isListingOf(entries, path) || !leadsInto(folder, path)) {
        if (report("Error accessing directory:\n", path, errno) != AnswerRetry) {
            return false;
        }
        entries = FolderListing(path.constData());
    }
    while (const dirent* entry = entries.nextEntry()) {
        if (aborted()) {
            return false;
        }
        if (FolderListing::isDots(entry->d_name)) {
            continue;
        }
        const QByteArray child = childPath(path, entry->d_name);
        struct stat info;
        int answer = AnswerRetry;
        while (answer == AnswerRetry && !lookAt(child, *entry, entries, info)) {
            // Names the folder and not the child. This is wanted.
            answer = report(folderFailure, path, errno);
        }
        if (answer == AnswerRetry) {
            deleteEntry(child, info, entries);
        } else if (answer == AnswerAbort) {
            return false;
        }
    }
    return true;
}

void ProgressWorker::deleteEntry(const QByteArray& path, const struct stat& info, const FolderListing& folder)
{
    if (S_ISDIR(info.st_mode)) {
        deleteItem(path, &folder);
        return;
    }
    deleteFile(path, &folder);
    // Also where the file was kept. This is wanted.
    addDone(info.st_size + 1);
}

void ProgressWorker::deleteFile(const QByteArray& path, const FolderListing* folder)
{
    showPath(path);
    const bool asksNothing = dialog->deleteAll != 0;
    if (mayDelete(path)) {
        removeRepeatedly("Error deleting file:\n", path, folder, asksNothing);
    }
}

bool ProgressWorker::mayDelete(const QByteArray& path)
{
    if (dialog->deleteAll != 0) {
        return true;
    }
    const int answer = askQuestion(QStringLiteral("Delete file:\n") + QString::fromUtf8(path));
    if (answer == AnswerYesAll) {
        dialog->deleteAll = 1;
    }
    return answer == AnswerYes || answer == AnswerYesAll;
}

/// @param folder the open folder that the item is in; null for an item that the user has chosen
/// @param seenJustNow whether the item was looked at since the last time that something took its time
void ProgressWorker::removeRepeatedly(
    const char* prefix, const QByteArray& path, const FolderListing* folder, bool seenJustNow)
{
    bool isThere = (seenJustNow && folder != nullptr) || leadsInto(folder, path);
    while (!isThere || ::remove(path.constData()) != 0) {
        if (report(prefix, path, errno) != AnswerRetry) {
            return;
        }
        isThere = leadsInto(folder, path);
    }
}
