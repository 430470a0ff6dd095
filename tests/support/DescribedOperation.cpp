#include "tests/support/DescribedOperation.h"

#include "fileops/MProgress.h"

#include <QRegularExpression>

#include <cstring>

namespace {

const QString yes = QStringLiteral("Yes");
const QString yesAll = QStringLiteral("YesAll");
const QString retry = QStringLiteral("Retry");
const QString ignoreAllText = QStringLiteral("IgnoreAll");
const QString abortText = QStringLiteral("Abort");

bool isFile(const QByteArray& entry)
{
    return entry.startsWith("file ");
}

} // namespace

DescribedOperation::DescribedOperation(const QString& base, FileTree before, const QStringList& calls)
    : RecordedCalls(base, calls)
    , after(std::move(before))
{
}

QString DescribedOperation::withoutFacts(QString text)
{
    static const QRegularExpression facts(
        QStringLiteral("\n\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d [\\d,]+ bytes"));
    return text.remove(facts);
}

QString DescribedOperation::run(int kind, const QStringList& items, const QString& destination,
    const Choose& choose, const StopBefore& stop)
{
    m_choose = choose;
    stopBefore(stop);
    try {
        for (const QString& item : items) {
            count(item);
        }
        if (abort == 0 && kind == OpDelete) {
            deleteAll = fileCount + folderCount <= 1 ? 1 : 0;
            for (const QString& item : items) {
                deleteItem(item);
            }
        } else if (abort == 0 && kind == OpCopy) {
            for (const QString& item : items) {
                const QString target = destination + '/' + item.section('/', -1);
                if (abort == 0) {
                    makeFolders(target);
                    copyItem(item, target);
                }
            }
        } else if (abort == 0 && kind == OpMove) {
            moveItems(items, destination);
        } else if (abort == 0 && kind == OpCopyTo) {
            makeFolders(destination);
            if (items.size() == 1) {
                copyFile(items.first(), destination);
            }
        }
    } catch (const Wrong& wrong) {
        return QString::fromStdString(wrong.what());
    }
    return next().isNull() ? QString() : "more calls than expected: " + next();
}

// ---- the questions ----

QString DescribedOperation::ask(const QString& text)
{
    texts.append(text);
    QString button = m_choose(text);
    if (button == abortText) {
        abort = 1;
    }
    return button;
}

QString DescribedOperation::report(const QString& prefix, const QString& path, int error)
{
    if (ignoreAll != 0) {
        return QString();
    }
    const QString button = ask(prefix + '\n' + path + '\n' + QString::fromLocal8Bit(std::strerror(error)));
    if (button == ignoreAllText) {
        ignoreAll = 1;
    }
    return button;
}

// ---- counting ----

void DescribedOperation::count(const QString& path)
{
    if (abort != 0) {
        return;
    }
    const Stat found = look(path);
    if (found == Stat::Folder) {
        countEntries(path);
    } else if (found != Stat::Missing) {
        ++fileCount;
        total += m_lastSize + 1;
    }
}

void DescribedOperation::countEntries(const QString& path)
{
    if (take("opendir", path).failed()) {
        ++folderCount;
        return;
    }
    bool counts = true;
    for (QString name = nextName(path); counts && !name.isEmpty(); name = nextName(path)) {
        const QString child = path + '/' + name;
        const Stat found = look(child);
        if (found == Stat::Missing) {
            counts = false;
            break;
        }
        if (found == Stat::Folder) {
            count(child);
        } else {
            ++fileCount;
            total += m_lastSize + 1;
        }
    }
    take("closedir", path);
    folderCount += counts && !m_stopped ? 1 : 0;
}

// ---- copying ----

void DescribedOperation::makeFolders(const QString& target)
{
    int error = makeMissing(target);
    while (error != 0) {
        if (report("Error creating directory:", target, error) != retry) {
            return;
        }
        error = makeMissing(target);
    }
}

