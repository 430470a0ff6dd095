#include "check/CommandCheck.h"
#include "tests/support/Recipes.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"
#include "tests/support/TextRows.h"

#include <QStandardPaths>

class TestCommandCheck : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void kinds_data();
    void kinds();
    void scripts_data();
    void scripts();
    void endlessScripts_data();
    void endlessScripts();
    void texts_data();
    void texts();
    void filesAreTakenByTheirPath();
    void recipesHaveNoMistake_data();
    void recipesHaveNoMistake();
    void recipesFindTheirPrograms_data() { recipesHaveNoMistake_data(); }
    void recipesFindTheirPrograms();

private:
    TestDir m_dir;
    const QList<Recipe> m_recipes = allRecipes();
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

/// All that can be found is one folder of stand-ins. Another has what every Debian system has.
void TestCommandCheck::initTestCase()
{
    for (const char* name : {"viewer", "sh", "x-terminal-emulator", "gnome-terminal", "sudo", "env", "nice",
             "timeout", "setsid"}) {
        m_dir.file(QStringLiteral("bin/") + QLatin1String(name), "#!/bin/sh\n", 0755);
    }
    for (const char* name : {"chmod", "chown", "date", "diff", "du", "expr", "find", "findmnt", "grep",
             "gzip", "head", "less", "ln", "ls", "lsblk", "mkdir", "od", "rm", "rmdir", "sed",
             "sensible-editor", "sh", "sha256sum", "sort", "su", "tar"}) {
        m_dir.file(QStringLiteral("debian/") + QLatin1String(name), "#!/bin/sh\n", 0755);
    }
    m_dir.file(QStringLiteral("bin/no-program"));
    qputenv("PATH", m_dir.path(QStringLiteral("bin")).toLocal8Bit());
}

void TestCommandCheck::kinds_data()
{
    const auto row = textRows("command", "kinds");
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
    row("sudo -u root editor", lost);
    row("sudo -uroot -nE -- editor", "");
    row("sudo -uroot -n -- editor", lost);
    row("sudo --user=root --user root viewer", "");
    row("sudo -u root A=b editor", lost);
    row("sudo -s editor", "");
    row("sudo", "");
    row("env editor", lost);
    row("env A=b C=d editor", lost);
    row("env A=b viewer", "");
    row("sudo A=b", "");
    row("env A=b", "");
    row("env -i -u X A=b editor", lost);
    row("env -S editor", "");
    row("nice -n 5 editor", lost);
    row("nice -n 5 viewer", "");
    row("nice -10 editor", lost);
    row("timeout 5 editor", lost);
    row("timeout -k 1 -s KILL 5m viewer", "");
    row("timeout 5", "");
    row("setsid -f editor", lost);
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
    row("sh -c echo${IFS}'a", "quotes");
    row("sh -c echo${IFS}\"a", "quotes");
    row("sh -c viewer 'a'", "quotes");

    row("viewer %f", "not-expanded");
    row("viewer %1", "not-expanded");
    row("viewer ~/x", "not-expanded");
    row("viewer $HOME", "not-expanded");
    row("viewer %f $x", "not-expanded, not-expanded");
    row("viewer 100% ~ a$b %ab", "");
    row("sh -c ~/x", "");
    row("sh -c $x $y", "not-expanded");
}

