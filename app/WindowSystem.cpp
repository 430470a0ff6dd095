#include "app/WindowSystem.h"

#include <QApplication>
#include <QCursor>
#include <QPoint>
#include <QWidget>

namespace {

bool isWayland()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

void moveCursor(const QPoint& offset)
{
    if (!isWayland()) {
        QCursor::setPos(QCursor::pos() + offset);
    }
}

void askForKeyboard(QWidget* window)
{
    if (!isWayland()) {
        window->activateWindow();
    }
}

void noteKeyboard(QWidget* window)
{
    if (!isWayland() || QGuiApplication::focusWindow() == window->windowHandle()) {
        QApplication::setActiveWindow(window);
    }
}
