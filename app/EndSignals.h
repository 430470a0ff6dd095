#pragma once

#include <QObject>

#include <csignal>
#include <vector>

class QSocketNotifier;

/// What signals do to the program, for as long as this lives: those by which a user, a shell or the end of
/// the session asks it to end make it quit in good order, as if by QCoreApplication::quit(), and those that
/// only tell of a failed write do nothing, so that the write can be reported. Signals that are ignored
/// already, as after nohup, stay so. The session's last word, which comes as an event, does what a signal
/// does: the application would ask all windows to close, and stay if one of them does not. Programs that are
/// launched meanwhile begin with the signals as they were before: handlers, other than ignored signals, are
/// not inherited.
///
/// Made and destroyed on the GUI thread, once the application object is there. One at a time.
class EndSignals : public QObject
{
    Q_OBJECT

public:
    EndSignals();
    ~EndSignals() override;

    /// @return whether a signal, or the session, has asked for the end. A request that comes before the
    /// application's event
    ///         loop has begun must be looked for here, as the loop knows nothing of it
    bool haveCome() const { return m_haveCome; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void readSignals();

private:
    struct Before
    {
        int signal;
        struct sigaction action;
    };

    bool handle(int signal, void (*handler)(int));
    void quitNow();

    int m_readEnd = -1;
    QSocketNotifier* m_notifier = nullptr; ///< deleted before its descriptor is closed
    std::vector<Before> m_before; ///< what the destructor puts back
    bool m_haveCome = false;
};
