#include "tests/support/Recipes.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <memory>

/// vantrel-check, run as a program in a home folder of its own.
class TestVantrelCheck : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { dir.reset(); }

    void homeIsLookedThrough();
    void namedFileIsLookedThrough();
    void text();
    void json();
    void jsonOfNothing();
    void unreadableFile_data();
    void unreadableFile();
    void nameBehindTheOptions();
    void noHome();
    void nameThatIsNoText();
    void endlessStyle();
    void wrongUse_data();
    void wrongUse();
    void information_data();
    void information();
    void fullOutput();
    void needsNoDisplay();
    void writesNothing();
    void startsNothing();
    void setupHasNoFindings_data();
    void setupHasNoFindings();
    void examplesHaveNoMistake_data();
    void examplesHaveNoMistake();

private:
    struct Run
    {
        int status = -1;
        QByteArray output;
        QByteArray errors;
    };
    Run run(const QStringList& arguments = QStringList(), const QString& shell = QString()) const;
    void settings(const QByteArray& content) const { dir->file(QStringLiteral("home/.Vantrel"), content); }

    std::unique_ptr<TestDir> dir;
    QProcessEnvironment environment;
};

namespace {

const QByteArray nothingWrong("drive=/=Root\nnorecurse=^/proc\nmenu=copy=*=Copy\n");
const QByteArray twoWrong("norecurse=^/proc\nbogus=1\nmenu=sendto=*=\xc3\x84=sh a=b\n");

} // namespace

void TestVantrelCheck::init()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("home"));
    environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), dir->path(QStringLiteral("home")));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
}

/// @param shell what runs instead; "$0" is the program there, and "$@" its arguments
TestVantrelCheck::Run TestVantrelCheck::run(const QStringList& arguments, const QString& shell) const
{
    const QString program
        = QFileInfo(QCoreApplication::applicationDirPath() + QStringLiteral("/../vantrel-check"))
              .canonicalFilePath();
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(dir->path());
    const QString script = shell.isEmpty() ? QStringLiteral("exec \"$0\" \"$@\"") : shell;
    process.start(QStringLiteral("/bin/sh"), QStringList{"-c", script, program} + arguments);
    Run result;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit) {
        result.status = process.exitCode();
    }
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    return result;
}

void TestVantrelCheck::homeIsLookedThrough()
{
    settings(nothingWrong);
    const Run good = run();
    QCOMPARE(good.errors, QByteArray());
    QCOMPARE(good.output, QByteArray());
    QCOMPARE(good.status, 0);
    settings(twoWrong);
    QCOMPARE(run().status, 1);
}

void TestVantrelCheck::namedFileIsLookedThrough()
{
    settings(twoWrong);
    dir->file(QStringLiteral("other file"), nothingWrong);
    QCOMPARE(run({"other file"}).status, 0);
    dir->file(QStringLiteral("other file"), "x\nnorecurse=^/proc\n");
    const Run named = run({"other file"});
    QCOMPARE(named.output, QByteArray("other file:1: there is no key \"x\" [unknown-key]\n"));
    QCOMPARE(named.status, 1);
}

void TestVantrelCheck::text()
{
    dir->file(QStringLiteral("s"), "bogus=1\nmenu=sendto=*=\xc3\x84=sh a=\xc3\x84\n");
    const Run told = run({"s"});
    QCOMPARE(told.output,
        QByteArray("s: there is no norecurse line: an empty expression skips every folder in disk usage "
                   "[matches-everything]\n"
                   "s:1: there is no key \"bogus\" [unknown-key]\n"
                   "s:2: the command ends at the further \"=\"; what follows is dropped: \"=\xc3\x84\" "
                   "[cut-text]\n"));
    QCOMPARE(told.errors, QByteArray());
}

void TestVantrelCheck::json()
{
    settings(twoWrong);
    const Run told = run({"--json"});
    QCOMPARE(told.status, 1);
    QCOMPARE(told.errors, QByteArray());
    QJsonParseError error{};
    const QJsonObject root = QJsonDocument::fromJson(told.output, &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(root.keys(), (QStringList{"file", "findings"}));
    QCOMPARE(root.value(QStringLiteral("file")).toString(), dir->path(QStringLiteral("home/.Vantrel")));
    const QJsonArray findings = root.value(QStringLiteral("findings")).toArray();
    QCOMPARE(findings.size(), 2);
    const QJsonObject second = findings.at(1).toObject();
    QCOMPARE(second.keys(), (QStringList{"kind", "line", "text"}));
    QCOMPARE(findings.at(0).toObject().value(QStringLiteral("line")).toInt(), 2);
    QCOMPARE(second.value(QStringLiteral("line")).toInt(), 3);
    QCOMPARE(second.value(QStringLiteral("kind")).toString(), QStringLiteral("cut-text"));
    QVERIFY(second.value(QStringLiteral("text")).toString().endsWith(QStringLiteral("\"=b\"")));
}

void TestVantrelCheck::jsonOfNothing()
{
    dir->file(QStringLiteral("s"), nothingWrong);
    const Run told = run({"s", "--json"});
    QCOMPARE(told.status, 0);
    const QJsonObject root = QJsonDocument::fromJson(told.output).object();
    QVERIFY(root.value(QStringLiteral("findings")).isArray());
    QCOMPARE(root.value(QStringLiteral("findings")).toArray().size(), 0);
}

void TestVantrelCheck::unreadableFile_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no settings") << QStringList();
    QTest::newRow("no settings, as JSON") << QStringList{"--json"};
    QTest::newRow("no such file") << QStringList{"nowhere"};
    QTest::newRow("folder") << QStringList{"home"};
    QTest::newRow("device") << QStringList{"/dev/zero"};
}

