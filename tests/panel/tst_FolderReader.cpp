#include "panel/FolderReader.h"
#include "tests/support/ObjectCount.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>

#include <memory>

namespace {

QStringList namesOf(const FolderEntries& entries)
{
    QStringList names;
    for (const auto& entry : entries) {
        names.append(entry.first);
    }
    return names;
}

/// A reader that notes what it tells.
struct Noting : QObject
{
    FolderReader reader{nullptr};
    QVector<FolderReading> readings;
    int taken = 0; ///< readings that have come, also those that there is nothing to tell of
    bool onThisThread = true;

    Noting()
    {
        reader.installEventFilter(this);
        QObject::connect(&reader, &FolderReader::readingDone, &reader, [this](const FolderReading& reading) {
            readings.append(reading);
            onThisThread = onThisThread && QThread::currentThread() == qApp->thread();
        });
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        taken += event->type() == QEvent::MetaCall ? 1 : 0; // the jobs' queued signal
        return false;
    }
};

} // namespace

class TestFolderReader : public QObject
{
    Q_OBJECT

private slots:
    void firstReading();
    void foldersOnly();
    void emptyFolder();
    void goneFolder_data();
    void goneFolder();
    void knows();
    void forget();
    void forgetBelowTheTop();
    void changesAreTold_data();
    void changesAreTold();
    void sizeAloneIsTold();
    void nothingIsToldWithoutChange();
    void refreshReadsAgain();
    void refreshAfterUnseenChange();
    void folderVanishes();
    void folderMadeAnew();
    void readTwiceAtOnce();
    void readingsArePaced();
    void severalFolders();
    void factsAreLookedUp();
    void awkwardNames();
    void destroyedWhileReading();
    void nothingIsLeftOver();

private:
    /// Where the folders stand that are read. The system's own place for temporary files changes whenever
    /// another program works there, which a listing shows as "..".
    const TestDir m_above;
};

void TestFolderReader::firstReading()
{
    const TestDir dir(m_above.path());
    dir.file(QStringLiteral("b.txt"));
    dir.file(QStringLiteral("a10"));
    dir.file(QStringLiteral("a9"));
    dir.file(QStringLiteral(".hidden"));
    dir.folder(QStringLiteral("zfolder"));
    dir.folder(QStringLiteral(".hiddenfolder"));
    dir.link(QStringLiteral("link"), QStringLiteral("zfolder"));
    dir.link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    dir.fifo(QStringLiteral("fifo"));
    Noting noting;
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    const FolderReading& reading = noting.readings.constFirst();
    QCOMPARE(reading.folder, dir.path());
    QVERIFY(reading.exists);
    QVERIFY(reading.first);
    QVERIFY(reading.complete);
    QCOMPARE(namesOf(reading.entries),
        (QStringList{
            "..", ".hiddenfolder", "link", "zfolder", ".hidden", "a10", "a9", "b.txt", "dangling", "fifo"}));
    QCOMPARE(namesOf(reading.changed), namesOf(reading.entries));
    QVERIFY(reading.removed.isEmpty());
    QVERIFY(noting.onThisThread);
}

void TestFolderReader::foldersOnly()
{
    const TestDir dir(m_above.path());
    dir.file(QStringLiteral("file"));
    dir.folder(QStringLiteral("folder"));
    dir.folder(QStringLiteral(".hiddenfolder"));
    dir.link(QStringLiteral("link"), QStringLiteral("folder"));
    dir.link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    dir.fifo(QStringLiteral("fifo"));
    Noting noting;
    noting.reader.setFoldersOnly(true);
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    QCOMPARE(namesOf(noting.readings.constFirst().entries), (QStringList{".hiddenfolder", "folder"}));
}

void TestFolderReader::emptyFolder()
{
    const TestDir dir(m_above.path());
    Noting noting;
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    QCOMPARE(namesOf(noting.readings.constFirst().entries), QStringList{".."});
}

void TestFolderReader::goneFolder_data()
{
    QTest::addColumn<QString>("relative");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("file") << QStringLiteral("file");
    QTest::newRow("dangling link") << QStringLiteral("dangling");
    QTest::newRow("below a file") << QStringLiteral("file/x");
}

void TestFolderReader::goneFolder()
{
    QFETCH(QString, relative);
    const TestDir dir(m_above.path());
    dir.file(QStringLiteral("file"));
    dir.link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    Noting noting;
    noting.reader.read(dir.path(relative));
    QTRY_COMPARE(noting.readings.size(), 1);
    QVERIFY(!noting.readings.constFirst().exists);
    QVERIFY(noting.readings.constFirst().entries.isEmpty());
}

