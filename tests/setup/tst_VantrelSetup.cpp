#include "app/aGlobal.h"
#include "tests/support/AsNobody.h"
#include "tests/support/Recipes.h"
#include "tests/support/Settings.h"
#include "tests/support/SetupHome.h"
#include "tests/support/TestMain.h"

#include <QDate>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

/// vantrel-setup, run as a program in a home folder of its own. What it writes is
/// tst_VantrelSetupContent.cpp.
class TestVantrelSetup : public QObject, private SetupHome
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { close(); }

    void writesSettings();
    void settingsAreRead_data();
    void settingsAreRead();
    void printsTheSame();
    void refusesWhatIsThere_data();
    void refusesWhatIsThere();
    void forceKeepsACopy();
    void forceWritesThroughALink();
    void forceWithoutSettings();

    void wrongUse_data();
    void wrongUse();
    void help();

    void badHome_data();
    void badHome();
    void unwritableHome();
    void fullDisk();
    void shortFile();
    void fullOutput_data();
    void fullOutput();
    void endedInBetween_data();
    void endedInBetween();
    void installed();

private:
    using Run = SetupRun;
    void copyExamples(const QString& folder) const;
};

void TestVantrelSetup::init()
{
    resetSettings();
    open();
}

/// Puts what the set-up reads into a folder.
void TestVantrelSetup::copyExamples(const QString& folder) const
{
    for (const char* name : {"recipes", "Vantrel.starter", "Vantrel.dark"}) {
        QFile data(projectFile(QStringLiteral("examples/") + QLatin1String(name)));
        QVERIFY(data.open(QIODevice::ReadOnly));
        dir->file(folder + QLatin1Char('/') + QLatin1String(name), data.readAll());
    }
}

void TestVantrelSetup::writesSettings()
{
    const Run result = run();
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.status, 0);
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList{".Vantrel"});
    QVERIFY(result.output.startsWith(
        QStringLiteral("Wrote %1 with ").arg(dir->path(QStringLiteral("home/.Vantrel")))));
    // An ordinary new file, not one that only its owner may read.
    QVERIFY(QFileInfo(dir->path(QStringLiteral("home/.Vantrel")))
                .permission(QFile::ReadOther | QFile::WriteOwner));
}

void TestVantrelSetup::settingsAreRead_data()
{
    QTest::addColumn<QString>("option");
    QTest::newRow("light") << QStringLiteral("--light");
    QTest::newRow("dark") << QStringLiteral("--dark");
}

void TestVantrelSetup::settingsAreRead()
{
    QFETCH(QString, option);
    QCOMPARE(run({option}).status, 0);
    for (const char c : dir->read(QStringLiteral("home/.Vantrel"))) {
        QVERIFY(c == '\n' || (c >= ' ' && c <= '~'));
    }
    readSettings();
    QCOMPARE(drivesAsText(), QDir::homePath() + QStringLiteral(">Home,/>Root"));
    QVERIFY(!gsNoRecurse.isEmpty());
    QVector<int> builtIn{CommandProperties, CommandTotalSize, CommandChecksum, CommandNewDir, CommandRename,
        CommandCopy, CommandDelete, CommandClipboard, CommandExecute};
    for (const LSMENU& entry : qAsConst(gstMenu)) {
        QVERIFY2(entry.code != CommandUnknown, qPrintable(entry.label));
        builtIn.removeAll(entry.code);
    }
    QCOMPARE(builtIn, QVector<int>());
}

void TestVantrelSetup::printsTheSame()
{
    const Run printed = run({"--print"});
    QCOMPARE(printed.status, 0);
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList());
    QCOMPARE(run().status, 0);
    QCOMPARE(printed.output.toUtf8(), dir->read(QStringLiteral("home/.Vantrel")));
}

void TestVantrelSetup::refusesWhatIsThere_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("options");
    QTest::newRow("file") << QStringLiteral("file") << QStringList();
    QTest::newRow("link to nothing") << QStringLiteral("link") << QStringList();
    QTest::newRow("folder") << QStringLiteral("folder") << QStringList();
    QTest::newRow("folder, forced") << QStringLiteral("folder") << QStringList{"--force"};
    QTest::newRow("pipe, forced") << QStringLiteral("pipe") << QStringList{"--force"};
}

void TestVantrelSetup::refusesWhatIsThere()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, options);
    const QString settings = QStringLiteral("home/.Vantrel");
    if (kind == QLatin1String("file")) {
        dir->file(settings, "drive=/mine=Mine\n");
    } else if (kind == QLatin1String("link")) {
        dir->link(settings, dir->path(QStringLiteral("nothing")));
    } else if (kind == QLatin1String("folder")) {
        dir->folder(settings);
    } else {
        dir->fifo(settings);
    }
    const QStringList before = dir->tree();
    const Run result = run(options);
    QCOMPARE(result.status, 1);
    QVERIFY2(result.errors.contains(dir->path(settings)), qPrintable(result.errors));
    QCOMPARE(result.output, QString());
    QCOMPARE(dir->tree(), before);
    QVERIFY(kind != QLatin1String("file") || dir->read(settings) == "drive=/mine=Mine\n");
}

