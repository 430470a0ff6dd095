#include "panel/MountWatch.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

std::shared_ptr<MountWatch> MountWatch::shared()
{
    static std::weak_ptr<MountWatch> one;
    std::shared_ptr<MountWatch> watch = one.lock();
    if (!watch) {
        watch.reset(new MountWatch);
        one = watch;
    }
    return watch;
}

MountWatch::MountWatch()
    : m_table(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC))
{
    if (m_table >= 0) {
        // The table becomes "urgent" when it changes, until that has been asked for; it need not be read.
        m_notifier = new QSocketNotifier(m_table, QSocketNotifier::Exception, this);
        connect(m_notifier, SIGNAL(activated(int)), this, SIGNAL(changed()));
    }
}

MountWatch::~MountWatch()
{
    if (m_table >= 0) {
        delete m_notifier;
        ::close(m_table);
    }
}
