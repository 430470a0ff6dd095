#pragma once

#include <QObject>
#include <QPointer>
#include <QThread>

#include <atomic>

class QDialog;

/// A worker object at work on a thread of its own, for as long as its dialog lives. Used on the GUI thread.
///
/// The worker has a slot StartWork(), which is the whole work, and a signal finished(), which is its last
/// word. The dialog has a slot isfinished(). After finished() the worker frees itself, while the thread's
/// event loop stays until stop() or the destructor ends it.
///
/// The dialog owns this object and declares it after every field that the worker touches, so that it goes
/// first: once it is gone, nothing reads or writes the dialog from another thread.
class WorkerThread
{
public:
    /// Moves the worker to a new thread, connects the three and starts the thread.
    /// @param worker the worker, without parent; this object owns it from here on
    /// @param dialog the receiver of isfinished(), not owned. If the system grants no thread, the event loop
    ///        first of all tells the user so in a box, calls isfinished() and closes the dialog; of a dialog
    ///        that is closed by then nothing is told
    WorkerThread(QObject* worker, QDialog* dialog);
    ~WorkerThread();
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    /// Ends the thread's event loop, waits for the thread and frees thread and worker. Harmless when
    /// repeated. The caller has told the worker to end before. Questions that the worker is waiting with
    /// meanwhile, or still asks, in a blocking connection to the dialog are passed over: the emit returns and
    /// no slot runs. Never to be called from within the slot of such a question.
    void stop();

    /// @return whether the system has granted a thread
    bool hasStarted() const { return m_started; }

private:
    class Thread;

    std::atomic<bool> m_ended{false}; ///< set by the thread when its event loop has ended
    QPointer<QThread> m_thread;
    QPointer<QObject> m_worker;
    QDialog* m_dialog;
    bool m_started;
};
