// The program's entry point itself, under a name of its own, so that each test can run it as a whole.
#define main vantrelMain
#include "app/main.cpp"
#undef main

#include "panel/MPanel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/Settings.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QAction>
#include <QElapsedTimer>
#include <QPixmap>
#include <QPointer>
#include <QWindow>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
/// The application objects are gone before lost memory is looked for: what the platform loses with each is
/// not ours.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen.so\nleak:QScreen::QScreen\nleak:QPlatformScreen::QPlatformScreen\n"
           "leak:QWindowSystemInterface::handleScreenAdded\nleak:QObject::QObject\n"
           "leak:QtSharedPointer::ExternalRefCountData::getAndRef\n";
}
#endif

namespace {

const QString settings = QStringLiteral(".Vantrel");

} // namespace

Q_COREAPP_STARTUP_FUNCTION(atStart)

class TestMainFunction : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void closedDescriptorsAreFilled_data();
    void closedDescriptorsAreFilled();
    void runsUntilTheWindowIsClosed();
    void returnsTheExitCode();
    void signalsEndItInGoodOrder_data();
    void signalsEndItInGoodOrder();
    void signalWhileTheSettingsBoxStands();
    void endOfTheSession();
    void inheritedDescriptorsAreKept();
    void missingSettingsAreToldBeforeTheWindow();
    void sharpScreens();
    void timeZone_data();
    void timeZone();
    void startVariables_data();
    void startVariables();
    void waylandIsNamedToQtAlone_data();
    void waylandIsNamedToQtAlone();
    void styleSheet();
    void brokenStyleSheet();
    void icon_data();
    void icon();
    void arrangement_data();
    void arrangement();
    void titleIsTheProductAlone();
    void argumentsAreNotRead();
    void writesNothing();
    void hugeSettings_data();
    void hugeSettings();
};

void TestMainFunction::init()
{
    whileMade = nullptr;
    inLoop = nullptr;
    resetSettings();
}

// The first of the tests: no thread of a run before it may open something in the meantime.
void TestMainFunction::closedDescriptorsAreFilled_data()
{
    QTest::addColumn<QVector<int>>("closed");
    QTest::newRow("error") << QVector<int>{STDERR_FILENO};
    QTest::newRow("input and error") << QVector<int>{STDIN_FILENO, STDERR_FILENO};
    QTest::newRow("all") << QVector<int>{STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
}

void TestMainFunction::closedDescriptorsAreFilled()
{
    QFETCH(QVector<int>, closed);
    const TestDir home;
    home.file(settings);
    QVector<int> saved;
    for (const int descriptor : closed) {
        saved.append(::fcntl(descriptor, F_DUPFD_CLOEXEC, 10));
    }
    for (const int descriptor : closed) {
        ::close(descriptor);
    }
    QStringList files;
    QVector<int> flags;
    const int code = run(home, [&] {
        for (const int descriptor : closed) {
            files.append(QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(descriptor)));
            flags.append(::fcntl(descriptor, F_GETFD));
        }
    });
    for (int i = 0; i < closed.size(); ++i) {
        ::dup2(saved.at(i), closed.at(i));
        ::close(saved.at(i));
    }
    QCOMPARE(code, 0);
    for (int i = 0; i < closed.size(); ++i) {
        QCOMPARE(files.at(i), QStringLiteral("/dev/null"));
        QCOMPARE(flags.at(i), 0); // launched programs get it
    }
}

void TestMainFunction::runsUntilTheWindowIsClosed()
{
    const TestDir home;
    home.file(settings);
    bool visible = false;
    QCOMPARE(run(home, [&] { visible = gwMainframe->isVisible() && gwMainframe->isMaximized(); }), 0);
    QVERIFY(visible);
}

void TestMainFunction::returnsTheExitCode()
{
    const TestDir home;
    home.file(settings);
    QCOMPARE(run(home, [] { QCoreApplication::exit(7); }), 7);
}

void TestMainFunction::signalsEndItInGoodOrder_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void TestMainFunction::signalsEndItInGoodOrder()
{
    QFETCH(int, signal);
    const TestDir home;
    home.file(settings);
    bool wasShown = false;
    QPointer<aVantrel> window;
    inLoop = [&] {
        window = gwMainframe;
        wasShown = window->isVisible();
        ::kill(::getpid(), signal);
    };
    QCOMPARE(start(home), 0);
    QVERIFY(wasShown);
    QVERIFY(window.isNull());
}

