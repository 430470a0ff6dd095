#include "panel/MNavBar.h"

#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QImage>
#include <QPointer>
#include <QPushButton>
#include <QSignalMapper>
#include <QSignalSpy>
#include <QWindow>

#include <memory>

namespace {

/// Counts how often its slot runs; the bar's connections find the slot by its name.
class CountingBar : public MNavBar
{
    Q_OBJECT

public:
    using MNavBar::MNavBar;
    int calls = 0;

public slots:
    void buttonPressed(int index)
    {
        ++calls;
        MNavBar::buttonPressed(index);
    }
};

/// Counts the models that a panel makes.
class NewModels : public QObject
{
public:
    explicit NewModels(MPanel* panel) { panel->installEventFilter(this); }
    int count = 0;

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        // All else that a panel owns stays; what is being made is of no class yet.
        count += event->type() == QEvent::ChildAdded ? 1 : 0;
        return false;
    }
};

QStringList textsOf(const MNavBar* bar)
{
    QStringList texts;
    for (const QPushButton* button : bar->buttons) {
        texts.append(button->text());
    }
    return texts;
}

float digitWidth(const QFont& font)
{
    return static_cast<float>(QFontMetrics(font).horizontalAdvance(QStringLiteral("01234567890123456789")))
        / 20.0F;
}

} // namespace

class TestMNavBar : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void construction();
    void buttonTexts_data();
    void buttonTexts();
    void buttonLook();
    void places_data();
    void places();
    void longPathRunsOffTheEdge();
    void buttonsAreReplaced();
    void pressOpensFolder();
    void reactsOnPress();
    void belowTheRootOnly_data();
    void belowTheRootOnly();
    void firstButtonIsInert();
    void indexes_data();
    void indexes();
    void onePressRunsTheSlotForEachRebuild();
    void manyRebuildsAskForTheFolderOnce();
    void onePressLoadsOnce();
    void pressesAfterAPress();
    void keyboardPress();
    void styleSheetReachesBarAndButtons();
    void styleSheetPaintsTheBar();

private:
    void click(const QPushButton* button);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    MNavBar* bar = nullptr;
};

void TestMNavBar::init()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("docs/deeper"));
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    bar = panel->navBar;
}

void TestMNavBar::cleanup()
{
    window.reset();
    dir.reset();
}

/// Clicks through the window: the button is gone before the release.
void TestMNavBar::click(const QPushButton* button)
{
    const QPoint place = button->mapTo(&window->window, button->rect().center());
    QTest::mouseClick(window->window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
}

void TestMNavBar::construction()
{
    MNavBar fresh(panel);
    QVERIFY(fresh.buttons.isEmpty());
    QVERIFY(fresh.findChildren<QPushButton*>().isEmpty()); // the sample is gone
    QCOMPARE(fresh.panel, panel);
    QCOMPARE(fresh.mapper->parent(), &fresh);
    QCOMPARE(fresh.metaObject()->superClass()->className(), "QWidget");
    QPushButton like(&fresh);
    like.setObjectName(QStringLiteral("NavBar"));
    like.ensurePolished();
    QCOMPARE(fresh.charWidth, digitWidth(like.font()));
    QVERIFY(fresh.charWidth > 1.0F);
    QVERIFY(!fresh.accessibleName().isEmpty());
}

void TestMNavBar::buttonTexts_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("root") << QStringLiteral("/") << QStringList{"/"};
    QTest::newRow("one") << QStringLiteral("/home") << QStringList{"/", "home/"};
    QTest::newRow("two") << QStringLiteral("/home/user") << QStringList{"/", "home/", "user/"};
    QTest::newRow("slash at the end") << QStringLiteral("/home/user/") << QStringList{"/", "home/", "user/"};
    QTest::newRow("empty") << QString() << QStringList{"/"};
    QTest::newRow("blanks") << QStringLiteral("/a b/ c ") << QStringList{"/", "a b/", " c /"};
    QTest::newRow("placeholder") << QStringLiteral("/%1/%2") << QStringList{"/", "%1/", "%2/"};
    QTest::newRow("markup") << QStringLiteral("/<b>x<b>") << QStringList{"/", "<b>x<b>/"};
    QTest::newRow("newline") << QStringLiteral("/a\nb") << QStringList{"/", "a\nb/"};
    QTest::newRow("dots") << QStringLiteral("/.hidden/..x") << QStringList{"/", ".hidden/", "..x/"};
    QTest::newRow("long") << (QLatin1Char('/') + QString(255, QLatin1Char('l')))
                          << QStringList{"/", QString(255, QLatin1Char('l')) + QLatin1Char('/')};
}

