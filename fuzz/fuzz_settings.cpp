// The settings reader, with everything that it fills.

#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "fuzz/Require.h"

#include <QCoreApplication>
#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>

namespace {

/// The reader looks at the file's kind first, so it gets a real file.
QTemporaryFile& settingsFile()
{
    static QTemporaryFile file;
    if (!file.isOpen()) {
        REQUIRE(file.open());
    }
    return file;
}

void checkMenu(const LSMENU& entry)
{
    REQUIRE(
        entry.code == CommandUnknown || (entry.code >= CommandProperties && entry.code <= CommandTerminalEx));
    REQUIRE(entry.code != CommandDropCopy && entry.code != CommandDropMove);
    REQUIRE(entry.types.size() >= 2 && entry.types.startsWith(QLatin1Char('|')));
    REQUIRE(entry.types.endsWith(QLatin1Char('|')));
    for (const QString& field : {entry.types, entry.label, entry.command}) {
        REQUIRE(!field.contains(QLatin1Char('=')) && !field.contains(QLatin1Char('\n')));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QTemporaryFile& file = settingsFile();
    REQUIRE(file.resize(0) && file.seek(0));
    REQUIRE(file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size))
        == static_cast<qint64>(size));
    REQUIRE(file.flush());
    gstDrives.clear();
    ReadConfig(file.fileName());

    REQUIRE(gsAppStyleSheet.isEmpty() || gsAppStyleSheet.endsWith(QLatin1Char(' ')));
    for (const LSMENU& entry : qAsConst(gstMenu)) {
        checkMenu(entry);
    }
    for (const LSDRIVE& drive : qAsConst(gstDrives)) {
        REQUIRE(!drive.path.contains(QLatin1Char('=')) && drive.path != QLatin1String("~"));
    }
    for (auto it = gmFileAssn.cbegin(); it != gmFileAssn.cend(); ++it) {
        REQUIRE(!it.key().contains(QLatin1Char('|')) && !it.key().contains(QLatin1Char('=')));
    }

    // Read again, it is the same.
    const QString style = gsAppStyleSheet;
    const QMap<QString, QString> associations = gmFileAssn;
    const int entries = gstMenu.size();
    ReadConfig(file.fileName());
    REQUIRE(gsAppStyleSheet == style && gmFileAssn == associations && gstMenu.size() == entries);
    return 0;
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // No window: a message box would be a finding.
    static QCoreApplication app(*argc, *argv);
    return 0;
}
