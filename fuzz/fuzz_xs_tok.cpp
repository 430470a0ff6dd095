// Peeling fields off a line. The first byte is the separator.

#include "app/TextHelpers.h"
#include "fuzz/Require.h"

#include <cstddef>
#include <cstdint>

namespace {

/// Peels one field off and holds it against the line.
void peel(QString& rest, const QString& separator)
{
    const QString before = rest;
    const QString field = xs_tok(rest, separator);
    const int at = before.indexOf(separator);
    if (at < 0) {
        REQUIRE(field == before && rest.isEmpty());
    } else {
        REQUIRE(field == before.left(at).trimmed());
        REQUIRE(rest == before.mid(at + separator.size()).trimmed());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1) {
        return 0;
    }
    const QString separator(QLatin1Char(static_cast<char>(data[0])));
    QString rest = QString::fromUtf8(reinterpret_cast<const char*>(data) + 1, static_cast<int>(size) - 1);
    for (int length = rest.size() + 1; !rest.isEmpty(); length = rest.size()) {
        peel(rest, separator);
        REQUIRE(rest.size() < length); // or a line would never end
    }
    return 0;
}
