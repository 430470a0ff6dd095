#include "panel/ViewDrag.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myDelegate.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QCursor>
#include <QDialog>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimer>

#include <memory>

namespace {

/// Looks at the drag that a view makes, before it runs: the timer is the view's last child to come.
class DragNotes : public QObject
{
public:
    explicit DragNotes(QAbstractItemView* view)
        : m_view(view)
    {
        m_view->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::ChildAdded) {
            const QList<QDrag*> drags = m_view->findChildren<QDrag*>();
            for (const QDrag* drag : drags) {
                if (drag->mimeData() != nullptr && !seen.contains(drag)) {
                    seen.append(drag);
                    formats.append(drag->mimeData()->formats());
                    texts.append(drag->mimeData()->text());
                    urls = urls || drag->mimeData()->hasUrls();
                }
            }
        }
        return QObject::eventFilter(watched, event);
    }

    QList<const void*> seen;
    QStringList formats;
    QStringList texts;
    bool urls = false;

private:
    QAbstractItemView* m_view;
};

} // namespace

class TestViewDrag : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startDistance_data();
    void startDistance();
    void onlyWithTheLeftButton_data();
    void onlyWithTheLeftButton();
    void listFillsThePending_data();
    void listFillsThePending();
    void orderOfThePaths();
    void pathsBelowTheTop();
    void treeFillsThePending();
    void markerText_data();
    void markerText();
    void nothingIsLeftAfterTheDrag_data();
    void nothingIsLeftAfterTheDrag();
    void startForgetsTheHover();
    void nudgeMovesToAndFro_data();
    void nudgeMovesToAndFro();
    void nudgeRestsWhileABoxIsOpen();

    void enterAccepts_data();
    void enterAccepts();
    void hoverOutlines_data();
    void hoverOutlines();
    void hoverBesideItemsKeepsTheOutline();
    void hoverAction_data();
    void hoverAction();
    void hoverRepaintsOldAndNew();
    void leaveClears_data();
    void leaveClears();
    void leaveWithoutHover();
    void outlineGoesWithItsRow();
    void hoverSurvivesAFolderChange();

    void dropTarget_data();
    void dropTarget();
    void dropAction_data();
    void dropAction();
    void dropClearsTheOutline();
    void gotDropOtherActions_data();
    void gotDropOtherActions();
    void copyByDrop();
    void moveByDrop();
    void refusedByNo();
    void dropIntoItself();
    void receivingPanelRunsTheCommand();
    void dropOfAnotherProgram_data();
    void dropOfAnotherProgram();
    void dropWhileADialogStands();

private:
    QAbstractItemView* view(bool inTree) const;
    QPoint placeOf(bool inTree, const QString& name) const;
    void select(const QStringList& names);
    void dragFrom(bool inTree, const QString& name, int distance, Qt::MouseButtons buttons = Qt::LeftButton);
    void enter(QWidget* viewport, const QPoint& place);
    Qt::DropAction hover(bool inTree, const QPoint& place, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    bool drop(
        MPanel* target, bool inTree, const QPoint& place, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    QMimeData mime;
};

void TestViewDrag::init()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("sub/deeper"));
    dir->folder(QStringLiteral("other"));
    dir->file(QStringLiteral("one.txt"), "1");
    dir->file(QStringLiteral("two.txt"), "22");
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("sub"))));
    mime.setText(QStringLiteral("BlahBlah"));
}

void TestViewDrag::cleanup()
{
    QDragLeaveEvent leave; // the application forgets the widget that the drag is over
    QApplication::sendEvent(panel->list->viewport(), &leave);
    window.reset();
    dir.reset();
}

QAbstractItemView* TestViewDrag::view(bool inTree) const
{
    return inTree ? static_cast<QAbstractItemView*>(panel->tree) : panel->list;
}

/// @return the middle of an item; with an empty name a place below all items
QPoint TestViewDrag::placeOf(bool inTree, const QString& name) const
{
    if (name.isEmpty()) {
        return QPoint(20, view(inTree)->viewport()->height() - 5);
    }
    const QModelIndex index = inTree ? panel->treeModel->index(dir->path(name)) : listIndex(panel, name);
    return view(inTree)->visualRect(index).center();
}

