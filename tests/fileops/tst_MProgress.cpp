#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FaultShim.h"
#include "tests/support/HeldDialog.h"
#include "tests/support/NoThread.h"
#include "tests/support/OperationRun.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QFile>
#include <QMetaMethod>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QSemaphore>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <cerrno>
#include <limits>
#include <memory>
#include <vector>

namespace {

/// Notes the longest time that the event loop did not come back, without the time in which this thread was
/// ready and other programs had the processor.
class GapMeter : public QObject
{
public:
    GapMeter()
    {
        m_figures.open(QIODevice::ReadOnly | QIODevice::Unbuffered); // some systems do not count that time
        m_waitedNs = waitedNs();
        m_clock.start();
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, [this] { note(); });
        m_timer.start(1);
    }
    qint64 longestMs = 0;

private:
    void note()
    {
        const qint64 waited = waitedNs();
        longestMs = qMax(longestMs, (m_clock.nsecsElapsed() - (waited - m_waitedNs)) / 1000000);
        m_waitedNs = waited;
        m_clock.restart();
    }
    qint64 waitedNs()
    {
        const bool counted = m_figures.isOpen() && m_figures.seek(0);
        return counted ? m_figures.read(100).split(' ').value(1).toLongLong() : 0;
    }

    QFile m_figures{"/proc/thread-self/schedstat"};
    qint64 m_waitedNs = 0;
    QElapsedTimer m_clock;
    QTimer m_timer;
};

} // namespace

/// The form of the dialog, its start and its many ends.
class TestMProgress : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    // Form and start.
    void form_data();
    void form();
    void dialog();
    void recordAtTheStart();
    void slotsInOrder();
    void isModalFromTheStart();

    // Life.
    void abortButton();
    void escapeAndTitleBarAbort();
    void closesWhenTheWorkerHasFinished();
    void freesItself();
    void execAfterTheEnd();
    void neverExecuted();
    void destroyedWithAQuestionPending();
    void goneAtTheSecondQuestion_data();
    void goneAtTheSecondQuestion();
    void onTheStack();
    void questionIsAboveTheDialog();
    void parentGone();
    void quitWhileAQuestionIsOpen_data();
    void quitWhileAQuestionIsOpen();
    void quitWhileItRuns();
    void noThreadToBeHad_data();
    void noThreadToBeHad();
    void quitWhereThereIsNoThread();
    void hundredOperations();
    void windowStaysLive();

private:
    int m_threads = 0;
};

void TestMProgress::initTestCase()
{
    QWidget window; // lets threads begin that stay, those of the platform
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    m_threads = threadCount();
}

void TestMProgress::form_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("initial");
    QTest::newRow("pushButton") << "pushButton" << QByteArray("QPushButton") << QRect(469, 200, 101, 32)
                                << "text"
                                << "&Abort";
    QTest::newRow("progressBar") << "progressBar" << QByteArray("QProgressBar") << QRect(30, 120, 541, 24)
                                 << "value"
                                 << "0";
    QTest::newRow("label_Operation") << "label_Operation" << QByteArray("QLabel") << QRect(30, 30, 541, 22)
                                     << "text"
                                     << ".";
    QTest::newRow("label_Path") << "label_Path" << QByteArray("QLabel") << QRect(30, 70, 541, 22) << "text"
                                << ".";
    QTest::newRow("label_Speed") << "label_Speed" << QByteArray("QLabel") << QRect(30, 150, 291, 22) << "text"
                                 << ".";
}

void TestMProgress::form()
{
    QFETCH(QString, name);
    QFETCH(QString, property);
    HeldDialog held(OpCopy);
    auto* widget = held.dialog->findChild<QWidget*>(name, Qt::FindDirectChildrenOnly);
    QVERIFY(widget != nullptr);
    QTEST(QByteArray(widget->metaObject()->className()), "type");
    QTEST(widget->geometry(), "geometry");
    QTEST(widget->property(property.toLatin1().constData()).toString(), "initial");
}

void TestMProgress::dialog()
{
    HeldDialog held(OpCopy);
    QCOMPARE(held.dialog->size(), QSize(600, 269));
    QCOMPARE(held.dialog->windowTitle(), QString("Vantrel"));
    QCOMPARE(held.dialog->layout(), nullptr);
    QVERIFY(!held.dialog->testAttribute(Qt::WA_DeleteOnClose));
    const auto* bar = held.dialog->findChild<QProgressBar*>("progressBar");
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 100);
}

