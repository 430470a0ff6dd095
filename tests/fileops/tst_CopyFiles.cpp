#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "tests/support/FaultShim.h"
#include "tests/support/OperationRun.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDateTime>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int block = 1048576;

struct stat infoOf(const QString& path)
{
    struct stat info = {};
    ::lstat(QFile::encodeName(path).constData(), &info);
    return info;
}

unsigned modeOf(const QString& path)
{
    return infoOf(path).st_mode & 07777;
}

/// Content in which every place is different from its neighbours.
QByteArray content(int bytes)
{
    QByteArray text(bytes, '\0');
    for (int i = 0; i < bytes; ++i) {
        text[i] = static_cast<char>((i * 7 + i / 251) & 0xff);
    }
    return text;
}

QString reason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

/// A copy of "src", which the test fills, to the name "dst" or into the folder "to".
struct Copy
{
    OperationRun toName() { return {OpCopyTo, {dir.path("src")}, dir.path("dst")}; }
    TestDir dir;
};

} // namespace

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
    void sourceNotFound_data();
    void sourceNotFound();
    void replaceQuestion();
    void replaceAnswers_data();
    void replaceAnswers();
    void replaceAllAsksNoMore();
    void sourceNotOpened_data();
    void sourceNotOpened();
    void destinationNotOpened_data();
    void destinationNotOpened();
    void descriptorZeroIsAFailure();
    void preparationsDoNotCount_data();
    void preparationsDoNotCount();
    void modeCountsForAnEmptyFile();
    void modeDoesNotCountBeforeAWrite();
    void writeErrorOnTheLastBlock_data();
    void writeErrorOnTheLastBlock();
    void writeErrorBeforeTheLastBlockIsPassedOver();
    void retryOfAWriteAsksToReplaceAgain();
    void shortWriteIsPassedOver();
    void shortReadsStillGiveAll();
    void readErrorEndsTheCopy();
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

    // Trees.
    void treeCalls();
    void treeIsComplete();
    void mergesIntoAFolder();
    void folderModes();
    void folderNotMade_data();
    void folderNotMade();
    void folderNotListed_data();
    void folderNotListed();
    void vanishedItemIsTakenForAFolder();
    void vanishedEntryIsTakenForAFile();
    void linkToAFolderIsNotFollowed();
    void namesThatAreNotUtf8();
    void abortBetweenEntries();
    void thousandFoldersDeep();
    void pathsUpToTheLimit();
    void noDescriptorIsLeft();
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

void TestCopyFiles::sourceNotFound_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("copied");
    QTest::addColumn<int>("aborted");
    QTest::addColumn<int>("ignoring");
    QTest::newRow("Retry") << "Retry" << true << 0 << 0;
    QTest::newRow("Ignore") << "Ignore" << false << 0 << 0;
    QTest::newRow("IgnoreAll") << "IgnoreAll" << false << 0 << 1;
    QTest::newRow("Abort") << "Abort" << false << 1 << 0;
}

void TestCopyFiles::sourceNotFound()
{
    QFETCH(QString, button);
    Copy copy;
    copy.dir.file("src", "x");
    FaultShim shim(copy.dir.path());
    shim.fail("lstat", "src", ENOENT, 2);
    OperationRun run = copy.toName();
    run.answers.click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Cannot find source file:\n" + copy.dir.path("src") + "\n" + reason(ENOENT)});
    QTEST(copy.dir.exists("dst"), "copied");
    QTEST(run.abort, "aborted");
    QTEST(run.ignoreAll, "ignoring");
    QCOMPARE(run.done, copy.dir.exists("dst") ? 2 : 0);
}

void TestCopyFiles::replaceQuestion()
{
    Copy copy;
    copy.dir.sparseFile("src", 1048576);
    copy.dir.setTimes("src", 1700000000);
    copy.dir.sparseFile("dst", 1234);
    copy.dir.setTimes("dst", 86399);
    OperationRun run = copy.toName();
    run.answers.click("No");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Replace file:\n" + copy.dir.path("dst")
            + "\n1970-01-01 23:59:59 1,234 bytes\n\nWith file:\n" + copy.dir.path("src")
            + "\n2023-11-14 22:13:20 1,048,576 bytes"});
}

