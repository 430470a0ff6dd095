#include "app/TextHelpers.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <limits>

namespace {

constexpr qint64 kib = Q_INT64_C(1) << 10;
constexpr qint64 mib = Q_INT64_C(1) << 20;
constexpr qint64 gib = Q_INT64_C(1) << 30;
constexpr qint64 tib = Q_INT64_C(1) << 40;
constexpr qint64 pib = Q_INT64_C(1) << 50;
constexpr qint64 eib = Q_INT64_C(1) << 60;

} // namespace

class TestTextHelpers : public QObject
{
    Q_OBJECT

private slots:
    void cleanAbsolutePath_data();
    void cleanAbsolutePath();
    void tok_data();
    void tok();
    void tokPeelsFields_data();
    void tokPeelsFields();
    void tokOnLongLine();

    void formatBytes_data();
    void formatBytes();
    void formatBytesHasThreeOrFourDigits();

    void upOneLevel_data();
    void upOneLevel();
    void upOneLevelEndsAtRoot();

    void permissionsOfEveryMode();
    void permissions_data();
    void permissions();
    void permissionsOfFolderAndLink();
    void permissionsOfMissingFile();
    void permissionsLookNothingUp();
};

void TestTextHelpers::tok_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("rest");
    const auto row
        = [](const char* name, const char* line, const char* separator, const char* field, const char* rest) {
              QTest::newRow(name) << QString::fromUtf8(line) << QString::fromUtf8(separator)
                                  << QString::fromUtf8(field) << QString::fromUtf8(rest);
          };
    row("two fields", "a=b", "=", "a", "b");
    row("rest keeps separators", "a = b = c", "=", "a", "b = c");
    row("no separator", "abc", "=", "abc", "");
    row("no separator is not trimmed", "  a b\t ", "=", "  a b\t ", "");
    row("empty line", "", "=", "", "");
    row("only blanks", "   ", "=", "   ", "");
    row("separator first", "=x", "=", "", "x");
    row("separator last", "x=", "=", "x", "");
    row("only a separator", "=", "=", "", "");
    row("two separators", "==", "=", "", "=");
    row("both sides trimmed", " \t a \n = \t b \r ", "=", "a", "b");
    row("blanks inside stay", " a  b = c  d ", "=", "a  b", "c  d");
    row("blanks only around", "   =   ", "=", "", "");
    row("no-break space is white",
        "\xc2\xa0"
        "a\xc2\xa0=\xe2\x80\x83"
        "b",
        "=", "a", "b");
    row("longer separator", "a => b => c", "=>", "a", "b => c");
    row("longer separator overlaps", "a===b", "==", "a", "=b");
    row("part of the separator only", "a=b", "=>", "a=b", "");
    row("case counts", "oneXtwoxthree", "x", "oneXtwo", "three");
    row("separator of blanks", "a b c", " ", "a", "b c");
    row("beyond ASCII", "\xc3\xa4\xe2\x82\xac\xc3\xb6", "\xe2\x82\xac", "\xc3\xa4", "\xc3\xb6");
}

void TestTextHelpers::tok()
{
    QFETCH(QString, line);
    QFETCH(QString, separator);
    const QString field = xs_tok(line, separator);
    QTEST(field, "field");
    QTEST(line, "rest");
}

void TestTextHelpers::tokPeelsFields_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("fields"); // what follows them is empty
    const auto list = [](const char* text) { return QString::fromLatin1(text).split(QLatin1Char(',')); };
    QTest::newRow("three") << QStringLiteral("a = b = c") << list("a,b,c,");
    QTest::newRow("empty ones") << QStringLiteral("a==c=") << list("a,,c,,");
    QTest::newRow("one") << QStringLiteral("a") << list("a,,");
}

void TestTextHelpers::tokPeelsFields()
{
    QFETCH(QString, line);
    QFETCH(QStringList, fields);
    for (const QString& field : qAsConst(fields)) {
        QCOMPARE(xs_tok(line, QStringLiteral("=")), field);
    }
    QCOMPARE(line, QString());
}

void TestTextHelpers::tokOnLongLine()
{
    QString line = QString(5000000, QLatin1Char('a')) + QLatin1Char('=') + QString(5000000, QLatin1Char('b'));
    QCOMPARE(xs_tok(line, QStringLiteral("=")), QString(5000000, QLatin1Char('a')));
    QCOMPARE(line, QString(5000000, QLatin1Char('b')));
}

