#include "check/CommandCheck.h"
#include "tests/support/Recipes.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QStandardPaths>

class TestCommandCheck : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void kinds_data();
    void kinds();
    void texts_data();
    void texts();
    void filesAreTakenByTheirPath();
    void recipesHaveNoMistake_data();
    void recipesHaveNoMistake();

private:
    TestDir m_dir;
};

namespace {

QString kindsOf(const Findings& findings)
{
    QStringList all;
    for (const Finding& finding : findings) {
        all.append(finding.kind);
    }
    return all.join(QStringLiteral(", "));
}

} // namespace

/// All that can be found is one folder of stand-ins.
void TestCommandCheck::initTestCase()
{
    for (const char* name : {"viewer", "sh", "x-terminal-emulator", "gnome-terminal", "sudo", "env"}) {
        m_dir.file(QStringLiteral("bin/") + QLatin1String(name), "#!/bin/sh\n", 0755);
    }
    m_dir.file(QStringLiteral("bin/no-program"));
    qputenv("PATH", m_dir.path(QStringLiteral("bin")).toLocal8Bit());
}

void TestCommandCheck::kinds_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("kinds");
    const auto row = [](const char* command, const char* kinds) {
        QTest::newRow(command) << QString::fromLatin1(command) << QString::fromLatin1(kinds);
    };
    const char* const lost = "program-not-found";
    row("viewer", "");
    row("viewer --full  -a", "");
    row("editor", lost);
    row("no-program", lost);
    row("~/bin/viewer", lost);
    row("$HOME/viewer", lost);
    row("bin/viewer", lost);
    row("./viewer", lost);
    row("/nowhere/viewer", lost);
    row("\"viewer\"", "program-not-found, quotes");

    row("x-terminal-emulator", "");
    row("x-terminal-emulator -e viewer -x", "");
    row("x-terminal-emulator -e editor", lost);
    row("x-terminal-emulator -T x -e editor", lost);
    row("x-terminal-emulator -x editor", lost);
    row("gnome-terminal -- editor", lost);
    row("x-terminal-emulator -e", "");
    row("x-terminal-emulator editor", "");
    row("/nowhere/x-terminal-emulator -e editor", "program-not-found, program-not-found");
    row("viewer -e editor", "");
    row("sudo viewer", "");
    row("sudo editor", lost);
    row("sudo -u root editor", "");
    row("sudo", "");
    row("env editor", lost);
    row("env A=b C=d editor", lost);
    row("env A=b viewer", "");
    row("sudo A=b", lost);
    row("env A=b", "");
    row("x-terminal-emulator -e sudo editor", lost);

    row("viewer \"a b\"", "quotes");
    row("viewer 'a b'", "quotes");
    row("viewer \"a\" 'b'", "quotes");
    row("sh -c \"$0\"", "");
    row(R"(sh -c echo${IFS}'it"s'${IFS}"it's")", "");
    row("sh -c echo${IFS}\\\"", "");
    row("sh -c echo${IFS}'\\'", "");
    row("sh -c 'echo a'", "quotes");
    row("sh -c echo${IFS}\"a b\"", "quotes");
    row("sh -c x 'a'", "quotes");

    row("viewer %f", "not-expanded");
    row("viewer %1", "not-expanded");
    row("viewer ~/x", "not-expanded");
    row("viewer $HOME", "not-expanded");
    row("viewer %f $x", "not-expanded, not-expanded");
    row("viewer 100% ~ a$b %ab", "");
    row("sh -c ~/x", "");
    row("sh -c $x $y", "not-expanded");
}

void TestCommandCheck::kinds()
{
    QFETCH(QString, command);
    const Findings found = checkCommand(7, command);
    QTEST(kindsOf(found), "kinds");
    for (const Finding& finding : found) {
        QCOMPARE(finding.line, 7);
    }
}

void TestCommandCheck::texts_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* command, const char* text) {
        QTest::newRow(command) << QString::fromLatin1(command) << QString::fromLatin1(text);
    };
    row("editor %1", "the program \"editor\" is not found");
    row("~/x", "the program \"~/x\" is not found: nothing is expanded, write its path in full");
    row("/a/$b", "the program \"/a/$b\" is not found: nothing is expanded, write its path in full");
    row("bin/x", "the program \"bin/x\" is looked for in the panel's folder: write its path in full");
    row("viewer 'a b'", "quotes mean nothing: the command is parted at its blanks all the same");
    row("viewer %f", "\"%f\" is handed on as it is: nothing is expanded");
}

void TestCommandCheck::texts()
{
    QFETCH(QString, command);
    const Findings found = checkCommand(1, command);
    QVERIFY(!found.isEmpty());
    QTEST(found.first().text, "text");
}

void TestCommandCheck::filesAreTakenByTheirPath()
{
    const QString program = m_dir.file(QStringLiteral("odd$/viewer"), "#!/bin/sh\n", 0755);
    QCOMPARE(kindsOf(checkCommand(1, program)), QString());
    QCOMPARE(kindsOf(checkCommand(1, m_dir.file(QStringLiteral("plain"), "x", 0644))),
        QStringLiteral("program-not-found"));
    QCOMPARE(kindsOf(checkCommand(1, m_dir.folder(QStringLiteral("folder")))),
        QStringLiteral("program-not-found"));
}

void TestCommandCheck::recipesHaveNoMistake_data()
{
    QTest::addColumn<QString>("command");
    const QList<Recipe> recipes = allRecipes();
    QVERIFY(recipes.size() > 45);
    int number = 0;
    for (const Recipe& recipe : recipes) {
        for (const QString& line : recipe.lines) {
            const bool isMenu = line.startsWith(QLatin1String("menu="));
            const QString command = line.section(QLatin1Char('='), isMenu ? 4 : 2);
            if (!command.isEmpty() && (isMenu || line.startsWith(QLatin1String("assn=")))) {
                QTest::addRow("%s %d", qPrintable(recipe.name), ++number) << command;
            }
        }
    }
}

/// Only that a program is not on the machine may be said of a recipe.
void TestCommandCheck::recipesHaveNoMistake()
{
    QFETCH(QString, command);
    for (const Finding& finding : checkCommand(1, command)) {
        QCOMPARE(finding.kind, QStringLiteral("program-not-found"));
        QVERIFY2(!finding.text.contains(QLatin1Char(':')), qPrintable(finding.text));
    }
}

VANTREL_TEST_MAIN(TestCommandCheck)
#include "tst_CommandCheck.moc"
