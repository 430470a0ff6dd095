#include "panel/MList.h"

#include "app/aGlobal.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myDelegate.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QLabel>
#include <QMetaMethod>
#include <QScrollBar>
#include <QSignalSpy>

#include <memory>

class TestMList : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void construction();
    void startState();
    void slotsByName_data();
    void slotsByName();
    void charWidthFromTheFirstResize();
    void columnWidths_data();
    void columnWidths();
    void columnWidthsWithScrollBar();
    void columnWidthsOfTheStyleSheetsFont();
    void scrollBarFollowsTheHeight();
    void rightPressDoesNotMoveThePressPosition();
    void leftPressIsNoted();
    void moveNeverSelects();
    void selectionRewritesTheStatus();
    void focusRewritesTheStatus();
    void selectionModes();
    void startChangeWatcherConnects();
    void accessibleName();
    void placeIsKept();
    void orderIsKept();

private:
    MList* list() const { return panel->list; }

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
};

void TestMList::init()
{
    dir = std::make_unique<TestDir>();
    dir->file(QStringLiteral("a"), "1234");
    dir->file(QStringLiteral("b"), "123456");
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
}

void TestMList::cleanup()
{
    window.reset();
    dir.reset();
}

void TestMList::construction()
{
    const MList fresh(panel);
    QVERIFY(fresh.dragEnabled());
    QVERIFY(fresh.acceptDrops());
    QVERIFY(fresh.showDropIndicator());
    QCOMPARE(fresh.dragDropMode(), QAbstractItemView::DragDrop);
    QCOMPARE(fresh.selectionMode(), QAbstractItemView::ExtendedSelection);
    QCOMPARE(fresh.parent(), panel);
    QCOMPARE(fresh.panel, panel);
    QCOMPARE(fresh.itemDelegate(), fresh.delegate);
    QVERIFY(fresh.delegate != list()->delegate);
    QCOMPARE(fresh.metaObject()->superClass()->className(), "QTableView");
}

void TestMList::startState()
{
    const MList fresh(panel);
    QCOMPARE(fresh.pressPos, QPoint(0, 0));
    QVERIFY(!fresh.nudgeToggle);
    QVERIFY(!fresh.hoverIndex.isValid());
    QVERIFY(!fresh.delegate->dropTargetIndex.isValid());
    QCOMPARE(fresh.partner, nullptr);
    QCOMPARE(fresh.charWidth, 0);
}

void TestMList::slotsByName_data()
{
    QTest::addColumn<QByteArray>("signature");
    QTest::newRow("nudge") << QByteArray("nudgeMouse()");
    QTest::newRow("selection") << QByteArray("selectionChanged(QItemSelection,QItemSelection)");
}

void TestMList::slotsByName()
{
    QFETCH(QByteArray, signature);
    QVERIFY(list()->metaObject()->indexOfSlot(signature.constData()) >= 0);
}

void TestMList::charWidthFromTheFirstResize()
{
    const int expected = list()->fontMetrics().horizontalAdvance(QStringLiteral("01234567890123456789")) / 20;
    QVERIFY(expected > 1);
    QCOMPARE(list()->charWidth, expected);
    list()->charWidth = 3; // kept from then on
    list()->resize(list()->width() + 5, list()->height());
    QCOMPARE(list()->charWidth, 3);
    QCOMPARE(list()->columnWidth(1), 54);
}

void TestMList::columnWidths_data()
{
    QTest::addColumn<int>("width");
    QTest::newRow("wide") << 1200;
    QTest::newRow("odd") << 901;
    QTest::newRow("narrow") << 800;
}

void TestMList::columnWidths()
{
    QFETCH(int, width);
    list()->resize(width, 400);
    QCOMPARE(list()->verticalScrollBar()->maximum(), list()->verticalScrollBar()->minimum());
    const int c = list()->charWidth;
    QCOMPARE(list()->columnWidth(0), width - 4 - 52 * c);
    QCOMPARE(list()->columnWidth(1), 18 * c);
    QCOMPARE(list()->columnWidth(2), 14 * c);
    QCOMPARE(list()->columnWidth(3), 20 * c);
}

void TestMList::columnWidthsWithScrollBar()
{
    dir->files(QStringLiteral("."), 100);
    QTRY_COMPARE(listNames(panel).size(), 103);
    list()->resize(900, 300);
    list()->resize(901, 300);
    const QScrollBar* bar = list()->verticalScrollBar();
    QVERIFY(bar->maximum() > bar->minimum());
    QCOMPARE(list()->columnWidth(0), 901 - 8 - bar->width() - 52 * list()->charWidth);
    QCOMPARE(list()->columnWidth(3), 20 * list()->charWidth);
}

void TestMList::columnWidthsOfTheStyleSheetsFont()
{
    qApp->setStyleSheet(QStringLiteral("QTableView { font-size: 30px }"));
    {
        const PanelWindow big(dir->path());
        const MList* bigList = big.panel->list;
        QCOMPARE(bigList->charWidth,
            bigList->fontMetrics().horizontalAdvance(QStringLiteral("01234567890123456789")) / 20);
        QVERIFY(bigList->charWidth > list()->charWidth);
    }
    qApp->setStyleSheet(QString());
}

