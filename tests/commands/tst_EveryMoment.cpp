#include "app/EndSignals.h"
#include "app/aGlobal.h"
#include "fileops/MProgress.h"
#include "info/Checksum.h"
#include "info/DialogFileSize.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FaultShim.h"
#include "tests/support/FileTree.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QHash>
#include <QPointer>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <functional>
#include <unistd.h>

namespace {

enum class Way { Escape, TitleBar, Signal, EndOfSession };

const char* nameOf(Way way)
{
    const char* const names[] = {"Escape", "title bar", "SIGTERM", "end of the session"};
    return names[static_cast<int>(way)];
}

bool ends(Way way)
{
    return way == Way::Signal || way == Way::EndOfSession;
}

/// @return all ways in the long form, else two of them in turn
QList<Way> waysFor(int turn)
{
    const QList<Way> ways{Way::Escape, Way::Signal, Way::TitleBar, Way::EndOfSession};
    return qEnvironmentVariableIntValue("VANTREL_LONG") != 0 ? ways : ways.mid(turn / 2 % 2 * 2, 2);
}

/// Asks for the end of a dialog, or of all; on any thread.
void ask(Way way, const QPointer<QDialog>& dialog)
{
    switch (way) {
    case Way::Escape:
        QMetaObject::invokeMethod(
            dialog, [dialog] { QTest::keyClick(dialog.data(), Qt::Key_Escape); }, Qt::QueuedConnection);
        break;
    case Way::TitleBar:
        QMetaObject::invokeMethod(dialog, "close", Qt::QueuedConnection);
        break;
    case Way::Signal:
        ::kill(::getpid(), SIGTERM);
        break;
    case Way::EndOfSession:
        QCoreApplication::postEvent(qApp, new QEvent(QEvent::Quit)); // the session's last word
        break;
    }
}

struct Work
{
    const char* name;
    int kind; ///< OperationKind; below 0 for the other dialogs
    QStringList items;
    QString destination;
};

constexpr int diskUsage = -1;
constexpr int checksums = -2;

const QList<Work> works{{"count", 0, {"src"}, ""}, {"copy", OpCopy, {"src"}, "to"},
    {"copy over", OpCopy, {"src"}, "full"}, {"copy to", OpCopyTo, {"src/full"}, "to/name"},
    {"move", OpMove, {"src/full", "src/sub"}, "to"}, {"delete", OpDelete, {"src"}, ""},
    {"disk usage", diskUsage, {"src"}, ""}, {"checksums", checksums, {"src/full"}, ""}};

/// One run of a dialog in a whole run of the application's event loop.
class Run
{
public:
    explicit Run(const Work& work)
        : m_work(work)
        , shim(dir.path())
    {
        dir.file("src/full", "content");
        dir.file("src/empty");
        dir.link("src/link", "full");
        dir.file("src/sub/deep", "deep content");
        dir.folder("to");
        dir.file("full/src/full", "old");
        before = fileTreeOf(dir.path());
    }

    /// @param atStart what to do before the dialog is made
    /// @return the result of the event loop
    int run(const std::function<void()>& atStart)
    {
        const EndSignals signalHandling;
        QWidget panel;
        panel.show();
        QTimer::singleShot(0, &panel, [&] {
            runDialog(&panel, atStart);
            if (!signalHandling.haveCome()) {
                QCoreApplication::quit();
            }
        });
        QTimer patience;
        QObject::connect(&patience, &QTimer::timeout, [] { QCoreApplication::exit(-1); });
        patience.start(30000);
        return QCoreApplication::exec();
    }

