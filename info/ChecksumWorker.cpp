#include "info/ChecksumWorker.h"

#include "info/Checksum.h"
#include "info/DigestPair.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <fcntl.h>

namespace {

constexpr int blockBytes = 32768;

} // namespace

ChecksumWorker::ChecksumWorker(Checksum* parent)
    : m_parent(parent)
{
}

bool ChecksumWorker::openForReading(QFile& file)
{
    const QIODevice::OpenMode mode = QIODevice::ReadOnly | QIODevice::Unbuffered;
    const QFileInfo info(file.fileName());
    const bool isSpecial = info.exists() && !info.isFile() && !info.isDir();
    if (isSpecial) {
        const int number
            = ::open(QFile::encodeName(file.fileName()).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (number >= 0) {
            return file.open(number, mode, QFileDevice::AutoCloseHandle);
        }
    }
    return file.open(mode);
}

void ChecksumWorker::StartWork()
{
    DigestPair digests;
    QFile file(m_parent->path);
    openForReading(file); // an unopened file reads as an empty one
    std::array<char, blockBytes> block;
    while (m_parent->running.load(std::memory_order_relaxed) != 0) {
        const qint64 bytes = file.isOpen() ? file.read(block.data(), blockBytes) : 0;
        if (bytes <= 0) {
            break;
        }
        digests.add(block.data(), static_cast<int>(bytes));
        m_parent->done.fetch_add(bytes, std::memory_order_relaxed);
    }
    file.close();
    m_parent->md5Text = QString::fromLatin1(digests.md5Hex());
    m_parent->sha1Text = QString::fromLatin1(digests.sha1Hex());
    emit finished();
}