void TestViewDrag::select(const QStringList& names)
{
    panel->list->clearSelection();
    for (const QString& name : names) {
        panel->list->selectionModel()->select(
            listIndex(panel, name), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

/// Moves the pointer by a distance from a press, without selecting anything.
void TestViewDrag::dragFrom(bool inTree, const QString& name, int distance, Qt::MouseButtons buttons)
{
    const QPoint place = placeOf(inTree, name);
    (inTree ? static_cast<ViewDrag&>(*panel->tree) : *panel->list).pressPos = place;
    const QPoint to = place + QPoint(distance / 2, distance - distance / 2);
    QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(view(inTree)->viewport(), &move);
}

/// Moves a drag onto a view, as it comes before every other event of the drag there.
void TestViewDrag::enter(QWidget* viewport, const QPoint& place)
{
    QDragEnterEvent event(place, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &event);
}

Qt::DropAction TestViewDrag::hover(bool inTree, const QPoint& place, Qt::KeyboardModifiers modifiers)
{
    QDragMoveEvent event(place, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, modifiers);
    event.setDropAction(Qt::IgnoreAction);
    event.ignore();
    enter(view(inTree)->viewport(), place);
    QApplication::sendEvent(view(inTree)->viewport(), &event);
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
}

bool TestViewDrag::drop(MPanel* target, bool inTree, const QPoint& place, Qt::KeyboardModifiers modifiers)
{
    QDropEvent event(place, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, modifiers);
    event.ignore();
    QWidget* viewport = inTree ? target->tree->viewport() : target->list->viewport();
    enter(viewport, place);
    QApplication::sendEvent(viewport, &event);
    return event.isAccepted();
}

void TestViewDrag::startDistance_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<int>("less");
    QTest::addColumn<bool>("starts");
    for (const bool inTree : {true, false}) {
        const QByteArray name = inTree ? "tree, " : "listing, ";
        QTest::newRow(name + "no move") << inTree << 100 << false;
        QTest::newRow(name + "one pixel less") << inTree << 1 << false;
        QTest::newRow(name + "the distance") << inTree << 0 << true;
        QTest::newRow(name + "further") << inTree << -20 << true;
    }
}

void TestViewDrag::startDistance()
{
    QFETCH(bool, inTree);
    QFETCH(int, less);
    QFETCH(bool, starts);
    gsDragBase = QStringLiteral("before");
    dragFrom(inTree, inTree ? QStringLiteral("sub") : QStringLiteral("one.txt"),
        qMax(0, QApplication::startDragDistance() - less));
    QCOMPARE(gsDragBase != QLatin1String("before"), starts);
}

void TestViewDrag::onlyWithTheLeftButton_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<int>("buttons");
    QTest::addColumn<bool>("starts");
    for (const bool inTree : {true, false}) {
        const QByteArray name = inTree ? "tree, " : "listing, ";
        QTest::newRow(name + "none") << inTree << int(Qt::NoButton) << false;
        QTest::newRow(name + "right") << inTree << int(Qt::RightButton) << false;
        QTest::newRow(name + "middle") << inTree << int(Qt::MiddleButton) << false;
        QTest::newRow(name + "left") << inTree << int(Qt::LeftButton) << true;
        QTest::newRow(name + "left and right") << inTree << int(Qt::LeftButton | Qt::RightButton) << true;
    }
}

void TestViewDrag::onlyWithTheLeftButton()
{
    QFETCH(bool, inTree);
    QFETCH(int, buttons);
    QFETCH(bool, starts);
    gsDragBase = QStringLiteral("before");
    dragFrom(inTree, inTree ? QStringLiteral("sub") : QStringLiteral("one.txt"), 50,
        static_cast<Qt::MouseButtons>(buttons));
    QCOMPARE(gsDragBase != QLatin1String("before"), starts);
}

void TestViewDrag::listFillsThePending_data()
{
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QStringList>("dragged");
    QTest::newRow("one file") << QStringList{"one.txt"} << QStringList{"one.txt"};
    QTest::newRow("file and folder") << QStringList{"sub", "one.txt"} << QStringList{"sub", "one.txt"};
    QTest::newRow("with the parent") << QStringList{"..", "two.txt"} << QStringList{"two.txt"};
    QTest::newRow("only the parent") << QStringList{".."} << QStringList();
    QTest::newRow("nothing") << QStringList() << QStringList();
}

void TestViewDrag::listFillsThePending()
{
    QFETCH(QStringList, selected);
    QFETCH(QStringList, dragged);
    select(selected);
    gslDragList = QStringList{"old"};
    gsDragBase = QStringLiteral("old");
    dragFrom(false, QStringLiteral("one.txt"), 50);
    QStringList expected;
    for (const QString& name : qAsConst(dragged)) {
        expected.append(dir->path(name));
    }
    QCOMPARE(gslDragList, expected);
    QCOMPARE(gsDragBase, dir->path());
}

void TestViewDrag::orderOfThePaths()
{
    select({"two.txt", "other", "one.txt"});
    dragFrom(false, QStringLiteral("one.txt"), 50);
    QCOMPARE(gslDragList,
        (QStringList{dir->path(QStringLiteral("two.txt")), dir->path(QStringLiteral("other")),
            dir->path(QStringLiteral("one.txt"))}));
}

void TestViewDrag::pathsBelowTheTop()
{
    panel->setTreeRoot(QStringLiteral("/"));
    QVERIFY(waitForList(panel));
    select({"usr"});
    dragFrom(false, QStringLiteral("usr"), 50);
    QCOMPARE(gslDragList, QStringList{"/usr"});
    QCOMPARE(gsDragBase, QStringLiteral("/"));
}

void TestViewDrag::treeFillsThePending()
{
    panel->setTreePath(dir->path(QStringLiteral("sub")));
    gslDragList = QStringList{"old", "older"};
    dragFrom(true, QStringLiteral("other"), 50); // the current folder, wherever the pointer is
    QCOMPARE(gslDragList, QStringList{dir->path(QStringLiteral("sub"))});
    QCOMPARE(gsDragBase, dir->path());
}

void TestViewDrag::markerText_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::newRow("tree") << true;
    QTest::newRow("listing") << false;
}

