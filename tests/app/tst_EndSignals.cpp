#include "app/EndSignals.h"

#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDialog>
#include <QMessageBox>
#include <QProcess>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>

namespace {

void (*handlerOf(int signal))(int)
{
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

/// What the process does on a signal, as long as this lives.
class Disposition
{
public:
    Disposition(int signal, void (*handler)(int))
        : m_signal(signal)
        , m_before(std::signal(signal, handler))
    {
    }
    ~Disposition() { static_cast<void>(std::signal(m_signal, m_before)); }
    Q_DISABLE_COPY_MOVE(Disposition)

private:
    int m_signal;
    void (*m_before)(int);
};

void sendToItself(int signal)
{
    ::kill(::getpid(), signal);
}

/// Runs the event loop of the application.
/// @return its result; -1 where nothing ended it
int runLoop()
{
    QTimer patience;
    QObject::connect(&patience, &QTimer::timeout, [] { QCoreApplication::exit(-1); });
    patience.start(20000);
    return QCoreApplication::exec();
}

} // namespace

class TestEndSignals : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void quits_data();
    void quits();
    void quitsFromAnyThread();
    void endsNestedLoops();
    void quitEventEndsPastARefusal_data();
    void quitEventEndsPastARefusal();
    void tellsWhatCameBeforeTheLoop();
    void manyAtOnce();
    void ignoredSignalsStayIgnored_data();
    void ignoredSignalsStayIgnored();
    void putsEverythingBack();
    void writePastTheSizeLimit();
    void writeToABrokenPipe();
    void launchedProgramsStartAfresh();
};

void TestEndSignals::initTestCase()
{
    QCoreApplication::processEvents(); // the event dispatcher's own descriptors stay
}

void TestEndSignals::quits_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestEndSignals::quits()
{
    QFETCH(int, signal);
    const EndSignals signalHandling;
    QVERIFY(!signalHandling.haveCome());
    QTimer::singleShot(0, [&] { sendToItself(signal); });
    QCOMPARE(runLoop(), 0);
    QVERIFY(signalHandling.haveCome());
}

void TestEndSignals::quitsFromAnyThread()
{
    const EndSignals signalHandling;
    const std::unique_ptr<QThread> thread(
        QThread::create([] { static_cast<void>(::raise(SIGTERM)); })); // this thread gets it
    thread->start();
    QCOMPARE(runLoop(), 0);
    QVERIFY(thread->wait());
}

void TestEndSignals::endsNestedLoops()
{
    const EndSignals signalHandling;
    QStringList order;
    QTimer::singleShot(0, [&] {
        QDialog outer;
        QTimer::singleShot(0, &outer, [&] {
            QDialog inner;
            QTimer::singleShot(0, &inner, [] { sendToItself(SIGTERM); });
            inner.exec();
            order.append("inner");
        });
        outer.exec();
        order.append("outer");
    });
    QCOMPARE(runLoop(), 0);
    QCOMPARE(order, (QStringList{"inner", "outer"}));
}

void TestEndSignals::quitEventEndsPastARefusal_data()
{
    QTest::addColumn<bool>("posted");
    QTest::newRow("sent, as by the session") << false;
    QTest::newRow("posted") << true;
}

void TestEndSignals::quitEventEndsPastARefusal()
{
    // A box with several buttons and none for Escape cannot be closed; all that is left is to end its loop.
    QFETCH(bool, posted);
    const EndSignals signalHandling;
    bool stood = false;
    QTimer::singleShot(0, [&] {
        QMessageBox box(QMessageBox::Warning, "Title", "Text", QMessageBox::Help | QMessageBox::Reset);
        QTimer::singleShot(0, &box, [&] {
            if (posted) {
                QCoreApplication::postEvent(qApp, new QEvent(QEvent::Quit));
            } else {
                QEvent quit(QEvent::Quit);
                QCoreApplication::sendEvent(qApp, &quit);
            }
        });
        box.exec();
        stood = box.isVisible(); // not answered
    });
    QCOMPARE(runLoop(), 0);
    QVERIFY(stood);
    QVERIFY(signalHandling.haveCome());
}

