#include "tests/support/Listening.h"

#if __has_include(<qpa/qplatformaccessibility.h>)

#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

bool setListening(bool on)
{
    QGuiApplicationPrivate::platformIntegration()->accessibility()->setActive(on);
    return true;
}

#else

bool setListening(bool /*on*/)
{
    return false;
}

#endif
