#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "app/aVantrel.h"
#include "commands/DialogNewDir.h"
#include "commands/Rename.h"
#include "fileops/MCopy.h"
#include "info/Checksum.h"
#include "info/DialogFileSize.h"
#include "info/MProperties.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/SeenTexts.h"
#include "tests/support/Settings.h"
#include "tests/support/SetupHome.h"
#include "tests/support/TestMain.h"
#include "tests/support/TwoPanels.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QSet>
#include <QStyle>
#include <QToolTip>

#include <memory>

/// What the examples' styles make of the windows, by what is painted: on a light and on a dark desktop every
/// text can be read, and it is seen what has the keyboard.
class TestExampleLooks : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void mainWindow_data() { looks(); }
    void mainWindow();
    void menus_data() { looks(); }
    void menus();
    void contextMenu_data() { looks(); }
    void contextMenu();
    void contextMenuFitsTheScreen_data() { looks(); }
    void contextMenuFitsTheScreen();
    void toolTip_data() { looks(); }
    void toolTip();
    void dialogs_data() { dialogsAndLooks(); }
    void dialogs();
    void progress_data() { looks(); }
    void progress();
    void focusInDialogs_data() { dialogsAndLooks(); }
    void focusInDialogs();

private:
    static void looks();
    static void dialogsAndLooks();
    std::unique_ptr<QDialog> dialog(const QString& name) const;

    std::unique_ptr<TestDir> dir;
};

namespace {

const QStringList dialogNames = {"copy", "new folder", "rename", "properties", "disk usage", "checksums",
    "question", "operation's question"};

QPalette darkDesktop()
{
    QPalette palette(QColor(0x35, 0x35, 0x35), QColor(0x2a, 0x2a, 0x2a));
    palette.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
    return palette;
}

/// The texts of a widget that cannot be read, each with its colours; or that it has fewer than it should.
QStringList faults(QWidget* widget, int least)
{
    QStringList found;
    const QVector<SeenText> texts = seenTexts(widget);
    for (const SeenText& text : texts) {
        if (!text.canBeRead()) {
            found.append(QStringLiteral("%1: %2 on %3, %4")
                             .arg(text.text, text.ink.name(), text.ground.name())
                             .arg(contrast(text.ink, text.ground), 0, 'f', 2));
        }
    }
    if (texts.size() < least) {
        found.append(QStringLiteral("%1 texts only").arg(texts.size()));
    }
    return found;
}

/// How two pictures of one place differ: pixels, and the greatest contrast between two at the same place.
struct Difference
{
    Difference(const QImage& one, const QImage& other)
    {
        for (int y = 0; y < one.height(); ++y) {
            for (int x = 0; x < one.width(); ++x) {
                if (one.pixel(x, y) != other.pixel(x, y)) {
                    ++pixels;
                    greatest = qMax(greatest, contrast(one.pixelColor(x, y), other.pixelColor(x, y)));
                }
            }
        }
    }

    int pixels = 0;
    double greatest = 1;
};

/// Least contrast that a mark needs, such as the frame around what has the keyboard.
constexpr double leastForMark = 3.0;

/// Width of the edge of a widget that the frame is looked for in.
constexpr int edgePixels = 3;

/// What is seen of one edge of a widget, the bottom one.
QImage edgeOf(QWidget* widget)
{
    const QRect edge(0, widget->height() - edgePixels, widget->width(), edgePixels);
    return widget->window()->grab(edge.translated(widget->mapTo(widget->window(), QPoint()))).toImage();
}

} // namespace

void TestExampleLooks::looks()
{
    QTest::addColumn<QString>("example");
    QTest::addColumn<bool>("dark");
    for (const char* example : {"Vantrel.starter", "Vantrel.dark"}) {
        QTest::addRow("%s, light desktop", example) << QString::fromLatin1(example) << false;
        QTest::addRow("%s, dark desktop", example) << QString::fromLatin1(example) << true;
    }
}

