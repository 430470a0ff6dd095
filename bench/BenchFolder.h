#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>

#include <array>
#include <fcntl.h>
#include <unistd.h>

/// Makes @p count files without blocks on disk in the new folder @p path: ten suffixes, sizes that differ,
/// made in another order than that of their names.
/// @return whether all of them were made
inline bool makeBenchFolder(const QString& path, int count)
{
    static constexpr std::array<const char*, 10> suffixes{
        "txt", "png", "cpp", "h", "pdf", "jpg", "mp3", "html", "tar.gz", "md"};
    if (!QDir().mkpath(path)) {
        return false;
    }
    const QByteArray folder = QFile::encodeName(path) + "/file";
    for (qint64 i = 0; i < count; ++i) {
        // 7919 is prime and divides none of the counts, so each number turns up once.
        const qint64 number = i * 7919 % count;
        const QByteArray name = folder + QByteArray::number(number).rightJustified(7, '0') + '.'
            + suffixes.at(static_cast<std::size_t>(i) % suffixes.size());
        const int file = ::open(name.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
        const bool made = file >= 0 && ::ftruncate(file, i * 7919 % 100003) == 0;
        if (file >= 0) {
            ::close(file);
        }
        if (!made) {
            return false;
        }
    }
    return true;
}
