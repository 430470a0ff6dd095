#pragma once

/// What the fault shim offers to the process that it is loaded into. The shim stands before the C library's
/// file calls: it records those on watched paths, runs hooks before them and lets them fail on request. All
/// of it is off until faultshim_watch() is called or the environment asks for it, and may be called from any
/// thread.
///
/// Calls without a path count for the path that their descriptor or folder was opened by; rename() and
/// symlink() count for the new name. The number of a call is counted for a rule from the moment the rule is
/// made, among the calls of that function on that path, from 1 on.
///
/// In a program that is not linked to it, LD_PRELOAD loads the shim and the environment controls it:
///   FAULTSHIM_WATCH  path below which calls are recorded and rules apply
///   FAULTSHIM_RULES  rules with ";" between them, each "function|path|first|times|errno number",
///                    "delay:function|path|first|times|ms" or "short:function|path|first|times|bytes"; the
///                    path may be "*" for any, times may be -1 for all calls from the first on
///   FAULTSHIM_LOG    file to which the recorded calls are appended, one a line

extern "C" {

/// Forgets rules and calls, and watches everything at and below @p prefix; null watches nothing.
void faultshim_watch(const char* prefix);

/// Leaves the calls of this thread alone from now on, or no longer.
void faultshim_spare_this_thread(bool spare);

/// Lets calls fail. @p error is errno afterwards, or the result of the posix_ functions.
/// @param path full path, or "*" for any watched path
/// @param first number of the first call that fails; @param times how many fail, -1 for all from then on
void faultshim_fail(const char* function, const char* path, int first, int times, int error);

/// Lets read() and write() move at most @p bytes, which write() reports as a short write.
void faultshim_shorten(const char* function, const char* path, int first, int times, long bytes);

/// Lets calls begin @p ms later.
void faultshim_delay(const char* function, const char* path, int first, int times, long ms);

/// Adds what lstat() found to its calls from now on, " file", " folder" or " link" and the size, until the
/// next faultshim_watch().
void faultshim_tell_kinds(bool tell);

/// Lets pthread_create() fail in the whole process from now on, as where there are too many threads, until
/// the next faultshim_watch().
void faultshim_refuse_threads(bool refuse);

/// Runs @p hook once, on the calling thread, before the call with that number. The hook may use files itself;
/// what it does is not recorded.
void faultshim_hook(const char* function, const char* path, int first, void (*hook)(void*), void* context);

/// Gives the calls recorded so far, each as "function path[ -> other][ args] = result[ errno]" and ended by
/// "\n". The text is valid until the next call of this function.
const char* faultshim_calls();
}
