#include "app/aGlobal.h"
#include "fileops/MProgress.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MNavBar.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/RunningDrag.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/FaultShim.h"
#include "tests/support/ObjectCount.h"
#include "tests/support/OperationRun.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDialog>
#include <QDir>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPixmapCache>
#include <QPointer>
#include <QRandomGenerator>
#include <QSignalMapper>
#include <QTimer>

#include <cstdio>
#include <functional>
#include <malloc.h>
#include <memory>

namespace {

bool isLong()
{
    return qEnvironmentVariableIntValue("VANTREL_LONG") != 0;
}

/// Rounds that are counted; half as many go before, until everything that stays is there. VANTREL_ROUNDS
/// says otherwise.
int rounds()
{
    const int given = qEnvironmentVariableIntValue("VANTREL_ROUNDS");
    return given > 0 ? given : isLong() ? 1000 : 25;
}

/// Threads that may read folders at the same time.
constexpr int readerThreads = 8;

/// What the process has now, without what belongs to the threads of a pool.
struct Figures
{
    int pooled = pooledThreadCount();
    int threads = threadCount() - pooled;
    int descriptors = descriptorCount() - pooled;
    long memory = (::malloc_trim(0), residentKib());
};

/// Closes the modal window after a number of turns of the event loop, by one of the ways that a user has.
class Closer : public QObject
{
public:
    explicit Closer(QRandomGenerator& random)
        : m_random(random)
        , m_turns(random.bounded(12))
    {
        connect(&m_timer, &QTimer::timeout, this, [this] { turn(); });
        m_timer.start(0);
    }

private:
    void turn()
    {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal == nullptr || m_turns-- > 0) {
            return;
        }
        if (m_random.bounded(2) == 0) {
            QTest::keyClick(modal, Qt::Key_Escape);
        } else {
            modal->close();
        }
    }

    QRandomGenerator& m_random;
    int m_turns;
    QTimer m_timer;
};

} // namespace

/// The same thing many times over, each time left at another moment: nothing may stay behind.
class TestManyRounds : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void folderLeftWhileItLoads();
    void copyAborted();
    void dialogClosed_data();
    void dialogClosed();
    void dragCancelled_data();
    void dragCancelled();
    void newRootDuringADragFromOutside();

private:
    void repeat(const std::function<void(int)>& round);
    bool isSettled();
    void forgetPathBarConnections();
    void turns(int most);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    QRandomGenerator random{1};
};

void TestManyRounds::initTestCase()
{
    QPixmapCache::setCacheLimit(0); // Qt's own, which grows to a limit of 10 MB
    ::mallopt(M_ARENA_MAX, 1); // else each thread keeps what was once freed on it
}

void TestManyRounds::init()
{
    dir = std::make_unique<TestDir>(TestDir::inMemory());
    dir->files(QStringLiteral("big"), 3000);
    dir->file(QStringLiteral("small/f"), "x");
    dir->folder(QStringLiteral("small/sub"));
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    gstDrives = {LSDRIVE{dir->path(), QStringLiteral("One")},
        LSDRIVE{dir->path(QStringLiteral("small")), QStringLiteral("Two")}};
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
}

void TestManyRounds::cleanup()
{
    window.reset();
    dir.reset();
}

void TestManyRounds::turns(int most)
{
    for (int i = random.bounded(most); i > 0; --i) {
        QCoreApplication::processEvents();
    }
}

/// Ends each round at the same place, so that the figures can be compared.
bool TestManyRounds::isSettled()
{
    panel->setTreeRoot(dir->path(QStringLiteral("small")));
    return waitForList(panel) && QTest::qWaitFor([this] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return listNames(panel) == QStringList{"..", "sub", "f"} && otherThreadsWait();
    });
}