void TestCopyFiles::replaceAnswers_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QByteArray>("left");
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("aborted");
    QTest::addColumn<int>("replacing");
    QTest::addColumn<qint64>("doneBytes");
    QTest::newRow("Yes") << "Yes" << QByteArray("new") << int(AnswerYes) << 0 << 0 << qint64(4);
    QTest::newRow("YesAll") << "YesAll" << QByteArray("new") << int(AnswerYesAll) << 0 << 1 << qint64(4);
    QTest::newRow("No") << "No" << QByteArray("old content") << int(AnswerNo) << 0 << 0 << qint64(0);
    QTest::newRow("Abort") << "Abort" << QByteArray("old content") << int(AnswerAbort) << 1 << 0 << qint64(0);
}

void TestCopyFiles::replaceAnswers()
{
    QFETCH(QString, button);
    Copy copy;
    copy.dir.file("src", "new");
    copy.dir.file("dst", "old content");
    OperationRun run = copy.toName();
    run.answers.click(button);
    QVERIFY(run.run());
    QTEST(copy.dir.read("dst"), "left");
    QTEST(run.answer, "answer");
    QTEST(run.abort, "aborted");
    QTEST(run.replaceAll, "replacing");
    QTEST(run.done, "doneBytes");
}

void TestCopyFiles::replaceAllAsksNoMore()
{
    TestDir dir;
    for (int i = 0; i < 5; ++i) {
        dir.file(QStringLiteral("src/%1").arg(i), "new");
        dir.file(QStringLiteral("to/src/%1").arg(i), "old");
    }
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("YesAll");
    QVERIFY(run.run());
    QCOMPARE(run.answers.seen().size(), 1);
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(dir.read(QStringLiteral("to/src/%1").arg(i)), QByteArray("new"));
    }
}

void TestCopyFiles::sourceNotOpened_data()
{
    sourceNotFound_data();
}

void TestCopyFiles::sourceNotOpened()
{
    QFETCH(QString, button);
    Copy copy;
    copy.dir.file("src", "x");
    FaultShim shim(copy.dir.path());
    shim.fail("open", "src", EACCES);
    OperationRun run = copy.toName();
    run.answers.click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open source file:\n" + copy.dir.path("src") + "\n" + reason(EACCES)});
    QTEST(copy.dir.exists("dst"), "copied");
    QTEST(run.abort, "aborted");
    QTEST(run.ignoreAll, "ignoring");
    QCOMPARE(run.done, copy.dir.exists("dst") ? 2 : 0);
    // Opened again at once, without another look at the files.
    QCOMPARE(shim.count("lstat", "src"), 2);
    QCOMPARE(shim.count("open", "src"), button == "Retry" ? 2 : 1);
}

void TestCopyFiles::destinationNotOpened_data()
{
    sourceNotFound_data();
}

void TestCopyFiles::destinationNotOpened()
{
    QFETCH(QString, button);
    Copy copy;
    copy.dir.file("src", "x");
    FaultShim shim(copy.dir.path());
    shim.fail("open", "dst", EROFS);
    OperationRun run = copy.toName();
    QString callBeforeTheQuestion;
    run.answers.meanwhile([&] { callBeforeTheQuestion = shim.calls().constLast(); }).click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open destination file:\n" + copy.dir.path("dst") + "\n" + reason(EROFS)});
    QCOMPARE(callBeforeTheQuestion, QString("close src = 0"));
    QCOMPARE(copy.dir.read("dst"), QByteArray(button == "Retry" ? "x" : ""));
    QTEST(copy.dir.exists("dst"), "copied");
    QTEST(run.abort, "aborted");
    QTEST(run.ignoreAll, "ignoring");
    if (button == "Retry") {
        const QStringList calls = shim.shortCalls();
        QCOMPARE(calls.value(calls.indexOf("close src") + 1), QString("open dst"));
        QCOMPARE(shim.count("lstat", "src"), 2);
    }
}

