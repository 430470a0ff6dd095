#include "panel/ViewDrag.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myDelegate.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/DragFixture.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QDialog>
#include <QDragEnterEvent>
#include <QFile>
#include <QSignalSpy>

/// Drags that come over a view, and drops there.
class TestViewDragTarget : public QObject, protected DragFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }
    void dropWithoutADragOfOurs();

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
};

void TestViewDragTarget::enterAccepts_data()
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

void TestViewDragTarget::enterAccepts()
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

void TestViewDragTarget::hoverOutlines_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<QString>("name");
    QTest::newRow("tree, folder") << true << QStringLiteral("sub");
    QTest::newRow("tree, root") << true << QString();
    QTest::newRow("listing, folder") << false << QStringLiteral("sub");
    QTest::newRow("listing, file") << false << QStringLiteral("one.txt");
    QTest::newRow("listing, parent") << false << QStringLiteral("..");
}

void TestViewDragTarget::hoverOutlines()
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

void TestViewDragTarget::hoverBesideItemsKeepsTheOutline()
{
    hover(false, placeOf(false, QStringLiteral("sub")));
    QCOMPARE(hover(false, placeOf(false, QString())), Qt::CopyAction);
    QCOMPARE(QModelIndex(panel->list->delegate->dropTargetIndex), listIndex(panel, QStringLiteral("sub")));
}

void TestViewDragTarget::hoverAction_data()
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

void TestViewDragTarget::hoverAction()
{
    QFETCH(bool, inTree);
    QFETCH(int, modifiers);
    QFETCH(int, action);
    const auto held = static_cast<Qt::KeyboardModifiers>(modifiers);
    QCOMPARE(int(hover(inTree, placeOf(inTree, QStringLiteral("sub")), held)), action);
    QCOMPARE(int(hover(inTree, placeOf(inTree, QString()), held)), action);
}

void TestViewDragTarget::hoverRepaintsOldAndNew()
{
    hover(false, placeOf(false, QStringLiteral("sub")));
    QSignalSpy changed(panel->listModel, &QAbstractItemModel::dataChanged);
    hover(false, placeOf(false, QStringLiteral("one.txt")));
    QCOMPARE(changed.size(), 2);
    QCOMPARE(changed.at(0).at(0).toModelIndex(), listIndex(panel, QStringLiteral("sub")));
    QCOMPARE(changed.at(1).at(0).toModelIndex(), listIndex(panel, QStringLiteral("one.txt")));
}

void TestViewDragTarget::leaveClears_data()
{
    bothViews();
}

void TestViewDragTarget::leaveClears()
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

void TestViewDragTarget::leaveWithoutHover()
{
    QSignalSpy changed(panel->listModel, &QAbstractItemModel::dataChanged);
    enter(panel->list->viewport(), QPoint(5, 5));
    QDragLeaveEvent leave;
    leave.ignore();
    QApplication::sendEvent(panel->list->viewport(), &leave);
    QVERIFY(changed.isEmpty());
    QVERIFY(leave.isAccepted());
}

void TestViewDragTarget::outlineGoesWithItsRow()
{
    hover(false, placeOf(false, QStringLiteral("one.txt")));
    QVERIFY(QFile::remove(dir->path(QStringLiteral("one.txt"))));
    QTRY_VERIFY(!listNames(panel).contains(QStringLiteral("one.txt")));
    QVERIFY(!panel->list->hoverIndex.isValid());
    QVERIFY(!panel->list->delegate->dropTargetIndex.isValid());
    hover(false, placeOf(false, QStringLiteral("sub")));
    QCOMPARE(QModelIndex(panel->list->hoverIndex), listIndex(panel, QStringLiteral("sub")));
}

void TestViewDragTarget::hoverSurvivesAFolderChange()
{
    hover(false, placeOf(false, QStringLiteral("one.txt")));
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("sub"))));
    QVERIFY(!panel->list->hoverIndex.isValid());
    hover(false, placeOf(false, QStringLiteral("deeper")));
    QCOMPARE(QModelIndex(panel->list->delegate->dropTargetIndex), listIndex(panel, QStringLiteral("deeper")));
}

void TestViewDragTarget::dropTarget_data()
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

void TestViewDragTarget::dropTarget()
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

void TestViewDragTarget::dropAction_data()
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

void TestViewDragTarget::dropAction()
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

void TestViewDragTarget::dropClearsTheOutline()
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

void TestViewDragTarget::gotDropOtherActions_data()
{
    QTest::addColumn<int>("action");
    QTest::newRow("ignore") << int(Qt::IgnoreAction);
    QTest::newRow("link") << int(Qt::LinkAction);
    QTest::newRow("target moves") << int(Qt::TargetMoveAction);
}

void TestViewDragTarget::gotDropOtherActions()
{
    QFETCH(int, action);
    TestDir source;
    gslDragList = QStringList{source.file(QStringLiteral("x"))};
    const BoxAnswers answers;
    panel->gotDrop(static_cast<Qt::DropAction>(action), QStringLiteral("/the target"));
    QCOMPARE(gsDropBase, QStringLiteral("/the target"));
    QVERIFY(answers.seen().isEmpty());
}

void TestViewDragTarget::copyByDrop()
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

void TestViewDragTarget::moveByDrop()
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

void TestViewDragTarget::refusedByNo()
{
    select({"one.txt"});
    dragFrom(false, QStringLiteral("one.txt"), 50);
    BoxAnswers answers;
    answers.click(QStringLiteral("No"));
    drop(panel, false, placeOf(false, QStringLiteral("sub")), Qt::ShiftModifier);
    QVERIFY(dir->exists(QStringLiteral("one.txt")));
    QVERIFY(!dir->exists(QStringLiteral("sub/one.txt")));
}

void TestViewDragTarget::dropIntoItself()
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

void TestViewDragTarget::receivingPanelRunsTheCommand()
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

void TestViewDragTarget::dropOfAnotherProgram_data()
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

void TestViewDragTarget::dropOfAnotherProgram()
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

void TestViewDragTarget::dropWhileADialogStands()
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

/// Another run of the program drags the same marker; what is pending here is of an earlier drag.
void TestViewDragTarget::dropWithoutADragOfOurs()
{
    gslDragList = QStringList{dir->path(QStringLiteral("one.txt"))};
    const BoxAnswers answers;
    QDropEvent event(
        placeOf(false, QStringLiteral("sub")), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    enter(panel->list->viewport(), event.pos());
    QApplication::sendEvent(panel->list->viewport(), &event);
    QVERIFY(!event.isAccepted());
}

VANTREL_TEST_MAIN(TestViewDragTarget)
#include "tst_ViewDragTarget.moc"
