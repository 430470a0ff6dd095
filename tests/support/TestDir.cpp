#include "tests/support/TestDir.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void require(bool done, const char* what, const QString& path)
{
    if (!done) {
        qFatal("test folder: cannot %s %s: %s", what, qPrintable(path), qPrintable(qt_error_string()));
    }
}

int makeReadable(const char* path, const struct stat* /*info*/, int kind, struct FTW* /*place*/)
{
    if (kind == FTW_D || kind == FTW_DNR) {
        ::chmod(path, 0700);
    }
    return 0;
}

int removeEntry(const char* path, const struct stat* /*info*/, int /*kind*/, struct FTW* /*place*/)
{
    static_cast<void>(::remove(path));
    return 0;
}

} // namespace

TestDir::TestDir(const QString& parent)
    : m_dir(parent.isEmpty() ? QDir::tempPath() + QStringLiteral("/vantrel-test-XXXXXX")
                             : parent + QStringLiteral("/vantrel-test-XXXXXX"))
{
    require(m_dir.isValid(), "make", m_dir.path());
    m_dir.setAutoRemove(false);
}

TestDir::~TestDir()
{
    const QByteArray root = QFile::encodeName(m_dir.path());
    ::nftw(root.constData(), makeReadable, 64, FTW_PHYS);
    ::nftw(root.constData(), removeEntry, 64, FTW_PHYS | FTW_DEPTH);
}

QString TestDir::inMemory()
{
    const QFileInfo place(QStringLiteral("/dev/shm"));
    return place.isDir() && place.isWritable() ? place.filePath() : QString();
}

QString TestDir::path(const QString& relative) const
{
    return relative.isEmpty() ? m_dir.path() : m_dir.path() + QLatin1Char('/') + relative;
}

QString TestDir::folder(const QString& relative, unsigned mode) const
{
    const QString full = path(relative);
    require(QDir().mkpath(full), "make folder", full);
    setMode(relative, mode);
    return full;
}

QString TestDir::file(const QString& relative, const QByteArray& content, unsigned mode) const
{
    const QString full = path(relative);
    require(QDir().mkpath(QFileInfo(full).path()), "make parent of", full);
    QFile file(full);
    require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(), "write", full);
    file.close();
    setMode(relative, mode);
    return full;
}

QString TestDir::sparseFile(const QString& relative, qint64 bytes) const
{
    const QString full = file(relative);
    require(::truncate(QFile::encodeName(full).constData(), bytes) == 0, "extend", full);
    return full;
}

QString TestDir::link(const QString& relative, const QString& target) const
{
    const QString full = path(relative);
    require(QDir().mkpath(QFileInfo(full).path()), "make parent of", full);
    require(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(full).constData()) == 0,
        "link", full);
    return full;
}

QString TestDir::fifo(const QString& relative) const
{
    const QString full = path(relative);
    require(QDir().mkpath(QFileInfo(full).path()), "make parent of", full);
    require(::mkfifo(QFile::encodeName(full).constData(), 0644) == 0, "make FIFO", full);
    return full;
}

QString TestDir::socket(const QString& relative) const
{
    const QString full = path(relative);
    require(::mknod(QFile::encodeName(full).constData(), S_IFSOCK | 0644, 0) == 0, "make socket", full);
    return full;
}

void TestDir::files(const QString& relativeFolder, int count, const QString& pattern) const
{
    const QByteArray base = QFile::encodeName(folder(relativeFolder)) + '/';
    for (int i = 0; i < count; ++i) {
        const QByteArray name = base + QFile::encodeName(pattern.arg(i));
        const int fd = ::open(name.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        require(fd >= 0, "make", QString::fromLocal8Bit(name));
        ::close(fd);
    }
}

void TestDir::setTimes(const QString& relative, qint64 seconds) const
{
    const timespec both[2] = {{static_cast<time_t>(seconds), 0}, {static_cast<time_t>(seconds), 0}};
    const QString full = path(relative);
    require(::utimensat(AT_FDCWD, QFile::encodeName(full).constData(), both, AT_SYMLINK_NOFOLLOW) == 0,
        "set times of", full);
}

void TestDir::setMode(const QString& relative, unsigned mode) const
{
    const QString full = path(relative);
    require(::chmod(QFile::encodeName(full).constData(), mode) == 0, "set mode of", full);
}

QByteArray TestDir::read(const QString& relative) const
{
    QFile file(path(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool TestDir::exists(const QString& relative) const
{
    struct stat info
    {
    };
    return ::lstat(QFile::encodeName(path(relative)).constData(), &info) == 0;
}

QStringList TestDir::tree(const QString& relative) const
{
    const QString base = path(relative);
    QStringList found;
    QDirIterator entries(base, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        const QFileInfo info = entries.fileInfo();
        const QString suffix = info.isSymLink() ? QStringLiteral("@")
            : info.isDir()                      ? QStringLiteral("/")
                                                : QString();
        found.append(info.filePath().mid(base.length() + 1) + suffix);
    }
    std::sort(found.begin(), found.end());
    return found;
}
