#include "panel/MDriveBar.h"

#include "app/aGlobal.h"
#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QCommonStyle>
#include <QPointer>
#include <QPushButton>
#include <QSignalMapper>

#include <memory>

namespace {

void setDrives(const QStringList& labels, const TestDir& dir)
{
    gstDrives.clear();
    for (const QString& label : labels) {
        gstDrives.append(LSDRIVE{dir.folder(QStringLiteral("drive%1").arg(gstDrives.size())), label});
    }
}

int expectedWidth(const QString& text, float charWidth)
{
    return static_cast<int>(static_cast<float>(text.length()) * charWidth + 30.0F);
}

} // namespace

class TestMDriveBar : public QObject
{
    Q_OBJECT

private slots:
    void noDrives();
    void construction();
    void places_data();
    void places();
    void buttonLook();
    void icon();
    void heightIsTheInitialOne();
    void pressRootsTheTree();
    void reactsOnPressOnce();
    void order();
    void awkwardPaths_data();
    void awkwardPaths();
    void buttonsStay();
};

void TestMDriveBar::noDrives()
{
    const PanelWindow window{QString()};
    const MDriveBar* bar = window.panel->driveBar;
    QVERIFY(bar->buttons.isEmpty());
    QVERIFY(bar->findChildren<QPushButton*>().isEmpty()); // the sample is gone
    QCOMPARE(bar->buttonCount, 0);
    QCOMPARE(bar->nextX, 10);
    QVERIFY(bar->isVisible());
    QCOMPARE(bar->frameShadow(), QFrame::Sunken);
    QCOMPARE(bar->frameShape(), QFrame::StyledPanel);
}

void TestMDriveBar::construction()
{
    const TestDir dir;
    const PanelWindow window(dir.path());
    const MDriveBar* bar = window.panel->driveBar;
    QCOMPARE(bar->panel, window.panel);
    QCOMPARE(bar->parent(), window.panel);
    QCOMPARE(bar->mapper->parent(), bar);
    QCOMPARE(bar->metaObject()->superClass()->className(), "QFrame");
    const QFontMetrics metrics(bar->buttons.constFirst()->font());
    QCOMPARE(bar->charWidth,
        static_cast<float>(metrics.horizontalAdvance(QStringLiteral("01234567890123456789"))) / 20.0F);
    QVERIFY(!bar->accessibleName().isEmpty());
}

void TestMDriveBar::places_data()
{
    QTest::addColumn<QStringList>("labels");
    QTest::newRow("one") << QStringList{"Home"};
    QTest::newRow("two") << QStringList{"Home", "Root"};
    QTest::newRow("empty label") << QStringList{"", "x"};
    QTest::newRow("many and long") << QStringList{"iiiiiiii", "WWWWWWWW", "A label with blanks", "%1", "<b>"};
    QTest::newRow("the same twice") << QStringList{"Home", "Home"};
    QTest::newRow("further than the bar") << QStringList{QString(100, 'a'), QString(100, 'b'), "c"};
}

void TestMDriveBar::places()
{
    QFETCH(QStringList, labels);
    const TestDir dir;
    setDrives(labels, dir);
    const PanelWindow window{QString()};
    const MDriveBar* bar = window.panel->driveBar;
    QCOMPARE(bar->buttons.size(), labels.size());
    QCOMPARE(bar->buttonCount, labels.size());
    int x = 10;
    for (int i = 0; i < labels.size(); ++i) {
        const QPushButton* button = bar->buttons.at(i);
        const int w = expectedWidth(labels.at(i), bar->charWidth);
        QCOMPARE(button->text(), labels.at(i));
        QCOMPARE(button->geometry(), QRect(x, 4, w, 30 - 8));
        if (i > 0) {
            const QRect before = bar->buttons.at(i - 1)->geometry();
            QCOMPARE(button->x() - (before.x() + before.width()), 16);
        }
        x += w + 16;
    }
    QCOMPARE(bar->nextX, x);
}

void TestMDriveBar::buttonLook()
{
    const TestDir dir;
    const PanelWindow window(dir.path());
    const QPushButton* button = window.panel->driveBar->buttons.constFirst();
    QVERIFY(!button->isFlat());
    QVERIFY(button->autoFillBackground());
    QVERIFY(button->isVisible());
    QCOMPARE(button->objectName(), QStringLiteral("DriveBar"));
    QCOMPARE(button->parentWidget(), window.panel->driveBar);
}

void TestMDriveBar::icon()
{
    const TestDir dir;
    const PanelWindow window(dir.path());
    const QPushButton* button = window.panel->driveBar->buttons.constFirst();
    QCOMPARE(button->iconSize(), QSize(16, 16));
    const QImage expected = QCommonStyle().standardIcon(QStyle::SP_DriveHDIcon).pixmap(16, 16).toImage();
    QVERIFY(!expected.isNull());
    QCOMPARE(button->icon().pixmap(16, 16).toImage(), expected);
}

