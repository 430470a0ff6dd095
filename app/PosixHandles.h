#pragma once

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

/// Owners of what the system's file calls hand out. Each closes what it holds exactly once, and closing never
/// changes errno, so that a failure can still be told after an owner went out of scope.

/// A file descriptor.
class Descriptor
{
public:
    /// @param number what open() returned; a negative number is held as "none"
    explicit Descriptor(int number = -1)
        : m_number(number)
    {
    }
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    /// @return the descriptor, still owned here; negative where there is none
    int number() const { return m_number; }

    /// Closes the descriptor now. The result of close() is not looked at.
    void close()
    {
        if (m_number >= 0) {
            const int error = errno;
            ::close(std::exchange(m_number, -1));
            errno = error;
        }
    }

private:
    int m_number;
};

/// A folder that is held to be told again by, whatever its path leads to meanwhile. Nothing is read from it.
class HeldFolder
{
public:
    /// @param path folder, or link to one; where it cannot be opened, no folder is held
    explicit HeldFolder(const char* path)
        : m_folder(::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC))
    {
    }

    bool isHeld() const { return m_folder.number() >= 0; }

    /// @return whether @p path leads to this very folder; else errno tells why, ENOTDIR where something else
    ///         is there
    bool isAt(const char* path) const
    {
        struct stat own;
        struct stat found;
        if (::fstat(m_folder.number(), &own) != 0 || ::stat(path, &found) != 0) {
            return false;
        }
        const bool isSame = own.st_dev == found.st_dev && own.st_ino == found.st_ino;
        errno = isSame ? errno : ENOTDIR;
        return isSame;
    }

private:
    Descriptor m_folder;
};

/// A folder that is being listed.
class FolderListing
{
public:
    /// Opens the folder. Where that fails, isOpen() is false and errno tells why.
    explicit FolderListing(const char* path)
        : m_folder(::opendir(path))
    {
    }
    /// The same for a path relative to a folder that is open, which costs less than the whole path.
    FolderListing(int folder, const char* path)
        : m_folder(nullptr)
    {
        const int number = ::openat(folder, path, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC);
        if (number >= 0) {
            m_folder = ::fdopendir(number);
        }
    }
    ~FolderListing()
    {
        if (m_folder != nullptr) {
            const int error = errno;
            ::closedir(m_folder);
            errno = error;
        }
    }
    FolderListing(FolderListing&& other) noexcept
        : m_folder(std::exchange(other.m_folder, nullptr))
    {
    }
    FolderListing& operator=(FolderListing&& other) noexcept
    {
        std::swap(m_folder, other.m_folder);
        return *this;
    }
    FolderListing(const FolderListing&) = delete;
    FolderListing& operator=(const FolderListing&) = delete;

    bool isOpen() const { return m_folder != nullptr; }

    /// @return name of the next entry, in the order of the file system and with "." and ".."; null at the end
    ///         and after a read error. Valid until the next call
    const char* next()
    {
        const dirent* entry = nextEntry();
        return entry == nullptr ? nullptr : entry->d_name;
    }
    /// The same with the kind of the entry, as far as the file system tells it.
    const dirent* nextEntry() { return ::readdir(m_folder); }

    /// @return whether @p path leads to this very folder, and not by a link at its end; else errno tells why,
    ///         ENOTDIR where something else is there
    bool isAt(const char* path) const
    {
        struct stat own;
        struct stat found;
        if (::fstat(number(), &own) != 0 || ::fstatat(AT_FDCWD, path, &found, AT_SYMLINK_NOFOLLOW) != 0) {
            return false;
        }
        const bool isSame = own.st_dev == found.st_dev && own.st_ino == found.st_ino;
        errno = isSame ? errno : ENOTDIR;
        return isSame;
    }

    /// @return the folder's descriptor, still owned here
    int number() const { return ::dirfd(m_folder); }

    /// @return whether the name is "." or ".."
    static bool isDots(const char* name)
    {
        return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
    }

private:
    DIR* m_folder;
};
