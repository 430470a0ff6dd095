// A file system that shows a folder at another place and fails where the names of its files say so. Tests
// only; started by FaultyMount.
//
//     faultyfs SOURCE PLACE     runs until it is unmounted or told to end
//
// A name that contains        makes
//     readerror               reads fail from byte 100,000 on
//     writeerror              writes fail from byte 1,500,000 on; one that crosses it is short
//     closeerror              closing fail
//     listerror               the listing of that folder fail after two names
//
// Space cannot be reserved here and owners cannot be set, as on many a foreign file system.

#define FUSE_USE_VERSION 31

#include <fuse.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr off_t readErrorAt = 100000;
constexpr off_t writeErrorAt = 1500000;
constexpr int namesBeforeError = 2;

std::string source;

std::string inSource(const char* path)
{
    return source + path;
}

bool says(const char* path, const char* word)
{
    return std::strstr(path, word) != nullptr;
}

int result(long value)
{
    return value < 0 ? -errno : static_cast<int>(value);
}

int handleOf(const fuse_file_info* file)
{
    return static_cast<int>(file->fh);
}

int getAttributes(const char* path, struct stat* facts, fuse_file_info* /*file*/)
{
    return result(::lstat(inSource(path).c_str(), facts));
}

int readLink(const char* path, char* target, size_t size)
{
    const ssize_t length = ::readlink(inSource(path).c_str(), target, size - 1);
    if (length < 0) {
        return -errno;
    }
    target[length] = '\0';
    return 0;
}

int list(const char* path, void* names, fuse_fill_dir_t fill, off_t /*offset*/, fuse_file_info* /*file*/,
    fuse_readdir_flags /*flags*/)
{
    DIR* folder = ::opendir(inSource(path).c_str());
    if (folder == nullptr) {
        return -errno;
    }
    int given = 0;
    int error = 0;
    while (const dirent* entry = ::readdir(folder)) {
        if (says(path, "listerror") && given++ == namesBeforeError) {
            error = -EIO;
            break;
        }
        fill(names, entry->d_name, nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    }
    ::closedir(folder);
    return error;
}

/// The kernel is not to keep anything: each call is to come here as it is made.
int keep(fuse_file_info* file, int descriptor)
{
    file->fh = static_cast<std::uint64_t>(descriptor);
    file->direct_io = 1;
    return descriptor < 0 ? -errno : 0;
}

int openFile(const char* path, fuse_file_info* file)
{
    return keep(file, ::open(inSource(path).c_str(), file->flags));
}

int createFile(const char* path, mode_t mode, fuse_file_info* file)
{
    return keep(file, ::open(inSource(path).c_str(), file->flags, mode));
}

int readFile(const char* path, char* buffer, size_t size, off_t offset, fuse_file_info* file)
{
    if (says(path, "readerror")) {
        if (offset >= readErrorAt) {
            return -EIO;
        }
        size = std::min(size, static_cast<size_t>(readErrorAt - offset));
    }
    return result(::pread(handleOf(file), buffer, size, offset));
}

int writeFile(const char* path, const char* buffer, size_t size, off_t offset, fuse_file_info* file)
{
    if (says(path, "writeerror")) {
        if (offset >= writeErrorAt) {
            return -EIO;
        }
        size = std::min(size, static_cast<size_t>(writeErrorAt - offset));
    }
    return result(::pwrite(handleOf(file), buffer, size, offset));
}

int flushFile(const char* path, fuse_file_info* /*file*/)
{
    return says(path, "closeerror") ? -EIO : 0;
}

int releaseFile(const char* /*path*/, fuse_file_info* file)
{
    return result(::close(handleOf(file)));
}

int resize(const char* path, off_t size, fuse_file_info* /*file*/)
{
    return result(::truncate(inSource(path).c_str(), size));
}

int makeFolder(const char* path, mode_t mode)
{
    return result(::mkdir(inSource(path).c_str(), mode));
}

int removeFolder(const char* path)
{
    return result(::rmdir(inSource(path).c_str()));
}

int removeFile(const char* path)
{
    return result(::unlink(inSource(path).c_str()));
}

int makeLink(const char* target, const char* path)
{
    return result(::symlink(target, inSource(path).c_str()));
}

int setMode(const char* path, mode_t mode, fuse_file_info* /*file*/)
{
    return result(::chmod(inSource(path).c_str(), mode));
}

int setOwner(const char* /*path*/, uid_t /*user*/, gid_t /*group*/, fuse_file_info* /*file*/)
{
    return -EPERM;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        static_cast<void>(std::fputs("faultyfs SOURCE PLACE\n", stderr));
        return 2;
    }
    source = argv[1];
    fuse_operations operations = {};
    operations.getattr = getAttributes;
    operations.readlink = readLink;
    operations.readdir = list;
    operations.open = openFile;
    operations.create = createFile;
    operations.read = readFile;
    operations.write = writeFile;
    operations.flush = flushFile;
    operations.release = releaseFile;
    operations.truncate = resize;
    operations.mkdir = makeFolder;
    operations.rmdir = removeFolder;
    operations.unlink = removeFile;
    operations.symlink = makeLink;
    operations.chmod = setMode;
    operations.chown = setOwner;
    // In the foreground, with one thread.
    char foreground[] = "-f";
    char oneThread[] = "-s";
    char* arguments[] = {argv[0], foreground, oneThread, argv[2], nullptr};
    return fuse_main(4, arguments, &operations, nullptr);
}