void TestFolderReader::knows()
{
    const TestDir dir(m_above.path());
    Noting noting;
    QVERIFY(!noting.reader.knows(dir.path()));
    noting.reader.read(dir.path());
    QVERIFY(noting.reader.knows(dir.path()));
    QVERIFY(!noting.reader.knows(dir.path() + "/sub"));
}

void TestFolderReader::forget()
{
    const TestDir dir(m_above.path());
    for (const char* name : {"a", "a/b", "a/b/c", "ab"}) {
        dir.folder(QLatin1String(name));
    }
    Noting noting;
    for (const char* name : {"a", "a/b", "a/b/c", "ab"}) {
        noting.reader.read(dir.path(QLatin1String(name)));
    }
    QTRY_COMPARE(noting.readings.size(), 4);
    noting.reader.forget(dir.path(QStringLiteral("a")));
    QVERIFY(!noting.reader.knows(dir.path(QStringLiteral("a"))));
    QVERIFY(!noting.reader.knows(dir.path(QStringLiteral("a/b/c"))));
    QVERIFY(noting.reader.knows(dir.path(QStringLiteral("ab"))));
    noting.readings.clear();
    dir.file(QStringLiteral("a/b/new"));
    dir.file(QStringLiteral("ab/new"));
    QTRY_VERIFY(!noting.readings.isEmpty());
    QCOMPARE(noting.readings.constFirst().folder, dir.path(QStringLiteral("ab")));
    // What a forgotten folder had to tell would come before a change that is made later.
    dir.file(QStringLiteral("ab/newer"));
    QTRY_COMPARE(noting.readings.constLast().entries.size(), 3);
    for (const FolderReading& reading : qAsConst(noting.readings)) {
        QCOMPARE(reading.folder, dir.path(QStringLiteral("ab")));
    }
}

void TestFolderReader::forgetBelowTheTop()
{
    Noting noting;
    noting.reader.read(QStringLiteral("/"));
    noting.reader.read(QStringLiteral("/proc"));
    noting.reader.forget(QStringLiteral("/"));
    QVERIFY(!noting.reader.knows(QStringLiteral("/")));
    QVERIFY(!noting.reader.knows(QStringLiteral("/proc")));
}

void TestFolderReader::changesAreTold_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what : {"new", "removed", "renamed", "written", "mode", "time", "folder made", "many"}) {
        QTest::newRow(what) << QString::fromLatin1(what);
    }
}

void TestFolderReader::changesAreTold()
{
    QFETCH(QString, what);
    const TestDir dir(m_above.path());
    dir.files(QStringLiteral("."), 3);
    Noting noting;
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    noting.readings.clear();
    QStringList changed;
    QStringList removed;
    if (what == QLatin1String("new")) {
        dir.file(QStringLiteral("new"));
        changed = QStringList{"new"};
    } else if (what == QLatin1String("removed")) {
        QVERIFY(QFile::remove(dir.path(QStringLiteral("file1.txt"))));
        removed = QStringList{"file1.txt"};
    } else if (what == QLatin1String("renamed")) {
        QVERIFY(QFile::rename(dir.path(QStringLiteral("file1.txt")), dir.path(QStringLiteral("other"))));
        removed = QStringList{"file1.txt"};
        changed = QStringList{"other"};
    } else if (what == QLatin1String("written")) {
        dir.file(QStringLiteral("file0.txt"), "more");
        changed = QStringList{"file0.txt"};
    } else if (what == QLatin1String("mode")) {
        dir.setMode(QStringLiteral("file2.txt"), 0600);
        changed = QStringList{"file2.txt"};
    } else if (what == QLatin1String("time")) {
        dir.setTimes(QStringLiteral("file2.txt"), 1000);
        changed = QStringList{"file2.txt"};
    } else if (what == QLatin1String("folder made")) {
        QVERIFY(QDir().mkdir(dir.path(QStringLiteral("sub"))));
        changed = QStringList{"sub"};
    } else {
        dir.files(QStringLiteral("."), 50, QStringLiteral("m%1"));
        for (int i = 0; i < 50; ++i) {
            changed.append(QStringLiteral("m%1").arg(i));
        }
    }
    QSet<QString> gotChanged;
    QSet<QString> gotRemoved;
    const auto collect = [&] {
        for (const FolderReading& reading : qAsConst(noting.readings)) {
            for (const QString& name : namesOf(reading.changed)) {
                gotChanged.insert(name);
            }
            for (const QString& name : reading.removed) {
                gotRemoved.insert(name);
            }
        }
        gotChanged.remove(QStringLiteral(".."));
        return gotChanged == QSet<QString>(changed.begin(), changed.end())
            && gotRemoved == QSet<QString>(removed.begin(), removed.end());
    };
    QTRY_VERIFY(collect());
    QVERIFY(!noting.readings.constLast().first);
}

