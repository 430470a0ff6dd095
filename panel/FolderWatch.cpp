#include "panel/FolderWatch.h"

#include "app/TextHelpers.h"
#include "panel/FolderEvents.h"

#include <cerrno>

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
    const bool gone = watch == -ENOENT || watch == -ENOTDIR;
    if (watch >= 0 || gone) {
        // After the new one is there, so that one and the same folder is watched throughout. One that follows
        // a folder which was moved away says nothing of what is made in its place.
        remove(folder);
    }
    if (watch >= 0) {
        m_watches.insert(folder, watch);
    } else if (watch == -EACCES) {
        watchAbove(folder);
    }
    return !gone;
}

void FolderWatch::watchAbove(const QString& folder)
{
    QString above = folder;
    int watch = -EACCES;
    while (watch == -EACCES && above.length() > 1) {
        above = xs_UpOneLevel(above);
        watch = m_events->watch(above);
    }
    unwatch(m_watchesAbove, folder);
    if (watch >= 0) {
        m_watchesAbove.insert(folder, watch);
    }
}

void FolderWatch::remove(const QString& folder)
{
    unwatch(m_watches, folder);
    unwatch(m_watchesAbove, folder);
}

void FolderWatch::unwatch(QHash<QString, int>& watches, const QString& folder)
{
    const auto watch = watches.find(folder);
    if (watch != watches.end()) {
        m_events->unwatch(watch.value());
        watches.erase(watch);
    }
}

void FolderWatch::tell(int watch)
{
    const QStringList folders = m_watches.keys(watch) + m_watchesAbove.keys(watch);
    for (const QString& folder : folders) {
        emit changed(folder);
    }
}

void FolderWatch::tellAll()
{
    const QStringList folders = m_watches.keys() + m_watchesAbove.keys();
    for (const QString& folder : folders) {
        emit changed(folder);
    }
}

void FolderWatch::drop(int watch)
{
    for (auto* watches : {&m_watches, &m_watchesAbove}) {
        const QStringList folders = watches->keys(watch);
        for (const QString& folder : folders) {
            watches->remove(folder);
        }
    }
}