void TestMainFunction::signalWhileTheSettingsBoxStands()
{
    const TestDir home;
    bool boxStood = false;
    inLoop = [&] {
        boxStood = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr;
        ::kill(::getpid(), SIGTERM);
    };
    QCOMPARE(start(home), 0);
    QVERIFY(boxStood);
    QVERIFY(gwMainframe == nullptr);
}

void TestMainFunction::endOfTheSession()
{
    // No window is asked to close, which an operation or its question would refuse.
    const TestDir home;
    home.file(settings);
    bool asksWindows = true;
    QCOMPARE(run(home,
                 [&] {
                     asksWindows = QGuiApplication::isFallbackSessionManagementEnabled();
                     QEvent quit(QEvent::Quit);
                     QCoreApplication::sendEvent(qApp, &quit);
                 }),
        0);
    QVERIFY(!asksWindows);
}

void TestMainFunction::inheritedDescriptorsAreKept()
{
    const TestDir home;
    home.file(settings);
    const int inherited = ::dup(STDERR_FILENO); // NOLINT(android-cloexec-dup): as if inherited
    int flags = 0;
    QCOMPARE(run(home, [&] { flags = ::fcntl(inherited, F_GETFD); }), 0);
    ::close(inherited);
    QCOMPARE(flags, FD_CLOEXEC);
}

void TestMainFunction::missingSettingsAreToldBeforeTheWindow()
{
    const TestDir home;
    bool noWindowYet = false;
    bool visible = false;
    bool halves = false;
    QVector<BoxAnswers::Box> seen;
    std::unique_ptr<BoxAnswers> boxes;
    whileMade = [&] {
        boxes = std::make_unique<BoxAnswers>();
        boxes->meanwhile([&] { noWindowYet = gwMainframe == nullptr; }).click(QStringLiteral("OK"));
    };
    const auto look = [&] {
        visible = gwMainframe->isVisible();
        halves = gwPanel2->x() == gwMainframe->width() / 2 && gwPanel2->width() == gwPanel1->width();
        seen = boxes->seen();
        boxes.reset();
    };
    QCOMPARE(run(home, look), 0);
    QCOMPARE(seen.size(), 1);
    QCOMPARE(seen.first().title, QStringLiteral("Error"));
    QCOMPARE(seen.first().text, QStringLiteral("Failed to open .Vantrel"));
    QVERIFY(noWindowYet);
    QVERIFY(visible);
    QVERIFY(halves);
}

void TestMainFunction::sharpScreens()
{
    const TestDir home;
    home.file(settings);
    bool before = false;
    whileMade = [&] {
        before = QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling)
            && QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps);
    };
    QCOMPARE(run(home, [] {}), 0);
    QVERIFY(before);
}

void TestMainFunction::timeZone_data()
{
    QTest::addColumn<QByteArray>("given"); // null: not set
    QTest::addColumn<QByteArray>("used");
    QTest::newRow("not set") << QByteArray() << QByteArray(":/etc/localtime");
    QTest::newRow("the user's") << QByteArray("Europe/Zurich") << QByteArray("Europe/Zurich");
    QTest::newRow("the user's empty one") << QByteArray("") << QByteArray("");
}

void TestMainFunction::timeZone()
{
    QFETCH(QByteArray, given);
    const TestDir home;
    home.file(settings);
    if (given.isNull()) {
        qunsetenv("TZ");
    } else {
        qputenv("TZ", given);
    }
    QByteArray before;
    QByteArray inside;
    whileMade = [&] { before = qgetenv("TZ"); };
    const int code = run(home, [&] { inside = qgetenv("TZ"); });
    qputenv("TZ", "UTC");
    QCOMPARE(code, 0);
    QTEST(before, "used");
    QTEST(inside, "used");
}

void TestMainFunction::startVariables_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("given"); // null: not set
    QTest::addColumn<QByteArray>("used");
    const QByteArray gl = "QT_XCB_GL_INTEGRATION";
    QTest::newRow("OpenGL, not set") << gl << QByteArray() << QByteArray("none");
    QTest::newRow("OpenGL, the user's") << gl << QByteArray("xcb_egl") << QByteArray("xcb_egl");
    const QByteArray letters = "QT_DPI_ADJUSTMENT_POLICY";
    QTest::newRow("letters, not set") << letters << QByteArray() << QByteArray("AdjustDpi");
    QTest::newRow("letters, the user's")
        << letters << QByteArray("AdjustUpOnly") << QByteArray("AdjustUpOnly");
}

