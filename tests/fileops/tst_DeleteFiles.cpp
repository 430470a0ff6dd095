#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "tests/support/FaultShim.h"
#include "tests/support/OperationRun.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QRegularExpression>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

class TestDeleteFiles : public QObject
{
    Q_OBJECT

private slots:
    void singleItemsAskNothing_data();
    void singleItemsAskNothing();
    void calls();
    void topLevelFileCalls();
    void folderWithOneFileAsks();
    void answers_data();
    void answers();
    void keptFileKeepsItsFolder();
    void yesAllAsksNoMore();
    void topLevelFilesAddNothingToDone();
    void doneCountsFilesInFolders();
    void doneCountsFilesThatAreKept();
    void fileNotDeleted_data();
    void fileNotDeleted();
    void folderNotOpened_data();
    void folderNotOpened();
    void entryNotFound_data();
    void entryNotFound();
    void folderNotRemoved_data();
    void folderNotRemoved();
    void vanishedItemIsTakenForAFolder();
    void topIsNeverDeleted_data();
    void topIsNeverDeleted();
    void linksAreRemovedThemselves();
    void specialFiles();
    void namesThatAreNotUtf8();
    void abortInTheMiddle();
    void abortAfterTheLastEntry();
    void currentPath();
    void noDescriptorIsLeft();
};

void TestDeleteFiles::singleItemsAskNothing_data()
{
    QTest::addColumn<int>("what");
    QTest::newRow("file") << 0;
    QTest::newRow("empty folder") << 1;
    QTest::newRow("link") << 2;
    QTest::newRow("fifo") << 3;
}

void TestDeleteFiles::singleItemsAskNothing()
{
    QFETCH(int, what);
    TestDir dir;
    const QString item = what == 0 ? dir.file("item", "x")
        : what == 1                ? dir.folder("item")
        : what == 2                ? dir.link("item", "/")
                                   : dir.fifo("item");
    OperationRun run(OpDelete, {item});
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    QCOMPARE(dir.tree(), QStringList());
    QCOMPARE(run.deleteAll, 1);
    QCOMPARE(run.done, 0);
}

void TestDeleteFiles::calls()
{
    TestDir dir;
    dir.file("item/sub/f", "123");
    FaultShim shim(dir.path());
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("Yes");
    QVERIFY(run.run());
    const QStringList calls = shim.shortCalls(true).filter(QRegularExpression("^(?!readdir)"));
    QCOMPARE(calls,
        (QStringList{// counting
            "lstat item", "opendir item", "lstat item/sub", "lstat item/sub", "opendir item/sub",
            "lstat item/sub/f", "closedir item/sub", "closedir item",
            // deleting
            "lstat item", "opendir item", "lstat item/sub", "lstat item/sub", "opendir item/sub",
            "lstat item/sub/f", "remove item/sub/f", "closedir item/sub", "remove item/sub", "closedir item",
            "remove item"}));
}

void TestDeleteFiles::topLevelFileCalls()
{
    TestDir dir;
    dir.file("item", "123");
    FaultShim shim(dir.path());
    OperationRun run(OpDelete, {dir.path("item")});
    QVERIFY(run.run());
    QCOMPARE(shim.shortCalls(true), (QStringList{"lstat item", "lstat item", "remove item"}));
}

void TestDeleteFiles::folderWithOneFileAsks()
{
    TestDir dir;
    dir.file("item/f", "x");
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("Yes");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Delete file:\n" + dir.path("item/f")});
    QCOMPARE(run.deleteAll, 0);
    QCOMPARE(dir.tree(), QStringList());
}

void TestDeleteFiles::answers_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<int>("aborted");
    QTest::addColumn<int>("all");
    QTest::addColumn<int>("answer");
    QTest::newRow("Yes") << "Yes" << QStringList{} << 0 << 0 << int(AnswerYes);
    QTest::newRow("YesAll") << "YesAll" << QStringList{} << 0 << 1 << int(AnswerYesAll);
    QTest::newRow("No") << "No" << QStringList{"one"} << 0 << 0 << int(AnswerNo);
    QTest::newRow("Abort") << "Abort" << QStringList{"one"} << 1 << 0 << int(AnswerAbort);
}

