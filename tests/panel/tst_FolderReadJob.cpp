#include "panel/FolderReadJob.h"

#include "panel/FolderReader.h"
#include "tests/support/FaultShim.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QSemaphore>

#include <cerrno>

namespace {

struct Told
{
    FolderReading reading;
    qint64 tookMs = 0;
};

QStringList namesIn(const FolderEntries& entries)
{
    QStringList names;
    for (const auto& entry : entries) {
        names.append(entry.first);
    }
    return names;
}

} // namespace

/// Readings of folders that are slow, gone, or not wanted any more.
class TestFolderReadJob : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void slowFolderComesInTwoParts();
    void slowFolderThatIsKnownComesAtOnce();
    void completeReadingIsToldAfterAPart();
    void replacedWhileItIsRead_data();
    void replacedWhileItIsRead();
    void notWantedAnyMore_data();
    void notWantedAnyMore();
    void readerThatIsDestroyedAbandonsIt();
    void isNoFolder();
    void eightSlowFoldersAtOnce();
    void readingFromBeforeTheFolderWasForgotten();
    void goneBetweenReadingAndWatching();
    void madeAnewBetweenWatchingAndReading();

private:
    QVector<Told> read(
        const QString& folder, const FolderEntries* before = nullptr, bool foldersOnly = false) const;

    TestDir m_dir;
    QString m_folder;
    std::shared_ptr<std::atomic<bool>> m_abandoned;
};

void TestFolderReadJob::init()
{
    m_folder = m_dir.folder(QStringLiteral("folder"));
    m_dir.files(QStringLiteral("folder"), 5);
    m_abandoned = std::make_shared<std::atomic<bool>>(false);
}

QVector<Told> TestFolderReadJob::read(
    const QString& folder, const FolderEntries* before, bool foldersOnly) const
{
    QVector<Told> all;
    FolderReadJob job(folder, foldersOnly,
        before == nullptr ? nullptr : std::make_unique<const FolderEntries>(*before), m_abandoned);
    connect(&job, &FolderReadJob::done, this, [&all](const FolderReading& reading, qint64 tookMs) {
        all.append({reading, tookMs});
    });
    job.run();
    return all;
}

void TestFolderReadJob::slowFolderComesInTwoParts()
{
    FaultShim shim(m_dir.path(), true);
    shim.delay("readdir", QStringLiteral("folder"), 1050, 5, 1);
    const QVector<Told> all = read(m_folder);
    QCOMPARE(all.size(), 2);
    const FolderReading part = all.at(0).reading;
    QCOMPARE(part.folder, m_folder);
    QVERIFY(part.exists && part.first && !part.complete);
    QVERIFY(!part.entries.isEmpty() && part.entries.size() < 6);
    QCOMPARE(part.changed, part.entries);
    QCOMPARE(part.files + part.dirs + (namesIn(part.entries).contains(QStringLiteral("..")) ? 1 : 0),
        static_cast<qint64>(part.entries.size()));
    const FolderReading rest = all.at(1).reading;
    QVERIFY(rest.exists && !rest.first && rest.complete);
    QCOMPARE(namesIn(rest.entries),
        (QStringList{"..", "file0.txt", "file1.txt", "file2.txt", "file3.txt", "file4.txt"}));
    QCOMPARE(rest.changed.size(), rest.entries.size() - part.entries.size());
    QCOMPARE(rest.removed, QStringList());
    QCOMPARE(rest.files, 5);
    QVERIFY(all.at(0).tookMs >= 1000 && all.at(1).tookMs >= all.at(0).tookMs);
}

void TestFolderReadJob::slowFolderThatIsKnownComesAtOnce()
{
    const FolderEntries before = read(m_folder).constFirst().reading.entries;
    FaultShim shim(m_dir.path(), true);
    shim.delay("readdir", QStringLiteral("folder"), 1050, 5, 1);
    const QVector<Told> all = read(m_folder, &before);
    QCOMPARE(all.size(), 1);
    QVERIFY(all.at(0).reading.complete && !all.at(0).reading.first);
    QCOMPARE(all.at(0).reading.entries.size(), 6);
    QCOMPARE(namesIn(all.at(0).reading.changed), QStringList());
}

