#include "panel/MPanel.h"

#include "app/EndSignals.h"
#include "app/InheritedDescriptors.h"
#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/AsNobody.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDesktopServices>
#include <QDir>
#include <QElapsedTimer>
#include <QUrl>

#include <memory>
#include <unistd.h>

namespace {

/// A stand-in for an external program: it notes its arguments, working folder, environment and descriptors.
const char* const recorder = R"sh(#!/bin/sh
out="$(dirname "$0")/record"
{
    echo "cwd:$(pwd)"
    for word in "$@";
do
    echo "arg:$word";
done
} > "$out.part"
env > "$out.env"
ls -l /proc/self/fd > "$out.fds"
grep '^Sig[BI]' /proc/self/status > "$out.signals"
mv "$out.part" "$out"
)sh";

/// Children of this process that have ended and that nobody has waited for, or that are still there.
QStringList childrenLeft()
{
    QStringList left;
    const QStringList ids = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& id : ids) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(id));
        if (id.toInt() > 0 && stat.open(QIODevice::ReadOnly)) {
            const QByteArray line = stat.readAll();
            const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
            if (fields.value(1).toInt() == ::getpid()) {
                left.append(QString::fromLocal8Bit(line));
            }
        }
    }
    return left;
}

} // namespace

class TestMPanelLauncher : public QObject
{
    Q_OBJECT

public slots:
    void takeUrl(const QUrl& url) { urls.append(url); }

private slots:
    void init();
    void cleanup();

    void words_data();
    void words();
    void workingFolder();
    void homeFolder();
    void workingFolderIsGone();
    void workingFolderIsClosed();
    void startFails_data();
    void startFails();
    void panelStaysAfterFailure();
    void programThatFailsIsNotNoticed();
    void doesNotWait();
    void noZombie();
    void environmentIsTheUsers_data();
    void environmentIsTheUsers();
    void noDescriptorIsInherited();
    void noSignalIsChanged();
    void manyLaunches();
    void shellCharactersMeanNothing();

    void suffix_data();
    void suffix();
    void wholeNameThenEmptySuffix();
    void unknownSuffixIsAdded();
    void pathIsOneArgument_data();
    void pathIsOneArgument();
    void fileWithoutAssociation_data();
    void fileWithoutAssociation();
    void associationWithoutProgram();

private:
    QStringList record();
    QByteArray recorded(const QString& what);
    void doubleClick(const QString& name, int column = 0);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<TestDir> tools;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    QString program;
    QList<QUrl> urls;
};

void TestMPanelLauncher::init()
{
    dir = std::make_unique<TestDir>();
    tools = std::make_unique<TestDir>();
    program = tools->file(QStringLiteral("recorder"), recorder, 0755);
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    urls.clear();
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "takeUrl");
}

void TestMPanelLauncher::cleanup()
{
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    window.reset();
    tools.reset();
    dir.reset();
}

/// Waits for the stand-in's record.
QStringList TestMPanelLauncher::record()
{
    const QString path = tools->path(QStringLiteral("record"));
    if (!QTest::qWaitFor([&path] { return QFile::exists(path); })) {
        return QStringList{"nothing was started"};
    }
    QStringList lines = QString::fromUtf8(tools->read(QStringLiteral("record"))).split('\n');
    lines.removeLast();
    QFile::remove(path);
    return lines;
}

QByteArray TestMPanelLauncher::recorded(const QString& what)
{
    return tools->read(QStringLiteral("record.") + what);
}

void TestMPanelLauncher::doubleClick(const QString& name, int column)
{
    QTRY_VERIFY(listIndex(panel, name).isValid());
    panel->on_ListView_DoubleClicked(listIndex(panel, name, column));
}

