#include "info/SizeWorkerClass.h"

#include "app/aGlobal.h"
#include "info/DialogFileSize.h"
#include "tests/support/AsNobody.h"
#include "tests/support/DeepFolders.h"
#include "tests/support/PlainWalk.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QSignalSpy>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

namespace QTest {
template <>
char* toString(const TreeTotals& totals)
{
    return qstrdup(qPrintable(QStringLiteral("%1 folders, %2 files, %3 bytes")
                                  .arg(totals.folders)
                                  .arg(totals.files)
                                  .arg(totals.bytes)));
}
} // namespace QTest

namespace {

TreeTotals counted(const QString& path)
{
    DialogFileSize dialog(nullptr, path);
    if (!QTest::qWaitFor([&dialog] { return dialog.running == 0; }, 60000)) {
        qFatal("the count does not end");
    }
    return {dialog.folderCount, dialog.fileCount, dialog.byteCount};
}

qint64 sizeOf(const QString& path)
{
    struct stat info
    {
    };
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_size : -1;
}

/// Makes an entry whose name is any bytes.
void makeRaw(const QString& folder, const QByteArray& name, bool isFolder)
{
    const QByteArray path = QFile::encodeName(folder) + '/' + name;
    if (isFolder) {
        QCOMPARE(::mkdir(path.constData(), 0755), 0);
        return;
    }
    const int number = ::open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    QVERIFY(number >= 0);
    QCOMPARE(::write(number, "12345", 5), 5);
    ::close(number);
}

} // namespace

class TestSizeWorkerClass : public QObject
{
    Q_OBJECT

private:
    void build(const QString& tree, const TestDir& dir)
    {
        if (tree == QLatin1String("nested")) {
            dir.file(QStringLiteral("a"), "1");
            dir.file(QStringLiteral("sub/b"), "22");
            dir.file(QStringLiteral("sub/deeper/c"), "333");
            dir.folder(QStringLiteral("sub/empty"));
        } else if (tree == QLatin1String("hidden")) {
            dir.file(QStringLiteral(".a"), "1");
            dir.file(QStringLiteral(".sub/.b"), "22");
            dir.file(QStringLiteral("...three dots"), "333");
        } else if (tree == QLatin1String("links")) {
            dir.file(QStringLiteral("sub/b"), "22");
            dir.link(QStringLiteral("to file"), QStringLiteral("sub/b"));
            dir.link(QStringLiteral("to folder"), QStringLiteral("sub"));
            dir.link(QStringLiteral("to link"), QStringLiteral("to folder"));
            dir.link(QStringLiteral("absolute"), dir.path(QStringLiteral("sub")));
            dir.link(QStringLiteral("broken"), QStringLiteral("nowhere"));
            dir.link(QStringLiteral("itself"), QStringLiteral("itself"));
        } else if (tree == QLatin1String("links back up")) {
            dir.file(QStringLiteral("sub/deeper/b"), "22");
            dir.link(QStringLiteral("here"), QStringLiteral("."));
            dir.link(QStringLiteral("sub/up"), QStringLiteral(".."));
            dir.link(QStringLiteral("sub/deeper/top"), dir.path());
            dir.link(QStringLiteral("sub/deeper/own"), QStringLiteral("../deeper"));
        } else if (tree == QLatin1String("links crosswise")) {
            dir.file(QStringLiteral("a/f"), "1");
            dir.file(QStringLiteral("b/f"), "22");
            dir.link(QStringLiteral("a/b"), QStringLiteral("../b"));
            dir.link(QStringLiteral("b/a"), QStringLiteral("../a"));
        } else if (tree == QLatin1String("special files")) {
            dir.fifo(QStringLiteral("fifo"));
            dir.socket(QStringLiteral("socket"));
            dir.link(QStringLiteral("to fifo"), QStringLiteral("fifo"));
            dir.link(QStringLiteral("to socket"), QStringLiteral("socket"));
            dir.link(QStringLiteral("to device"), QStringLiteral("/dev/null"));
        } else if (tree == QLatin1String("names")) {
            const QString folder = dir.folder(QStringLiteral("sub"));
            for (const char* name : {"two\nlines", " blank ", "-dash", "*?[x]", "a\\b", "\"q\"", "%1",
                     "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", "a\xcc\x88"}) {
                makeRaw(folder, name, false);
            }
        } else if (tree == QLatin1String("names that are no text")) {
            makeRaw(dir.path(), "\xff", false);
            makeRaw(dir.path(), "cut \xe2\x82", false);
            makeRaw(dir.path(), "long \xc0\xaf", false);
            makeRaw(dir.path(), "half \xed\xa0\x80", false);
            makeRaw(dir.path(), "folder \xfe", true);
            makeRaw(dir.path(), "text \xc3\xa4", true);
            makeRaw(dir.path() + QStringLiteral("/text ä"), "in it", false);
            QCOMPARE(::open((QFile::encodeName(dir.path()) + "/folder \xfe/f").constData(),
                         O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644)
                    >= 0,
                true);
        } else if (tree == QLatin1String("hard links and holes")) {
            dir.sparseFile(QStringLiteral("sparse"), Q_INT64_C(6000000000));
            QCOMPARE(::link(QFile::encodeName(dir.path(QStringLiteral("sparse"))).constData(),
                         QFile::encodeName(dir.path(QStringLiteral("again"))).constData()),
                0);
        } else if (tree == QLatin1String("wide")) {
            dir.files(QStringLiteral("many"), 5000);
            for (int i = 0; i < 300; ++i) {
                dir.folder(QStringLiteral("folders/%1").arg(i));
            }
        } else if (tree == QLatin1String("deep")) {
            QString folder = QStringLiteral("d");
            for (int depth = 0; depth < 200; ++depth, folder += QStringLiteral("/d")) {
                dir.file(folder + QStringLiteral("/f"), "1");
                dir.file(folder + QStringLiteral("/z"), "1");
            }
        }
    }

private slots:
    void init() { gsNoRecurse = QStringLiteral("^/proc"); }

