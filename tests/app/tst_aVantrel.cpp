#include "app/aGlobal.h"
#include "app/aVantrel.h"
#include "panel/MPanel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/Listening.h"
#include "tests/support/Settings.h"
#include "tests/support/TestMain.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>
#include <QPointer>
#include <QTextDocument>
#include <QTimer>
#include <QToolBar>

namespace {

/// The main window with its event handler within reach.
class Window : public aVantrel
{
public:
    using aVantrel::resizeEvent;
};

QStringList actionTexts(const QWidget* menu)
{
    QStringList texts;
    const QList<QAction*> actions = menu->actions();
    for (const QAction* action : actions) {
        texts.append(action->text());
    }
    return texts;
}

int menuHeight(const aVantrel& window)
{
    return window.menuBar()->height();
}

void compareArrangement(const aVantrel& window, int arrange)
{
    const int width = window.width();
    const int top = menuHeight(window);
    const int below = window.height() - top;
    QVERIFY(top > 0);
    if (arrange == 0) {
        QCOMPARE(gwPanel1->geometry(), QRect(0, top, width / 2, below));
        QCOMPARE(gwPanel2->geometry(), QRect(width / 2, top, width / 2, below));
    } else if (arrange == 1) {
        QCOMPARE(gwPanel1->geometry(), QRect(0, top, width, below));
        QCOMPARE(gwPanel2->geometry(), QRect(0, 0, 0, 0));
    } else {
        QCOMPARE(gwPanel1->geometry(), QRect(0, top, width, below / 2));
        QCOMPARE(gwPanel2->geometry(), QRect(0, top + below / 2, width, below / 2));
    }
}

const QRect firstPlace1(100, 100, 500, 500);
const QRect firstPlace2(700, 100, 500, 500);

} // namespace

class TestaVantrel : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void form();
    void menus();
    void actionNames_data();
    void actionNames();
    void formKeepsNothingElse();
    void slotsByName_data();
    void slotsByName();

    void pointers();
    void panelsAreChildrenSecondFirst();
    void panelFrames();
    void titleAndState();
    void destroysPanels();

    void layout_data();
    void layout();
    void unknownArrangement_data();
    void unknownArrangement();
    void unknownArrangementKeepsCurrentPlaces();
    void nullEvent();
    void menuChangesArrangementAtOnce_data();
    void menuChangesArrangementAtOnce();
    void panelWithoutAreaIsNotHidden();
    void resizeFollowsTheWindow();

    void about();
    void aboutDoesNotKeepAScreenReaderWaiting();
    void exitCloses();
    void exitEndsTheEventLoop();
};

void TestaVantrel::init()
{
    resetSettings();
}

void TestaVantrel::form()
{
    const Window window;
    QCOMPARE(window.objectName(), QStringLiteral("aVantrel"));
    QVERIFY(window.centralWidget() != nullptr);
    QCOMPARE(window.centralWidget()->metaObject()->className(), "QWidget");
    QCOMPARE(window.parent(), nullptr);
}

void TestaVantrel::menus()
{
    const Window window;
    const QList<QAction*> entries = window.menuBar()->actions();
    QCOMPARE(actionTexts(window.menuBar()), (QStringList{"File", "Window", "Help"}));
    QCOMPARE(actionTexts(entries.at(0)->menu()), QStringList{"Exit"});
    QCOMPARE(actionTexts(entries.at(1)->menu()),
        (QStringList{"Tile Vertically", "Single Panel", "Tile Horizontally"}));
    QCOMPARE(actionTexts(entries.at(2)->menu()), QStringList{"About"});
}

void TestaVantrel::actionNames_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("actionExit") << QStringLiteral("Exit");
    QTest::newRow("actionAbout") << QStringLiteral("About");
    QTest::newRow("actionTile_Vertically") << QStringLiteral("Tile Vertically");
    QTest::newRow("actionSingle_Panel") << QStringLiteral("Single Panel");
    QTest::newRow("actionTile_Horizontally") << QStringLiteral("Tile Horizontally");
}

void TestaVantrel::actionNames()
{
    const Window window;
    const auto* action = window.findChild<QAction*>(QLatin1String(QTest::currentDataTag()));
    QVERIFY(action != nullptr);
    QTEST(action->text(), "text");
    QVERIFY(action->isEnabled());
    QVERIFY(!action->isCheckable());
    QVERIFY(action->shortcut().isEmpty());
}

