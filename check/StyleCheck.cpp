#include "check/StyleCheck.h"

#include <QApplication>
#include <QMessageLogContext>
#include <QRegularExpression>
#include <QStringList>
#include <QWidget>

namespace {

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

bool isComplete(const QString& sheet)
{
    const QString text = plain(sheet);
    return text.isEmpty()
        || (text.count(QLatin1Char('{')) <= text.count(QLatin1Char('}'))
            && (text.endsWith(QLatin1Char('}')) || text.endsWith(QLatin1Char(';'))));
}

QList<Rules> rulesOf(const QList<QPair<int, QString>>& lines)
{
    QList<Rules> all;
    for (const auto& line : lines) {
        if (all.isEmpty() || isComplete(all.last().sheet)) {
            all.append({line.first, QString()});
        }
        all.last().sheet += line.second + QLatin1Char(' ');
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

/// Qt names an unknown property where its rule meets a widget, so each is put on one.
Findings unknownWords(const Rules& rules)
{
    static const QRegularExpression selector(QStringLiteral("[^{}]*\\{"));
    static const QRegularExpression wanted(
        QStringLiteral("(Unknown property|Unknown color name|Could not create pixmap).*"));
    QString sheet = rules.sheet;
    sheet.replace(selector, QStringLiteral("QWidget {"));
    Findings found;
    const QStringList said = complaints(sheet);
    for (const QString& each : said) {
        const QString text = wanted.match(each).captured();
        if (!text.isEmpty()) {
            found.append(finding(rules.line, QStringLiteral("in the style sheet: ") + text));
        }
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
    Findings found;
    QString whole;
    const QList<Rules> all = rulesOf(lines);
    for (const Rules& rules : all) {
        whole += rules.sheet;
        found += droppedText(rules) + unknownWords(rules);
    }
    return all.isEmpty() || parses(whole) ? found : unreadRules(all) + found;
}