void TestCommandCheck::scripts_data()
{
    const auto row = textRows("command", "programs"); // that are not found
    row("sh -c viewer", "");
    row("sh -c editor", "editor");
    row("sh -c editor${IFS}-x", "editor");
    row("x-terminal-emulator -e sh -c editor", "editor");
    row("/bin/sh -ec editor vantrel", "editor");
    row("sh -e -c editor", "editor");
    row("sh --norc editor", "");
    row("sh -c viewer|a&&b;c&d${IFS}e", "a b c d");
    row("sh -c a${IFS}x;a", "a");
    row("sh -c viewer||a;b", "b");
    row("sh -c viewer||(a;b)", "b");
    row("sh -c (a)2>&1|b", "a b");
    row("sh -c <x${IFS}a>y${IFS}z", "a");
    row("sh -c a>(b)", "");
    row("sh -c viewer<<x", "");
    row("sh -c if${IFS}a;then${IFS}b;fi", "a b");
    row("sh -c A=b${IFS}a", "a");
    row("sh -c PATH=/x${IFS}a", "");
    row("sh -c [${IFS}-e${IFS}x${IFS}]&&cd${IFS}x;printf${IFS}a", "");
    row(R"(sh -c "$1";'a'\b)", "ab");
    row(R"(sh -c a$1;"b$1";"${x:-b}";~/c;d*)", "");
    row("sh -c ./a;x/b;/nowhere/c", "/nowhere/c");
    row(R"x(sh -c viewer${IFS}"$(a${IFS}"$1"|b)")x", "a b");
    row("sh -c viewer${IFS}${1##*/$(a)};b", "a b");
    row("sh -c viewer${IFS}${1:-'x'};b", "b");
    row(R"(sh -c viewer${IFS}';a'";b";c)", "c");
    row("sh -c exec${IFS}a", "a");
    row(R"(sh -c exec${IFS}x-terminal-emulator${IFS}-e${IFS}sh${IFS}-c${IFS}'a;"$1"';b)", "a b");
    row("sh -c sudo${IFS}-u${IFS}x${IFS}a", "a");
    row("sh -c sudo${IFS}-u${IFS}$1${IFS}$2", "");
    row("sh -c command${IFS}-v${IFS}a&&a", "");
    row("sh -c which${IFS}a&&a", "");
    row("sh -c a(){${IFS}b;};a", "");
    row("sh -c `a`;b", "");
    row("sh -c $((1+1));b", "");
    row("sh -c a;'b", "");
    row("sh -c", "");
    row("viewer -c editor", "");
}

void TestCommandCheck::scripts()
{
    QFETCH(QString, command);
    QStringList programs;
    for (const Finding& finding : checkCommand(1, command)) {
        if (finding.kind == QLatin1String("program-not-found")) {
            programs.append(finding.text.section(QLatin1Char('"'), 1, 1));
        }
    }
    QTEST(programs.join(QLatin1Char(' ')), "programs");
}

void TestCommandCheck::endlessScripts_data()
{
    QTest::addColumn<QString>("part");
    for (const char* part : {"a;", "$(", "(", "${a", "\\", "\"$(", "a|", "$", "<"}) {
        QTest::newRow(part) << QString::fromLatin1(part);
    }
}

/// Whatever stands there, it is read to its end.
void TestCommandCheck::endlessScripts()
{
    QFETCH(QString, part);
    for (const int length : {1, 3, 1000, 30000, 1000000}) {
        const Findings found = checkCommand(1, QStringLiteral("sh -c ") + part.repeated(length));
        QVERIFY(found.size() <= 2);
    }
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
    const auto row = textRows("command", "text");
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

/// Where all that a recipe needs is there, nothing is said of it.
void TestCommandCheck::recipesFindTheirPrograms()
{
    const QString name = QString::fromLatin1(QTest::currentDataTag()).section(QLatin1Char(' '), 0, 0);
    QFETCH(QString, command);
    TestDir machine;
    for (const Recipe& recipe : m_recipes) {
        const bool isIt = recipe.name == name && recipe.lines.first().endsWith(QLatin1Char('=') + command);
        for (const QString& program : isIt ? recipe.programs : QStringList()) {
            machine.file(program, "#!/bin/sh\n", 0755);
        }
    }
    const QByteArray before = qgetenv("PATH");
    qputenv("PATH", (machine.path() + QLatin1Char(':') + m_dir.path(QStringLiteral("debian"))).toLocal8Bit());
    const Findings found = checkCommand(1, command);
    qputenv("PATH", before);
    QCOMPARE(kindsOf(found), QString());
}

VANTREL_TEST_MAIN(TestCommandCheck)
#include "tst_CommandCheck.moc"