/// @return errno of the mkdir() that failed, 0 for none
int DescribedOperation::makeMissing(const QString& target)
{
    const QStringList parts = target.section('/', 0, -2).split('/', Qt::SkipEmptyParts);
    QString prefix;
    for (const QString& part : parts) {
        prefix += '/' + part;
        if (!isWatched(prefix) || look(prefix) != Stat::Missing) {
            continue;
        }
        const Call call = take("mkdir", prefix);
        if (call.failed()) {
            return call.error;
        }
        after.insert(relative(prefix), "folder");
    }
    return 0;
}

void DescribedOperation::copyItem(const QString& src, const QString& dst)
{
    if (abort != 0) {
        return;
    }
    const Stat found = look(src);
    if (found == Stat::File || found == Stat::Link) {
        copyFile(src, dst);
        return;
    }
    if (look(dst) != Stat::Folder) {
        Call call = take("mkdir", dst);
        while (call.failed()) {
            const QString button = report("Error creating directory:", dst, call.error);
            if (button == abortText) {
                return;
            }
            if (button != retry) {
                break;
            }
            call = take("mkdir", dst);
        }
        if (!call.failed()) {
            after.insert(relative(dst), "folder");
        }
    }
    copyEntries(src, dst);
}

void DescribedOperation::copyEntries(const QString& src, const QString& dst)
{
    Call listing = take("opendir", src);
    while (listing.failed()) {
        if (report("Error reading directory:", src, listing.error) != retry) {
            return;
        }
        listing = take("opendir", src);
    }
    for (QString name = nextName(src); !name.isEmpty(); name = nextName(src)) {
        const QString from = src + '/' + name;
        const QString to = dst + '/' + name;
        if (look(from) == Stat::Folder) {
            copyItem(from, to);
        } else {
            copyFile(from, to);
        }
    }
    take("closedir", src);
}

void DescribedOperation::copyFile(const QString& src, const QString& dst)
{
    bool again = abort == 0;
    while (again) {
        again = tryCopy(src, dst);
    }
}

/// @return whether the file is to be begun anew
bool DescribedOperation::tryCopy(const QString& src, const QString& dst)
{
    const Stat source = look(src);
    if (source == Stat::Missing) {
        return report("Cannot find source file:", src, m_lastError) == retry;
    }
    const qint64 size = m_lastSize;
    if (look(dst) != Stat::Missing && replaceAll == 0) {
        const QString button = ask("Replace file:\n" + dst + "\n\nWith file:\n" + src);
        replaceAll = button == yesAll ? 1 : 0;
        if (button != yes && button != yesAll) {
            return false;
        }
    }
    m_lastSize = size;
    return source == Stat::Link ? copyLink(src, dst) : copyContent(src, dst);
}

bool DescribedOperation::copyLink(const QString& src, const QString& dst)
{
    Call call = take("readlink", src);
    if (!call.failed()) {
        call = take("symlink", dst);
    }
    if (call.failed()) {
        return report("Unable to create symbolic link:", dst, call.error) == retry;
    }
    after.insert(relative(dst), after.value(relative(src)));
    return false;
}

bool DescribedOperation::openRepeatedly(const QString& path, const QString& prefix)
{
    Call call = take("open", path);
    while (call.failed()) {
        if (report(prefix, path, call.error) != retry) {
            return false;
        }
        call = take("open", path);
    }
    return true;
}

