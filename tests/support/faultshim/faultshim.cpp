#include "tests/support/faultshim/faultshim.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <pthread.h>
#include <sstream>
#include <string>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

// The large-file names of these calls are the same calls on this system; both are stood before, below.
#if defined(_FILE_OFFSET_BITS) && _FILE_OFFSET_BITS == 64
#error "build the shim without _FILE_OFFSET_BITS, so that the plain names stay what they are"
#endif

namespace {

struct Rule
{
    enum Kind { Fail, Shorten, Delay, Hook };
    Kind kind;
    std::string function;
    std::string path;
    int first;
    int times;
    long amount; ///< errno, bytes, or ms
    void (*hook)(void*);
    void* context;
    int seen;
};

struct State
{
    std::mutex lock;
    std::string prefix;
    std::string log;
    std::vector<Rule> rules;
    std::map<int, std::string> descriptors;
    std::map<DIR*, std::string> folders;
    std::string calls;
    std::string handedOut;
    bool tellKinds = false;
};

std::atomic<bool> active{false};
std::atomic<bool> refusesThreads{false};
thread_local bool inside = false;

/// Never freed: other libraries still close files after the end of main().
State& state()
{
    static auto* const only = new State;
    return *only;
}

template <typename Function>
Function realCall(const char* name)
{
    void* const found = ::dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
        ::abort();
    }
    return reinterpret_cast<Function>(found);
}

#define REAL(name) static const auto real = realCall<decltype(&::name)>(#name)

/// Folder of the program, with "/" at its end. No string, which would be made and freed in different
/// circumstances.
char ownFolder[PATH_MAX];

void findOwnFolder()
{
    const ssize_t length = ::readlink("/proc/self/exe", ownFolder, sizeof ownFolder - 1);
    ownFolder[length > 0 ? length : 0] = '\0';
    char* end = std::strrchr(ownFolder, '/');
    if (end != nullptr) {
        end[1] = '\0';
    }
}

/// A sanitizer's runtime opens the program, its libraries and what is known of them for a report, at any
/// moment, and with its own ways to get memory: nothing of that may be noted, also where everything is
/// watched.
bool isOfTheRuntime(const std::string& path)
{
    const std::array<const char*, 4> folders{"/usr/", "/lib", "/proc/self/", ownFolder};
    return std::any_of(folders.begin(), folders.end(), [&path](const char* folder) {
        const std::size_t length = std::strlen(folder);
        return length > 0 && path.compare(0, length, folder) == 0;
    });
}

bool isWatched(const std::string& path)
{
    const std::string& prefix = state().prefix;
    return !prefix.empty() && path.compare(0, prefix.size(), prefix) == 0
        && (path.size() == prefix.size() || path[prefix.size()] == '/' || prefix.back() == '/');
}

/// What is to happen to one call.
struct Fate
{
    bool watched = false;
    int error = 0;
    long bytes = -1;
    long delayMs = 0;
};

void sleepMs(long ms)
{
    timespec left = {ms / 1000, ms % 1000 * 1000000};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR) { }
}

Fate fateOf(const char* function, const std::string& path)
{
    Fate fate;
    if (!active || inside || isOfTheRuntime(path)) {
        return fate;
    }
    std::vector<Rule> hooks;
    {
        const std::lock_guard<std::mutex> guard(state().lock);
        fate.watched = isWatched(path);
        if (!fate.watched) {
            return fate;
        }
        for (Rule& rule : state().rules) {
            if (rule.function != function || (rule.path != "*" && rule.path != path)) {
                continue;
            }
            ++rule.seen;
            if (rule.seen < rule.first || (rule.times >= 0 && rule.seen >= rule.first + rule.times)) {
                continue;
            }
            if (rule.kind == Rule::Fail) {
                fate.error = static_cast<int>(rule.amount);
            } else if (rule.kind == Rule::Shorten) {
                fate.bytes = rule.amount;
            } else if (rule.kind == Rule::Delay) {
                fate.delayMs += rule.amount;
            } else {
                hooks.push_back(rule);
            }
        }
    }
    inside = true;
    for (const Rule& rule : hooks) {
        rule.hook(rule.context);
    }
    if (fate.delayMs > 0) {
        sleepMs(fate.delayMs);
    }
    inside = false;
    return fate;
}

