// Names of files on their way from disk to the windows and back.

#include "app/PosixHandles.h"
#include "fileops/ProgressWorker.h"
#include "fuzz/Require.h"

#include <QFile>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray name(reinterpret_cast<const char*>(data), static_cast<int>(size));
    name.replace('\0', 'x'); // no name of a file holds one
    // A name alone would lose a byte order mark at its front; it is always decoded as the end of a path.
    const QByteArray path = childPath(QByteArrayLiteral("/home"), name.constData());
    const QString shown = QString::fromUtf8(path);
    const QByteArray back = shown.toUtf8();
    // A name that is text comes back as it was. Any other is told apart by the replacement character.
    REQUIRE(back == path || shown.contains(QChar(QChar::ReplacementCharacter)));
    REQUIRE(QString::fromUtf8(back).toUtf8() == back);
    REQUIRE(QFile::decodeName(back) == QString::fromUtf8(back));
    return 0;
}
