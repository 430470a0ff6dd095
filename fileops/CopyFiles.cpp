#include "app/PosixHandles.h"
#include "fileops/MProgress.h"
#include "fileops/ProgressWorker.h"

#include <QDateTime>
#include <QLocale>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr std::size_t linkBytes = 1023; // longer targets are cut; this is wanted
constexpr mode_t permissionBits = 07777;

/// Lines of the question that compares two files.
QString describe(const QByteArray& path, const struct stat& info)
{
    const QString time
        = QDateTime::fromSecsSinceEpoch(info.st_mtime).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    const QString size
        = QLocale(QLocale::English, QLocale::AnyCountry).toString(static_cast<qlonglong>(info.st_size));
    return QString::fromUtf8(path) + QLatin1Char('\n') + time + QLatin1Char(' ') + size
        + QStringLiteral(" bytes");
}

/// No FIFO keeps the operation waiting for its other end, and no terminal becomes the program's own.
/// @return the open file; none, with errno set, where it failed. Descriptor 0 counts as a failure: wanted
Descriptor openFile(const QByteArray& path, int flags, mode_t mode = 0)
{
    Descriptor file(::open(path.constData(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode));
    if (file.number() == 0) {
        file.close();
    }
    return file;
}

/// Readies the new file for the content.
/// @return errno of the last call, 0 where it went well; only that call counts
int prepare(int from, int to, const struct stat& source)
{
    if (::ftruncate(to, 0) != 0) {
        // Passed over like the others. A device has no length, and the writes will tell what is wrong.
    }
    ::posix_fadvise(from, 0, 0, POSIX_FADV_SEQUENTIAL);
    ::posix_fadvise(to, 0, 0, POSIX_FADV_SEQUENTIAL);
    ::posix_fallocate(to, 0, source.st_size);
    if (::fchown(to, source.st_uid, source.st_gid) != 0) {
        // Only root gives files away.
    }
    return ::fchmod(to, source.st_mode & permissionBits) < 0 ? errno : 0;
}

} // namespace

void ProgressWorker::copyItem(const QByteArray& src, const QByteArray& dst)
{
    showPath(src);
    if (aborted()) {
        return;
    }
    // What cannot be looked at is taken for a folder, of which the listing then tells what is wrong.
    mode_t mode = 0775;
    struct stat info;
    if (::lstat(src.constData(), &info) == 0) {
        if (!S_ISDIR(info.st_mode)) {
            copyFile(src, dst);
            return;
        }
        mode = info.st_mode & permissionBits;
    }
    if (makeFolder(dst, mode)) {
        copyEntries(src, dst);
    }
}

/// @return whether to go on: not after Abort
bool ProgressWorker::makeFolder(const QByteArray& path, mode_t mode)
{
    struct stat info;
    if (::lstat(path.constData(), &info) == 0 && S_ISDIR(info.st_mode)) {
        return true;
    }
    while (::mkdir(path.constData(), mode) != 0) {
        const int answer = report("Error creating directory:\n", path, errno);
        if (answer != AnswerRetry) {
            return answer != AnswerAbort;
        }
    }
    return true;
}

void ProgressWorker::copyEntries(const QByteArray& src, const QByteArray& dst)
{
    FolderListing entries(src.constData());
    while (!entries.isOpen()) {
        if (report("Error reading directory:\n", src, errno) != AnswerRetry) {
            return;
        }
        entries = FolderListing(src.constData());
    }
    while (const char* name = entries.next()) {
        if (aborted()) {
            return;
        }
        if (FolderListing::isDots(name)) {
            continue;
        }
        const QByteArray from = childPath(src, name);
        const QByteArray to = childPath(dst, name);
        struct stat info;
        if (::lstat(from.constData(), &info) == 0 && S_ISDIR(info.st_mode)) {
            copyItem(from, to);
        } else {
            copyFile(from, to);
        }
    }
}

