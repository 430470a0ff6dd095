#include "tests/support/SetupHome.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QStandardPaths>
#include <QTest>

#include <sys/stat.h>

/// vantrel-setup where something goes wrong beside it: programs that are missing or fail, other runs at the
/// same time, signals, and an output that nobody takes.
class TestVantrelSetupFaults : public QObject, private SetupHome
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }

    void copyOfAnotherRunIsKept_data();
    void copyOfAnotherRunIsKept();
    void severalAtOnce();
    void toolThatFails_data();
    void toolThatFails();
    void unreadableMounts_data();
    void unreadableMounts();
    void keepsPermissions_data();
    void keepsPermissions();
    void asterisksNameNoFiles();
    void fullOutputAfterReplacing();
    void writesThroughToTheDisk_data();
    void writesThroughToTheDisk();
    void replacingThatFails();

private:
    QByteArray settings() const { return dir->read(QStringLiteral("home/.Vantrel")); }
    QStringList kept() const
    {
        return dir->tree(QStringLiteral("home")).filter(QStringLiteral(".Vantrel.2"));
    }
    QByteArray copy(const QString& name) const { return dir->read(QStringLiteral("home/") + name); }
    QByteArray real(const char* name) const;
};

/// Where a program lies that "bin" has a stand-in for.
QByteArray TestVantrelSetupFaults::real(const char* name) const
{
    return QStandardPaths::findExecutable(QLatin1String(name)).toLocal8Bit();
}

void TestVantrelSetupFaults::copyOfAnotherRunIsKept_data()
{
    QTest::addColumn<bool>("links");
    QTest::addColumn<bool>("copies");
    QTest::newRow("then linked") << true << true;
    QTest::newRow("then copied") << false << true;
    QTest::newRow("then neither") << false << false;
}

// Another run makes its copy right before this one.
void TestVantrelSetupFaults::copyOfAnotherRunIsKept()
{
    QFETCH(bool, links);
    QFETCH(bool, copies);
    tool(QStringLiteral("ln"),
        "#!/bin/sh\nfor name do :; done\n"
        "[ -e \"$HOME/../taken\" ] || { echo other >\"$name\"; : >\"$HOME/../taken\"; exit 1; }\n"
            + (links ? "exec " + real("ln") + " \"$@\"\n" : QByteArray("exit 1\n")));
    tool(QStringLiteral("cp"), "#!/bin/sh\n" + (copies ? "exec " + real("cp") + " \"$@\"\n" : "exit 1\n"));
    dir->file(QStringLiteral("home/.Vantrel"), "mine\n");
    onlyTools();
    const SetupRun result = run({"--force"});
    QCOMPARE(result.status, copies ? 0 : 1);
    QCOMPARE(kept().size(), copies ? 2 : 1);
    QCOMPARE(copy(kept().constFirst()), QByteArray("other\n"));
    QCOMPARE(settings() == "mine\n", !copies);
    if (copies) {
        QVERIFY2(kept().constLast().endsWith(QStringLiteral(".2")), qPrintable(kept().constLast()));
        QCOMPARE(copy(kept().constLast()), QByteArray("mine\n"));
        QVERIFY(result.output.contains(kept().constLast() + QLatin1Char('\n')));
    }
    QCOMPARE(dir->tree(QStringLiteral("home")).size(), kept().size() + 1);
}

// They come to the first name of a copy together.
void TestVantrelSetupFaults::severalAtOnce()
{
    tool(QStringLiteral("ln"),
        "#!/bin/sh\n: >\"$HOME/../here.$PPID\"\n"
        "until n=0; for f in \"$HOME\"/../here.*; do n=$((n + 1)); done; [ $n -ge 3 ]; do\n"
        "    sleep 0.01\ndone\nexec "
            + real("ln") + " \"$@\"\n");
    dir->link(QStringLiteral("bin/sleep"), QString::fromLocal8Bit(real("sleep")));
    dir->file(QStringLiteral("home/.Vantrel"), "mine\n");
    onlyTools();
    const SetupRun result = run({},
        QStringLiteral("\"$0\" --force & a=$!; \"$0\" --force & b=$!; \"$0\" --force & c=$!\n"
                       "wait $a && wait $b && wait $c"));
    QVERIFY2(result.status == 0, qPrintable(result.errors));
    int mine = 0;
    const QStringList all = kept();
    for (const QString& each : all) {
        const QByteArray content = copy(each);
        mine += content == "mine\n" ? 1 : 0;
        QVERIFY2(content == "mine\n" || content == settings(), qPrintable(each));
    }
    QCOMPARE(all.size(), 3);
    QVERIFY(mine > 0);
    QVERIFY(settings().contains("menu="));
    QCOMPARE(dir->tree(QStringLiteral("home")).size(), 4);
}

void TestVantrelSetupFaults::toolThatFails_data()
{
    QTest::addColumn<bool>("there");
    for (const char* name : {"awk", "sed", "sort"}) {
        QTest::addRow("%s is missing", name) << false;
        QTest::addRow("%s fails", name) << true;
    }
}

