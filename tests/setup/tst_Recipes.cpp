#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "tests/support/Recipes.h"
#include "tests/support/Settings.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QProcess>
#include <QRegularExpression>
#include <QSet>

/// The recipes as data: each reads as what it says, and its command line keeps the rules of the settings
/// file.
class TestRecipes : public QObject
{
    Q_OBJECT

private slots:
    void init() { resetSettings(); }
    void everyLineIsUnderstood();
    void whatTheyGive_data();
    void whatTheyGive();
    void alternativesStandTogether();
    void labelsTellThemApart();
    void parses_data() { lines(); }
    void parses();
    void isPlainAscii_data() { lines(); }
    void isPlainAscii();
    void typesCanMatch_data() { lines(); }
    void typesCanMatch();
    void commandKeepsTheRules_data() { lines(); }
    void commandKeepsTheRules();
    void scriptIsOneWordAndParses_data() { lines(); }
    void scriptIsOneWordAndParses();
    void scriptTakesItsPath_data() { lines(); }
    void scriptTakesItsPath();
    void programsAreNamed_data() { lines(); }
    void programsAreNamed();
    void packageBringsProgram_data();
    void packageBringsProgram();

private:
    static void lines();
    static QString commandOf(const QString& line);
    static QString scriptOf(const QString& command);
    void read(const QString& line);

    TestDir m_dir;
};

namespace {

/// What the shell does itself, and programs that every Debian system has.
const QStringList everywhere{"[", ":", "cd", "exec", "exit", "printf", "read", "set", "sh", "chmod", "chown",
    "date", "diff", "du", "expr", "find", "grep", "gzip", "head", "ln", "ls", "lsblk", "mkdir", "od", "rm",
    "rmdir", "sed", "sha256sum", "sort", "tar"};

const QString ifs = QStringLiteral("${IFS}");

int distinct(QStringList texts)
{
    texts.removeDuplicates();
    return texts.size();
}

/// The words that a script starts a program with.
QStringList programsOfScript(QString script)
{
    // What a nested shell runs counts as well, texts do not.
    script.replace(QLatin1String("sh${IFS}-c${IFS}'"), QLatin1String(";"));
    script.remove(QRegularExpression(QStringLiteral("'[^']*'")));
    script.replace(QLatin1String("$("), QLatin1String("("));
    script.remove(QRegularExpression(QStringLiteral("2>&1|[<>](\"[^\"]*\"|/dev/null)")));
    QStringList found;
    const QStringList commands = script.split(QRegularExpression(QStringLiteral("&&|\\|\\||[|;()]")));
    for (const QString& command : commands) {
        QStringList words = command.split(ifs);
        const bool wraps = QStringList{"exec", "sudo"}.contains(words.value(0));
        const QString nested = wraps ? words.value(1) : QString();
        found << words.value(0) << nested;
    }
    found.removeAll(QString());
    return found;
}

/// The files of a package, one a line, by Debian's list of them; empty where it is not installed.
QString filesOfPackage(const QString& package)
{
    QFile list(QStringLiteral("/var/lib/dpkg/info/%1.list").arg(package));
    return list.open(QIODevice::ReadOnly) ? QString::fromUtf8(list.readAll()) : QString();
}

/// The names of the packages that a package depends on.
QStringList dependenciesOf(const QString& package)
{
    QProcess query;
    query.start(QStringLiteral("dpkg-query"), {"-W", "-f", "${Depends}", package});
    query.waitForFinished();
    static const QRegularExpression separators("[,|]");
    QStringList names = QString::fromUtf8(query.readAllStandardOutput()).split(separators);
    for (QString& name : names) {
        name = name.section(QLatin1Char('('), 0, 0).trimmed();
    }
    return names;
}

} // namespace

void TestRecipes::lines()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("programs");
    const QList<Recipe> recipes = allRecipes();
    int row = 0;
    for (const Recipe& recipe : recipes) {
        for (const QString& line : recipe.lines) {
            QTest::addRow("%d %s", ++row, qPrintable(recipe.name)) << line << recipe.programs;
        }
    }
}

