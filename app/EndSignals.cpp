#include "app/EndSignals.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

namespace {

/// Where the handler writes to, the only thing that it may do with other code stopped anywhere.
volatile std::sig_atomic_t writeEnd = -1;

void askForTheEnd(int /*signal*/)
{
    const int error = errno;
    const char byte = 0;
    if (::write(writeEnd, &byte, 1) < 0) {
        // A full pipe has been asked often enough.
    }
    errno = error;
}

void doNothing(int /*signal*/) { }

/// Whether a process that is forked off is to take a broken pipe as a process usually does.
volatile std::sig_atomic_t restorePipeSignal = 0;

/// Qt starts a detached program from a child of a child, and lets the first one ignore broken pipes: the
/// program would inherit that, and never end when whoever reads from it does.
void afterFork()
{
    if (restorePipeSignal != 0) {
        static_cast<void>(std::signal(SIGPIPE, SIG_DFL));
    }
}

} // namespace

EndSignals::EndSignals()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
        m_readEnd = ends[0];
        writeEnd = ends[1];
        m_notifier = new QSocketNotifier(m_readEnd, QSocketNotifier::Read, this);
        connect(m_notifier, SIGNAL(activated(int)), this, SLOT(readSignals()));
        for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
            handle(signal, askForTheEnd);
        }
    }
    handle(SIGXFSZ, doNothing);
    restorePipeSignal = handle(SIGPIPE, doNothing) ? 1 : 0;
    static const int registered = ::pthread_atfork(nullptr, nullptr, afterFork);
    Q_UNUSED(registered)
    QCoreApplication::instance()->installEventFilter(this);
}

EndSignals::~EndSignals()
{
    restorePipeSignal = 0;
    for (const Before& before : m_before) {
        ::sigaction(before.signal, &before.action, nullptr);
    }
    if (m_readEnd >= 0) {
        delete m_notifier;
        ::close(m_readEnd);
        ::close(writeEnd);
        writeEnd = -1;
    }
}

/// @return whether the signal is handled: not if it is ignored
bool EndSignals::handle(int signal, void (*handler)(int))
{
    struct sigaction before = {};
    if (::sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) {
        return false;
    }
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
    m_before.push_back({signal, before});
    return true;
}

void EndSignals::readSignals()
{
    std::array<char, 64> bytes{};
    while (::read(m_readEnd, bytes.data(), bytes.size()) > 0) { }
    quitNow();
}

bool EndSignals::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Quit && watched == QCoreApplication::instance()) {
        quitNow();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void EndSignals::quitNow()
{
    m_haveCome = true;
    QCoreApplication::quit();
}