// The folder is slow only at its end, where all entries are there already.
void TestFolderReadJob::completeReadingIsToldAfterAPart()
{
    FaultShim shim(m_dir.path());
    shim.delay("readdir", QStringLiteral("folder"), 1050, 8, 1);
    FolderReader reader(nullptr);
    QVector<FolderReading> told;
    connect(&reader, &FolderReader::readingDone, this,
        [&told](const FolderReading& reading) { told.append(reading); });
    reader.read(m_folder);
    QTRY_COMPARE(told.size(), 2);
    QVERIFY(told.at(0).first && !told.at(0).complete);
    QCOMPARE(told.at(0).entries.size(), 6);
    QVERIFY(!told.at(1).first && told.at(1).complete);
    QCOMPARE(told.at(1).files, 5);
    QCOMPARE(namesIn(told.at(1).changed), QStringList());
    reader.read(m_folder);
    QTRY_COMPARE(shim.count("closedir", QStringLiteral("folder")), 2);
    QTRY_VERIFY(otherThreadsWait());
    QCoreApplication::processEvents();
    QCOMPARE(told.size(), 2); // nothing has changed
}

void TestFolderReadJob::replacedWhileItIsRead_data()
{
    QTest::addColumn<QString>("target"); // of a link; a name without one is a file or a pipe
    QTest::newRow("dangling") << "nothing";
    QTest::newRow("file") << QString();
    QTest::newRow("pipe") << QString();
}

// The name is read as that of a folder, and its facts are looked up when it is none any more.
void TestFolderReadJob::replacedWhileItIsRead()
{
    QFETCH(QString, target);
    const QString by = QString::fromLatin1(QTest::currentDataTag());
    const QString above = "above-" + by;
    const QString name = above + "/it";
    const QString replaced = m_dir.folder(name);
    const FolderEntries before = read(m_dir.path(above), nullptr, true).constFirst().reading.entries;
    QCOMPARE(namesIn(before), QStringList{"it"});
    FaultShim shim(m_dir.path(), true);
    const int end = 4; // ".", ".." and the folder come first
    shim.before("readdir", above, end, [&] {
        QVERIFY(QDir().rename(replaced, m_dir.path("was-" + by)));
        if (!target.isEmpty()) {
            m_dir.link(name, target);
        } else if (by == "pipe") {
            m_dir.fifo(name);
        } else {
            m_dir.file(name);
        }
    });
    const QVector<Told> all = read(m_dir.path(above), &before, true);
    QCOMPARE(shim.count("readdir", above), end);
    QCOMPARE(all.size(), 1);
    QCOMPARE(namesIn(all.at(0).reading.entries), QStringList());
    QCOMPARE(all.at(0).reading.removed, QStringList{"it"});
    QCOMPARE(namesIn(all.at(0).reading.changed), QStringList());
}

void TestFolderReadJob::notWantedAnyMore_data()
{
    QTest::addColumn<int>("call");
    QTest::newRow("before it starts") << 0;
    QTest::newRow("at the first entry") << 1;
    QTest::newRow("at a later entry") << 4;
}

void TestFolderReadJob::notWantedAnyMore()
{
    QFETCH(int, call);
    FaultShim shim(m_dir.path(), true);
    if (call == 0) {
        m_abandoned->store(true);
    } else {
        shim.before("readdir", QStringLiteral("folder"), call, [this] { m_abandoned->store(true); });
    }
    QCOMPARE(read(m_folder).size(), 0);
    QCOMPARE(shim.count("readdir", QStringLiteral("folder")) > 0, call > 0);
}

void TestFolderReadJob::readerThatIsDestroyedAbandonsIt()
{
    constexpr int files = 200;
    const QString folder = m_dir.folder(QStringLiteral("big"));
    m_dir.files(QStringLiteral("big"), files);
    QSemaphore reached;
    QSemaphore mayGoOn;
    FaultShim shim(m_dir.path());
    shim.before("readdir", QStringLiteral("big"), files / 2, [&reached, &mayGoOn] {
        reached.release();
        mayGoOn.acquire();
    });
    auto reader = std::make_unique<FolderReader>(nullptr);
    reader->read(folder);
    const bool came = reached.tryAcquire(1, 10000);
    reader.reset();
    mayGoOn.release();
    QVERIFY(came);
    QTRY_COMPARE(shim.count("closedir", QStringLiteral("big")), 1);
    QVERIFY(shim.count("readdir", QStringLiteral("big")) < files / 2 + 10);
}

void TestFolderReadJob::isNoFolder()
{
    for (const QString& path : {m_dir.file(QStringLiteral("file")), m_dir.path(QStringLiteral("gone"))}) {
        const QVector<Told> all = read(path);
        QCOMPARE(all.size(), 1);
        QVERIFY(!all.at(0).reading.exists && all.at(0).reading.entries.isEmpty());
    }
}

