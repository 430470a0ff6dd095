#include "fileops/xs_mkdir.h"

#include "tests/support/FaultShim.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

class TestXsMkdir : public QObject
{
    Q_OBJECT

private slots:
    void makesWhatIsBeforeTheLastSlash_data();
    void makesWhatIsBeforeTheLastSlash();
    void nothingToMake_data();
    void nothingToMake();
    void looksAtEachPrefixAndMakesTheMissing();
    void newFoldersHaveMode775();
    void passesOverAFileAndFailsBehindIt();
    void stopsAtTheFirstFailure();
    void takesThePathAsAbsolute();
    void namesAreUtf8();
};

void TestXsMkdir::makesWhatIsBeforeTheLastSlash_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("made");
    QTest::newRow("file") << "a/b/file" << QStringList{"a/", "a/b/"};
    QTest::newRow("slash at the end") << "a/b/" << QStringList{"a/", "a/b/"};
    QTest::newRow("empty parts") << "a///b//file" << QStringList{"a/", "a/b/"};
    QTest::newRow("only the name") << "file" << QStringList{};
    QTest::newRow("blank") << " / /x" << QStringList{" /", " / /"};
}

void TestXsMkdir::makesWhatIsBeforeTheLastSlash()
{
    QFETCH(QString, path);
    QFETCH(QStringList, made);
    TestDir dir;
    QCOMPARE(xs_mkdir(dir.path(path)), 0);
    QCOMPARE(dir.tree(), made);
    QCOMPARE(xs_mkdir(dir.path(path)), 0);
    QCOMPARE(dir.tree(), made);
}

void TestXsMkdir::nothingToMake_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("empty") << "";
    QTest::newRow("no slash") << "name";
    QTest::newRow("root") << "/";
    QTest::newRow("in root") << "/name";
    QTest::newRow("slashes") << "////";
}

void TestXsMkdir::nothingToMake()
{
    QFETCH(QString, path);
    FaultShim shim(QStringLiteral("/"), true);
    QCOMPARE(xs_mkdir(path), 0);
    QCOMPARE(shim.calls(), QStringList());
}

void TestXsMkdir::looksAtEachPrefixAndMakesTheMissing()
{
    TestDir dir;
    dir.folder(QStringLiteral("a"));
    FaultShim shim(dir.path(), true);
    QCOMPARE(xs_mkdir(dir.path(QStringLiteral("a/b/c/file"))), 0);
    QCOMPARE(shim.calls(),
        (QStringList{"lstat . = 0", "lstat a = 0", "lstat a/b = -1 2", "mkdir a/b 0775 = 0",
            "lstat a/b/c = -1 2", "mkdir a/b/c 0775 = 0"}));
}

void TestXsMkdir::newFoldersHaveMode775()
{
    TestDir dir;
    const mode_t before = ::umask(0);
    const int result = xs_mkdir(dir.path(QStringLiteral("a/b/file")));
    ::umask(before);
    QCOMPARE(result, 0);
    struct stat info;
    QCOMPARE(::lstat(qPrintable(dir.path(QStringLiteral("a/b"))), &info), 0);
    QCOMPARE(static_cast<unsigned>(info.st_mode & 07777), 0775U);
}

void TestXsMkdir::passesOverAFileAndFailsBehindIt()
{
    TestDir dir;
    dir.file(QStringLiteral("a"), "content");
    QCOMPARE(xs_mkdir(dir.path(QStringLiteral("a/file"))), 0);
    errno = 0;
    QVERIFY(xs_mkdir(dir.path(QStringLiteral("a/b/file"))) < 0);
    QCOMPARE(errno, ENOTDIR);
    QCOMPARE(dir.tree(), QStringList{"a"});
}

void TestXsMkdir::stopsAtTheFirstFailure()
{
    TestDir dir;
    FaultShim shim(dir.path(), true);
    shim.fail("mkdir", QStringLiteral("a/b"), EROFS);
    const int result = xs_mkdir(dir.path(QStringLiteral("a/b/c/file")));
    const int error = errno;
    QVERIFY(result < 0);
    QCOMPARE(error, EROFS);
    QCOMPARE(dir.tree(), QStringList{"a/"});
    QCOMPARE(shim.count("lstat", QStringLiteral("a/b/c")), 0);
}

void TestXsMkdir::takesThePathAsAbsolute()
{
    TestDir dir;
    QCOMPARE(xs_mkdir(dir.path().mid(1) + QStringLiteral("/a/file")), 0);
    QCOMPARE(dir.tree(), QStringList{"a/"});
}

void TestXsMkdir::namesAreUtf8()
{
    TestDir dir;
    QCOMPARE(xs_mkdir(dir.path(QStringLiteral("h\u00e9/\u4e2d\u6587/file"))), 0);
    QCOMPARE(
        ::access(QByteArray(dir.path().toUtf8() + "/h\xc3\xa9/\xe4\xb8\xad\xe6\x96\x87").constData(), X_OK),
        0);
}

VANTREL_TEST_MAIN(TestXsMkdir)
#include "tst_xs_mkdir.moc"
