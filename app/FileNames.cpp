#include "app/FileNames.h"

#include <QTextCodec>

#include <algorithm>
#include <clocale>
#include <libintl.h>

namespace {

constexpr int utf8Mib = 106;

QTextCodec* codecOfLocale = nullptr; ///< Qt owns it; null until it is replaced

QTextCodec* utf8Codec()
{
    return QTextCodec::codecForMib(utf8Mib);
}

} // namespace

void useUtf8FileNames()
{
    // Qt does it later, with the application object. Before that, the locale has no codec of its own.
    static_cast<void>(std::setlocale(LC_ALL, ""));
    codecOfLocale = localeCodec();
    // File names have no codec of their own in Qt 5.
    QTextCodec::setCodecForLocale(utf8Codec());
    // strerror() tells in the locale's encoding otherwise, and Qt decodes it for QFile and QProcess by
    // itself.
    static_cast<void>(bind_textdomain_codeset("libc", "UTF-8"));
}

QTextCodec* localeCodec()
{
    return codecOfLocale != nullptr ? codecOfLocale : QTextCodec::codecForLocale();
}

bool isFileName(const char* name, std::size_t length)
{
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (std::all_of(name, name + length, isAscii)) {
        return true;
    }
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    utf8Codec()->toUnicode(name, static_cast<int>(length), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}
