#include "panel/AccessibleList.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "tests/support/AccessibleListFixture.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/TestMain.h"

#include <QHeaderView>
#include <QMenu>

/// What assistive technology is told of the use of the listing, and what it can do there itself.
class TestAccessibleListUse : public QObject, protected AccessibleListFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

    void selectionByRows();
    void selectionIsTold();
    void allRowsSelectedSelectTheColumns();
    void stateOfCells();
    void stateOfTheListing();
    void currentCell();
    void currentCellIsToldOnFocus();
    void movingTellsTheCell();
    void placesOnScreen();
    void cellsOffScreen();
    void toggle();
    void setFocusAction();
    void pressOpensAFolder();
    void pressOnAHeaderSorts();
    void showMenu();
};

void TestAccessibleListUse::selectionByRows()
{
    QVERIFY(table()->selectRow(1));
    QVERIFY(table()->selectRow(3));
    QCOMPARE(list()->selectionModel()->selectedRows().size(), 2);
    QCOMPARE(list()->selectionModel()->selectedIndexes().size(), 8);
    QCOMPARE(table()->selectedRows(), QList<int>({1, 3}));
    QCOMPARE(table()->selectedRowCount(), 2);
    QVERIFY(table()->isRowSelected(3));
    QVERIFY(!table()->isRowSelected(2));
    QVERIFY(table()->unselectRow(1));
    QCOMPARE(table()->selectedRows(), QList<int>({3}));
}

void TestAccessibleListUse::selectionIsTold()
{
    list()->setFocus();
    list()->selectRow(2);
    QCOMPARE(table()->selectedCellCount(), 4);
    const QList<QAccessibleInterface*> cells = table()->selectedCells();
    QCOMPARE(cells, QList<QAccessibleInterface*>({cell("a", 0), cell("a", 1), cell("a", 2), cell("a", 3)}));
    for (QAccessibleInterface* part : cells) {
        QVERIFY(part->tableCellInterface()->isSelected());
    }
    QVERIFY(!cell("b")->tableCellInterface()->isSelected());
    bool told = false;
    for (QAccessibleEvent* event : events()) {
        if (event->type() == QAccessible::SelectionAdd && event->object() == list()) {
            QCOMPARE(accessible()->child(event->child()), cell("a"));
            told = true;
        }
    }
    QVERIFY(told);
}

void TestAccessibleListUse::allRowsSelectedSelectTheColumns()
{
    QCOMPARE(table()->selectedColumnCount(), 0);
    list()->selectAll();
    QCOMPARE(table()->selectedColumns(), QList<int>({0, 1, 2, 3}));
    QVERIFY(!table()->isColumnSelected(4));
    QVERIFY(!table()->isColumnSelected(-1));
    QVERIFY(table()->unselectRow(2));
    QCOMPARE(table()->selectedColumnCount(), 0);
}

void TestAccessibleListUse::stateOfCells()
{
    QAccessible::State state = cell("a")->state();
    QVERIFY(state.selectable && state.focusable && state.multiSelectable);
    QVERIFY(!state.selected && !state.focused && !state.active && !state.invisible && !state.offscreen);
    list()->selectRow(2);
    state = cell("a")->state();
    QVERIFY(state.selected && state.active);
    QVERIFY(!state.focused); // the tree has it
    list()->setFocus();
    QVERIFY(cell("a", 0)->state().focused);
    QVERIFY(!cell("a", 1)->state().focused); // one cell is current
    QVERIFY(cell("a", 1)->state().selected);
    window->window.hide();
    QVERIFY(cell("a")->state().invisible);
    QVERIFY(accessible()->child(1)->state().invisible);
}

void TestAccessibleListUse::stateOfTheListing()
{
    QVERIFY(accessible()->state().focusable);
    QVERIFY(accessible()->state().multiSelectable);
    QVERIFY(!accessible()->state().focused);
    list()->setFocus();
    QVERIFY(accessible()->state().focused);
}

void TestAccessibleListUse::currentCell()
{
    list()->selectionModel()->setCurrentIndex(
        listIndex(panel, QStringLiteral("b"), 1), QItemSelectionModel::NoUpdate);
    QCOMPARE(accessible()->focusChild(), nullptr);
    list()->setFocus();
    QCOMPARE(accessible()->focusChild(), cell("b", 1));
}

void TestAccessibleListUse::currentCellIsToldOnFocus()
{
    list()->selectionModel()->setCurrentIndex(
        listIndex(panel, QStringLiteral("b")), QItemSelectionModel::NoUpdate);
    QVERIFY(accessible() != nullptr);
    clearEvents();
    list()->setFocus();
    // Last, so that it is not the listing as a whole that is read.
    QTRY_COMPARE(events().constLast()->child(), 21);
    const QAccessibleEvent* told = events().constLast();
    QCOMPARE(told->type(), QAccessible::Focus);
    QCOMPARE(told->object(), list());
    QCOMPARE(accessible()->child(21), cell("b"));
}

void TestAccessibleListUse::movingTellsTheCell()
{
    list()->setFocus();
    list()->selectRow(1);
    clearEvents();
    QTest::keyClick(list(), Qt::Key_Down);
    QList<QAccessibleInterface*> told;
    for (QAccessibleEvent* event : events()) {
        if (event->type() == QAccessible::Focus) {
            told.append(accessible()->child(event->child()));
        }
    }
    QCOMPARE(told, QList<QAccessibleInterface*>({cell("a")}));
}