void TestCopyFiles::descriptorZeroIsAFailure()
{
    Copy copy;
    copy.dir.file("src", "x");
    const int input = ::fcntl(0, F_DUPFD_CLOEXEC, 10);
    FaultShim shim(copy.dir.path());
    shim.before("open", "src", 1, [] { ::close(0); });
    shim.before("open", "src", 2, [&] { ::dup2(input < 0 ? 2 : input, 0); });
    OperationRun run = copy.toName();
    run.answers.click("Retry");
    QVERIFY(run.run());
    QVERIFY(run.answers.texts().value(0).startsWith(
        "Unable to open source file:\n" + copy.dir.path("src") + "\n"));
    QCOMPARE(copy.dir.read("dst"), QByteArray("x"));
    // It is not left open either.
    QVERIFY(shim.calls().contains("open src r = 0"));
    QCOMPARE(shim.count("close", "src"), 2);
    ::close(input);
}

void TestCopyFiles::preparationsDoNotCount_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QString>("path");
    for (const char* function : {"ftruncate", "posix_fallocate", "fchown", "posix_fadvise"}) {
        QTest::newRow(function) << QByteArray(function) << "dst";
    }
    QTest::newRow("posix_fadvise source") << QByteArray("posix_fadvise") << "src";
    QTest::newRow("close") << QByteArray("close") << "dst";
}

void TestCopyFiles::preparationsDoNotCount()
{
    QFETCH(QByteArray, function);
    QFETCH(QString, path);
    for (const char* text : {"", "hello"}) {
        Copy copy;
        copy.dir.file("src", text);
        FaultShim shim(copy.dir.path());
        shim.fail(function.constData(), path, EIO, 1, FaultShim::always);
        OperationRun run = copy.toName();
        QVERIFY(run.run());
        QCOMPARE(shim.count(function.constData(), path), 1);
        QCOMPARE(run.answers.texts(), QStringList());
        QCOMPARE(copy.dir.read("dst"), QByteArray(text));
    }
}

void TestCopyFiles::modeCountsForAnEmptyFile()
{
    Copy copy;
    copy.dir.file("src");
    FaultShim shim(copy.dir.path());
    shim.fail("fchmod", "dst", EPERM);
    OperationRun run = copy.toName();
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error writing file:\n" + copy.dir.path("dst") + "\n" + reason(EPERM)});
    QCOMPARE(run.done, 1);
}

void TestCopyFiles::modeDoesNotCountBeforeAWrite()
{
    Copy copy;
    copy.dir.file("src", "x");
    FaultShim shim(copy.dir.path());
    shim.fail("fchmod", "dst", EPERM);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
}

void TestCopyFiles::writeErrorOnTheLastBlock_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("aborted");
    QTest::addColumn<int>("ignoring");
    QTest::newRow("Ignore") << "Ignore" << 0 << 0;
    QTest::newRow("IgnoreAll") << "IgnoreAll" << 0 << 1;
    QTest::newRow("Abort") << "Abort" << 1 << 0;
}

void TestCopyFiles::writeErrorOnTheLastBlock()
{
    QFETCH(QString, button);
    Copy copy;
    copy.dir.file("src", content(block + 5));
    FaultShim shim(copy.dir.path());
    shim.fail("write", "dst", ENOSPC, 2);
    OperationRun run = copy.toName();
    QStringList callsBefore;
    run.answers.meanwhile([&] { callsBefore = shim.shortCalls().mid(shim.shortCalls().size() - 2); })
        .click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error writing file:\n" + copy.dir.path("dst") + "\n" + reason(ENOSPC)});
    QCOMPARE(callsBefore, (QStringList{"close dst", "close src"}));
    QTEST(run.abort, "aborted");
    QTEST(run.ignoreAll, "ignoring");
    // What was read counts, written or not, and the file's own 1.
    QCOMPARE(run.done, block + 5 + 1);
    QVERIFY(copy.dir.exists("dst"));
    QCOMPARE(copy.dir.read("dst").left(block), content(block));
}

void TestCopyFiles::writeErrorBeforeTheLastBlockIsPassedOver()
{
    Copy copy;
    copy.dir.file("src", content(2 * block));
    FaultShim shim(copy.dir.path());
    shim.fail("write", "dst", EIO, 1);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    QCOMPARE(shim.count("write", "dst"), 2);
    QCOMPARE(run.done, 2 * block + 1);
}