void TestTextHelpers::formatBytes_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* text, qint64 bytes) {
        QTest::addRow("%lld", static_cast<long long>(bytes)) << bytes << QString::fromLatin1(text);
    };
    row("0 Bytes", std::numeric_limits<qint64>::min());
    row("0 Bytes", -eib);
    row("0 Bytes", -kib);
    row("0 Bytes", -1);
    row("0 Bytes", 0);
    row("1 Bytes", 1);
    row("2 Bytes", 2);
    row("10 Bytes", 10);
    row("512 Bytes", 512);
    row("1000 Bytes", 1000);
    row("1023 Bytes", 1023);

    row("1KB", kib);
    row("1.00KB", kib + 1);
    row("1.01KB", kib + 6);
    row("1.50KB", 1536);
    row("2KB", 2 * kib);
    row("9.99KB", 10229);
    row("10.00KB", 10239); // below 10, so with two decimals, which round up
    row("10KB", 10 * kib);
    row("10.0KB", 10 * kib + 1);
    row("10.5KB", 10752);
    row("99.9KB", 102297);
    row("100.0KB", 102399); // below 100, so with one decimal
    row("100KB", 100 * kib);
    row("100KB", 100 * kib + 1);
    row("101KB", 100 * kib + 513);
    row("512KB", 512 * kib);
    row("1000KB", 1000 * kib);
    row("1023KB", 1023 * kib);
    row("1023KB", 1023 * kib + 1);
    row("1024KB", mib - 1);

    row("1MB", mib);
    row("1.00MB", mib + 1);
    row("1.25MB", mib + mib / 4);
    row("9.54MB", 10000000);
    row("95.4MB", 100000000);
    row("954MB", 1000000000);
    row("1024MB", gib - 1);

    row("1GB", gib);
    row("1.00GB", gib + 1);
    row("1.50GB", 1610612736);
    row("2.00GB", 2147483647); // the single-precision quotient is exactly 2
    row("2GB", 2147483648);
    row("4.00GB", 4294967295);
    row("4GB", 4294967296);
    row("466GB", 500000000000);
    row("1024GB", tib - 1);

    row("1TB", tib);
    row("1.00TB", tib + 1);
    row("1.82TB", 2000000000000);
    // One step of single precision below 10 is rounded away, so the quotient is 10 and has one decimal.
    row("10.0TB", 10 * tib - 1);
    row("100TB", 100 * tib - 1);
    row("1024TB", pib - 1);

    row("1PB", pib);
    row("1.00PB", pib + 1);
    row("1.50PB", pib + pib / 2);
    row("1023PB", 1023 * pib);
    row("1024PB", eib - 1);

    row("1EB", eib);
    row("1.00EB", eib + 1);
    row("1.50EB", eib + eib / 2);
    row("2EB", 2 * eib);
    row("7EB", 7 * eib);
    row("8.00EB", std::numeric_limits<qint64>::max());
}

void TestTextHelpers::formatBytes()
{
    QFETCH(qint64, bytes);
    QTEST(FormatBytes(bytes), "text");
}

void TestTextHelpers::formatBytesHasThreeOrFourDigits()
{
    const QRegularExpression shape(QStringLiteral("^(\\d{1,4}|\\d\\.\\d\\d|10\\.00|\\d\\d\\.\\d|100\\.0)"
                                                  "( Bytes|KB|MB|GB|TB|PB|EB)$"));
    for (int bit = 0; bit < 63; ++bit) {
        const qint64 power = Q_INT64_C(1) << bit;
        for (const qint64 bytes : {power - 1, power, power + 1, power + power / 3, power + power / 2}) {
            const QString text = FormatBytes(bytes);
            QVERIFY2(shape.match(text).hasMatch(), qPrintable(text));
        }
    }
}

void TestTextHelpers::upOneLevel_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("parent");
    const auto row = [](const char* name, const char* path, const char* parent) {
        QTest::newRow(name) << QString::fromUtf8(path) << QString::fromUtf8(parent);
    };
    row("two components", "/home/user", "/home");
    row("one component", "/home", "/");
    row("root", "/", "/");
    row("slash at the end", "/home/user/", "/home/user");
    row("one component, slash at the end", "/home/", "/home");
    row("no slash", "name", "name");
    row("empty", "", "");
    row("relative", "a/b", "a");
    row("doubled slash", "/home//user", "/home/");
    row("two slashes", "//", "/");
    row("blanks stay", "/ a / b ", "/ a ");
    row("dots stay", "/a/../b/.", "/a/../b");
    row("line break in the name", "/a\nb/c", "/a\nb");
    row("beyond ASCII", "/\xc3\xa4/\xe2\x82\xac", "/\xc3\xa4");
}

void TestTextHelpers::upOneLevel()
{
    QFETCH(QString, path);
    QTEST(xs_UpOneLevel(path), "parent");
}

