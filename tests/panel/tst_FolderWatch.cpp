#include "panel/FolderWatch.h"
#include "tests/support/AsNobody.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>

#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

QStringList folders(const QSignalSpy& spy)
{
    QStringList all;
    for (const QList<QVariant>& call : spy) {
        all.append(call.constFirst().toString());
    }
    all.removeDuplicates();
    all.sort();
    return all;
}

/// Number of watches that the process holds.
int watchCount()
{
    int count = 0;
    const QFileInfoList infos = QDir(QStringLiteral("/proc/self/fdinfo")).entryInfoList(QDir::Files);
    for (const QFileInfo& info : infos) {
        QFile file(info.filePath());
        if (file.open(QIODevice::ReadOnly)) {
            count += file.readAll().count("inotify wd:");
        }
    }
    return count;
}

} // namespace

class TestFolderWatch : public QObject
{
    Q_OBJECT

private slots:
    void tells_data();
    void tells();
    void tellsOnceForManyEvents();
    void onlyTheFolderThatChanged();
    void notWhatIsDeeper();
    void nothingBeforeAdd();
    void nothingAfterRemove();
    void addedTwice();
    void removedTwice();
    void goneFolder();
    void unreadableFolder();
    void linkThatLeadsElsewhere_data();
    void linkThatLeadsElsewhere();
    void folderMadeAnew();
    void folderReplacedByAnother();
    void notAFolder_data();
    void notAFolder();
    void awkwardNames_data();
    void awkwardNames();
    void twoPathsOfOneFolder();
    void severalWatchesOfOneFolder();
    void oneDescriptorForAll();
    void comingAndGoingIsFast();
    void moreThanTheSystemHolds();
};

void TestFolderWatch::tells_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what :
        {"made file", "made folder", "made link", "removed", "renamed", "moved in", "moved out", "written",
            "appended while open", "truncated", "mode", "times", "the folder's own mode"}) {
        QTest::newRow(what) << QString::fromLatin1(what);
    }
}

void TestFolderWatch::tells()
{
    QFETCH(QString, what);
    const TestDir dir;
    const QString folder = dir.folder(QStringLiteral("it"));
    const QString file = dir.file(QStringLiteral("it/file"), "content");
    const QString outside = dir.file(QStringLiteral("outside"));
    QFile open(file);
    QVERIFY(open.open(QIODevice::Append));
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(folder);
    if (what == QLatin1String("made file")) {
        dir.file(QStringLiteral("it/new"));
    } else if (what == QLatin1String("made folder")) {
        QVERIFY(QDir().mkdir(folder + "/new"));
    } else if (what == QLatin1String("made link")) {
        dir.link(QStringLiteral("it/new"), QStringLiteral("nowhere"));
    } else if (what == QLatin1String("removed")) {
        QVERIFY(QFile::remove(file));
    } else if (what == QLatin1String("renamed")) {
        QVERIFY(QFile::rename(file, folder + "/other"));
    } else if (what == QLatin1String("moved in")) {
        QVERIFY(QFile::rename(outside, folder + "/outside"));
    } else if (what == QLatin1String("moved out")) {
        QVERIFY(QFile::rename(file, dir.path(QStringLiteral("moved"))));
    } else if (what == QLatin1String("written")) {
        QFile again(file);
        QVERIFY(again.open(QIODevice::WriteOnly));
    } else if (what == QLatin1String("appended while open")) {
        QVERIFY(open.write("more") == 4 && open.flush());
    } else if (what == QLatin1String("truncated")) {
        QCOMPARE(::truncate(QFile::encodeName(file).constData(), 1), 0);
    } else if (what == QLatin1String("mode")) {
        dir.setMode(QStringLiteral("it/file"), 0600);
    } else if (what == QLatin1String("times")) {
        dir.setTimes(QStringLiteral("it/file"), 1000);
    } else {
        dir.setMode(QStringLiteral("it"), 0711);
    }
    QTRY_VERIFY(!spy.isEmpty());
    QCOMPARE(folders(spy), QStringList{folder});
}

void TestFolderWatch::tellsOnceForManyEvents()
{
    const TestDir dir;
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(dir.path());
    dir.files(QStringLiteral("."), 200);
    QVERIFY(spy.wait());
    QCOMPARE(spy.size(), 1);
}

void TestFolderWatch::onlyTheFolderThatChanged()
{
    const TestDir dir;
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    for (const char* name : {"a", "b", "c"}) {
        watch.add(dir.folder(QLatin1String(name)));
    }
    dir.file(QStringLiteral("b/new"));
    QVERIFY(spy.wait());
    QCOMPARE(folders(spy), QStringList{dir.path(QStringLiteral("b"))});
}

void TestFolderWatch::notWhatIsDeeper()
{
    const TestDir dir;
    dir.folder(QStringLiteral("sub"));
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(dir.path());
    dir.file(QStringLiteral("sub/new"));
    QVERIFY(!spy.wait(100));
}

void TestFolderWatch::nothingBeforeAdd()
{
    const TestDir dir;
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    dir.file(QStringLiteral("new"));
    QVERIFY(!spy.wait(100));
}

