#include "tests/support/RecipeRun.h"

#include "app/aGlobal.h"
#include "panel/MPanel.h"

#include <QFile>
#include <QMap>
#include <QTest>

namespace {

/// Runs what follows "-e" with the answers as its input, and keeps what it shows.
const QByteArray terminal = "#!/bin/sh\n"
                            "[ \"$1\" = -e ] || exit 9\n"
                            "shift\n"
                            "here=${0%/*}\n"
                            "\"$@\" <\"$here/answers\" >\"$here/shown.part\" 2>&1\n"
                            "mv \"$here/shown.part\" \"$here/shown\"\n";

} // namespace

const char* const RecipeRun::allInOne = "-a  b'c\"d`$(e)\\f\n[*]? ~${IFS}%s&";

void RecipeRun::prepare()
{
    pathBefore = qgetenv("PATH");
    for (const char* variable : {"VISUAL", "EDITOR", "LESS", "LESSOPEN", "GIT_DIR", "GNUPGHOME", "TMPDIR"}) {
        qunsetenv(variable);
    }
    qputenv("GIT_CONFIG_GLOBAL", "/dev/null");
    qputenv("SHELL", "/bin/sh");
}

void RecipeRun::open()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("w"));
    dir->file(QStringLiteral("tools/x-terminal-emulator"), terminal, 0755);
    qputenv("PATH", dir->path(QStringLiteral("tools")).toLocal8Bit() + ':' + pathBefore);
    window = std::make_unique<PanelWindow>(path());
    panel = window->panel;
}

void RecipeRun::close()
{
    window.reset();
    dir.reset();
    qputenv("PATH", pathBefore);
    qunsetenv("EDITOR");
}

void RecipeRun::hardNames()
{
    QTest::addColumn<QString>("hard");
    QTest::newRow("plain") << QStringLiteral("plain");
    QTest::newRow("blanks") << QStringLiteral(" a  b ");
    QTest::newRow("quotes") << QStringLiteral("it's \"so\"");
    QTest::newRow("newlines") << QStringLiteral("one\ntwo\n");
    QTest::newRow("all") << QString::fromLatin1(allInOne);
}

QString RecipeRun::name()
{
    QFETCH(QString, hard);
    return hard;
}

bool RecipeRun::has(const Recipe& recipe)
{
    return !recipe.name.isEmpty() && missingPrograms(recipe).isEmpty();
}

QString RecipeRun::run(
    const Recipe& recipe, const QString& path, const QByteArray& answers, const QString& second)
{
    const QString line = recipe.lines.value(0);
    const QMap<QString, int> codes{{"sendto", CommandSendTo}, {"compare", CommandCompare},
        {"terminal", CommandTerminal}, {"terminalex", CommandTerminalEx}};
    const QString command = line.section(QLatin1Char('='), 4);
    dir->file(QStringLiteral("tools/answers"), answers);
    QFile::remove(dir->path(QStringLiteral("tools/shown")));
    gsLastPath2 = path;
    gsLastPath1 = second;
    panel->DoAction(codes.value(line.section(QLatin1Char('='), 1, 1)), path, command);
    if (!command.startsWith(QLatin1String("x-terminal-emulator"))) {
        return QString();
    }
    const bool ended = QTest::qWaitFor([this] { return dir->exists(QStringLiteral("tools/shown")); }, 30000);
    return ended ? QString::fromUtf8(dir->read(QStringLiteral("tools/shown")))
                 : QStringLiteral("did not end");
}

QString RecipeRun::run(
    const char* recipe, const QString& path, const QByteArray& answers, const QString& second)
{
    return run(recipeNamed(QString::fromLatin1(recipe)), path, answers, second);
}

QString RecipeRun::file(const QString& relative, const QByteArray& content)
{
    return dir->file(QStringLiteral("w/") + relative, content);
}
