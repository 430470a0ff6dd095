#include "tests/support/Keyboard.h"

#include <QGuiApplication>
#include <QTest>
#include <qpa/qwindowsysteminterface.h>

void giveKeyboard(QWindow* window)
{
    QWindowSystemInterface::handleWindowActivated<QWindowSystemInterface::SynchronousDelivery>(window);
    QCOMPARE(QGuiApplication::focusWindow(), window);
}
