#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/AsNobody.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FaultShim.h"
#include "tests/support/MemoryMount.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRandomGenerator>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <cerrno>
#include <functional>
#include <memory>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

bool isLong()
{
    return qEnvironmentVariableIntValue("VANTREL_LONG") != 0;
}

/// @return names in a folder as the listing has to show them, sorted
QStringList namesOnDisk(const QString& folder)
{
    QStringList names
        = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    names.append(QStringLiteral(".."));
    names.sort();
    return names;
}

/// @return how the listing differs from a folder on disk, the sizes of its files included; empty where it
/// does not
QStringList staleRows(const MPanel* panel, const QString& folder)
{
    if (panel->listModel->rootPath() != folder) {
        return {"shows " + panel->listModel->rootPath()};
    }
    QHash<QString, int> times;
    for (const QString& name : listNames(panel)) {
        ++times[name];
    }
    QStringList all;
    for (const QString& name : namesOnDisk(folder)) {
        const int shown = times.take(name);
        if (shown != 1) {
            all.append(QStringLiteral("%1 times: %2").arg(shown).arg(name));
        }
    }
    const QStringList tooMuch = times.keys();
    for (const QString& name : tooMuch) {
        all.append("too much: " + name);
    }
    const QModelIndex root = panel->list->rootIndex();
    for (int row = 0; row < panel->listModel->rowCount(root); ++row) {
        const QModelIndex index = panel->listModel->index(row, 0, root);
        const QFileInfo info(folder + '/' + panel->listModel->fileName(index));
        if (info.isFile() && panel->listModel->size(index) != info.size()) {
            all.append("size of " + info.fileName());
        }
        if (info.exists() && info.isDir() != panel->listModel->isDir(index)) {
            all.append("kind of " + info.fileName());
        }
    }
    return all;
}

/// Waits until the listing shows a folder as it is on disk. Looking takes long in a large folder, so most of
/// the time is left to what is waited for.
bool showsTheDisk(const MPanel* panel, const QString& folder)
{
    const int patienceMs = isLong() ? 120000 : 20000;
    QElapsedTimer clock;
    clock.start();
    QStringList stale;
    qint64 nextLook = 0;
    const bool shows = QTest::qWaitFor(
        [&] {
            if (clock.elapsed() < nextLook) {
                return false;
            }
            const qint64 began = clock.elapsed();
            stale = staleRows(panel, folder);
            nextLook = clock.elapsed() + 4 * (clock.elapsed() - began);
            return stale.isEmpty();
        },
        patienceMs);
    if (!shows) {
        qInfo("%s", qPrintable(stale.mid(0, 20).join("\n")));
    }
    return shows;
}

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
class TestShownFolder : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void mishaps_data();
    void mishaps();
    void madeAnewAtOnce();
    void rootComesBack_data();
    void rootComesBack();
    void rootMadeAnewOverAndOver();
    void rootMadeByCommand();
    void rootThatNeverWas();
    void focusStaysInTheOtherPanel();
    void focusStaysWhenTheFolderIsGone();
    void madeBetweenWatchAndReading();
    void madeUnreadable();
    void unmounted();
    void filled();
    void churned();
    void ownOperationsShowWithoutWatches_data();
    void ownOperationsShowWithoutWatches();
    void ownOperationsShowWhereWatchesAreUsedUp();

private:
    void open(MPanel* which, const QString& relative);
    void followsRoot(MPanel* which);
    void runOperation(const QString& operation);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    std::unique_ptr<MPanel> other;
};

void TestShownFolder::init()
{
    dir = std::make_unique<TestDir>(TestDir::inMemory());
    dir->file(QStringLiteral("a/b/shown/f"), "1");
    dir->file(QStringLiteral("a/b/shown/g"), "22");
    dir->folder(QStringLiteral("a/b/shown/sub"));
    dir->file(QStringLiteral("a/b/beside"));
    dir->folder(QStringLiteral("to"));
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    other = std::make_unique<MPanel>(&window->window);
    gwPanel1 = panel;
    gwPanel2 = other.get();
    other->show();
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
    QVERIFY(waitForList(other.get()));
}