void TestVantrelSetupFaults::toolThatFails()
{
    QFETCH(bool, there);
    const QString name = QString::fromLatin1(QTest::currentDataTag()).section(QLatin1Char(' '), 0, 0);
    dir->file(QStringLiteral("mounts"), "/dev/sdb1 /media/stick vfat rw 0 0\n");
    tool(name, "#!/bin/sh\nexit 2\n");
    onlyTools();
    if (!there) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("bin/") + name)));
    }
    const SetupRun result = run();
    QCOMPARE(result.status, 1);
    QVERIFY2(result.errors.contains(QStringLiteral("cannot be read with")), qPrintable(result.errors));
    QCOMPARE(result.output, QString());
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList());
}

void TestVantrelSetupFaults::unreadableMounts_data()
{
    QTest::addColumn<QString>("mounts");
    QTest::newRow("not there") << QStringLiteral("nothing");
    QTest::newRow("folder") << QStringLiteral("home");
}

void TestVantrelSetupFaults::unreadableMounts()
{
    QFETCH(QString, mounts);
    environment.insert(QStringLiteral("VANTREL_MOUNTS"), dir->path(mounts));
    const SetupRun result = run();
    QCOMPARE(result.status, 1);
    QVERIFY2(result.errors.contains(dir->path(mounts)), qPrintable(result.errors));
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList());
}

void TestVantrelSetupFaults::keepsPermissions_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("link");
    QTest::newRow("private") << 0600 << false;
    QTest::newRow("private, behind a link") << 0600 << true;
    QTest::newRow("wide") << 0664 << false;
    QTest::newRow("read-only") << 0400 << false;
}

void TestVantrelSetupFaults::keepsPermissions()
{
    QFETCH(int, mode);
    QFETCH(bool, link);
    const QString name = link ? QStringLiteral("elsewhere") : QStringLiteral("home/.Vantrel");
    dir->file(name, "mine\n");
    dir->setMode(name, static_cast<unsigned>(mode));
    if (link) {
        dir->link(QStringLiteral("home/.Vantrel"), dir->path(name));
    }
    QCOMPARE(run({"--force"}).status, 0);
    for (const QString& each : {name, QStringLiteral("home/") + kept().value(0)}) {
        struct stat info = {};
        QCOMPARE(::stat(QFile::encodeName(dir->path(each)).constData(), &info), 0);
        QCOMPARE(static_cast<int>(info.st_mode & 07777U), mode);
    }
    QVERIFY(settings().contains("menu="));
}

void TestVantrelSetupFaults::asterisksNameNoFiles()
{
    dir->file(QStringLiteral("only/mail"));
    dir->file(QStringLiteral("only/print"));
    const SetupRun result
        = run({"--print", "--without", "*"}, QStringLiteral("cd only && exec \"$0\" \"$@\""));
    QCOMPARE(result.status, 2);
    QVERIFY2(result.errors.contains(QStringLiteral("no recipe \"*\"")), qPrintable(result.errors));
    QCOMPARE(result.output, QString());
}

// What was there is kept as a file of its own, and the new one is in its place.
void TestVantrelSetupFaults::fullOutputAfterReplacing()
{
    dir->file(QStringLiteral("home/.Vantrel"), "mine\n");
    const SetupRun result = run({}, QStringLiteral("exec \"$0\" --force >/dev/full"));
    QCOMPARE(result.status, 1);
    QCOMPARE(result.errors, QStringLiteral("vantrel-setup: the standard output cannot be written\n"));
    QCOMPARE(kept().size(), 1);
    QCOMPARE(copy(kept().constFirst()), QByteArray("mine\n"));
    QVERIFY(settings().contains("menu="));
}

void TestVantrelSetupFaults::writesThroughToTheDisk_data()
{
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("works") << QByteArray("exit 0\n");
    QTest::newRow("fails, which is let pass") << QByteArray("echo no >&2\nexit 1\n");
}

// All of the new file, before it has its name.
void TestVantrelSetupFaults::writesThroughToTheDisk()
{
    QFETCH(QByteArray, end);
    tool(QStringLiteral("sync"),
        "#!/bin/sh\nfor name do :; done\n[ -e \"$HOME/.Vantrel\" ] || cat \"$name\" >\"$HOME/../seen\"\n"
            + end);
    onlyTools();
    const SetupRun result = run();
    QCOMPARE(result.status, 0);
    QCOMPARE(result.errors, QString());
    QVERIFY(settings().contains("menu="));
    QCOMPARE(dir->read(QStringLiteral("seen")), settings());
}

// No second name of the settings is left.
void TestVantrelSetupFaults::replacingThatFails()
{
    tool(QStringLiteral("mv"), "#!/bin/sh\nexit 1\n");
    dir->file(QStringLiteral("home/.Vantrel"), "mine\n");
    onlyTools();
    const SetupRun result = run({"--force"});
    QCOMPARE(result.status, 1);
    QVERIFY2(result.errors.contains(QStringLiteral("cannot be replaced")), qPrintable(result.errors));
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList{".Vantrel"});
    QCOMPARE(settings(), QByteArray("mine\n"));
}

VANTREL_TEST_MAIN(TestVantrelSetupFaults)
#include "tst_VantrelSetupFaults.moc"
