#include "check/StyleCheck.h"

#include "check/StyleColours.h"

#include <QApplication>
#include <QMessageLogContext>
#include <QRegularExpression>
#include <QStringList>
#include <QWidget>

namespace {

/// What is this long takes long, and a hundred times as much ends the parser.
constexpr int longestSheet = 262144;

QStringList messages;

void keepMessage(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text)
{
    messages.append(text);
}

/// @return what Qt says of a style sheet; it tells nothing but by messages
QStringList complaints(const QString& sheet)
{
    messages.clear();
    const QtMessageHandler before = qInstallMessageHandler(keepMessage);
    qApp->setStyleSheet(sheet);
    QWidget().ensurePolished();
    qApp->setStyleSheet(QString());
    qInstallMessageHandler(before);
    messages.removeDuplicates();
    return messages;
}

bool parses(const QString& sheet)
{
    return complaints(sheet).filter(QStringLiteral("Could not parse")).isEmpty();
}

/// Lines that belong together, as the rules in them begin and end there.
struct Rules
{
    int line = 0; ///< of the first of them
    QString sheet;
};

/// @return a sheet without its comments and what is quoted, in which braces mean nothing
QString plain(const QString& sheet)
{
    static const QRegularExpression unread(QStringLiteral("/\\*.*?\\*/|\"[^\"]*\"|'[^']*'"));
    return QString(sheet).remove(unread).trimmed();
}

/// Tells where rules end, line by line.
class RulesEnd
{
public:
    /// @return whether the rules so far are complete
    bool isBehind(const QString& line)
    {
        m_text = plain(m_text + line + QLatin1Char(' '));
        if (!m_text.isEmpty()) {
            m_end = m_text.at(m_text.size() - 1);
        }
        // Nothing that began a quote or a comment: only the braces count.
        if (!m_text.contains(QLatin1Char('"')) && !m_text.contains(QLatin1Char('\''))
            && !m_text.contains(QLatin1Char('/'))) {
            m_open += openIn(m_text);
            m_text.clear();
        }
        const bool isEnd = m_end == QLatin1Char('}') || m_end == QLatin1Char(';');
        const bool isComplete = m_end.isNull() || (m_open + openIn(m_text) <= 0 && isEnd);
        if (isComplete) {
            *this = RulesEnd();
        }
        return isComplete;
    }

private:
    static int openIn(const QString& text)
    {
        return text.count(QLatin1Char('{')) - text.count(QLatin1Char('}'));
    }

    int m_open = 0;
    QChar m_end; ///< last character that is not blank; null where there is none
    QString m_text; ///< where a quote or a comment may go on
};

QList<Rules> rulesOf(const QList<QPair<int, QString>>& lines)
{
    QList<Rules> all;
    RulesEnd end;
    bool isBehindRules = true;
    for (const auto& line : lines) {
        if (isBehindRules) {
            all.append({line.first, QString()});
        }
        all.last().sheet += line.second + QLatin1Char(' ');
        isBehindRules = end.isBehind(line.second);
    }
    return all;
}

Finding finding(int line, const QString& text)
{
    return {line, QStringLiteral("bad-style"), text};
}

Findings unreadRules(const QList<Rules>& all)
{
    Findings found;
    for (const Rules& rules : all) {
        if (!parses(rules.sheet)) {
            found.append(finding(rules.line,
                QStringLiteral("the style sheet does not parse here; no rule from here on is used")));
        }
    }
    if (found.isEmpty()) {
        found.append(finding(all.first().line,
            QStringLiteral("the style sheet does not parse as a whole, so that some of it is not used")));
    }
    return found;
}

/// @return the finding where the style sheet is too long, with the line where it gets so
Findings tooLong(const QList<QPair<int, QString>>& lines)
{
    int size = 0;
    for (const auto& each : lines) {
        size += each.second.size() + 1;
        const int line = each.first;
        if (size > longestSheet) {
            return {
                {line, QStringLiteral("too-long"), QStringLiteral("the style sheet is too long to check")}};
        }
    }
    return {};
}

/// Qt names an unknown property where its rule meets a widget, so each is put on one.
Findings unknownWords(const Rules& rules)
{
    static const QRegularExpression selector(QStringLiteral("[^{}]*\\{"));
    static const QRegularExpression wanted(
        QStringLiteral("(Unknown property|Unknown color name|Could not create pixmap).*"));
    QString sheet = rules.sheet;
    sheet.replace(selector, QStringLiteral("QWidget {"));
    QStringList texts;
    const QStringList said = complaints(sheet);
    for (const QString& each : said) {
        texts.append(wanted.match(each).captured());
    }
    const QStringList colours = unknownColours(plain(rules.sheet));
    for (const QString& colour : colours) {
        texts.append(QStringLiteral("Unknown color name '%1'").arg(colour));
    }
    texts.removeAll(QString());
    texts.removeDuplicates();
    Findings found;
    for (const QString& text : qAsConst(texts)) {
        found.append(finding(rules.line, QStringLiteral("in the style sheet: ") + text));
    }
    return found;
}

/// Qt parses some mistakes, and drops what is around them.
Findings droppedText(const Rules& rules)
{
    static const QRegularExpression block(QStringLiteral("\\{([^{}]*)\\}"));
    const QString text = plain(rules.sheet);
    Findings found;
    if (text.contains(QLatin1String("/*"))) {
        found.append(finding(rules.line, QStringLiteral("in the style sheet: a comment is not closed")));
    }
    for (QRegularExpressionMatchIterator it = block.globalMatch(text); it.hasNext();) {
        const QStringList declarations = it.next().captured(1).split(QLatin1Char(';'));
        for (const QString& declaration : declarations) {
            if (!declaration.trimmed().isEmpty() && !declaration.contains(QLatin1Char(':'))) {
                found.append(finding(rules.line,
                    QStringLiteral("in the style sheet: there is no \":\" in \"%1\"")
                        .arg(declaration.trimmed())));
            }
        }
    }
    return found;
}

} // namespace

Findings checkStyle(const QList<QPair<int, QString>>& lines)
{
    Findings found = tooLong(lines);
    if (!found.isEmpty()) {
        return found;
    }
    QString whole;
    const QList<Rules> all = rulesOf(lines);
    for (const Rules& rules : all) {
        whole += rules.sheet;
        found += droppedText(rules) + unknownWords(rules);
    }
    return all.isEmpty() || parses(whole) ? found : unreadRules(all) + found;
}