void TestDeleteFiles::answers()
{
    QFETCH(QString, button);
    TestDir dir;
    dir.file("one", "x");
    dir.folder("two");
    OperationRun run(OpDelete, {dir.path("two"), dir.path("one")});
    run.answers.click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Delete file:\n" + dir.path("one")});
    QTEST(dir.tree(), "left");
    QTEST(run.abort, "aborted");
    QTEST(run.deleteAll, "all");
    QTEST(run.answer, "answer");
}

void TestDeleteFiles::keptFileKeepsItsFolder()
{
    TestDir dir;
    dir.file("item/f", "x");
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("No").click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts().value(1),
        "Error deleting directory:\n" + dir.path("item") + "\n" + reason(ENOTEMPTY));
    QCOMPARE(dir.tree(), (QStringList{"item/", "item/f"}));
}

void TestDeleteFiles::yesAllAsksNoMore()
{
    TestDir dir;
    dir.files("a", 5);
    dir.files("b", 5);
    OperationRun run(OpDelete, {dir.path("a"), dir.path("b")});
    run.answers.click("No").click("YesAll").click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.seen().size(), 3);
    QVERIFY(run.answers.texts().value(2).startsWith("Error deleting directory:\n" + dir.path("a")));
    QCOMPARE(dir.tree().size(), 2); // the folder and the file that was kept
}

void TestDeleteFiles::topLevelFilesAddNothingToDone()
{
    TestDir dir;
    dir.file("one", "12345");
    dir.file("two", "12345");
    OperationRun run(OpDelete, {dir.path("one"), dir.path("two")});
    run.answers.click("YesAll");
    QVERIFY(run.run());
    QCOMPARE(run.total, 13);
    QCOMPARE(run.done, 0);
    QCOMPARE(dir.tree(), QStringList());
}

void TestDeleteFiles::doneCountsFilesInFolders()
{
    TestDir dir;
    dir.file("item/one", "12345");
    dir.file("item/sub/two", "123");
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("YesAll");
    QVERIFY(run.run());
    QCOMPARE(run.done, 10);
    QCOMPARE(run.total, 11);
}

void TestDeleteFiles::doneCountsFilesThatAreKept()
{
    TestDir dir;
    dir.file("item/one", "12345");
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("No").click("IgnoreAll");
    QVERIFY(run.run());
    QCOMPARE(run.done, 6);
}

void TestDeleteFiles::fileNotDeleted_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<int>("aborted");
    QTest::addColumn<int>("ignoring");
    QTest::newRow("Retry") << "Retry" << QStringList{} << 0 << 0;
    QTest::newRow("Ignore") << "Ignore" << QStringList{"one"} << 0 << 0;
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{"one"} << 0 << 1;
    QTest::newRow("Abort") << "Abort" << QStringList{"one", "two"} << 1 << 0;
}

void TestDeleteFiles::fileNotDeleted()
{
    QFETCH(QString, button);
    TestDir dir;
    dir.file("one", "x");
    dir.file("two", "x");
    FaultShim shim(dir.path());
    shim.fail("remove", "one", EPERM);
    OperationRun run(OpDelete, {dir.path("one"), dir.path("two")});
    run.answers.click("YesAll").click(button);
    QVERIFY(run.run());
    // Retry does not ask about the file again.
    QCOMPARE(run.answers.texts(),
        (QStringList{"Delete file:\n" + dir.path("one"),
            "Error deleting file:\n" + dir.path("one") + "\n" + reason(EPERM)}));
    QTEST(dir.tree(), "left");
    QTEST(run.abort, "aborted");
    QTEST(run.ignoreAll, "ignoring");
    QCOMPARE(shim.count("remove", "one"), button == "Retry" ? 2 : 1);
}

void TestDeleteFiles::folderNotOpened_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("Retry") << "Retry" << QStringList{};
    QTest::newRow("Ignore") << "Ignore" << QStringList{"item/"};
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{"item/"};
    QTest::newRow("Abort") << "Abort" << QStringList{"item/"};
}

