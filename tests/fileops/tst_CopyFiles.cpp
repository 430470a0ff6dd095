#include "fileops/MProgress.h"

#include "tests/support/FaultShim.h"
#include "tests/support/OneCopy.h"
#include "tests/support/OperationRun.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDateTime>
#include <QFile>
#include <QRegularExpression>

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

/// What a copy of one file, link or special file makes, and the calls it takes.
class TestCopyFiles : public QObject
{
    Q_OBJECT

private slots:
    // One file.
    void copiesContentModeAndOwner();
    void callsInOrder();
    void callsOfAnEmptyFile();
    void callsOfAFileOfSeveralBlocks();
    void keepsNoTimes();
    void keepsSetIdBits();
    void sparseFileIsFilled();
    void hardLinksBecomeFiles();
    void ontoItself();
    void growingFileIsCopiedToItsNewEnd();
    void shrinkingFileKeepsTheReservedLength();
    void abortTakesEffectWithinABlock();

    // Links and special files.
    void links_data();
    void links();
    void linkCalls();
    void linkReplacesNothing();
    void linkRetryLooksAtTheSourceAgain();
    void linkTargetIsCut();
    void linkThatCannotBeRead();
    void specialFilesDoNotHang();
    void endlessDeviceCanBeAborted();
    void destinationFifoDoesNotHang();
};

void TestCopyFiles::copiesContentModeAndOwner()
{
    Copy copy;
    copy.dir.file("src", content(2 * block + 17), 0640);
    if (::geteuid() == 0) {
        QCOMPARE(::chown(qPrintable(copy.dir.path("src")), 1234, 4321), 0);
    }
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QVERIFY(copy.dir.read("dst") == content(2 * block + 17));
    QCOMPARE(modeOf(copy.dir.path("dst")), 0640U);
    QCOMPARE(infoOf(copy.dir.path("dst")).st_uid, infoOf(copy.dir.path("src")).st_uid);
    QCOMPARE(infoOf(copy.dir.path("dst")).st_gid, infoOf(copy.dir.path("src")).st_gid);
    QCOMPARE(run.done, 2 * block + 17 + 1);
    QCOMPARE(run.total, 1 + 2 * block + 17 + 1);
    QCOMPARE(run.lastPath, copy.dir.path("src"));
}

void TestCopyFiles::callsInOrder()
{
    Copy copy;
    copy.dir.file("src", "hello", 0640);
    FaultShim shim(copy.dir.path());
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    const QString owner = QStringLiteral(" %1 %2").arg(::geteuid()).arg(infoOf(copy.dir.path("src")).st_gid);
    QStringList expected{"lstat src = 0", // counting
        "lstat . = 0", // the folders on the way
        "lstat src = 0", "lstat dst = -1 2",
        "open src r = ", "open dst w create 0640 = ", "ftruncate dst 0 = 0", "posix_fadvise src 0 0 2 = 0",
        "posix_fadvise dst 0 0 2 = 0", "posix_fallocate dst 0 5 = 0", "fchown dst" + owner + " = 0",
        "fchmod dst 0640 = 0", "read src 1048576 = 5", "write dst 5 = 5", "read src 1048576 = 0",
        "close dst = 0", "close src = 0"};
    QStringList calls = shim.calls();
    calls[4].truncate(calls[4].indexOf("= ") + 2);
    calls[5].truncate(calls[5].indexOf("= ") + 2);
    QCOMPARE(calls, expected);
}

void TestCopyFiles::callsOfAnEmptyFile()
{
    Copy copy;
    copy.dir.file("src");
    FaultShim shim(copy.dir.path());
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(shim.count("write", "dst"), 0);
    QCOMPARE(shim.count("read", "src"), 1);
    QVERIFY(shim.calls().contains("posix_fallocate dst 0 0 = 22")); // its result does not count
    QCOMPARE(run.done, 1);
    QVERIFY(copy.dir.exists("dst"));
}

void TestCopyFiles::callsOfAFileOfSeveralBlocks()
{
    Copy copy;
    copy.dir.file("src", content(2 * block + 1));
    FaultShim shim(copy.dir.path());
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    const QStringList moved = shim.calls().filter(QRegularExpression("^(read|write) "));
    QCOMPARE(moved,
        (QStringList{"read src 1048576 = 1048576", "write dst 1048576 = 1048576",
            "read src 1048576 = 1048576", "write dst 1048576 = 1048576", "read src 1048576 = 1",
            "write dst 1 = 1", "read src 1048576 = 0"}));
}

