#include "panel/FolderWatch.h"

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
    for (const int watch : qAsConst(m_watches)) {
        m_events->unwatch(watch);
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
    }
    return !gone;
}

void FolderWatch::remove(const QString& folder)
{
    const auto watch = m_watches.find(folder);
    if (watch != m_watches.end()) {
        m_events->unwatch(watch.value());
        m_watches.erase(watch);
    }
}

void FolderWatch::tell(int watch)
{
    const QStringList folders = m_watches.keys(watch);
    for (const QString& folder : folders) {
        emit changed(folder);
    }
}

void FolderWatch::tellAll()
{
    const QStringList folders = m_watches.keys();
    for (const QString& folder : folders) {
        emit changed(folder);
    }
}

void FolderWatch::drop(int watch)
{
    const QStringList folders = m_watches.keys(watch);
    for (const QString& folder : folders) {
        m_watches.remove(folder);
    }
}
