#include "app/ReadConfig.h"

#include "app/FileNames.h"
#include "app/MessageBoxes.h"
#include "app/TextHelpers.h"
#include "app/aGlobal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringBuilder>
#include <QTextStream>

#include <algorithm>
#include <array>

namespace {

/// Peels the next field off a value; @p value keeps what follows the "=".
QString takeField(QString& value)
{
    static const QString separator = QStringLiteral("=");
    return xs_tok(value, separator);
}

struct Keyword
{
    QLatin1String name;
    CommandCode code;
};

const std::array<Keyword, 14> keywords{{
    {QLatin1String("properties"), CommandProperties},
    {QLatin1String("totalsize"), CommandTotalSize},
    {QLatin1String("checksum"), CommandChecksum},
    {QLatin1String("separator"), CommandSeparator},
    {QLatin1String("newdir"), CommandNewDir},
    {QLatin1String("rename"), CommandRename},
    {QLatin1String("copy"), CommandCopy},
    {QLatin1String("delete"), CommandDelete},
    {QLatin1String("sendto"), CommandSendTo},
    {QLatin1String("clipboard"), CommandClipboard},
    {QLatin1String("compare"), CommandCompare},
    {QLatin1String("execute"), CommandExecute},
    {QLatin1String("terminal"), CommandTerminal},
    {QLatin1String("terminalex"), CommandTerminalEx},
}};

CommandCode codeOf(const QString& keyword)
{
    for (const Keyword& known : keywords) {
        if (keyword == known.name) {
            return known.code;
        }
    }
    return CommandUnknown;
}

void readStyle(QString& value)
{
    gsAppStyleSheet += value;
    gsAppStyleSheet += QLatin1Char(' ');
}

void readIcon(QString& value)
{
    gsAppIcon = value;
}

void readDrive(QString& value)
{
    LSDRIVE drive;
    drive.path = takeField(value);
    if (drive.path == QLatin1String("~")) {
        drive.path = QDir::homePath();
    }
    drive.label = value;
    gstDrives.append(drive);
}

void readWindow(QString& value)
{
    giWindowArrange = value.toInt();
}

void readNoRecurse(QString& value)
{
    gsNoRecurse = value;
}

void readAssociation(QString& value)
{
    const QStringList suffixes = takeField(value).toLower().split(QLatin1Char('|'));
    for (const QString& suffix : suffixes) {
        gmFileAssn.insert(suffix, value);
    }
}

void readMenu(QString& value)
{
    LSMENU entry;
    entry.code = codeOf(takeField(value).toLower());
    entry.types = QLatin1Char('|') % takeField(value).toLower() % QLatin1Char('|');
    entry.label = takeField(value);
    // Only up to a further "=": a command that holds one is cut there. That is wanted.
    entry.command = takeField(value);
    gstMenu.append(entry);
}

struct Key
{
    QLatin1String name;
    void (*read)(QString& value); ///< may use up the value
};

const std::array<Key, 7> keys{{
    {QLatin1String("style"), readStyle},
    {QLatin1String("icon"), readIcon},
    {QLatin1String("drive"), readDrive},
    {QLatin1String("window"), readWindow},
    {QLatin1String("norecurse"), readNoRecurse},
    {QLatin1String("assn"), readAssociation},
    {QLatin1String("menu"), readMenu},
}};

/// How much of a line is read at once, in characters.
constexpr int pieceLength = 65536;

/// A line that is longer than this, in characters, is held whole only where its key is one of the program's.
constexpr int longestOfOthers = 8 * pieceLength;

/// @param begin the beginning of a line, without blanks before it
/// @return whether its key may be one of the program's
bool mayMeanSomething(const QStringRef& begin)
{
    const QStringRef key = begin.left(begin.indexOf(QLatin1Char('='))).trimmed(); // all where there is no "="
    return std::any_of(keys.begin(), keys.end(),
        [&key](const Key& known) { return key.compare(known.name, Qt::CaseInsensitive) == 0; });
}

QString withoutBlanksBefore(QString piece)
{
    const auto isText = [](QChar unit) { return !unit.isSpace(); };
    const auto text = std::find_if(piece.constBegin(), piece.constEnd(), isText);
    return piece.remove(0, static_cast<int>(text - piece.constBegin()));
}

/// Reads one line, trimmed; only the beginning of a very long one that means nothing.
QString nextLine(QTextStream& stream)
{
    QString line;
    QString piece;
    do {
        piece = stream.readLine(pieceLength);
        if (line.isEmpty()) {
            line = withoutBlanksBefore(piece);
        } else if (line.length() <= longestOfOthers || mayMeanSomething(line.leftRef(longestOfOthers))) {
            line += piece;
        }
    } while (piece.length() == pieceLength && !stream.atEnd());
    return line.trimmed();
}

/// Takes a line into the settings.
/// @param text one line, trimmed
ConfigLine readLine(const QString& text)
{
    ConfigLine line;
    line.text = text;
    if (text.startsWith(QLatin1Char('#'))) {
        return line;
    }
    line.value = text;
    line.key = takeField(line.value).toLower();
    for (const Key& key : keys) {
        if (line.key == key.name) {
            line.known = true;
            QString rest = line.value;
            key.read(rest);
            break;
        }
    }
    return line;
}

} // namespace

bool ReadConfigLines(const QString& path, const std::function<void(const ConfigLine&)>& taken)
{
    QFile file(path);
    // A pipe or a device would be waited for, or never end, so only a file (or a link to one) is opened.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return false;
    }
    // The drives are not emptied: they are only ever filled once, at start-up.
    gsAppStyleSheet.clear();
    gmFileAssn.clear();
    gstMenu.clear();

    QTextStream stream(&file);
    stream.setCodec(localeCodec());
    for (int number = 1; !stream.atEnd(); ++number) {
        ConfigLine line = readLine(nextLine(stream));
        line.number = number;
        if (taken) {
            taken(line);
        }
    }
    return true;
}

void ReadConfig(QString path)
{
    if (!ReadConfigLines(path, {})) {
        criticalBox(nullptr, QStringLiteral("Error"), QStringLiteral("Failed to open .Vantrel"));
    }
}