void TestMPanelLauncher::words_data()
{
    QTest::addColumn<QString>("rest");
    QTest::addColumn<QString>("arg1");
    QTest::addColumn<QString>("arg2");
    QTest::addColumn<QStringList>("expected");
    const QString none;
    QTest::newRow("nothing") << none << none << none << QStringList();
    QTest::newRow("one") << QStringLiteral(" -a") << none << none << QStringList{"-a"};
    QTest::newRow("two") << QStringLiteral(" -a -b") << none << none << QStringList{"-a", "-b"};
    QTest::newRow("runs of blanks") << QStringLiteral("  -a   -b") << none << none << QStringList{"-a", "-b"};
    QTest::newRow("blank at the end") << QStringLiteral(" -a ") << none << none << QStringList{"-a"};
    QTest::newRow("quotes mean nothing")
        << QStringLiteral(" \"a b\" 'c'") << none << none << QStringList{"\"a", "b\"", "'c'"};
    QTest::newRow("first extra") << none << QStringLiteral("/x y") << none << QStringList{"/x y"};
    QTest::newRow("second extra") << none << none << QStringLiteral("/x y") << QStringList{"/x y"};
    QTest::newRow("both extras") << QStringLiteral(" -d") << QStringLiteral("/one") << QStringLiteral("/two")
                                 << QStringList{"-d", "/one", "/two"};
    QTest::newRow("blanks of extras stay")
        << none << QStringLiteral("  a  ") << QStringLiteral("b  c") << QStringList{"  a  ", "b  c"};
    QTest::newRow("extra with quotes")
        << none << QStringLiteral("a\"b'c\\d") << none << QStringList{"a\"b'c\\d"};
    QTest::newRow("extra with placeholder")
        << none << QStringLiteral("%1$HOME*") << none << QStringList{"%1$HOME*"};
    QTest::newRow("letters") << QString::fromUtf8(" ä") << QString::fromUtf8("日本") << none
                             << QStringList{QString::fromUtf8("ä"), QString::fromUtf8("日本")};
    QTest::newRow("long") << none << QString(5000, QLatin1Char('x')) << none
                          << QStringList{QString(5000, QLatin1Char('x'))};
}

void TestMPanelLauncher::words()
{
    QFETCH(QString, rest);
    QFETCH(QString, arg1);
    QFETCH(QString, arg2);
    QFETCH(QStringList, expected);
    panel->Launcher(program + rest, arg1, arg2, dir->path());
    QStringList lines{"cwd:" + dir->path()};
    for (const QString& argument : qAsConst(expected)) {
        lines.append(QStringLiteral("arg:") + argument);
    }
    QCOMPARE(record(), lines);
}

void TestMPanelLauncher::workingFolder()
{
    const QString folder = dir->folder(QStringLiteral("a b/<c>"));
    panel->Launcher(program, QString(), QString(), folder);
    QCOMPARE(record(), QStringList{"cwd:" + folder});
    QVERIFY(QDir::currentPath() != folder);
}

void TestMPanelLauncher::homeFolder()
{
    panel->Launcher(program, QString(), QString(), QString());
    QCOMPARE(record(), QStringList{"cwd:" + QDir::homePath()});
}

void TestMPanelLauncher::workingFolderIsGone()
{
    BoxAnswers answers;
    answers.click(QStringLiteral("OK"));
    panel->Launcher(program, QString(), QString(), dir->path(QStringLiteral("gone")));
    QCOMPARE(answers.texts(), QStringList{"Failed to start program:\n" + program});
}

void TestMPanelLauncher::workingFolderIsClosed()
{
    dir->setMode(QString(), 0755);
    tools->setMode(QString(), 0777);
    const QString closed = dir->folder(QStringLiteral("closed"), 0600);
    BoxAnswers answers;
    answers.click(QStringLiteral("OK"));
    {
        const AsNobody nobody; // root may enter any folder
        panel->Launcher(program, QString(), QString(), closed);
    }
    QCOMPARE(answers.texts(), QStringList{"Failed to start program:\n" + program});
}

void TestMPanelLauncher::startFails_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("word");
    QTest::newRow("missing path") << QStringLiteral("/no/such/program -a b")
                                  << QStringLiteral("/no/such/program");
    QTest::newRow("missing name") << QStringLiteral("no-such-program-anywhere")
                                  << QStringLiteral("no-such-program-anywhere");
    QTest::newRow("folder") << QStringLiteral("/ -x") << QStringLiteral("/");
    QTest::newRow("not executable") << QStringLiteral("/etc/passwd") << QStringLiteral("/etc/passwd");
    QTest::newRow("markup") << QStringLiteral("<b>x</b>") << QStringLiteral("<b>x</b>");
    QTest::newRow("placeholder") << QStringLiteral("%1%2") << QStringLiteral("%1%2");
    QTest::newRow("nothing") << QString() << QString();
}