void TestVantrelCheck::unreadableFile()
{
    QFETCH(QStringList, arguments);
    const Run told = run(arguments);
    QCOMPARE(told.status, 2);
    QCOMPARE(told.output, QByteArray());
    QVERIFY2(told.errors.startsWith("vantrel-check: ") && told.errors.endsWith(" cannot be read\n"),
        told.errors.constData());
}

void TestVantrelCheck::nameBehindTheOptions()
{
    dir->file(QStringLiteral("--json"), "x\nnorecurse=^/proc\n");
    const Run told = run({"--", "--json"});
    QCOMPARE(told.output, QByteArray("--json:1: there is no key \"x\" [unknown-key]\n"));
    QCOMPARE(told.status, 1);
    settings(twoWrong);
    QCOMPARE(run({"--"}).status, 1);
}

void TestVantrelCheck::noHome()
{
    dir->file(QStringLiteral("s"), nothingWrong);
    for (const char* shell : {R"(HOME= exec "$0" "$@")", R"(unset HOME; exec "$0" "$@")"}) {
        const Run told = run({}, QString::fromLatin1(shell));
        QCOMPARE(told.status, 2);
        QCOMPARE(told.errors,
            QByteArray("vantrel-check: HOME is not set, so that there is no ~/.Vantrel: name a file\n"));
        QCOMPARE(run({"s"}, QString::fromLatin1(shell)).status, 0);
    }
}

void TestVantrelCheck::nameThatIsNoText()
{
    const QString shell
        = QStringLiteral("f=$(printf 'a\\377'); : >\"$f\"; LC_ALL=C.UTF-8 exec \"$0\" \"$f\"");
    const Run told = run({}, shell);
    QCOMPARE(told.status, 2);
    QCOMPARE(told.output, QByteArray());
    QVERIFY2(told.errors.endsWith(" cannot be read: its name is not UTF-8\n"), told.errors.constData());
}

void TestVantrelCheck::endlessStyle()
{
    settings(nothingWrong + "style=" + QByteArray(30000000, 'x') + '\n');
    QElapsedTimer time;
    time.start();
    const Run told = run();
    QVERIFY2(time.elapsed() < 20000, QByteArray::number(time.elapsed()).constData());
    QVERIFY2(
        told.output.endsWith(":4: this line is too long to check [too-long]\n"), told.output.constData());
    QCOMPARE(told.status, 1);
}

void TestVantrelCheck::wrongUse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("option") << QStringList{"--bogus"};
    QTest::newRow("option of Qt") << QStringList{"-style", "fusion"};
    QTest::newRow("empty name") << QStringList{""};
    QTest::newRow("empty name behind the options") << QStringList{"--json", "--", ""};
    QTest::newRow("option for a file") << QStringList{"--", "home/.Vantrel", "--json"};
    QTest::newRow("two files") << QStringList{"home/.Vantrel", "x"};
}

void TestVantrelCheck::wrongUse()
{
    QFETCH(QStringList, arguments);
    settings(nothingWrong);
    const Run told = run(arguments);
    QCOMPARE(told.status, 2);
    QCOMPARE(told.output, QByteArray());
    QVERIFY2(told.errors.endsWith(" is not understood; try --help\n"), told.errors.constData());
}

void TestVantrelCheck::information_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("start");
    QTest::newRow("help") << QStringLiteral("--help")
                          << QStringLiteral("Usage: vantrel-check [--json] [FILE]\n");
    QTest::newRow("short help") << QStringLiteral("-h") << QStringLiteral("Usage: vantrel-check ");
    QTest::newRow("version") << QStringLiteral("--version") << QStringLiteral("vantrel-check, Version ");
}

void TestVantrelCheck::information()
{
    QFETCH(QString, option);
    QFETCH(QString, start);
    const Run told = run({option});
    QCOMPARE(told.status, 0);
    QVERIFY2(told.output.startsWith(start.toUtf8()), told.output.constData());
    QCOMPARE(told.errors, QByteArray());
}