void TestCopyFiles::retryOfAWriteAsksToReplaceAgain()
{
    Copy copy;
    copy.dir.file("src", "hello");
    FaultShim shim(copy.dir.path());
    shim.fail("write", "dst", ENOSPC);
    OperationRun run = copy.toName();
    run.answers.click("Retry").click("Yes");
    QVERIFY(run.run());
    QCOMPARE(run.answers.seen().size(), 2);
    QVERIFY(run.answers.texts().value(0).startsWith("Error writing file:\n"));
    QVERIFY(run.answers.texts().value(1).startsWith("Replace file:\n"));
    QCOMPARE(copy.dir.read("dst"), QByteArray("hello"));
    QCOMPARE(run.done, 12); // both rounds count
    QCOMPARE(shim.count("lstat", "src"), 3);
}

void TestCopyFiles::shortWriteIsPassedOver()
{
    Copy copy;
    copy.dir.file("src", "hello");
    FaultShim shim(copy.dir.path());
    shim.shorten("write", "dst", 2);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    QCOMPARE(shim.count("write", "dst"), 1);
    QCOMPARE(copy.dir.read("dst"), QByteArray("he\0\0\0", 5)); // of the reserved length
    QCOMPARE(run.done, 6);
}

void TestCopyFiles::shortReadsStillGiveAll()
{
    Copy copy;
    copy.dir.file("src", content(1000));
    FaultShim shim(copy.dir.path());
    shim.shorten("read", "src", 300);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(copy.dir.read("dst"), content(1000));
    QCOMPARE(run.done, 1001);
}

void TestCopyFiles::readErrorEndsTheCopy()
{
    Copy copy;
    copy.dir.file("src", content(2 * block));
    FaultShim shim(copy.dir.path());
    shim.fail("read", "src", EIO, 2);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    QCOMPARE(shim.count("read", "src"), 2);
    QCOMPARE(copy.dir.read("dst"), content(block) + QByteArray(block, '\0'));
    QCOMPARE(run.done, block + 1);
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
    shim.before("read", "src", 1, [&] { ::truncate(qPrintable(copy.dir.path("src")), 3); });
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

void TestCopyFiles::treeCalls()
{
    TestDir dir;
    dir.file("src/sub/f", "", 0600);
    dir.setMode("src", 0750);
    dir.setMode("src/sub", 0700);
    dir.folder("to");
    FaultShim shim(dir.path());
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    QVERIFY(run.run());
    QStringList calls;
    const QStringList all = shim.calls();
    for (const QString& call : all) {
        const QStringList words = call.split(' ');
        if (words.at(0) != "readdir") {
            calls.append(words.mid(0, words.indexOf("=")).join(' '));
        }
    }
    QCOMPARE(calls.mid(0, 22),
        (QStringList{// counting
            "lstat src", "opendir src", "lstat src/sub", "lstat src/sub", "opendir src/sub",
            "lstat src/sub/f", "closedir src/sub", "closedir src",
            // the folders on the way
            "lstat .", "lstat to",
            // the copy
            "lstat src", "lstat to/src", "mkdir to/src 0750", "opendir src", "lstat src/sub", "lstat src/sub",
            "lstat to/src/sub", "mkdir to/src/sub 0700", "opendir src/sub", "lstat src/sub/f",
            "lstat src/sub/f", "lstat to/src/sub/f"}));
    QCOMPARE(calls.mid(calls.size() - 4),
        (QStringList{"close to/src/sub/f", "close src/sub/f", "closedir src/sub", "closedir src"}));
}

void TestCopyFiles::treeIsComplete()
{
    TestDir dir;
    dir.file("src/a/b/c/one", content(12345));
    dir.file("src/a/.hidden", "h");
    dir.file("src/.folder/two", "2");
    dir.file("src/name with\nnewline and <b>bold<i>", "3");
    dir.link("src/a/link", "b/c/one");
    dir.folder("src/empty");
    dir.folder("to");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(dir.tree("to/src"), dir.tree("src"));
    QCOMPARE(QProcess::execute("diff", {"-r", "--no-dereference", dir.path("src"), dir.path("to/src")}), 0);
    QCOMPARE(run.fileCount, 5);
    QCOMPARE(run.folderCount, 6);
}

void TestCopyFiles::mergesIntoAFolder()
{
    TestDir dir;
    dir.file("src/sub/new", "n");
    dir.file("src/sub/both", "from src");
    dir.file("to/src/sub/both", "from to");
    dir.file("to/src/sub/old", "o");
    dir.setMode("to/src/sub", 0711);
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Yes");
    QVERIFY(run.run());
    QCOMPARE(run.answers.seen().size(), 1);
    QCOMPARE(dir.tree("to/src"), (QStringList{"sub/", "sub/both", "sub/new", "sub/old"}));
    QCOMPARE(dir.read("to/src/sub/both"), QByteArray("from src"));
    QCOMPARE(dir.read("to/src/sub/old"), QByteArray("o"));
    QCOMPARE(modeOf(dir.path("to/src/sub")), 0711U);
}

void TestCopyFiles::folderModes()
{
    TestDir dir;
    dir.folder("src/closed", 0700);
    dir.folder("src/sticky", 01777);
    dir.folder("to");
    const mode_t before = ::umask(0);
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    const bool ended = run.run();
    ::umask(before);
    QVERIFY(ended);
    QCOMPARE(modeOf(dir.path("to/src/closed")), 0700U);
    QCOMPARE(modeOf(dir.path("to/src/sticky")), 01777U);
}

void TestCopyFiles::folderNotMade_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<QStringList>("later");
    QTest::newRow("Retry") << "Retry" << QStringList{"src/", "src/f"} << QStringList{};
    QTest::newRow("Ignore") << "Ignore" << QStringList{} << QStringList{"Unable to open destination file:\n"};
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{} << QStringList{};
    QTest::newRow("Abort") << "Abort" << QStringList{} << QStringList{};
}