void TestVantrelSetup::forceKeepsACopy()
{
    const QByteArray today = QDate::currentDate().toString(Qt::ISODate).toUtf8();
    dir->file(QStringLiteral("home/.Vantrel"), "first\n");
    const Run first = run({"--force"});
    QCOMPARE(first.status, 0);
    dir->file(QStringLiteral("home/.Vantrel"), "second\n");
    QCOMPARE(run({"--force"}).status, 0);
    const QStringList names = dir->tree(QStringLiteral("home"));
    QCOMPARE(names.size(), 3);
    // Midnight may pass between the two.
    QVERIFY(names.at(1).startsWith(QStringLiteral(".Vantrel.2")));
    QVERIFY(QDate::currentDate().toString(Qt::ISODate).toUtf8() != today
        || names.mid(1) == QStringList({".Vantrel." + today, ".Vantrel." + today + ".2"}));
    QCOMPARE(dir->read(QStringLiteral("home/") + names.at(1)), QByteArray("first\n"));
    QCOMPARE(dir->read(QStringLiteral("home/") + names.at(2)), QByteArray("second\n"));
    QVERIFY(first.output.contains(dir->path(QStringLiteral("home/") + names.at(1))));
    QVERIFY(dir->read(QStringLiteral("home/.Vantrel")).contains("menu="));
}

void TestVantrelSetup::forceWritesThroughALink()
{
    dir->file(QStringLiteral("kept elsewhere"), "mine\n");
    dir->link(QStringLiteral("home/.Vantrel"), QStringLiteral("../kept elsewhere"));
    QCOMPARE(run({"--force"}).status, 0);
    const QStringList names = dir->tree(QStringLiteral("home"));
    QCOMPARE(names.size(), 2);
    QVERIFY(names.at(0).startsWith(QStringLiteral(".Vantrel.2")));
    QCOMPARE(dir->read(QStringLiteral("home/") + names.at(0)), QByteArray("mine\n"));
    QCOMPARE(names.at(1), QStringLiteral(".Vantrel@"));
    QVERIFY(dir->read(QStringLiteral("kept elsewhere")).contains("menu="));
    QCOMPARE(dir->tree().filter(QStringLiteral(".new.")), QStringList());
}

void TestVantrelSetup::forceWithoutSettings()
{
    QCOMPARE(run({"--force"}).status, 0);
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList{".Vantrel"});
}

void TestVantrelSetup::wrongUse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown option") << QStringList{"--colour"};
    QTest::newRow("argument") << QStringList{"file"};
    QTest::newRow("recipes of nothing") << QStringList{"--recipes"};
    QTest::newRow("without nothing") << QStringList{"--without"};
    QTest::newRow("recipes of an empty name") << QStringList{"--recipes", ""};
    QTest::newRow("recipes of an empty name, joined") << QStringList{"--recipes="};
    QTest::newRow("without an empty name") << QStringList{"--without", ""};
    QTest::newRow("without an empty name, joined") << QStringList{"--without="};
    QTest::newRow("without two in one") << QStringList{"--without", "mail print"};
    QTest::newRow("without what is not there") << QStringList{"--without", "no-such-recipe"};
}

void TestVantrelSetup::wrongUse()
{
    QFETCH(QStringList, arguments);
    const Run result = run(arguments);
    QCOMPARE(result.status, 2);
    QVERIFY(result.errors.contains(QStringLiteral("--help")));
    QCOMPARE(result.output, QString());
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList());
}

void TestVantrelSetup::help()
{
    const Run result = run({"--help"});
    QCOMPARE(result.status, 0);
    for (const char* option :
        {"--print", "--force", "--light", "--dark", "--without", "--list", "--recipes"}) {
        QVERIFY2(result.output.contains(QLatin1String(option)), option);
    }
}

void TestVantrelSetup::badHome_data()
{
    QTest::addColumn<QString>("home");
    QTest::newRow("not set") << QString();
    QTest::newRow("not there") << QStringLiteral("/no/such/home");
}

void TestVantrelSetup::badHome()
{
    QFETCH(QString, home);
    environment.remove(QStringLiteral("HOME"));
    if (!home.isEmpty()) {
        environment.insert(QStringLiteral("HOME"), home);
    }
    const Run result = run();
    QCOMPARE(result.status, 1);
    QVERIFY2(
        result.errors.contains(home.isEmpty() ? QStringLiteral("HOME") : home), qPrintable(result.errors));
}