void TestMPanelLauncher::startFails()
{
    QFETCH(QString, command);
    QFETCH(QString, word);
    BoxAnswers answers;
    answers.click(QStringLiteral("OK"));
    panel->Launcher(command, QStringLiteral("extra"), QString(), dir->path());
    QCOMPARE(answers.seen().size(), 1);
    const BoxAnswers::Box& box = answers.seen().constFirst();
    QCOMPARE(box.title, QStringLiteral("Error"));
    QCOMPARE(box.text, QStringLiteral("Failed to start program:\n") + word);
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QStringList{"OK"});
    QCOMPARE(box.parent, panel);
    QVERIFY(box.modal);
}

void TestMPanelLauncher::panelStaysAfterFailure()
{
    dir->file(QStringLiteral("a.none"));
    gmFileAssn.insert(QStringLiteral("none"), QStringLiteral("/no/such/program"));
    BoxAnswers answers;
    answers.click(QStringLiteral("OK"));
    doubleClick(QStringLiteral("a.none"));
    QCOMPARE(answers.texts(), QStringList{"Failed to start program:\n/no/such/program"});
    QCOMPARE(panel->currentPath, dir->path());
    QCOMPARE(panel->contextPath, dir->path(QStringLiteral("a.none")));
    QVERIFY(urls.isEmpty());
}

void TestMPanelLauncher::programThatFailsIsNotNoticed()
{
    const QString failing
        = tools->file(QStringLiteral("fails"), "#!/bin/sh\ntouch \"$0.ran\"\nexit 3\n", 0755);
    const BoxAnswers answers;
    panel->Launcher(failing, QString(), QString(), QString());
    QTRY_VERIFY(QFile::exists(failing + ".ran"));
    // One that is started and ends later is not noticed either.
    const QString next = tools->file(QStringLiteral("next"), "#!/bin/sh\ntouch \"$0.ran\"\n", 0755);
    panel->Launcher(next, QString(), QString(), QString());
    QTRY_VERIFY(QFile::exists(next + ".ran"));
    QVERIFY(answers.seen().isEmpty());
}

void TestMPanelLauncher::doesNotWait()
{
    const QString slow = tools->file(QStringLiteral("slow"),
        "#!/bin/sh\nwhile [ ! -e \"$0.end\" ]; do sleep 0.05; done\ntouch \"$0.ended\"\n", 0755);
    QElapsedTimer clock;
    clock.start();
    panel->Launcher(slow, QString(), QString(), QString());
    QVERIFY2(clock.elapsed() < 2000, QByteArray::number(clock.elapsed()).constData());
    QVERIFY(!QFile::exists(slow + ".ended"));
    tools->file(QStringLiteral("slow.end"));
    QTRY_VERIFY(QFile::exists(slow + ".ended"));
}

void TestMPanelLauncher::noZombie()
{
    for (int i = 0; i < 5; ++i) {
        panel->Launcher(program, QString(), QString(), QString());
        QCOMPARE(record().size(), 1);
    }
    QTRY_COMPARE(childrenLeft(), QStringList());
}

void TestMPanelLauncher::environmentIsTheUsers_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("handedOn");
    QTest::newRow("our time zone") << QByteArray("TZ") << QByteArray(":/etc/localtime") << false;
    QTest::newRow("the user's time zone") << QByteArray("TZ") << QByteArray("Europe/Berlin") << true;
    QTest::newRow("the user's variable") << QByteArray("SOME_VARIABLE") << QByteArray("a b") << true;
    QTest::newRow("the user's GL setting")
        << QByteArray("QT_XCB_GL_INTEGRATION") << QByteArray("xcb_egl") << true;
    QTest::newRow("our GL setting") << QByteArray("QT_XCB_GL_INTEGRATION") << QByteArray() << false;
}

