#include "tests/support/MemoryMount.h"

#include <QFile>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

bool ownMounts = false;

} // namespace

void useOwnMounts()
{
    ownMounts = ::geteuid() == 0 && ::unshare(CLONE_NEWNS) == 0
        && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool hasOwnMounts()
{
    return ownMounts;
}

MemoryMount::MemoryMount(const QString& place, const char* options)
    : m_place(QFile::encodeName(place))
    , m_mounted(ownMounts && ::mount("tmpfs", m_place.constData(), "tmpfs", 0, options) == 0)
{
}

MemoryMount::~MemoryMount()
{
    unmount();
}

bool MemoryMount::makeReadOnly() const
{
    return ::mount(nullptr, m_place.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

bool MemoryMount::resize(const char* options) const
{
    return ::mount(nullptr, m_place.constData(), nullptr, MS_REMOUNT, options) == 0;
}

void MemoryMount::unmount()
{
    if (m_mounted) {
        m_mounted = false;
        ::umount2(m_place.constData(), MNT_DETACH);
    }
}

BindMount::BindMount(const QString& source, const QString& place)
    : m_place(QFile::encodeName(place))
    , m_mounted(ownMounts
          && ::mount(QFile::encodeName(source).constData(), m_place.constData(), nullptr, MS_BIND, nullptr)
              == 0)
{
}

BindMount::~BindMount()
{
    if (m_mounted) {
        ::umount2(m_place.constData(), MNT_DETACH);
    }
}
