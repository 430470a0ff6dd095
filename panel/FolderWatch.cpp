#include "panel/FolderWatch.h"

#include "app/TextHelpers.h"
#include "panel/FolderEvents.h"

#include <QFile>

#include <cerrno>
#include <climits>
#include <unistd.h>

namespace {

/// @return text of a link; empty where it is none
QString linkText(const QString& path)
{
    char text[PATH_MAX];
    const ssize_t length = ::readlink(QFile::encodeName(path).constData(), text, sizeof text);
    return length > 0 ? QFile::decodeName(QByteArray(text, static_cast<int>(length))) : QString();
}

/// @return the folders that hold the links by which a path leads where it does: what happens there can lead
/// it
///         elsewhere
QStringList foldersOfLinks(const QString& path)
{
    constexpr int mostLinks = 40; // as many as the system follows
    QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    QStringList folders;
    QString done; // without links, and without "/" at its end
    while (!parts.isEmpty()) {
        const QString part = parts.takeFirst();
        if (part == QLatin1String("..")) {
            done.truncate(qMax(0, done.lastIndexOf(QLatin1Char('/'))));
            continue;
        }
        const QString link = linkText(done + QLatin1Char('/') + part);
        if (link.isEmpty() || folders.size() == mostLinks) {
            done += part == QLatin1String(".") ? QString() : QLatin1Char('/') + part;
            continue;
        }
        folders.append(done.isEmpty() ? QStringLiteral("/") : done);
        done = link.startsWith(QLatin1Char('/')) ? QString() : done;
        parts = link.split(QLatin1Char('/'), Qt::SkipEmptyParts) + parts;
    }
    return folders;
}

} // namespace

FolderWatch::FolderWatch(QObject* parent)
    : QObject(parent)
    , m_events(FolderEvents::shared())
{
    connect(m_events.get(), SIGNAL(touched(int)), this, SLOT(tell(int)));
    connect(m_events.get(), SIGNAL(everythingTouched()), this, SLOT(tellAll()));
    connect(m_events.get(), SIGNAL(lost(int)), this, SLOT(drop(int)));
}

FolderWatch::~FolderWatch()
{
    for (const auto* watches : {&m_watches, &m_watchesAbove}) {
        for (const int watch : *watches) {
            m_events->unwatch(watch);
        }
    }
}

bool FolderWatch::add(const QString& folder)
{
    const int watch = m_events->watch(folder);
    const QList<int> above = watchAbove(folder, watch == -EACCES);
    // After the new ones are there, so that one and the same folder is watched throughout. Where the folder
    // cannot be watched, the watch from before is another folder's, and says nothing of this one.
    remove(folder);
    if (watch >= 0) {
        m_watches.insert(folder, watch);
    }
    for (const int each : above) {
        m_watchesAbove.insert(folder, each);
    }
    return watch != -ENOENT && watch != -ENOTDIR;
}

/// Watches what tells where the path of a folder leads, and when it may be read.
/// @param isClosed it may not be read
QList<int> FolderWatch::watchAbove(const QString& folder, bool isClosed)
{
    QList<int> watches;
    const auto take = [&](const QString& above) {
        const int watch = m_events->watch(above);
        if (watch >= 0) {
            watches.append(watch);
        }
        return watch;
    };
    QString above = folder;
    while (isClosed && above.length() > 1) {
        above = xs_UpOneLevel(above);
        isClosed = take(above) == -EACCES;
    }
    const QStringList links = foldersOfLinks(folder);
    for (const QString& each : links) {
        take(each);
    }
    return watches;
}

void FolderWatch::remove(const QString& folder)
{
    for (auto* watches : {&m_watches, &m_watchesAbove}) {
        const QList<int> those = watches->values(folder);
        for (const int watch : those) {
            m_events->unwatch(watch);
        }
        watches->remove(folder);
    }
}

bool FolderWatch::leadsToWatched(const QString& folder) const
{
    const int watch = m_events->watch(folder);
    if (watch >= 0) {
        m_events->unwatch(watch);
    }
    return watch >= 0 && watch == watchOf(folder);
}

void FolderWatch::tell(int watch)
{
    QStringList folders = m_watches.keys(watch);
    const QStringList below = m_watchesAbove.keys(watch);
    for (const QString& folder : below) {
        if (!leadsToWatched(folder)) {
            folders.append(folder);
        }
    }
    for (const QString& folder : qAsConst(folders)) {
        emit changed(folder);
    }
}

void FolderWatch::tellAll()
{
    QStringList folders = m_watches.keys();
    folders.append(m_watchesAbove.uniqueKeys());
    for (const QString& folder : qAsConst(folders)) {
        emit changed(folder);
    }
}

void FolderWatch::drop(int watch)
{
    for (auto* watches : {&m_watches, &m_watchesAbove}) {
        const QStringList folders = watches->keys(watch);
        for (const QString& folder : folders) {
            watches->remove(folder, watch);
        }
    }
}
