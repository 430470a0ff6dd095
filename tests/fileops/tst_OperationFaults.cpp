#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "tests/support/FaultShim.h"
#include "tests/support/MemoryMount.h"
#include "tests/support/OperationRun.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QProcess>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/fs.h>
#include <memory>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int block = 1048576;

QString reason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

bool isRoot()
{
    return ::geteuid() == 0;
}

QByteArray bytes(const QString& path)
{
    return QFile::encodeName(path);
}

/// Whether a file or folder can be made immutable or is so no longer.
bool setImmutable(const QString& path, bool immutable)
{
    const int fd = ::open(bytes(path).constData(), O_RDONLY | O_CLOEXEC);
    int flags = 0;
    bool done = fd >= 0 && ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    done = done && ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    ::close(fd);
    return done;
}

int differences(const QString& one, const QString& other)
{
    return QProcess::execute("diff", {"-r", "--no-dereference", one, other});
}

void bothUsers()
{
    QTest::addColumn<bool>("ordinary");
    QTest::newRow("ordinary user") << true;
    if (isRoot()) {
        QTest::newRow("root") << false;
    }
}

} // namespace

class TestOperationFaults : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // No permission. Root is not bound by these, so they are an ordinary user's.
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

    // Read-only and immutable.
    void readOnlyFileSystem_data();
    void readOnlyFileSystem();
    void immutableFile();
    void immutableFolder();

    // No room.
    void fullAtTheStart_data();
    void fullAtTheStart();
    void noRoomForFolders();
    void fullMidway_data();
    void fullMidway();
    void fullDestinationFolder_data();
    void fullDestinationFolder();
    void fileSizeLimit_data();
    void fileSizeLimit();

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
    void tooManyOpenFiles_data();
    void tooManyOpenFiles();
    void tooManyOpenFolders();
    void nameTooLong();
    void linkLoop();
    void moveIntoItself();
    void moveOverANonEmptyFolder();
    void moveAcrossFileSystems();

private:
    int m_descriptors = 0;
};

void TestOperationFaults::init()
{
    m_descriptors = descriptorCount();
}

void TestOperationFaults::cleanup()
{
    QTRY_COMPARE(descriptorCount(), m_descriptors);
}

void TestOperationFaults::sourceFileNotReadable()
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

void TestOperationFaults::sourceFolderNotReadable()
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

void TestOperationFaults::sourceFolderNotSearchable()
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

void TestOperationFaults::destinationFolderNotWritable()
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

void TestOperationFaults::destinationFileNotWritable()
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

void TestOperationFaults::destinationParentNotSearchable()
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

void TestOperationFaults::folderWithoutRightsIsCopiedWithoutItsFiles()
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

void TestOperationFaults::ownerAndSetIdOfAnotherUser()
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

void TestOperationFaults::deleteInFolderNotWritable()
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

void TestOperationFaults::deleteUnreadableFolder()
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

void TestOperationFaults::deleteUnsearchableFolder()
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

void TestOperationFaults::deleteInStickyFolder()
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

void TestOperationFaults::moveFromFolderNotWritable()
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

void TestOperationFaults::moveToFolderNotWritable()
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

void TestOperationFaults::moveInStickyFolder()
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

void TestOperationFaults::countUnreadable()
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

void TestOperationFaults::readOnlyFileSystem_data()
{
    bothUsers();
}

void TestOperationFaults::readOnlyFileSystem()
{
    QFETCH(bool, ordinary);
    TestDir dir;
    dir.folder("mount");
    const MemoryMount mount(dir.path("mount"), "size=1m");
    NEEDS_MOUNT(mount)
    dir.file("mount/f", "there");
    dir.folder("mount/sub");
    dir.file("src/f", "x");
    giveToOrdinaryUser(dir.path());
    QVERIFY(mount.makeReadOnly());
    struct Case
    {
        int kind;
        QString item;
        QString to;
        QStringList texts;
    };
    const QString why = "\n" + reason(EROFS);
    const QList<Case> cases{
        {OpCopy, "src", "mount",
            {"Error creating directory:\n" + dir.path("mount/src") + why,
                "Unable to open destination file:\n" + dir.path("mount/src/f") + "\n" + reason(ENOENT)}},
        {OpCopy, "src", "mount/new",
            {"Error creating directory:\n" + dir.path("mount/new/src") + why,
                "Error creating directory:\n" + dir.path("mount/new/src") + "\n" + reason(ENOENT),
                "Unable to open destination file:\n" + dir.path("mount/new/src/f") + "\n" + reason(ENOENT)}},
        {OpCopyTo, "src/f", "mount/g", {"Unable to open destination file:\n" + dir.path("mount/g") + why}},
        {OpDelete, "mount/f", "", {"Error deleting file:\n" + dir.path("mount/f") + why}},
        {OpDelete, "mount/sub", "", {"Error deleting directory:\n" + dir.path("mount/sub") + why}},
        {OpMove, "mount/f", "mount/sub", {"Error moving:\n" + dir.path("mount/f") + why}}};
    for (const Case& one : cases) {
        FaultShim shim(dir.path());
        if (ordinary) {
            asOrdinaryUser(shim, one.item);
        }
        OperationRun run(one.kind, {dir.path(one.item)}, one.to.isEmpty() ? QString() : dir.path(one.to));
        run.answers.otherwise({"Ignore"});
        QVERIFY(run.run());
        QCOMPARE(run.answers.texts(), one.texts);
    }
    QCOMPARE(dir.tree("mount"), (QStringList{"f", "sub/"}));
}

