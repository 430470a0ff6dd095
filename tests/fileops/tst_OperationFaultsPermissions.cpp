#include "fileops/MProgress.h"

#include "tests/support/FaultShim.h"
#include "tests/support/OperationFaultsTest.h"
#include "tests/support/OperationRun.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <cerrno>
#include <sys/stat.h>

/// Operations without permission. Root is not bound by these, so they are an ordinary user's.
class TestOperationFaultsPermissions : public OperationFaultsTest
{
    Q_OBJECT

private slots:
    void sourceFileNotReadable();
    void sourceFolderNotReadable();
    void sourceFolderNotSearchable();
    void destinationFolderNotWritable();
    void destinationFileNotWritable();
    void destinationParentNotSearchable();
    void folderWithoutRightsIsCopiedWithoutItsFiles();
    void ownerAndSetIdOfAnotherUser();
    void deleteInFolderNotWritable();
    void deleteUnreadableFolder();
    void deleteUnsearchableFolder();
    void deleteInStickyFolder();
    void moveFromFolderNotWritable();
    void moveToFolderNotWritable();
    void moveInStickyFolder();
    void countUnreadable();
};

void TestOperationFaultsPermissions::sourceFileNotReadable()
{
    TestDir dir;
    dir.file("src/a", "x");
    dir.file("src/b", "y", 0);
    dir.folder("to");
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Retry").meanwhile([&] { dir.setMode("src/b", 0600); }).click("Retry");
    QVERIFY(run.run());
    const QString text = "Unable to open source file:\n" + dir.path("src/b") + "\n" + reason(EACCES);
    QCOMPARE(run.answers.texts(), (QStringList{text, text}));
    QCOMPARE(differences(dir.path("src"), dir.path("to/src")), 0);
}

void TestOperationFaultsPermissions::sourceFolderNotReadable()
{
    TestDir dir;
    dir.file("src/closed/a", "x");
    dir.file("src/open/b", "y");
    dir.setMode("src/closed", 0);
    dir.folder("to");
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error reading directory:\n" + dir.path("src/closed") + "\n" + reason(EACCES)});
    QCOMPARE(dir.tree("to/src"), (QStringList{"closed/", "open/", "open/b"}));
}

void TestOperationFaultsPermissions::sourceFolderNotSearchable()
{
    TestDir dir;
    dir.file("src/a", "x");
    dir.folder("to");
    giveToOrdinaryUser(dir.path());
    dir.setMode("src", 0444);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 0);
    QCOMPARE(run.folderCount, 0);
    QCOMPARE(run.answers.texts(),
        QStringList{"Cannot find source file:\n" + dir.path("src/a") + "\n" + reason(EACCES)});
}

void TestOperationFaultsPermissions::destinationFolderNotWritable()
{
    TestDir dir;
    dir.file("src/f", "x");
    dir.file("g", "y");
    dir.folder("to");
    giveToOrdinaryUser(dir.path());
    dir.setMode("to", 0555);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpCopy, {dir.path("src"), dir.path("g")}, dir.path("to"));
    run.answers.click("Ignore").click("Ignore").click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        (QStringList{"Error creating directory:\n" + dir.path("to/src") + "\n" + reason(EACCES),
            "Unable to open destination file:\n" + dir.path("to/src/f") + "\n" + reason(ENOENT),
            "Unable to open destination file:\n" + dir.path("to/g") + "\n" + reason(EACCES)}));
    QCOMPARE(dir.tree("to"), QStringList());
}

void TestOperationFaultsPermissions::destinationFileNotWritable()
{
    TestDir dir;
    dir.file("src", "new");
    dir.file("to/src", "old", 0444);
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Yes").click("Abort");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts().value(1),
        "Unable to open destination file:\n" + dir.path("to/src") + "\n" + reason(EACCES));
    QCOMPARE(dir.read("to/src"), QByteArray("old"));
}

void TestOperationFaultsPermissions::destinationParentNotSearchable()
{
    TestDir dir;
    dir.file("src", "x");
    dir.folder("closed/to");
    giveToOrdinaryUser(dir.path());
    dir.setMode("closed", 0);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("closed/to"));
    run.answers.click("Ignore").click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        (QStringList{"Error creating directory:\n" + dir.path("closed/to/src") + "\n" + reason(EACCES),
            "Unable to open destination file:\n" + dir.path("closed/to/src") + "\n" + reason(EACCES)}));
}

void TestOperationFaultsPermissions::folderWithoutRightsIsCopiedWithoutItsFiles()
{
    // The new folder has the mode of the old one at once, which may keep its own files out.
    TestDir dir;
    dir.file("src/f", "x");
    dir.folder("to");
    giveToOrdinaryUser(dir.path());
    dir.setMode("src", 0555);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open destination file:\n" + dir.path("to/src/f") + "\n" + reason(EACCES)});
}