void appendToLog(const std::string& line)
{
    REAL(write);
    const int log = ::open(state().log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (log >= 0) {
        if (real(log, line.data(), line.size()) < 0) {
            ::abort();
        }
        ::close(log);
    }
}

void record(const Fate& fate, const char* function, const std::string& path, const std::string& more,
    long result, int error)
{
    if (!fate.watched) {
        return;
    }
    const int kept = errno;
    inside = true;
    std::string line = std::string(function) + ' ' + path + more + " = " + std::to_string(result);
    if (error != 0) {
        line += ' ' + std::to_string(error);
    }
    line += '\n';
    {
        const std::lock_guard<std::mutex> guard(state().lock);
        state().calls += line;
        if (!state().log.empty()) {
            appendToLog(line);
        }
    }
    inside = false;
    errno = kept;
}

/// The usual call: a negative result and errno tell of a failure.
template <typename Real>
long guarded(const char* function, const std::string& path, const std::string& more, Real real)
{
    const Fate fate = fateOf(function, path);
    long result = -1;
    if (fate.error != 0) {
        errno = fate.error;
    } else {
        result = static_cast<long>(real(fate));
    }
    record(fate, function, path, more, result, result < 0 ? errno : 0);
    return result;
}

/// A posix_ call: the result is the error, errno stays.
template <typename Real>
int guardedPosix(const char* function, const std::string& path, const std::string& more, Real real)
{
    const Fate fate = fateOf(function, path);
    const int result = fate.error != 0 ? fate.error : real(fate);
    record(fate, function, path, more, result, 0);
    return result;
}

std::string pathOf(int descriptor)
{
    if (!active || inside) {
        return std::string();
    }
    const std::lock_guard<std::mutex> guard(state().lock);
    const auto found = state().descriptors.find(descriptor);
    return found == state().descriptors.end() ? std::string() : found->second;
}

std::string pathOf(DIR* folder)
{
    if (!active || inside) {
        return std::string();
    }
    const std::lock_guard<std::mutex> guard(state().lock);
    const auto found = state().folders.find(folder);
    return found == state().folders.end() ? std::string() : found->second;
}

template <typename Map, typename Key>
void remember(Map& map, Key key, const std::string& path)
{
    if (active && !inside) {
        const std::lock_guard<std::mutex> guard(state().lock);
        if (isWatched(path)) {
            map[key] = path;
        }
    }
}

template <typename Map, typename Key>
void forget(Map& map, Key key)
{
    if (active && !inside) {
        const std::lock_guard<std::mutex> guard(state().lock);
        map.erase(key);
    }
}

std::string octal(mode_t mode)
{
    std::ostringstream text;
    text << " 0" << std::oct << mode;
    return text.str();
}

std::string number(long value)
{
    return ' ' + std::to_string(value);
}

/// @return what lstat() found, where that is to be told
std::string kindOf(mode_t mode, long size)
{
    if (!active || !state().tellKinds) {
        return std::string();
    }
    return (S_ISDIR(mode) ? " folder" : S_ISLNK(mode) ? " link" : " file") + number(size);
}

int openWith(int (*real)(const char*, int, ...), const char* path, int flags, mode_t mode)
{
    const std::string more = ((flags & O_ACCMODE) == O_RDONLY ? " r" : " w")
        + std::string((flags & O_CREAT) != 0 ? " create" + octal(mode) : "");
    const int result
        = static_cast<int>(guarded("open", path, more, [&](const Fate&) { return real(path, flags, mode); }));
    if (result >= 0) {
        remember(state().descriptors, result, path);
    }
    return result;
}

struct FromEnvironment
{
    FromEnvironment()
    {
        const char* watch = ::getenv("FAULTSHIM_WATCH");
        if (watch == nullptr) {
            return;
        }
        faultshim_watch(watch);
        const char* log = ::getenv("FAULTSHIM_LOG");
        state().log = log == nullptr ? "" : log;
        const char* rules = ::getenv("FAULTSHIM_RULES");
        addRules(rules == nullptr ? "" : rules);
    }

    /// @return the number; 0 where the text begins with none
    static int toInt(const std::string& text)
    {
        return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
    }

    static void addRuleOf(const std::vector<std::string>& fields)
    {
        const std::size_t colon = fields[0].find(':');
        const std::string what = colon == std::string::npos ? "fail" : fields[0].substr(0, colon);
        const std::string function = colon == std::string::npos ? fields[0] : fields[0].substr(colon + 1);
        const auto add = what == "delay" ? faultshim_delay : what == "short" ? addShorten : addFail;
        add(function.c_str(), fields[1].c_str(), toInt(fields[2]), toInt(fields[3]), toInt(fields[4]));
    }

    static void addFail(const char* function, const char* path, int first, int times, long error)
    {
        faultshim_fail(function, path, first, times, static_cast<int>(error));
    }

    static void addShorten(const char* function, const char* path, int first, int times, long bytes)
    {
        faultshim_shorten(function, path, first, times, bytes);
    }

    static void addRules(std::string text)
    {
        while (!text.empty()) {
            const std::size_t end = text.find(';');
            const std::string rule = text.substr(0, end);
            text = end == std::string::npos ? "" : text.substr(end + 1);
            std::vector<std::string> fields(1);
            for (const char c : rule) {
                if (c == '|') {
                    fields.emplace_back();
                } else {
                    fields.back() += c;
                }
            }
            if (fields.size() == 5) {
                addRuleOf(fields);
            }
        }
    }
};

const FromEnvironment fromEnvironment;

void addRule(const Rule& rule)
{
    const std::lock_guard<std::mutex> guard(state().lock);
    state().rules.push_back(rule);
}

} // namespace