void TestExampleLooks::dialogsAndLooks()
{
    QTest::addColumn<QString>("example");
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QString>("name");
    for (const char* example : {"Vantrel.starter", "Vantrel.dark"}) {
        for (const bool dark : {false, true}) {
            for (const QString& name : dialogNames) {
                QTest::addRow("%s, %s, %s desktop", qPrintable(name), example, dark ? "dark" : "light")
                    << QString::fromLatin1(example) << dark << name;
            }
        }
    }
}

void TestExampleLooks::init()
{
    QFETCH(QString, example);
    QFETCH(bool, dark);
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(dark ? darkDesktop() : QApplication::style()->standardPalette());
    gsAppStyleSheet.clear();
    ReadConfig(QFINDTESTDATA(QStringLiteral("../../examples/") + example));
    qApp->setStyleSheet(gsAppStyleSheet);
    dir = std::make_unique<TestDir>();
    dir->file(QStringLiteral("f"), "123");
}

void TestExampleLooks::cleanup()
{
    qApp->setStyleSheet(QString());
    dir.reset();
}

// One listing is in use and the other not; both have a row selected, and so has the tree of each.
void TestExampleLooks::mainWindow()
{
    TwoPanels panels;
    panels.window->showNormal();
    panels.window->resize(1600, 500);
    QVERIFY(panels.ready());
    panels.panel->list->selectRow(1);
    panels.other->list->selectRow(0);
    QCOMPARE(faults(panels.window.get(), 50), QStringList());
}

void TestExampleLooks::menus()
{
    const TwoPanels panels;
    auto* bar = panels.window->findChild<QMenuBar*>();
    bar->setActiveAction(bar->actions().at(1));
    QMenu* menu = bar->actions().at(1)->menu();
    QVERIFY(menu->isVisible());
    QCOMPARE(faults(bar, 3), QStringList());
    menu->setActiveAction(menu->actions().at(1));
    QCOMPARE(faults(menu, 3), QStringList());
    menu->close();
}

void TestExampleLooks::contextMenu()
{
    QMenu menu;
    menu.setObjectName(QStringLiteral("Popup"));
    menu.addAction(QStringLiteral("One"));
    menu.addAction(QStringLiteral("Two"));
    menu.popup(QPoint(10, 10));
    QCOMPARE(faults(&menu, 2), QStringList());
    const QImage before = menu.grab().toImage();
    menu.setActiveAction(menu.actions().at(0));
    QCOMPARE(faults(&menu, 2), QStringList());
    QVERIFY(Difference(before, menu.grab().toImage()).greatest >= leastForMark);
}

/// The context menu of an archive, with the settings that vantrel-setup makes where few programs are, on a
/// small screen.
void TestExampleLooks::contextMenuFitsTheScreen()
{
    QFETCH(QString, example);
    SetupHome home;
    home.open();
    home.onlyTools();
    for (const char* usual : {"bsdtar", "file", "gio", "less", "sensible-editor", "x-terminal-emulator",
             "xdg-open", "xz", "zip"}) {
        home.tool(QLatin1String(usual));
    }
    const SetupRun made = home.run({example == QLatin1String("Vantrel.dark") ? "--dark" : "--light"});
    QVERIFY2(made.status == 0, qPrintable(made.errors));
    resetSettings();
    home.readSettings();
    qApp->setStyleSheet(gsAppStyleSheet);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(12);
    int entries = 0;
    int height = 0;
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) {
        menu->setFont(font);
        const QList<QAction*> actions = menu->actions();
        entries = actions.size();
        // What does not fit begins a second column, so the menu itself is never too high.
        height = 2 * menu->actionGeometry(actions.constFirst()).y();
        for (QAction* action : actions) {
            height += menu->actionGeometry(action).height();
        }
        menu->close();
    });
    PanelWindow window(dir->path());
    window.panel->ShowContextMenu(dir->file(QStringLiteral("a.tar.gz")), 0, QPoint());
    QVERIFY2(entries > 30, qPrintable(QString::number(entries)));
    QVERIFY2(height <= 768, qPrintable(QString::number(height)));
}

