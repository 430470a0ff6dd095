#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/AsNobody.h"
#include "tests/support/FaultShim.h"
#include "tests/support/MemoryMount.h"
#include "tests/support/ShownFolderFixture.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QProcess>
#include <QRandomGenerator>
#include <QThread>
#include <QTimer>

#include <cerrno>
#include <functional>
#include <memory>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

/// Runs a thread to its end, and the event loop meanwhile, in which @p turn is called each millisecond.
void runMeanwhile(QThread& thread, const std::function<void(int)>& turn)
{
    QEventLoop loop;
    QObject::connect(&thread, &QThread::finished, &loop, &QEventLoop::quit);
    QTimer timer;
    int turns = 0;
    QObject::connect(&timer, &QTimer::timeout, [&] { turn(turns++); });
    timer.start(1);
    thread.start();
    loop.exec();
    thread.wait();
}

/// Whether the system really has no watch for this process, as in the test that is run in a test below.
bool hasNoWatches()
{
    return qEnvironmentVariableIsSet("VANTREL_NO_WATCHES");
}

/// Makes, changes, renames and removes files in a folder at random, until a number of steps or a time is
/// over.
class Churn : public QThread
{
public:
    Churn(QString folder, int steps, qint64 ms)
        : m_folder(std::move(folder))
        , m_steps(steps)
        , m_ms(ms)
    {
    }

protected:
    void run() override
    {
        QRandomGenerator random(1);
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < m_steps || clock.elapsed() < m_ms; ++i) {
            step(random);
        }
    }

private:
    QString name(QRandomGenerator& random) const
    {
        return m_folder + QStringLiteral("/n%1").arg(random.bounded(300));
    }
    void step(QRandomGenerator& random) const
    {
        const QString path = name(random);
        switch (random.bounded(5)) {
        case 0:
            QFile::remove(path);
            QDir().rmdir(path);
            break;
        case 1:
            QFile::rename(path, name(random));
            break;
        case 2:
            QDir().mkdir(path);
            break;
        default: {
            QFile file(path);
            if (file.open(QIODevice::Append)) {
                file.write(QByteArray(random.bounded(100), 'x'));
            }
        }
        }
    }

    QString m_folder;
    int m_steps;
    qint64 m_ms;
};

} // namespace

/// What can become of a folder while it is shown.
class TestShownFolder : public QObject, protected ShownFolderFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

    void mishaps_data();
    void mishaps();
    void madeAnewAtOnce();
    void focusStaysWhenTheFolderIsGone();
    void focusStaysInTheListing();
    void goneWhenItIsToBeReadAnew();
    void madeBetweenWatchAndReading();
    void madeUnreadable();
    void madeReadable_data();
    void madeReadable();
    void madeReadableUnseen();
    void unmounted();
    void filled();
    void churned();
    void ownOperationsShowWithoutWatches_data();
    void ownOperationsShowWithoutWatches();
    void ownOperationsShowWhereWatchesAreUsedUp();
};

void TestShownFolder::mishaps_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("expected");
    QTest::newRow("removed") << "removed"
                             << "a/b";
    QTest::newRow("renamed") << "renamed"
                             << "a/b";
    QTest::newRow("moved away") << "moved away"
                                << "a/b";
    QTest::newRow("folder above renamed") << "above renamed"
                                          << "a";
    QTest::newRow("folders above removed") << "above removed"
                                           << "";
    QTest::newRow("replaced by a file") << "file"
                                        << "a/b";
    QTest::newRow("replaced by a link to nothing") << "dangling"
                                                   << "a/b";
    QTest::newRow("replaced by a link to a folder") << "linked"
                                                    << "a/b";
    QTest::newRow("emptied") << "emptied"
                             << "a/b/shown";
    QTest::newRow("replaced by another folder") << "another"
                                                << "a/b/shown";
}