void TestDeleteFiles::folderNotOpened()
{
    QFETCH(QString, button);
    TestDir dir;
    dir.folder("item");
    FaultShim shim(dir.path());
    shim.fail("opendir", "item", EACCES, 2);
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error accessing directory:\n" + dir.path("item") + "\n" + reason(EACCES)});
    QTEST(dir.tree(), "left");
    // Any answer but Retry leaves the folder, it is not tried to remove it.
    QCOMPARE(shim.count("remove", "item"), button == "Retry" ? 1 : 0);
    QCOMPARE(run.abort, button == "Abort" ? 1 : 0);
    QCOMPARE(run.ignoreAll, button == "IgnoreAll" ? 1 : 0);
}

void TestDeleteFiles::entryNotFound_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("boxes");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("Retry") << "Retry" << 1 << QStringList{};
    QTest::newRow("Ignore") << "Ignore" << 2 << QStringList{"item/", "item/f"};
    QTest::newRow("IgnoreAll") << "IgnoreAll" << 1 << QStringList{"item/", "item/f"};
    QTest::newRow("Abort") << "Abort" << 1 << QStringList{"item/", "item/f"};
}

void TestDeleteFiles::entryNotFound()
{
    QFETCH(QString, button);
    QFETCH(int, boxes);
    TestDir dir;
    dir.file("item/f", "x");
    FaultShim shim(dir.path());
    // The first for counting, which then finds nothing, so that no question is asked about the file.
    shim.fail("lstat", "item/f", EIO, 1, 2);
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click(button);
    if (boxes == 2) {
        run.answers.click("Ignore"); // the folder is not empty
    }
    QVERIFY(run.run());
    QCOMPARE(run.answers.seen().size(), boxes);
    // The folder is named, not the entry.
    QCOMPARE(
        run.answers.texts().value(0), "Error deleting directory:\n" + dir.path("item") + "\n" + reason(EIO));
    QTEST(dir.tree(), "left");
    QCOMPARE(shim.count("lstat", "item/f"), button == "Retry" ? 3 : 2);
    QCOMPARE(shim.count("remove", "item"), button == "Abort" ? 0 : 1);
}

void TestDeleteFiles::folderNotRemoved_data()
{
    folderNotOpened_data();
}

void TestDeleteFiles::folderNotRemoved()
{
    QFETCH(QString, button);
    TestDir dir;
    dir.folder("item");
    FaultShim shim(dir.path());
    shim.fail("remove", "item", EBUSY);
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click(button);
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error deleting directory:\n" + dir.path("item") + "\n" + reason(EBUSY)});
    QTEST(dir.tree(), "left");
    QCOMPARE(shim.count("remove", "item"), button == "Retry" ? 2 : 1);
}

void TestDeleteFiles::vanishedItemIsTakenForAFolder()
{
    TestDir dir;
    OperationRun run(OpDelete, {dir.path("gone")});
    run.answers.click("Ignore");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(),
        QStringList{"Error accessing directory:\n" + dir.path("gone") + "\n" + reason(ENOENT)});
    QCOMPARE(run.fileCount, 0);
}

void TestDeleteFiles::topIsNeverDeleted_data()
{
    QTest::addColumn<QString>("item");
    QTest::newRow("the top") << "/";
    QTest::newRow("spelt with a dot") << "/.";
    QTest::newRow("by a folder in it") << "/proc/..";
    QTest::newRow("nothing") << "";
}

/// No call that deletes, or lists what could be deleted, goes through while this runs.
void TestDeleteFiles::topIsNeverDeleted()
{
    QFETCH(QString, item);
    FaultShim shim("/", true);
    shim.fail("remove", "*", EPERM, 1, FaultShim::always);
    shim.fail("opendir", "*", EACCES, 1, FaultShim::always);
    QVERIFY(::remove("/tmp/vantrel-no-such-file") != 0);
    QCOMPARE(errno, EPERM); // else the shim is not there, and this would be dangerous
    const int before = shim.calls().size();
    OperationRun run(OpDelete, {item});
    run.answers.click("Retry").click("Ignore");
    QVERIFY(run.run());
    const QString report = "Error deleting directory:\n" + item + "\n" + reason(EBUSY);
    QCOMPARE(run.answers.texts(), (QStringList{report, report}));
    const QStringList calls = shim.shortCalls(true);
    QCOMPARE(calls.filter("remove").size(), before);
    QVERIFY(calls.filter("opendir").size() <= 1); // counting looks at it, nothing else does
}