void TestMList::scrollBarFollowsTheHeight()
{
    dir->files(QStringLiteral("."), 100);
    QTRY_COMPARE(listNames(panel).size(), 103);
    list()->resize(900, 300);
    const int before = list()->verticalScrollBar()->maximum();
    QVERIFY(before > 0);
    list()->resize(900, 600);
    QVERIFY(list()->verticalScrollBar()->maximum() < before);
    list()->resize(900, 3000);
    QCOMPARE(list()->verticalScrollBar()->maximum(), 0);
}

void TestMList::rightPressDoesNotMoveThePressPosition()
{
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 10));
    QTest::mouseClick(list()->viewport(), Qt::RightButton, Qt::NoModifier, QPoint(70, 30));
    QTest::mouseClick(list()->viewport(), Qt::MiddleButton, Qt::NoModifier, QPoint(80, 30));
    QCOMPARE(list()->pressPos, QPoint(20, 10));
}

void TestMList::leftPressIsNoted()
{
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(33, 27));
    QCOMPARE(list()->pressPos, QPoint(33, 27));
    QVERIFY(list()->selectionModel()->hasSelection()); // the base handler ran
}

void TestMList::moveNeverSelects()
{
    const QRect a = list()->visualRect(listIndex(panel, QStringLiteral("a")));
    const QRect b = list()->visualRect(listIndex(panel, QStringLiteral("b")));
    QTest::mousePress(list()->viewport(), Qt::LeftButton, Qt::NoModifier, a.center());
    QTest::mouseMove(list()->viewport(), b.center());
    QTest::mouseRelease(list()->viewport(), Qt::LeftButton, Qt::NoModifier, b.center());
    QCOMPARE(list()->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(list()->currentIndex().data().toString(), QStringLiteral("a"));
}

void TestMList::selectionRewritesTheStatus()
{
    list()->setFocus();
    list()->selectRow(1);
    QCOMPARE(panel->selectionLabel->text(), QStringLiteral("Selected 1 file(s), 4 Bytes"));
    list()->selectAll();
    QCOMPARE(panel->selectionLabel->text(), QStringLiteral("Selected 2 file(s), 10 Bytes"));
    list()->clearSelection();
    QCOMPARE(panel->selectionLabel->text(), QStringLiteral("Selected 0 file(s), 0 Bytes"));
}

void TestMList::focusRewritesTheStatus()
{
    list()->setFocus();
    list()->selectAll();
    panel->selectionLabel->setText(QStringLiteral("old"));
    panel->tree->setFocus();
    QVERIFY2(panel->selectionLabel->text().endsWith(QLatin1String("% used")),
        qPrintable(panel->selectionLabel->text()));
    list()->setFocus();
    QCOMPARE(panel->selectionLabel->text(), QStringLiteral("Selected 2 file(s), 10 Bytes"));
}

void TestMList::selectionModes()
{
    const auto click = [this](const char* name, Qt::KeyboardModifiers modifiers) {
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, modifiers,
            list()->visualRect(listIndex(panel, QLatin1String(name))).center());
        return list()->selectionModel()->selectedRows().size();
    };
    QCOMPARE(click("a", Qt::NoModifier), 1);
    QCOMPARE(click("b", Qt::ControlModifier), 2);
    QCOMPARE(click("b", Qt::ControlModifier), 1);
    QCOMPARE(click("b", Qt::NoModifier), 1);
    QCOMPARE(click("..", Qt::ShiftModifier), 3);
}

void TestMList::startChangeWatcherConnects()
{
    list()->startChangeWatcher();
    QVERIFY(QObject::disconnect(list()->selectionModel(),
        SIGNAL(selectionChanged(const QItemSelection&, const QItemSelection&)), list(),
        SLOT(selectionChanged(const QItemSelection&, const QItemSelection&))));
}

void TestMList::accessibleName()
{
    QCOMPARE(list()->accessibleName(), QStringLiteral("File list"));
}

void TestMList::placeIsKept()
{
    dir->files(QStringLiteral("."), 300);
    QTRY_COMPARE(listNames(panel).size(), 303);
    list()->verticalScrollBar()->setValue(100);
    panel->reloadList();
    QTRY_COMPARE(listNames(panel).size(), 303);
    QTRY_COMPARE(list()->verticalScrollBar()->value(), 100);
}

// The header shows another order until it is clicked.
void TestMList::orderIsKept()
{
    dir->files(QStringLiteral("."), 20);
    QTRY_COMPARE(listNames(panel).size(), 23);
    for (int clicks = 0; clicks < 3; ++clicks) {
        const QStringList before = listNames(panel);
        panel->reloadList();
        QTRY_COMPARE(listNames(panel), before);
        panel->headerClicked(0);
    }
}

VANTREL_TEST_MAIN(TestMList)
#include "tst_MList.moc"