bool DescribedOperation::copyContent(const QString& src, const QString& dst)
{
    const QString noSource = "Unable to open source file:";
    const qint64 sourceSize = m_lastSize;
    if (!openRepeatedly(src, noSource)) {
        return false;
    }
    Call target = take("open", dst);
    bool sourceIsOpen = true;
    while (target.failed()) {
        if (sourceIsOpen) {
            take("close", src);
            sourceIsOpen = false;
        }
        if (report("Unable to open destination file:", dst, target.error) != retry) {
            return false;
        }
        target = take("open", dst);
    }
    QByteArray& written = after[relative(dst)];
    if (!isFile(written)) {
        written = "file ";
    }
    if (!sourceIsOpen && !openRepeatedly(src, noSource)) {
        take("close", dst);
        return false;
    }

    const QByteArray original = after.value(relative(src)).mid(5);
    QByteArray content = take("ftruncate", dst).failed() ? written.mid(5) : QByteArray();
    take("posix_fadvise", src);
    take("posix_fadvise", dst);
    if (take("posix_fallocate", dst).result == 0 && content.size() < sourceSize) {
        content.append(QByteArray(static_cast<int>(sourceSize) - content.size(), '\0'));
    }
    take("fchown", dst);
    Call last = take("fchmod", dst);
    int readAt = 0;
    int writeAt = 0;
    while (abort == 0) {
        const Call block = take("read", src);
        if (block.result < 1) {
            break;
        }
        last = take("write", dst);
        const int bytes = static_cast<int>(qMax(qint64(0), last.result));
        content.replace(writeAt, bytes, original.mid(readAt, bytes));
        readAt += static_cast<int>(block.result);
        writeAt += bytes;
        done += block.result;
    }
    written = "file " + content;
    done += 1;
    take("close", dst);
    take("close", src);
    return last.failed() && report("Error writing file:", dst, last.error) == retry;
}

// ---- moving ----

void DescribedOperation::moveItems(const QStringList& items, const QString& destination)
{
    total = items.size();
    const bool isFolder = look(destination) == Stat::Folder;
    const QString base = isFolder ? destination + '/' : destination.section('/', 0, -2);
    for (const QString& item : items) {
        if (abort != 0) {
            return;
        }
        const QString target = base + item.section('/', -1);
        Call call = take("rename", target);
        while (call.failed() && report("Error moving:", item, call.error) == retry) {
            call = take("rename", target);
        }
        if (!call.failed()) {
            const QString from = relative(item);
            const FileTree before = after;
            for (auto entry = before.begin(); entry != before.end(); ++entry) {
                if (entry.key() == from || entry.key().startsWith(from + '/')) {
                    after.remove(entry.key());
                    after.insert(relative(target) + entry.key().mid(from.length()), entry.value());
                }
            }
        }
        ++done;
    }
}

// ---- deleting ----

void DescribedOperation::deleteItem(const QString& path)
{
    if (abort != 0) {
        return;
    }
    const Stat found = look(path);
    if (found == Stat::File || found == Stat::Link) {
        deleteFile(path);
    } else if (deleteEntries(path)) {
        removeRepeatedly("Error deleting directory:", path);
    }
}

/// @return whether the folder itself is to go
bool DescribedOperation::deleteEntries(const QString& path)
{
    Call listing = take("opendir", path);
    while (listing.failed()) {
        if (report("Error accessing directory:", path, listing.error) != retry) {
            return false;
        }
        listing = take("opendir", path);
    }
    bool gaveUp = false;
    for (QString name = nextName(path); !name.isEmpty(); name = nextName(path)) {
        const QString child = path + '/' + name;
        Stat found = look(child);
        QString button = retry;
        while (found == Stat::Missing && button == retry) {
            button = report("Error deleting directory:", path, m_lastError);
            found = button == retry ? look(child) : found;
        }
        if (button == abortText) {
            gaveUp = true;
            break;
        }
        if (found == Stat::Folder) {
            deleteItem(child);
        } else if (found != Stat::Missing) {
            const qint64 size = m_lastSize;
            deleteFile(child);
            done += size + 1;
        }
    }
    take("closedir", path);
    return !gaveUp && abort == 0;
}

void DescribedOperation::deleteFile(const QString& path)
{
    if (deleteAll == 0) {
        const QString button = ask("Delete file:\n" + path);
        deleteAll = button == yesAll ? 1 : 0;
        if (button != yes && button != yesAll) {
            return;
        }
    }
    removeRepeatedly("Error deleting file:", path);
}

void DescribedOperation::removeRepeatedly(const QString& prefix, const QString& path)
{
    Call call = take("remove", path);
    while (call.failed()) {
        if (report(prefix, path, call.error) != retry) {
            return;
        }
        call = take("remove", path);
    }
    after.remove(relative(path));
}