void TestMProgress::recordAtTheStart()
{
    HeldDialog held(OpCopy);
    const MProgress& record = *held.dialog;
    QCOMPARE(record.panel, record.parentWidget());
    QCOMPARE(record.abort, 0);
    QCOMPARE(record.deleteAll, 0);
    QCOMPARE(record.ignoreAll, 0);
    QCOMPARE(record.fileCount, 0);
    QCOMPARE(record.folderCount, 0);
    QCOMPARE(record.total, 1);
    QCOMPARE(record.done, 0);
    QCOMPARE(record.pausedTime, 1);
}

void TestMProgress::slotsInOrder()
{
    const QMetaObject& meta = MProgress::staticMetaObject;
    QCOMPARE(meta.superClass(), &QDialog::staticMetaObject);
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        found.append(QString::fromLatin1(meta.method(i).methodSignature()));
    }
    QCOMPARE(found.mid(0, 4),
        (QStringList{
            "isfinished()", "on_pushButton_clicked()", "myQuestion(QString)", "myWarning(QString)"}));
}

void TestMProgress::isModalFromTheStart()
{
    QWidget other;
    other.show();
    HeldDialog held(OpCopy);
    QVERIFY(held.dialog->isVisible());
    QCOMPARE(held.dialog->windowModality(), Qt::ApplicationModal);
    QCOMPARE(QApplication::activeModalWidget(), held.dialog.data());
    bool clicked = false;
    QPushButton behind("behind");
    connect(&behind, &QPushButton::clicked, [&] { clicked = true; });
    behind.show();
    QTest::mouseClick(behind.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    QCoreApplication::processEvents();
    QVERIFY(!clicked);
}

void TestMProgress::abortButton()
{
    HeldDialog held(OpCopy);
    auto* button = held.dialog->findChild<QPushButton*>("pushButton");
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(held.dialog->abort, 1);
    QVERIFY(held.dialog->isVisible());
    QVERIFY(button->isEnabled());
    QCOMPARE(button->text(), QString("&Abort"));
    held.letGo();
    QTRY_VERIFY(!held.dialog->isVisible());
}

void TestMProgress::escapeAndTitleBarAbort()
{
    for (const bool escape : {true, false}) {
        HeldDialog held(OpCopy);
        if (escape) {
            QTest::keyClick(held.dialog.data(), Qt::Key_Escape);
        } else {
            QVERIFY(!held.dialog->close());
        }
        QCOMPARE(held.dialog->abort, 1);
        QVERIFY(held.dialog->isVisible());
        held.letGo();
        QTRY_VERIFY(!held.dialog->isVisible());
    }
}

void TestMProgress::closesWhenTheWorkerHasFinished()
{
    HeldDialog held(0);
    QTimer::singleShot(0, [&] {
        QVERIFY(held.dialog->isVisible());
        held.letGo();
    });
    held.dialog->exec();
    QVERIFY(!held.dialog->isVisible());
    QCOMPARE(held.dialog->abort, 0);
}

void TestMProgress::freesItself()
{
    HeldDialog held(0);
    held.letGo();
    held.dialog->exec();
    QVERIFY(!held.dialog.isNull()); // not before control is back in the event loop
    QTRY_VERIFY(held.dialog.isNull());
}

void TestMProgress::execAfterTheEnd()
{
    HeldDialog held(0);
    held.letGo();
    QTRY_VERIFY(!held.dialog->isVisible());
    held.dialog->exec(); // returns at once
    QVERIFY(!held.dialog->isVisible());
    QTRY_VERIFY(held.dialog.isNull());
}

void TestMProgress::neverExecuted()
{
    {
        HeldDialog held(OpCopy);
        held.letGo();
    }
    QTRY_COMPARE(threadCount(), m_threads);
}

void TestMProgress::destroyedWithAQuestionPending()
{
    TestDir dir;
    dir.files("item", 50);
    // Counting looks at 51 names and deleting at two more before it waits with its question, which no event
    // loop runs to show.
    for (int looks = 1; looks <= 53; looks += 4) {
        QSemaphore reached;
        FaultShim shim(dir.path());
        shim.before("lstat", "*", looks, [&] { reached.release(); });
        QWidget panel;
        gslDragList = QStringList{dir.path("item")};
        new MProgress(&panel, OpDelete); // goes with the panel
        QVERIFY(reached.tryAcquire(1, 60000));
    }
    QCOMPARE(dir.tree("item").size(), 50);
}

void TestMProgress::goneAtTheSecondQuestion_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("quits");
    for (const bool quits : {false, true}) {
        const char* const end = quits ? "the application quits" : "destroyed";
        QTest::addRow("delete, %s", end) << int(OpDelete) << "Yes" << quits;
        QTest::addRow("copy, %s", end) << int(OpCopy) << "Yes" << quits;
        QTest::addRow("move, %s", end) << int(OpMove) << "Retry" << quits;
    }
}

