#include "app/InheritedDescriptors.h"

#include "app/PosixHandles.h"

#include <cstdlib>

void keepInheritedDescriptors()
{
    FolderListing descriptors("/proc/self/fd");
    while (const char* name = descriptors.isOpen() ? descriptors.next() : nullptr) {
        const long descriptor = std::strtol(name, nullptr, 10); // 0 for what is no number
        if (descriptor > STDERR_FILENO) {
            ::fcntl(static_cast<int>(descriptor), F_SETFD, FD_CLOEXEC);
        }
    }
}