void TestViewDrag::markerText()
{
    QFETCH(bool, inTree);
    select({"one.txt"});
    DragNotes notes(view(inTree));
    dragFrom(inTree, inTree ? QStringLiteral("sub") : QStringLiteral("one.txt"), 50);
    QCOMPARE(notes.texts, QStringList{"BlahBlah"});
    QCOMPARE(notes.formats, QStringList{"text/plain"});
    QVERIFY(!notes.urls);
}

void TestViewDrag::nothingIsLeftAfterTheDrag_data()
{
    markerText_data();
}

void TestViewDrag::nothingIsLeftAfterTheDrag()
{
    QFETCH(bool, inTree);
    const int timers = view(inTree)->findChildren<QTimer*>().size();
    for (int i = 0; i < 5; ++i) {
        dragFrom(inTree, inTree ? QStringLiteral("sub") : QStringLiteral("one.txt"), 50);
    }
    QVERIFY(view(inTree)->findChildren<QDrag*>().isEmpty());
    QCOMPARE(view(inTree)->findChildren<QTimer*>().size(), timers);
}

void TestViewDrag::startForgetsTheHover()
{
    hover(false, placeOf(false, QStringLiteral("sub")));
    QVERIFY(panel->list->hoverIndex.isValid());
    dragFrom(false, QStringLiteral("one.txt"), 50);
    QVERIFY(!panel->list->hoverIndex.isValid());
}

void TestViewDrag::nudgeMovesToAndFro_data()
{
    markerText_data();
}

void TestViewDrag::nudgeMovesToAndFro()
{
    QFETCH(bool, inTree);
    QCursor::setPos(200, 150);
    const QPoint start = QCursor::pos();
    const ViewDrag& drag = inTree ? static_cast<const ViewDrag&>(*panel->tree) : *panel->list;
    QVERIFY(QMetaObject::invokeMethod(view(inTree), "nudgeMouse"));
    QVERIFY(drag.nudgeToggle);
    QCOMPARE(QCursor::pos(), start + QPoint(1, 0));
    QVERIFY(QMetaObject::invokeMethod(view(inTree), "nudgeMouse"));
    QVERIFY(!drag.nudgeToggle);
    QCOMPARE(QCursor::pos(), start);
}

