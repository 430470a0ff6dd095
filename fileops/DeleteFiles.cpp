#include "app/PosixHandles.h"
#include "fileops/MProgress.h"
#include "fileops/ProgressWorker.h"

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>

namespace {

constexpr const char* folderFailure = "Error deleting directory:\n";

} // namespace

void ProgressWorker::deleteItem(const QByteArray& path)
{
    showPath(path);
    if (aborted()) {
        return;
    }
    struct stat info;
    if (::lstat(path.constData(), &info) == 0 && !S_ISDIR(info.st_mode)) {
        deleteFile(path);
        return;
    }
    if (deleteEntries(path) && !aborted()) {
        removeRepeatedly(folderFailure, path);
    }
}

/// @return whether the folder is to be removed now: it was listed to its end
bool ProgressWorker::deleteEntries(const QByteArray& path)
{
    FolderListing entries(path.constData());
    while (!entries.isOpen()) {
        if (report("Error accessing directory:\n", path, errno) != AnswerRetry) {
            return false;
        }
        entries = FolderListing(path.constData());
    }
    while (const char* name = entries.next()) {
        if (aborted()) {
            return false;
        }
        if (FolderListing::isDots(name)) {
            continue;
        }
        const QByteArray child = childPath(path, name);
        struct stat info;
        int answer = AnswerRetry;
        while (answer == AnswerRetry && ::lstat(child.constData(), &info) != 0) {
            // Names the folder and not the child. This is wanted.
            answer = report(folderFailure, path, errno);
        }
        if (answer == AnswerRetry) {
            deleteEntry(child, info);
        } else if (answer == AnswerAbort) {
            return false;
        }
    }
    return true;
}

void ProgressWorker::deleteEntry(const QByteArray& path, const struct stat& info)
{
    if (S_ISDIR(info.st_mode)) {
        deleteItem(path);
        return;
    }
    deleteFile(path);
    // Also where the file was kept. This is wanted.
    addDone(info.st_size + 1);
}

void ProgressWorker::deleteFile(const QByteArray& path)
{
    showPath(path);
    if (mayDelete(path)) {
        removeRepeatedly("Error deleting file:\n", path);
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

void ProgressWorker::removeRepeatedly(const char* prefix, const QByteArray& path)
{
    while (::remove(path.constData()) != 0) {
        if (report(prefix, path, errno) != AnswerRetry) {
            return;
        }
    }
}
