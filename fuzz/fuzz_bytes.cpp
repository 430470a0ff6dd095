// The short form of byte counts, held against the count itself.

#include "app/TextHelpers.h"
#include "fuzz/Require.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

/// @return what the text says, in bytes; less than 0 where it says nothing that can be read
double readBack(const QString& text)
{
    static const char* const units[] = {" Bytes", "KB", "MB", "GB", "TB", "PB", "EB"};
    for (int i = 6; i >= 0; --i) {
        const QLatin1String unit(units[i]);
        if (text.endsWith(unit)) {
            bool ok = false;
            const double number = text.left(text.size() - unit.size()).toDouble(&ok);
            return ok ? std::ldexp(number, 10 * i) : -1;
        }
    }
    return -1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qint64 bytes = 0;
    std::memcpy(&bytes, data, size < sizeof bytes ? size : sizeof bytes);
    const double said = readBack(FormatBytes(bytes));
    const double real = bytes > 0 ? static_cast<double>(bytes) : 0;
    // At least three digits count, so half of the third is the most that may be lost.
    REQUIRE(said >= 0 && std::abs(said - real) <= real * 0.0051);
    return 0;
}
