#include "fileops/MProgress.h"

#include "tests/support/FaultShim.h"
#include "tests/support/MemoryMount.h"
#include "tests/support/OneCopy.h"
#include "tests/support/OperationFaultsTest.h"
#include "tests/support/OperationRun.h"
#include "tests/support/OwnMountsMain.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/// Whether a file or folder can be made immutable or is so no longer.
bool setImmutable(const QString& path, bool immutable)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    int flags = 0;
    bool done = fd >= 0 && ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    done = done && ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    ::close(fd);
    return done;
}

} // namespace

/// Operations on file systems that are read-only or full, on immutable files, and from one file system to
/// another.
class TestOperationFaultsFileSystem : public OperationFaultsTest
{
    Q_OBJECT

private slots:
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

    // Another file system.
    void moveAcrossFileSystems();
};

void TestOperationFaultsFileSystem::readOnlyFileSystem_data()
{
    bothUsers();
}

void TestOperationFaultsFileSystem::readOnlyFileSystem()
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

void TestOperationFaultsFileSystem::immutableFile()
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

void TestOperationFaultsFileSystem::immutableFolder()
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

void TestOperationFaultsFileSystem::fullAtTheStart_data()
{
    bothUsers();
}

void TestOperationFaultsFileSystem::fullAtTheStart()
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

void TestOperationFaultsFileSystem::noRoomForFolders()
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

void TestOperationFaultsFileSystem::fullMidway_data()
{
    bothUsers();
}

void TestOperationFaultsFileSystem::fullMidway()
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

void TestOperationFaultsFileSystem::fullDestinationFolder_data()
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

void TestOperationFaultsFileSystem::fullDestinationFolder()
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

void TestOperationFaultsFileSystem::moveAcrossFileSystems()
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

VANTREL_OWN_MOUNTS_TEST_MAIN(TestOperationFaultsFileSystem)
#include "tst_OperationFaultsFileSystem.moc"