void TestMNavBar::buttonTexts()
{
    QFETCH(QString, path);
    QFETCH(QStringList, texts);
    bar->SetNavBar(path);
    QCOMPARE(textsOf(bar), texts);
    QCOMPARE(bar->buttonCount, texts.size());
    QCOMPARE(bar->findChildren<QPushButton*>().size(), texts.size());
}

void TestMNavBar::buttonLook()
{
    bar->SetNavBar(QStringLiteral("/home/user"));
    for (const QPushButton* button : qAsConst(bar->buttons)) {
        QVERIFY(button->isFlat());
        QVERIFY(button->autoFillBackground());
        QVERIFY(button->isVisible());
        QCOMPARE(button->objectName(), QStringLiteral("NavBar"));
        QCOMPARE(button->parentWidget(), bar);
    }
}

void TestMNavBar::places_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("root") << QStringLiteral("/");
    QTest::newRow("three") << QStringLiteral("/home/user/documents");
    QTest::newRow("wide and narrow letters") << QStringLiteral("/WWWWWWWW/iiiiiiii");
    QTest::newRow("30 characters") << QStringLiteral("/123456789012345678901234567890");
    QTest::newRow("one letter each") << QStringLiteral("/a/b/c/d/e/f");
}

void TestMNavBar::places()
{
    QFETCH(QString, path);
    bar->SetNavBar(path);
    int x = 10;
    for (const QPushButton* button : qAsConst(bar->buttons)) {
        const int w = static_cast<int>(static_cast<float>(button->text().length()) * bar->charWidth + 2.0F);
        QCOMPARE(button->geometry(), QRect(x, 0, w + 2, bar->height() - 2));
        x += w;
    }
    QCOMPARE(bar->nextX, x);
    QCOMPARE(bar->height(), 24);
    for (int i = 1; i < bar->buttons.size(); ++i) {
        const QRect overlap = bar->buttons.at(i - 1)->geometry() & bar->buttons.at(i)->geometry();
        QCOMPARE(overlap.width(), 2);
    }
}

void TestMNavBar::longPathRunsOffTheEdge()
{
    bar->SetNavBar(QStringLiteral("/first/") + QString(200, QLatin1Char('x')) + QStringLiteral("/last"));
    QVERIFY(bar->buttons.constLast()->x() > bar->width());
    QCOMPARE(bar->buttons.constLast()->text(), QStringLiteral("last/"));
}

void TestMNavBar::buttonsAreReplaced()
{
    const QPointer<QPushButton> before = bar->buttons.constFirst();
    bar->SetNavBar(QStringLiteral("/"));
    QVERIFY(before.isNull());
    QCOMPARE(bar->buttons.size(), 1);
    for (int i = 0; i < 20; ++i) {
        bar->SetNavBar(QStringLiteral("/a/b/c"));
    }
    QCOMPARE(bar->findChildren<QPushButton*>().size(), 4);
}

void TestMNavBar::pressOpensFolder()
{
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("docs/deeper"))));
    QCOMPARE(textsOf(bar).constLast(), QStringLiteral("deeper/"));
    click(bar->buttons.at(bar->buttons.size() - 2));
    QVERIFY(waitForList(panel));
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("docs")));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("docs")));
    QCOMPARE(textsOf(bar).constLast(), QStringLiteral("docs/"));
    QCOMPARE(listNames(panel), (QStringList{"..", "deeper"}));
}

void TestMNavBar::reactsOnPress()
{
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("docs"))));
    const QPointer<QPushButton> button = bar->buttons.at(bar->buttons.size() - 2);
    QTest::mousePress(button, Qt::LeftButton);
    QCOMPARE(panel->listModel->rootPath(), dir->path());
    if (!button.isNull()) {
        QTest::mouseRelease(button, Qt::LeftButton);
    }
    QTRY_VERIFY(button.isNull());
    QCOMPARE(bar->findChildren<QPushButton*>().size(), bar->buttons.size());
}

void TestMNavBar::belowTheRootOnly_data()
{
    QTest::addColumn<int>("fromEnd");
    QTest::addColumn<QString>("expected");
    QTest::newRow("current folder") << 1 << QStringLiteral("docs/deeper");
    QTest::newRow("folder between") << 2 << QStringLiteral("docs");
    QTest::newRow("root of the tree") << 3 << QString();
    QTest::newRow("above the root") << 4 << QStringLiteral("docs/deeper");
}

void TestMNavBar::belowTheRootOnly()
{
    QFETCH(int, fromEnd);
    QFETCH(QString, expected);
    panel->treeRowChanged(dir->path(QStringLiteral("docs/deeper")));
    bar->buttonPressed(bar->buttons.size() - fromEnd);
    QCOMPARE(panel->listModel->rootPath(), dir->path(expected));
}