void TestaVantrel::formKeepsNothingElse()
{
    const Window window;
    QCOMPARE(window.findChildren<QToolBar*>().size(), 0);
    QCOMPARE(window.findChild<QWidget*>(QStringLiteral("statusBar")), nullptr);
    int named = 0;
    const QList<QAction*> actions = window.findChildren<QAction*>(QString(), Qt::FindDirectChildrenOnly);
    for (const QAction* action : actions) {
        named += action->objectName().startsWith(QLatin1String("action")) ? 1 : 0;
    }
    QCOMPARE(named, 5);
}

void TestaVantrel::slotsByName_data()
{
    QTest::addColumn<QByteArray>("slot");
    for (const char* slot : {"on_actionExit_triggered()", "on_actionTile_Vertically_triggered()",
             "on_actionSingle_Panel_triggered()", "on_actionTile_Horizontally_triggered()",
             "on_actionAbout_triggered()"}) {
        QTest::newRow(slot) << QByteArray(slot);
    }
}

void TestaVantrel::slotsByName()
{
    QFETCH(QByteArray, slot);
    const int index = aVantrel::staticMetaObject.indexOfSlot(slot.constData());
    QVERIFY(index >= aVantrel::staticMetaObject.methodOffset());
    QCOMPARE(aVantrel::staticMetaObject.method(index).methodType(), QMetaMethod::Slot);
}

void TestaVantrel::pointers()
{
    const Window window;
    QCOMPARE(gwMainframe, &window);
    QVERIFY(gwPanel1 != nullptr);
    QVERIFY(gwPanel2 != nullptr);
    QVERIFY(gwPanel1 != gwPanel2);
}

void TestaVantrel::panelsAreChildrenSecondFirst()
{
    const Window window;
    QCOMPARE(window.findChildren<MPanel*>(QString(), Qt::FindDirectChildrenOnly),
        (QList<MPanel*>{gwPanel2, gwPanel1}));
    QCOMPARE(window.findChildren<MPanel*>().size(), 2);
}

void TestaVantrel::panelFrames()
{
    const Window window;
    for (const MPanel* panel : {gwPanel1, gwPanel2}) {
        QCOMPARE(panel->accessibleName(),
            panel == gwPanel1 ? QStringLiteral("Panel 1") : QStringLiteral("Panel 2"));
        QCOMPARE(panel->frameShadow(), QFrame::Sunken);
        QCOMPARE(panel->frameShape(), QFrame::Panel);
        QVERIFY(panel->isVisible());
    }
}

void TestaVantrel::titleAndState()
{
    const Window window;
    QCOMPARE(window.windowTitle(), QStringLiteral("Vantrel"));
    QVERIFY(window.isVisible());
    QVERIFY(window.isMaximized());
}

void TestaVantrel::destroysPanels()
{
    QPointer<MPanel> first;
    QPointer<MPanel> second;
    const aVantrel* address = nullptr;
    {
        const Window window;
        first = gwPanel1;
        second = gwPanel2;
        address = &window;
    }
    QVERIFY(first.isNull());
    QVERIFY(second.isNull());
    QCOMPARE(gwMainframe, address); // not cleared, and that is wanted
    QVERIFY(gwPanel1 != nullptr);
    QVERIFY(gwPanel2 != nullptr);
}

void TestaVantrel::layout_data()
{
    QTest::addColumn<int>("arrange");
    QTest::addColumn<QSize>("size");
    const char* const names[] = {"side by side", "single", "stacked"};
    for (int arrange = 0; arrange < 3; ++arrange) {
        for (const QSize size : {QSize(800, 600), QSize(801, 600), QSize(800, 601), QSize(801, 601),
                 QSize(400, 300), QSize(1921, 1079), QSize(3840, 2160), QSize(201, 101)}) {
            QTest::addRow("%s %dx%d", names[arrange], size.width(), size.height()) << arrange << size;
        }
    }
}

void TestaVantrel::layout()
{
    QFETCH(int, arrange);
    QFETCH(QSize, size);
    giWindowArrange = arrange;
    Window window;
    window.showNormal();
    window.resize(size);
    QTRY_COMPARE(window.size(), size);
    compareArrangement(window, arrange);
}

void TestaVantrel::unknownArrangement_data()
{
    QTest::addColumn<int>("arrange");
    QTest::newRow("7") << 7;
    QTest::newRow("3") << 3;
    QTest::newRow("negative") << -1;
}