void TestViewDrag::nudgeRestsWhileABoxIsOpen()
{
    QCursor::setPos(200, 150);
    const QPoint start = QCursor::pos();
    QPoint during;
    BoxAnswers answers;
    answers.meanwhile([&] {
        panel->list->nudgeMouse();
        during = QCursor::pos();
    });
    answers.click(QStringLiteral("OK"));
    QMessageBox box(QMessageBox::Information, QString(), QStringLiteral("open"), QMessageBox::Ok, panel);
    box.exec();
    QCOMPARE(during, start);
    QVERIFY(!panel->list->nudgeToggle);
}

void TestViewDrag::enterAccepts_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<int>("possible");
    QTest::addColumn<int>("modifiers");
    for (const bool inTree : {true, false}) {
        const QByteArray name = inTree ? "tree, " : "listing, ";
        QTest::newRow(name + "both") << inTree << int(Qt::CopyAction | Qt::MoveAction) << int(Qt::NoModifier);
        QTest::newRow(name + "move only") << inTree << int(Qt::MoveAction) << int(Qt::NoModifier);
        QTest::newRow(name + "with Shift")
            << inTree << int(Qt::CopyAction | Qt::MoveAction) << int(Qt::ShiftModifier);
    }
}

void TestViewDrag::enterAccepts()
{
    QFETCH(bool, inTree);
    QFETCH(int, possible);
    QFETCH(int, modifiers);
    QDragEnterEvent event(QPoint(10, 10), static_cast<Qt::DropActions>(possible), &mime, Qt::LeftButton,
        static_cast<Qt::KeyboardModifiers>(modifiers));
    const Qt::DropAction proposed = event.proposedAction();
    event.setDropAction(Qt::LinkAction);
    event.ignore();
    QApplication::sendEvent(view(inTree)->viewport(), &event);
    QVERIFY(event.isAccepted());
    QCOMPARE(event.dropAction(), proposed);
}

void TestViewDrag::hoverOutlines_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<QString>("name");
    QTest::newRow("tree, folder") << true << QStringLiteral("sub");
    QTest::newRow("tree, root") << true << QString();
    QTest::newRow("listing, folder") << false << QStringLiteral("sub");
    QTest::newRow("listing, file") << false << QStringLiteral("one.txt");
    QTest::newRow("listing, parent") << false << QStringLiteral("..");
}

void TestViewDrag::hoverOutlines()
{
    QFETCH(bool, inTree);
    QFETCH(QString, name);
    const QModelIndex index = inTree ? panel->treeModel->index(name.isEmpty() ? dir->path() : dir->path(name))
                                     : listIndex(panel, name);
    hover(inTree, view(inTree)->visualRect(index).center());
    const myDelegate* delegate = inTree ? panel->tree->delegate : panel->list->delegate;
    const ViewDrag& drag = inTree ? static_cast<const ViewDrag&>(*panel->tree) : *panel->list;
    QCOMPARE(QModelIndex(delegate->dropTargetIndex), index);
    QCOMPARE(QModelIndex(drag.hoverIndex), index);
    const QRect cell = view(inTree)->visualRect(index);
    const QImage picture = view(inTree)->viewport()->grab().toImage();
    QCOMPARE(picture.pixelColor(cell.left() + 1, cell.center().y()), QColor(Qt::blue));
}

void TestViewDrag::hoverBesideItemsKeepsTheOutline()
{
    hover(false, placeOf(false, QStringLiteral("sub")));
    QCOMPARE(hover(false, placeOf(false, QString())), Qt::CopyAction);
    QCOMPARE(QModelIndex(panel->list->delegate->dropTargetIndex), listIndex(panel, QStringLiteral("sub")));
}