void ProgressWorker::copyFile(const QByteArray& src, const QByteArray& dst)
{
    if (aborted()) {
        return;
    }
    showPath(src);
    while (tryCopy(src, dst) == Step::Again) { }
}

ProgressWorker::Step ProgressWorker::tryCopy(const QByteArray& src, const QByteArray& dst)
{
    struct stat source;
    if (::lstat(src.constData(), &source) != 0) {
        return report("Cannot find source file:\n", src, errno) == AnswerRetry ? Step::Again : Step::Ended;
    }
    struct stat target;
    if (::lstat(dst.constData(), &target) == 0 && !mayReplace(src, source, dst, target)) {
        return Step::Ended;
    }
    return S_ISLNK(source.st_mode) ? copyLink(src, dst) : copyContent(src, dst, source);
}

bool ProgressWorker::mayReplace(
    const QByteArray& src, const struct stat& source, const QByteArray& dst, const struct stat& target)
{
    if (dialog->replaceAll != 0) {
        return true;
    }
    const int answer = askQuestion(QStringLiteral("Replace file:\n") + describe(dst, target)
        + QStringLiteral("\n\nWith file:\n") + describe(src, source));
    if (answer == AnswerYesAll) {
        dialog->replaceAll = 1;
    }
    return answer == AnswerYes || answer == AnswerYesAll;
}

/// What exists at the destination is not removed: a link replaces no file. This is wanted.
ProgressWorker::Step ProgressWorker::copyLink(const QByteArray& src, const QByteArray& dst)
{
    char target[linkBytes + 1];
    const ssize_t length = ::readlink(src.constData(), target, linkBytes);
    if (length >= 0) {
        target[length] = '\0';
        if (::symlink(target, dst.constData()) == 0) {
            return Step::Ended;
        }
    }
    return report("Unable to create symbolic link:\n", dst, errno) == AnswerRetry ? Step::Again : Step::Ended;
}

bool ProgressWorker::openSource(Descriptor& from, const QByteArray& src)
{
    from = openFile(src, O_RDONLY);
    while (from.number() < 0) {
        if (report("Unable to open source file:\n", src, errno) != AnswerRetry) {
            return false;
        }
        from = openFile(src, O_RDONLY);
    }
    return true;
}

ProgressWorker::Step ProgressWorker::copyContent(
    const QByteArray& src, const QByteArray& dst, const struct stat& source)
{
    Descriptor from;
    if (!openSource(from, src)) {
        return Step::Ended;
    }
    const mode_t mode = source.st_mode & permissionBits;
    Descriptor to = openFile(dst, O_WRONLY | O_CREAT, mode);
    while (to.number() < 0) {
        const int error = errno;
        from.close();
        if (report("Unable to open destination file:\n", dst, error) != AnswerRetry) {
            return Step::Ended;
        }
        to = openFile(dst, O_WRONLY | O_CREAT, mode);
    }
    // The source was closed while the user was asked.
    if (from.number() < 0 && !openSource(from, src)) {
        return Step::Ended;
    }

    const int error = copyBlocks(from.number(), to.number(), prepare(from.number(), to.number(), source));
    addDone(1);
    to.close();
    from.close();
    const bool again = error != 0 && report("Error writing file:\n", dst, error) == AnswerRetry;
    return again ? Step::Again : Step::Ended;
}

/// Copies until the source ends, cannot be read, or the operation is to end. A short write is not repeated,
/// and a failed one matters only where it is the last. This is wanted.
/// @param error errno of what went before, 0 for none
/// @return errno of the last write, @p error where there was none
int ProgressWorker::copyBlocks(int from, int to, int error)
{
    while (!aborted()) {
        const ssize_t length = ::read(from, block, blockBytes);
        if (length < 1) {
            break;
        }
        error = ::write(to, block, static_cast<std::size_t>(length)) < 0 ? errno : 0;
        addDone(length);
    }
    return error;
}
