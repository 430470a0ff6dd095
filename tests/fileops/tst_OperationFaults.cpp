#include "fileops/MProgress.h"

#include "tests/support/FaultShim.h"
#include "tests/support/OneCopy.h"
#include "tests/support/OperationFaultsTest.h"
#include "tests/support/OperationRun.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

/// Operations on what changes meanwhile, and at the limits of the system.
class TestOperationFaults : public OperationFaultsTest
{
    Q_OBJECT

private slots:
    // Things that change meanwhile.
    void sourceVanishesAfterCounting_data();
    void sourceVanishesAfterCounting();
    void sourceVanishesMidway();
    void sourceFolderVanishes();
    void sourceBecomesAFolder();
    void destinationBecomesAFolder();
    void destinationFolderBecomesAFile();
    void destinationFolderVanishes();
    void deletedFolderFillsAgain();
    void deletedItemVanishes();
    void movedItemVanishes();

    // Limits of the system.
    void fileSizeLimit_data();
    void fileSizeLimit();
    void tooManyOpenFiles_data();
    void tooManyOpenFiles();
    void tooManyOpenFolders();
    void nameTooLong();
    void linkLoop();
    void moveIntoItself();
    void moveOverANonEmptyFolder();
};

void TestOperationFaults::sourceVanishesAfterCounting_data()
{
    bothUsers();
}

void TestOperationFaults::sourceVanishesAfterCounting()
{
    QFETCH(bool, ordinary);
    TestDir dir;
    dir.file("one", "1");
    dir.file("two", "2");
    dir.folder("to");
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    if (ordinary) {
        asOrdinaryUser(shim, "one");
    }
    shim.before("lstat", "to", 1, [&] { ::unlink(bytes(dir.path("one")).constData()); });
    OperationRun run(OpCopy, {dir.path("one"), dir.path("two")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 2);
    // A top-level item that is gone is taken for a folder.
    QCOMPARE(run.answers.texts(),
        QStringList{"Error reading directory:\n" + dir.path("one") + "\n" + reason(ENOENT)});
    QCOMPARE(dir.tree("to"), (QStringList{"one/", "two"}));
}

void TestOperationFaults::sourceVanishesMidway()
{
    TestDir dir;
    const QByteArray text(2 * block, 'x');
    dir.file("src", text);
    FaultShim shim(dir.path());
    shim.before("read", "src", 2, [&] { ::unlink(bytes(dir.path("src")).constData()); });
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path("dst"));
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    QVERIFY(dir.read("dst") == text); // it was open
}

void TestOperationFaults::sourceFolderVanishes()
{
    TestDir dir;
    dir.folder("src/sub");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.before("opendir", "src/sub", 2, [&] { ::rmdir(bytes(dir.path("src/sub")).constData()); });
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error reading directory:\n" + dir.path("src/sub") + "\n" + reason(ENOENT)});
}

void TestOperationFaults::sourceBecomesAFolder()
{
    // It can be opened and not be read, and a failed read ends a file.
    TestDir dir;
    dir.file("src", "x");
    FaultShim shim(dir.path());
    shim.before("open", "src", 1, [&] {
        ::unlink(bytes(dir.path("src")).constData());
        ::mkdir(bytes(dir.path("src")).constData(), 0755);
    });
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path("dst"));
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    QCOMPARE(dir.read("dst"), QByteArray(1, '\0'));
}

void TestOperationFaults::destinationBecomesAFolder()
{
    TestDir dir;
    dir.file("src", "x");
    FaultShim shim(dir.path());
    shim.before("open", "dst", 1, [&] { ::mkdir(bytes(dir.path("dst")).constData(), 0755); });
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path("dst"));
    run.answers.meanwhile([&] { ::rmdir(bytes(dir.path("dst")).constData()); }).click("Retry");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open destination file:\n" + dir.path("dst") + "\n" + reason(EISDIR)});
    QCOMPARE(dir.read("dst"), QByteArray("x"));
}

