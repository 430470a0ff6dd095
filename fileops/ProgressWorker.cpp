#include "fileops/ProgressWorker.h"

#include "app/PosixHandles.h"
#include "app/aGlobal.h"
#include "fileops/MProgress.h"
#include "fileops/xs_mkdir.h"

#include <QMutexLocker>
#include <QStringList>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace {

/// Keeps signals off this thread for good. The one that a write past the file-size limit or to a broken pipe
/// sends to its thread would end the program, where the failed write is to be reported.
void keepSignalsOff()
{
    sigset_t blocked;
    ::sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP}) {
        ::sigdelset(&blocked, fault);
    }
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
}

QString nameOf(const QString& item)
{
    return item.mid(item.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace

ProgressWorker::ProgressWorker(QWidget* parent)
    : dialog(static_cast<MProgress*>(parent))
{
}

void ProgressWorker::StartWork()
{
    keepSignalsOff();
    connect(
        this, SIGNAL(myQuestion(QString)), dialog, SLOT(myQuestion(QString)), Qt::BlockingQueuedConnection);
    connect(this, SIGNAL(myWarning(QString)), dialog, SLOT(myWarning(QString)), Qt::BlockingQueuedConnection);
    showPath(QStringLiteral("Counting..."));
    const QStringList items = gslDragList;
    for (const QString& item : items) {
        RecursiveCount(item);
    }
    if (!aborted()) {
        perform();
    }
    emit finished();
}

void ProgressWorker::perform()
{
    // One for all files: to enter a function with a megabyte of its own costs more than a small file.
    char ownBlock[blockBytes];
    block = ownBlock;
    switch (dialog->kind) {
    case OpDelete:
        deleteItems();
        break;
    case OpCopy:
        copyItems();
        break;
    case OpMove:
        moveItems();
        break;
    case OpCopyTo:
        copyToName();
        break;
    default:
        break;
    }
    block = nullptr;
}

void ProgressWorker::deleteItems()
{
    // The command has asked already about a single file and an empty folder.
    dialog->deleteAll = dialog->fileCount + dialog->folderCount <= 1 ? 1 : 0;
    const QStringList items = gslDragList;
    for (const QString& item : items) {
        RecursiveDelete(item);
    }
}

void ProgressWorker::copyItems()
{
    takeBases();
    if (destinationBase != QLatin1String("/")) {
        destinationBase += QLatin1Char('/');
    }
    const QStringList items = gslDragList;
    for (const QString& item : items) {
        if (aborted()) {
            return;
        }
        const QString target = destinationBase + nameOf(item);
        makeFolders(target);
        RecursiveCopy(item, target);
    }
}

void ProgressWorker::moveItems()
{
    takeBases();
    const QStringList items = gslDragList;
    dialog->total = items.size();

    struct stat info;
    if (::lstat(destinationBase.toUtf8().constData(), &info) == 0 && S_ISDIR(info.st_mode)) {
        destinationBase += QLatin1Char('/');
    } else {
        // Without the "/": the names are glued to that of the parent. This is wanted.
        destinationBase.truncate(qMax(0, destinationBase.lastIndexOf(QLatin1Char('/'))));
    }
    for (const QString& item : items) {
        if (aborted()) {
            return;
        }
        moveItem(item, destinationBase + nameOf(item));
        addDone(1);
    }
}

void ProgressWorker::moveItem(const QString& item, const QString& target)
{
    const QByteArray from = item.toUtf8();
    const QByteArray to = target.toUtf8();
    while (::rename(from.constData(), to.constData()) != 0) {
        if (report("Error moving:\n", from, errno) != AnswerRetry) {
            return;
        }
    }
}

void ProgressWorker::copyToName()
{
    takeBases();
    makeFolders(destinationBase);
    const QStringList items = gslDragList;
    if (items.size() == 1) {
        CopyOneFile(items.first(), destinationBase);
    }
}

void ProgressWorker::takeBases()
{
    dialog->replaceAll = 0;
    sourceBase = gsDragBase;
    destinationBase = gsDropBase;
}

void ProgressWorker::makeFolders(const QString& target)
{
    while (xs_mkdir(target) != 0) {
        if (report("Error creating directory:\n", target.toUtf8(), errno) != AnswerRetry) {
            return;
        }
    }
}

void ProgressWorker::countItem(const QByteArray& path)
{
    if (aborted()) {
        return;
    }
    struct stat info;
    if (::lstat(path.constData(), &info) != 0) {
        return;
    }
    if (!S_ISDIR(info.st_mode)) {
        countFile(info);
    } else if (countEntries(path)) {
        dialog->folderCount.fetch_add(1, std::memory_order_relaxed);
    }
}

/// @return whether the folder itself counts: it was listed to its end, or could not be opened
bool ProgressWorker::countEntries(const QByteArray& path)
{
    FolderListing entries(path.constData());
    if (!entries.isOpen()) {
        return true;
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
        if (::lstat(child.constData(), &info) != 0) {
            return false;
        }
        if (S_ISDIR(info.st_mode)) {
            countItem(child);
        } else {
            countFile(info);
        }
    }
    return true;
}

/// The 1 beside the size is what the copy adds to done when it ends a file.
void ProgressWorker::countFile(const struct stat& info)
{
    dialog->fileCount.fetch_add(1, std::memory_order_relaxed);
    dialog->total.fetch_add(info.st_size + 1, std::memory_order_relaxed);
}

bool ProgressWorker::aborted() const
{
    return dialog->abort.load(std::memory_order_relaxed) != 0;
}

void ProgressWorker::addDone(qint64 amount)
{
    dialog->done.fetch_add(amount, std::memory_order_relaxed);
}

void ProgressWorker::showPath(const QString& text)
{
    const QMutexLocker lock(&gmutexLock);
    dialog->currentPath = text;
}

/// Abort takes effect here; the other answers are the caller's.
int ProgressWorker::askQuestion(const QString& text)
{
    emit myQuestion(text);
    const int answer = dialog->answer;
    if (answer == AnswerAbort) {
        dialog->abort = 1;
    }
    return answer;
}

/// Reports a failure unless failures are passed over. Abort and IgnoreAll take effect here.
/// @param error errno of the failed call
/// @return the answer; Ignore where nothing was asked
int ProgressWorker::report(const char* prefix, const QByteArray& path, int error)
{
    if (dialog->ignoreAll != 0) {
        return AnswerIgnore;
    }
    emit myWarning(QLatin1String(prefix) + QString::fromUtf8(path) + QLatin1Char('\n')
        + QString::fromLocal8Bit(std::strerror(error)));
    const int answer = dialog->answer;
    if (answer == AnswerAbort) {
        dialog->abort = 1;
    } else if (answer == AnswerIgnoreAll) {
        dialog->ignoreAll = 1;
    }
    return answer;
}