void TestMNavBar::firstButtonIsInert()
{
    panel->setTreeRoot(QStringLiteral("/"));
    panel->treeRowChanged(dir->path());
    bar->buttonPressed(0);
    QCOMPARE(panel->listModel->rootPath(), dir->path());
    bar->buttonPressed(1);
    QCOMPARE(panel->listModel->rootPath(), dir->path().section('/', 0, 1));
}

void TestMNavBar::indexes_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("negative") << -1;
    QTest::newRow("very negative") << -1000;
    QTest::newRow("first") << 0;
}

void TestMNavBar::indexes()
{
    QFETCH(int, index);
    panel->treeRowChanged(dir->path(QStringLiteral("docs")));
    bar->buttonPressed(index);
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("docs")));
}

void TestMNavBar::onePressRunsTheSlotForEachRebuild()
{
    CountingBar counting(panel);
    counting.setGeometry(0, 0, 500, 24);
    for (int n = 1; n <= 5; ++n) {
        counting.SetNavBar(dir->path(QStringLiteral("docs")));
        counting.calls = 0;
        emit counting.buttons.constLast()->pressed();
        QCOMPARE(counting.calls, n);
        QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("docs")));
        QCoreApplication::processEvents();
    }
    counting.calls = 0;
    emit counting.buttons.constFirst()->pressed(); // inert, and asked as often
    QCOMPARE(counting.calls, 5);
}

// The repeated calls ask for a folder that is open already, which must not make the panel build it each time.
void TestMNavBar::manyRebuildsAskForTheFolderOnce()
{
    for (int i = 0; i < 300; ++i) {
        bar->SetNavBar(dir->path(QStringLiteral("docs/deeper")));
    }
    QSignalSpy replaced(panel->listModel, &QObject::destroyed);
    const NewModels made(panel);
    QTest::mousePress(bar->buttons.at(bar->buttons.size() - 2), Qt::LeftButton);
    QCOMPARE(replaced.size(), 1);
    QCOMPARE(made.count, 1);
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("docs")));
    QSignalSpy replacedAgain(panel->listModel, &QObject::destroyed);
    QCoreApplication::processEvents();
    QVERIFY(replacedAgain.isEmpty());
}

// As the bar is used: each folder that was opened has made it once.
void TestMNavBar::onePressLoadsOnce()
{
    for (int i = 0; i < 3; ++i) {
        QVERIFY(openFolder(panel, dir->path(QStringLiteral("docs"))));
        QVERIFY(openFolder(panel, dir->path(QStringLiteral("docs/deeper"))));
    }
    const NewModels made(panel);
    click(bar->buttons.at(bar->buttons.size() - 2));
    QVERIFY(waitForList(panel));
    QCOMPARE(made.count, 1);
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("docs")));
}

void TestMNavBar::pressesAfterAPress()
{
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("docs/deeper"))));
    for (int i = 0; i < 3; ++i) {
        click(bar->buttons.at(bar->buttons.size() - (i == 2 ? 1 : 2)));
        QVERIFY(waitForList(panel));
    }
    QCOMPARE(panel->listModel->rootPath(), dir->path());
    QCOMPARE(textsOf(bar).constLast(), dir->path().section('/', -1) + QLatin1Char('/'));
}

void TestMNavBar::keyboardPress()
{
    QVERIFY(window->activate());
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("docs/deeper"))));
    QPushButton* button = bar->buttons.at(bar->buttons.size() - 2);
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);
    QVERIFY(waitForList(panel));
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("docs")));
}

void TestMNavBar::styleSheetReachesBarAndButtons()
{
    qApp->setStyleSheet(QStringLiteral("QPushButton#NavBar { font-size: 30px }"));
    const MNavBar big(panel);
    qApp->setStyleSheet(QString());
    const MNavBar normal(panel);
    QVERIFY2(big.charWidth > normal.charWidth, "the button's own font is measured");
}

/// Also where no button is.
void TestMNavBar::styleSheetPaintsTheBar()
{
    const auto rightEdge = [this] {
        const QImage picture = window->window.grab().toImage();
        return picture.pixelColor(bar->mapTo(&window->window, QPoint(bar->width() - 2, bar->height() / 2)));
    };
    const QColor plain = rightEdge();
    qApp->setStyleSheet(QStringLiteral("MNavBar { background: #12ab34 }"));
    const QColor styled = rightEdge();
    qApp->setStyleSheet(QString());
    QCOMPARE(styled, QColor(0x12, 0xab, 0x34));
    QCOMPARE(rightEdge(), plain);
}

VANTREL_TEST_MAIN(TestMNavBar)
#include "tst_MNavBar.moc"
