#include "fileops/MProgress.h"

#include "tests/support/FaultShim.h"
#include "tests/support/OneCopy.h"
#include "tests/support/OperationRun.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

/// What the copy of one file asks, what comes of the answers, and which faults it passes over.
class TestCopyFilesQuestions : public QObject
{
    Q_OBJECT

private slots:
    // Before a byte is read.
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

    // With both files open.
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
};

void TestCopyFilesQuestions::sourceNotFound_data()
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

void TestCopyFilesQuestions::sourceNotFound()
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

void TestCopyFilesQuestions::replaceQuestion()
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

void TestCopyFilesQuestions::replaceAnswers_data()
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

void TestCopyFilesQuestions::replaceAnswers()
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

void TestCopyFilesQuestions::replaceAllAsksNoMore()
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

void TestCopyFilesQuestions::sourceNotOpened_data()
{
    sourceNotFound_data();
}

void TestCopyFilesQuestions::sourceNotOpened()
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

void TestCopyFilesQuestions::destinationNotOpened_data()
{
    sourceNotFound_data();
}

void TestCopyFilesQuestions::destinationNotOpened()
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

void TestCopyFilesQuestions::descriptorZeroIsAFailure()
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

void TestCopyFilesQuestions::preparationsDoNotCount_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QString>("path");
    for (const char* function : {"ftruncate", "posix_fallocate", "fchown", "posix_fadvise"}) {
        QTest::newRow(function) << QByteArray(function) << "dst";
    }
    QTest::newRow("posix_fadvise source") << QByteArray("posix_fadvise") << "src";
    QTest::newRow("close") << QByteArray("close") << "dst";
}

void TestCopyFilesQuestions::preparationsDoNotCount()
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

void TestCopyFilesQuestions::modeCountsForAnEmptyFile()
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

void TestCopyFilesQuestions::modeDoesNotCountBeforeAWrite()
{
    Copy copy;
    copy.dir.file("src", "x");
    FaultShim shim(copy.dir.path());
    shim.fail("fchmod", "dst", EPERM);
    OperationRun run = copy.toName();
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
}

void TestCopyFilesQuestions::writeErrorOnTheLastBlock_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("aborted");
    QTest::addColumn<int>("ignoring");
    QTest::newRow("Ignore") << "Ignore" << 0 << 0;
    QTest::newRow("IgnoreAll") << "IgnoreAll" << 0 << 1;
    QTest::newRow("Abort") << "Abort" << 1 << 0;
}

void TestCopyFilesQuestions::writeErrorOnTheLastBlock()
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

void TestCopyFilesQuestions::writeErrorBeforeTheLastBlockIsPassedOver()
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

void TestCopyFilesQuestions::retryOfAWriteAsksToReplaceAgain()
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

void TestCopyFilesQuestions::shortWriteIsPassedOver()
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

void TestCopyFilesQuestions::shortReadsStillGiveAll()
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

void TestCopyFilesQuestions::readErrorEndsTheCopy()
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

VANTREL_TEST_MAIN(TestCopyFilesQuestions)
#include "tst_CopyFilesQuestions.moc"
