#include "check/SettingsCheck.h"

#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "check/StyleCheck.h"

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace {

/// No line that is meant is this long, and what looks it through would take minutes.
constexpr int longestLine = 262144;

/// Folders so unlike each other that an expression which matches all of them skips everything. The root
/// folder is none of them: where all below it is skipped, nothing is left of it.
bool matchesEverything(const QRegularExpression& expression)
{
    QStringList folders{"/home", "/qxz", "/usr/share/doc", "/srv/Music 1"};
    if (!QDir::home().isRoot()) {
        folders.append(QDir::homePath());
    }
    return std::all_of(folders.cbegin(), folders.cend(),
        [&expression](const QString& folder) { return expression.match(folder).hasMatch(); });
}

} // namespace

bool SettingsCheck::read(const QString& path)
{
    if (!ReadConfigLines(path, [this](const ConfigLine& line) { take(line); })) {
        return false;
    }
    if (!m_lineOfKey.contains(QStringLiteral("norecurse"))) {
        add(0, "matches-everything",
            QStringLiteral(
                "there is no norecurse line: an empty expression skips every folder in disk usage"));
    }
    m_findings += checkStyle(m_style);
    return true;
}

Findings SettingsCheck::findings() const
{
    Findings sorted = m_findings;
    std::stable_sort(
        sorted.begin(), sorted.end(), [](const Finding& a, const Finding& b) { return a.line < b.line; });
    return sorted;
}

void SettingsCheck::add(int line, const char* kind, const QString& text)
{
    m_findings.append({line, QString::fromLatin1(kind), text});
}

/// @return whether the field is empty, which is told then
bool SettingsCheck::missing(int line, const QString& field, const char* what)
{
    if (field.isEmpty()) {
        add(line, "missing-field", QStringLiteral("the %1 is missing").arg(QLatin1String(what)));
    }
    return field.isEmpty();
}

/// For keys whose later line takes the place of an earlier one.
void SettingsCheck::onlyOnce(const ConfigLine& line)
{
    if (m_lineOfKey.contains(line.key)) {
        add(line.number, "replaced",
            QStringLiteral("this line takes the place of line %1").arg(m_lineOfKey.value(line.key)));
    }
    m_lineOfKey.insert(line.key, line.number);
}

/// @return whether the line is not looked through, which is told then
bool SettingsCheck::isTooLong(const ConfigLine& line)
{
    const bool isComment = line.text.startsWith(QLatin1Char('#'));
    if (isComment || line.text.size() <= longestLine) {
        return false;
    }
    add(line.number, "too-long", QStringLiteral("this line is too long to check"));
    return true;
}

void SettingsCheck::take(const ConfigLine& line)
{
    if (line.text.contains(QChar::ReplacementCharacter) || line.text.contains(QChar::Null)) {
        add(line.number, "encoding", QStringLiteral("this line is not text in the encoding of the locale"));
    }
    if (isTooLong(line)) {
        m_lineOfKey.insert(line.key, line.number);
    } else if (!line.known) {
        takeUnknown(line);
    } else if (line.key == QLatin1String("style")) {
        missing(line.number, line.value, "style sheet");
        m_style.append({line.number, line.value});
    } else if (line.key == QLatin1String("icon")) {
        takeIcon(line);
    } else if (line.key == QLatin1String("drive")) {
        takeDrive(line);
    } else if (line.key == QLatin1String("window")) {
        takeWindow(line);
    } else if (line.key == QLatin1String("norecurse")) {
        takeNoRecurse(line);
    } else if (line.key == QLatin1String("assn")) {
        takeAssociation(line);
    } else if (line.key == QLatin1String("menu")) {
        takeMenu(line);
    }
}

void SettingsCheck::takeUnknown(const ConfigLine& line)
{
    if (line.text.isEmpty() || line.text.startsWith(QLatin1Char('#'))) {
        return;
    }
    add(line.number, "unknown-key",
        line.key.isEmpty() ? QStringLiteral("there is no key before the \"=\"")
                           : QStringLiteral("there is no key \"%1\"").arg(line.key));
}

void SettingsCheck::takeIcon(const ConfigLine& line)
{
    onlyOnce(line);
    if (missing(line.number, line.value, "file of the icon")) {
        return;
    }
    if (!QFileInfo(line.value).isFile()) {
        add(line.number, "icon-not-found", QStringLiteral("there is no file \"%1\"").arg(line.value));
    } else if (!QImageReader(line.value).canRead()) {
        add(line.number, "bad-icon", QStringLiteral("\"%1\" is no picture that can be read").arg(line.value));
    }
}

void SettingsCheck::takeDrive(const ConfigLine& line)
{
    const LSDRIVE drive = gstDrives.last();
    missing(line.number, drive.label, "label");
    if (missing(line.number, drive.path, "folder")) {
        return;
    }
    const bool isFull = drive.path.startsWith(QLatin1Char('/'));
    if (isFull && QFileInfo(drive.path).isDir()) {
        return;
    }
    QString why = isFull ? QString() : QStringLiteral(": this is no full path");
    if (drive.path.startsWith(QLatin1Char('~')) || drive.path.contains(QLatin1Char('$'))) {
        why = QStringLiteral(": only a ~ that stands alone is expanded");
    }
    add(line.number, "drive-not-found", QStringLiteral("there is no folder \"%1\"").arg(drive.path) + why);
}

void SettingsCheck::takeWindow(const ConfigLine& line)
{
    onlyOnce(line);
    bool isNumber = false;
    line.value.toInt(&isNumber);
    if (missing(line.number, line.value, "number")) {
        return;
    }
    if (!isNumber) {
        add(line.number, "bad-window",
            QStringLiteral("\"%1\" is no number, and counts as 0").arg(line.value));
    } else if (giWindowArrange < ArrangeSideBySide || giWindowArrange > ArrangeStacked) {
        add(line.number, "bad-window",
            QStringLiteral("%1 is no arrangement: 0 is side by side, 1 a single panel, 2 one above the other")
                .arg(giWindowArrange));
    }
}

void SettingsCheck::takeNoRecurse(const ConfigLine& line)
{
    onlyOnce(line);
    const QRegularExpression expression(gsNoRecurse, QRegularExpression::CaseInsensitiveOption);
    if (!expression.isValid()) {
        add(line.number, "bad-norecurse",
            QStringLiteral("the expression is not valid, so that disk usage skips nothing: %1")
                .arg(expression.errorString()));
    } else if (matchesEverything(expression)) {
        add(line.number, "matches-everything",
            gsNoRecurse.isEmpty()
                ? QStringLiteral("the empty expression matches, and so skips, every folder in disk usage")
                : QStringLiteral("the expression matches, and so skips, every folder in disk usage"));
    }
}
