#include "panel/FolderWatch.h"

#include "panel/FolderEvents.h"

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

void FolderWatch::add(const QString& folder)
{
    const int watch = m_events->watch(folder);
    if (watch >= 0) {
        remove(folder); // after the new one is there, so that one and the same folder is watched throughout
        m_watches.insert(folder, watch);
    }
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
