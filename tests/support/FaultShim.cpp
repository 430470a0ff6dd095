#include "tests/support/FaultShim.h"

#include "tests/support/faultshim/faultshim.h"

#include <QFile>

#include <dlfcn.h>

namespace {

template <typename Function>
Function shimCall(Function /*declared*/, const char* name)
{
    void* const found = ::dlsym(RTLD_DEFAULT, name);
    if (found == nullptr) {
        qFatal("this test is not linked to the fault shim");
    }
    return reinterpret_cast<Function>(found);
}

#define SHIM(name) shimCall(static_cast<decltype(&::name)>(nullptr), #name)

void run(void* hook)
{
    (*static_cast<std::function<void()>*>(hook))();
}

} // namespace

FaultShim::FaultShim(const QString& folder, bool alsoThisThread)
    : m_folder(folder)
{
    SHIM(faultshim_watch)(QFile::encodeName(folder).constData());
    SHIM(faultshim_spare_this_thread)(!alsoThisThread);
}

FaultShim::~FaultShim()
{
    SHIM(faultshim_watch)(nullptr);
    SHIM(faultshim_spare_this_thread)(false);
}

FaultShim& FaultShim::fail(const char* function, const QString& path, int error, int first, int times)
{
    SHIM(faultshim_fail)(function, full(path).constData(), first, times, error);
    return *this;
}

FaultShim& FaultShim::shorten(const char* function, const QString& path, long bytes, int first, int times)
{
    SHIM(faultshim_shorten)(function, full(path).constData(), first, times, bytes);
    return *this;
}

FaultShim& FaultShim::delay(const char* function, const QString& path, long ms, int first, int times)
{
    SHIM(faultshim_delay)(function, full(path).constData(), first, times, ms);
    return *this;
}

FaultShim& FaultShim::tellKinds()
{
    SHIM(faultshim_tell_kinds)(true);
    return *this;
}

FaultShim& FaultShim::refuseThreads()
{
    SHIM(faultshim_refuse_threads)(true);
    return *this;
}

FaultShim& FaultShim::before(const char* function, const QString& path, int first, std::function<void()> what)
{
    m_hooks.push_back(std::move(what));
    SHIM(faultshim_hook)(function, full(path).constData(), first, run, &m_hooks.back());
    return *this;
}

QStringList FaultShim::calls() const
{
    QString all = QString::fromUtf8(SHIM(faultshim_calls)());
    all.replace(m_folder + QLatin1Char('/'), QString());
    all.replace(m_folder, QStringLiteral("."));
    return all.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList FaultShim::shortCalls(bool withListing) const
{
    QStringList found;
    const QStringList all = calls();
    for (const QString& call : all) {
        const QString function = call.section(QLatin1Char(' '), 0, 0);
        if (withListing || (function != QLatin1String("readdir") && function != QLatin1String("closedir"))) {
            found.append(call.section(QLatin1Char(' '), 0, 1));
        }
    }
    return found;
}

int FaultShim::count(const char* function, const QString& path) const
{
    return static_cast<int>(shortCalls(true).count(QLatin1String(function) + QLatin1Char(' ') + path));
}

QByteArray FaultShim::full(const QString& path) const
{
    if (path == QLatin1String("*")) {
        return "*";
    }
    if (path == QLatin1String(".")) {
        return QFile::encodeName(m_folder);
    }
    return QFile::encodeName(m_folder == QLatin1String("/") ? '/' + path : m_folder + '/' + path);
}