/// The path bar connects its buttons anew for each folder and keeps what it had connected before, on purpose:
/// about a hundred bytes each.
void TestManyRounds::forgetPathBarConnections()
{
    auto* mapper = panel->navBar->findChild<QSignalMapper*>();
    QVERIFY(disconnect(mapper, SIGNAL(mapped(int)), panel->navBar, SLOT(buttonPressed(int))));
    connect(mapper, SIGNAL(mapped(int)), panel->navBar, SLOT(buttonPressed(int)));
}

/// Runs a round many times and compares the figures of the process with those after a first lot of rounds.
void TestManyRounds::repeat(const std::function<void(int)>& round)
{
    const auto many = [&](int count) {
        for (int i = 0; i < count && !QTest::currentTestFailed(); ++i) {
            round(i);
            // As where control is back in the event loop.
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            forgetPathBarConnections();
        }
    };
    Figures before;
    long memory = 0;
    for (int lot = 0; lot < 5; ++lot) {
        many(rounds() / 10 + 1);
        QVERIFY(isSettled());
        before = Figures();
        memory = qMax(memory, before.memory); // it goes up and down by some hundred KiB
    }
    startObjectCount();
    many(rounds());
    // What belongs to the threads of the readers' pool comes and goes.
    QTRY_VERIFY2(isSettled() && qAbs(objectCount()) <= 2 * readerThreads,
        QByteArray::number(objectCount()).constData());
    QTRY_COMPARE(Figures().threads, before.threads);
    QTRY_COMPARE(Figures().descriptors, before.descriptors);
    const Figures after;
    const long grown = after.memory - memory;
    const double percent = 100.0 * static_cast<double>(grown) / static_cast<double>(memory);
    std::printf("%s, %d rounds: %d threads, %d descriptors, %+d objects, %ld KiB (%+ld, %.2f %%)\n",
        QTest::currentDataTag() != nullptr ? QTest::currentDataTag() : QTest::currentTestFunction(), rounds(),
        after.threads, after.descriptors, objectCount(), after.memory, grown, percent);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    // A few rounds do not tell growth from the allocator's moods.
    QVERIFY2(percent <= (isLong() ? 1 : 5), QByteArray::number(percent).constData());
#endif
}

void TestManyRounds::folderLeftWhileItLoads()
{
    repeat([this](int /*round*/) {
        panel->setTreeRoot(dir->path());
        panel->treeRowChanged(dir->path(QStringLiteral("big")));
        turns(20);
        panel->treeRowChanged(dir->path(QStringLiteral("small")));
        turns(3);
    });
}

void TestManyRounds::copyAborted()
{
    // Not below the folder that is shown: the panel's own readers would meet the watched calls.
    const TestDir copied(TestDir::inMemory());
    copied.files(QStringLiteral("src"), 20);
    for (int i = 0; i < 5; ++i) {
        copied.file(QStringLiteral("src/%1").arg(i), QByteArray(3000000, 'x'));
    }
    repeat([&](int round) {
        const QString to = QStringLiteral("to");
        FaultShim shim(copied.path());
        OperationRun run(OpCopy, {copied.path(QStringLiteral("src"))}, copied.path(to));
        // Any of all calls, by each of the ways.
        const char* const calls[] = {"lstat", "open", "read", "write", "readdir", "close"};
        shim.before(calls[random.bounded(6)], "*", random.bounded(1, 30), [&run, round] {
            MProgress* dialog = run.dialog();
            if (round % 3 == 0) {
                run.abortNow();
            } else {
                QMetaObject::invokeMethod(dialog, round % 3 == 1 ? "reject" : "close", Qt::QueuedConnection);
            }
        });
        QVERIFY(run.run());
        QVERIFY(QDir(copied.path(to)).removeRecursively());
    });
}

