#include "app/KeyboardWatch.h"

#include <QGuiApplication>
#include <QWindow>

namespace {

/// How long a window manager may take to give the keyboard to a window, in milliseconds.
constexpr qint64 momentMs = 1000;

} // namespace

KeyboardWatch::KeyboardWatch()
{
    connect(qApp, SIGNAL(focusWindowChanged(QWindow*)), this, SLOT(changeHolder(QWindow*)));
    follow(QGuiApplication::focusWindow());
}

bool KeyboardWatch::isOurs() const
{
    return !m_isWithOther && (!m_sinceClosed.isValid() || m_sinceClosed.elapsed() < momentMs);
}

void KeyboardWatch::changeHolder(QWindow* window)
{
    if (window != nullptr) {
        follow(window);
    } else {
        m_isWithOther = m_isWithOther || !m_sinceClosed.isValid();
    }
}

void KeyboardWatch::follow(QWindow* window)
{
    if (m_holder != nullptr) {
        disconnect(m_holder, nullptr, this, nullptr);
    }
    m_holder = window;
    m_isWithOther = false;
    m_sinceClosed.invalidate();
    if (window != nullptr) {
        connect(window, SIGNAL(visibleChanged(bool)), this, SLOT(noteVisible(bool)));
    }
    noteVisible(window != nullptr && window->isVisible());
}

void KeyboardWatch::noteVisible(bool visible)
{
    if (visible) {
        m_sinceClosed.invalidate();
    } else {
        m_sinceClosed.start();
    }
}
