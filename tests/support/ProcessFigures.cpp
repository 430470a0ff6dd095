#include "tests/support/ProcessFigures.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <unistd.h>

namespace {

int entries(const QString& folder)
{
    return static_cast<int>(
        QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

/// @return the letter that stands for what a thread does, as in ps
char stateOf(const QString& thread)
{
    QFile stat(QStringLiteral("/proc/self/task/%1/stat").arg(thread));
    if (!stat.open(QIODevice::ReadOnly)) {
        return 'X';
    }
    const QByteArray text = stat.readAll();
    return text.at(text.lastIndexOf(')') + 2); // the name before it may hold anything
}

} // namespace

int threadCount()
{
    return entries(QStringLiteral("/proc/self/task"));
}

int pooledThreadCount()
{
    const QStringList threads
        = QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return static_cast<int>(std::count_if(threads.begin(), threads.end(), [](const QString& thread) {
        QFile name(QStringLiteral("/proc/self/task/%1/comm").arg(thread));
        return name.open(QIODevice::ReadOnly) && name.readAll() == "Thread (pooled)\n";
    }));
}

int descriptorCount()
{
    return entries(QStringLiteral("/proc/self/fd"));
}

bool otherThreadsWait()
{
    const QString own = QString::number(::gettid());
    const QStringList threads
        = QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::all_of(threads.begin(), threads.end(), [&own](const QString& thread) {
        const char state = stateOf(thread);
        return thread == own || state == 'S' || state == 'X';
    });
}

int childCount()
{
    const QStringList threads
        = QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    int count = 0;
    for (const QString& thread : threads) {
        QFile children(QStringLiteral("/proc/self/task/%1/children").arg(thread));
        if (children.open(QIODevice::ReadOnly)) {
            count += static_cast<int>(children.readAll().split(' ').size()) - 1;
        }
    }
    return count;
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
