#pragma once

#include <sys/types.h>
#include <unistd.h>

/// Takes root's rights from all threads of the process while it lives, so that permissions count. A process
/// that does not run as root stays as it is. What TestDir made before is root's own and its folder closed to
/// others; open it with TestDir::setMode() first.
class AsNobody
{
public:
    AsNobody()
        : m_wasRoot(
            ::geteuid() == 0 && ::setresgid(nobody, nobody, 0) == 0 && ::setresuid(nobody, nobody, 0) == 0)
    {
    }
    ~AsNobody()
    {
        if (m_wasRoot && (::setresuid(0, 0, 0) != 0 || ::setresgid(0, 0, 0) != 0)) {
            ::_exit(1);
        }
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    bool m_wasRoot;
};