void TestShownFolder::mishaps()
{
    QFETCH(QString, what);
    QFETCH(QString, expected);
    for (MPanel* each : {panel, other.get()}) {
        open(each, QStringLiteral("a/b/shown"));
    }
    const QString shown = dir->path(QStringLiteral("a/b/shown"));
    if (what == "removed") {
        QVERIFY(QDir(shown).removeRecursively());
    } else if (what == "renamed") {
        QVERIFY(QDir().rename(shown, dir->path(QStringLiteral("a/b/other"))));
    } else if (what == "moved away") {
        QVERIFY(QDir().rename(shown, dir->path(QStringLiteral("to/shown"))));
    } else if (what == "above renamed") {
        QVERIFY(QDir().rename(dir->path(QStringLiteral("a/b")), dir->path(QStringLiteral("a/z"))));
    } else if (what == "above removed") {
        QVERIFY(QDir(dir->path(QStringLiteral("a"))).removeRecursively());
    } else if (what == "emptied") {
        QVERIFY(QDir(shown).removeRecursively() && QDir().mkdir(shown));
    } else {
        // One that the tree would go on to.
        dir->folder(QStringLiteral("a/b/zother"));
        for (MPanel* each : {panel, other.get()}) {
            QVERIFY(waitForTreeRow(each, dir->path(QStringLiteral("a/b/zother"))));
        }
        QVERIFY(QDir().rename(shown, dir->path(QStringLiteral("aside"))));
        if (what == "file") {
            dir->file(QStringLiteral("a/b/shown"), "a file");
        } else if (what == "dangling") {
            dir->link(QStringLiteral("a/b/shown"), QStringLiteral("nothing"));
        } else if (what == "linked") {
            dir->link(QStringLiteral("a/b/shown"), dir->path(QStringLiteral("to")));
        } else {
            dir->file(QStringLiteral("a/b/shown/f"), "longer");
            dir->file(QStringLiteral("a/b/shown/new"), "n");
        }
    }
    for (MPanel* each : {panel, other.get()}) {
        const QString path = expected.isEmpty() ? dir->path() : dir->path(expected);
        QTRY_COMPARE(each->currentPath, path);
        QVERIFY(showsTheDisk(each, path));
        QCOMPARE(each->rootPath, dir->path());
        QTRY_VERIFY(each->folderLabel->text().startsWith(path + " has "));
        // It is followed further on.
        dir->file(expected.isEmpty() ? QStringLiteral("later") : expected + "/later", "later");
        QVERIFY(showsTheDisk(each, path));
    }
}

void TestShownFolder::madeAnewAtOnce()
{
    open(panel, QStringLiteral("a/b/shown"));
    for (int round = 0; round < 20; ++round) {
        QVERIFY(QDir(dir->path(QStringLiteral("a/b/shown"))).removeRecursively());
        dir->file(QStringLiteral("a/b/shown/round%1").arg(round), QByteArray(round, 'x'));
        for (int i = 0; i < round; ++i) {
            QCoreApplication::processEvents();
        }
    }
    // It may have been found gone at some moment. Either way nothing stale is left.
    QTRY_VERIFY(showsTheDisk(panel, panel->currentPath));
    QVERIFY(panel->currentPath == dir->path(QStringLiteral("a/b/shown"))
        || panel->currentPath == dir->path(QStringLiteral("a/b")));
}

void TestShownFolder::focusStaysWhenTheFolderIsGone()
{
    const QString gone = dir->path(QStringLiteral("a/b/gone"));
    QVERIFY(QDir().mkdir(gone));
    QVERIFY(openFolder(panel, gone));
    other->list->setFocus();
    QVERIFY(QDir().rmdir(gone));
    QTRY_COMPARE(panel->currentPath, dir->path(QStringLiteral("a/b")));
    QVERIFY(other->list->hasFocus());
}

// In the tree the next key would mean the whole folder above.
void TestShownFolder::focusStaysInTheListing()
{
    open(panel, QStringLiteral("a/b/shown"));
    panel->list->setFocus();
    QVERIFY(panel->list->hasFocus());
    QVERIFY(QDir(panel->currentPath).removeRecursively());
    QTRY_COMPARE(panel->currentPath, dir->path(QStringLiteral("a/b")));
    QVERIFY(showsTheDisk(panel, panel->currentPath));
    QVERIFY(panel->list->hasFocus());
    panel->getSelection();
    QCOMPARE(panel->selectedPaths, QStringList());
}

void TestShownFolder::goneWhenItIsToBeReadAnew()
{
    open(panel, QStringLiteral("a/b/shown"));
    QVERIFY(QDir(panel->currentPath).removeRecursively());
    panel->reloadList();
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a/b")));
    QVERIFY(showsTheDisk(panel, panel->currentPath));
}

void TestShownFolder::madeBetweenWatchAndReading()
{
    FaultShim shim(dir->path(), true);
    shim.fail("inotify_add_watch", QStringLiteral("a/b/shown"), ENOENT);
    const QString shown = dir->path(QStringLiteral("a/b/shown"));
    QVERIFY(openFolder(panel, shown)); // the first that watches it is the listing
    QVERIFY(shim.count("inotify_add_watch", QStringLiteral("a/b/shown")) > 0);
    dir->file(QStringLiteral("a/b/shown/later"), "later");
    QVERIFY(showsTheDisk(panel, shown));
}