void TestCopyFiles::folderNotMade()
{
    QFETCH(QString, button);
    QFETCH(QStringList, later);
    TestDir dir;
    dir.file("src/f", "x");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.fail("mkdir", "to/src", EDQUOT);
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click(button);
    for (const QString& text : qAsConst(later)) {
        Q_UNUSED(text)
        run.answers.click("Ignore");
    }
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts().value(0),
        "Error creating directory:\n" + dir.path("to/src") + "\n" + reason(EDQUOT));
    QCOMPARE(run.answers.seen().size(), 1 + later.size());
    if (!later.isEmpty()) {
        QCOMPARE(run.answers.texts().value(1), later.first() + dir.path("to/src/f") + "\n" + reason(ENOENT));
    }
    QTEST(dir.tree("to"), "left");
    QCOMPARE(shim.count("mkdir", "to/src"), button == "Retry" ? 2 : 1);
    QCOMPARE(run.abort, button == "Abort" ? 1 : 0);
    // Ignore and IgnoreAll still list the folder and try its files; Abort does not.
    QCOMPARE(shim.count("opendir", "src"), button == "Abort" ? 1 : 2);
}

void TestCopyFiles::folderNotListed_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("Retry") << "Retry" << QStringList{"src/", "src/f"};
    QTest::newRow("Ignore") << "Ignore" << QStringList{"src/"};
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{"src/"};
    QTest::newRow("Abort") << "Abort" << QStringList{"src/"};
}

void TestCopyFiles::folderNotListed()
{
    QFETCH(QString, button);
    TestDir dir;
    dir.file("src/f", "x");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.fail("opendir", "src", EMFILE, 2);
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error reading directory:\n" + dir.path("src") + "\n" + reason(EMFILE)});
    QTEST(dir.tree("to"), "left");
    QCOMPARE(run.abort, button == "Abort" ? 1 : 0);
    QCOMPARE(run.ignoreAll, button == "IgnoreAll" ? 1 : 0);
}

void TestCopyFiles::vanishedItemIsTakenForAFolder()
{
    TestDir dir;
    dir.file("src", "x");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.before("lstat", "src", 2, [&] { ::unlink(qPrintable(dir.path("src"))); });
    const mode_t before = ::umask(0);
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    const bool ended = run.run();
    ::umask(before);
    QVERIFY(ended);
    QCOMPARE(run.answers.texts(),
        QStringList{"Error reading directory:\n" + dir.path("src") + "\n" + reason(ENOENT)});
    QCOMPARE(dir.tree("to"), QStringList{"src/"});
    QCOMPARE(modeOf(dir.path("to/src")), 0775U);
}

void TestCopyFiles::vanishedEntryIsTakenForAFile()
{
    TestDir dir;
    dir.file("src/f", "x");
    dir.folder("to");
    FaultShim shim(dir.path());
    shim.before("lstat", "src/f", 2, [&] { ::unlink(qPrintable(dir.path("src/f"))); });
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Cannot find source file:\n" + dir.path("src/f") + "\n" + reason(ENOENT)});
}

