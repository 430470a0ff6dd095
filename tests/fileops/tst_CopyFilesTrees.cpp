#include "fileops/MProgress.h"

#include "app/MessageBoxes.h"
#include "tests/support/FaultShim.h"
#include "tests/support/OneCopy.h"
#include "tests/support/OperationRun.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QProcess>

#include <cerrno>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

/// Copies of folders and all that is in them.
class TestCopyFilesTrees : public QObject
{
    Q_OBJECT

private slots:
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

void TestCopyFilesTrees::treeCalls()
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

void TestCopyFilesTrees::treeIsComplete()
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

void TestCopyFilesTrees::mergesIntoAFolder()
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

void TestCopyFilesTrees::folderModes()
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

void TestCopyFilesTrees::folderNotMade_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<QStringList>("later");
    QTest::newRow("Retry") << "Retry" << QStringList{"src/", "src/f"} << QStringList{};
    QTest::newRow("Ignore") << "Ignore" << QStringList{} << QStringList{"Unable to open destination file:\n"};
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{} << QStringList{};
    QTest::newRow("Abort") << "Abort" << QStringList{} << QStringList{};
}

void TestCopyFilesTrees::folderNotMade()
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

void TestCopyFilesTrees::folderNotListed_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("Retry") << "Retry" << QStringList{"src/", "src/f"};
    QTest::newRow("Ignore") << "Ignore" << QStringList{"src/"};
    QTest::newRow("IgnoreAll") << "IgnoreAll" << QStringList{"src/"};
    QTest::newRow("Abort") << "Abort" << QStringList{"src/"};
}

void TestCopyFilesTrees::folderNotListed()
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

void TestCopyFilesTrees::vanishedItemIsTakenForAFolder()
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

void TestCopyFilesTrees::vanishedEntryIsTakenForAFile()
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

void TestCopyFilesTrees::linkToAFolderIsNotFollowed()
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

void TestCopyFilesTrees::namesThatAreNotUtf8()
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

void TestCopyFilesTrees::abortBetweenEntries()
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

void TestCopyFilesTrees::thousandFoldersDeep()
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

void TestCopyFilesTrees::pathsUpToTheLimit()
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
    const QString text = "Unable to open destination file:\n" + dir.path("to/" + deep + "/" + file) + "\n"
        + reason(ENAMETOOLONG);
    QCOMPARE(run.answers.texts(), QStringList{boxText(text)}); // which has no room for all of it
    QVERIFY(dir.exists("to/" + deep));
}

void TestCopyFilesTrees::noDescriptorIsLeft()
{
    const int before = descriptorCount();
    // Each of them in the midst of the tree, as far as it has as many of that call.
    const std::vector<std::pair<const char*, int>> faults{
        {"open", 3}, {"lstat", 3}, {"mkdir", 2}, {"opendir", 3}, {"symlink", 1}, {"write", 1}, {"fchmod", 1}};
    for (const auto& [function, first] : faults) {
        for (const char* button : {"Ignore", "IgnoreAll", "Abort"}) {
            TestDir dir;
            dir.file("src/f", "x");
            dir.file("src/sub/empty");
            dir.link("src/link", "t");
            dir.folder("to");
            FaultShim shim(dir.path());
            shim.fail(function, "*", EIO, first, FaultShim::always);
            OperationRun run(OpCopy, {dir.path("src")}, dir.path("to"));
            run.answers.otherwise({button});
            QVERIFY(run.run());
            QVERIFY2(!run.answers.seen().isEmpty(), function);
        }
    }
    QTRY_COMPARE(descriptorCount(), before);
}

VANTREL_TEST_MAIN(TestCopyFilesTrees)
#include "tst_CopyFilesTrees.moc"
