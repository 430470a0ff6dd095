#include "tests/support/SetupHome.h"
#include "tests/support/TestMain.h"

#include <QStandardPaths>
#include <QTest>

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

VANTREL_TEST_MAIN(TestVantrelSetupFaults)
#include "tst_VantrelSetupFaults.moc"