void TestViewDrag::hoverAction_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("action");
    for (const bool inTree : {true, false}) {
        const QByteArray name = inTree ? "tree, " : "listing, ";
        QTest::newRow(name + "none") << inTree << int(Qt::NoModifier) << int(Qt::CopyAction);
        QTest::newRow(name + "Shift") << inTree << int(Qt::ShiftModifier) << int(Qt::MoveAction);
        QTest::newRow(name + "Ctrl") << inTree << int(Qt::ControlModifier) << int(Qt::CopyAction);
        QTest::newRow(name + "Ctrl and Shift")
            << inTree << int(Qt::ControlModifier | Qt::ShiftModifier) << int(Qt::MoveAction);
    }
}

void TestViewDrag::hoverAction()
{
    QFETCH(bool, inTree);
    QFETCH(int, modifiers);
    QFETCH(int, action);
    const auto held = static_cast<Qt::KeyboardModifiers>(modifiers);
    QCOMPARE(int(hover(inTree, placeOf(inTree, QStringLiteral("sub")), held)), action);
    QCOMPARE(int(hover(inTree, placeOf(inTree, QString()), held)), action);
}

void TestViewDrag::hoverRepaintsOldAndNew()
{
    hover(false, placeOf(false, QStringLiteral("sub")));
    QSignalSpy changed(panel->listModel, &QAbstractItemModel::dataChanged);
    hover(false, placeOf(false, QStringLiteral("one.txt")));
    QCOMPARE(changed.size(), 2);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), listIndex(panel, QStringLiteral("sub")));
    QCOMPARE(changed.at(1).at(0).toModelIndex(), listIndex(panel, QStringLiteral("one.txt")));
}

void TestViewDrag::leaveClears_data()
{
    markerText_data();
}

void TestViewDrag::leaveClears()
{
    QFETCH(bool, inTree);
    hover(inTree, placeOf(inTree, QStringLiteral("sub")));
    const QModelIndex index = inTree ? panel->treeModel->index(dir->path(QStringLiteral("sub")))
                                     : listIndex(panel, QStringLiteral("sub"));
    QSignalSpy changed(view(inTree)->model(), &QAbstractItemModel::dataChanged);
    QDragLeaveEvent leave;
    leave.ignore();
    QApplication::sendEvent(view(inTree)->viewport(), &leave);
    QVERIFY(leave.isAccepted());
    QVERIFY(!(inTree ? panel->tree->delegate : panel->list->delegate)->dropTargetIndex.isValid());
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), index);
}

void TestViewDrag::leaveWithoutHover()
{
    QSignalSpy changed(panel->listModel, &QAbstractItemModel::dataChanged);
    enter(panel->list->viewport(), QPoint(5, 5));
    QDragLeaveEvent leave;
    leave.ignore();
    QApplication::sendEvent(panel->list->viewport(), &leave);
    QVERIFY(changed.isEmpty());
    QVERIFY(leave.isAccepted());
}

void TestViewDrag::outlineGoesWithItsRow()
{
    hover(false, placeOf(false, QStringLiteral("one.txt")));
    QVERIFY(QFile::remove(dir->path(QStringLiteral("one.txt"))));
    QTRY_VERIFY(!listNames(panel).contains(QStringLiteral("one.txt")));
    QVERIFY(!panel->list->hoverIndex.isValid());
    QVERIFY(!panel->list->delegate->dropTargetIndex.isValid());
    hover(false, placeOf(false, QStringLiteral("sub")));
    QCOMPARE(QModelIndex(panel->list->hoverIndex), listIndex(panel, QStringLiteral("sub")));
}

void TestViewDrag::hoverSurvivesAFolderChange()
{
    hover(false, placeOf(false, QStringLiteral("one.txt")));
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("sub"))));
    QVERIFY(!panel->list->hoverIndex.isValid());
    hover(false, placeOf(false, QStringLiteral("deeper")));
    QCOMPARE(QModelIndex(panel->list->delegate->dropTargetIndex), listIndex(panel, QStringLiteral("deeper")));
}

void TestViewDrag::dropTarget_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("target");
    QTest::newRow("listing, folder") << false << QStringLiteral("sub") << QStringLiteral("sub");
    QTest::newRow("listing, file") << false << QStringLiteral("two.txt") << QString();
    QTest::newRow("listing, empty area") << false << QString() << QString();
    QTest::newRow("listing, parent") << false << QStringLiteral("..") << QStringLiteral("..");
    QTest::newRow("tree, folder") << true << QStringLiteral("sub") << QStringLiteral("sub");
    QTest::newRow("tree, empty area") << true << QString() << QString();
}