void TestShownFolder::madeUnreadable()
{
    for (MPanel* each : {panel, other.get()}) {
        open(each, QStringLiteral("a/b/shown"));
    }
    dir->setMode(QString(), 0755);
    dir->setMode(QStringLiteral("a/b/shown"), 0);
    {
        const AsNobody nobody; // root may read everything
        panel->refresh();
        other->refresh();
        for (MPanel* each : {panel, other.get()}) {
            QTRY_COMPARE(listNames(each), QStringList());
            QCOMPARE(each->currentPath, dir->path(QStringLiteral("a/b/shown")));
            QTRY_COMPARE(each->folderLabel->text(),
                dir->path(QStringLiteral("a/b/shown")) + " has 0 dirs, 0 files, 0 Bytes");
        }
    }
    dir->setMode(QStringLiteral("a/b/shown"), 0755);
    for (MPanel* each : {panel, other.get()}) {
        QVERIFY(showsTheDisk(each, dir->path(QStringLiteral("a/b/shown"))));
    }
}

void TestShownFolder::madeReadable_data()
{
    QTest::addColumn<unsigned>("mode");
    QTest::addColumn<unsigned>("modeAbove");
    QTest::newRow("itself") << 0U << 0755U;
    QTest::newRow("after the folder above") << 0U << 0111U;
    QTest::newRow("may be listed only") << 0444U << 0755U;
    QTest::newRow("the folder above is closed") << 0755U << 0U;
    QTest::newRow("both are closed") << 0U << 0U;
}

/// A folder that may not be read when it is opened is shown as soon as it may be.
void TestShownFolder::madeReadable()
{
    QFETCH(unsigned, mode);
    QFETCH(unsigned, modeAbove);
    const QString shown = QStringLiteral("a/b");
    const QString above = QStringLiteral("a");
    dir->setMode(QString(), 0755);
    dir->setMode(shown, mode);
    dir->setMode(above, modeAbove);
    {
        const AsNobody nobody;
        for (MPanel* each : {panel, other.get()}) {
            each->setTreeRoot(dir->path(shown));
            QTRY_COMPARE(each->folderLabel->text().section(QLatin1String(" has "), 0, 0), dir->path(shown));
        }
        QVERIFY(readAnotherFolder());
    }
    dir->setMode(above, 0755);
    {
        const AsNobody nobody;
        QVERIFY(readAnotherFolder());
    }
    dir->setMode(shown, 0755);
    const AsNobody nobody;
    for (MPanel* each : {panel, other.get()}) {
        QVERIFY(showsTheDisk(each, dir->path(shown)));
    }
}

/// Nobody tells of a folder whose folder above may not be read either.
void TestShownFolder::madeReadableUnseen()
{
    dir->setMode(QString(), 0755);
    dir->setMode(QStringLiteral("a/b/shown"), 0);
    dir->setMode(QStringLiteral("a/b"), 0111);
    const QString shown = dir->path(QStringLiteral("a/b/shown"));
    {
        const AsNobody nobody;
        panel->setTreeRoot(shown);
        QTRY_COMPARE(panel->folderLabel->text(), shown + " has 0 dirs, 0 files, 0 Bytes");
        QVERIFY(readAnotherFolder());
    }
    dir->setMode(QStringLiteral("a/b/shown"), 0755);
    {
        const AsNobody nobody;
        QEvent lookedAt(QEvent::WindowActivate);
        QCoreApplication::sendEvent(&window->window, &lookedAt);
        QVERIFY(showsTheDisk(panel, shown));
    }
}

void TestShownFolder::unmounted()
{
    MemoryMount mount(dir->folder(QStringLiteral("a/mount")), "size=1m");
    NEEDS_MOUNT(mount)
    dir->file(QStringLiteral("a/mount/sub/f"), "x");
    dir->file(QStringLiteral("a/mount/g"), "y");
    open(panel, QStringLiteral("a/mount/sub"));
    open(other.get(), QStringLiteral("a/mount"));
    mount.unmount();
    for (MPanel* each : {panel, other.get()}) {
        QTRY_COMPARE(each->currentPath, dir->path(QStringLiteral("a/mount")));
        QVERIFY(showsTheDisk(each, dir->path(QStringLiteral("a/mount"))));
        QCOMPARE(listNames(each), QStringList{".."});
    }
    dir->file(QStringLiteral("a/mount/later"), "later");
    QVERIFY(showsTheDisk(panel, dir->path(QStringLiteral("a/mount"))));
}

void TestShownFolder::filled()
{
    open(panel, QStringLiteral("a/b/shown"));
    const int files = isLong() ? 100000 : 4000;
    const std::unique_ptr<QThread> filler(
        QThread::create([&] { dir->files(QStringLiteral("a/b/shown"), files); }));
    runMeanwhile(*filler, [&](int /*turn*/) { panel->list->scrollToBottom(); });
    QVERIFY(showsTheDisk(panel, dir->path(QStringLiteral("a/b/shown"))));
    QCOMPARE(listNames(panel).size(), files + 4);
}