void TestOperationFaults::immutableFile()
{
    TestDir dir;
    dir.file("src/f", "x");
    dir.file("new", "new");
    if (!setImmutable(dir.path("src/f"), true)) {
        QSKIP("nothing can be made immutable here");
    }
    QStringList texts;
    {
        OperationRun run(OpDelete, {dir.path("src")});
        run.answers.click("Yes").click("Retry").click("Ignore").click("Ignore");
        run.run();
        texts += run.answers.texts().mid(1);
    }
    {
        OperationRun run(OpCopyTo, {dir.path("new")}, dir.path("src/f"));
        run.answers.click("Yes").click("Ignore");
        run.run();
        texts += run.answers.texts().mid(1);
    }
    {
        OperationRun run(OpMove, {dir.path("src/f")}, dir.path());
        run.answers.click("Ignore");
        run.run();
        texts += run.answers.texts();
    }
    {
        // Reading it is nothing special, and the copy is an ordinary file.
        OperationRun run(OpCopyTo, {dir.path("src/f")}, dir.path("copy"));
        QVERIFY(run.run());
    }
    QVERIFY(setImmutable(dir.path("src/f"), false));
    const QString why = "\n" + reason(EPERM);
    QCOMPARE(texts,
        (QStringList{"Error deleting file:\n" + dir.path("src/f") + why,
            "Error deleting file:\n" + dir.path("src/f") + why,
            "Error deleting directory:\n" + dir.path("src") + "\n" + reason(ENOTEMPTY),
            "Unable to open destination file:\n" + dir.path("src/f") + why,
            "Error moving:\n" + dir.path("src/f") + why}));
    QCOMPARE(dir.read("src/f"), QByteArray("x"));
    QCOMPARE(dir.read("copy"), QByteArray("x"));
}

void TestOperationFaults::immutableFolder()
{
    TestDir dir;
    dir.file("src/f", "x");
    dir.folder("to");
    if (!setImmutable(dir.path("to"), true)) {
        QSKIP("nothing can be made immutable here");
    }
    OperationRun run(OpCopy, {dir.path("src/f")}, dir.path("to"));
    run.answers.click("Ignore");
    const bool ended = run.run();
    QVERIFY(setImmutable(dir.path("to"), false));
    QVERIFY(ended);
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open destination file:\n" + dir.path("to/f") + "\n" + reason(EPERM)});
}

void TestOperationFaults::fullAtTheStart_data()
{
    bothUsers();
}

void TestOperationFaults::fullAtTheStart()
{
    QFETCH(bool, ordinary);
    TestDir dir;
    dir.folder("mount");
    const MemoryMount mount(dir.path("mount"), "size=64k");
    NEEDS_MOUNT(mount)
    dir.file("mount/fill", QByteArray(65536, 'f'));
    dir.file("src", "some content");
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    if (ordinary) {
        asOrdinaryUser(shim, "src");
    }
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("mount"));
    run.answers.meanwhile([&] { QFile::remove(dir.path("mount/fill")); }).click("Retry").click("Yes");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts().value(0),
        "Error writing file:\n" + dir.path("mount/src") + "\n" + reason(ENOSPC));
    QCOMPARE(dir.read("mount/src"), QByteArray("some content"));
}

void TestOperationFaults::noRoomForFolders()
{
    TestDir dir;
    dir.folder("mount");
    const MemoryMount mount(dir.path("mount"), "nr_inodes=2");
    NEEDS_MOUNT(mount)
    dir.file("mount/fill");
    dir.file("src/f", "x");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("mount"));
    run.answers.meanwhile([&] { QVERIFY(mount.resize("nr_inodes=10")); }).click("Retry");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error creating directory:\n" + dir.path("mount/src") + "\n" + reason(ENOSPC)});
    QCOMPARE(differences(dir.path("src"), dir.path("mount/src")), 0);
}