void TestMainFunction::startVariables()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, given);
    const TestDir home;
    home.file(settings);
    const char* const variable = name.constData();
    qunsetenv(variable);
    if (!given.isNull()) {
        qputenv(variable, given);
    }
    QByteArray before;
    QByteArray inside;
    std::unique_ptr<AtFirstWindow> firstWindow;
    whileMade = [&] {
        before = qgetenv(variable);
        firstWindow = std::make_unique<AtFirstWindow>(variable);
    };
    const int code = run(home, [&] { inside = qgetenv(variable); });
    qunsetenv(variable);
    QCOMPARE(code, 0);
    QTEST(before, "used");
    QTEST(firstWindow->value, "used");
    QCOMPARE(inside, given);
}

void TestMainFunction::waylandIsNamedToQtAlone_data()
{
    QTest::addColumn<QByteArray>("given"); // null: not set
    QTest::addColumn<QByteArray>("used");
    QTest::newRow("not set") << QByteArray() << QByteArray("wayland;xcb");
    QTest::newRow("the user's") << QByteArray("minimal") << QByteArray("minimal");
}

// The programs that the user starts have the variable as the user has it.
void TestMainFunction::waylandIsNamedToQtAlone()
{
    QFETCH(QByteArray, given);
    const char* const platform = "QT_QPA_PLATFORM";
    const TestDir home;
    home.file(settings);
    const QString noter = home.file(QStringLiteral("noter"),
        "#!/bin/sh\necho \"${QT_QPA_PLATFORM-not set}\" >noted~ && mv noted~ noted\n", 0755);
    const QByteArray testedOn = qgetenv(platform);
    qunsetenv("DISPLAY");
    qputenv("WAYLAND_DISPLAY", "none");
    qunsetenv(platform);
    if (!given.isNull()) {
        qputenv(platform, given);
    }
    QByteArray before;
    whileMade = [&] { before = qgetenv(platform); };
    const auto startNoter = [&] {
        gwPanel1->Launcher(noter, QString(), QString(), home.path());
        QVERIFY(QTest::qWaitFor([&home] { return home.exists(QStringLiteral("noted")); }, 20000));
    };
    // The option stands above the variable: there is no compositor here.
    const int code = run(home, startNoter, {"-platform", testedOn});
    qunsetenv("WAYLAND_DISPLAY");
    qputenv(platform, testedOn);
    QCOMPARE(code, 0);
    QTEST(before, "used");
    QCOMPARE(home.read(QStringLiteral("noted")), given.isNull() ? QByteArray("not set\n") : given + '\n');
}

void TestMainFunction::styleSheet()
{
    const TestDir home;
    home.file(settings, "style=QMenuBar { color: #010203; }\nstyle=QLabel { color: red; }\n");
    QString sheet;
    QColor color;
    QCOMPARE(run(home,
                 [&] {
                     sheet = qApp->styleSheet();
                     color = gwMainframe->menuWidget()->palette().color(QPalette::WindowText);
                 }),
        0);
    QCOMPARE(sheet, QStringLiteral("QMenuBar { color: #010203; } QLabel { color: red; } "));
    QCOMPARE(color, QColor(1, 2, 3));
}

void TestMainFunction::brokenStyleSheet()
{
    const TestDir home;
    home.file(settings, "style=QLabel { { ; } ]]\nwindow=1\n");
    bool visible = false;
    QTest::ignoreMessage(QtWarningMsg, "Could not parse application stylesheet");
    QCOMPARE(run(home, [&] { visible = gwMainframe->isVisible(); }), 0);
    QVERIFY(visible);
    QCOMPARE(giWindowArrange, 1);
}

void TestMainFunction::icon_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("shown");
    QTest::newRow("picture") << QStringLiteral("icon.png") << true;
    QTest::newRow("missing") << QStringLiteral("missing.png") << false;
    QTest::newRow("not a picture") << settings << false;
    QTest::newRow("folder") << QStringLiteral(".") << false;
    QTest::newRow("pipe") << QStringLiteral("pipe.png") << false;
}