void TestAccessibleListUse::placesOnScreen()
{
    for (const int column : {0, 3}) {
        const QRect shown = list()->visualRect(listIndex(panel, QStringLiteral("a"), column));
        const QRect place(list()->viewport()->mapToGlobal(shown.topLeft()), shown.size());
        QCOMPARE(cell("a", column)->rect(), place);
        QCOMPARE(accessible()->childAt(place.center().x(), place.center().y()), cell("a", column));
    }
    const QPoint inHeader = accessible()->child(2)->rect().center();
    QCOMPARE(accessible()->childAt(inHeader.x(), inHeader.y()), accessible()->child(2));
    const QPoint below
        = list()->viewport()->mapToGlobal(list()->viewport()->rect().bottomLeft() + QPoint(5, -5));
    QCOMPARE(accessible()->childAt(below.x(), below.y()), nullptr);
    QCOMPARE(accessible()->childAt(-5000, -5000), nullptr);
}

void TestAccessibleListUse::cellsOffScreen()
{
    for (int i = 0; i < 100; ++i) {
        dir->file(QStringLiteral("f%1").arg(i, 3, 10, QLatin1Char('0')));
    }
    QTRY_COMPARE(table()->rowCount(), 104);
    QCoreApplication::processEvents();
    QVERIFY(cell("f099")->state().offscreen);
    QVERIFY(!cell("a")->state().offscreen);
    list()->scrollToBottom();
    QVERIFY(!cell("f099")->state().offscreen);
    QVERIFY(cell("a")->state().offscreen);
}

void TestAccessibleListUse::toggle()
{
    const QString name = QAccessibleActionInterface::toggleAction();
    QVERIFY(actions(cell("a"))->actionNames().contains(name));
    QVERIFY(actions(cell("a"))->keyBindingsForAction(name).isEmpty());
    actions(cell("a"))->doAction(name);
    actions(cell("b", 2))->doAction(name);
    QCOMPARE(table()->selectedRows(), QList<int>({2, 3}));
    actions(cell("a", 1))->doAction(name);
    QCOMPARE(table()->selectedRows(), QList<int>({3}));
}

void TestAccessibleListUse::setFocusAction()
{
    actions(cell("b"))->doAction(QAccessibleActionInterface::setFocusAction());
    QVERIFY(list()->hasFocus());
    QCOMPARE(list()->currentIndex(), listIndex(panel, QStringLiteral("b")));
    QVERIFY(table()->selectedRows().isEmpty());
    QCOMPARE(accessible()->focusChild(), cell("b"));
    actions(cell("b"))->doAction(QStringLiteral("no such action")); // nothing
    QCOMPARE(accessible()->focusChild(), cell("b"));
}

void TestAccessibleListUse::pressOpensAFolder()
{
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("d"))));
    actions(cell("d"))->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(panel->currentPath, dir->path()); // later
    QCOMPARE(table()->selectedRows(), QList<int>({1}));
    QTRY_COMPARE(panel->currentPath, dir->path(QStringLiteral("d")));
    QVERIFY(waitForList(panel));
    actions(cell(".."))->doAction(QAccessibleActionInterface::pressAction());
    QTRY_COMPARE(panel->currentPath, dir->path());
}

void TestAccessibleListUse::pressOnAHeaderSorts()
{
    QAccessibleInterface* size = accessible()->child(2);
    QCOMPARE(actions(size)->actionNames(), QStringList(QAccessibleActionInterface::pressAction()));
    QVERIFY(actions(size)->keyBindingsForAction(QAccessibleActionInterface::pressAction()).isEmpty());
    actions(size)->doAction(QAccessibleActionInterface::pressAction());
    QTRY_COMPARE(list()->horizontalHeader()->sortIndicatorSection(), 1);
    QCOMPARE(list()->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    QTRY_VERIFY(listIndex(panel, QStringLiteral("b")).row() < listIndex(panel, QStringLiteral("a")).row());
    actions(size)->doAction(QAccessibleActionInterface::toggleAction()); // it has none
    QCoreApplication::processEvents();
    QCOMPARE(list()->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
}

void TestAccessibleListUse::showMenu()
{
    gstMenu = {LSMENU{CommandProperties, QStringLiteral("|*|"), QStringLiteral("Facts"), QString()}};
    ModalAnswers answers;
    const QRect place = cell("a")->rect();
    const auto check = [&](QMenu* menu) {
        QCOMPARE(menu->actions().size(), 1);
        QVERIFY(place.contains(menu->geometry().topLeft()));
        QTest::keyClick(menu, Qt::Key_Escape);
    };
    answers.meet<QMenu>(check);
    list()->selectRow(1);
    actions(cell("a"))->doAction(QAccessibleActionInterface::showMenuAction());
    QCOMPARE(answers.left(), 1); // later
    QTRY_COMPARE(answers.left(), 0);
    QCOMPARE(panel->contextPath, dir->path(QStringLiteral("a")));
    QCOMPARE(table()->selectedRows(), QList<int>({2}));
    // Of a row that is selected with others, as by a click.
    answers.meet<QMenu>(check);
    list()->selectAll();
    actions(cell("a"))->doAction(QAccessibleActionInterface::showMenuAction());
    QTRY_COMPARE(answers.left(), 0);
    QCOMPARE(table()->selectedRowCount(), 4);
}

VANTREL_TEST_MAIN(TestAccessibleListUse)
#include "tst_AccessibleListUse.moc"