    void countsAreThoseOfThePlainWalk_data()
    {
        QTest::addColumn<int>("folders");
        QTest::addColumn<int>("files");
        QTest::newRow("empty") << 0 << 0;
        QTest::newRow("nested") << 3 << 3;
        QTest::newRow("hidden") << 1 << 3;
        QTest::newRow("links") << 4 << 5; // broken links are no entries
        QTest::newRow("links back up") << 6 << 1;
        QTest::newRow("links crosswise") << 6 << 4;
        QTest::newRow("special files") << 0 << 3; // only what a link leads to
        QTest::newRow("names") << 1 << 9;
        QTest::newRow("names that are no text") << 1 << 1;
        QTest::newRow("hard links and holes") << 0 << 2;
        QTest::newRow("wide") << 302 << 5000;
        QTest::newRow("deep") << 200 << 400;
    }
    void countsAreThoseOfThePlainWalk()
    {
        QFETCH(int, folders);
        QFETCH(int, files);
        TestDir dir;
        build(QString::fromLatin1(QTest::currentDataTag()), dir);
        const TreeTotals totals = counted(dir.path());
        const TreeTotals plain = PlainWalk(dir.path(), gsNoRecurse).totals();
        QCOMPARE(totals, plain);
        QCOMPARE(totals.folders, folders);
        QCOMPARE(totals.files, files);
    }

    void deeperThanAPath_data()
    {
        QTest::addColumn<int>("depth");
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("25 long names") << 25 << QByteArray(200, 'd');
        QTest::newRow("600 of eleven letters") << 600 << QByteArray("folder name");
        QTest::newRow("10,000") << 10000 << QByteArray("folder name");
    }
    void deeperThanAPath()
    {
        QFETCH(int, depth);
        QFETCH(QByteArray, name);
        const DeepFolders deep(depth, name);
        const long before = residentKib();
        const FewDescriptors few(64);
        const TreeTotals totals = counted(deep.path());
        QCOMPARE(totals.folders, depth);
        QCOMPARE(totals.files, depth);
        QCOMPARE(totals.bytes, deep.bytes());
        // A path for each folder would take more than 1,000,000.
        QVERIFY(residentKib() - before < 100000);
    }

