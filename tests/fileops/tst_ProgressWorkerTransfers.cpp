#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "tests/support/FaultShim.h"
#include "tests/support/OperationRun.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QFileInfo>

#include <cerrno>
#include <sys/stat.h>

/// Where copies and moves of the pending items go, and what is made on the way.
class TestProgressWorkerTransfers : public QObject
{
    Q_OBJECT

private slots:
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
};

void TestProgressWorkerTransfers::copyTargets_data()
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

void TestProgressWorkerTransfers::copyTargets()
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

void TestProgressWorkerTransfers::copyMakesTheDestination()
{
    TestDir dir;
    dir.file("f", "x");
    OperationRun run(OpCopy, {dir.path("f")}, dir.path("new/deep"));
    QVERIFY(run.run());
    QCOMPARE(dir.tree("new"), (QStringList{"deep/", "deep/f"}));
}

void TestProgressWorkerTransfers::copyResetsReplaceAll()
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

void TestProgressWorkerTransfers::copyFolderNotMade_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("more");
    QTest::addColumn<bool>("copied");
    QTest::newRow("Retry") << "Retry" << QStringList{} << true;
    QTest::newRow("Ignore") << "Ignore" << QStringList{"Unable to open destination file:\n"} << false;
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{} << false;
    QTest::newRow("Abort") << "Abort" << QStringList{} << false;
}

void TestProgressWorkerTransfers::copyFolderNotMade()
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

void TestProgressWorkerTransfers::copyStopsBetweenItems()
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
    QCOMPARE(shim.shortCalls().constLast(), QString("close one"));
}

void TestProgressWorkerTransfers::copyTakesItsBases()
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

void TestProgressWorkerTransfers::moves()
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

void TestProgressWorkerTransfers::moveCalls()
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

void TestProgressWorkerTransfers::moveToWhatIsNoFolder_data()
{
    QTest::addColumn<int>("what");
    QTest::newRow("missing") << 0;
    QTest::newRow("file") << 1;
    QTest::newRow("link to a folder") << 2;
}

void TestProgressWorkerTransfers::moveToWhatIsNoFolder()
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

void TestProgressWorkerTransfers::moveErrors_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<int>("moved");
    QTest::newRow("Retry") << "Retry" << QStringList{"one", "two"} << 2;
    QTest::newRow("Ignore") << "Ignore" << QStringList{"two"} << 2;
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{"two"} << 2;
    QTest::newRow("Abort") << "Abort" << QStringList{} << 1;
}

void TestProgressWorkerTransfers::moveErrors()
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

void TestProgressWorkerTransfers::moveCountsItems()
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

void TestProgressWorkerTransfers::moveAcrossFileSystems()
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

void TestProgressWorkerTransfers::moveKeepsTheCountingText()
{
    TestDir dir;
    dir.file("f", "x");
    dir.folder("to");
    OperationRun run(OpMove, {dir.path("f")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(run.lastPath, QString("Counting..."));
}

void TestProgressWorkerTransfers::moveStopsBetweenItems()
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

void TestProgressWorkerTransfers::copyToMakesFolders()
{
    TestDir dir;
    dir.file("f", "content");
    OperationRun run(OpCopyTo, {dir.path("f")}, dir.path("new/deep/name"));
    QVERIFY(run.run());
    QCOMPARE(dir.read("new/deep/name"), QByteArray("content"));
}

void TestProgressWorkerTransfers::copyToOfSeveralItems()
{
    TestDir dir;
    dir.file("one", "1");
    dir.file("two", "2");
    OperationRun run(OpCopyTo, {dir.path("one"), dir.path("two")}, dir.path("new/name"));
    QVERIFY(run.run());
    QCOMPARE(dir.tree("new"), QStringList());
    QVERIFY(dir.exists("new"));
}

void TestProgressWorkerTransfers::copyToFolderNotMade()
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

void TestProgressWorkerTransfers::copyToOfAFolder()
{
    // A folder is opened like any file, and cannot be read: what is left is the room for as many bytes.
    TestDir dir;
    dir.file("folder/f", "1");
    OperationRun run(OpCopyTo, {dir.path("folder")}, dir.path("name"));
    QVERIFY(run.run());
    QVERIFY(dir.exists("name"));
    QCOMPARE(dir.read("name"), QByteArray(static_cast<int>(QFileInfo(dir.path("folder")).size()), '\0'));
}

VANTREL_TEST_MAIN(TestProgressWorkerTransfers)
#include "tst_ProgressWorkerTransfers.moc"
