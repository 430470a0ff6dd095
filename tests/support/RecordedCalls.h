#pragma once

#include <QString>
#include <QStringList>

#include <stdexcept>

/// The file calls that FaultShim recorded of an operation, with relative paths and kinds, taken one by one in
/// their order.
class RecordedCalls
{
public:
    /// Before a call, the operation is told to stop.
    struct StopBefore
    {
        QString function;
        QString path; ///< relative
        int number = 0; ///< 0 for never
    };

    struct Call
    {
        QString function;
        QString path;
        QStringList rest;
        qint64 result = -1;
        int error = 0;
        bool failed() const { return result < 0; }
    };

    /// The calls are not those of the operation.
    class Wrong : public std::runtime_error
    {
    public:
        explicit Wrong(const QString& text);
    };

    enum class Stat { Missing, File, Folder, Link };

    /// @param base the watched folder, to which the paths of the calls are relative
    RecordedCalls(const QString& base, const QStringList& calls);

    /// Sets abort at a call.
    void stopBefore(const StopBefore& stop) { m_stop = stop; }

    /// @return the next call, which has to be this one
    /// @param path absolute
    /// @throws Wrong where it is another one, or none
    Call take(const char* function, const QString& path);
    /// Takes an lstat(), and notes in m_lastSize or m_lastError what it found.
    Stat look(const QString& path);
    /// Takes the readdir() calls up to the next entry but "." and "..".
    /// @return its name; empty at the end and, with m_stopped set, where the stop is seen: it is looked for
    ///         only with an entry at hand
    QString nextName(const QString& folder);

    /// @return the call that take() would take; null where none is left
    QString next() const { return m_calls.value(m_at); }
    QString relative(const QString& path) const;
    /// @return whether calls on that path are recorded
    bool isWatched(const QString& path) const;

    int abort = 0; ///< the operation was told to stop

protected:
    bool m_stopped = false; ///< the listing ended early because of abort
    int m_lastError = 0; ///< of the look() that failed last
    qint64 m_lastSize = 0; ///< that the look() before found

private:
    QString m_base;
    QStringList m_calls;
    int m_at = 0;
    StopBefore m_stop;
    int m_stopSeen = 0;
};
