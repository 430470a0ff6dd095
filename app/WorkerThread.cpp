#include "app/WorkerThread.h"

#include "app/MessageBoxes.h"

#include <QCoreApplication>
#include <QDialog>
#include <QEvent>

namespace {

// Room for a walk down the deepest path that the system takes, whatever limit the user's shell sets.
constexpr uint stackBytes = 16U * 1024U * 1024U;

constexpr unsigned long waitSliceMs = 5;

/// Tells that a dialog has no worker, and ends it as one whose worker has finished.
void endWithoutThread(QDialog* dialog)
{
    const QPointer<QDialog> stands(dialog);
    if (dialog->isVisible()) {
        criticalBox(dialog, QStringLiteral("Error"),
            QStringLiteral("Failed to start the operation:\n"
                           "The system has too many tasks or too little memory."));
    }
    if (stands) {
        QMetaObject::invokeMethod(dialog, "isfinished");
        dialog->close();
    }
}

} // namespace

/// A thread that tells when its event loop has ended.
class WorkerThread::Thread : public QThread
{
public:
    explicit Thread(std::atomic<bool>& ended)
        : m_ended(ended)
    {
    }

protected:
    void run() override
    {
        exec();
        m_ended.store(true, std::memory_order_release);
    }

private:
    std::atomic<bool>& m_ended;
};

WorkerThread::WorkerThread(QObject* worker, QDialog* dialog)
    : m_thread(new Thread(m_ended))
    , m_worker(worker)
    , m_dialog(dialog)
{
    m_thread->setStackSize(stackBytes);
    worker->moveToThread(m_thread);
    QObject::connect(m_thread, SIGNAL(started()), worker, SLOT(StartWork()));
    QObject::connect(worker, SIGNAL(finished()), dialog, SLOT(isfinished()));
    QObject::connect(worker, SIGNAL(finished()), worker, SLOT(deleteLater()));
    QObject::connect(m_thread, SIGNAL(finished()), m_thread, SLOT(deleteLater()));
    m_thread->start(QThread::InheritPriority);
    m_started = m_thread->isRunning();
    if (!m_started) {
        QMetaObject::invokeMethod(
            dialog, [dialog] { endWithoutThread(dialog); }, Qt::QueuedConnection);
    }
}

WorkerThread::~WorkerThread()
{
    stop();
}

void WorkerThread::stop()
{
    if (m_thread.isNull()) {
        return;
    }
    m_thread->quit();
    do {
        // An event that is removed lets the emit return that waits for it. The worker may ask again.
        QCoreApplication::removePostedEvents(m_dialog, QEvent::MetaCall);
    } while (!m_thread->wait(waitSliceMs));

    // The wait orders the threads already; this says so to tools that cannot look into the library.
    static_cast<void>(m_ended.load(std::memory_order_acquire));

    // Nothing that was said last reaches a dialog that is about to go.
    QCoreApplication::removePostedEvents(m_dialog, QEvent::MetaCall);

    // The worker went with its thread unless its finished() was never emitted.
    delete m_worker.data();
    delete m_thread.data();
}
