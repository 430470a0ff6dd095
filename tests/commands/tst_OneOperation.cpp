#include "commands/OneOperation.h"

#include "app/aGlobal.h"
#include "fileops/MProgress.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/RunningDrag.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FaultShim.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QSemaphore>
#include <QWindow>

#include <memory>

namespace {

/// What an operation works on.
QStringList pending()
{
    return QStringList{gsDragBase, gsDropBase} + gslDragList;
}

int progressDialogs()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return static_cast<int>(std::count_if(windows.begin(), windows.end(),
        [](QWidget* window) { return qobject_cast<MProgress*>(window) != nullptr; }));
}

} // namespace

/// While the user is asked about an operation, and while one runs, nothing that a user can do prepares
/// another.
class TestOneOperation : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void standsWhileItLives();
    void nothingElseStarts_data();
    void nothingElseStarts();

private:
    void select(const QString& name);
    void tryEverything();
    void pressKeys();
    void openMenus();
    void dropOn(MPanel* target, QAbstractItemView* view);
    void lookForASecond(const char* after);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    std::unique_ptr<MPanel> other;
    QStringList before;
    QPointer<QWidget> modal;
    QStringList seconds; ///< what could start something
};

void TestOneOperation::init()
{
    dir = std::make_unique<TestDir>(TestDir::inMemory());
    dir->file(QStringLiteral("src/one"), "1");
    dir->file(QStringLiteral("src/two"), "22");
    dir->folder(QStringLiteral("to"));
    window = std::make_unique<PanelWindow>(dir->path(QStringLiteral("src")));
    panel = window->panel;
    panel->setGeometry(0, 0, 500, 600);
    gstDrives = {LSDRIVE{dir->path(QStringLiteral("to")), QStringLiteral("To")}};
    other = std::make_unique<MPanel>(&window->window);
    other->setGeometry(500, 0, 500, 600);
    other->show();
    gwPanel1 = panel;
    gwPanel2 = other.get();
    gstMenu = {LSMENU{CommandDelete, "|*|", "Delete", ""}, LSMENU{CommandCopy, "|*|", "Copy", ""}};
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
    QVERIFY(waitForList(other.get()));
    seconds.clear();
}

void TestOneOperation::cleanup()
{
    other.reset();
    window.reset();
    dir.reset();
}

void TestOneOperation::standsWhileItLives()
{
    QVERIFY(!OneOperation::stands());
    {
        const OneOperation outer;
        {
            const OneOperation inner;
            QVERIFY(OneOperation::stands());
        }
        QVERIFY(OneOperation::stands());
    }
    QVERIFY(!OneOperation::stands());
}

void TestOneOperation::select(const QString& name)
{
    panel->list->setFocus();
    panel->list->selectionModel()->setCurrentIndex(
        listIndex(panel, name), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

/// Notes what has happened, and puts an end to it.
void TestOneOperation::lookForASecond(const char* after)
{
    QCoreApplication::processEvents();
    if (QWidget* popup = QApplication::activePopupWidget()) {
        seconds.append(QStringLiteral("a menu after ") + after);
        popup->close();
    }
    if (QApplication::activeModalWidget() != modal || progressDialogs() > 1 || pending() != before) {
        seconds.append(after);
    }
}

void TestOneOperation::pressKeys()
{
    // The window's own keys, as they come from the system.
    for (const int key : {Qt::Key_C, Qt::Key_Delete, Qt::Key_N, Qt::Key_R, Qt::Key_X, Qt::Key_F5, Qt::Key_F6,
             Qt::Key_Menu, Qt::Key_Return}) {
        QTest::keyClick(window->window.windowHandle(), static_cast<Qt::Key>(key));
        lookForASecond(QKeySequence(key).toString().toLatin1().constData());
    }
}

void TestOneOperation::openMenus()
{
    for (QAbstractItemView* view :
        {static_cast<QAbstractItemView*>(panel->list), static_cast<QAbstractItemView*>(panel->tree)}) {
        const QPoint place = view->viewport()->mapTo(&window->window, QPoint(20, 5));
        QTest::mouseClick(window->window.windowHandle(), Qt::RightButton, Qt::NoModifier, place);
        lookForASecond("a right click");
        QTest::mouseDClick(window->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
        lookForASecond("a double click");
    }
}

void TestOneOperation::dropOn(MPanel* target, QAbstractItemView* view)
{
    QMimeData data;
    data.setText(QStringLiteral("BlahBlah"));
    for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ShiftModifier}) {
        QDropEvent event(QPointF(10, 10), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, modifier);
        RunningDrag drag;
        QApplication::sendEvent(view->viewport(), &event);
        drag.finish();
        lookForASecond("a drop");
    }
    // Past what the view refuses.
    target->gotDrop(Qt::CopyAction, dir->path());
    lookForASecond("gotDrop");
}

void TestOneOperation::tryEverything()
{
    before = pending();
    modal = QApplication::activeModalWidget();
    pressKeys();
    openMenus();
    for (MPanel* target : {panel, other.get()}) {
        dropOn(target, target->list);
        dropOn(target, target->tree);
        for (const int code : {CommandCopy, CommandDelete, CommandDropCopy, CommandDropMove}) {
            target->DoAction(code, dir->path(), QString());
            lookForASecond("a command");
        }
    }
}

void TestOneOperation::nothingElseStarts_data()
{
    QTest::addColumn<QString>("moment");
    QTest::newRow("while it is confirmed") << "confirmation";
    QTest::newRow("while it counts") << "counting";
    QTest::newRow("while it runs") << "running";
    QTest::newRow("while it asks") << "question";
}

void TestOneOperation::nothingElseStarts()
{
    QFETCH(QString, moment);
    if (moment == "question") {
        dir->file(QStringLiteral("to/one"), "old");
    }
    select(QStringLiteral("one"));
    FaultShim shim(dir->path());
    QSemaphore go;
    bool tried = false;
    const auto tryAndGoOn = [&] {
        tryEverything();
        tried = true;
        go.release();
    };
    if (moment == "counting" || moment == "running") {
        shim.before(moment == "counting" ? "lstat" : "read", QStringLiteral("src/one"), 1, [&] {
            QMetaObject::invokeMethod(panel, tryAndGoOn, Qt::QueuedConnection);
            go.acquire();
        });
    }
    BoxAnswers boxes;
    if (moment == "confirmation") {
        boxes.meanwhile(tryAndGoOn);
    }
    boxes.click(QStringLiteral("Yes"));
    if (moment == "question") {
        boxes.meanwhile(tryAndGoOn).click(QStringLiteral("Yes"));
    }
    QTest::keyClick(window->window.windowHandle(), Qt::Key_F5);
    QVERIFY(tried);
    QCOMPARE(seconds, QStringList());
    QCOMPARE(boxes.texts().size(), moment == "question" ? 2 : 1);
    QCOMPARE(dir->tree(), (QStringList{"src/", "src/one", "src/two", "to/", "to/one"}));
    QCOMPARE(dir->read(QStringLiteral("to/one")), QByteArray("1"));
    QVERIFY(!OneOperation::stands());
}

VANTREL_TEST_MAIN(TestOneOperation)
#include "tst_OneOperation.moc"
