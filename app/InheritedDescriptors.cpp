#include "app/InheritedDescriptors.h"

#include "app/PosixHandles.h"

#include <cstdlib>

void fillStandardDescriptors()
{
    for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            // Gets this number, the lowest that is free.
            ::open("/dev/null", O_RDWR); // NOLINT(android-cloexec-open): launched programs get it
        }
    }
}

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
