#include "check/ScriptCommands.h"

#include <QRegularExpression>

namespace {

constexpr int longestScript = 65536;
constexpr int deepestNesting = 50;

const QLatin1String blankOfScript("${IFS}");

bool isOneOf(QChar c, const char* all)
{
    return QString::fromLatin1(all).contains(c);
}

/// Keywords behind which a command begins.
const QStringList& leadingKeywords()
{
    static const QStringList names{"if", "then", "elif", "else", "while", "until", "do", "!", "{", "time"};
    return names;
}

/// Commands behind which no program can be said to be missing: they look for it, or bring its name.
const QStringList& namingCommands()
{
    static const QStringList names{
        "case", "function", "command", "type", "which", "hash", "alias", ".", "source", "eval"};
    return names;
}

class ScriptReader
{
public:
    explicit ScriptReader(const QString& script)
        : m_text(script)
    {
    }
    QList<QStringList> commands();

private:
    void readList(QChar end);
    void readOperator(QStringList* words);
    void readRedirection();
    void readExpansion();
    void readBraces();
    QString readWord();
    bool readPart(QString* word);
    bool readQuoted(QString* word);
    bool skipBlank();
    void skipTo(QChar c);
    void finish(QStringList* words);
    QChar next(int ahead = 0) const
    {
        return m_text.size() > m_at + ahead ? m_text.at(m_at + ahead) : QChar();
    }
    bool isAtEnd() const { return m_at >= m_text.size(); }
    void giveUp();