void TestExampleLooks::toolTip()
{
    QToolTip::showText(QPoint(50, 50), QStringLiteral("A tip"));
    int tips = 0;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->isVisible() && window->inherits("QTipLabel")) {
            ++tips;
            QCOMPARE(faults(window, 1), QStringList());
        }
    }
    QCOMPARE(tips, 1);
    QToolTip::hideText();
}

std::unique_ptr<QDialog> TestExampleLooks::dialog(const QString& name) const
{
    const QString file = dir->path(QStringLiteral("f"));
    switch (dialogNames.indexOf(name)) {
    case 0:
        return std::make_unique<MCopy>(nullptr);
    case 1:
        return std::make_unique<DialogNewDir>(nullptr, dir->path());
    case 2:
        return std::make_unique<Rename>(nullptr, file);
    case 3:
        return std::make_unique<MProperties>(nullptr, file);
    case 4:
        return std::make_unique<DialogFileSize>(nullptr, file);
    case 5:
        return std::make_unique<Checksum>(nullptr, file);
    case 6:
        return std::make_unique<QMessageBox>(
            QMessageBox::Question, gsProduct, QStringLiteral("Delete?"), QMessageBox::Yes | QMessageBox::No);
    default:
        return std::make_unique<QMessageBox>(QMessageBox::Warning, gsProduct, QStringLiteral("Replace?"),
            QMessageBox::Help | QMessageBox::Reset | QMessageBox::Apply | QMessageBox::Discard);
    }
}

// With all that a field holds selected, and what a cancelled count says.
void TestExampleLooks::dialogs()
{
    QFETCH(QString, name);
    const std::unique_ptr<QDialog> shown = dialog(name);
    shown->show();
    QVERIFY(QTest::qWaitForWindowActive(shown.get()));
    if (auto* status = qobject_cast<DialogFileSize*>(shown.get())) {
        status->findChild<QLabel*>(QStringLiteral("label"))->setText(QStringLiteral("Cancelled..."));
    }
    if (auto* checksum = qobject_cast<Checksum*>(shown.get())) {
        QTRY_COMPARE(checksum->running, 0);
        QTRY_COMPARE(checksum->findChild<QProgressBar*>()->value(), 100);
    }
    const QList<QLineEdit*> fields = shown->findChildren<QLineEdit*>();
    for (QLineEdit* field : fields) {
        field->setText(QStringLiteral("something"));
    }
    QCOMPARE(faults(shown.get(), 3), QStringList());
    for (QLineEdit* field : fields) {
        field->setFocus();
        field->selectAll();
        QCOMPARE(faults(field, 1), QStringList());
    }
}

// The text of the bar stands on both its grounds.
void TestExampleLooks::progress()
{
    QProgressBar bar;
    bar.resize(300, 24);
    for (const int value : {0, 50, 100}) {
        bar.setValue(value);
        QCOMPARE(faults(&bar, 1), QStringList());
    }
}

void TestExampleLooks::focusInDialogs()
{
    QFETCH(QString, name);
    const std::unique_ptr<QDialog> shown = dialog(name);
    shown->show();
    QVERIFY(QTest::qWaitForWindowActive(shown.get()));
    QSet<QWidget*> seen;
    QTest::keyClick(shown.get(), Qt::Key_Tab);
    for (QWidget* focus = QApplication::focusWidget(); !seen.contains(focus);
         focus = QApplication::focusWidget()) {
        QVERIFY(focus != nullptr && shown->isAncestorOf(focus));
        seen.insert(focus);
        const QImage with = edgeOf(focus);
        focus->clearFocus();
        const Difference frame(with, edgeOf(focus));
        focus->setFocus(Qt::TabFocusReason);
        QVERIFY2(frame.pixels >= focus->width() / 2 && frame.greatest >= leastForMark,
            qPrintable(QStringLiteral("%1 %2: %3 pixels, %4")
                           .arg(QLatin1String(focus->metaObject()->className()), focus->objectName())
                           .arg(frame.pixels)
                           .arg(frame.greatest)));
        QTest::keyClick(shown.get(), Qt::Key_Tab);
    }
    QVERIFY(!seen.isEmpty());
}

VANTREL_TEST_MAIN(TestExampleLooks)
#include "tst_ExampleLooks.moc"