void TestaVantrel::unknownArrangement()
{
    QFETCH(int, arrange);
    giWindowArrange = arrange;
    Window window;
    QCOMPARE(gwPanel1->geometry(), firstPlace1);
    QCOMPARE(gwPanel2->geometry(), firstPlace2);
    window.showNormal();
    for (const QSize size : {QSize(801, 601), QSize(1500, 900)}) {
        window.resize(size);
        QTRY_COMPARE(window.size(), size);
        QCOMPARE(gwPanel1->geometry(), firstPlace1);
        QCOMPARE(gwPanel2->geometry(), firstPlace2);
    }
}

void TestaVantrel::unknownArrangementKeepsCurrentPlaces()
{
    giWindowArrange = ArrangeStacked;
    Window window;
    const QRect first = gwPanel1->geometry();
    const QRect second = gwPanel2->geometry();
    giWindowArrange = 99;
    window.resizeEvent(nullptr);
    QCOMPARE(gwPanel1->geometry(), first);
    QCOMPARE(gwPanel2->geometry(), second);
}

void TestaVantrel::nullEvent()
{
    Window window;
    for (const int arrange : {2, 1, 0, 1, 2, 0}) {
        giWindowArrange = arrange;
        window.resizeEvent(nullptr);
        compareArrangement(window, arrange);
    }
}

void TestaVantrel::menuChangesArrangementAtOnce_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("actionTile_Vertically") << 1 << 0;
    QTest::newRow("actionSingle_Panel") << 0 << 1;
    QTest::newRow("actionTile_Horizontally") << 7 << 2;
}

void TestaVantrel::menuChangesArrangementAtOnce()
{
    QFETCH(int, before);
    QFETCH(int, after);
    giWindowArrange = before;
    Window window;
    window.findChild<QAction*>(QLatin1String(QTest::currentDataTag()))->trigger();
    QCOMPARE(giWindowArrange, after);
    compareArrangement(window, after);
}

void TestaVantrel::panelWithoutAreaIsNotHidden()
{
    giWindowArrange = ArrangeSinglePanel;
    Window window;
    QCOMPARE(gwPanel2->geometry(), QRect(0, 0, 0, 0));
    QVERIFY(!gwPanel2->isHidden());
    MPanel* const second = gwPanel2;
    window.findChild<QAction*>(QStringLiteral("actionTile_Vertically"))->trigger();
    QCOMPARE(gwPanel2, second);
    QVERIFY(gwPanel2->isVisible());
    compareArrangement(window, 0);
}

void TestaVantrel::resizeFollowsTheWindow()
{
    Window window;
    window.showNormal();
    for (int width = 600; width < 620; ++width) {
        window.resize(width, width - 150);
        QTRY_COMPARE(window.width(), width);
        compareArrangement(window, 0);
    }
}

void TestaVantrel::about()
{
    Window window;
    BoxAnswers boxes;
    boxes.click(QStringLiteral("OK"));
    window.findChild<QAction*>(QStringLiteral("actionAbout"))->trigger();
    QCOMPARE(boxes.seen().size(), 1);
    const BoxAnswers::Box box = boxes.seen().first();
    QCOMPARE(box.title, QStringLiteral("About Vantrel"));
    QCOMPARE(box.text, QStringLiteral("\nVantrel Version 0.30\n\nCopyright \u00a9 2026 The Vantrel authors"));
    QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
    QCOMPARE(box.parent, &window);
    QVERIFY(box.modal);
    QVERIFY(!Qt::mightBeRichText(box.text));
}

void TestaVantrel::aboutDoesNotKeepAScreenReaderWaiting()
{
    VANTREL_NEEDS_LISTENING();
    Window window;
    BoxAnswers boxes;
    boxes.click(QStringLiteral("OK"));
    window.findChild<QAction*>(QStringLiteral("actionAbout"))->trigger();
    setListening(false);
    QVERIFY(boxes.seen().isEmpty());
    QTRY_COMPARE(boxes.left(), 0);
}

void TestaVantrel::exitCloses()
{
    Window window;
    window.findChild<QAction*>(QStringLiteral("actionExit"))->trigger();
    QVERIFY(!window.isVisible());
}

void TestaVantrel::exitEndsTheEventLoop()
{
    Window window;
    QTimer::singleShot(0, window.findChild<QAction*>(QStringLiteral("actionExit")), &QAction::trigger);
    QTimer::singleShot(10000, qApp, [] { QCoreApplication::exit(1); });
    QCOMPARE(QApplication::exec(), 0);
}

VANTREL_TEST_MAIN(TestaVantrel)
#include "tst_aVantrel.moc"