void TestFolderWatch::nothingAfterRemove()
{
    const TestDir dir;
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(dir.path());
    watch.remove(dir.path());
    dir.file(QStringLiteral("new"));
    QVERIFY(!spy.wait(100));
}

void TestFolderWatch::addedTwice()
{
    const TestDir dir;
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(dir.path());
    watch.add(dir.path());
    dir.file(QStringLiteral("new"));
    QVERIFY(spy.wait());
    QCOMPARE(spy.size(), 1);
    watch.remove(dir.path());
    dir.file(QStringLiteral("newer"));
    QVERIFY(!spy.wait(100));
}

void TestFolderWatch::removedTwice()
{
    const TestDir dir;
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(dir.path());
    watch.remove(dir.path());
    watch.remove(dir.path());
    watch.remove(QStringLiteral("/never/added"));
    watch.add(dir.path());
    dir.file(QStringLiteral("new"));
    QVERIFY(spy.wait());
}

void TestFolderWatch::goneFolder()
{
    const TestDir dir;
    const QString folder = dir.folder(QStringLiteral("it"));
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(folder);
    QVERIFY(QDir(folder).removeRecursively());
    QTRY_COMPARE(folders(spy), QStringList{folder});
    watch.remove(folder); // there is no watch any more
}

void TestFolderWatch::unreadableFolder()
{
    const TestDir dir;
    dir.setMode(QString(), 0755);
    const QString folder = dir.folder(QStringLiteral("above/it"), 0);
    dir.setMode(QStringLiteral("above"), 0111);
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    const auto addAsNobody = [&] {
        const AsNobody nobody;
        QVERIFY(watch.add(folder));
    };
    for (const QString& readable : {QStringLiteral("above"), QStringLiteral("above/it")}) {
        addAsNobody();
        QVERIFY(!watch.watches(folder));
        spy.clear();
        dir.setMode(readable, 0755);
        QTRY_COMPARE(folders(spy), QStringList{folder});
    }
    addAsNobody();
    QVERIFY(watch.watches(folder));
    QCOMPARE(watchCount(), 1);
    watch.remove(folder);
    QCOMPARE(watchCount(), 0);
}

void TestFolderWatch::folderMadeAnew()
{
    const TestDir dir;
    const QString folder = dir.folder(QStringLiteral("it"));
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(folder);
    QVERIFY(QDir().rmdir(folder));
    QVERIFY(spy.wait());
    dir.folder(QStringLiteral("it"));
    watch.add(folder);
    spy.clear();
    dir.file(QStringLiteral("it/new"));
    QVERIFY(spy.wait());
    QCOMPARE(folders(spy), QStringList{folder});
}

void TestFolderWatch::folderReplacedByAnother()
{
    const TestDir dir;
    const QString folder = dir.folder(QStringLiteral("it"));
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(folder);
    QVERIFY(QFile::rename(folder, dir.path(QStringLiteral("old"))));
    dir.folder(QStringLiteral("it"));
    watch.add(folder);
    QVERIFY(spy.isEmpty()); // whoever adds it anew reads it anew
    dir.file(QStringLiteral("it/new"));
    QTRY_COMPARE(folders(spy), QStringList{folder});
    spy.clear();
    dir.file(QStringLiteral("old/new"));
    QVERIFY(!spy.wait(100));
    watch.remove(folder);
    QCOMPARE(watchCount(), 0); // none is left on the folder that has another name now
}

void TestFolderWatch::notAFolder_data()
{
    QTest::addColumn<QString>("relative");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("file") << QStringLiteral("file");
    QTest::newRow("empty name") << QString();
}

void TestFolderWatch::notAFolder()
{
    QFETCH(QString, relative);
    const TestDir dir;
    dir.file(QStringLiteral("file"));
    const QString path = relative.isEmpty() ? QString() : dir.path(relative);
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(path);
    dir.file(QStringLiteral("file"), "more");
    QVERIFY(!spy.wait(50));
    watch.remove(path);
}

void TestFolderWatch::awkwardNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("markup") << QStringLiteral("<b>x</b>").replace('/', '|');
    QTest::newRow("placeholder") << QStringLiteral("%1");
    QTest::newRow("newline") << QStringLiteral("a\nb");
    QTest::newRow("letters") << QString::fromUtf8("Ünïcödé 日本");
    QTest::newRow("255 bytes") << QString(255, QLatin1Char('x'));
}

void TestFolderWatch::awkwardNames()
{
    QFETCH(QString, name);
    const TestDir dir;
    const QString folder = dir.folder(name);
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(folder);
    dir.file(name + QLatin1Char('/') + name);
    QTRY_VERIFY(!spy.isEmpty());
    QCOMPARE(folders(spy), QStringList{folder});
}

void TestFolderWatch::twoPathsOfOneFolder()
{
    const TestDir dir;
    const QString folder = dir.folder(QStringLiteral("it"));
    const QString link = dir.link(QStringLiteral("link"), QStringLiteral("it"));
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    watch.add(folder);
    watch.add(link);
    dir.file(QStringLiteral("it/new"));
    QTRY_COMPARE(folders(spy), (QStringList{folder, link}));
    watch.remove(folder);
    spy.clear();
    dir.file(QStringLiteral("it/newer"));
    QTRY_COMPARE(folders(spy), QStringList{link});
}