/// The command of a menu or assn line, as it is written.
QString TestRecipes::commandOf(const QString& line)
{
    const int before = line.startsWith(QLatin1String("menu=")) ? 4 : 2;
    const bool hasCommand = before == 4 || line.startsWith(QLatin1String("assn="));
    return hasCommand ? line.section(QLatin1Char('='), before) : QString();
}

/// The word that "sh -c" gets; empty where the command has none.
QString TestRecipes::scriptOf(const QString& command)
{
    const QStringList words = command.split(QLatin1Char(' '));
    const int shell = words.indexOf(QStringLiteral("sh"));
    return shell >= 0 && words.value(shell + 1) == QLatin1String("-c") ? words.value(shell + 2) : QString();
}

void TestRecipes::read(const QString& line)
{
    ReadConfig(m_dir.file(QStringLiteral(".Vantrel"), line.toUtf8() + '\n'));
}

// Nothing of the file is passed over: a misspelt mark would lose a recipe or join two.
void TestRecipes::everyLineIsUnderstood()
{
    static const QRegularExpression known(
        QStringLiteral("^$|^# |^#$|^#: (section \\S.*|recipe [a-z0-9-]+|gives [A-Z].*[^. ]|needs \\S+ from "
                       "[a-z0-9.+-]+)$|^[a-z]+=.*"));
    QFile file(projectFile(QStringLiteral("examples/recipes")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> all = file.readAll().split('\n');
    for (const QByteArray& line : all) {
        QVERIFY2(known.match(QString::fromUtf8(line)).hasMatch(), line.constData());
    }
    const QList<Recipe> recipes = allRecipes();
    QSet<QString> names;
    for (const Recipe& recipe : recipes) {
        names.insert(recipe.name);
        QVERIFY2(!recipe.gives.isEmpty(), qPrintable(recipe.name));
        QCOMPARE(recipe.lines.size(), 1);
        QCOMPARE(distinct(recipe.programs), recipe.programs.size());
    }
    QVERIFY2(names.size() >= 45, QByteArray::number(names.size()).constData());
}

void TestRecipes::whatTheyGive_data()
{
    QTest::addColumn<QString>("keyword");
    QTest::addColumn<QString>("types"); // one of them
    const auto row = [](const char* name, const char* keyword, const char* type) {
        QTest::newRow(name) << QString::fromLatin1(keyword) << QString::fromLatin1(type);
    };
    for (const char* name : {"pack-tar", "pack-zip", "pack-7z"}) {
        row(name, "terminalex", "*");
    }
    for (const char* name : {"unpack-tar", "list-tar", "test-tar", "mount-archive"}) {
        row(name, "terminalex", "tgz");
    }
    for (const char* name : {"unpack-zip", "list-zip", "test-zip"}) {
        row(name, "terminalex", "zip");
    }
    for (const char* name : {"unpack-7z", "list-7z", "test-7z"}) {
        row(name, "terminalex", "7z");
    }
    for (const char* name : {"search-name", "search-content", "rename-many", "rename-pattern", "terminal-in",
             "terminal-root", "unmount", "git-status", "git-log", "checksums-write"}) {
        row(name, "terminalex", ".");
    }
    for (const char* name : {"view", "view-hex", "edit-terminal", "encrypt"}) {
        row(name, "terminalex", "*");
    }
    for (const char* name : {"compare-window", "compare-files", "link-other"}) {
        row(name, "compare", "*");
    }
    for (const char* name : {"compare-folders", "synchronise"}) {
        row(name, "compare", ".");
    }
    for (const char* name : {"trash", "link"}) {
        row(name, "sendto", ".");
    }
    for (const char* name : {"edit", "edit-hex", "mail", "bluetooth", "phone", "write-protect"}) {
        row(name, "sendto", "*");
    }
    for (const char* name : {"trash-restore", "terminal", "mount-drive", "sftp", "sftp-mount", "new-file"}) {
        row(name, "terminal", ".");
    }
    row("mount-image", "terminalex", "iso");
    row("picture-edit", "sendto", "png");
    row("office-pdf", "sendto", "odt");
    row("media-play", "sendto", ".");
    row("print", "sendto", "pdf");
    row("make-executable", "sendto", "sh");
    row("permissions", "terminalex", ".");
    row("disk-map", "sendto", ".");
    row("decrypt", "terminalex", "gpg");
    row("verify-signature", "terminalex", "sig");
    row("checksums-verify", "terminalex", "sha256");
    row("run", "execute", "*");
}

void TestRecipes::whatTheyGive()
{
    QFETCH(QString, keyword);
    QFETCH(QString, types);
    const Recipe recipe = recipeNamed(QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(recipe.lines.size(), 1);
    const QStringList fields = recipe.lines.constFirst().split(QLatin1Char('='));
    QCOMPARE(fields.value(1), keyword);
    QVERIFY2(fields.value(2).split(QLatin1Char('|')).contains(types), qPrintable(fields.value(2)));
}

// The set-up takes the first of them that works, as it comes upon them.
void TestRecipes::alternativesStandTogether()
{
    QStringList seen;
    const QList<Recipe> recipes = allRecipes();
    for (const Recipe& recipe : recipes) {
        QVERIFY2(seen.isEmpty() || recipe.name == seen.constLast() || !seen.contains(recipe.name),
            qPrintable(recipe.name));
        seen.append(recipe.name);
    }
}

void TestRecipes::labelsTellThemApart()
{
    QMap<QString, QString> nameOf;
    const QList<Recipe> recipes = allRecipes();
    for (const Recipe& recipe : recipes) {
        const QStringList fields = recipe.lines.constFirst().split(QLatin1Char('='));
        if (fields.constFirst() != QLatin1String("menu")) {
            continue;
        }
        // The same label may stand for what is offered for other suffixes.
        const QStringList types = fields.value(2).split(QLatin1Char('|'));
        for (const QString& type : types) {
            const QString offer = fields.value(3) + QLatin1Char(' ') + type;
            QCOMPARE(nameOf.value(offer, recipe.name), recipe.name);
            nameOf.insert(offer, recipe.name);
        }
    }
    QVERIFY(nameOf.size() > 100);
}

// What the reader makes of a line is what is written there, to the last character.
void TestRecipes::parses()
{
    static const QMap<QString, int> codes{{"properties", 101}, {"totalsize", 102}, {"checksum", 103},
        {"newdir", 105}, {"rename", 106}, {"copy", 107}, {"delete", 108}, {"sendto", 109}, {"clipboard", 110},
        {"compare", 113}, {"execute", 114}, {"terminal", 115}, {"terminalex", 116}};
    QFETCH(QString, line);
    read(line);
    const QStringList fields = line.split(QLatin1Char('='));
    if (fields.constFirst() == QLatin1String("menu")) {
        QCOMPARE(gstMenu.size(), 1);
        const LSMENU& entry = gstMenu.constFirst();
        QVERIFY(codes.contains(fields.value(1)));
        QCOMPARE(entry.code, codes.value(fields.value(1)));
        QCOMPARE(entry.types, QLatin1Char('|') + fields.value(2) + QLatin1Char('|'));
        QCOMPARE(entry.label, fields.value(3));
        QCOMPARE(entry.command, commandOf(line));
        QVERIFY(!entry.label.isEmpty());
        const QVector<int> launching{CommandSendTo, CommandCompare, CommandTerminal, CommandTerminalEx};
        QCOMPARE(!entry.command.isEmpty(), launching.contains(entry.code));
    } else if (fields.constFirst() == QLatin1String("assn")) {
        const QStringList suffixes = fields.value(1).split(QLatin1Char('|'));
        QCOMPARE(gmFileAssn.size(), distinct(suffixes));
        for (const QString& suffix : suffixes) {
            QCOMPARE(gmFileAssn.value(suffix), fields.value(2));
        }
    } else {
        const QString& key = fields.constFirst();
        QVERIFY2(key == QLatin1String("window") || key == QLatin1String("norecurse"), qPrintable(line));
        QCOMPARE(
            key == QLatin1String("window") ? QString::number(giWindowArrange) : gsNoRecurse, fields.value(1));
    }
}

// The file is read in the locale's encoding; plain ASCII is the same in all.
void TestRecipes::isPlainAscii()
{
    QFETCH(QString, line);
    for (const QChar c : qAsConst(line)) {
        QVERIFY2(c >= QLatin1Char(' ') && c <= QLatin1Char('~'), qPrintable(line));
    }
}

// A suffix is what follows the last dot, in lower case.
void TestRecipes::typesCanMatch()
{
    static const QRegularExpression suffix(QStringLiteral("^([a-z0-9]+|\\*|\\.)$"));
    QFETCH(QString, line);
    const QStringList fields = line.split(QLatin1Char('='));
    const bool association = fields.constFirst() == QLatin1String("assn");
    if (!association && fields.constFirst() != QLatin1String("menu")) {
        return;
    }
    const QStringList types = fields.value(association ? 1 : 2).split(QLatin1Char('|'));
    for (const QString& type : types) {
        const bool noDot = association && type.isEmpty();
        QVERIFY2(noDot || suffix.match(type).hasMatch(), qPrintable(type));
    }
    if (association) {
        QVERIFY(!types.contains(QStringLiteral("*")) && !types.contains(QStringLiteral(".")));
    }
    // "assn=|" is the empty suffix, twice.
    QVERIFY(line.startsWith(QLatin1String("assn=|=")) || distinct(types) == types.size());
}

void TestRecipes::commandKeepsTheRules()
{
    QFETCH(QString, line);
    const QString command = commandOf(line);
    QVERIFY2(!command.contains(QLatin1Char('=')), qPrintable(command));
    QCOMPARE(command, command.simplified());
    // Nothing is expanded: no home folder, no place for the path. Only a shell knows these.
    const QStringList words = command.split(QLatin1Char(' '));
    for (const QString& word : words) {
        if (word == scriptOf(command)) {
            continue;
        }
        static const QRegularExpression special(QStringLiteral("[~$%'\"\\\\*?{}<>|;&()]"));
        QVERIFY2(!word.contains(special), qPrintable(word));
    }
}

void TestRecipes::scriptIsOneWordAndParses()
{
    QFETCH(QString, line);
    const QString command = commandOf(line);
    if (!command.contains(QLatin1String("sh -c "))) {
        return;
    }
    const QString script = scriptOf(command);
    QVERIFY(!script.isEmpty());
    // The script, the name that it has in messages, and then the path.
    QVERIFY2(
        command.endsWith(QLatin1String("sh -c ") + script + QLatin1String(" vantrel")), qPrintable(command));
    QProcess shell;
    shell.start(QStringLiteral("sh"), {"-n", "-c", script});
    QVERIFY(shell.waitForFinished());
    QCOMPARE(shell.readAllStandardError(), QByteArray());
    QCOMPARE(shell.exitCode(), 0);
    // ${IFS} is no blank to the shell's grammar: neither before a redirection's number nor after a reserved
    // word.
    static const QRegularExpression grammar(
        QStringLiteral("\\$\\{IFS\\}\\d+[<>]|(^|[;&|(])(if|for|while|until|case|\\{|!)\\$\\{IFS\\}"));
    QVERIFY2(!script.contains(grammar), qPrintable(script));
}

void TestRecipes::scriptTakesItsPath()
{
    QFETCH(QString, line);
    const QString script = scriptOf(commandOf(line));
    if (script.isEmpty()) {
        return;
    }
    const QString keyword = line.section(QLatin1Char('='), 1, 1);
    static const QRegularExpression first(QStringLiteral("\"[^\"]*\\$(1|\\{1)"));
    static const QRegularExpression second(QStringLiteral("\"[^\"]*\\$(2|\\{2)"));
    QCOMPARE(script.contains(first) || script.contains(QLatin1String("\"${1")),
        keyword != QLatin1String("terminal"));
    QCOMPARE(script.contains(second), keyword == QLatin1String("compare"));
    // A path is never parted at its blanks: every expansion but that of IFS is quoted.
    QString bare = script;
    bare.remove(ifs).remove(QRegularExpression(QStringLiteral("'[^']*'")));
    bare.remove(
        QRegularExpression(QStringLiteral("\"(\\$\\{\\d##\"\\$\\d\"[^}]*\\}|\\$\\([^)]*\\)|[^\"])*\"")));
    QVERIFY2(!bare.contains(QLatin1Char('$')), qPrintable(bare));
}

// Whatever a recipe starts stands in its "needs" lines, or is on every machine; nothing stands there in vain.
void TestRecipes::programsAreNamed()
{
    QFETCH(QString, line);
    QFETCH(QStringList, programs);
    const QString command = commandOf(line);
    if (command.isEmpty()) {
        QCOMPARE(programs, QStringList());
        return;
    }
    const QStringList words = command.split(QLatin1Char(' '));
    QStringList started{words.value(0)};
    if (words.value(1) == QLatin1String("-e")) {
        started << words.value(2);
    }
    started << programsOfScript(scriptOf(command));
    for (const QString& program : qAsConst(started)) {
        const bool variable = program.startsWith(QLatin1Char('"'));
        // The trash shows its errors in a terminal where there is one.
        const bool shown
            = program == QLatin1String("x-terminal-emulator") && line.contains(QLatin1String("trash"));
        QVERIFY2(variable || shown || everywhere.contains(program) || programs.contains(program),
            qPrintable(program));
    }
    for (const QString& program : qAsConst(programs)) {
        // rsync starts ssh, gio starts xdg-open, tar starts zstd, and gpg its agent, which asks with
        // pinentry.
        const QStringList indirect{"ssh", "xdg-open", "zstd", "gpg-agent", "pinentry"};
        QVERIFY2(started.contains(program) || indirect.contains(program), qPrintable(program));
    }
}

void TestRecipes::packageBringsProgram_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("package");
    QSet<QString> seen;
    const QList<Recipe> recipes = allRecipes();
    for (const Recipe& recipe : recipes) {
        for (int i = 0; i < recipe.programs.size(); ++i) {
            const QString program = recipe.programs.at(i);
            if (!seen.contains(program)) {
                seen.insert(program);
                QTest::newRow(qPrintable(program)) << program << recipe.packages.at(i);
            }
        }
    }
}

// Where Debian's list of files is there and has the package, it has the program; or what it depends on has,
// as where a newer release has renamed it.
void TestRecipes::packageBringsProgram()
{
    QFETCH(QString, program);
    QFETCH(QString, package);
    const QList<Recipe> recipes = allRecipes();
    for (const Recipe& recipe : recipes) {
        const int at = recipe.programs.indexOf(program);
        QVERIFY(at < 0 || recipe.packages.at(at) == package);
    }
    // These are names that several packages share; the system keeps a link.
    static const QStringList shared{"x-terminal-emulator", "display", "convert", "identify", "pinentry"};
    QString files = filesOfPackage(package);
    if (shared.contains(program) || files.isEmpty()) {
        return;
    }
    const QString file = QStringLiteral("bin/%1\n").arg(program);
    if (!files.contains(file)) {
        const QStringList dependencies = dependenciesOf(package);
        for (const QString& dependency : dependencies) {
            files += filesOfPackage(dependency);
        }
    }
    QVERIFY2(files.contains(file), qPrintable(package));
}

VANTREL_TEST_MAIN(TestRecipes)
#include "tst_Recipes.moc"
