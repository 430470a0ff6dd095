#include "app/aGlobal.h"
#include "app/aVantrel.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MNavBar.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestMain.h"
#include "tests/support/TwoPanels.h"

#include <QApplication>
#include <QPushButton>

#include <algorithm>
#include <memory>

/// The way of Tab through the main window.
class TestTabOrder : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void tabGoesThroughBothPanels();
    void tabGoesOverWhatIsNotSeen();
    void tabFromNowhere();
    void tabAfterAnotherFolder();
    void focusLeavesThePanelThatIsNotShown();
    void spacePressesABarButton();

private:
    MPanel* other() const { return panels->other; }
    QList<QWidget*> walk(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const;

    std::unique_ptr<TwoPanels> panels;
    TestDir* dir = nullptr;
    aVantrel* window = nullptr;
    MPanel* panel = nullptr;
};

void TestTabOrder::init()
{
    panels = std::make_unique<TwoPanels>();
    QVERIFY(panels->ready());
    dir = &panels->dir;
    window = panels->window.get();
    panel = panels->panel;
    window->showNormal();
    window->resize(3000, 900);
}

void TestTabOrder::cleanup()
{
    panels.reset();
}

/// What a key goes through from the listing of the first panel on until it is there again.
QList<QWidget*> TestTabOrder::walk(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    panel->list->setFocus();
    QList<QWidget*> seen;
    do {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        seen.append(QApplication::focusWidget());
    } while (seen.last() != panel->list && seen.size() < 100);
    return seen;
}

namespace {

QList<QWidget*> stopsOf(const MPanel* panel)
{
    QList<QWidget*> stops;
    for (QPushButton* button : qAsConst(panel->driveBar->buttons)) {
        stops.append(button);
    }
    for (QPushButton* button : qAsConst(panel->navBar->buttons)) {
        stops.append(button);
    }
    return stops << panel->tree << panel->list;
}

QList<QWidget*> reversed(QList<QWidget*> widgets)
{
    std::reverse(widgets.begin(), widgets.end());
    return widgets;
}

} // namespace

void TestTabOrder::tabGoesThroughBothPanels()
{
    for (const char* action : {"actionTile_Vertically", "actionTile_Horizontally"}) {
        panels->arrange(action);
        QCOMPARE(walk(Qt::Key_Tab), stopsOf(other()) + stopsOf(panel));
        const QList<QWidget*> there = stopsOf(panel) + stopsOf(other());
        QCOMPARE(walk(Qt::Key_Backtab, Qt::ShiftModifier).mid(0, 2),
            (QList<QWidget*>{panel->tree, panel->navBar->buttons.last()}));
        // Back is the same way: the last stop is where it began.
        QList<QWidget*> back = walk(Qt::Key_Backtab, Qt::ShiftModifier);
        back.prepend(back.takeLast());
        QCOMPARE(back, reversed(stopsOf(panel)) + reversed(stopsOf(other())));
        QCOMPARE(there.size(), back.size());
    }
}

void TestTabOrder::tabGoesOverWhatIsNotSeen()
{
    panels->arrange("actionSingle_Panel");
    QCOMPARE(walk(Qt::Key_Tab), stopsOf(panel));
    // A long path runs off the edge.
    window->resize(400, 600);
    QPushButton* last = panel->navBar->buttons.last();
    QVERIFY(last->x() < panel->navBar->width());
    QVERIFY(walk(Qt::Key_Tab).contains(last));
    window->resize(last->x() - 20, 600);
    QVERIFY(last->isVisible());
    QVERIFY(!walk(Qt::Key_Tab).contains(last));
    QVERIFY(walk(Qt::Key_Tab).contains(panel->tree));
}

void TestTabOrder::tabFromNowhere()
{
    QApplication::focusWidget()->clearFocus();
    QTest::keyClick(window, Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), panel->driveBar->buttons.first());
    QApplication::focusWidget()->clearFocus();
    QTest::keyClick(window, Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(QApplication::focusWidget(), other()->list);
}

// The path buttons are made anew for each folder.
void TestTabOrder::tabAfterAnotherFolder()
{
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    QCOMPARE(panel->navBar->buttons.last()->text(), QStringLiteral("d/"));
    QCOMPARE(walk(Qt::Key_Tab), stopsOf(other()) + stopsOf(panel));
}

void TestTabOrder::focusLeavesThePanelThatIsNotShown()
{
    other()->list->setFocus();
    panels->arrange("actionTile_Horizontally");
    QVERIFY(other()->list->hasFocus());
    panels->arrange("actionSingle_Panel");
    QVERIFY(panel->list->hasFocus());
    panels->arrange("actionTile_Vertically");
    panel->tree->setFocus();
    panels->arrange("actionSingle_Panel");
    QVERIFY(panel->tree->hasFocus());
}

void TestTabOrder::spacePressesABarButton()
{
    panel->driveBar->buttons.at(1)->setFocus(Qt::TabFocusReason);
    QTest::keyClick(panel->driveBar->buttons.at(1), Qt::Key_Space);
    QTRY_COMPARE(panel->currentPath, dir->path(QStringLiteral("e")));
    QCOMPARE(panel->rootPath, panel->currentPath);
}

VANTREL_TEST_MAIN(TestTabOrder)
#include "tst_TabOrder.moc"