void TestOperationFaults::fullMidway_data()
{
    bothUsers();
}

void TestOperationFaults::fullMidway()
{
    QFETCH(bool, ordinary);
    TestDir dir;
    dir.folder("mount");
    const MemoryMount mount(dir.path("mount"), "size=2560k");
    NEEDS_MOUNT(mount)
    dir.file("src", QByteArray(5 * block, 's'));
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    if (ordinary) {
        asOrdinaryUser(shim, "src");
    }
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("mount"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error writing file:\n" + dir.path("mount/src") + "\n" + reason(ENOSPC)});
    // All blocks are read and tried, and what fitted stays.
    QCOMPARE(run.done, 5 * block + 1);
    const QByteArray left = dir.read("mount/src");
    QVERIFY(left.size() >= 2 * block && left.size() <= 2560 * 1024);
    QVERIFY(!left.contains('\0'));
}

void TestOperationFaults::fullDestinationFolder_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("ordinary");
    for (const char* button : {"Retry", "Ignore", "IgnoreAll", "Abort"}) {
        QTest::newRow(qPrintable(QString("%1, ordinary user").arg(button))) << button << true;
        if (isRoot()) {
            QTest::newRow(qPrintable(QString("%1, root").arg(button))) << button << false;
        }
    }
}

void TestOperationFaults::fullDestinationFolder()
{
    QFETCH(QString, button);
    QFETCH(bool, ordinary);
    TestDir dir;
    dir.folder("mount");
    const MemoryMount mount(dir.path("mount"), "size=128k");
    NEEDS_MOUNT(mount)
    dir.folder("mount/to");
    dir.file("mount/fill", QByteArray(65536, 'f'));
    for (int i = 0; i < 8; ++i) {
        dir.file(QStringLiteral("src/%1").arg(i), QByteArray(16 * 1024, static_cast<char>('0' + i)));
    }
    giveToOrdinaryUser(dir.path());
    FaultShim shim(dir.path());
    if (ordinary) {
        asOrdinaryUser(shim, "src");
    }
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("mount/to"));
    if (button == "Retry") {
        run.answers.meanwhile([&] { QFile::remove(dir.path("mount/fill")); }).click("Retry").click("Yes");
    } else {
        run.answers.otherwise({button});
    }
    QVERIFY(run.run());
    const QStringList texts = run.answers.texts();
    QVERIFY(texts.value(0).startsWith("Error writing file:\n" + dir.path("mount/to/src/")));
    QVERIFY(texts.value(0).endsWith("\n" + reason(ENOSPC)));

    // 64 KiB hold four of the files.
    int complete = 0;
    for (int i = 0; i < 8; ++i) {
        const QString name = QStringLiteral("/%1").arg(i);
        complete += dir.read("src" + name) == dir.read("mount/to/src" + name) ? 1 : 0;
    }
    if (button == "Retry") {
        QCOMPARE(complete, 8);
        QCOMPARE(differences(dir.path("src"), dir.path("mount/to/src")), 0);
        QCOMPARE(texts.size(), 2);
    } else {
        QCOMPARE(complete, 4);
        QCOMPARE(differences(dir.path("src"), dir.path("mount/to/src")), 1);
        QCOMPARE(texts.size(), button == "Ignore" ? 4 : 1);
        QCOMPARE(dir.tree("mount/to/src").size(), button == "Abort" ? 5 : 8);
    }
    QCOMPARE(run.abort, button == "Abort" ? 1 : 0);
    QCOMPARE(run.ignoreAll, button == "IgnoreAll" ? 1 : 0);
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

void TestOperationFaults::moveAcrossFileSystems()
{
    TestDir dir;
    dir.folder("mount");
    const MemoryMount mount(dir.path("mount"), "size=1m");
    NEEDS_MOUNT(mount)
    dir.file("f", "x");
    OperationRun run(OpMove, {dir.path("f")}, dir.path("mount"));
    run.answers.click("Retry").click("Ignore");
    QVERIFY(run.run());
    const QString text = "Error moving:\n" + dir.path("f") + "\n" + reason(EXDEV);
    QCOMPARE(run.answers.texts(), (QStringList{text, text}));
    QCOMPARE(dir.tree(), (QStringList{"f", "mount/"}));
}

/// Like VANTREL_TEST_MAIN, with mounts of its own, which end with the process.
int main(int argc, char** argv)
{
    useOwnMounts();
    prepareTestProcess();
    QApplication app(argc, argv);
    int failures = 0;
    {
        TestOperationFaults test;
        failures = QTest::qExec(&test, argc, argv);
    }
    lookForLeaks();
    return failures;
}

#include "tst_OperationFaults.moc"
