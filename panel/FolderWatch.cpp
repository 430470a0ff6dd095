#include "panel/FolderWatch.h"

#include <QFile>
#include <QSet>
#include <QSocketNotifier>

#include <array>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr quint32 watchedEvents = IN_ATTRIB | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_DELETE_SELF
    | IN_MODIFY | IN_MOVE | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

FolderWatch::FolderWatch(QObject* parent)
    : QObject(parent)
    , m_descriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    if (m_descriptor >= 0) {
        m_notifier = new QSocketNotifier(m_descriptor, QSocketNotifier::Read, this);
        connect(m_notifier, SIGNAL(activated(int)), this, SLOT(readEvents()));
    }
}

FolderWatch::~FolderWatch()
{
    if (m_descriptor >= 0) {
        delete m_notifier;
        ::close(m_descriptor);
    }
}

void FolderWatch::add(const QString& folder)
{
    if (m_descriptor < 0) {
        return;
    }
    const int watch = ::inotify_add_watch(m_descriptor, QFile::encodeName(folder).constData(), watchedEvents);
    if (watch < 0) {
        return;
    }
    const int before = m_watches.value(folder, watch);
    if (before != watch) {
        m_folders.remove(before);
    }
    m_watches.insert(folder, watch);
    m_folders.insert(watch, folder);
}

void FolderWatch::remove(const QString& folder)
{
    const auto watch = m_watches.find(folder);
    if (watch == m_watches.end()) {
        return;
    }
    ::inotify_rm_watch(m_descriptor, watch.value());
    m_folders.remove(watch.value());
    m_watches.erase(watch);
}

void FolderWatch::readEvents()
{
    QSet<QString> touched;
    alignas(inotify_event) std::array<char, 16384> buffer{};
    ssize_t got = 0;
    while ((got = ::read(m_descriptor, buffer.data(), buffer.size())) > 0) {
        for (ssize_t at = 0; at < got;) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
            if ((event.mask & IN_Q_OVERFLOW) != 0) {
                const QStringList all = m_watches.keys();
                touched = QSet<QString>(all.begin(), all.end());
            } else if (m_folders.contains(event.wd)) {
                touched.insert(m_folders.value(event.wd));
            }
            if ((event.mask & IN_IGNORED) != 0 && m_folders.contains(event.wd)) {
                m_watches.remove(m_folders.take(event.wd));
            }
        }
    }
    for (const QString& folder : qAsConst(touched)) {
        emit changed(folder);
    }
}
