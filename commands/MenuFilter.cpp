#include "commands/MenuFilter.h"

#include "app/aGlobal.h"

QString suffixPattern(const QString& path)
{
    const QString suffix = path.mid(path.lastIndexOf(QLatin1Char('.')) + 1).toLower();
    return suffix.isEmpty() ? suffix : QLatin1Char('|') + suffix + QLatin1Char('|');
}

bool isOffered(const LSMENU& entry, bool isFolder, const QString& pattern)
{
    if (isFolder) {
        return entry.types.contains(QLatin1String("|.|"));
    }
    return entry.types.contains(QLatin1String("|*|")) || entry.types.indexOf(pattern) >= 0;
}