void TestMPanelLauncher::environmentIsTheUsers()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, value);
    QFETCH(bool, handedOn);
    const QByteArray before = qgetenv(name.constData());
    if (!value.isEmpty()) {
        qputenv(name.constData(), value);
    }
    panel->Launcher(program, QString(), QString(), QString());
    QCOMPARE(record().size(), 1);
    const QList<QByteArray> lines = recorded(QStringLiteral("env")).split('\n');
    if (before.isEmpty()) {
        qunsetenv(name.constData());
    } else {
        qputenv(name.constData(), before);
    }
    QVERIFY(lines.contains("HOME=" + QDir::homePath().toLocal8Bit()));
    bool there = false;
    for (const QByteArray& line : lines) {
        there = there || line.startsWith(name + '=');
    }
    QCOMPARE(there, handedOn);
    QCOMPARE(lines.contains(name + '=' + value), handedOn);
}

void TestMPanelLauncher::noDescriptorIsInherited()
{
    keepInheritedDescriptors(); // as start-up does
    QVERIFY(waitForList(panel)); // the folder is watched by now
    panel->Launcher(program, QString(), QString(), QString());
    QCOMPARE(record().size(), 1);
    const QByteArray descriptors = recorded(QStringLiteral("fds"));
    QVERIFY(descriptors.contains("record.fds"));
    // Standard input and error; standard output, which the record is; and what ls lists.
    QVERIFY2(descriptors.count(" -> ") == 4, descriptors.constData());
    for (const char* kind : {"inotify", "eventfd", "eventpoll", "timerfd", "socket:"}) {
        QVERIFY2(!descriptors.contains(kind), descriptors.constData());
    }
}

void TestMPanelLauncher::noSignalIsChanged()
{
    QVERIFY(waitForList(panel));
    const EndSignals signalHandling;
    panel->Launcher(program, QString(), QString(), QString());
    QCOMPARE(record().size(), 1);
    const QByteArray all(16, '0');
    QCOMPARE(recorded(QStringLiteral("signals")), "SigBlk:\t" + all + "\nSigIgn:\t" + all + '\n');
}

void TestMPanelLauncher::manyLaunches()
{
    const int rounds = qEnvironmentVariableIntValue("VANTREL_LONG") != 0 ? 500 : 50;
    const QString touch
        = tools->file(QStringLiteral("count"), "#!/bin/sh\nexec mkdir \"${0%/*}/ran-$1\"\n", 0755);
    QVERIFY(waitForList(panel));
    const int descriptors = descriptorCount();
    const int threads = threadCount();
    for (int i = 0; i < rounds; ++i) {
        panel->Launcher(touch, QString::number(i), QString(), QString());
    }
    for (int i = 0; i < rounds; ++i) {
        QTRY_VERIFY(tools->exists(QStringLiteral("ran-%1").arg(i)));
    }
    QCOMPARE(childrenLeft(), QStringList());
    QCOMPARE(descriptorCount(), descriptors);
    QTRY_COMPARE(threadCount(), threads);
}

void TestMPanelLauncher::shellCharactersMeanNothing()
{
    panel->Launcher(
        program + QStringLiteral(" ; touch hacked > x | $(id) `id` &"), QString(), QString(), dir->path());
    QCOMPARE(record().size(), 10);
    QVERIFY(!QFile::exists(dir->path(QStringLiteral("hacked"))));
}

void TestMPanelLauncher::suffix_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("plain") << QStringLiteral("notes.txt") << QStringLiteral("txt");
    QTest::newRow("upper case") << QStringLiteral("notes.TXT") << QStringLiteral("txt");
    QTest::newRow("last dot") << QStringLiteral("archive.tar.gz") << QStringLiteral("gz");
    QTest::newRow("no dot") << QStringLiteral("Makefile") << QStringLiteral("makefile");
    QTest::newRow("hidden") << QStringLiteral(".profile") << QStringLiteral("profile");
    QTest::newRow("dot at the end") << QStringLiteral("odd.") << QString();
    QTest::newRow("blanks") << QStringLiteral("my file.p d f") << QStringLiteral("p d f");
    QTest::newRow("letters") << QString::fromUtf8("x.ÄÖ") << QString::fromUtf8("äö");
    QTest::newRow("placeholder") << QStringLiteral("x.%1") << QStringLiteral("%1");
}

