#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QMetaEnum>
#include <QSet>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <functional>

/// Application that knows for how long its event loop was away. A timer of 1 ms beats while settle() runs;
/// the largest distance between two beats is the time in which no click or key would have been answered. The
/// event that took longest is remembered by receiver and type, together with what note() told of it.
class LoopWatch : public QApplication
{
public:
    /// Figures of what happened between start() and the end of settle().
    struct Figures
    {
        double seconds = 0; ///< from start() to the end of the last event that did anything
        double gapMs = 0; ///< largest distance between two beats
        QByteArray longestEvent; ///< "receiver type (notes) ms"
        bool timedOut = false;
    };

    LoopWatch(int& argc, char** argv)
        : QApplication(argc, argv)
    {
        m_beat.setTimerType(Qt::PreciseTimer);
        m_beat.setInterval(1);
        QObject::connect(&m_beat, &QTimer::timeout, this, [this]() { beat(); });
    }

    /// Starts the clock. The call that is measured comes next, then callReturned(), then settle().
    void start()
    {
        m_figures = Figures();
        m_notes.clear();
        m_painted.clear();
        m_lastBeatNs = m_lastEventEndNs = m_longestNs = 0;
        m_clock.start();
    }

    /// The measured call is over; it counts as one event.
    void callReturned() { eventEnded(0, QByteArrayLiteral("the call")); }

    /// Runs the event loop until @p ready holds and nothing but the beat has run for 100 ms.
    Figures settle(const std::function<bool()>& ready)
    {
        QEventLoop loop;
        m_loop = &loop;
        m_ready = ready;
        m_beat.start();
        loop.exec();
        m_beat.stop();
        m_loop = nullptr;
        return m_figures;
    }

    /// Tells what happens in the running event.
    void note(const QByteArray& text) { m_notes += (m_notes.isEmpty() ? "" : ", ") + text; }

    /// @return nanoseconds since start()
    qint64 now() const { return m_clock.nsecsElapsed(); }

    /// @return whether @p widget was painted since start()
    bool isPainted(const QWidget* widget) const { return m_painted.contains(widget); }

    bool notify(QObject* receiver, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            m_painted.insert(receiver);
        }
        if (m_inEvent || m_loop == nullptr || receiver == &m_beat) {
            return QApplication::notify(receiver, event);
        }
        const qint64 from = now();
        const char* key = QMetaEnum::fromType<QEvent::Type>().valueToKey(event->type());
        const QByteArray what = QByteArray(receiver->metaObject()->className()) + ' ' + key;
        m_notes.clear();
        m_inEvent = true;
        const bool result = QApplication::notify(receiver, event);
        m_inEvent = false;
        eventEnded(from, what);
        return result;
    }

private:
    static constexpr qint64 quietNs = 100'000'000;
    static constexpr qint64 timeoutNs = 150'000'000'000;

    void eventEnded(qint64 from, const QByteArray& what)
    {
        m_lastEventEndNs = now();
        const qint64 took = m_lastEventEndNs - from;
        const QByteArray text = what + " (" + m_notes + ") "
            + QByteArray::number(static_cast<double>(took) / 1e6, 'f', 0) + " ms";
        if (took > 5'000'000 && qEnvironmentVariableIsSet("BENCH_EVENTS")) {
            fprintf(stderr, "%8.1f ms: %s\n", static_cast<double>(from) / 1e6, text.constData());
        }
        if (took > m_longestNs) {
            m_longestNs = took;
            m_figures.longestEvent = text;
        }
    }

    void beat()
    {
        const qint64 ns = now();
        m_figures.gapMs = qMax(m_figures.gapMs, static_cast<double>(ns - m_lastBeatNs) / 1e6);
        m_lastBeatNs = ns;
        m_figures.timedOut = ns > timeoutNs;
        if (m_figures.timedOut || (ns - m_lastEventEndNs > quietNs && m_ready())) {
            m_figures.seconds = static_cast<double>(m_lastEventEndNs) / 1e9;
            m_loop->quit();
        }
    }

    QElapsedTimer m_clock;
    QTimer m_beat;
    QEventLoop* m_loop = nullptr;
    std::function<bool()> m_ready;
    Figures m_figures;
    QByteArray m_notes;
    QSet<const QObject*> m_painted;
    qint64 m_lastBeatNs = 0;
    qint64 m_lastEventEndNs = 0;
    qint64 m_longestNs = 0;
    bool m_inEvent = false;
};
