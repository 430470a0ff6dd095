#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

class QWindow;

/// Knows whether the keyboard is the program's, from the time on when the watch is made. It is with another
/// program once a window lost it that is still there: the user has gone there. A window that closes loses it
/// as well, but then the window manager is about to give it to another one of the program's, or leaves it to
/// nobody. Window thread only.
class KeyboardWatch : public QObject
{
    Q_OBJECT

public:
    KeyboardWatch();

    /// @return whether a window of the program has the keyboard, or had it until it closed, a moment ago
    bool isOurs() const;

private slots:
    void changeHolder(QWindow* window);
    void noteVisible(bool visible);

private:
    void follow(QWindow* window);

    QPointer<QWindow> m_holder; ///< has the keyboard, or had it last
    bool m_isWithOther = false; ///< with another program
    QElapsedTimer m_sinceClosed; ///< runs from the end of m_holder on
};