void TestMPanelLauncher::suffix()
{
    QFETCH(QString, name);
    QFETCH(QString, suffix);
    dir->file(name);
    gmFileAssn.insert(suffix, program + QStringLiteral("  --new-window "));
    for (int column = 0; column < 4; ++column) { // whichever text was hit
        doubleClick(name, column);
        QCOMPARE(
            record(), (QStringList{"cwd:" + QDir::homePath(), "arg:--new-window", "arg:" + dir->path(name)}));
        QCOMPARE(gmFileAssn.size(), 1);
    }
    QCOMPARE(panel->contextPath, dir->path(name));
    QVERIFY(urls.isEmpty());
}

void TestMPanelLauncher::wholeNameThenEmptySuffix()
{
    dir->file(QStringLiteral("Makefile"));
    gmFileAssn.insert(QString(), program);
    doubleClick(QStringLiteral("Makefile"));
    QCOMPARE(record().constLast(), "arg:" + dir->path(QStringLiteral("Makefile")));
    QVERIFY(gmFileAssn.contains(QStringLiteral("makefile")));
}

void TestMPanelLauncher::unknownSuffixIsAdded()
{
    dir->file(QStringLiteral("a.Unknown"));
    gmFileAssn.insert(QStringLiteral("txt"), program);
    doubleClick(QStringLiteral("a.Unknown"));
    QCOMPARE(gmFileAssn.keys(), (QStringList{"txt", "unknown"}));
    QCOMPARE(gmFileAssn.value(QStringLiteral("unknown"), QStringLiteral("none")), QString());
    QCOMPARE(urls.size(), 1);
    doubleClick(QStringLiteral("a.Unknown"));
    QCOMPARE(gmFileAssn.size(), 2);
    QCOMPARE(urls.size(), 2);
}

void TestMPanelLauncher::pathIsOneArgument_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("blanks") << QStringLiteral("a  b c.x");
    QTest::newRow("quotes") << QStringLiteral("a\"b'c.x");
    QTest::newRow("option") << QStringLiteral("-rf.x");
    QTest::newRow("placeholder") << QStringLiteral("%1 %f.x");
    QTest::newRow("markup") << QStringLiteral("<b>.x");
    QTest::newRow("newline") << QStringLiteral("a\nb.x");
    QTest::newRow("255 bytes") << QString(253, QLatin1Char('q')) + QStringLiteral(".x");
}

void TestMPanelLauncher::pathIsOneArgument()
{
    QFETCH(QString, name);
    dir->file(name);
    gmFileAssn.insert(QStringLiteral("x"), program);
    doubleClick(name);
    QCOMPARE(record().mid(1).join('\n'), "arg:" + dir->path(name));
}

void TestMPanelLauncher::fileWithoutAssociation_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
        {"plain", "a.zzz", "a b", "a#b", "a?b", "a%41b", "%1", "<b>", "a\nb", "a:b", "\xc3\xa4"}) {
        QTest::newRow(name) << QString::fromUtf8(name);
    }
}

void TestMPanelLauncher::fileWithoutAssociation()
{
    QFETCH(QString, name);
    dir->file(name);
    doubleClick(name);
    QCOMPARE(urls.size(), 1);
    QCOMPARE(urls.constFirst().scheme(), QStringLiteral("file"));
    QCOMPARE(urls.constFirst().toLocalFile(), dir->path(name));
    QCOMPARE(panel->contextPath, dir->path(name));
}

void TestMPanelLauncher::associationWithoutProgram()
{
    dir->file(QStringLiteral("a.txt"));
    gmFileAssn.insert(QStringLiteral("txt"), QString());
    doubleClick(QStringLiteral("a.txt"));
    QCOMPARE(urls.size(), 1);
    QCOMPARE(gmFileAssn.size(), 1);
}

VANTREL_TEST_MAIN(TestMPanelLauncher)
#include "tst_MPanelLauncher.moc"
