// Associations and menu entries.

#include "check/SettingsCheck.h"

#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "check/CommandCheck.h"

#include <QStringList>

namespace {

/// Keyword, types, label and command.
constexpr int menuFields = 4;

bool needsCommand(int code)
{
    return code == CommandSendTo || code == CommandCompare || code == CommandTerminal
        || code == CommandTerminalEx;
}

/// @return why a suffix can be that of no item; empty where one can have it
QString whyNever(const QString& suffix)
{
    if (suffix.contains(QLatin1Char('.'))) {
        return QStringLiteral("a suffix is what follows the last dot, without the dot");
    }
    if (suffix.contains(QLatin1Char('*'))) {
        return QStringLiteral("a star stands for any file only where it stands alone");
    }
    if (suffix != suffix.trimmed()) {
        return QStringLiteral("the blank beside it counts");
    }
    return QString();
}

} // namespace

void SettingsCheck::takeAssociation(const ConfigLine& line)
{
    const QString separator = QStringLiteral("=");
    QStringList suffixes = line.value.section(separator, 0, 0).trimmed().toLower().split(QLatin1Char('|'));
    const QString command = line.value.section(separator, 1).trimmed();
    if (!missing(line.number, command, "command")) {
        m_findings += checkCommand(line.number, command);
    }
    suffixes.removeDuplicates();
    for (const QString& suffix : qAsConst(suffixes)) {
        const QString why = whyNever(suffix);
        if (!why.isEmpty()) {
            add(line.number, "never-used",
                QStringLiteral("no file has the suffix \"%1\": %2").arg(suffix, why));
        }
    }
    takeSuffixes(line.number, suffixes);
}

/// Tells once of every earlier line which of its suffixes the line takes over.
void SettingsCheck::takeSuffixes(int line, const QStringList& suffixes)
{
    QMap<int, QStringList> taken;
    for (const QString& suffix : suffixes) {
        if (m_lineOfSuffix.contains(suffix)) {
            taken[m_lineOfSuffix.value(suffix)].append(suffix);
        }
        m_lineOfSuffix.insert(suffix, line);
    }
    for (auto it = taken.cbegin(); it != taken.cend(); ++it) {
        add(line, "replaced",
            QStringLiteral("for \"%1\" this line takes the place of line %2")
                .arg(it.value().join(QLatin1Char('|')))
                .arg(it.key()));
    }
}

void SettingsCheck::takeMenu(const ConfigLine& line)
{
    const LSMENU entry = gstMenu.last();
    const QString keyword = line.value.section(QLatin1Char('='), 0, 0).trimmed();
    if (entry.code == CommandSeparator) {
        QString further = line.value.section(QLatin1Char('='), 1);
        if (!further.remove(QLatin1Char('=')).trimmed().isEmpty()) {
            add(line.number, "unused-field", QStringLiteral("a separator has no further fields"));
        }
        return;
    }
    if (!missing(line.number, keyword, "keyword") && entry.code == CommandUnknown) {
        add(line.number, "unknown-keyword",
            QStringLiteral("there is no keyword \"%1\": the entry does nothing").arg(keyword));
    }
    missing(line.number, entry.label, "label");
    takeTypes(line.number, entry.types);
    takeMenuCommand(line);
}

/// @param types wrapped in "|" on both sides
void SettingsCheck::takeTypes(int line, const QString& types)
{
    const QStringList all = types.mid(1, types.length() - 2).split(QLatin1Char('|'), Qt::SkipEmptyParts);
    int unfit = 0;
    for (const QString& type : all) {
        const bool special = type == QLatin1String("*") || type == QLatin1String(".");
        const QString why = special ? QString() : whyNever(type);
        if (!why.isEmpty()) {
            ++unfit;
            add(line, "never-used", QStringLiteral("no file is of the type \"%1\": %2").arg(type, why));
        }
    }
    if (unfit == all.size()) {
        add(line, "never-shown",
            all.isEmpty() ? QStringLiteral("the entry is never shown: it has no types")
                          : QStringLiteral("the entry is never shown: none of its types fits an item"));
    }
}

void SettingsCheck::takeMenuCommand(const ConfigLine& line)
{
    const LSMENU entry = gstMenu.last();
    if (line.value.count(QLatin1Char('=')) >= menuFields) {
        add(line.number, "cut-text",
            QStringLiteral("the command ends at the further \"=\"; what follows is dropped: \"=%1\"")
                .arg(line.value.section(QLatin1Char('='), menuFields).trimmed()));
    }
    if (needsCommand(entry.code)) {
        if (!missing(line.number, entry.command, "command")) {
            m_findings += checkCommand(line.number, entry.command);
        }
    } else if (entry.code != CommandUnknown && !entry.command.isEmpty()) {
        add(line.number, "unused-field",
            QStringLiteral("this keyword takes no command: \"%1\" is never used").arg(entry.command));
    }
}