void TestViewDrag::dropTarget()
{
    QFETCH(bool, inTree);
    QFETCH(QString, name);
    QFETCH(QString, target);
    TestDir source;
    gsDragBase = source.path();
    gslDragList = QStringList{source.file(QStringLiteral("x"))};
    BoxAnswers answers;
    answers.click(QStringLiteral("No"));
    QVERIFY(drop(panel, inTree, placeOf(inTree, name)));
    QCOMPARE(gsDropBase, dir->path(target));
    QCOMPARE(answers.texts(), QStringList{"Copy selected files to folder: \n\n" + dir->path(target)});
}

void TestViewDrag::dropAction_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QString>("verb");
    for (const bool inTree : {true, false}) {
        const QByteArray name = inTree ? "tree, " : "listing, ";
        QTest::newRow(name + "none") << inTree << int(Qt::NoModifier) << QStringLiteral("Copy");
        QTest::newRow(name + "Shift") << inTree << int(Qt::ShiftModifier) << QStringLiteral("Move");
        QTest::newRow(name + "Ctrl") << inTree << int(Qt::ControlModifier) << QStringLiteral("Copy");
    }
}

void TestViewDrag::dropAction()
{
    QFETCH(bool, inTree);
    QFETCH(int, modifiers);
    QFETCH(QString, verb);
    TestDir source;
    gslDragList = QStringList{source.file(QStringLiteral("x"))};
    BoxAnswers answers;
    answers.click(QStringLiteral("No"));
    QVERIFY(drop(panel, inTree, placeOf(inTree, QString()), static_cast<Qt::KeyboardModifiers>(modifiers)));
    QCOMPARE(answers.texts(), QStringList{verb + " selected files to folder: \n\n" + dir->path()});
    QVERIFY(source.exists(QStringLiteral("x")));
}

void TestViewDrag::dropClearsTheOutline()
{
    hover(false, placeOf(false, QStringLiteral("sub")));
    QSignalSpy changed(panel->listModel, &QAbstractItemModel::dataChanged);
    gslDragList.clear();
    BoxAnswers answers;
    answers.click(QStringLiteral("No"));
    drop(panel, false, placeOf(false, QStringLiteral("sub")));
    QVERIFY(!panel->list->delegate->dropTargetIndex.isValid());
    QVERIFY(!changed.isEmpty());
    QCOMPARE(changed.at(0).at(0).toModelIndex(), listIndex(panel, QStringLiteral("sub")));
}

void TestViewDrag::gotDropOtherActions_data()
{
    QTest::addColumn<int>("action");
    QTest::newRow("ignore") << int(Qt::IgnoreAction);
    QTest::newRow("link") << int(Qt::LinkAction);
    QTest::newRow("target moves") << int(Qt::TargetMoveAction);
}

void TestViewDrag::gotDropOtherActions()
{
    QFETCH(int, action);
    TestDir source;
    gslDragList = QStringList{source.file(QStringLiteral("x"))};
    const BoxAnswers answers;
    panel->gotDrop(static_cast<Qt::DropAction>(action), QStringLiteral("/the target"));
    QCOMPARE(gsDropBase, QStringLiteral("/the target"));
    QVERIFY(answers.seen().isEmpty());
}

void TestViewDrag::copyByDrop()
{
    select({"one.txt", "two.txt"});
    dragFrom(false, QStringLiteral("one.txt"), 50);
    BoxAnswers answers;
    answers.click(QStringLiteral("Yes"));
    drop(panel, true, placeOf(true, QStringLiteral("sub")));
    QTRY_COMPARE(dir->read(QStringLiteral("sub/two.txt")), QByteArray("22"));
    QVERIFY(dir->exists(QStringLiteral("sub/one.txt")) && dir->exists(QStringLiteral("one.txt")));
    QCOMPARE(answers.seen().constFirst().title, gsProduct);
}

