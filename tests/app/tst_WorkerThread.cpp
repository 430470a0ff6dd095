#include "app/WorkerThread.h"

#include "tests/support/NoThread.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QEvent>
#include <QSemaphore>
#include <QSignalSpy>

#include <atomic>
#include <memory>

/// A worker that does what the test lets it do.
class Worker : public QObject
{
    Q_OBJECT

public:
    ~Worker() override { ++freed; }

    static std::atomic<int> freed;
    QObject* dialog = nullptr;
    QSemaphore* until = nullptr; ///< waits for it
    int questions = 0;
    bool silent = false; ///< never emits finished()
    std::atomic<int>* asked = nullptr;
    QThread** ranOn = nullptr;

public slots:
    void StartWork()
    {
        if (ranOn != nullptr) {
            *ranOn = QThread::currentThread();
        }
        if (until != nullptr) {
            until->acquire();
        }
        if (questions > 0) {
            connect(this, SIGNAL(question()), dialog, SLOT(question()), Qt::BlockingQueuedConnection);
        }
        for (int i = 0; i < questions; ++i) {
            ++*asked;
            emit question();
        }
        if (!silent) {
            emit finished();
        }
    }

signals:
    void finished();
    void question();
};

std::atomic<int> Worker::freed{0};

class Dialog : public QDialog
{
    Q_OBJECT

public:
    int ended = 0;
    int answered = 0;

public slots:
    void isfinished()
    {
        QCOMPARE(QThread::currentThread(), thread());
        ++ended;
    }
    void question() { ++answered; }
};

/// An event like that of a question, which tells when it goes.
class Taken : public QEvent
{
public:
    explicit Taken(QSemaphore& taken)
        : QEvent(QEvent::MetaCall)
        , m_taken(taken)
    {
    }
    ~Taken() override { m_taken.release(); }
    Q_DISABLE_COPY_MOVE(Taken)

private:
    QSemaphore& m_taken;
};

class TestWorkerThread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_threads = threadCount(); }
    void init() { Worker::freed = 0; }
    void runsOnAnotherThreadAndTellsTheDialog();
    void threadStaysUntilItIsStopped();
    void endsWithoutFinishedHavingBeenSeen();
    void freesAWorkerThatIsSilent();
    void stopWaitsForTheWorker();
    void stopPassesOverQuestions();
    void stopTwice();
    void stopBeforeTheWorkerBegan();
    void noThreadToBeHad();
    void stopBeforeItIsToldThatThereIsNoThread();
    void hundredRoundsLeaveNothing();

private:
    int m_threads = 0;
};

void TestWorkerThread::runsOnAnotherThreadAndTellsTheDialog()
{
    Dialog dialog;
    auto* worker = new Worker;
    QThread* ranOn = nullptr;
    worker->ranOn = &ranOn;
    WorkerThread thread(worker, &dialog);
    QTRY_COMPARE(dialog.ended, 1);
    QVERIFY(ranOn != nullptr);
    QVERIFY(ranOn != QThread::currentThread());
    QCOMPARE(ranOn->parent(), nullptr);
    QCOMPARE(ranOn->priority(), QThread::InheritPriority);
}

void TestWorkerThread::threadStaysUntilItIsStopped()
{
    Dialog dialog;
    auto thread = std::make_unique<WorkerThread>(new Worker, &dialog);
    QTRY_COMPARE(dialog.ended, 1);
    QTRY_COMPARE(Worker::freed, 1);
    QTRY_COMPARE(threadCount(), m_threads + 1);
    thread.reset();
    QTRY_COMPARE(threadCount(), m_threads);
}

void TestWorkerThread::endsWithoutFinishedHavingBeenSeen()
{
    Dialog dialog;
    WorkerThread(new Worker, &dialog).stop();
    QCOMPARE(Worker::freed, 1);
    QTRY_COMPARE(threadCount(), m_threads);
    QCoreApplication::processEvents();
    QCOMPARE(dialog.ended, 0);
}

void TestWorkerThread::freesAWorkerThatIsSilent()
{
    Dialog dialog;
    auto* worker = new Worker;
    worker->silent = true;
    {
        const WorkerThread thread(worker, &dialog);
        QCOMPARE(Worker::freed, 0);
    }
    QCOMPARE(Worker::freed, 1);
}

void TestWorkerThread::stopWaitsForTheWorker()
{
    Dialog dialog;
    QSemaphore until;
    auto* worker = new Worker;
    worker->until = &until;
    WorkerThread thread(worker, &dialog);
    // Each round of the wait takes the dialog's events away: with the second one it has waited in vain once.
    std::unique_ptr<QThread> releaser(QThread::create([&] {
        QSemaphore taken;
        for (int round = 0; round < 2; ++round) {
            QCoreApplication::postEvent(&dialog, new Taken(taken));
            taken.acquire();
        }
        until.release();
    }));
    releaser->start();
    thread.stop();
    releaser->wait();
    QCOMPARE(Worker::freed, 1);
}

void TestWorkerThread::stopPassesOverQuestions()
{
    Dialog dialog;
    std::atomic<int> asked{0};
    auto* worker = new Worker;
    worker->dialog = &dialog;
    worker->questions = 3;
    worker->asked = &asked;
    WorkerThread thread(worker, &dialog);
    // The first question waits already, the others come while the stop waits.
    QElapsedTimer clock;
    clock.start();
    while (asked == 0 && clock.elapsed() < 5000) {
        QThread::yieldCurrentThread();
    }
    thread.stop();
    QCOMPARE(asked, 3);
    QCOMPARE(dialog.answered, 0);
    QCOMPARE(Worker::freed, 1);
}

void TestWorkerThread::stopTwice()
{
    Dialog dialog;
    WorkerThread thread(new Worker, &dialog);
    thread.stop();
    thread.stop();
    QCOMPARE(Worker::freed, 1);
}

void TestWorkerThread::stopBeforeTheWorkerBegan()
{
    for (int i = 0; i < 200; ++i) {
        Dialog dialog;
        const WorkerThread thread(new Worker, &dialog);
    }
    QCOMPARE(Worker::freed, 200);
}

void TestWorkerThread::noThreadToBeHad()
{
    const TestDir dir;
    NoThread noThread(dir.path());
    {
        Dialog dialog;
        const WorkerThread thread(new Worker, &dialog);
        QVERIFY(!thread.hasStarted());
        noThread.run(&dialog, [&dialog] { QCOMPARE(dialog.ended, 0); });
        QCOMPARE(dialog.ended, 1);
    }
    QCOMPARE(Worker::freed, 1);
}

void TestWorkerThread::stopBeforeItIsToldThatThereIsNoThread()
{
    const TestDir dir;
    const NoThread noThread(dir.path());
    Dialog dialog;
    dialog.show();
    WorkerThread(new Worker, &dialog).stop();
    QCoreApplication::processEvents();
    QCOMPARE(dialog.ended, 0);
    QVERIFY(dialog.isVisible());
    QCOMPARE(Worker::freed, 1);
}

void TestWorkerThread::hundredRoundsLeaveNothing()
{
    const int descriptors = descriptorCount();
    for (int i = 0; i < 100; ++i) {
        Dialog dialog;
        const WorkerThread thread(new Worker, &dialog);
        while (dialog.ended == 0) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    QTRY_COMPARE(threadCount(), m_threads);
    QTRY_COMPARE(descriptorCount(), descriptors);
    QCOMPARE(Worker::freed, 100);
}

VANTREL_TEST_MAIN(TestWorkerThread)
#include "tst_WorkerThread.moc"