    QString m_text;
    int m_at = 0;
    int m_depth = 0;
    bool m_isSure = true;
    bool m_isFallback = false;
    QList<QStringList> m_commands;
};

QList<QStringList> ScriptReader::commands()
{
    if (m_text.size() > longestScript || m_text.contains(QLatin1String("PATH="))) {
        return {};
    }
    readList(QChar());
    return m_isSure && isAtEnd() ? m_commands : QList<QStringList>();
}

void ScriptReader::giveUp()
{
    m_isSure = false;
    m_at = m_text.size();
}

/// @param end what closes the list; null for the end of the text
void ScriptReader::readList(QChar end)
{
    if (++m_depth > deepestNesting) {
        giveUp();
    }
    QStringList words;
    while (!isAtEnd() && (end.isNull() || next() != end)) {
        if (skipBlank()) {
            continue;
        }
        if (isOneOf(next(), ";&|\n()")) {
            readOperator(&words);
        } else if (isOneOf(next(), "<>")) {
            readRedirection();
        } else {
            const int start = m_at;
            const QString word = readWord();
            bool isNumber = false;
            m_text.midRef(start, m_at - start).toInt(&isNumber);
            if (!isNumber || !isOneOf(next(), "<>")) {
                words.append(word);
            }
        }
    }
    finish(&words);
    ++m_at;
    if (end.isNull()) {
        m_at = m_text.size();
    }
    --m_depth;
}

void ScriptReader::readOperator(QStringList* words)
{
    const QChar c = next();
    if (c == QLatin1Char('(')) {
        if (!words->isEmpty()) {
            giveUp(); // a function
            return;
        }
        ++m_at;
        readList(QLatin1Char(')'));
        return;
    }
    finish(words);
    m_isFallback = m_isFallback || (c == QLatin1Char('|') && next(1) == c);
    m_at += c == next(1) ? 2 : 1;
}

void ScriptReader::readRedirection()
{
    const int start = m_at;
    while (isOneOf(next(), "<>&|") && !isAtEnd()) {
        ++m_at;
    }
    if (m_text.midRef(start, m_at - start).startsWith(QLatin1String("<<")) || next() == QLatin1Char('(')) {
        giveUp();
    }
    while (skipBlank()) { }
    readWord();
}

bool ScriptReader::skipBlank()
{
    const bool isBlank = isOneOf(next(), " \t") && !isAtEnd();
    const bool isExpanded = next() == QLatin1Char('$') && m_text.midRef(m_at).startsWith(blankOfScript);
    m_at += isExpanded ? blankOfScript.size() : static_cast<int>(isBlank);
    return isBlank || isExpanded;
}

/// @return what the word is to the shell; empty where that is not known before it runs
QString ScriptReader::readWord()
{
    QString word;
    bool isLiteral = true;
    while (!isAtEnd() && !isOneOf(next(), " \t;&|\n()<>")
        && !m_text.midRef(m_at, blankOfScript.size()).startsWith(blankOfScript)) {
        isLiteral = readPart(&word) && isLiteral;
    }
    return isLiteral ? word : QString();
}

/// @return whether it stands for itself
bool ScriptReader::readPart(QString* word)
{
    const QChar c = next();
    if (c == QLatin1Char('$')) {
        readExpansion();
        return false;
    }
    if (c == QLatin1Char('`')) {
        giveUp();
        return false;
    }
    if (c == QLatin1Char('"')) {
        ++m_at;
        return readQuoted(word);
    }
    const int start = ++m_at;
    if (c == QLatin1Char('\'')) {
        skipTo(c);
        *word += m_text.midRef(start, m_at - 1 - start);
        return true;
    }
    if (c == QLatin1Char('\\') && isAtEnd()) {
        giveUp();
        return false;
    }
    *word += c == QLatin1Char('\\') ? next() : c;
    m_at += static_cast<int>(c == QLatin1Char('\\'));
    return !isOneOf(c, "*?~");
}

/// Goes behind the next @p c.
void ScriptReader::skipTo(QChar c)
{
    const int found = m_text.indexOf(c, m_at);
    if (found < 0) {
        giveUp();
    } else {
        m_at = found + 1;
    }
}

/// Reads up to behind the closing double quote.
bool ScriptReader::readQuoted(QString* word)
{
    bool isLiteral = true;
    while (!isAtEnd() && next() != QLatin1Char('"')) {
        if (isOneOf(next(), "$`")) {
            isLiteral = readPart(word) && isLiteral;
        } else {
            m_at += static_cast<int>(next() == QLatin1Char('\\'));
            *word += isAtEnd() ? QString() : QString(next());
            ++m_at;
        }
    }
    ++m_at;
    return isLiteral;
}

/// Reads what begins with a dollar sign.
void ScriptReader::readExpansion()
{
    ++m_at;
    if (next() == QLatin1Char('(')) {
        if (next(1) == QLatin1Char('(')) {
            giveUp();
            return;
        }
        ++m_at;
        readList(QLatin1Char(')'));
    } else if (next() == QLatin1Char('{')) {
        ++m_at;
        readBraces();
    } else {
        static const QRegularExpression name(QStringLiteral("\\G([A-Za-z_]\\w*|[0-9@*#?$!-])?"));
        m_at += name.match(m_text, m_at).capturedLength();
    }
}

void ScriptReader::readBraces()
{
    if (++m_depth > deepestNesting) {
        giveUp();
    }
    QString unused;
    while (!isAtEnd() && next() != QLatin1Char('}')) {
        readPart(&unused);
    }
    ++m_at;
    --m_depth;
}

void ScriptReader::finish(QStringList* words)
{
    static const QRegularExpression assignment(QStringLiteral("^[A-Za-z_]\\w*="));
    while (!words->isEmpty()
        && (leadingKeywords().contains(words->first()) || assignment.match(words->first()).hasMatch())) {
        words->removeFirst();
    }
    if (!words->isEmpty()) {
        m_isSure = m_isSure && !namingCommands().contains(words->first());
        if (!m_isFallback) {
            m_commands.append(*words);
        }
        m_isFallback = false;
    }
    words->clear();
}

} // namespace

QList<QStringList> commandsOfScript(const QString& script)
{
    return ScriptReader(script).commands();
}