void TestFolderReader::sizeAloneIsTold()
{
    const TestDir dir(m_above.path());
    dir.file(QStringLiteral("it"), "1");
    dir.setTimes(QStringLiteral("it"), 1000);
    Noting noting;
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    dir.file(QStringLiteral("it"), "12");
    dir.setTimes(QStringLiteral("it"), 1000);
    QTRY_VERIFY(noting.readings.size() > 1 && namesOf(noting.readings.constLast().changed).contains("it")
        && noting.readings.constLast().changed.constLast().second.size() == 2);
}

void TestFolderReader::nothingIsToldWithoutChange()
{
    const TestDir dir(m_above.path());
    dir.file(QStringLiteral("it"), "1");
    Noting noting;
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    noting.reader.refresh();
    dir.setMode(QStringLiteral("it"), 0644); // tells of a change that is none
    QTRY_VERIFY(noting.taken >= 3);
    QCOMPARE(noting.readings.size(), 1);
}

void TestFolderReader::refreshReadsAgain()
{
    const TestDir dir(m_above.path());
    dir.folder(QStringLiteral("a"));
    dir.folder(QStringLiteral("b"));
    Noting noting;
    noting.reader.read(dir.path(QStringLiteral("a")));
    noting.reader.read(dir.path(QStringLiteral("b")));
    QTRY_COMPARE(noting.readings.size(), 2);
    dir.file(QStringLiteral("a/new"));
    noting.reader.refresh();
    QTRY_COMPARE(noting.readings.size(), 3);
    QCOMPARE(noting.readings.constLast().folder, dir.path(QStringLiteral("a")));
}

// A watch follows the folder that it was set on, not its path: nothing tells of what happens at a link.
void TestFolderReader::refreshAfterUnseenChange()
{
    const TestDir dir(m_above.path());
    dir.file(QStringLiteral("one/old"));
    dir.file(QStringLiteral("two/new"));
    dir.link(QStringLiteral("link"), QStringLiteral("one"));
    Noting noting;
    noting.reader.read(dir.path(QStringLiteral("link")));
    QTRY_COMPARE(noting.readings.size(), 1);
    QVERIFY(QFile::remove(dir.path(QStringLiteral("link"))));
    dir.link(QStringLiteral("link"), QStringLiteral("two"));
    noting.reader.refresh();
    QTRY_COMPARE(noting.readings.size(), 2);
    QCOMPARE(noting.readings.constLast().removed, QStringList{"old"});
    QVERIFY(namesOf(noting.readings.constLast().changed).contains(QStringLiteral("new")));
}

void TestFolderReader::folderVanishes()
{
    const TestDir dir(m_above.path());
    const QString folder = dir.folder(QStringLiteral("it"));
    Noting noting;
    noting.reader.read(folder);
    QTRY_COMPARE(noting.readings.size(), 1);
    QVERIFY(QDir().rmdir(folder));
    QTRY_VERIFY(!noting.readings.constLast().exists);
    QCOMPARE(noting.readings.constLast().folder, folder);
}

void TestFolderReader::folderMadeAnew()
{
    const TestDir dir(m_above.path());
    const QString folder = dir.folder(QStringLiteral("it"));
    dir.file(QStringLiteral("it/old"));
    Noting noting;
    noting.reader.read(folder);
    QTRY_COMPARE(noting.readings.size(), 1);
    QVERIFY(QFile::rename(folder, dir.path(QStringLiteral("away"))));
    dir.file(QStringLiteral("it/new"));
    QTRY_VERIFY(namesOf(noting.readings.constLast().entries).contains(QStringLiteral("new")));
    dir.file(QStringLiteral("it/newer"));
    QTRY_VERIFY(namesOf(noting.readings.constLast().entries).contains(QStringLiteral("newer")));
}

