#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "fileops/ProgressWorker.h"
#include "tests/support/FaultShim.h"
#include "tests/support/OperationRun.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QMetaMethod>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString reason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

/// Calls without readdir and closedir, as "function path".
QStringList callsOf(const FaultShim& shim)
{
    return shim.shortCalls();
}

} // namespace

class TestProgressWorker : public QObject
{
    Q_OBJECT

private slots:
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

    // Copy into a folder.
    void copyTargets_data();
    void copyTargets();
    void copyMakesTheDestination();
    void copyResetsReplaceAll();
    void copyFolderNotMade_data();
    void copyFolderNotMade();
    void copyStopsBetweenItems();
    void copyTakesItsBases();

    // Move.
    void moves();
    void moveCalls();
    void moveToWhatIsNoFolder_data();
    void moveToWhatIsNoFolder();
    void moveErrors_data();
    void moveErrors();
    void moveCountsItems();
    void moveAcrossFileSystems();
    void moveKeepsTheCountingText();
    void moveStopsBetweenItems();

    // Copy to a name.
    void copyToMakesFolders();
    void copyToOfSeveralItems();
    void copyToFolderNotMade();
    void copyToOfAFolder();

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
    QCOMPARE(callsOf(shim), kind == OpMove ? QStringList{"lstat to/new"} : QStringList());
}

void TestProgressWorker::otherKindsOnlyCount()
{
    for (const int kind : {0, 5, -1}) {
        TestDir dir;
        dir.file("f", "x");
        FaultShim shim(dir.path());
        OperationRun run(kind, {dir.path("f")}, dir.path("to"));
        QVERIFY(run.run());
        QCOMPARE(callsOf(shim), QStringList{"lstat f"});
    }
}

void TestProgressWorker::copyTargets_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("looked");
    QTest::newRow("folder") << "/to"
                            << "/to/f";
    QTest::newRow("slash at the end") << "/to/"
                                      << "/to//f";
    QTest::newRow("root") << "/"
                          << "/f";
}

void TestProgressWorker::copyTargets()
{
    QFETCH(QString, base);
    QFETCH(QString, looked);
    TestDir dir;
    const QString name = "vantrel-test-no-such-file";
    dir.file(name, "x");
    // Watches everything; nothing is made, since opening the destination fails.
    FaultShim shim("/");
    const QString prefix = base == "/" ? QString() : dir.path();
    dir.folder("to");
    OperationRun run(OpCopy, {dir.path(name)}, prefix + base);
    run.answers.click("Ignore");
    const QString target = prefix + looked.left(looked.size() - 1) + name;
    shim.fail("open", target.mid(1), EROFS);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open destination file:\n" + target + "\n" + reason(EROFS)});
}

void TestProgressWorker::copyMakesTheDestination()
{
    TestDir dir;
    dir.file("f", "x");
    OperationRun run(OpCopy, {dir.path("f")}, dir.path("new/deep"));
    QVERIFY(run.run());
    QCOMPARE(dir.tree("new"), (QStringList{"deep/", "deep/f"}));
}

void TestProgressWorker::copyResetsReplaceAll()
{
    for (const int kind : {int(OpCopy), int(OpMove), int(OpCopyTo)}) {
        TestDir dir;
        dir.file("f", "x");
        FaultShim shim(dir.path());
        OperationRun run(kind, {dir.path("f")}, dir.path(kind == OpCopyTo ? "to/f" : "to"));
        dir.folder("to");
        shim.before("lstat", "f", 1, [&] { run.dialog()->replaceAll = 1; });
        QVERIFY(run.run());
        QCOMPARE(run.replaceAll, 0);
    }
}

void TestProgressWorker::copyFolderNotMade_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("more");
    QTest::addColumn<bool>("copied");
    QTest::newRow("Retry") << "Retry" << QStringList{} << true;
    QTest::newRow("Ignore") << "Ignore" << QStringList{"Unable to open destination file:\n"} << false;
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{} << false;
    QTest::newRow("Abort") << "Abort" << QStringList{} << false;
}

