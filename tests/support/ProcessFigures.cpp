#include "tests/support/ProcessFigures.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

namespace {

int entries(const QString& folder)
{
    return static_cast<int>(
        QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

} // namespace

int threadCount()
{
    return entries(QStringLiteral("/proc/self/task"));
}

int descriptorCount()
{
    return entries(QStringLiteral("/proc/self/fd"));
}

long residentKib()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.value(1).toLong() * (::sysconf(_SC_PAGESIZE) / 1024);
}