void TestViewDrag::moveByDrop()
{
    select({"one.txt"});
    dragFrom(false, QStringLiteral("one.txt"), 50);
    BoxAnswers answers;
    answers.click(QStringLiteral("Yes"));
    drop(panel, false, placeOf(false, QStringLiteral("sub")), Qt::ShiftModifier);
    QTRY_VERIFY(dir->exists(QStringLiteral("sub/one.txt")));
    QVERIFY(!dir->exists(QStringLiteral("one.txt")));
    QTRY_VERIFY(!listNames(panel).contains(QStringLiteral("one.txt")));
}

void TestViewDrag::refusedByNo()
{
    select({"one.txt"});
    dragFrom(false, QStringLiteral("one.txt"), 50);
    BoxAnswers answers;
    answers.click(QStringLiteral("No"));
    drop(panel, false, placeOf(false, QStringLiteral("sub")), Qt::ShiftModifier);
    QVERIFY(dir->exists(QStringLiteral("one.txt")));
    QVERIFY(!dir->exists(QStringLiteral("sub/one.txt")));
}

void TestViewDrag::dropIntoItself()
{
    panel->setTreePath(dir->path(QStringLiteral("sub")));
    QVERIFY(waitForList(panel));
    dragFrom(true, QStringLiteral("sub"), 50);
    BoxAnswers answers;
    answers.click(QStringLiteral("OK"));
    drop(panel, false, placeOf(false, QStringLiteral("deeper")));
    QCOMPARE(answers.seen().size(), 1);
    QVERIFY(
        answers.texts().constFirst().contains(QStringLiteral("The destination is a child of the source")));
}

void TestViewDrag::receivingPanelRunsTheCommand()
{
    TestDir otherDir;
    const auto drives = gstDrives;
    gstDrives = {LSDRIVE{otherDir.path(), QStringLiteral("Other")}};
    MPanel other(&window->window);
    gstDrives = drives;
    other.setGeometry(0, 0, 800, 500);
    other.show();
    QVERIFY(waitForList(&other));
    select({"one.txt"});
    dragFrom(false, QStringLiteral("one.txt"), 50);
    BoxAnswers answers;
    answers.click(QStringLiteral("Yes"));
    drop(&other, false, QPoint(20, 300));
    QCOMPARE(gsDragBase, dir->path());
    QCOMPARE(gsDropBase, otherDir.path());
    QCOMPARE(answers.seen().constFirst().parent, &other);
    QTRY_VERIFY(otherDir.exists(QStringLiteral("one.txt")));
}

void TestViewDrag::dropOfAnotherProgram_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<QString>("type");
    for (const bool inTree : {true, false}) {
        const QByteArray name = inTree ? "tree, " : "listing, ";
        QTest::newRow(name + "text") << inTree << "text/plain";
        QTest::newRow(name + "files") << inTree << "text/uri-list";
        QTest::newRow(name + "anything") << inTree << "application/x-anything";
    }
}

void TestViewDrag::dropOfAnotherProgram()
{
    QFETCH(bool, inTree);
    QFETCH(QString, type);
    // What an earlier command left.
    gslDragList = QStringList{dir->path(QStringLiteral("one.txt"))};
    gsDropBase = QStringLiteral("before");
    mime.clear();
    mime.setData(type, "file:///one.txt\r\n");
    BoxAnswers boxes; // meets none
    QVERIFY(!drop(panel, inTree, placeOf(inTree, QStringLiteral("sub"))));
    QCOMPARE(boxes.texts(), QStringList());
    QCOMPARE(gsDropBase, QStringLiteral("before"));
    QVERIFY(!(inTree ? panel->tree->delegate : panel->list->delegate)->dropTargetIndex.isValid());
}

void TestViewDrag::dropWhileADialogStands()
{
    gslDragList = QStringList{dir->path(QStringLiteral("one.txt"))};
    gsDropBase = QStringLiteral("before");
    QDialog dialog(&window->window);
    dialog.setModal(true);
    dialog.show();
    BoxAnswers boxes; // meets none
    QVERIFY(!drop(panel, false, placeOf(false, QStringLiteral("sub"))));
    QCOMPARE(boxes.texts(), QStringList());
    QCOMPARE(gsDropBase, QStringLiteral("before"));
}

VANTREL_TEST_MAIN(TestViewDrag)
#include "tst_ViewDrag.moc"
