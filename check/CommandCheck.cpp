#include "check/CommandCheck.h"

#include "check/StartedPrograms.h"
#include "panel/CommandWords.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QStringList>

namespace {

/// @return whether the launcher can start it, which searches the path for a name without "/"
bool canBeStarted(const QString& program)
{
    if (!program.contains(QLatin1Char('/'))) {
        return !QStandardPaths::findExecutable(program).isEmpty();
    }
    const QFileInfo info(program);
    return info.isFile() && info.isExecutable();
}

/// @return whether it is a name or a full path, which mean the same to a shell and to the launcher
bool isPlainName(const QString& program)
{
    return program.startsWith(QLatin1Char('/')) || !program.contains(QLatin1Char('/'));
}

QString whyNotFound(const QString& program)
{
    const bool isRelative = !isPlainName(program);
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

Findings checkPrograms(int line, const QStringList& words)
{
    Findings found;
    QSet<QString> seen;
    const QList<StartedProgram> programs = startedPrograms(words);
    for (const StartedProgram& program : programs) {
        const bool isJudged = !program.isInScript || isPlainName(program.name);
        if (!isJudged || seen.contains(program.name)) {
            continue;
        }
        seen.insert(program.name);
        const QString why = whyNotFound(program.name);
        if (!why.isEmpty()) {
            found.append({line, QStringLiteral("program-not-found"), why});
        }
    }
    return found;
}

} // namespace

Findings checkCommand(int line, const QString& command)
{
    const QStringList words = commandWords(command);
    return checkPrograms(line, words) + checkWords(line, words);
}