/// The worker waits with a question that nobody is there to answer. What was answered before does not count.
void TestMProgress::goneAtTheSecondQuestion()
{
    QFETCH(int, kind);
    QFETCH(QString, button);
    QFETCH(bool, quits);
    TestDir dir;
    gslDragList = QStringList{dir.file("a", "new a"), dir.file("b", "new b")};
    gsDropBase = dir.folder("to");
    dir.file("to/a", "old a");
    dir.file("to/b", "old b");
    auto* panel = new QWidget;
    panel->show();
    QPointer<MProgress> dialog;
    QSemaphore gone;
    FaultShim shim(dir.path());
    shim.fail("rename", "to/a", EIO).fail("rename", "to/b", EIO);
    // The last call before the second question. The end comes first, the question once exec() has returned.
    const char* const call = kind == OpMove ? "rename" : "lstat";
    shim.before(call, kind == OpDelete ? "b" : "to/b", kind == OpDelete ? 2 : 1, [&] {
        QMetaObject::invokeMethod(
            qApp,
            [&] {
                if (quits) {
                    QCoreApplication::quit();
                } else {
                    gone.release();
                    delete panel; // and the dialog with it
                }
            },
            Qt::QueuedConnection);
        gone.acquire();
    });
    BoxAnswers answers;
    answers.click(button);
    QTimer::singleShot(0, [&] {
        dialog = new MProgress(panel, kind);
        dialog->exec();
        gone.release();
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    QVERIFY(dialog.isNull());
    if (quits) {
        delete panel;
    }
    QCOMPARE(answers.seen().size(), 1);
    QCOMPARE(dir.exists("a"), kind == OpCopy); // the first answer did what it says
    QCOMPARE(dir.read("b"), QByteArray("new b"));
    QCOMPARE(dir.read("to/b"), QByteArray("old b"));
}

void TestMProgress::onTheStack()
{
    TestDir dir;
    gslDragList = QStringList{dir.file("f", "x")};
    QWidget panel;
    panel.show();
    {
        MProgress dialog(&panel, OpDelete);
        dialog.exec();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    QVERIFY(!dir.exists("f"));
}

/// The box has no parent, and is kept above the dialog all the same.
void TestMProgress::questionIsAboveTheDialog()
{
    TestDir dir;
    dir.file("a", "x");
    dir.file("b", "x");
    OperationRun run(OpDelete, {dir.path("a"), dir.path("b")});
    const QWindow* above = nullptr;
    const QWindow* dialog = nullptr;
    run.atStart = [&](MProgress* progress) { dialog = progress->windowHandle(); };
    run.answers.meanwhile([&] {
        const QWidget* box = QApplication::activeModalWidget();
        QVERIFY(box->parentWidget() == nullptr);
        above = box->windowHandle()->transientParent();
    });
    run.answers.click("Abort");
    QVERIFY(run.run());
    QVERIFY(dialog != nullptr);
    QCOMPARE(above, dialog);
}

void TestMProgress::parentGone()
{
    auto* panel = new QWidget;
    gslDragList.clear();
    const QPointer<MProgress> dialog = new MProgress(panel, OpCopy);
    delete panel;
    QVERIFY(dialog.isNull());
    QTRY_COMPARE(threadCount(), m_threads);
}

void TestMProgress::quitWhileAQuestionIsOpen_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("question") << QByteArray("myQuestion");
    QTest::newRow("warning") << QByteArray("myWarning");
}

void TestMProgress::quitWhileAQuestionIsOpen()
{
    QFETCH(QByteArray, slot);
    TestDir dir;
    dir.files("item", 3);
    FaultShim shim(dir.path());
    shim.fail("opendir", "item", EIO, 2, slot == "myWarning" ? FaultShim::always : 0);
    QWidget panel;
    panel.show();
    gslDragList = QStringList{dir.path("item")};
    QPointer<MProgress> dialog;
    int answer = 0;
    BoxAnswers answers;
    answers.meanwhile([] { QCoreApplication::quit(); }).close();
    QTimer::singleShot(0, [&] {
        dialog = new MProgress(&panel, OpDelete);
        dialog->exec();
        answer = dialog->answer;
    });
    QCoreApplication::exec();
    QCOMPARE(answer, int(AnswerAbort));
    QVERIFY(dialog.isNull()); // the end of the loop frees it, and waits for its thread
    QCOMPARE(dir.tree("item").size(), 3);
}

void TestMProgress::quitWhileItRuns()
{
    TestDir dir;
    dir.files("src", 3);
    FaultShim shim(dir.path());
    QWidget panel;
    panel.show();
    gslDragList = QStringList{dir.path("src")};
    gsDropBase = dir.path("to");
    QPointer<MProgress> dialog;
    QSemaphore go;
    shim.before("mkdir", "to/src", 1, [&] {
        QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
        go.acquire();
    });
    QTimer::singleShot(0, [&] {
        dialog = new MProgress(&panel, OpCopy);
        dialog->exec();
        QCOMPARE(dialog->abort, 1);
        go.release();
    });
    QCoreApplication::exec();
    QVERIFY(dialog.isNull());
    QCOMPARE(dir.tree("to/src"), QStringList());
}

void TestMProgress::noThreadToBeHad_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("delete") << int(OpDelete);
    QTest::newRow("copy") << int(OpCopy);
    QTest::newRow("move") << int(OpMove);
    QTest::newRow("copy to a name") << int(OpCopyTo);
}

void TestMProgress::noThreadToBeHad()
{
    QFETCH(int, kind);
    TestDir dir;
    gslDragList = QStringList{dir.file("f", "x")};
    gsDropBase = dir.path("to");
    QWidget panel;
    panel.show();
    NoThread noThread(dir.path());
    const QPointer<MProgress> dialog = new MProgress(&panel, kind);
    noThread.run(dialog);
    QTRY_VERIFY(dialog.isNull());
    QTRY_COMPARE(threadCount(), m_threads);
    QCOMPARE(dir.tree(), QStringList{"f"});
}

void TestMProgress::quitWhereThereIsNoThread()
{
    TestDir dir;
    gslDragList = QStringList{dir.file("f", "x")};
    QWidget panel;
    panel.show();
    NoThread noThread(dir.path());
    noThread.boxes.meanwhile([] { QCoreApplication::quit(); }).close();
    QPointer<MProgress> dialog;
    QTimer::singleShot(0, [&] {
        dialog = new MProgress(&panel, OpDelete);
        dialog->exec();
        QVERIFY(!dialog->isVisible());
    });
    QCoreApplication::exec();
    QVERIFY(dialog.isNull());
    QCOMPARE(noThread.boxes.seen().size(), 1);
    QVERIFY(dir.exists("f"));
}

void TestMProgress::hundredOperations()
{
    TestDir dir;
    dir.file("src/f", "x");
    const auto round = [&](int i) {
        OperationRun run(OpCopy, {dir.path("src")}, dir.path(QStringLiteral("to%1").arg(i)));
        return run.run();
    };
    for (int i = 0; i < 5; ++i) {
        QVERIFY(round(i));
    }
    const int descriptors = descriptorCount();
    const int widgets = QApplication::allWidgets().size();
    for (int i = 5; i < 105; ++i) {
        QVERIFY(round(i));
    }
    QTRY_COMPARE(threadCount(), m_threads);
    QTRY_COMPARE(descriptorCount(), descriptors);
    QCOMPARE(QApplication::allWidgets().size(), widgets);
}

void TestMProgress::windowStaysLive()
{
    TestDir dir;
    for (int i = 0; i < 40; ++i) {
        dir.files(QStringLiteral("src/%1").arg(i), 50);
    }
    dir.file("src/big", QByteArray(64 * 1048576, 'x'));
    // A busy machine may hold up one round. What holds up the window by itself does so in every round.
    qint64 copying = std::numeric_limits<qint64>::max();
    qint64 deleting = std::numeric_limits<qint64>::max();
    for (int round = 0; round < 5 && (copying >= 50 || deleting >= 50); ++round) {
        const QString to = dir.path(QStringLiteral("to%1").arg(round));
        {
            OperationRun run(OpCopy, {dir.path("src")}, to);
            GapMeter meter;
            QVERIFY(run.run());
            copying = qMin(copying, meter.longestMs);
        }
        OperationRun run(OpDelete, {to});
        run.answers.click("YesAll");
        GapMeter meter;
        QVERIFY(run.run());
        deleting = qMin(deleting, meter.longestMs);
    }
    QVERIFY2(
        copying < 50 && deleting < 50, qPrintable(QStringLiteral("%1 and %2 ms").arg(copying).arg(deleting)));
}

VANTREL_TEST_MAIN(TestMProgress)
#include "tst_MProgress.moc"
