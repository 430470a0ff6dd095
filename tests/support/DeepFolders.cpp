#include "tests/support/DeepFolders.h"

#include <QFile>
#include <QProcess>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

qint64 sizeOf(int descriptor)
{
    struct stat info
    {
    };
    return ::fstat(descriptor, &info) == 0 ? info.st_size : 0;
}

} // namespace

DeepFolders::DeepFolders(int depth, const QByteArray& name)
    : TestDir(inMemory())
    , m_deepest(::open(QFile::encodeName(path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
    for (int level = 0; level < depth; ++level) {
        const bool isMade = ::mkdirat(m_deepest, name.constData(), 0755) == 0;
        const int child = ::openat(m_deepest, name.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const int file = ::openat(child, "f", O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
        if (!isMade || ::write(file, "1234567", 7) != 7) {
            qFatal("cannot make a folder in a folder");
        }
        m_bytes += level > 0 ? sizeOf(m_deepest) : 0; // now that all is in it
        m_bytes += sizeOf(file);
        ::close(file);
        ::close(m_deepest);
        m_deepest = child;
    }
    m_bytes += sizeOf(m_deepest);
}

DeepFolders::~DeepFolders()
{
    ::close(m_deepest);
    // Deeper than what is removed by its path.
    QProcess::execute(
        QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("rm -rf \"$0\"/*"), path()});
}
