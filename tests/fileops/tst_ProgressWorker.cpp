#include "fileops/ProgressWorker.h"

#include "fileops/MProgress.h"
#include "tests/support/FaultShim.h"
#include "tests/support/OperationRun.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QMetaMethod>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>

/// The worker's codes and interface, how it counts, and what holds for all kinds of operation.
class TestProgressWorker : public QObject
{
    Q_OBJECT

private slots:
    // Interface.
    void codes();
    void interface();

    // Counting.
    void counts();
    void countsASingleFile();
    void countsLinksAsFiles();
    void countsAnUnreadableFolder();
    void countsNothingOfWhatIsMissing();
    void countStopsAtAnEntryThatCannotBeSeen();
    void countCalls();
    void countListsNoFolderAfterAbort();
    void abortWhileCounting_data();
    void abortWhileCounting();
    void emptyListTouchesNothing_data();
    void emptyListTouchesNothing();
    void otherKindsOnlyCount();

    // Answers.
    void ignoreAllSilencesTheRest();
    void fileSizeLimitDoesNotEndTheProgram();
};

void TestProgressWorker::codes()
{
    QCOMPARE(int(OpDelete), 1);
    QCOMPARE(int(OpCopy), 2);
    QCOMPARE(int(OpMove), 3);
    QCOMPARE(int(OpCopyTo), 4);
    QCOMPARE(int(AnswerRetry), 1);
    QCOMPARE(int(AnswerIgnore), 2);
    QCOMPARE(int(AnswerIgnoreAll), 3);
    QCOMPARE(int(AnswerAbort), 4);
    QCOMPARE(int(AnswerYes), 5);
    QCOMPARE(int(AnswerYesAll), 6);
    QCOMPARE(int(AnswerNo), 7);
}

void TestProgressWorker::interface()
{
    const QMetaObject& meta = ProgressWorker::staticMetaObject;
    QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
    QVERIFY(meta.indexOfSlot("StartWork()") >= 0);
    QVERIFY(meta.indexOfSignal("finished()") >= 0);
    QVERIFY(meta.indexOfSignal("myQuestion(QString)") >= 0);
    QVERIFY(meta.indexOfSignal("myWarning(QString)") >= 0);
}

void TestProgressWorker::counts()
{
    TestDir dir;
    dir.file("a/one", "12345");
    dir.file("a/sub/.two", "123");
    dir.folder("a/sub/empty");
    dir.file("b", "1");
    OperationRun run(0, {dir.path("a"), dir.path("b")});
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 3);
    QCOMPARE(run.folderCount, 3);
    QCOMPARE(run.total, 1 + 6 + 4 + 2);
    QCOMPARE(run.done, 0);
    QCOMPARE(run.lastPath, QString("Counting..."));
}

void TestProgressWorker::countsASingleFile()
{
    TestDir dir;
    dir.file("f", "12345");
    OperationRun run(0, {dir.path("f")});
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 1);
    QCOMPARE(run.folderCount, 0);
    QCOMPARE(run.total, 7);
}

void TestProgressWorker::countsLinksAsFiles()
{
    TestDir dir;
    dir.file("outside/f", "12345");
    dir.link("link", "outside");
    dir.folder("in");
    dir.link("in/up", "..");
    OperationRun run(0, {dir.path("link"), dir.path("in")});
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 2);
    QCOMPARE(run.folderCount, 1);
    QCOMPARE(run.total, 1 + 8 + 3);
}

void TestProgressWorker::countsAnUnreadableFolder()
{
    TestDir dir;
    dir.file("a/f", "x");
    FaultShim shim(dir.path());
    shim.fail("opendir", "a", EACCES);
    OperationRun run(0, {dir.path("a")});
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 0);
    QCOMPARE(run.folderCount, 1);
    QCOMPARE(run.answers.texts(), QStringList());
}

void TestProgressWorker::countsNothingOfWhatIsMissing()
{
    TestDir dir;
    dir.file("b", "x");
    OperationRun run(0, {dir.path("gone"), dir.path("b")});
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 1);
    QCOMPARE(run.folderCount, 0);
}

