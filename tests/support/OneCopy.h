#pragma once

#include "fileops/MProgress.h"
#include "tests/support/OperationRun.h"
#include "tests/support/TestDir.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <sys/stat.h>

/// Bytes that are read and written at a time.
constexpr int block = 1048576;

/// @return what lies at a path, links themselves; all zero where nothing does
inline struct stat infoOf(const QString& path)
{
    struct stat info = {};
    ::lstat(QFile::encodeName(path).constData(), &info);
    return info;
}

/// @return permission, set-id and sticky bits
inline unsigned modeOf(const QString& path)
{
    return infoOf(path).st_mode & 07777;
}

/// Content in which every place is different from its neighbours.
inline QByteArray content(int bytes)
{
    QByteArray text(bytes, '\0');
    for (int i = 0; i < bytes; ++i) {
        text[i] = static_cast<char>((i * 7 + i / 251) & 0xff);
    }
    return text;
}

/// A copy of "src", which the test fills, to the name "dst" or into the folder "to".
struct Copy
{
    OperationRun toName() { return {OpCopyTo, {dir.path("src")}, dir.path("dst")}; }
    TestDir dir;
};
