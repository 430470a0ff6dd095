#include "app/TextHelpers.h"

#include <QDir>
#include <QFileInfo>

#include <array>

QString xs_tok(QString& line, const QString& sep)
{
    const int at = line.indexOf(sep);
    if (at < 0) {
        QString field = line;
        line.clear();
        return field;
    }
    QString field = line.left(at).trimmed();
    line = line.mid(at + sep.length()).trimmed();
    return field;
}

QString FormatBytes(const qint64& bytes)
{
    static const std::array<QString, 7> units{QStringLiteral("EB"), QStringLiteral("PB"),
        QStringLiteral("TB"), QStringLiteral("GB"), QStringLiteral("MB"), QStringLiteral("KB"),
        QStringLiteral(" Bytes")};
    constexpr qint64 exabyte = Q_INT64_C(1) << 60;

    std::size_t unit = 0;
    qint64 divisor = exabyte;
    if (bytes < exabyte) {
        unit = 1;
        divisor = exabyte / 1024;
        while (divisor > bytes) {
            ++unit;
            divisor /= 1024;
            if (unit == units.size()) {
                return QStringLiteral("0 Bytes");
            }
        }
    }
    if (bytes % divisor == 0) {
        return QStringLiteral("%1%2").arg(bytes / divisor).arg(units.at(unit));
    }
    // Single precision on purpose: it decides the last digit of large counts.
    const float value = static_cast<float>(bytes) / static_cast<float>(divisor);
    const int decimals = value < 10.0F ? 2 : value < 100.0F ? 1 : 0;
    const QString number = QString::number(static_cast<double>(value), 'f', decimals);
    return QStringLiteral("%1%2").arg(number, units.at(unit));
}

QString xs_UpOneLevel(const QString& path)
{
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0) {
        return path;
    }
    return slash == 0 ? QStringLiteral("/") : path.left(slash);
}

QString cleanAbsolutePath(const QString& path)
{
    static const QString above = QStringLiteral("/..");
    if (path.isEmpty()) {
        return path;
    }
    QString clean = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    while (clean == above || clean.startsWith(above + QLatin1Char('/'))) {
        clean.remove(0, above.length()); // there is nothing above the top
    }
    return clean.isEmpty() ? QStringLiteral("/") : clean;
}

QString xs_formatPermisions(const QFileInfo& info)
{
    struct Digit
    {
        QFile::Permission flag;
        int value;
    };
    static constexpr std::array<Digit, 9> digits{{{QFile::ReadOwner, 400}, {QFile::WriteOwner, 200},
        {QFile::ExeOwner, 100}, {QFile::ReadGroup, 40}, {QFile::WriteGroup, 20}, {QFile::ExeGroup, 10},
        {QFile::ReadOther, 4}, {QFile::WriteOther, 2}, {QFile::ExeOther, 1}}};

    // One by one: all permissions at once hold those of the user, for which Qt asks the system again and lets
    // other copies of the info, which share what it knows, become new without anyone noticing.
    int sum = 0;
    for (const Digit& digit : digits) {
        if (info.permission(digit.flag)) {
            sum += digit.value;
        }
    }
    return QStringLiteral("%1").arg(sum, 3, 10, QLatin1Char('0'));
}