void TestDeleteFiles::linksAreRemovedThemselves()
{
    TestDir dir;
    dir.file("outside/f", "x");
    dir.folder("item");
    dir.link("item/link", dir.path("outside"));
    dir.link("item/loop", ".");
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("YesAll");
    QVERIFY(run.run());
    QCOMPARE(dir.tree(), (QStringList{"outside/", "outside/f"}));
}

void TestDeleteFiles::specialFiles()
{
    TestDir dir;
    dir.fifo("item/fifo");
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("YesAll");
    QVERIFY(run.run());
    QCOMPARE(dir.tree(), QStringList());
}

void TestDeleteFiles::namesThatAreNotUtf8()
{
    TestDir dir;
    dir.folder("item");
    const QByteArray folder = QFile::encodeName(dir.path("item")) + "/\xff\xfe";
    const QByteArray file = folder + "/na\xe9me";
    QCOMPARE(::mkdir(folder.constData(), 0755), 0);
    const int fd = ::open(file.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    QVERIFY(fd >= 0);
    ::close(fd);
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("Yes");
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList{"Delete file:\n" + QString::fromUtf8(file)});
    QVERIFY(!dir.exists("item"));
}

void TestDeleteFiles::abortInTheMiddle()
{
    TestDir dir;
    dir.files("item/sub", 10);
    FaultShim shim(dir.path());
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("YesAll");
    shim.before("remove", "*", 4, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(dir.tree("item/sub").size(), 6);
    const QStringList calls = shim.shortCalls(true).filter(QRegularExpression("^(?!readdir)"));
    QCOMPARE(QStringList(calls.mid(calls.size() - 3)),
        (QStringList{calls.at(calls.size() - 3), "closedir item/sub", "closedir item"}));
    QVERIFY(calls.at(calls.size() - 3).startsWith("remove item/sub/"));
}

void TestDeleteFiles::abortAfterTheLastEntry()
{
    TestDir dir;
    dir.file("item/f", "x");
    FaultShim shim(dir.path());
    OperationRun run(OpDelete, {dir.path("item")});
    run.answers.click("Yes");
    shim.before("closedir", "item", 2, [&] { run.abortNow(); });
    QVERIFY(run.run());
    QCOMPARE(dir.tree(), QStringList{"item/"});
    QCOMPARE(shim.count("remove", "item"), 0);
}

void TestDeleteFiles::currentPath()
{
    TestDir dir;
    dir.folder("item/sub");
    FaultShim shim(dir.path());
    OperationRun run(OpDelete, {dir.path("item")});
    shim.fail("remove", "item/sub", EBUSY);
    run.answers.click("Ignore").click("Ignore");
    QVERIFY(run.run());
    // After its content was done, a folder is removed under the path that was shown last.
    QCOMPARE(run.lastPath, dir.path("item/sub"));
}

void TestDeleteFiles::noDescriptorIsLeft()
{
    const int before = descriptorCount();
    // Each of them in the midst of the tree.
    const std::vector<std::pair<const char*, int>> faults{
        {"lstat", 9}, {"opendir", 5}, {"remove", 2}, {"readdir", 9}};
    for (const auto& [function, first] : faults) {
        for (const char* button : {"Ignore", "IgnoreAll", "Abort"}) {
            TestDir dir;
            dir.file("item/f", "x");
            dir.folder("item/sub/sub");
            FaultShim shim(dir.path());
            shim.fail(function, "*", EIO, first, FaultShim::always);
            OperationRun run(OpDelete, {dir.path("item")});
            run.answers.otherwise({"YesAll", button});
            QVERIFY(run.run());
            QVERIFY2(!run.answers.texts().filter("Error ").isEmpty(), function);
        }
    }
    QTRY_COMPARE(descriptorCount(), before);
}

VANTREL_TEST_MAIN(TestDeleteFiles)
#include "tst_DeleteFiles.moc"
