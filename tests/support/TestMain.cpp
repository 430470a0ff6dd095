#include "tests/support/TestMain.h"

#include <QTemporaryDir>

#include <clocale>
#include <ctime>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

void prepareTestProcess()
{
    static const QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
        qunsetenv(name);
    }
    qputenv("XDG_RUNTIME_DIR", home.path().toLocal8Bit());
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("TZ", "UTC");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    static_cast<void>(std::setlocale(LC_ALL, "C.UTF-8"));
    tzset();
}

void lookForLeaks()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
#if defined(__SANITIZE_ADDRESS__)
    __lsan_do_leak_check();
#endif
}