void TestProgressWorker::countStopsAtAnEntryThatCannotBeSeen()
{
    TestDir dir;
    dir.files("a/sub", 5);
    FaultShim shim(dir.path());
    shim.fail("lstat", "*", EIO, 6); // a, a/sub twice, two files
    OperationRun run(0, {dir.path("a")});
    QVERIFY(run.run());
    // The rest of that folder is not counted, and neither is the folder; the one above it is.
    QCOMPARE(run.fileCount, 2);
    QCOMPARE(run.folderCount, 1);
    QCOMPARE(shim.count("closedir", "a/sub"), 1);
}

void TestProgressWorker::countCalls()
{
    TestDir dir;
    dir.file("a/sub/f", "x");
    FaultShim shim(dir.path());
    OperationRun run(0, {dir.path("a")});
    QVERIFY(run.run());
    QCOMPARE(shim.shortCalls(true).filter(QRegularExpression("^(?!readdir)")),
        (QStringList{"lstat a", "opendir a", "lstat a/sub", "lstat a/sub", "opendir a/sub", "lstat a/sub/f",
            "closedir a/sub", "closedir a"}));
}

void TestProgressWorker::countListsNoFolderAfterAbort()
{
    TestDir dir;
    dir.files("a", 10);
    FaultShim shim(dir.path());
    OperationRun run(OpDelete, {dir.path("a")});
    shim.before("lstat", "*", 4, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 3); // the one at which it was said still counts
    QCOMPARE(run.folderCount, 0);
    QCOMPARE(shim.shortCalls(true).constLast(), QString("closedir a"));
    QCOMPARE(dir.tree("a").size(), 10);
}

void TestProgressWorker::abortWhileCounting_data()
{
    QTest::addColumn<int>("kind");
    for (int kind = OpDelete; kind <= OpCopyTo; ++kind) {
        QTest::newRow(qPrintable(QString::number(kind))) << kind;
    }
}

void TestProgressWorker::abortWhileCounting()
{
    QFETCH(int, kind);
    TestDir dir;
    dir.file("one", "x");
    dir.file("two", "x");
    dir.folder("to");
    const QStringList before = dir.tree();
    FaultShim shim(dir.path());
    OperationRun run(kind, {dir.path("one"), dir.path("two")}, dir.path("to/new/name"));
    shim.before("lstat", "one", 1, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(shim.calls(), QStringList{"lstat one = 0"});
    QCOMPARE(dir.tree(), before);
}

void TestProgressWorker::emptyListTouchesNothing_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("delete") << int(OpDelete);
    QTest::newRow("copy") << int(OpCopy);
    QTest::newRow("move") << int(OpMove);
}

void TestProgressWorker::emptyListTouchesNothing()
{
    QFETCH(int, kind);
    TestDir dir;
    FaultShim shim(dir.path());
    OperationRun run(kind, {}, dir.path("to/new"));
    QVERIFY(run.run());
    QCOMPARE(dir.tree(), QStringList());
    QCOMPARE(run.done, 0);
    QCOMPARE(shim.shortCalls(), kind == OpMove ? QStringList{"lstat to/new"} : QStringList());
}

void TestProgressWorker::otherKindsOnlyCount()
{
    for (const int kind : {0, 5, -1}) {
        TestDir dir;
        dir.file("f", "x");
        FaultShim shim(dir.path());
        OperationRun run(kind, {dir.path("f")}, dir.path("to"));
        QVERIFY(run.run());
        QCOMPARE(shim.shortCalls(), QStringList{"lstat f"});
    }
}

void TestProgressWorker::ignoreAllSilencesTheRest()
{
    TestDir dir;
    dir.files("src", 5);
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.fail("open", "*", EACCES, 1, FaultShim::always);
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("IgnoreAll");
    QVERIFY(run.run());
    QCOMPARE(run.answers.seen().size(), 1);
    QCOMPARE(dir.tree("to/src"), QStringList());
}

void TestProgressWorker::fileSizeLimitDoesNotEndTheProgram()
{
    TestDir dir;
    dir.file("src", QByteArray(100000, 'x'));
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 50000;
    ::setrlimit(RLIMIT_FSIZE, &small);
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path("dst"));
    const bool ended = run.run();
    ::setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY(ended);
    // A short write, which passes; nothing of the size limit's signal.
    struct sigaction action = {};
    ::sigaction(SIGXFSZ, nullptr, &action);
    QVERIFY(action.sa_handler == SIG_DFL); // neither is it ignored in programs that are started later
    QCOMPARE(dir.read("dst"), QByteArray(50000, 'x'));
}

VANTREL_TEST_MAIN(TestProgressWorker)
#include "tst_ProgressWorker.moc"
