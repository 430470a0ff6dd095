#pragma once

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

/// The file calls of the program's operations, in its order, by a loop that does nothing else: what they cost
/// at least. Nothing is asked and failures are passed over.
namespace bare {

inline bool isDots(const char* name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

struct Counts
{
    long files = 0;
    long folders = 0;
    long long total = 1;
};

inline void count(const std::string& path, Counts& counts)
{
    struct stat info;
    if (::lstat(path.c_str(), &info) != 0) {
        return;
    }
    if (!S_ISDIR(info.st_mode)) {
        ++counts.files;
        counts.total += info.st_size + 1;
        return;
    }
    if (DIR* folder = ::opendir(path.c_str())) {
        while (const dirent* entry = ::readdir(folder)) {
            if (isDots(entry->d_name)) {
                continue;
            }
            const std::string child = path + '/' + entry->d_name;
            if (::lstat(child.c_str(), &info) != 0) {
                ::closedir(folder);
                return;
            }
            if (S_ISDIR(info.st_mode)) {
                count(child, counts);
            } else {
                ++counts.files;
                counts.total += info.st_size + 1;
            }
        }
        ::closedir(folder);
    }
    ++counts.folders;
}

inline void copyFile(const std::string& src, const std::string& dst)
{
    static char block[1048576];
    struct stat info;
    struct stat target;
    if (::lstat(src.c_str(), &info) != 0 || ::lstat(dst.c_str(), &target) == 0) {
        return;
    }
    const int from = ::open(src.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    const int to
        = ::open(dst.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, info.st_mode & 07777);
    bool failed = ::ftruncate(to, 0) != 0;
    ::posix_fadvise(from, 0, 0, POSIX_FADV_SEQUENTIAL);
    ::posix_fadvise(to, 0, 0, POSIX_FADV_SEQUENTIAL);
    ::posix_fallocate(to, 0, info.st_size);
    failed = ::fchown(to, info.st_uid, info.st_gid) != 0 || failed;
    failed = ::fchmod(to, info.st_mode & 07777) != 0 || failed;
    ssize_t length = 0;
    while ((length = ::read(from, block, sizeof block)) > 0) {
        failed = ::write(to, block, static_cast<size_t>(length)) != length || failed;
    }
    ::close(to);
    ::close(from);
    if (failed) {
        std::fprintf(stderr, "bare copy failed: %s\n", dst.c_str());
    }
}

inline void copy(const std::string& src, const std::string& dst)
{
    struct stat info;
    if (::lstat(src.c_str(), &info) == 0 && !S_ISDIR(info.st_mode)) {
        copyFile(src, dst);
        return;
    }
    struct stat target;
    if (::lstat(dst.c_str(), &target) != 0) {
        ::mkdir(dst.c_str(), info.st_mode & 07777);
    }
    DIR* folder = ::opendir(src.c_str());
    while (const dirent* entry = folder == nullptr ? nullptr : ::readdir(folder)) {
        if (isDots(entry->d_name)) {
            continue;
        }
        const std::string from = src + '/' + entry->d_name;
        const std::string to = dst + '/' + entry->d_name;
        if (::lstat(from.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
            copy(from, to);
        } else {
            copyFile(from, to);
        }
    }
    ::closedir(folder);
}

inline void remove(const std::string& path)
{
    struct stat info;
    if (::lstat(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode)) {
        ::remove(path.c_str());
        return;
    }
    DIR* folder = ::opendir(path.c_str());
    while (const dirent* entry = folder == nullptr ? nullptr : ::readdir(folder)) {
        if (isDots(entry->d_name)) {
            continue;
        }
        const std::string child = path + '/' + entry->d_name;
        if (::lstat(child.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
            remove(child);
        } else {
            ::remove(child.c_str());
        }
    }
    ::closedir(folder);
    ::remove(path.c_str());
}

} // namespace bare