void TestMainFunction::icon()
{
    QFETCH(QString, name);
    const TestDir home;
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(Qt::green);
    QVERIFY(picture.save(home.path(QStringLiteral("icon.png"))));
    home.fifo(QStringLiteral("pipe.png"));
    home.file(settings, "icon=" + home.path(name).toUtf8() + '\n');
    bool shown = false;
    QRgb pixel = 0;
    QCOMPARE(run(home,
                 [&] {
                     const QImage image = gwMainframe->windowIcon().pixmap(16).toImage();
                     shown = !image.isNull();
                     pixel = shown ? image.pixel(8, 8) : 0;
                 }),
        0);
    QTEST(shown, "shown");
    if (shown) {
        QCOMPARE(QColor(pixel), QColor(Qt::green));
    }
}

void TestMainFunction::arrangement_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("places");
    QTest::newRow("0") << QByteArray("window=0") << QStringLiteral("halves");
    QTest::newRow("1") << QByteArray("window=1") << QStringLiteral("one");
    QTest::newRow("2") << QByteArray("window=2") << QStringLiteral("stacked");
    QTest::newRow("7") << QByteArray("window=7") << QStringLiteral("first places");
    QTest::newRow("two") << QByteArray("window=two") << QStringLiteral("halves");
    QTest::newRow("none") << QByteArray() << QStringLiteral("halves");
}

void TestMainFunction::arrangement()
{
    QFETCH(QByteArray, line);
    const TestDir home;
    home.file(settings, line);
    QString places;
    const auto look = [&] {
        const QRect first = gwPanel1->geometry();
        const QRect second = gwPanel2->geometry();
        if (first == QRect(100, 100, 500, 500) && second == QRect(700, 100, 500, 500)) {
            places = QStringLiteral("first places");
        } else if (second.isEmpty() && first.width() == gwMainframe->width()) {
            places = QStringLiteral("one");
        } else if (second.y() == first.y() && second.x() == gwMainframe->width() / 2) {
            places = QStringLiteral("halves");
        } else if (second.x() == first.x() && second.y() == first.y() + first.height()) {
            places = QStringLiteral("stacked");
        }
    };
    QCOMPARE(run(home, look), 0);
    QTEST(places, "places");
}

void TestMainFunction::titleIsTheProductAlone()
{
    const TestDir home;
    home.file(settings);
    QString title;
    QCOMPARE(run(home, [&] { title = gwMainframe->windowHandle()->title(); }), 0);
    QCOMPARE(title, QStringLiteral("Vantrel"));
}

void TestMainFunction::argumentsAreNotRead()
{
    const TestDir home;
    home.file(settings);
    QCOMPARE(run(home, [] {}, {"--help", "/no/such/file"}), 0);
}

void TestMainFunction::writesNothing()
{
    const TestDir home;
    const QByteArray content("style=QLabel {}\nwindow=1\ndrive=~=Home\nmenu=copy=*=Copy\n");
    home.file(settings, content);
    QCOMPARE(
        run(home,
            [] { gwMainframe->findChild<QAction*>(QStringLiteral("actionTile_Vertically"))->trigger(); }),
        0);
    QCOMPARE(home.read(settings), content);
    QStringList left = home.tree();
    // Font lists are remembered by the platform, not by the program.
    left.erase(std::remove_if(left.begin(), left.end(),
                   [](const QString& path) { return path.startsWith(QLatin1String(".cache/")); }),
        left.end());
    QCOMPARE(left, QStringList{settings});
}

void TestMainFunction::hugeSettings_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("comments") << QByteArray("# a comment line of usual length\n").repeated(1000000);
    QTest::newRow("menu entries") << QByteArray("menu=copy=*=Copy\n").repeated(1000000);
    QTest::newRow("one line") << QByteArray(10000000, 'x');
    QTest::newRow("NULs") << QByteArray(10000000, '\0');
}

void TestMainFunction::hugeSettings()
{
    QFETCH(QByteArray, content);
    const TestDir home;
    home.file(settings, content);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(run(home, [] {}), 0);
    // Generous: what grows with the square of the size takes minutes.
    QVERIFY2(timer.elapsed() < 150000, qPrintable(QString::number(timer.elapsed())));
}

int main(int argc, char** argv)
{
    prepareTestProcess();
    TestMainFunction test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_main.moc"