void TestCopyFiles::linkToAFolderIsNotFollowed()
{
    TestDir dir;
    dir.file("outside/f", "x");
    dir.folder("src");
    dir.link("src/link", dir.path("outside"));
    dir.link("src/loop", ".");
    dir.folder("to");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    QVERIFY(run.run());
    QCOMPARE(dir.tree("to"), (QStringList{"src/", "src/link@", "src/loop@"}));
}

void TestCopyFiles::namesThatAreNotUtf8()
{
    TestDir dir;
    dir.folder("src");
    dir.folder("to");
    const QByteArray base = QFile::encodeName(dir.path());
    const QByteArray folder = "/src/fold\xff\xfe";
    const QByteArray file = folder + "/na\xe9me";
    QCOMPARE(::mkdir((base + folder).constData(), 0755), 0);
    const int fd = ::open((base + file).constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    QVERIFY(fd >= 0);
    QCOMPARE(::write(fd, "text", 4), 4);
    ::close(fd);
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    QVERIFY(run.run());
    struct stat info;
    QCOMPARE(::lstat((base + "/to" + file).constData(), &info), 0);
    QCOMPARE(info.st_size, 4);
    QCOMPARE(run.lastPath, QString::fromUtf8(base + file));
}

void TestCopyFiles::abortBetweenEntries()
{
    TestDir dir;
    dir.files("src", 10);
    dir.folder("to");
    FaultShim shim(dir.path());
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    shim.before("fchmod", "*", 3, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(dir.tree("to/src").size(), 3);
    QCOMPARE(shim.shortCalls(true).constLast(), QString("closedir src"));
}

void TestCopyFiles::thousandFoldersDeep()
{
    rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit before = limit;
    limit.rlim_cur = qMin<rlim_t>(limit.rlim_max, 4096);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    TestDir dir;
    QString deep = "src";
    for (int i = 1; i < 1000; ++i) {
        deep += "/d";
    }
    dir.file(deep + "/f", "deep");
    dir.folder("to");
    {
        OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
        QVERIFY(run.run());
        QCOMPARE(run.folderCount, 1000);
        QCOMPARE(run.answers.texts(), QStringList());
    }
    QCOMPARE(dir.read("to/" + deep + "/f"), QByteArray("deep"));
    {
        OperationRun run(OpDelete, {dir.path("to/src")});
        run.answers.click("Yes");
        QVERIFY(run.run());
    }
    ::setrlimit(RLIMIT_NOFILE, &before);
    QVERIFY(!dir.exists("to/src"));
}

void TestCopyFiles::pathsUpToTheLimit()
{
    // The source path has room below PATH_MAX for what the longer destination has not.
    TestDir dir;
    const QString name(200, 'n');
    QString deep = "src";
    while (dir.path(deep).size() + name.size() + 1 < 4000) {
        deep += "/" + name;
    }
    dir.folder(deep);
    const QString file = QString(4095 - dir.path(deep).size() - 1, 'f');
    dir.file(deep + "/" + file, "end");
    dir.folder("to");
    OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.fileCount, 1);
    QCOMPARE(run.answers.texts(),
        QStringList{"Unable to open destination file:\n" + dir.path("to/" + deep + "/" + file) + "\n"
            + reason(ENAMETOOLONG)});
    QVERIFY(dir.exists("to/" + deep));
}

void TestCopyFiles::noDescriptorIsLeft()
{
    const int before = descriptorCount();
    for (const char* function : {"open", "lstat", "mkdir", "opendir", "symlink", "write", "fchmod"}) {
        for (const char* button : {"Ignore", "IgnoreAll", "Abort"}) {
            TestDir dir;
            dir.file("src/f", "x");
            dir.file("src/sub/empty");
            dir.link("src/link", "t");
            dir.folder("to");
            FaultShim shim(dir.path());
            shim.fail(function, "*", EIO, 3, FaultShim::always);
            OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
            run.answers.otherwise({button});
            QVERIFY(run.run());
        }
    }
    QTRY_COMPARE(descriptorCount(), before);
}

VANTREL_TEST_MAIN(TestCopyFiles)
#include "tst_CopyFiles.moc"