    /// @return what is wrong with what lies there afterwards
    QStringList damage() const
    {
        FileTree now = fileTreeOf(dir.path());
        FileTree expected = before;
        if (m_work.kind == OpDelete) {
            for (const QString& call : shim.calls()) {
                if (call.startsWith("remove ") && call.endsWith(" = 0")) {
                    expected.remove(call.section(' ', 1, 1));
                }
            }
            return differencesOf(now, expected);
        }
        if (m_work.kind == OpMove) {
            // Each item is in one place, whole.
            for (const QString& call : shim.calls()) {
                if (call.startsWith("rename ") && call.endsWith(" = 0")) {
                    QDir().rename(dir.path(call.section(' ', 1, 1)),
                        dir.path(call.section(" <- ", 1).section(" = ", 0, 0)));
                }
            }
            return differencesOf(fileTreeOf(dir.path()), expected);
        }
        // Whatever was copied, the source is as it was.
        QStringList all;
        for (const QString& difference : differencesOf(now, expected)) {
            if (difference.startsWith("src")) {
                all.append(difference);
            }
        }
        return all;
    }

    TestDir dir{TestDir::inMemory()};

private:
    const Work& m_work;

public:
    FaultShim shim;
    FileTree before;
    QPointer<QDialog> dialog;
    BoxAnswers boxes;

private:
    void runDialog(QWidget* panel, const std::function<void()>& atStart)
    {
        const QString path = dir.path(m_work.items.constFirst());
        if (m_work.kind == diskUsage) {
            runOnStack<DialogFileSize>(panel, path, atStart);
        } else if (m_work.kind == checksums) {
            runOnStack<Checksum>(panel, path, atStart);
        } else {
            gslDragList.clear();
            for (const QString& item : m_work.items) {
                gslDragList.append(dir.path(item));
            }
            gsDropBase = m_work.destination.isEmpty() ? QString() : dir.path(m_work.destination);
            atStart(); // before the worker can begin
            auto* progress = new MProgress(panel, m_work.kind);
            dialog = progress;
            progress->exec();
        }
    }

    template <typename Dialog>
    void runOnStack(QWidget* panel, const QString& path, const std::function<void()>& atStart)
    {
        atStart();
        Dialog made(panel, path);
        dialog = &made;
        // It stays at its end, until the user has seen the result.
        QTimer closer;
        QObject::connect(&closer, &QTimer::timeout, [&made] {
            if (made.running == 0) {
                made.close();
            }
        });
        closer.start(1);
        made.exec();
    }
};

} // namespace

/// Ends each dialog with a worker by every way, at every call that its worker makes and at every question.
class TestEveryMoment : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void endedAtACall_data() { eachWork(); }
    void endedAtACall();
    void endedAtAQuestion_data() { eachWork(); }
    void endedAtAQuestion();
    void cleanupTestCase();

private:
    static void eachWork();
    void compareFigures();
    void endAtQuestion(const Work& work, bool fails, int question, Way way);

    int m_threads = 0;
    int m_descriptors = 0;
    int m_runs = 0;
    int m_endedAtQuestions = 0; ///< of the work at hand
};

void TestEveryMoment::initTestCase()
{
    gsNoRecurse = QStringLiteral("^/none");
    QWidget window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    m_threads = threadCount();
    Run(works.constFirst()).run([] {});
    m_descriptors = descriptorCount();
}

void TestEveryMoment::eachWork()
{
    QTest::addColumn<int>("which");
    for (int i = 0; i < works.size(); ++i) {
        QTest::newRow(works.at(i).name) << i;
    }
}

/// Nothing of a run may be left. A thread that was waited for is there for a moment longer.
void TestEveryMoment::compareFigures()
{
    QElapsedTimer clock;
    clock.start();
    while ((threadCount() != m_threads || descriptorCount() != m_descriptors) && clock.elapsed() < 5000) {
        QThread::yieldCurrentThread();
    }
    QCOMPARE(threadCount(), m_threads);
    QCOMPARE(descriptorCount(), m_descriptors);
}