void TestOperationFaults::destinationFolderBecomesAFile()
{
    TestDir dir;
    dir.file("src/f", "x");
    dir.folder("src/sub");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.before("opendir", "src", 2, [&] {
        ::rmdir(bytes(dir.path("to/src")).constData());
        ::close(::open(bytes(dir.path("to/src")).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    });
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.otherwise({"Ignore"});
    QVERIFY(run.run());
    QStringList texts = run.answers.texts();
    texts.sort();
    QCOMPARE(texts,
        (QStringList{"Error creating directory:\n" + dir.path("to/src/sub") + "\n" + reason(ENOTDIR),
            "Unable to open destination file:\n" + dir.path("to/src/f") + "\n" + reason(ENOTDIR)}));
}

void TestOperationFaults::destinationFolderVanishes()
{
    TestDir dir;
    dir.file("src/f", "x");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.before("opendir", "src", 2, [&] { ::rmdir(bytes(dir.path("to/src")).constData()); });
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.meanwhile([&] { ::mkdir(bytes(dir.path("to/src")).constData(), 0755); }).click("Retry");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open destination file:\n" + dir.path("to/src/f") + "\n" + reason(ENOENT)});
    QCOMPARE(differences(dir.path("src"), dir.path("to/src")), 0);
}

void TestOperationFaults::deletedFolderFillsAgain()
{
    TestDir dir;
    dir.file("src/f", "x");
    FaultShim shim(dir.path());
    shim.before("remove", "src", 1, [&] {
        ::close(::open(bytes(dir.path("src/new")).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    });
    OperationRun run(OpDelete, {dir.path("src")});
    run.answers.click("Yes").meanwhile([&] { QFile::remove(dir.path("src/new")); }).click("Retry");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts().value(1),
        "Error deleting directory:\n" + dir.path("src") + "\n" + reason(ENOTEMPTY));
    QVERIFY(!dir.exists("src"));
}

void TestOperationFaults::deletedItemVanishes()
{
    TestDir dir;
    dir.file("src", "x");
    FaultShim shim(dir.path());
    shim.before("remove", "src", 1, [&] { ::unlink(bytes(dir.path("src")).constData()); });
    OperationRun run(OpDelete, {dir.path("src")});
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(
        run.answers.texts(), QStringList{"Error deleting file:\n" + dir.path("src") + "\n" + reason(ENOENT)});
}

void TestOperationFaults::movedItemVanishes()
{
    TestDir dir;
    dir.file("one", "1");
    dir.file("two", "2");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.before("rename", "to/one", 1, [&] { ::unlink(bytes(dir.path("one")).constData()); });
    OperationRun run(OpMove, {dir.path("one"), dir.path("two")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Error moving:\n" + dir.path("one") + "\n" + reason(ENOENT)});
    QCOMPARE(dir.tree("to"), QStringList{"two"});
}

void TestOperationFaults::fileSizeLimit_data()
{
    bothUsers();
}

void TestOperationFaults::fileSizeLimit()
{
    QFETCH(bool, ordinary);
    TestDir dir;
    dir.file("src", QByteArray(3 * block, 's'));
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    if (ordinary) {
        asOrdinaryUser(shim, "src");
    }
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 2 * block;
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path("dst"));
    run.answers.meanwhile([&] { ::setrlimit(RLIMIT_FSIZE, &before); }).click("Retry").click("Yes");
    ::setrlimit(RLIMIT_FSIZE, &small);
    const bool ended = run.run();
    ::setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY(ended);
    QCOMPARE(run.answers.texts().value(0), "Error writing file:\n" + dir.path("dst") + "\n" + reason(EFBIG));
    QCOMPARE(dir.read("dst"), QByteArray(3 * block, 's'));
}

void TestOperationFaults::tooManyOpenFiles_data()
{
    bothUsers();
}

void TestOperationFaults::tooManyOpenFiles()
{
    QFETCH(bool, ordinary);
    TestDir dir;
    dir.file("src", "x");
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    if (ordinary) {
        asOrdinaryUser(shim, "src");
    }
    rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const auto allow = [&](rlim_t files) {
        rlimit limit = before;
        limit.rlim_cur = files;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    };
    shim.before("open", "src", 1, [&] { allow(3); });
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path("dst"));
    run.answers.meanwhile([&] { allow(before.rlim_cur); }).click("Retry");
    const bool ended = run.run();
    allow(before.rlim_cur);
    QVERIFY(ended);
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open source file:\n" + dir.path("src") + "\n" + reason(EMFILE)});
    QCOMPARE(dir.read("dst"), QByteArray("x"));
}

void TestOperationFaults::tooManyOpenFolders()
{
    // Each folder on the way down is open, so that a deep tree may need more than the limit allows.
    TestDir dir;
    QString deep = "src";
    for (int i = 0; i < 60; ++i) {
        deep += "/d";
    }
    dir.file(deep + "/f", "x");
    dir.folder("to");
    rlimit before = {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    rlimit limit = before;
    limit.rlim_cur = 50;
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.meanwhile([&] { ::setrlimit(RLIMIT_NOFILE, &before); }).click("Retry");
    ::setrlimit(RLIMIT_NOFILE, &limit);
    const bool ended = run.run();
    ::setrlimit(RLIMIT_NOFILE, &before);
    QVERIFY(ended);
    QVERIFY(run.answers.texts().value(0).startsWith("Error reading directory:\n" + dir.path("src/d/d")));
    QVERIFY(run.answers.texts().value(0).endsWith(reason(EMFILE)));
    QCOMPARE(differences(dir.path("src"), dir.path("to/src")), 0);
}

void TestOperationFaults::nameTooLong()
{
    TestDir dir;
    dir.file("src", "x");
    const QString name(256, 'n');
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path(name));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open destination file:\n" + dir.path(name) + "\n" + reason(ENAMETOOLONG)});
}

void TestOperationFaults::linkLoop()
{
    TestDir dir;
    dir.file("src", "x");
    dir.link("loop", "loop");
    {
        OperationRun run(OpCopy, {dir.path("src")}, dir.path("loop"));
        run.answers.click("Ignore");
        QVERIFY(run.run());
        QCOMPARE(run.answers.texts(),
            QStringList{"Unable to open destination file:\n" + dir.path("loop/src") + "\n" + reason(ELOOP)});
    }
    OperationRun run(OpDelete, {dir.path("loop/f")});
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error accessing directory:\n" + dir.path("loop/f") + "\n" + reason(ELOOP)});
}

void TestOperationFaults::moveIntoItself()
{
    TestDir dir;
    dir.folder("src/sub");
    OperationRun run(OpMove, {dir.path("src")}, dir.path("src/sub"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Error moving:\n" + dir.path("src") + "\n" + reason(EINVAL)});
}

void TestOperationFaults::moveOverANonEmptyFolder()
{
    TestDir dir;
    dir.file("src/f", "x");
    dir.file("to/src/g", "y");
    OperationRun run(OpMove, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(
        run.answers.texts(), QStringList{"Error moving:\n" + dir.path("src") + "\n" + reason(ENOTEMPTY)});
    QCOMPARE(dir.tree(), (QStringList{"src/", "src/f", "to/", "to/src/", "to/src/g"}));
}

VANTREL_TEST_MAIN(TestOperationFaults)
#include "tst_OperationFaults.moc"