void TestProgressWorker::copyFolderNotMade()
{
    QFETCH(QString, button);
    QFETCH(QStringList, more);
    TestDir dir;
    dir.file("f", "x");
    FaultShim shim(dir.path());
    shim.fail("mkdir", "to", ENOSPC);
    OperationRun run(OpCopy, {dir.path("f")}, dir.path("to"));
    run.answers.click(button);
    if (!more.isEmpty()) {
        run.answers.click("Ignore");
    }
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts().value(0),
        "Error creating directory:\n" + dir.path("to/f") + "\n" + reason(ENOSPC));
    QCOMPARE(run.answers.seen().size(), 1 + more.size());
    if (!more.isEmpty()) {
        QVERIFY(run.answers.texts().value(1).startsWith(more.first()));
    }
    QTEST(dir.exists("to/f"), "copied");
    QCOMPARE(run.abort, button == "Abort" ? 1 : 0);
    QCOMPARE(shim.count("mkdir", "to"), button == "Retry" ? 2 : 1);
    // The copy is begun whatever the outcome, and begins with the path it shows.
    QCOMPARE(run.lastPath, dir.path("f"));
}

void TestProgressWorker::copyStopsBetweenItems()
{
    TestDir dir;
    dir.file("one", "x");
    dir.file("two", "x");
    dir.folder("to");
    FaultShim shim(dir.path());
    OperationRun run(OpCopy, {dir.path("one"), dir.path("two")}, dir.path("to"));
    shim.before("close", "one", 1, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(dir.tree("to"), QStringList{"one"});
    QCOMPARE(callsOf(shim).constLast(), QString("close one"));
}

void TestProgressWorker::copyTakesItsBases()
{
    TestDir dir;
    dir.file("one", "x");
    dir.file("two", "x");
    FaultShim shim(dir.path());
    OperationRun run(OpCopy, {dir.path("one"), dir.path("two")}, dir.path("to"));
    shim.before("mkdir", "to", 1, [&] {
        gsDropBase = dir.path("elsewhere");
        gslDragList.clear();
    });
    QVERIFY(run.run());
    QCOMPARE(dir.tree("to"), (QStringList{"one", "two"}));
    QVERIFY(!dir.exists("elsewhere"));
}

void TestProgressWorker::moves()
{
    TestDir dir;
    dir.file("one", "1");
    dir.file("folder/two", "2");
    dir.folder("to");
    OperationRun run(OpMove, {dir.path("one"), dir.path("folder")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(dir.tree(), (QStringList{"to/", "to/folder/", "to/folder/two", "to/one"}));
    QCOMPARE(run.total, 2);
    QCOMPARE(run.done, 2);
}

void TestProgressWorker::moveCalls()
{
    TestDir dir;
    dir.file("one", "1");
    dir.file("two", "2");
    dir.folder("to");
    FaultShim shim(dir.path());
    OperationRun run(OpMove, {dir.path("one"), dir.path("two")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(shim.calls(),
        (QStringList{"lstat one = 0", "lstat two = 0", "lstat to = 0",
            "rename to/one <- " + QString("one = 0"), "rename to/two <- two = 0"}));
}

void TestProgressWorker::moveToWhatIsNoFolder_data()
{
    QTest::addColumn<int>("what");
    QTest::newRow("missing") << 0;
    QTest::newRow("file") << 1;
    QTest::newRow("link to a folder") << 2;
}

void TestProgressWorker::moveToWhatIsNoFolder()
{
    QFETCH(int, what);
    TestDir dir;
    dir.file("one", "1");
    dir.folder("in");
    if (what == 1) {
        dir.file("in/name", "old");
    } else if (what == 2) {
        dir.link("in/name", dir.path("in"));
    }
    OperationRun run(OpMove, {dir.path("one")}, dir.path("in/name"));
    QVERIFY(run.run());
    QVERIFY(dir.exists("inone"));
    QVERIFY(!dir.exists("one"));
}

void TestProgressWorker::moveErrors_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<int>("moved");
    QTest::newRow("Retry") << "Retry" << QStringList{"one", "two"} << 2;
    QTest::newRow("Ignore") << "Ignore" << QStringList{"two"} << 2;
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{"two"} << 2;
    QTest::newRow("Abort") << "Abort" << QStringList{} << 1;
}

void TestProgressWorker::moveErrors()
{
    QFETCH(QString, button);
    TestDir dir;
    dir.file("one", "1");
    dir.file("two", "2");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.fail("rename", "to/one", EXDEV);
    OperationRun run(OpMove, {dir.path("one"), dir.path("two")}, dir.path("to"));
    run.answers.click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Error moving:\n" + dir.path("one") + "\n" + reason(EXDEV)});
    QTEST(dir.tree("to"), "left");
    QTEST(static_cast<int>(run.done), "moved");
    QCOMPARE(run.abort, button == "Abort" ? 1 : 0);
    QCOMPARE(run.ignoreAll, button == "IgnoreAll" ? 1 : 0);
    QCOMPARE(shim.count("rename", "to/one"), button == "Retry" ? 2 : 1);
}

void TestProgressWorker::moveCountsItems()
{
    TestDir dir;
    dir.file("big", QByteArray(100000, 'x'));
    dir.folder("to");
    OperationRun run(OpMove, {dir.path("big")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(run.total, 1);
    QCOMPARE(run.done, 1);
    QCOMPARE(run.fileCount, 1);
}

void TestProgressWorker::moveAcrossFileSystems()
{
    TestDir here;
    TestDir there("/dev/shm");
    struct stat a;
    struct stat b;
    QCOMPARE(::stat(qPrintable(here.path()), &a), 0);
    QCOMPARE(::stat(qPrintable(there.path()), &b), 0);
    if (a.st_dev == b.st_dev) {
        QSKIP("both folders are on one file system");
    }
    here.file("f", "x");
    OperationRun run(OpMove, {here.path("f")}, there.path());
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Error moving:\n" + here.path("f") + "\n" + reason(EXDEV)});
    QVERIFY(here.exists("f"));
    QCOMPARE(there.tree(), QStringList());
}

void TestProgressWorker::moveKeepsTheCountingText()
{
    TestDir dir;
    dir.file("f", "x");
    dir.folder("to");
    OperationRun run(OpMove, {dir.path("f")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(run.lastPath, QString("Counting..."));
}

void TestProgressWorker::moveStopsBetweenItems()
{
    TestDir dir;
    dir.file("one", "1");
    dir.file("two", "2");
    dir.folder("to");
    FaultShim shim(dir.path());
    OperationRun run(OpMove, {dir.path("one"), dir.path("two")}, dir.path("to"));
    shim.before("rename", "to/one", 1, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(dir.tree("to"), QStringList{"one"});
    QCOMPARE(run.done, 1);
}

void TestProgressWorker::copyToMakesFolders()
{
    TestDir dir;
    dir.file("f", "content");
    OperationRun run(OpCopyTo, {dir.path("f")}, dir.path("new/deep/name"));
    QVERIFY(run.run());
    QCOMPARE(dir.read("new/deep/name"), QByteArray("content"));
}

void TestProgressWorker::copyToOfSeveralItems()
{
    TestDir dir;
    dir.file("one", "1");
    dir.file("two", "2");
    OperationRun run(OpCopyTo, {dir.path("one"), dir.path("two")}, dir.path("new/name"));
    QVERIFY(run.run());
    QCOMPARE(dir.tree("new"), QStringList());
    QVERIFY(dir.exists("new"));
}

void TestProgressWorker::copyToFolderNotMade()
{
    TestDir dir;
    dir.file("f", "1");
    dir.file("file", "x");
    OperationRun run(OpCopyTo, {dir.path("f")}, dir.path("file/deep/name"));
    run.answers.click("Abort");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error creating directory:\n" + dir.path("file/deep/name") + "\n" + reason(ENOTDIR)});
    QCOMPARE(run.abort, 1);
}

void TestProgressWorker::copyToOfAFolder()
{
    // A folder is opened like any file, and cannot be read.
    TestDir dir;
    dir.file("folder/f", "1");
    OperationRun run(OpCopyTo, {dir.path("folder")}, dir.path("name"));
    QVERIFY(run.run());
    QVERIFY(dir.exists("name"));
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
    run.answers.click("Ignore");
    const bool ended = run.run();
    ::setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY(ended);
    // A short write, which passes; nothing of the size limit's signal.
    struct sigaction action = {};
    ::sigaction(SIGXFSZ, nullptr, &action);
    QVERIFY(action.sa_handler == SIG_DFL); // neither is it ignored in programs that are started later
    QVERIFY(dir.read("dst").size() <= 50000);
}

VANTREL_TEST_MAIN(TestProgressWorker)
#include "tst_ProgressWorker.moc"