void TestTextHelpers::upOneLevelEndsAtRoot()
{
    QString path = QStringLiteral("/a").repeated(2000);
    for (int level = 0; level < 2000; ++level) {
        path = xs_UpOneLevel(path);
    }
    QCOMPARE(path, QStringLiteral("/"));
    QCOMPARE(xs_UpOneLevel(path), QStringLiteral("/"));
}

void TestTextHelpers::permissionsOfEveryMode()
{
    const TestDir dir;
    const QString path = dir.file(QStringLiteral("file"));
    for (unsigned mode = 0; mode < 512; ++mode) {
        dir.setMode(QStringLiteral("file"), mode);
        const QString octal = QStringLiteral("%1").arg(mode, 3, 8, QLatin1Char('0'));
        QCOMPARE(xs_formatPermisions(QFileInfo(path)), octal);
    }
}

void TestTextHelpers::permissions_data()
{
    QTest::addColumn<uint>("mode");
    QTest::addColumn<QString>("digits");
    QTest::newRow("rwxr-xr-x") << 0755U << QStringLiteral("755");
    QTest::newRow("rw-r--r--") << 0644U << QStringLiteral("644");
    QTest::newRow("------r--") << 0004U << QStringLiteral("004");
    QTest::newRow("nothing") << 0U << QStringLiteral("000");
    QTest::newRow("everything") << 0777U << QStringLiteral("777");
    QTest::newRow("set-uid") << 04755U << QStringLiteral("755");
    QTest::newRow("set-gid") << 02755U << QStringLiteral("755");
    QTest::newRow("sticky") << 01777U << QStringLiteral("777");
    QTest::newRow("all three") << 07000U << QStringLiteral("000");
}

void TestTextHelpers::permissions()
{
    QFETCH(uint, mode);
    const TestDir dir;
    const QString path = dir.file(QStringLiteral("file"), QByteArray(), mode);
    QTEST(xs_formatPermisions(QFileInfo(path)), "digits");
}

void TestTextHelpers::permissionsOfFolderAndLink()
{
    const TestDir dir;
    QCOMPARE(
        xs_formatPermisions(QFileInfo(dir.folder(QStringLiteral("folder"), 0750))), QStringLiteral("750"));
    QCOMPARE(xs_formatPermisions(QFileInfo(dir.fifo(QStringLiteral("pipe")))), QStringLiteral("644"));
    dir.file(QStringLiteral("target"), QByteArray(), 0640);
    const QString link = dir.link(QStringLiteral("link"), QStringLiteral("target"));
    QCOMPARE(xs_formatPermisions(QFileInfo(link)), QStringLiteral("640"));
}

void TestTextHelpers::permissionsOfMissingFile()
{
    const TestDir dir;
    QCOMPARE(xs_formatPermisions(QFileInfo(dir.path(QStringLiteral("missing")))), QStringLiteral("000"));
    QCOMPARE(xs_formatPermisions(QFileInfo()), QStringLiteral("000"));
}

void TestTextHelpers::permissionsLookNothingUp()
{
    // The copies of an info share what it knows. If that became new by the way, a change that the copies are
    // compared for would be missed.
    const TestDir dir;
    const QString path = dir.file(QStringLiteral("file"), "old", 0640);
    const QFileInfo info(path);
    QCOMPARE(info.size(), qint64(3));
    const QList<QFileInfo> copies{info};
    dir.file(QStringLiteral("file"), "new and longer");
    QCOMPARE(xs_formatPermisions(info), QStringLiteral("640"));
    QCOMPARE(copies.constFirst().size(), qint64(3));
}

void TestTextHelpers::cleanAbsolutePath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("clean");
    const QString here = QDir::currentPath();
    QTest::newRow("clean") << "/home/u"
                           << "/home/u";
    QTest::newRow("top") << "/"
                         << "/";
    QTest::newRow("slashes") << "//home///u//"
                             << "/home/u";
    QTest::newRow("dots") << "/home/./u/../v/."
                          << "/home/v";
    QTest::newRow("only slashes") << "///"
                                  << "/";
    QTest::newRow("above the top") << "/.."
                                   << "/";
    QTest::newRow("far above the top") << "/a/../../../b"
                                       << "/b";
    QTest::newRow("a name that begins with dots") << "/..a/...b"
                                                  << "/..a/...b";
    QTest::newRow("relative") << "~/x" << here + "/~/x";
    QTest::newRow("here") << "." << here;
    QTest::newRow("blanks and signs") << "/a b/%1/#&"
                                      << "/a b/%1/#&";
    QTest::newRow("empty") << ""
                           << "";
}

void TestTextHelpers::cleanAbsolutePath()
{
    QFETCH(QString, path);
    QTEST(::cleanAbsolutePath(path), "clean");
}

VANTREL_TEST_MAIN(TestTextHelpers)
#include "tst_TextHelpers.moc"
