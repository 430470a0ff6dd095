#include "check/CommandCheck.h"

#include "panel/CommandWords.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QStringList>

namespace {

/// Programs that start the program that follows behind one of terminalOptions().
const QStringList& terminals()
{
    static const QStringList names{"x-terminal-emulator", "xterm", "lxterm", "uxterm", "urxvt", "rxvt",
        "konsole", "gnome-terminal", "xfce4-terminal", "mate-terminal", "lxterminal", "terminator",
        "alacritty", "st"};
    return names;
}

const QStringList& terminalOptions()
{
    static const QStringList names{"-e", "-x", "--"};
    return names;
}

/// Programs that start the program that is their next word.
const QStringList& wrappers()
{
    static const QStringList names{"sudo", "pkexec", "env", "nohup", "nice", "setsid"};
    return names;
}

/// @return whether the launcher can start it, which searches the path for a name without "/"
bool canBeStarted(const QString& program)
{
    if (!program.contains(QLatin1Char('/'))) {
        return !QStandardPaths::findExecutable(program).isEmpty();
    }
    const QFileInfo info(program);
    return info.isFile() && info.isExecutable();
}

/// @return place behind the option by which the terminal at @p at starts a program; 0 where there is none
int behindTerminalOption(const QStringList& words, int at)
{
    for (int i = at + 1; i < words.size(); ++i) {
        if (terminalOptions().contains(words.at(i))) {
            return i + 1;
        }
    }
    return 0;
}

/// @return place of the program that the one at @p at starts in turn; -1 where none is known
int nextProgram(const QStringList& words, int at)
{
    const QString name = words.at(at).section(QLatin1Char('/'), -1);
    int next = 0;
    if (terminals().contains(name)) {
        next = behindTerminalOption(words, at);
    } else if (wrappers().contains(name)) {
        next = at + 1;
        while (name == QLatin1String("env") && words.value(next).contains(QLatin1Char('='))) {
            ++next;
        }
    }
    const bool isProgram = next > at && next < words.size() && !words.at(next).startsWith(QLatin1Char('-'));
    return isProgram ? next : -1;
}

QString whyNotFound(const QString& program)
{
    const bool isRelative = program.contains(QLatin1Char('/')) && !program.startsWith(QLatin1Char('/'));
    if (!isRelative && canBeStarted(program)) {
        return QString();
    }
    if (program.startsWith(QLatin1Char('~')) || program.contains(QLatin1Char('$'))) {
        return QStringLiteral("the program \"%1\" is not found: nothing is expanded, write its path in full")
            .arg(program);
    }
    if (isRelative) {
        return QStringLiteral(
            "the program \"%1\" is looked for in the panel's folder: write its path in full")
            .arg(program);
    }
    return QStringLiteral("the program \"%1\" is not found").arg(program);
}

/// @return whether a quote in it has no counterpart, as a shell reads it
bool hasOpenQuote(const QString& script)
{
    QChar open;
    for (int i = 0; i < script.size(); ++i) {
        const QChar c = script.at(i);
        if (c == QLatin1Char('\\') && open != QLatin1Char('\'')) {
            ++i;
        } else if (open.isNull() ? c == QLatin1Char('"') || c == QLatin1Char('\'') : c == open) {
            open = open.isNull() ? c : QChar();
        }
    }
    return !open.isNull();
}

bool hasQuote(const QString& word)
{
    return word.contains(QLatin1Char('"')) || word.contains(QLatin1Char('\''));
}

bool looksExpanded(const QString& word)
{
    static const QRegularExpression pattern(QStringLiteral("^(%[a-zA-Z0-9]|~/.*|\\$.*)$"));
    return pattern.match(word).hasMatch();
}

Findings checkWords(int line, const QStringList& words)
{
    bool quotes = false;
    Findings found;
    for (int i = 0; i < words.size(); ++i) {
        const QString& word = words.at(i);
        const bool isScript = i > 0 && words.at(i - 1) == QLatin1String("-c"); // which a shell reads
        quotes = quotes || (isScript ? hasOpenQuote(word) : hasQuote(word));
        if (i > 0 && !isScript && looksExpanded(word)) {
            found.append({line, QStringLiteral("not-expanded"),
                QStringLiteral("\"%1\" is handed on as it is: nothing is expanded").arg(word)});
        }
    }
    if (quotes) {
        found.prepend({line, QStringLiteral("quotes"),
            QStringLiteral("quotes mean nothing: the command is parted at its blanks all the same")});
    }
    return found;
}

} // namespace

Findings checkCommand(int line, const QString& command)
{
    const QStringList words = commandWords(command);
    Findings found;
    for (int at = 0; at >= 0; at = nextProgram(words, at)) {
        const QString why = whyNotFound(words.at(at));
        if (!why.isEmpty()) {
            found.append({line, QStringLiteral("program-not-found"), why});
        }
    }
    return found + checkWords(line, words);
}