    void bytesAreSizesOfEntriesFoldersIncluded()
    {
        TestDir dir;
        dir.file(QStringLiteral("sub/b"), QByteArray(1000, 'x'));
        dir.link(QStringLiteral("to file"), QStringLiteral("sub/b"));
        const TreeTotals totals = counted(dir.path());
        QCOMPARE(totals.bytes, sizeOf(dir.path(QStringLiteral("sub"))) + 1000 + 1000);
    }

    void startIsCountedAsItIs_data()
    {
        QTest::addColumn<QString>("start");
        QTest::newRow("folder") << "sub";
        QTest::newRow("folder with slash") << "sub/";
        QTest::newRow("not clean") << "sub/../sub/./deeper/..";
        QTest::newRow("link to folder") << "link";
        QTest::newRow("file") << "sub/b";
        QTest::newRow("link to file") << "file link";
        QTest::newRow("broken link") << "broken";
        QTest::newRow("nothing") << "nothing";
        QTest::newRow("FIFO") << "fifo";
    }
    void startIsCountedAsItIs()
    {
        QFETCH(QString, start);
        TestDir dir;
        dir.file(QStringLiteral("sub/b"), "22");
        dir.file(QStringLiteral("sub/deeper/c"), "333");
        dir.link(QStringLiteral("link"), QStringLiteral("sub"));
        dir.link(QStringLiteral("file link"), QStringLiteral("sub/b"));
        dir.link(QStringLiteral("broken"), QStringLiteral("nowhere"));
        dir.fifo(QStringLiteral("fifo"));
        const QString path = dir.path(start);
        const TreeTotals totals = counted(path);
        QCOMPARE(totals, PlainWalk(path, gsNoRecurse).totals());
        const bool isFile = start == QLatin1String("sub/b") || start == QLatin1String("file link");
        const bool isFolder = QFileInfo(path).isDir();
        QCOMPARE(totals.folders, isFolder ? 1 : 0);
        QCOMPARE(totals.files, isFile ? 1 : isFolder ? 2 : 0);
        if (isFile) {
            QCOMPARE(totals.bytes, 2);
        }
    }

    void rootIsAFolderLikeAnother()
    {
        gsNoRecurse = QStringLiteral("^/.");
        const TreeTotals totals = counted(QStringLiteral("/"));
        QCOMPARE(totals, PlainWalk(QStringLiteral("/"), gsNoRecurse).totals());
        QVERIFY(totals.folders > 3);
    }

    void systemTreeHasTheSameCounts()
    {
        const QString path = QStringLiteral("/usr/share/doc");
        QCOMPARE(counted(path), PlainWalk(path, gsNoRecurse).totals());
    }

    void foldersThatMatchAreNotEntered_data()
    {
        QTest::addColumn<QString>("noRecurse");
        QTest::addColumn<int>("folders");
        QTest::addColumn<int>("files");
        QTest::newRow("empty matches every path") << "" << 0 << 0;
        QTest::newRow("start itself") << "/vantrel-test-[^/]*$" << 0 << 0;
        QTest::newRow("no match") << "^/proc" << 3 << 4;
        QTest::newRow("one folder, counted itself") << "/Sub$" << 2 << 2;
        QTest::newRow("any case") << "/sUB$" << 2 << 2;
        QTest::newRow("anywhere in the path") << "ub/dee" << 3 << 3;
        QTest::newRow("a file's path is not asked") << "a.txt" << 3 << 4;
        QTest::newRow("invalid never matches") << "(" << 3 << 4;
        QTest::newRow("invalid, unfinished class") << "[" << 3 << 4;
        QTest::newRow("name with a line break") << "two\nlines$" << 3 << 3;
    }
    void foldersThatMatchAreNotEntered()
    {
        QFETCH(QString, noRecurse);
        gsNoRecurse = noRecurse;
        TestDir dir;
        dir.file(QStringLiteral("a.txt"), "1");
        dir.file(QStringLiteral("Sub/b"), "22");
        dir.file(QStringLiteral("Sub/deeper/c"), "333");
        dir.file(QStringLiteral("two\nlines/d"), "4444");
        const TreeTotals totals = counted(dir.path());
        QCOMPARE(totals, PlainWalk(dir.path(), gsNoRecurse).totals());
        QTEST(static_cast<int>(totals.folders), "folders");
        QTEST(static_cast<int>(totals.files), "files");
    }