void TestCopyFiles::keepsNoTimes()
{
    Copy copy;
    copy.dir.file("src", "x");
    copy.dir.setTimes("src", 1000000000);
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QVERIFY(infoOf(copy.dir.path("dst")).st_mtime >= before - 1);
}

void TestCopyFiles::keepsSetIdBits()
{
    Copy copy;
    copy.dir.file("src", "", 04711);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(modeOf(copy.dir.path("dst")), 04711U);
}

void TestCopyFiles::sparseFileIsFilled()
{
    Copy copy;
    copy.dir.sparseFile("src", 8 * block);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(infoOf(copy.dir.path("dst")).st_size, 8 * block);
    QVERIFY(infoOf(copy.dir.path("dst")).st_blocks * 512 >= 8 * block);
    QCOMPARE(copy.dir.read("dst"), QByteArray(8 * block, '\0'));
}

void TestCopyFiles::hardLinksBecomeFiles()
{
    TestDir dir;
    dir.file("src/one", "same");
    QCOMPARE(::link(qPrintable(dir.path("src/one")), qPrintable(dir.path("src/two"))), 0);
    dir.folder("to");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(dir.read("to/src/one"), QByteArray("same"));
    QCOMPARE(dir.read("to/src/two"), QByteArray("same"));
    QCOMPARE(infoOf(dir.path("to/src/one")).st_nlink, nlink_t(1));
}

void TestCopyFiles::ontoItself()
{
    TestDir dir;
    dir.file("src", "content");
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path("src"));
    run.answers.click("Yes");
    QVERIFY(run.run());
    QVERIFY(run.answers.texts().value(0).startsWith("Replace file:\n" + dir.path("src") + "\n"));
    // The reserved length is left, the content is not.
    QCOMPARE(dir.read("src"), QByteArray(7, '\0'));
}

void TestCopyFiles::growingFileIsCopiedToItsNewEnd()
{
    Copy copy;
    copy.dir.file("src", "first");
    FaultShim shim(copy.dir.path());
    shim.before("read", "src", 2, [&] {
        QFile file(copy.dir.path("src"));
        file.open(QIODevice::Append);
        file.write("second");
    });
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(copy.dir.read("dst"), QByteArray("firstsecond"));
    QCOMPARE(run.done, 12);
    QCOMPARE(run.total, 7);
}

void TestCopyFiles::shrinkingFileKeepsTheReservedLength()
{
    Copy copy;
    copy.dir.file("src", "content");
    FaultShim shim(copy.dir.path());
    shim.before("read", "src", 1, [&] { QCOMPARE(::truncate(qPrintable(copy.dir.path("src")), 3), 0); });
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(copy.dir.read("dst"), QByteArray("con\0\0\0\0", 7));
}

void TestCopyFiles::abortTakesEffectWithinABlock()
{
    Copy copy;
    copy.dir.file("src", content(4 * block));
    FaultShim shim(copy.dir.path());
    OperationRun run = copy.toName();
    shim.before("write", "dst", 2, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(shim.count("write", "dst"), 2);
    QCOMPARE(shim.count("read", "src"), 2);
    QCOMPARE(copy.dir.read("dst").left(2 * block), content(2 * block));
    QCOMPARE(copy.dir.read("dst").mid(2 * block), QByteArray(2 * block, '\0')); // stays in place
    QCOMPARE(run.done, 2 * block + 1);
}

void TestCopyFiles::links_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("relative") << "../some/where";
    QTest::newRow("absolute") << "/nowhere/at all";
    QTest::newRow("dangling") << "missing";
    QTest::newRow("itself") << "src";
    QTest::newRow("folder") << "/";
    QTest::newRow("UTF-8") << QStringLiteral("h\u00e9");
}

void TestCopyFiles::links()
{
    QFETCH(QString, target);
    Copy copy;
    copy.dir.link("src", target);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    char text[1024] = {};
    QVERIFY(::readlink(qPrintable(copy.dir.path("dst")), text, sizeof text) > 0);
    QCOMPARE(QString::fromUtf8(text), target);
    QCOMPARE(run.done, 0);
    QCOMPARE(run.fileCount, 1);
}

void TestCopyFiles::linkCalls()
{
    Copy copy;
    copy.dir.link("src", "t");
    FaultShim shim(copy.dir.path());
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(shim.calls(),
        (QStringList{"lstat src = 0", "lstat . = 0", "lstat src = 0", "lstat dst = -1 2",
            "readlink src 1023 = 1", "symlink dst -> t = 0"}));
}