void TestEndSignals::tellsWhatCameBeforeTheLoop()
{
    // A box before the loop ends, but the loop would know of nothing.
    const EndSignals signalHandling;
    QDialog box;
    QTimer::singleShot(0, &box, [] { sendToItself(SIGTERM); });
    box.exec();
    QVERIFY(signalHandling.haveCome());
}

void TestEndSignals::manyAtOnce()
{
    const EndSignals signalHandling;
    QTimer::singleShot(0, [&] {
        for (int i = 0; i < 70000; ++i) { // more than a pipe holds
            static_cast<void>(::raise(i % 2 == 0 ? SIGTERM : SIGHUP));
        }
    });
    QCOMPARE(runLoop(), 0);
}

void TestEndSignals::ignoredSignalsStayIgnored_data()
{
    quits_data();
    QTest::newRow("SIGXFSZ") << SIGXFSZ;
    QTest::newRow("SIGPIPE") << SIGPIPE;
}

void TestEndSignals::ignoredSignalsStayIgnored()
{
    QFETCH(int, signal);
    const Disposition ignored(signal, SIG_IGN);
    const EndSignals signalHandling;
    QVERIFY(handlerOf(signal) == SIG_IGN);
    sendToItself(signal);
    QCoreApplication::processEvents();
    QVERIFY(!signalHandling.haveCome());
}

void TestEndSignals::putsEverythingBack()
{
    const std::array<int, 5> handled{SIGTERM, SIGINT, SIGHUP, SIGXFSZ, SIGPIPE};
    std::array<void (*)(int), handled.size()> before{};
    std::transform(handled.begin(), handled.end(), before.begin(), handlerOf);
    const int descriptors = descriptorCount();
    {
        const EndSignals signalHandling;
        for (std::size_t i = 0; i < handled.size(); ++i) {
            QVERIFY(handlerOf(handled.at(i)) != before.at(i));
            QVERIFY(handlerOf(handled.at(i)) != SIG_IGN); // which programs that are launched would inherit
        }
        QCOMPARE(descriptorCount(), descriptors + 2);
    }
    for (std::size_t i = 0; i < handled.size(); ++i) {
        QVERIFY(handlerOf(handled.at(i)) == before.at(i));
    }
    QCOMPARE(descriptorCount(), descriptors);
}

void TestEndSignals::writePastTheSizeLimit()
{
    const TestDir dir;
    const EndSignals signalHandling;
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 1;
    const int file = ::open(qPrintable(dir.path(QStringLiteral("f"))), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const bool first = ::write(file, "a", 1) == 1;
    const ssize_t second = ::write(file, "b", 1);
    const int error = errno;
    ::setrlimit(RLIMIT_FSIZE, &before);
    ::close(file);
    QVERIFY(first);
    QCOMPARE(second, ssize_t(-1));
    QCOMPARE(error, EFBIG);
    QVERIFY(!signalHandling.haveCome());
}

void TestEndSignals::writeToABrokenPipe()
{
    const EndSignals signalHandling;
    int ends[2];
    QCOMPARE(::pipe2(ends, O_CLOEXEC), 0);
    ::close(ends[0]);
    QCOMPARE(::write(ends[1], "a", 1), ssize_t(-1));
    QCOMPARE(errno, EPIPE);
    ::close(ends[1]);
    QVERIFY(!signalHandling.haveCome());
}

void TestEndSignals::launchedProgramsStartAfresh()
{
    const auto signalsOf = [] {
        QProcess program;
        program.start(
            QStringLiteral("/bin/grep"), {QStringLiteral("^Sig[BI]"), QStringLiteral("/proc/self/status")});
        program.waitForFinished();
        return program.readAll();
    };
    const QByteArray before = signalsOf();
    QVERIFY(before.contains("SigIgn"));
    const EndSignals signalHandling;
    QCOMPARE(signalsOf(), before);
}

VANTREL_TEST_MAIN(TestEndSignals)
#include "tst_EndSignals.moc"
