#pragma once

#include "app/aGlobal.h"
#include "app/aVantrel.h"
#include "tests/support/TestDir.h"

#include <QApplication>
#include <QByteArray>
#include <QEvent>
#include <QList>
#include <QTimer>

#include <functional>
#include <vector>

// Runs the program as a whole, in this process and again and again. The test brings the program's entry point
// itself, under this name, and has atStart() called by Q_COREAPP_STARTUP_FUNCTION.
int vantrelMain(int argc, char** argv);

/// What the running test wants to be done: while the application object is made, and in its event loop.
inline std::function<void()> whileMade;
inline std::function<void()> inLoop;

inline void atStart()
{
    if (whileMade) {
        whileMade();
    }
    if (inLoop) {
        QTimer::singleShot(0, qApp, [] { inLoop(); });
    }
    // Ends a run that hangs, with a code that no test expects.
    QTimer::singleShot(180000, qApp, [] { QCoreApplication::exit(99); });
}

/// Looks once the main window is there: a box before it has an event loop of its own.
inline void lookOnce(const std::function<void()>& look)
{
    if (gwMainframe == nullptr) {
        QTimer::singleShot(1, qApp, [look] { lookOnce(look); });
        return;
    }
    look();
    gwMainframe->close();
}

/// Runs the program with @p home as home folder, until something in inLoop ends it.
/// @return its exit code
inline int start(const TestDir& home, const QList<QByteArray>& options = {})
{
    qputenv("HOME", home.path().toLocal8Bit());
    QList<QByteArray> texts = QList<QByteArray>{"vantrel"} + options;
    std::vector<char*> arguments;
    for (QByteArray& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    return vantrelMain(texts.size(), arguments.data());
}

/// Runs the program with @p home as home folder, until its main window was looked at by @p look and closed.
/// @return its exit code
inline int run(const TestDir& home, const std::function<void()>& look, const QList<QByteArray>& options = {})
{
    inLoop = [look] { lookOnce(look); };
    return start(home, options);
}

/// Notes a variable's value at the time when the first window of the program is made.
class AtFirstWindow : public QObject
{
public:
    explicit AtFirstWindow(const char* variable)
        : m_variable(variable)
    {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::PlatformSurface && !m_seen) {
            m_seen = true;
            value = qgetenv(m_variable);
        }
        return QObject::eventFilter(object, event);
    }

    QByteArray value;

private:
    const char* m_variable;
    bool m_seen = false;
};
