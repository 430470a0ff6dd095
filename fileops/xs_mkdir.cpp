#include "fileops/xs_mkdir.h"

#include <QVector>

#include <sys/stat.h>

int xs_mkdir(const QString& path)
{
    constexpr mode_t newFolderMode = 0775;

    const QString folders = path.left(qMax(0, path.lastIndexOf(QLatin1Char('/'))));
    const QVector<QStringRef> parts = folders.splitRef(QLatin1Char('/'), Qt::SkipEmptyParts);
    QByteArray prefix;
    for (const QStringRef& part : parts) {
        prefix += '/' + part.toUtf8();
        struct stat info;
        if (::lstat(prefix.constData(), &info) == 0) {
            continue;
        }
        const int result = ::mkdir(prefix.constData(), newFolderMode);
        if (result < 0) {
            return result;
        }
    }
    return 0;
}