void TestCopyFiles::linkReplacesNothing()
{
    Copy copy;
    copy.dir.link("src", "t");
    copy.dir.file("dst", "old");
    OperationRun run = copy.toName();
    run.answers.click("Yes").click("Ignore");
    QVERIFY(run.run());
    QVERIFY(run.answers.texts().value(0).startsWith("Replace file:\n"));
    QCOMPARE(run.answers.texts().value(1),
        "Unable to create symbolic link:\n" + copy.dir.path("dst") + "\n" + reason(EEXIST));
    QCOMPARE(copy.dir.read("dst"), QByteArray("old"));
}

void TestCopyFiles::linkRetryLooksAtTheSourceAgain()
{
    Copy copy;
    copy.dir.link("src", "t");
    FaultShim shim(copy.dir.path());
    shim.fail("symlink", "dst", EPERM);
    OperationRun run = copy.toName();
    run.answers.click("Retry");
    QVERIFY(run.run());
    QCOMPARE(shim.shortCalls().mid(2),
        (QStringList{"lstat src", "lstat dst", "readlink src", "symlink dst", "lstat src", "lstat dst",
            "readlink src", "symlink dst"}));
    QVERIFY(copy.dir.exists("dst"));
}

void TestCopyFiles::linkTargetIsCut()
{
    for (const int length : {1022, 1023, 1024, 3000}) {
        Copy copy;
        copy.dir.link("src", QString(length, 'x'));
        OperationRun run = copy.toName();
        QVERIFY(run.run());
        char text[4096] = {};
        QCOMPARE(::readlink(qPrintable(copy.dir.path("dst")), text, sizeof text), qMin(length, 1023));
    }
}

void TestCopyFiles::linkThatCannotBeRead()
{
    Copy copy;
    copy.dir.link("src", "t");
    FaultShim shim(copy.dir.path());
    shim.fail("readlink", "src", EIO);
    OperationRun run = copy.toName();
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to create symbolic link:\n" + copy.dir.path("dst") + "\n" + reason(EIO)});
    QVERIFY(!copy.dir.exists("dst"));
}

void TestCopyFiles::specialFilesDoNotHang()
{
    TestDir dir;
    dir.fifo("src/fifo");
    dir.file("src/z", "after");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(dir.path("src/socket"));
    QVERIFY(path.size() < int(sizeof address.sun_path));
    qstrcpy(address.sun_path, path.constData());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    QCOMPARE(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    const bool device = ::mknod(qPrintable(dir.path("src/null")), S_IFCHR | 0600, makedev(1, 3)) == 0;
    dir.folder("to");

    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    ::close(socket);
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open source file:\n" + dir.path("src/socket") + "\n" + reason(ENXIO)});
    QCOMPARE(dir.read("to/src/z"), QByteArray("after"));
    QVERIFY(S_ISREG(infoOf(dir.path("to/src/fifo")).st_mode));
    QVERIFY(!device || infoOf(dir.path("to/src/null")).st_size == 0);
    QVERIFY(!dir.exists("to/src/socket"));
}

void TestCopyFiles::endlessDeviceCanBeAborted()
{
    TestDir dir("/dev/shm");
    if (::mknod(qPrintable(dir.path("src")), S_IFCHR | 0600, makedev(1, 5)) != 0) {
        QSKIP("only root makes devices");
    }
    const int probe = ::open(qPrintable(dir.path("src")), O_RDONLY | O_CLOEXEC);
    if (probe < 0) {
        QSKIP("devices are not opened on this file system");
    }
    ::close(probe);
    FaultShim shim(dir.path());
    OperationRun run(OpCopyTo, {dir.path("src")}, dir.path("dst"));
    shim.before("read", "src", 10, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(shim.count("read", "src"), 10);
    QCOMPARE(infoOf(dir.path("dst")).st_size, 10 * block);
}

void TestCopyFiles::destinationFifoDoesNotHang()
{
    Copy copy;
    copy.dir.file("src", "x");
    copy.dir.fifo("dst");
    OperationRun run = copy.toName();
    run.answers.click("Yes").click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts().value(1),
        "Unable to open destination file:\n" + copy.dir.path("dst") + "\n" + reason(ENXIO));
}

VANTREL_TEST_MAIN(TestCopyFiles)
#include "tst_CopyFiles.moc"