void TestOperationFaultsPermissions::ownerAndSetIdOfAnotherUser()
{
    if (!isRoot()) {
        QSKIP("only root has files of others");
    }
    TestDir dir;
    dir.file("src", "x", 04755); // root's
    dir.folder("to");
    dir.setMode("to", 0777);
    dir.setMode("", 0755);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    struct stat info;
    QCOMPARE(::lstat(bytes(dir.path("to/src")).constData(), &info), 0);
    QVERIFY(info.st_uid != 0);
    QCOMPARE(dir.read("to/src"), QByteArray("x"));
}

void TestOperationFaultsPermissions::deleteInFolderNotWritable()
{
    TestDir dir;
    dir.file("src/f", "x");
    giveToOrdinaryUser(dir.path());
    dir.setMode("src", 0555);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpDelete, {dir.path("src")});
    run.answers.click("Yes").click("Retry").meanwhile([&] { dir.setMode("src", 0755); }).click("Retry");
    QVERIFY(run.run());
    const QString text = "Error deleting file:\n" + dir.path("src/f") + "\n" + reason(EACCES);
    QCOMPARE(run.answers.texts(), (QStringList{"Delete file:\n" + dir.path("src/f"), text, text}));
    QCOMPARE(dir.tree(), QStringList());
}

void TestOperationFaultsPermissions::deleteUnreadableFolder()
{
    TestDir dir;
    dir.file("src/f", "x");
    giveToOrdinaryUser(dir.path());
    dir.setMode("src", 0);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpDelete, {dir.path("src")});
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error accessing directory:\n" + dir.path("src") + "\n" + reason(EACCES)});
    dir.setMode("src", 0755);
    QVERIFY(dir.exists("src/f"));
}

void TestOperationFaultsPermissions::deleteUnsearchableFolder()
{
    TestDir dir;
    dir.file("src/f", "x");
    giveToOrdinaryUser(dir.path());
    dir.setMode("src", 0444);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(OpDelete, {dir.path("src")});
    run.answers.click("Ignore").click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        (QStringList{"Error deleting directory:\n" + dir.path("src") + "\n" + reason(EACCES),
            "Error deleting directory:\n" + dir.path("src") + "\n" + reason(ENOTEMPTY)}));
}

void TestOperationFaultsPermissions::deleteInStickyFolder()
{
    if (!isRoot()) {
        QSKIP("only root has files of others");
    }
    TestDir dir;
    dir.setMode("", 0755);
    dir.folder("sticky", 01777);
    dir.file("sticky/f", "x"); // root's, like the folder
    dir.setMode("sticky", 01777);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "sticky/f");
    OperationRun run(OpDelete, {dir.path("sticky/f")});
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error deleting file:\n" + dir.path("sticky/f") + "\n" + reason(EPERM)});
    QVERIFY(dir.exists("sticky/f"));
}

void TestOperationFaultsPermissions::moveFromFolderNotWritable()
{
    TestDir dir;
    dir.file("src/f", "x");
    dir.folder("to");
    giveToOrdinaryUser(dir.path());
    dir.setMode("src", 0555);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src/f");
    OperationRun run(OpMove, {dir.path("src/f")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Error moving:\n" + dir.path("src/f") + "\n" + reason(EACCES)});
    QVERIFY(dir.exists("src/f"));
}

void TestOperationFaultsPermissions::moveToFolderNotWritable()
{
    TestDir dir;
    dir.file("f", "x");
    dir.folder("to");
    giveToOrdinaryUser(dir.path());
    dir.setMode("to", 0555);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "f");
    OperationRun run(OpMove, {dir.path("f")}, dir.path("to"));
    run.answers.meanwhile([&] { dir.setMode("to", 0755); }).click("Retry");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Error moving:\n" + dir.path("f") + "\n" + reason(EACCES)});
    QCOMPARE(dir.tree(), (QStringList{"to/", "to/f"}));
}

void TestOperationFaultsPermissions::moveInStickyFolder()
{
    if (!isRoot()) {
        QSKIP("only root has files of others");
    }
    TestDir dir;
    dir.setMode("", 0755);
    dir.file("sticky/f", "x");
    dir.setMode("sticky", 01777);
    dir.folder("to");
    dir.setMode("to", 0777);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "sticky/f");
    OperationRun run(OpMove, {dir.path("sticky/f")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(
        run.answers.texts(), QStringList{"Error moving:\n" + dir.path("sticky/f") + "\n" + reason(EPERM)});
}

void TestOperationFaultsPermissions::countUnreadable()
{
    TestDir dir;
    dir.file("src/f", "x");
    giveToOrdinaryUser(dir.path());
    dir.setMode("src", 0);
    FaultShim shim(dir.path());
    asOrdinaryUser(shim, "src");
    OperationRun run(0, {dir.path("src")});
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    QCOMPARE(run.fileCount, 0);
    QCOMPARE(run.folderCount, 1);
}

VANTREL_TEST_MAIN(TestOperationFaultsPermissions)
#include "tst_OperationFaultsPermissions.moc"