void TestVantrelSetup::unwritableHome()
{
    // For a user without root's rights, the way there has to be open.
    const Run asRoot = run({"--print"});
    dir->file(QStringLiteral("setup/vantrel-setup"));
    QVERIFY(QFile::remove(dir->path(QStringLiteral("setup/vantrel-setup"))));
    QVERIFY(QFile::copy(program, dir->path(QStringLiteral("setup/vantrel-setup"))));
    copyExamples(QStringLiteral("examples"));
    program = dir->path(QStringLiteral("setup/vantrel-setup"));
    dir->setMode(QString(), 0755);
    dir->setMode(QStringLiteral("home"), 0555);
    const AsNobody nobody;
    const Run result = run();
    QCOMPARE(result.status, 1);
    QVERIFY2(result.errors.contains(QStringLiteral("cannot be written")), qPrintable(result.errors));
    QCOMPARE(run({"--print"}).output, asRoot.output);
}

// A small volume of its own, which takes root and a namespace of mounts.
void TestVantrelSetup::fullDisk()
{
    const QString mount = QStringLiteral("mount -t tmpfs -o size=%1k none \"$HOME\" && ");
    if (::geteuid() != 0 || run({}, QStringLiteral("unshare -m sh -c '%1:'").arg(mount.arg(4))).status != 0) {
        QSKIP("a small volume cannot be mounted here");
    }
    const QString script = mount
        + QStringLiteral(
            "{ [ -z \"%2\" ] || printf mine >\"$HOME/.Vantrel\"; }; \"$0\" %2; echo \"status $?\"; "
            "ls -A \"$HOME\"; [ -z \"%2\" ] || cat \"$HOME/.Vantrel\"");
    const auto inside = [&](int kilobytes, const QString& option) {
        return run({}, QStringLiteral("unshare -m sh -c '%1' \"$0\"").arg(script.arg(kilobytes).arg(option)));
    };
    const Run fresh = inside(4, QString());
    QCOMPARE(fresh.output, QStringLiteral("status 1\n"));
    QVERIFY2(fresh.errors.contains(QStringLiteral("cannot be written")), qPrintable(fresh.errors));
    QCOMPARE(inside(4, QStringLiteral("--force")).output, QStringLiteral("status 1\n.Vantrel\nmine"));
    // With room the same way succeeds.
    QVERIFY(inside(512, QString()).output.endsWith(QStringLiteral("status 0\n.Vantrel\n")));
}

// The same for any user: a file may not grow beyond 4 KiB.
void TestVantrelSetup::shortFile()
{
    const Run result = run({}, QStringLiteral("trap '' XFSZ; ulimit -f 8; exec \"$0\""));
    QCOMPARE(result.status, 1);
    QVERIFY2(result.errors.contains(QStringLiteral("cannot be written")), qPrintable(result.errors));
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList());
}

void TestVantrelSetup::fullOutput_data()
{
    QTest::addColumn<QString>("option");
    for (const char* option : {"--print", "--list", "--help", ""}) {
        QTest::newRow(option) << QString::fromLatin1(option);
    }
}

void TestVantrelSetup::fullOutput()
{
    QFETCH(QString, option);
    const Run result = run({}, QStringLiteral("exec \"$0\" %1 >/dev/full").arg(option));
    QCOMPARE(result.status, 1);
    // And nothing of the shell's own.
    QCOMPARE(result.errors, QStringLiteral("vantrel-setup: the standard output cannot be written\n"));
}

void TestVantrelSetup::endedInBetween_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("HUP") << 129;
    QTest::newRow("INT") << 130;
    QTest::newRow("TERM") << 143;
}

// The tool that compares what was written ends the set-up at that moment.
void TestVantrelSetup::endedInBetween()
{
    tool(QStringLiteral("cmp"),
        "#!/bin/sh\nls -A \"$HOME\" >\"$HOME/../seen\"; kill -" + QByteArray(QTest::currentDataTag())
            + " \"$PPID\"\n");
    dir->link(QStringLiteral("bin/ls"), QStandardPaths::findExecutable(QStringLiteral("ls")));
    onlyTools();
    QTEST(run().status, "status");
    QVERIFY(dir->read(QStringLiteral("seen")).startsWith(".Vantrel.new."));
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList());
}

// As it is installed, the data lies in a folder of its own; the tree can be anywhere.
void TestVantrelSetup::installed()
{
    QFile source(program);
    QVERIFY(source.open(QIODevice::ReadOnly));
    QByteArray text = source.readAll();
    QCOMPARE(text.count("@VANTREL_DATA_FROM_BIN@"), 1);
    text.replace("@VANTREL_DATA_FROM_BIN@", "../share/vantrel");
    program = dir->file(QStringLiteral("any where/bin/vantrel-setup"), text, 0755);
    const Run missing = run();
    QCOMPARE(missing.status, 1);
    QVERIFY2(missing.errors.contains(QStringLiteral("any where/bin/../share/vantrel")),
        qPrintable(missing.errors));
    copyExamples(QStringLiteral("any where/share/vantrel"));
    // It is found through a link, too.
    program = dir->link(QStringLiteral("bin/setup"), program);
    QCOMPARE(run().status, 0);
    QVERIFY(dir->exists(QStringLiteral("home/.Vantrel")));
}

VANTREL_TEST_MAIN(TestVantrelSetup)
#include "tst_VantrelSetup.moc"