void TestShownFolder::churned()
{
    open(panel, QStringLiteral("a/b/shown"));
    open(other.get(), QStringLiteral("a/b/shown"));
    const QString shown = dir->path(QStringLiteral("a/b/shown"));
    Churn churn(shown, 5000, isLong() ? 60000 : 0);
    runMeanwhile(churn, [&](int turn) {
        if (turn % 50 == 0) {
            panel->headerClicked(turn / 50 % 4);
            other->list->selectAll();
        } else if (turn % 50 == 25) {
            other->list->clearSelection();
            panel->list->scrollToBottom();
        }
    });
    QVERIFY(showsTheDisk(panel, shown));
    QVERIFY(showsTheDisk(other.get(), shown));
    // In the tree as well.
    QStringList folders = QDir(shown).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
    folders.sort();
    const auto branches = [&] {
        QStringList names;
        const QModelIndex parent = panel->treeModel->index(shown);
        for (int row = 0; row < panel->treeModel->rowCount(parent); ++row) {
            names.append(panel->treeModel->entryName(panel->treeModel->index(row, 0, parent)));
        }
        names.sort();
        return names;
    };
    QTRY_COMPARE(branches(), folders);
}

void TestShownFolder::ownOperationsShowWithoutWatches_data()
{
    QTest::addColumn<QString>("operation");
    for (const char* operation : {"copy", "move", "delete", "new folder", "rename"}) {
        QTest::newRow(operation) << operation;
    }
}

void TestShownFolder::ownOperationsShowWithoutWatches()
{
    QFETCH(QString, operation);
    FaultShim shim(dir->path(), true);
    if (hasNoWatches()) {
        const int events = ::inotify_init1(IN_CLOEXEC);
        const bool hasNone
            = events < 0 || (::inotify_add_watch(events, "/", IN_CREATE) < 0 && errno == ENOSPC);
        ::close(events);
        QVERIFY(hasNone);
    } else {
        shim.fail("inotify_add_watch", QStringLiteral("*"), ENOSPC, 1, FaultShim::always);
    }
    for (MPanel* each : {panel, other.get()}) {
        each->setTreeRoot(dir->path()); // now without watches
        open(each, QStringLiteral("a/b/shown"));
    }
    other->setTreeRoot(operation == "copy" || operation == "move" ? dir->path(QStringLiteral("to"))
                                                                  : dir->path(QStringLiteral("a/b/shown")));
    QVERIFY(waitForList(other.get()));
    const QStringList before
        = namesOnDisk(dir->path(QStringLiteral("a/b/shown"))) + namesOnDisk(dir->path(QStringLiteral("to")));
    runOperation(operation);
    QVERIFY(before
        != namesOnDisk(dir->path(QStringLiteral("a/b/shown")))
            + namesOnDisk(dir->path(QStringLiteral("to"))));
    QVERIFY(showsTheDisk(panel, dir->path(QStringLiteral("a/b/shown"))));
    QVERIFY(showsTheDisk(other.get(), other->rootPath));
    QVERIFY(hasNoWatches() || shim.count("inotify_add_watch", QStringLiteral("a/b/shown")) > 0);
}

void TestShownFolder::ownOperationsShowWhereWatchesAreUsedUp()
{
    if (hasNoWatches()) {
        QSKIP("this is the process without watches");
    }
    const auto run = [](const QString& command) {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStringLiteral("unshare"),
            {QStringLiteral("--user"), QStringLiteral("--map-root-user"), QStringLiteral("/bin/sh"),
                QStringLiteral("-c"),
                QStringLiteral("echo 0 >/proc/sys/user/max_inotify_watches && ") + command});
        const bool ended = process.waitForFinished(60000);
        return std::make_pair(ended && process.exitCode() == 0, process.readAll());
    };
    if (!run(QStringLiteral("true")).first) {
        QSKIP("there can be no user namespace without watches here");
    }
    const auto result = run(QStringLiteral("VANTREL_NO_WATCHES=1 exec '%1' ownOperationsShowWithoutWatches")
                                .arg(QCoreApplication::applicationFilePath()));
    QVERIFY2(result.first, result.second.constData());
    QVERIFY2(result.second.contains("7 passed"), result.second.constData());
}

/// Like VANTREL_TEST_MAIN, with mounts of its own.
int main(int argc, char** argv)
{
    useOwnMounts();
    prepareTestProcess();
    QApplication app(argc, argv);
    int failures = 0;
    {
        TestShownFolder test;
        failures = QTest::qExec(&test, argc, argv);
    }
    lookForLeaks();
    return failures;
}

#include "tst_ShownFolder.moc"