// A ninth waits for a thread of the pool.
void TestFolderReadJob::eightSlowFoldersAtOnce()
{
    constexpr int folders = 9;
    QSemaphore reached;
    QSemaphore mayGoOn;
    FaultShim shim(m_dir.path());
    FolderReader reader(nullptr);
    int done = 0;
    connect(&reader, &FolderReader::readingDone, this, [&done] { ++done; });
    const int before = threadCount() - pooledThreadCount();
    for (int i = 0; i < folders; ++i) {
        const QString name = QStringLiteral("slow%1").arg(i);
        m_dir.folder(name);
        shim.before("readdir", name, 1, [&reached, &mayGoOn] {
            reached.release();
            mayGoOn.acquire();
        });
        reader.read(m_dir.path(name));
    }
    const int threads = threadCount() - before;
    const bool eightCame = reached.tryAcquire(8, 10000);
    mayGoOn.release(folders);
    QTRY_COMPARE(done, folders);
    QVERIFY(eightCame);
    QCOMPARE(threads, 8);
}

// The older reading ends after the newer one was told.
void TestFolderReadJob::readingFromBeforeTheFolderWasForgotten()
{
    QSemaphore reached;
    QSemaphore mayGoOn;
    FaultShim shim(m_dir.path());
    // All entries are known to it by then: the call is the one that finds the end.
    shim.before("readdir", QStringLiteral("folder"), 8, [&reached, &mayGoOn] {
        reached.release();
        mayGoOn.acquire();
    });
    FolderReader reader(nullptr);
    QVector<QStringList> told;
    connect(&reader, &FolderReader::readingDone, this,
        [&told](const FolderReading& reading) { told.append(namesIn(reading.entries)); });
    reader.read(m_folder);
    const bool held = reached.tryAcquire(1, 10000);
    reader.forget(m_folder);
    const bool changed = QFile::remove(m_folder + "/file0.txt") && QFile::remove(m_folder + "/file1.txt");
    reader.read(m_folder);
    const QStringList names{"..", "file2.txt", "file3.txt", "file4.txt"};
    const bool newCame = QTest::qWaitFor([&told, &names] { return told == QVector<QStringList>{names}; });
    mayGoOn.release();
    QVERIFY(held && changed && newCame);
    QTRY_COMPARE(shim.count("closedir", QStringLiteral("folder")), 2);
    QTRY_VERIFY(otherThreadsWait());
    QCoreApplication::processEvents();
    QCOMPARE(told.size(), 1);
    m_dir.file(QStringLiteral("folder/later"));
    QTRY_COMPARE(told.size(), 2);
    QCOMPARE(told.constLast().size(), 5);
}

// The folder is there for the reading only: no watch tells that it comes back. One that cannot be watched is
// not read again for that.
void TestFolderReadJob::goneBetweenReadingAndWatching()
{
    const QString unwatched = m_dir.folder(QStringLiteral("unwatched"));
    FaultShim shim(m_dir.path(), true);
    shim.fail("inotify_add_watch", QStringLiteral("unwatched"), ENOSPC, 1, FaultShim::always);
    shim.fail("inotify_add_watch", QStringLiteral("folder"), ENOENT, 1, 2);
    FolderReader reader(nullptr);
    reader.read(unwatched);
    reader.read(m_folder);
    QTRY_COMPARE(shim.count("inotify_add_watch", QStringLiteral("folder")), 3);
    QCOMPARE(shim.count("inotify_add_watch", QStringLiteral("unwatched")), 2);
    m_dir.file(QStringLiteral("folder/later"));
    QTRY_VERIFY(namesIn(reader.entries(m_folder)).contains("later"));
}

// The watch is still that of a folder which was moved away.
void TestFolderReadJob::madeAnewBetweenWatchingAndReading()
{
    FaultShim shim(m_dir.path(), true);
    FolderReader reader(nullptr);
    reader.read(m_folder);
    QTRY_VERIFY(!reader.entries(m_folder).isEmpty());
    shim.fail("inotify_add_watch", QStringLiteral("folder"), ENOENT);
    QVERIFY(QDir().rename(m_folder, m_dir.path(QStringLiteral("moved"))));
    m_dir.file(QStringLiteral("folder/new"));
    QTRY_VERIFY(namesIn(reader.entries(m_folder)).contains("new"));
    m_dir.file(QStringLiteral("folder/later"));
    QTRY_VERIFY(namesIn(reader.entries(m_folder)).contains("later"));
}

VANTREL_TEST_MAIN(TestFolderReadJob)
#include "tst_FolderReadJob.moc"
