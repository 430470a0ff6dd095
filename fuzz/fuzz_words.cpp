// Splitting a command line into words.

#include "fuzz/Require.h"
#include "panel/CommandWords.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace {

QString withoutBlanks(const QString& text)
{
    QString rest;
    std::copy_if(
        text.begin(), text.end(), std::back_inserter(rest), [](QChar unit) { return !unit.isSpace(); });
    return rest;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString line = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const QStringList words = commandWords(line);
    REQUIRE(!words.isEmpty());
    QString letters;
    for (const QString& word : words) {
        REQUIRE(!word.contains(QLatin1Char(' ')));
        letters += word;
    }
    // Nothing but white space is lost, and nothing is made up: only what stands at the edge of a word is
    // trimmed.
    REQUIRE(withoutBlanks(line) == withoutBlanks(letters));
    return 0;
}
