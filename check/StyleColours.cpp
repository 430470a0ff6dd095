#include "check/StyleColours.h"

#include <QColor>
#include <QRegularExpression>

namespace {

/// Words of those properties that are no colours.
const QStringList& wordsBesideColours()
{
    static const QStringList words{"none", "transparent", "!important", "!", "important", // of every property
        "dashed", "dot-dash", "dot-dot-dash", "dotted", "double", "groove", "inset", "native", "outset",
        "ridge", "solid", // lines
        "repeat", "repeat-x", "repeat-y", "repeat-xy", "no-repeat", "top", "bottom", "left", "right",
        "center", "fixed", "scroll", "border", "padding", "content", "margin"}; // backgrounds
    return words;
}

/// @param number as it stands, perhaps with a percent sign
bool isWithin(QString number, int most)
{
    if (number.endsWith(QLatin1Char('%'))) {
        number.chop(1);
        most = 100;
    }
    bool isNumber = false;
    const double value = number.toDouble(&isNumber);
    return isNumber && value >= 0 && value <= most;
}

/// @param name "rgb", or with a further letter, or one of its kind
/// @param arguments what stands between the brackets
bool isColourFunction(const QString& name, const QString& arguments)
{
    const QStringList numbers = arguments.split(QLatin1Char(','));
    if (numbers.size() < 3 || numbers.size() > 4) {
        return false;
    }
    for (int i = 0; i < numbers.size(); ++i) {
        const bool isHue = i == 0 && name.startsWith(QLatin1Char('h'));
        if (!isWithin(numbers.at(i).trimmed(), isHue ? 359 : 255)) {
            return false;
        }
    }
    return true;
}

/// @param word a word or a function, of a property that takes a colour
bool isUnknownColour(const QString& word)
{
    static const QRegularExpression size(QStringLiteral("^[-+.]?[0-9]"));
    static const QRegularExpression function(QStringLiteral("^([a-z-]+)\\s*\\((.*)\\)$"));
    static const QRegularExpression numeric(QStringLiteral("^(rgb|hsv|hsl)a?$"));
    static const QRegularExpression other(QStringLiteral("^(palette|url|q(linear|radial|conical)gradient)$"));
    const QString text = word.toLower();
    const QRegularExpressionMatch called = function.match(text);
    if (called.hasMatch()) {
        const QString name = called.captured(1);
        return numeric.match(name).hasMatch() ? !isColourFunction(name, called.captured(2))
                                              : !other.match(name).hasMatch();
    }
    return !size.match(text).hasMatch() && !wordsBesideColours().contains(text)
        && !QColor::isValidColor(text);
}

/// @return the words of a value, and its functions with their brackets
QStringList wordsOfValue(const QString& value)
{
    static const QRegularExpression word(
        QStringLiteral("[a-zA-Z-]+\\s*\\((?:[^()]|\\([^()]*\\))*\\)|[^\\s,]+"));
    QStringList words;
    for (QRegularExpressionMatchIterator it = word.globalMatch(value); it.hasNext();) {
        words.append(it.next().captured());
    }
    return words;
}

} // namespace

QStringList unknownColours(const QString& sheet)
{
    static const QRegularExpression declaration(
        QStringLiteral(
            "[{;]\\s*(?!qproperty-)(color|[a-z-]+-color|border|border-(?:top|right|bottom|left)|outline"
            "|background)\\s*:([^{};]*)(?=[;}])"),
        QRegularExpression::CaseInsensitiveOption);
    QStringList unknown;
    for (QRegularExpressionMatchIterator it = declaration.globalMatch(sheet); it.hasNext();) {
        const QString value = it.next().captured(2);
        const QStringList words = wordsOfValue(value);
        for (const QString& word : words) {
            // A further colon is a semicolon that is missing, and a bracket one that is not closed.
            const bool isWhole = !word.contains(QLatin1Char(':'))
                && word.count(QLatin1Char('(')) == word.count(QLatin1Char(')'));
            if (!isWhole && !word.startsWith(QLatin1String("url"))) {
                break;
            }
            if (isUnknownColour(word)) {
                unknown.append(word);
            }
        }
    }
    return unknown;
}