void TestVantrelCheck::fullOutput()
{
    settings(twoWrong);
    const Run told = run({}, QStringLiteral("exec \"$0\" >/dev/full"));
    QCOMPARE(told.status, 2);
    QCOMPARE(told.errors, QByteArray("vantrel-check: the standard output cannot be written\n"));
}

void TestVantrelCheck::needsNoDisplay()
{
    settings(nothingWrong);
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR"}) {
        environment.remove(QLatin1String(name));
    }
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("nonsense"));
    const Run told = run();
    QCOMPARE(told.errors, QByteArray());
    QCOMPARE(told.status, 0);
}

/// Neither the file nor anything in the folders that a program may write to.
void TestVantrelCheck::writesNothing()
{
    settings(twoWrong + "style=QLabel { color: red; }\nicon=/etc/passwd\n");
    dir->folder(QStringLiteral("tmp"));
    dir->setTimes(QStringLiteral("home/.Vantrel"), 1000000000);
    for (const char* folder : {"home", "tmp", ""}) {
        dir->setTimes(QLatin1String(folder), 1000000000);
    }
    environment.insert(QStringLiteral("TMPDIR"), dir->path(QStringLiteral("tmp")));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir->path(QStringLiteral("home/run")));
    const QStringList before = dir->tree();
    const QByteArray content = dir->read(QStringLiteral("home/.Vantrel"));
    QCOMPARE(run().status, 1);
    environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    QCOMPARE(run({"--json"}).status, 1);
    QCOMPARE(dir->tree(), before);
    QCOMPARE(dir->read(QStringLiteral("home/.Vantrel")), content);
    // What is made and removed again changes the time of its folder.
    for (const char* path : {"home/.Vantrel", "home", "tmp", ""}) {
#ifdef __SANITIZE_THREAD__
        if (qstrcmp(path, "tmp") == 0) {
            continue; // ThreadSanitizer itself keeps a file there for a moment
        }
#endif
        QCOMPARE(QFileInfo(dir->path(QLatin1String(path))).lastModified().toSecsSinceEpoch(), 1000000000);
    }
}

void TestVantrelCheck::startsNothing()
{
    const QString program
        = dir->file(QStringLiteral("bin/touch-it"), "#!/bin/sh\n: >\"$HOME/started\"\n", 0755);
    settings("assn=x=" + program.toLocal8Bit() + "\nmenu=terminal=*=X=" + program.toLocal8Bit()
        + "\nnorecurse=^/proc\n");
    QCOMPARE(run().status, 0);
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList{".Vantrel"});
}

void TestVantrelCheck::setupHasNoFindings_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("light") << QStringLiteral("--light");
    QTest::newRow("dark") << QStringLiteral("--dark");
}

void TestVantrelCheck::setupHasNoFindings()
{
    QFETCH(QString, option);
    environment.insert(QStringLiteral("VANTREL_MOUNTS"), dir->file(QStringLiteral("mounts")));
    const Run setup = run({projectFile(QStringLiteral("setup/vantrel-setup")), option},
        QStringLiteral("exec \"$1\" --print \"$2\""));
    QCOMPARE(setup.status, 0);
    QVERIFY(setup.output.count("\nmenu=") > 10);
    settings(setup.output);
    const Run told = run();
    QCOMPARE(told.output, QByteArray());
    QCOMPARE(told.errors, QByteArray());
    QCOMPARE(told.status, 0);
}

void TestVantrelCheck::examplesHaveNoMistake_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("kinds"); // that may be found, whatever the machine
    QTest::newRow("light") << QStringLiteral("examples/Vantrel.starter")
                           << QStringLiteral("program-not-found");
    QTest::newRow("dark") << QStringLiteral("examples/Vantrel.dark") << QStringLiteral("program-not-found");
    // Of its recipes for one thing only one is meant to be taken.
    QTest::newRow("recipes") << QStringLiteral("examples/recipes")
                             << QStringLiteral("program-not-found|replaced");
}

void TestVantrelCheck::examplesHaveNoMistake()
{
    QFETCH(QString, file);
    QFETCH(QString, kinds);
    const Run told = run({projectFile(file), "--json"});
    QVERIFY(told.status == 0 || told.status == 1);
    const QJsonArray findings
        = QJsonDocument::fromJson(told.output).object().value(QStringLiteral("findings")).toArray();
    QCOMPARE(told.status, findings.isEmpty() ? 0 : 1);
    for (const QJsonValue& each : findings) {
        const QString text = each[QStringLiteral("text")].toString();
        QVERIFY2(kinds.split(QLatin1Char('|')).contains(each[QStringLiteral("kind")].toString()),
            qPrintable(text));
        const QRegularExpressionMatch missing
            = QRegularExpression(QStringLiteral("^the program \"(.*)\" is not found$")).match(text);
        QVERIFY(!missing.hasMatch() || QStandardPaths::findExecutable(missing.captured(1)).isEmpty());
    }
}

VANTREL_TEST_MAIN(TestVantrelCheck)
#include "tst_VantrelCheck.moc"