extern "C" {

void faultshim_watch(const char* prefix)
{
    findOwnFolder();
    const std::lock_guard<std::mutex> guard(state().lock);
    state().prefix = prefix == nullptr ? "" : prefix;
    state().rules.clear();
    state().calls.clear();
    state().descriptors.clear();
    state().folders.clear();
    state().tellKinds = false;
    refusesThreads = false;
    active = prefix != nullptr;
}

void faultshim_spare_this_thread(bool spare)
{
    inside = spare;
}

void faultshim_fail(const char* function, const char* path, int first, int times, int error)
{
    addRule({Rule::Fail, function, path, first, times, error, nullptr, nullptr, 0});
}

void faultshim_shorten(const char* function, const char* path, int first, int times, long bytes)
{
    addRule({Rule::Shorten, function, path, first, times, bytes, nullptr, nullptr, 0});
}

void faultshim_delay(const char* function, const char* path, int first, int times, long ms)
{
    addRule({Rule::Delay, function, path, first, times, ms, nullptr, nullptr, 0});
}

void faultshim_tell_kinds(bool tell)
{
    const std::lock_guard<std::mutex> guard(state().lock);
    state().tellKinds = tell;
}

void faultshim_refuse_threads(bool refuse)
{
    refusesThreads = refuse;
}

void faultshim_hook(const char* function, const char* path, int first, void (*hook)(void*), void* context)
{
    addRule({Rule::Hook, function, path, first, 1, 0, hook, context, 0});
}

const char* faultshim_calls()
{
    const std::lock_guard<std::mutex> guard(state().lock);
    state().handedOut = state().calls;
    return state().handedOut.c_str();
}

// ---- the calls ----

int lstat(const char* path, struct stat* info)
{
    REAL(lstat);
    std::string kind;
    return static_cast<int>(guarded("lstat", path, kind, [&](const Fate&) {
        const int result = real(path, info);
        kind = result == 0 ? kindOf(info->st_mode, info->st_size) : "";
        return result;
    }));
}

int lstat64(const char* path, struct stat64* info)
{
    REAL(lstat64);
    std::string kind;
    return static_cast<int>(guarded("lstat", path, kind, [&](const Fate&) {
        const int result = real(path, info);
        kind = result == 0 ? kindOf(info->st_mode, info->st_size) : "";
        return result;
    }));
}

int open(const char* path, int flags, ...)
{
    REAL(open);
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return openWith(real, path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    REAL(open64);
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return openWith(real, path, flags, mode);
}

ssize_t read(int descriptor, void* buffer, size_t length)
{
    REAL(read);
    return guarded("read", pathOf(descriptor), number(static_cast<long>(length)), [&](const Fate& fate) {
        const bool cut = fate.bytes >= 0 && static_cast<size_t>(fate.bytes) < length;
        return real(descriptor, buffer, cut ? static_cast<size_t>(fate.bytes) : length);
    });
}

ssize_t write(int descriptor, const void* buffer, size_t length)
{
    REAL(write);
    return guarded("write", pathOf(descriptor), number(static_cast<long>(length)), [&](const Fate& fate) {
        const bool cut = fate.bytes >= 0 && static_cast<size_t>(fate.bytes) < length;
        return real(descriptor, buffer, cut ? static_cast<size_t>(fate.bytes) : length);
    });
}

int close(int descriptor)
{
    REAL(close);
    const std::string path = pathOf(descriptor);
    forget(state().descriptors, descriptor);
    // A close that fails has still closed.
    const Fate fate = fateOf("close", path);
    int result = real(descriptor);
    if (fate.error != 0) {
        result = -1;
        errno = fate.error;
    }
    record(fate, "close", path, "", result, result < 0 ? errno : 0);
    return result;
}

int ftruncate(int descriptor, off_t length)
{
    REAL(ftruncate);
    return static_cast<int>(guarded("ftruncate", pathOf(descriptor), number(length),
        [&](const Fate&) { return real(descriptor, length); }));
}

int ftruncate64(int descriptor, off64_t length)
{
    REAL(ftruncate64);
    return static_cast<int>(guarded("ftruncate", pathOf(descriptor), number(length),
        [&](const Fate&) { return real(descriptor, length); }));
}

int posix_fadvise(int descriptor, off_t offset, off_t length, int advice)
{
    REAL(posix_fadvise);
    return guardedPosix("posix_fadvise", pathOf(descriptor), number(offset) + number(length) + number(advice),
        [&](const Fate&) { return real(descriptor, offset, length, advice); });
}

int posix_fadvise64(int descriptor, off64_t offset, off64_t length, int advice)
{
    REAL(posix_fadvise64);
    return guardedPosix("posix_fadvise", pathOf(descriptor), number(offset) + number(length) + number(advice),
        [&](const Fate&) { return real(descriptor, offset, length, advice); });
}

int posix_fallocate(int descriptor, off_t offset, off_t length)
{
    REAL(posix_fallocate);
    return guardedPosix("posix_fallocate", pathOf(descriptor), number(offset) + number(length),
        [&](const Fate&) { return real(descriptor, offset, length); });
}

int posix_fallocate64(int descriptor, off64_t offset, off64_t length)
{
    REAL(posix_fallocate64);
    return guardedPosix("posix_fallocate", pathOf(descriptor), number(offset) + number(length),
        [&](const Fate&) { return real(descriptor, offset, length); });
}

int fchown(int descriptor, uid_t owner, gid_t group)
{
    REAL(fchown);
    return static_cast<int>(guarded("fchown", pathOf(descriptor), number(owner) + number(group),
        [&](const Fate&) { return real(descriptor, owner, group); }));
}

int fchmod(int descriptor, mode_t mode)
{
    REAL(fchmod);
    return static_cast<int>(guarded(
        "fchmod", pathOf(descriptor), octal(mode), [&](const Fate&) { return real(descriptor, mode); }));
}

int rename(const char* from, const char* to)
{
    REAL(rename);
    return static_cast<int>(
        guarded("rename", to, std::string(" <- ") + from, [&](const Fate&) { return real(from, to); }));
}

int remove(const char* path)
{
    REAL(remove);
    return static_cast<int>(guarded("remove", path, "", [&](const Fate&) { return real(path); }));
}

int mkdir(const char* path, mode_t mode)
{
    // A sanitizer makes the folder of its reports by this before anything else is ready, memory included.
    if (!active) {
        return static_cast<int>(::syscall(SYS_mkdirat, AT_FDCWD, path, mode));
    }
    REAL(mkdir);
    return static_cast<int>(
        guarded("mkdir", path, octal(mode), [&](const Fate&) { return real(path, mode); }));
}

int inotify_add_watch(int descriptor, const char* path, uint32_t mask)
{
    REAL(inotify_add_watch);
    return static_cast<int>(
        guarded("inotify_add_watch", path, "", [&](const Fate&) { return real(descriptor, path, mask); }));
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*), void* argument)
{
    if (refusesThreads) {
        return EAGAIN;
    }
    REAL(pthread_create);
    return real(thread, attributes, run, argument);
}

ssize_t readlink(const char* path, char* buffer, size_t length)
{
    REAL(readlink);
    return guarded("readlink", path, number(static_cast<long>(length)),
        [&](const Fate&) { return real(path, buffer, length); });
}

int symlink(const char* target, const char* path)
{
    REAL(symlink);
    return static_cast<int>(guarded(
        "symlink", path, std::string(" -> ") + target, [&](const Fate&) { return real(target, path); }));
}

DIR* opendir(const char* path)
{
    REAL(opendir);
    const Fate fate = fateOf("opendir", path);
    DIR* folder = nullptr;
    if (fate.error != 0) {
        errno = fate.error;
    } else {
        folder = real(path);
    }
    const int error = errno;
    if (folder != nullptr) {
        remember(state().folders, folder, path);
    }
    errno = error;
    record(fate, "opendir", path, "", folder == nullptr ? -1 : 0, folder == nullptr ? error : 0);
    return folder;
}

struct dirent* readdir(DIR* folder)
{
    REAL(readdir);
    const std::string path = pathOf(folder);
    const Fate fate = fateOf("readdir", path);
    if (fate.error != 0) {
        errno = fate.error;
    }
    struct dirent* entry = fate.error != 0 ? nullptr : real(folder);
    record(fate, "readdir", path, entry == nullptr ? "" : std::string(" ") + entry->d_name,
        entry == nullptr ? 0 : 1, fate.error);
    return entry;
}

struct dirent64* readdir64(DIR* folder)
{
    REAL(readdir64);
    const std::string path = pathOf(folder);
    const Fate fate = fateOf("readdir", path);
    if (fate.error != 0) {
        errno = fate.error;
    }
    struct dirent64* entry = fate.error != 0 ? nullptr : real(folder);
    record(fate, "readdir", path, entry == nullptr ? "" : std::string(" ") + entry->d_name,
        entry == nullptr ? 0 : 1, fate.error);
    return entry;
}

int closedir(DIR* folder)
{
    REAL(closedir);
    const std::string path = pathOf(folder);
    forget(state().folders, folder);
    const Fate fate = fateOf("closedir", path);
    const int result = real(folder);
    record(fate, "closedir", path, "", result, result < 0 ? errno : 0);
    return result;
}
}
