#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <list>

/// Watches the file calls below a folder, and lets them fail, for as long as it lives. Needs the fault shim
/// in the process: its test is listed for that in tests/CMakeLists.txt. One at a time.
class FaultShim
{
public:
    /// Calls from @p first on, to the end.
    static constexpr int always = -1;

    /// @param folder absolute path; paths below are relative to it
    /// @param alsoThisThread whether the thread that makes it is watched too, not the others alone
    explicit FaultShim(const QString& folder, bool alsoThisThread = false);
    ~FaultShim();
    FaultShim(const FaultShim&) = delete;
    FaultShim& operator=(const FaultShim&) = delete;

    /// Lets calls of a function on a path fail, the @p first th from now on and @p times in all.
    /// @param path relative, or "*" for any
    FaultShim& fail(const char* function, const QString& path, int error, int first = 1, int times = 1);
    /// Lets reads or writes move at most that many bytes.
    FaultShim& shorten(
        const char* function, const QString& path, long bytes, int first = 1, int times = always);
    /// Lets calls begin later.
    FaultShim& delay(const char* function, const QString& path, long ms, int first = 1, int times = always);
    /// Adds what lstat() found to the recorded calls: " file", " folder" or " link", and the size.
    FaultShim& tellKinds();
    /// Grants no new thread to anybody.
    FaultShim& refuseThreads();
    /// Runs @p what before a call, on the thread that makes it.
    FaultShim& before(const char* function, const QString& path, int first, std::function<void()> what);

    /// @return the calls so far, as "function path args = result errno" with relative paths; "." is the
    /// folder
    QStringList calls() const;
    /// @return function and path of the calls so far, without readdir and closedir unless asked for
    QStringList shortCalls(bool withListing = false) const;
    /// @return how often a function was called on a path
    int count(const char* function, const QString& path) const;

private:
    QByteArray full(const QString& path) const;

    QString m_folder;
    std::list<std::function<void()>> m_hooks;
};