void TestManyRounds::dialogClosed_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("item");
    QTest::newRow("properties") << int(CommandProperties) << "small/f";
    QTest::newRow("disk usage") << int(CommandTotalSize) << "";
    QTest::newRow("disk usage of a file") << int(CommandTotalSize) << "small/f";
    QTest::newRow("checksums") << int(CommandChecksum) << "large";
    QTest::newRow("checksums of nothing") << int(CommandChecksum) << "nothing";
    QTest::newRow("new folder") << int(CommandNewDir) << "small";
    QTest::newRow("rename") << int(CommandRename) << "small/f";
    QTest::newRow("copy") << int(CommandCopy) << "small/f";
    QTest::newRow("delete") << int(CommandDelete) << "small/f";
}

void TestManyRounds::dialogClosed()
{
    QFETCH(int, code);
    QFETCH(QString, item);
    dir->sparseFile(QStringLiteral("large"), 100000000);
    gsNoRecurse = QStringLiteral("^/none");
    repeat([&](int /*round*/) {
        const Closer closer(random);
        panel->DoAction(code, dir->path(item), QString());
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    });
    gsNoRecurse.clear();
    QVERIFY(dir->exists(QStringLiteral("small/f")));
}

void TestManyRounds::dragCancelled_data()
{
    QTest::addColumn<bool>("newRoot");
    QTest::newRow("drag alone") << false;
    QTest::newRow("with a new root meanwhile") << true;
}

void TestManyRounds::dragCancelled()
{
    QFETCH(bool, newRoot);
    // scripts/long-run has a display, on which drags last.
    const bool endsAtOnce = QGuiApplication::platformName() == QLatin1String("offscreen");
    bool dragged = false;
    const QPointer<MList> list = panel->list;
    repeat([&](int /*round*/) {
        panel->setTreeRoot(dir->path(QStringLiteral("small")));
        QVERIFY(waitForList(panel));
        QTRY_VERIFY(listIndex(panel, QStringLiteral("f")).isValid());
        const QPoint place = list->visualRect(listIndex(panel, QStringLiteral("f"))).center();
        QTest::mousePress(list->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTimer canceller;
        int left = random.bounded(10);
        connect(&canceller, &QTimer::timeout, this, [&] {
            dragged = dragged || !window->window.findChildren<QDrag*>().isEmpty();
            if (newRoot && left == 3) {
                panel->setTreeRoot(dir->path());
            }
            if (left-- <= 0) {
                QTest::keyClick(window->window.windowHandle(), Qt::Key_Escape);
            }
        });
        canceller.start(0);
        QMouseEvent move(
            QEvent::MouseMove, place + QPoint(30, 30), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list->viewport(), &move);
        canceller.stop();
        QTest::mouseRelease(list->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QVERIFY(!list.isNull());
        QVERIFY(window->window.findChildren<QDrag*>().isEmpty());
    });
    QVERIFY(dragged || endsAtOnce);
}

void TestManyRounds::newRootDuringADragFromOutside()
{
    QMimeData mime;
    mime.setText(QStringLiteral("of another program"));
    const QPointer<MList> list = panel->list;
    const QPointer<MTree> tree = panel->tree;
    repeat([&](int round) {
        QAbstractItemView* view = round % 2 == 0 ? static_cast<QAbstractItemView*>(panel->list) : panel->tree;
        QWidget* viewport = view->viewport();
        const QPoint place(20, random.bounded(100));
        QDragEnterEvent enter(place, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &enter);
        QDragMoveEvent move(place, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &move);
        panel->driveBar->buttonPressed(round % 2);
        turns(10);
        QDragMoveEvent again(place, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &again);
        panel->driveBar->buttonPressed((round + 1) % 2);
        if (random.bounded(2) == 0) {
            QDragLeaveEvent leave;
            QApplication::sendEvent(viewport, &leave);
        } else {
            QDropEvent drop(place, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
            RunningDrag running;
            QApplication::sendEvent(viewport, &drop);
            running.finish();
        }
        turns(3);
        QVERIFY(!list.isNull() && !tree.isNull());
    });
}

VANTREL_TEST_MAIN(TestManyRounds)
#include "tst_ManyRounds.moc"
