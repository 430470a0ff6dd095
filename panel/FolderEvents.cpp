#include "panel/FolderEvents.h"

#include <QFile>
#include <QSet>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr quint32 watchedEvents = IN_ATTRIB | IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_DELETE_SELF
    | IN_MODIFY | IN_MOVE | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

std::shared_ptr<FolderEvents> FolderEvents::shared()
{
    static std::weak_ptr<FolderEvents> one;
    std::shared_ptr<FolderEvents> events = one.lock();
    if (!events) {
        events.reset(new FolderEvents);
        one = events;
    }
    return events;
}

FolderEvents::FolderEvents()
    : m_descriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    if (m_descriptor >= 0) {
        m_notifier = new QSocketNotifier(m_descriptor, QSocketNotifier::Read, this);
        connect(m_notifier, SIGNAL(activated(int)), this, SLOT(readEvents()));
    }
}

FolderEvents::~FolderEvents()
{
    if (m_descriptor >= 0) {
        delete m_notifier;
        ::close(m_descriptor);
    }
}

int FolderEvents::watch(const QString& folder)
{
    if (m_descriptor < 0) {
        return -EMFILE;
    }
    const QByteArray path = QFile::encodeName(folder);
    const int watch = ::inotify_add_watch(m_descriptor, path.constData(), watchedEvents);
    if (watch < 0) {
        return -errno;
    }
    ++m_users[watch];
    return watch;
}

void FolderEvents::unwatch(int watch)
{
    const auto users = m_users.find(watch);
    if (users == m_users.end()) {
        return; // it went with its folder
    }
    if (--users.value() == 0) {
        m_users.erase(users);
        ::inotify_rm_watch(m_descriptor, watch);
    }
}

void FolderEvents::readEvents()
{
    QSet<int> some;
    QSet<int> gone;
    bool all = false;
    alignas(inotify_event) std::array<char, 16384> buffer{};
    ssize_t got = 0;
    while ((got = ::read(m_descriptor, buffer.data(), buffer.size())) > 0) {
        for (ssize_t at = 0; at < got;) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
            all = all || (event.mask & IN_Q_OVERFLOW) != 0;
            if (m_users.contains(event.wd)) { // else taken back since
                some.insert(event.wd);
                if ((event.mask & IN_IGNORED) != 0) {
                    gone.insert(event.wd);
                }
            }
        }
    }
    if (all) {
        emit everythingTouched();
    }
    for (const int watch : qAsConst(some)) {
        emit touched(watch);
    }
    for (const int watch : qAsConst(gone)) {
        m_users.remove(watch);
        emit lost(watch);
    }
}
