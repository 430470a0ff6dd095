// Which entries of the context menu an item gets: the first line is the entry's types, the second is the
// path.

#include "app/aGlobal.h"
#include "commands/MenuFilter.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const int end = text.indexOf(QLatin1Char('\n'));
    LSMENU entry;
    entry.types = QLatin1Char('|') + text.left(end).toLower() + QLatin1Char('|');
    const QString path = end < 0 ? QString() : text.mid(end + 1);

    const QString pattern = suffixPattern(path);
    if (pattern.isEmpty()) {
        REQUIRE(path.isEmpty() || path.endsWith(QLatin1Char('.')) || path.toLower().isEmpty());
    } else {
        REQUIRE(
            pattern.size() > 2 && pattern.startsWith(QLatin1Char('|')) && pattern.endsWith(QLatin1Char('|')));
        REQUIRE(pattern == pattern.toLower() || pattern.toLower() == pattern.toLower().toLower());
    }
    const bool forAll = entry.types.contains(QLatin1String("|*|"));
    REQUIRE(isOffered(entry, true, pattern) == entry.types.contains(QLatin1String("|.|")));
    REQUIRE(isOffered(entry, false, pattern) == (forAll || entry.types.contains(pattern)));
    return 0;
}