void TestShownFolder::cleanup()
{
    other.reset();
    window.reset();
    dir.reset();
}

/// Opens a folder step by step, as a user does.
void TestShownFolder::open(MPanel* which, const QString& relative)
{
    QString path = dir->path();
    for (const QString& name : relative.split('/')) {
        path += '/' + name;
        QVERIFY(waitForTreeRow(which, path));
        which->tree->expand(which->treeModel->index(path));
        which->setTreePath(path);
    }
    QCOMPARE(which->currentPath, path);
    QVERIFY(showsTheDisk(which, path));
}

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
        QVERIFY(QDir().rename(shown, dir->path(QStringLiteral("aside"))));
        if (what == "file") {
            dir->file(QStringLiteral("a/b/shown"), "a file");
        } else if (what == "dangling") {
            dir->link(QStringLiteral("a/b/shown"), QStringLiteral("nothing"));
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

/// A panel shows its root as it is on disk, in both views, and follows what is made there.
void TestShownFolder::followsRoot(MPanel* which)
{
    const QString root = which->rootPath;
    QVERIFY(showsTheDisk(which, root));
    QCOMPARE(which->currentPath, root);
    QTRY_VERIFY(which->folderLabel->text().startsWith(root + " has "));
    const QString later = root + (which == panel ? "/later" : "/later still");
    QVERIFY(QDir().mkdir(later));
    QVERIFY(waitForTreeRow(which, later));
    QVERIFY(showsTheDisk(which, root));
    QVERIFY(QDir().rmdir(later));
    QVERIFY(showsTheDisk(which, root));
}

void TestShownFolder::rootComesBack_data()
{
    QTest::addColumn<QString>("gone");
    QTest::addColumn<bool>("noticed");
    QTest::addColumn<QString>("opened");
    for (const char* gone : {"removed", "file", "above removed"}) {
        QTest::addRow("%s, for long", gone) << gone << true << "";
        QTest::addRow("%s, for a moment", gone) << gone << false << "";
    }
    QTest::newRow("moved away, for a moment") << "moved away" << false << "";
    QTest::newRow("open below, for long") << "removed" << true << "shown";
}

void TestShownFolder::rootComesBack()
{
    QFETCH(QString, gone);
    QFETCH(bool, noticed);
    QFETCH(QString, opened);
    const QString root = dir->path(QStringLiteral("a/b"));
    for (MPanel* each : {panel, other.get()}) {
        each->setTreeRoot(root);
        QVERIFY(showsTheDisk(each, root));
        QVERIFY(waitForTreeRow(each, root + "/shown"));
        if (!opened.isEmpty()) {
            each->setTreePath(root + '/' + opened);
            QVERIFY(showsTheDisk(each, root + '/' + opened));
        }
    }
    if (gone == "above removed") {
        QVERIFY(QDir(dir->path(QStringLiteral("a"))).removeRecursively());
    } else if (gone == "moved away") {
        QVERIFY(QDir().rename(root, dir->path(QStringLiteral("to/b"))));
    } else {
        QVERIFY(QDir(root).removeRecursively());
    }
    if (gone == "file") {
        dir->file(QStringLiteral("a/b"), "a file");
    }
    for (MPanel* each : {panel, other.get()}) {
        if (noticed) {
            QTRY_COMPARE(listNames(each), QStringList());
        }
        QCOMPARE(each->rootPath, root);
    }
    QFile::remove(root);
    dir->file(QStringLiteral("a/b/NEW"), "new");
    dir->folder(QStringLiteral("a/b/new folder"));
    for (MPanel* each : {panel, other.get()}) {
        QVERIFY(waitForTreeRow(each, root + "/new folder"));
        followsRoot(each);
    }
}

void TestShownFolder::rootMadeAnewOverAndOver()
{
    const QString root = dir->path(QStringLiteral("a/b"));
    for (MPanel* each : {panel, other.get()}) {
        each->setTreeRoot(root);
        QVERIFY(showsTheDisk(each, root));
    }
    for (int round = 0; round < 20; ++round) {
        QVERIFY(QDir(root).removeRecursively());
        for (int i = 0; i < round % 5; ++i) {
            QCoreApplication::processEvents();
        }
        dir->file(QStringLiteral("a/b/round%1").arg(round), QByteArray(round, 'x'));
        for (int i = 0; i < round; ++i) {
            QCoreApplication::processEvents();
        }
    }
    for (MPanel* each : {panel, other.get()}) {
        followsRoot(each);
    }
}

void TestShownFolder::rootMadeByCommand()
{
    const QString root = dir->path(QStringLiteral("a/new folder"));
    QVERIFY(QDir().mkdir(root));
    other->setTreeRoot(root);
    QVERIFY(showsTheDisk(other.get(), root));
    open(panel, QStringLiteral("a"));
    QVERIFY(QDir().rmdir(root));
    QTRY_COMPARE(listNames(other.get()), QStringList());
    QVERIFY(showsTheDisk(panel, dir->path(QStringLiteral("a"))));
    runOperation(QStringLiteral("new folder"));
    QVERIFY(QFileInfo(root).isDir());
    followsRoot(other.get());
}

void TestShownFolder::rootThatNeverWas()
{
    const QString root = dir->path(QStringLiteral("to/come"));
    panel->setTreeRoot(root);
    other->setTreeRoot(root);
    other->setTreeRoot(dir->path(QStringLiteral("a"))); // and is wanted no more
    QVERIFY(waitForList(other.get()));
    dir->file(QStringLiteral("to/come/f"));
    followsRoot(panel);
    QCOMPARE(other->rootPath, dir->path(QStringLiteral("a")));
    followsRoot(other.get());
}

void TestShownFolder::focusStaysInTheOtherPanel()
{
    const QString root = dir->path(QStringLiteral("a/b"));
    panel->setTreeRoot(root);
    QVERIFY(showsTheDisk(panel, root));
    QVERIFY(QDir(root).removeRecursively());
    QTRY_COMPARE(listNames(panel), QStringList());
    other->list->setFocus();
    dir->file(QStringLiteral("a/b/NEW"), "new");
    QVERIFY(showsTheDisk(panel, root));
    QVERIFY(other->list->hasFocus());
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
            names.append(panel->treeModel->fileName(panel->treeModel->index(row, 0, parent)));
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

/// Runs a command of the panel as its menu does.
void TestShownFolder::runOperation(const QString& operation)
{
    BoxAnswers boxes;
    boxes.otherwise({"Yes"});
    ModalAnswers dialogs;
    const QString shown = dir->path(QStringLiteral("a/b/shown"));
    panel->list->setFocus();
    panel->list->selectionModel()->select(listIndex(panel, QStringLiteral("f")),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    const auto typeName = [](const QString& name) {
        return [name](QDialog* dialog) {
            for (QLineEdit* field : dialog->findChildren<QLineEdit*>()) {
                if (!field->isReadOnly()) {
                    field->setText(name);
                    QTest::keyClick(field, Qt::Key_Return);
                }
            }
        };
    };
    gslDragList = QStringList{shown + "/f"};
    gsDropBase = dir->path(QStringLiteral("to"));
    if (operation == "copy") {
        panel->DoAction(CommandDropCopy, QString(), QString());
    } else if (operation == "move") {
        panel->DoAction(CommandDropMove, QString(), QString());
    } else if (operation == "delete") {
        panel->DoAction(CommandDelete, QString(), QString());
    } else if (operation == "rename") {
        dialogs.meet<QDialog>(typeName(QStringLiteral("new name")));
        panel->DoAction(CommandRename, shown + "/f", QString());
    } else {
        dialogs.meet<QDialog>(typeName(QStringLiteral("new folder")));
        panel->DoAction(CommandNewDir, QString(), QString());
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