void TestFolderReader::readTwiceAtOnce()
{
    const TestDir dir(m_above.path());
    dir.files(QStringLiteral("."), 100);
    Noting noting;
    noting.reader.read(dir.path());
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.taken, 2);
    QCOMPARE(noting.readings.size(), 1); // the second reading found nothing new
    dir.file(QStringLiteral("new"));
    QTRY_COMPARE(noting.readings.size(), 2);
}

void TestFolderReader::readingsArePaced()
{
    const TestDir dir(m_above.path());
    Noting noting;
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    QElapsedTimer clock;
    clock.start();
    int made = 0;
    QTimer maker;
    connect(&maker, &QTimer::timeout, this, [&] { dir.file(QStringLiteral("f%1").arg(made++)); });
    maker.start(5);
    QTRY_VERIFY(made >= 120);
    maker.stop();
    QTRY_COMPARE(noting.readings.constLast().entries.size(), made + 1);
    QVERIFY2(noting.readings.size() > 3, QByteArray::number(noting.readings.size()).constData());
    QVERIFY2(noting.readings.size() <= clock.elapsed() / 100 + 2,
        QByteArray::number(noting.readings.size()).constData());
}

void TestFolderReader::severalFolders()
{
    const TestDir dir(m_above.path());
    Noting noting;
    for (int i = 0; i < 40; ++i) {
        dir.files(QString::number(i), i);
        noting.reader.read(dir.path(QString::number(i)));
    }
    QTRY_COMPARE(noting.readings.size(), 40);
    for (const FolderReading& reading : qAsConst(noting.readings)) {
        QCOMPARE(reading.entries.size(), QFileInfo(reading.folder).fileName().toInt() + 1);
    }
}

void TestFolderReader::factsAreLookedUp()
{
    const TestDir dir(m_above.path());
    dir.file(QStringLiteral("it"), "12345", 0640);
    dir.setTimes(QStringLiteral("it"), 86400);
    Noting noting;
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    QVERIFY(QFile::remove(dir.path(QStringLiteral("it"))));
    // The file is gone: what is told now was looked up before.
    const QFileInfo info = noting.readings.constFirst().entries.constLast().second;
    QCOMPARE(info.size(), 5);
    QCOMPARE(info.lastModified().toSecsSinceEpoch(), 86400);
    QVERIFY(info.permission(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
    QVERIFY(!info.permission(QFile::ReadOther));
    QVERIFY(info.isFile() && !info.isDir() && !info.isSymLink());
}

void TestFolderReader::awkwardNames()
{
    const TestDir dir(m_above.path());
    const QStringList names{
        "%1 %2", "<b>x<", "a\nb", QString(255, QLatin1Char('y')), " ", "\\", "\"", "*", "?"};
    for (const QString& name : names) {
        dir.file(name);
    }
    Noting noting;
    noting.reader.read(dir.path());
    QTRY_COMPARE(noting.readings.size(), 1);
    QStringList got = namesOf(noting.readings.constFirst().entries);
    got.removeAll(QStringLiteral(".."));
    QCOMPARE(QSet<QString>(got.begin(), got.end()), QSet<QString>(names.begin(), names.end()));
}

void TestFolderReader::destroyedWhileReading()
{
    const TestDir dir(m_above.path());
    dir.files(QStringLiteral("."), 3000);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 50; ++i) {
        FolderReader reader(nullptr);
        reader.read(dir.path());
        reader.read(QStringLiteral("/proc/self/fd"));
        if (i % 2 == 0) {
            QCoreApplication::processEvents();
        }
    }
    QVERIFY2(clock.elapsed() < 2000, QByteArray::number(clock.elapsed()).constData());
}

void TestFolderReader::nothingIsLeftOver()
{
    const TestDir dir(m_above.path());
    dir.files(QStringLiteral("."), 10);
    const auto once = [&dir] {
        Noting noting;
        noting.reader.read(dir.path());
        QTRY_COMPARE(noting.readings.size(), 1);
    };
    once();
    QTRY_VERIFY(threadCount() > 0);
    startObjectCount();
    const int descriptors = descriptorCount();
    for (int i = 0; i < 50; ++i) {
        once();
    }
    QTRY_COMPARE(objectCount(), 0);
    QCOMPARE(descriptorCount(), descriptors);
    QVERIFY(threadCount() < 16);
}

VANTREL_TEST_MAIN(TestFolderReader)
#include "tst_FolderReader.moc"
