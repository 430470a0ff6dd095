#pragma once

#include <QString>

/// Gives the process mounts of its own, which nobody else sees and which end with it. To be called before any
/// thread is made. Without the rights for it nothing happens, and nothing can be mounted afterwards.
void useOwnMounts();
/// @return whether the process has mounts of its own
bool hasOwnMounts();

/// A file system of its own in memory at an empty folder, as long as this lives. Needs useOwnMounts().
class MemoryMount
{
public:
    /// @param place the folder; @param options as for mounting a tmpfs, such as "size=64k"
    MemoryMount(const QString& place, const char* options);
    ~MemoryMount();
    MemoryMount(const MemoryMount&) = delete;
    MemoryMount& operator=(const MemoryMount&) = delete;

    bool isMounted() const { return m_mounted; }
    bool makeReadOnly() const;
    bool resize(const char* options) const;
    /// Takes it away before its time.
    void unmount();

private:
    QByteArray m_place;
    bool m_mounted;
};

/// A folder that stands at another place as well, as long as this lives: the same file system, but another
/// mount. Needs useOwnMounts().
class BindMount
{
public:
    BindMount(const QString& source, const QString& place);
    ~BindMount();
    BindMount(const BindMount&) = delete;
    BindMount& operator=(const BindMount&) = delete;

    bool isMounted() const { return m_mounted; }

private:
    QByteArray m_place;
    bool m_mounted;
};

/// Skips the test where the mount is none.
#define NEEDS_MOUNT(mount)                                                                                   \
    if (!(mount).isMounted()) {                                                                              \
        QSKIP("nothing can be mounted here");                                                                \
    }