// The buttons are made while the bar has the height that a new widget has, whatever it gets later.
void TestMDriveBar::heightIsTheInitialOne()
{
    const TestDir dir;
    setDrives({"Home"}, dir);
    const PanelWindow window{QString()};
    MDriveBar fresh(window.panel);
    QCOMPARE(fresh.buttons.constFirst()->height(), fresh.height() - 8);
    const int before = fresh.buttons.constFirst()->height();
    fresh.setGeometry(0, 0, 400, 90);
    QCOMPARE(fresh.buttons.constFirst()->height(), before);
    fresh.MakeOneButton(QStringLiteral("later"));
    QCOMPARE(fresh.buttons.constLast()->height(), 82);
    QCOMPARE(fresh.buttonCount, 2);
}

void TestMDriveBar::pressRootsTheTree()
{
    const TestDir dir;
    setDrives({"One", "Two", "Three"}, dir);
    dir.file(QStringLiteral("drive1/in two"));
    const PanelWindow window{QString()};
    MPanel* panel = window.panel;
    QCOMPARE(panel->rootPath, dir.path(QStringLiteral("drive0")));
    for (const int at : {1, 2, 0, 1}) {
        QTest::mouseClick(panel->driveBar->buttons.at(at), Qt::LeftButton);
        QCOMPARE(panel->rootPath, gstDrives.at(at).path);
        QCOMPARE(panel->currentPath, gstDrives.at(at).path);
        QCOMPARE(panel->listModel->rootPath(), gstDrives.at(at).path);
        QCOMPARE(panel->treeModel->rootPath(), gstDrives.at(at).path);
        QVERIFY(waitForList(panel));
    }
    QCOMPARE(listNames(panel), (QStringList{"..", "in two"}));
    QCOMPARE(treeNames(panel), QStringList{"drive1"});
}

void TestMDriveBar::reactsOnPressOnce()
{
    const TestDir dir;
    setDrives({"One", "Two"}, dir);
    const PanelWindow window{QString()};
    MPanel* panel = window.panel;
    QTest::mousePress(panel->driveBar->buttons.at(1), Qt::LeftButton);
    QCOMPARE(panel->rootPath, gstDrives.at(1).path);
    const QPointer<myFileSystemModel> model = panel->treeModel;
    QTest::mouseRelease(panel->driveBar->buttons.at(1), Qt::LeftButton);
    QCOMPARE(panel->treeModel, model.data());
    // Still so after several changes of folder, unlike the path bar's presses.
    QVERIFY(waitForList(panel));
    panel->driveBar->buttonPressed(0);
    QCOMPARE(panel->rootPath, gstDrives.at(0).path);
}

void TestMDriveBar::order()
{
    const TestDir dir;
    const QStringList labels{"zeta", "Alpha", "10", "9"};
    setDrives(labels, dir);
    const PanelWindow window{QString()};
    QStringList texts;
    for (const QPushButton* button : qAsConst(window.panel->driveBar->buttons)) {
        texts.append(button->text());
    }
    QCOMPARE(texts, labels);
}

void TestMDriveBar::awkwardPaths_data()
{
    QTest::addColumn<QString>("relative");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("file") << QStringLiteral("file");
    QTest::newRow("dangling link") << QStringLiteral("dangling");
    QTest::newRow("link to folder") << QStringLiteral("link");
    QTest::newRow("markup") << QStringLiteral("<b>x<b>");
    QTest::newRow("placeholder") << QStringLiteral("%1");
    QTest::newRow("newline") << QStringLiteral("a\nb");
}

void TestMDriveBar::awkwardPaths()
{
    QFETCH(QString, relative);
    const TestDir dir;
    dir.file(QStringLiteral("file"));
    dir.file(QStringLiteral("good/in it"));
    dir.link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    dir.link(QStringLiteral("link"), QStringLiteral("good"));
    for (const char* name : {"<b>x<b>", "%1", "a\nb"}) {
        dir.folder(QLatin1String(name));
    }
    gstDrives = {LSDRIVE{dir.path(relative), QStringLiteral("Bad")},
        LSDRIVE{dir.path(QStringLiteral("good")), QStringLiteral("Good")}};
    const PanelWindow window{QString()};
    MPanel* panel = window.panel;
    for (int round = 0; round < 2; ++round) {
        panel->driveBar->buttonPressed(0);
        QCOMPARE(panel->rootPath, dir.path(relative));
        QCOMPARE(panel->currentPath, dir.path(relative));
        QVERIFY(readAnotherFolder());
        panel->driveBar->buttonPressed(1);
        QVERIFY(waitForList(panel));
        QCOMPARE(listNames(panel), (QStringList{"..", "in it"}));
    }
}

void TestMDriveBar::buttonsStay()
{
    const TestDir dir;
    setDrives({"One", "Two"}, dir);
    const PanelWindow window{QString()};
    const QList<QPushButton*> before = window.panel->driveBar->buttons;
    gstDrives.append(gstDrives);
    window.panel->driveBar->buttonPressed(1);
    QCOMPARE(window.panel->driveBar->buttons, before);
}

VANTREL_TEST_MAIN(TestMDriveBar)
#include "tst_MDriveBar.moc"