void TestFolderWatch::severalWatchesOfOneFolder()
{
    const TestDir dir;
    FolderWatch one(nullptr);
    auto two = std::make_unique<FolderWatch>(nullptr);
    QSignalSpy spyOne(&one, &FolderWatch::changed);
    QSignalSpy spyTwo(two.get(), &FolderWatch::changed);
    one.add(dir.path());
    two->add(dir.path());
    dir.file(QStringLiteral("a"));
    QTRY_COMPARE(spyOne.size(), 1);
    QTRY_COMPARE(spyTwo.size(), 1);
    two.reset();
    dir.file(QStringLiteral("b"));
    QTRY_COMPARE(spyOne.size(), 2);
    one.remove(dir.path());
    QCOMPARE(watchCount(), 0);
}

void TestFolderWatch::oneDescriptorForAll()
{
    const TestDir dir;
    const int before = descriptorCount();
    {
        std::vector<std::unique_ptr<FolderWatch>> watches;
        for (int i = 0; i < 300; ++i) {
            watches.push_back(std::make_unique<FolderWatch>(nullptr));
            watches.back()->add(dir.path());
        }
        QCOMPARE(descriptorCount(), before + 1);
        QCOMPARE(watchCount(), 1);
    }
    QCOMPARE(descriptorCount(), before);
}

// Closing a descriptor of this kind waits for milliseconds: each folder change would.
void TestFolderWatch::comingAndGoingIsFast()
{
    const TestDir dir;
    const FolderWatch stays(nullptr);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 1000; ++i) {
        FolderWatch watch(nullptr);
        watch.add(dir.path());
    }
    QVERIFY2(clock.elapsed() < 1000, QByteArray::number(clock.elapsed()).constData());
    QCOMPARE(watchCount(), 0);
}

/// The system forgets what does not fit its queue: every folder may have changed then.
void TestFolderWatch::moreThanTheSystemHolds()
{
    const TestDir dir(TestDir::inMemory());
    const QStringList paths{dir.folder(QStringLiteral("noisy")), dir.folder(QStringLiteral("quiet"))};
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    for (const QString& path : paths) {
        watch.add(path);
    }
    const QByteArray one = QFile::encodeName(dir.file(QStringLiteral("noisy/one")));
    const QByteArray two = QFile::encodeName(dir.file(QStringLiteral("noisy/two")));
    QFile limit(QStringLiteral("/proc/sys/fs/inotify/max_queued_events"));
    QVERIFY(limit.open(QIODevice::ReadOnly));
    const int most = limit.readAll().trimmed().toInt();
    if (most <= 0 || most > 200000) {
        QSKIP("the system holds too many events");
    }
    for (int i = 0; i <= most / 2; ++i) { // in turn, as the same event again is not told twice
        ::chmod(one.constData(), 0644);
        ::chmod(two.constData(), 0644);
    }
    QTRY_COMPARE(folders(spy), paths);
}

void TestFolderWatch::linkThatLeadsElsewhere_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("path");
    QTest::newRow("the folder itself") << "holder/link"
                                       << "holder/link";
    QTest::newRow("one above") << "holder/link"
                               << "holder/link/in";
    QTest::newRow("one that the link leads over") << "holder/link"
                                                  << "over/link/in";
}

/// The folder that is watched stays as it is; its path is another folder's now.
void TestFolderWatch::linkThatLeadsElsewhere()
{
    QFETCH(QString, link);
    QFETCH(QString, path);
    const TestDir dir;
    dir.folder(QStringLiteral("one/in"));
    dir.folder(QStringLiteral("two/in"));
    dir.link(link, QStringLiteral("../one"));
    dir.link(QStringLiteral("over/link"), QStringLiteral("./../holder/../holder/link"));
    const int before = watchCount();
    FolderWatch watch(nullptr);
    QSignalSpy spy(&watch, &FolderWatch::changed);
    QVERIFY(watch.add(dir.path(path)));
    const int number = watch.watchOf(dir.path(path));
    QVERIFY(number >= 0);
    dir.file(QStringLiteral("holder/another")); // leads nothing elsewhere
    dir.file(path + "/x");
    QTRY_COMPARE(folders(spy), QStringList{dir.path(path)});
    QVERIFY(watch.add(dir.path(path)));
    QCOMPARE(watch.watchOf(dir.path(path)), number);
    spy.clear();
    dir.file(QStringLiteral("holder/another one"));
    QVERIFY(!spy.wait(100));
    QVERIFY(QFile::remove(dir.path(link)));
    dir.link(link, dir.path(QStringLiteral("two")));
    QTRY_COMPARE(folders(spy), QStringList{dir.path(path)});
    QVERIFY(watch.add(dir.path(path)));
    QVERIFY(watch.watchOf(dir.path(path)) != number);
    watch.remove(dir.path(path));
    QTRY_COMPARE(watchCount(), before);
}

VANTREL_TEST_MAIN(TestFolderWatch)
#include "tst_FolderWatch.moc"