    void fileIsCountedWhateverMatches()
    {
        gsNoRecurse.clear();
        TestDir dir;
        const TreeTotals totals = counted(dir.file(QStringLiteral("f"), "1234567"));
        QCOMPARE(totals, (TreeTotals{0, 1, 7}));
    }

    void matchedLinkIsJudgedByItsOwnPath()
    {
        gsNoRecurse = QStringLiteral("/link$");
        TestDir dir;
        dir.file(QStringLiteral("sub/b"), "22");
        dir.link(QStringLiteral("link"), QStringLiteral("sub"));
        const TreeTotals totals = counted(dir.path());
        QCOMPARE(totals.folders, 2);
        QCOMPARE(totals.files, 1);
    }

    void expensiveExpressionEnds_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isSkipped");
        const QString as(254, QLatin1Char('a'));
        QTest::newRow("nested") << "(a+)+$" << as + "!" << false;
        QTest::newRow("nested, and a match") << "(a+)+$" << as << true;
        QTest::newRow("either way") << "(a|aa)+$" << as + "!" << false;
        QTest::newRow("from the beginning") << "^/(.+)+/(([a-z])+.)+[A-Z]([a-z])+$" << as + "!" << false;
        QTest::newRow("no anchor") << "(([a-z])+.)+[0-9]([a-z])+$" << as << false;
    }
    /// What PCRE gives up is no match, as it is for the expression alone.
    void expensiveExpressionEnds()
    {
        QFETCH(QString, expression);
        QFETCH(QString, name);
        QFETCH(bool, isSkipped);
        gsNoRecurse = expression;
        TestDir dir;
        // Not the temporary folder itself, whose own name may end in "a".
        const QString start = dir.folder(QStringLiteral("+start+"));
        for (int i = 0; i < 2; ++i) {
            dir.file(QStringLiteral("+start+/+%1+/").arg(i) + name + QStringLiteral("/b"), "22");
        }
        QElapsedTimer timer;
        timer.start();
        const TreeTotals totals = counted(start);
        QVERIFY2(timer.elapsed() < 20000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(totals, PlainWalk(start, gsNoRecurse).totals());
        QCOMPARE(totals.files, isSkipped ? 0 : 2);
    }

    void unreadableFoldersListNothing()
    {
        TestDir dir;
        dir.setMode(QString(), 0755);
        dir.file(QStringLiteral("closed/b"), "22");
        dir.file(QStringLiteral("listed only/b"), "22");
        dir.folder(QStringLiteral("listed only/deeper"));
        dir.link(QStringLiteral("listed only/link"), QStringLiteral("b"));
        dir.fifo(QStringLiteral("listed only/fifo"));
        dir.file(QStringLiteral("searched only/b"), "22");
        dir.setMode(QStringLiteral("closed"), 0);
        dir.setMode(QStringLiteral("listed only"), 0444);
        dir.setMode(QStringLiteral("searched only"), 0111);
        const AsNobody nobody;
        const TreeTotals totals = counted(dir.path());
        QCOMPARE(totals, PlainWalk(dir.path(), gsNoRecurse).totals());
        QCOMPARE(totals.folders, 3);
        QCOMPARE(totals.files, 2); // what may be listed only has two entries that nothing is known of
        QCOMPARE(counted(dir.path(QStringLiteral("closed"))), TreeTotals());
    }

    void stopsWithinOneEntry()
    {
        TestDir dir;
        for (int i = 0; i < 20; ++i) {
            dir.files(QStringLiteral("%1").arg(i), 500);
        }
        int stoppedEarly = 0;
        for (int round = 0; round < 20; ++round) {
            DialogFileSize dialog(nullptr, dir.path());
            while (dialog.fileCount + dialog.folderCount < round * 400) { }
            dialog.running = 0;
            const qint64 atStop = dialog.fileCount + dialog.folderCount;
            auto* button = dialog.findChild<QAbstractButton*>();
            QTRY_COMPARE(button->text(), QStringLiteral("&OK"));
            const qint64 atEnd = dialog.fileCount + dialog.folderCount;
            QVERIFY2(atEnd - atStop <= 1, qPrintable(QStringLiteral("%1 %2").arg(atStop).arg(atEnd)));
            stoppedEarly += atEnd < 10020 ? 1 : 0;
        }
        QVERIFY(stoppedEarly > 0); // a busy machine may let single walks end first
    }

    void recursiveSizeStopsBeforeTheFirstEntry()
    {
        TestDir dir;
        dir.files(QString(), 10);
        DialogFileSize dialog(nullptr, dir.file(QStringLiteral("f")));
        QTRY_COMPARE(dialog.running, 0);
        const qint64 before = dialog.fileCount;
        SizeWorkerClass worker(&dialog);
        worker.RecursiveSize(dir.path());
        QCOMPARE(dialog.fileCount, before);
        dialog.running = 1;
        worker.RecursiveSize(dir.path());
        QCOMPARE(dialog.fileCount, before + 11);
    }

    void finishedIsTheLastWord()
    {
        TestDir dir;
        dir.files(QString(), 3);
        DialogFileSize dialog(nullptr, dir.path());
        QTRY_COMPARE(dialog.running, 0);
        SizeWorkerClass worker(&dialog);
        QSignalSpy spy(&worker, SIGNAL(finished()));
        worker.StartWork();
        QCOMPARE(spy.count(), 1);
    }

    // Last: it gives the process a view of the mounts of its own.
    void otherVolumesAreNotEntered()
    {
        if (::unshare(CLONE_NEWNS) != 0
            || ::mount("none", "/", nullptr, static_cast<unsigned long>(MS_REC | MS_PRIVATE), nullptr) != 0) {
            QSKIP("mounting needs root");
        }
        TestDir dir;
        dir.file(QStringLiteral("sub/b"), "22");
        const QByteArray sub = QFile::encodeName(dir.path(QStringLiteral("sub")));
        const QByteArray volume = QFile::encodeName(dir.folder(QStringLiteral("volume")));
        const QByteArray bound = QFile::encodeName(dir.folder(QStringLiteral("bound")));
        QCOMPARE(::mount("first", volume.constData(), "tmpfs", 0, nullptr), 0);
        QCOMPARE(::mount(sub.constData(), bound.constData(), nullptr, static_cast<unsigned long>(MS_BIND),
                     nullptr),
            0);
        dir.file(QStringLiteral("volume/c"), "333");
        dir.file(QStringLiteral("volume/in it/d"), "4444");
        dir.link(QStringLiteral("link"), QStringLiteral("volume/in it"));
        const QByteArray same = QFile::encodeName(dir.folder(QStringLiteral("volume/same name")));
        const QByteArray other = QFile::encodeName(dir.folder(QStringLiteral("volume/other name")));
        QCOMPARE(::mount("first", same.constData(), "tmpfs", 0, nullptr), 0);
        QCOMPARE(::mount("second", other.constData(), "tmpfs", 0, nullptr), 0);
        dir.file(QStringLiteral("volume/same name/e"), "1");
        dir.file(QStringLiteral("volume/other name/f"), "1");

        const TreeTotals outer = counted(dir.path());
        const TreeTotals outerPlain = PlainWalk(dir.path(), gsNoRecurse).totals();
        const TreeTotals inner = counted(dir.path(QStringLiteral("volume")));
        const TreeTotals innerPlain = PlainWalk(dir.path(QStringLiteral("volume")), gsNoRecurse).totals();
        for (const QByteArray& mounted : {same, other, volume, bound}) {
            QCOMPARE(::umount(mounted.constData()), 0);
        }
        QCOMPARE(outer, outerPlain);
        QCOMPARE(outer.folders, 4);
        QCOMPARE(outer.files, 2); // b, and b again where its folder is bound to
        QCOMPARE(inner, innerPlain);
        QCOMPARE(inner.folders, 3);
        QCOMPARE(inner.files, 3); // a volume is told by the name of its device, here the same one
    }
};

VANTREL_TEST_MAIN(TestSizeWorkerClass)
#include "tst_SizeWorkerClass.moc"