void TestEveryMoment::endedAtACall()
{
    QFETCH(int, which);
    const Work& work = works.at(which);
    QStringList calls;
    {
        Run clean(work);
        clean.boxes.otherwise({"YesAll"});
        QCOMPARE(clean.run([] {}), 0);
        calls = clean.shim.shortCalls(true);
    }
    QVERIFY(calls.size() > 2);
    QHash<QString, int> numbers;
    for (const QString& call : qAsConst(calls)) {
        const int number = ++numbers[call];
        for (const Way way : waysFor(m_runs)) {
            Run run(work);
            run.boxes.otherwise({"YesAll"});
            const int status = run.run([&] {
                run.shim.before(qPrintable(call.section(' ', 0, 0)), call.section(' ', 1), number, [&] {
                    // The worker may be faster than the constructor that starts it.
                    while (run.dialog.isNull() && !ends(way)) {
                        QThread::yieldCurrentThread();
                    }
                    ask(way, run.dialog);
                });
            });
            const QByteArray place = (call + ", number %1, " + nameOf(way)).arg(number).toUtf8();
            QVERIFY2(status == 0, place.constData());
            QVERIFY2(run.dialog.isNull(), place.constData());
            QVERIFY2(run.damage().isEmpty(), (place + ": " + run.damage().join("\n").toUtf8()).constData());
            compareFigures();
            ++m_runs;
            if (QTest::currentTestFailed()) {
                QFAIL(place.constData());
            }
        }
    }
}

void TestEveryMoment::endedAtAQuestion()
{
    QFETCH(int, which);
    m_endedAtQuestions = 0;
    for (const bool fails : {false, true}) {
        for (int question = 0; question < 4; ++question) {
            for (const Way way : {Way::Escape, Way::TitleBar, Way::Signal, Way::EndOfSession}) {
                endAtQuestion(works.at(which), fails, question, way);
                if (QTest::currentTestFailed()) {
                    QFAIL(qPrintable(QStringLiteral("question %1, %2").arg(question).arg(nameOf(way))));
                }
            }
        }
    }
    // Counting, disk usage and checksums ask nothing; all others ask at least once, however they are ended.
    QVERIFY2(works.at(which).kind > 0 ? m_endedAtQuestions >= 4 : m_endedAtQuestions == 0,
        QByteArray::number(m_endedAtQuestions).constData());
}

/// Escape and the title bar leave a question as it is, and it is aborted then. An end of the application
/// answers it as its Abort button does.
void TestEveryMoment::endAtQuestion(const Work& work, bool fails, int question, Way way)
{
    Run run(work);
    if (fails) {
        for (const char* function : {"remove", "rename", "open", "mkdir"}) {
            run.shim.fail(function, "*", EIO, 1, FaultShim::always);
        }
    }
    int seen = 0;
    int callsBefore = -1;
    bool stood = true;
    run.boxes.otherwise([&](const QString& text) {
        if (seen++ != question) {
            const bool isFailure = text.startsWith("Error") || text.startsWith("Unable");
            return QString(isFailure ? "Ignore" : "Yes");
        }
        callsBefore = run.shim.calls().size();
        const QPointer<QWidget> box = QApplication::activeModalWidget();
        if (ends(way)) {
            ask(way, run.dialog);
            return QString(); // no button
        }
        if (way == Way::Escape) {
            QTest::keyClick(box.data(), Qt::Key_Escape);
        } else {
            box->close();
        }
        stood = !box.isNull() && box->isVisible();
        return QString("Abort");
    });
    QCOMPARE(run.run([] {}), 0);
    QVERIFY(run.dialog.isNull());
    QVERIFY(stood);
    QCOMPARE(run.damage(), QStringList());
    QVERIFY(seen <= question + 1); // nothing is asked after the end
    if (callsBefore >= 0) {
        for (const QString& call : run.shim.calls().mid(callsBefore)) {
            QVERIFY2(call.startsWith("close") || call.startsWith("readdir"), qPrintable(call)); // nor done
        }
    }
    compareFigures();
    ++m_runs;
    m_endedAtQuestions += seen > question ? 1 : 0;
}

void TestEveryMoment::cleanupTestCase()
{
    gsNoRecurse.clear();
    std::printf("%d runs\n", m_runs); // more than QtTest lets through
}

VANTREL_TEST_MAIN(TestEveryMoment)
#include "tst_EveryMoment.moc"
