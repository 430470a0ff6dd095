#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Settings.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTextCodec>

#include <algorithm>
#include <unistd.h>

namespace {

// Generous, so that no busy machine and no sanitizer reaches them; work that grows with the square of the
// input takes minutes here.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr qint64 longestReadMs = 90000;
constexpr long mostMib = 4000;
#else
constexpr qint64 longestReadMs = 30000;
constexpr long mostMib = 200;
#endif

int manyTimes()
{
    return qEnvironmentVariableIntValue("VANTREL_LONG") != 0 ? 1000000 : 100000;
}

} // namespace

// What kinds of file are read: odd, huge, unreadable, or no file at all.
class TestReadConfigFiles : public QObject
{
    Q_OBJECT

private:
    TestDir m_dir;

    void read(const QByteArray& content) { ReadConfig(m_dir.file(QStringLiteral(".Vantrel"), content)); }
    void compareDefaults() const;
    void compareFailure(const QString& path) const;

private slots:
    void init();
    void ignoredLines_data();
    void ignoredLines();
    void lineEnds_data();
    void lineEnds();
    void byteOrderMark_data();
    void byteOrderMark();
    void localeCodec();
    void localeCodecThatIsNotUtf8();
    void nulInsideValues();
    void lastLineWithoutEnd();
    void cannotBeOpened_data();
    void cannotBeOpened();
    void unreadable();
    void failureKeepsSettings();
    void linkToFile();
    void manyLines_data();
    void manyLines();
    void longLine_data();
    void longLine();
    void lineOfPieces_data();
    void lineOfPieces();
    void longLinesThatMeanNothingAreNotHeld_data();
    void longLinesThatMeanNothingAreNotHeld();
    void binary();
    void writesNothing();
    void leavesNoDescriptor();
};

void TestReadConfigFiles::init()
{
    resetSettings();
}

void TestReadConfigFiles::compareDefaults() const
{
    QCOMPARE(gsAppStyleSheet, QString());
    QCOMPARE(gsAppIcon, QString());
    QCOMPARE(gmFileAssn.size(), 0);
    QCOMPARE(gstMenu.size(), 0);
    QCOMPARE(gstDrives.size(), 0);
    QCOMPARE(gsNoRecurse, QString());
    QCOMPARE(giWindowArrange, 0);
}

void TestReadConfigFiles::compareFailure(const QString& path) const
{
    BoxAnswers boxes;
    boxes.click(QStringLiteral("OK"));
    ReadConfig(path);
    QCOMPARE(boxes.seen().size(), 1);
    const BoxAnswers::Box box = boxes.seen().first();
    QCOMPARE(box.title, QStringLiteral("Error"));
    QCOMPARE(box.text, QStringLiteral("Failed to open .Vantrel"));
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
    QCOMPARE(box.parent, nullptr);
    QVERIFY(box.modal);
    compareDefaults();
}

void TestReadConfigFiles::ignoredLines_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("comments and blank lines") << QByteArray("# one\n\n   \n\t\n  #icon=x\n#\n##\n");
    QTest::newRow("unknown key") << QByteArray("colour=red\nicons=x\nico=x\n");
    QTest::newRow("no key") << QByteArray("=x\n===\n");
    QTest::newRow("blank inside the key") << QByteArray("i con=x\nmenu copy=y\n");
    QTest::newRow("plain text") << QByteArray("hello world");
    QTest::newRow("NULs") << QByteArray(1000, '\0');
    QTest::newRow("NUL before the key") << QByteArray("\0icon=x\n", 8);
    QTest::newRow("NUL in the key") << QByteArray("ic\0on=x\n", 8);
    QTest::newRow("key that only folds to a keyword") << QByteArray("\xc5\xbftyle=x\n");
}

void TestReadConfigFiles::ignoredLines()
{
    BoxAnswers boxes;
    QFETCH(QByteArray, content);
    read(content);
    compareDefaults();
    QCOMPARE(boxes.seen().size(), 0);
}

void TestReadConfigFiles::lineEnds_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("LF") << QByteArray("icon=a\nwindow=2\n");
    QTest::newRow("CR LF") << QByteArray("icon=a\r\nwindow=2\r\n");
    QTest::newRow("mixed") << QByteArray("icon=a\r\nwindow=2\n");
    QTest::newRow("blank lines between") << QByteArray("\r\n\n\r\nicon=a\n\n\r\n\nwindow=2");
}

void TestReadConfigFiles::lineEnds()
{
    QFETCH(QByteArray, content);
    read(content);
    QCOMPARE(gsAppIcon, QStringLiteral("a"));
    QCOMPARE(giWindowArrange, 2);
}

void TestReadConfigFiles::byteOrderMark_data()
{
    QTest::addColumn<QByteArray>("content");
    const auto encoded = [](const char* codec) {
        const QScopedPointer<QTextEncoder> encoder(QTextCodec::codecForName(codec)->makeEncoder());
        return encoder->fromUnicode(QStringLiteral("icon=\u00e4\nwindow=2\n"));
    };
    QTest::newRow("UTF-8") << QByteArray("\xef\xbb\xbficon=\xc3\xa4\nwindow=2\n");
    QTest::newRow("UTF-16") << encoded("UTF-16");
    QTest::newRow("UTF-32") << encoded("UTF-32");
}

void TestReadConfigFiles::byteOrderMark()
{
    QFETCH(QByteArray, content);
    read(content);
    QCOMPARE(gsAppIcon, QStringLiteral("\u00e4"));
    QCOMPARE(giWindowArrange, 2);
}

void TestReadConfigFiles::localeCodec()
{
    read("icon=/\xc3\xa4/\xe2\x82\xac.png\n");
    QCOMPARE(gsAppIcon, QStringLiteral("/\u00e4/\u20ac.png"));
    read("icon=a\xff\xfe"
         "b\nwindow=2\n");
    QVERIFY(gsAppIcon.startsWith(QLatin1Char('a')) && gsAppIcon.endsWith(QLatin1Char('b')));
    QCOMPARE(giWindowArrange, 2);
}

void TestReadConfigFiles::localeCodecThatIsNotUtf8()
{
    QTextCodec* const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    read("icon=/\xe4.png\n");
    QTextCodec::setCodecForLocale(before);
    QCOMPARE(gsAppIcon, QStringLiteral("/\u00e4.png"));
}

void TestReadConfigFiles::nulInsideValues()
{
    read(QByteArray("icon=a\0b\nwindow=2\n", 18));
    QCOMPARE(gsAppIcon, QString::fromLatin1("a\0b", 3));
    QCOMPARE(giWindowArrange, 2);
}

void TestReadConfigFiles::lastLineWithoutEnd()
{
    read("window=2\nicon=last");
    QCOMPARE(gsAppIcon, QStringLiteral("last"));
}

void TestReadConfigFiles::cannotBeOpened_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << m_dir.path(QStringLiteral("missing/.Vantrel"));
    QTest::newRow("empty path") << QString();
    QTest::newRow("folder") << m_dir.folder(QStringLiteral("folder"));
    QTest::newRow("pipe") << m_dir.fifo(QStringLiteral("pipe"));
    QTest::newRow("link to pipe") << m_dir.link(QStringLiteral("toPipe"), QStringLiteral("pipe"));
    QTest::newRow("endless device") << QStringLiteral("/dev/zero");
    QTest::newRow("dangling link") << m_dir.link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    QTest::newRow("link to itself") << m_dir.link(QStringLiteral("loop"), QStringLiteral("loop"));
    QTest::newRow("below a file") << m_dir.file(QStringLiteral("file")) + QStringLiteral("/.Vantrel");
    QTest::newRow("name too long") << m_dir.path(QString(5000, QLatin1Char('x')));
}

void TestReadConfigFiles::cannotBeOpened()
{
    QFETCH(QString, path);
    compareFailure(path);
}

void TestReadConfigFiles::unreadable()
{
    // Root may read everything, so it reads as another user; that one must be able to reach the file.
    constexpr uid_t nobody = 65534;
    m_dir.setMode(QString(), 0755);
    const QString path = m_dir.file(QStringLiteral("unreadable"), "icon=x\n", 0);
    const uid_t user = ::geteuid();
    if (user == 0) {
        QCOMPARE(::seteuid(nobody), 0);
    }
    const bool isThere = QFileInfo::exists(path);
    compareFailure(path);
    QCOMPARE(::seteuid(user), 0);
    QVERIFY(isThere);
}

void TestReadConfigFiles::failureKeepsSettings()
{
    read("style=a\nassn=x=y\nmenu=copy\n");
    BoxAnswers boxes;
    boxes.key(Qt::Key_Escape);
    ReadConfig(m_dir.path(QStringLiteral("missing")));
    QCOMPARE(boxes.seen().size(), 1);
    QCOMPARE(gsAppStyleSheet, QStringLiteral("a "));
    QCOMPARE(gmFileAssn.size(), 1);
    QCOMPARE(gstMenu.size(), 1);
}

void TestReadConfigFiles::linkToFile()
{
    m_dir.file(QStringLiteral("target"), "icon=x\n");
    ReadConfig(m_dir.link(QStringLiteral("link"), QStringLiteral("target")));
    QCOMPARE(gsAppIcon, QStringLiteral("x"));
}

void TestReadConfigFiles::manyLines_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("styleLength");
    QTest::addColumn<int>("menuEntries");
    QTest::addColumn<int>("drives");
    QTest::newRow("comments") << QByteArray("# a comment line of usual length\n") << 0 << 0 << 0;
    QTest::newRow("blank") << QByteArray("\n") << 0 << 0 << 0;
    QTest::newRow("unknown") << QByteArray("unknown = value\n") << 0 << 0 << 0;
    QTest::newRow("style") << QByteArray("style=QLabel {}\n") << 10 * manyTimes() << 0 << 0;
    QTest::newRow("icon") << QByteArray("icon=/usr/share/icon.png\n") << 0 << 0 << 0;
    QTest::newRow("menu") << QByteArray("menu=copy=*=Copy\n") << 0 << manyTimes() << 0;
    QTest::newRow("drive") << QByteArray("drive=/mnt=Data\n") << 0 << 0 << manyTimes();
}

void TestReadConfigFiles::manyLines()
{
    QFETCH(QByteArray, line);
    const QString path = m_dir.file(QStringLiteral("many"), line.repeated(manyTimes()));
    const long before = residentKib();
    QElapsedTimer timer;
    timer.start();
    ReadConfig(path);
    const qint64 spent = timer.elapsed();
    const long grown = (residentKib() - before) / 1024;
    QTEST(gsAppStyleSheet.length(), "styleLength");
    QTEST(gstMenu.size(), "menuEntries");
    QTEST(gstDrives.size(), "drives");
    QVERIFY2(spent < longestReadMs, qPrintable(QString::number(spent)));
    QVERIFY2(grown < mostMib, qPrintable(QString::number(grown)));
}

void TestReadConfigFiles::longLine_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("styleLength");
    QTest::addColumn<int>("iconLength");
    constexpr int length = 10000000;
    QTest::newRow("all key") << QByteArray(length, 'k') << 0 << 0;
    QTest::newRow("all separators") << QByteArray(length, '=') << 0 << 0;
    QTest::newRow("all blanks") << QByteArray(length, ' ') << 0 << 0;
    QTest::newRow("style") << "style=" + QByteArray(length, 's') << length + 1 << 0;
    QTest::newRow("icon of separators") << "icon=" + QByteArray(length, '=') << 0 << length;
    QTest::newRow("menu of separators") << "menu=" + QByteArray(length, '=') << 0 << 0;
    QTest::newRow("comment") << "#" + QByteArray(length, '#') << 0 << 0;
    QTest::newRow("suffixes") << "assn=" + QByteArray(length / 10, '|') + "=x" << 0 << 0;
    QTest::newRow("window") << "window=" + QByteArray(length, '1') << 0 << 0;
}

void TestReadConfigFiles::longLine()
{
    QFETCH(QByteArray, content);
    QElapsedTimer timer;
    timer.start();
    read(content + "\nnorecurse=after\n");
    QVERIFY2(timer.elapsed() < longestReadMs, qPrintable(QString::number(timer.elapsed())));
    QTEST(gsAppStyleSheet.length(), "styleLength");
    QTEST(gsAppIcon.length(), "iconLength");
    QCOMPARE(giWindowArrange, 0);
    QCOMPARE(gsNoRecurse, QStringLiteral("after"));
}

void TestReadConfigFiles::lineOfPieces_data()
{
    // Lines are read in pieces of 65,536 characters, and held whole beyond 524,288 only where they mean
    // something.
    QTest::addColumn<int>("length");
    for (const int around : {65536, 131072, 524288, 589824}) {
        for (const int length : {around - 1, around, around + 1}) {
            QTest::newRow(qPrintable(QString::number(length))) << length;
        }
    }
}

void TestReadConfigFiles::lineOfPieces()
{
    QFETCH(int, length);
    const QByteArray value = QByteArray(length - 10, 'v') + "=end!"; // with "icon=" the line is that long
    for (const QByteArray& end : {QByteArray("\n"), QByteArray("\r\n"), QByteArray()}) {
        read("icon=" + value + end);
        QCOMPARE(gsAppIcon, QString(value));
        if (!end.isEmpty()) {
            read("icon=" + value + end + "norecurse=after" + end);
            QCOMPARE(gsAppIcon, QString(value));
            QCOMPARE(gsNoRecurse, QStringLiteral("after"));
        }
        read(QByteArray(length, ' ') + "icon=" + value + QByteArray(length, '\t') + end);
        QCOMPARE(gsAppIcon, QString(value));
        read("icon" + QByteArray(length, ' ') + "=" + value + end);
        QCOMPARE(gsAppIcon, QString(value));
        gsAppIcon.clear();
        gsNoRecurse.clear();
        read("#" + QByteArray(length, 'x') + "icon=x" + end);
        read(QByteArray(length, 'x') + "=icon=x" + end);
        read(QByteArray(length, 'x') + " icon=x" + end);
        QCOMPARE(gsAppIcon, QString());
    }
}

void TestReadConfigFiles::longLinesThatMeanNothingAreNotHeld_data()
{
    QTest::addColumn<QByteArray>("begin");
    QTest::addColumn<char>("unit");
    QTest::newRow("comment") << QByteArray("#") << 'x';
    QTest::newRow("unknown key") << QByteArray("colour=") << 'x';
    QTest::newRow("no key") << QByteArray() << 'x';
    QTest::newRow("blanks") << QByteArray() << ' ';
    QTest::newRow("NUL") << QByteArray() << '\0';
    QTest::newRow("separators") << QByteArray() << '=';
}

void TestReadConfigFiles::longLinesThatMeanNothingAreNotHeld()
{
    QFETCH(QByteArray, begin);
    QFETCH(char, unit);
    QFile file(m_dir.path(QStringLiteral("long")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(begin);
    const QByteArray part(1000000, unit);
    for (int i = 0; i < 10; ++i) {
        file.write(part);
    }
    file.write("\nicon=after\n");
    file.close();
    int longest = 0;
    QVERIFY(ReadConfigLines(
        file.fileName(), [&](const ConfigLine& line) { longest = qMax(longest, line.text.length()); }));
    QCOMPARE(gsAppIcon, QStringLiteral("after"));
    QVERIFY2(longest < 600000, QByteArray::number(longest).constData());
}

void TestReadConfigFiles::binary()
{
    QByteArray noise(4 << 20, '\0');
    quint32 state = 12345;
    for (char& byte : noise) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    // No letter "i", so that no line of the noise can name a key that is looked at below.
    std::replace(noise.begin(), noise.end(), 'i', 'j');
    std::replace(noise.begin(), noise.end(), 'I', 'J');
    read(noise + "\nicon=after\n");
    QCOMPARE(gsAppIcon, QStringLiteral("after"));
    QCOMPARE(giWindowArrange, 0);
}

void TestReadConfigFiles::writesNothing()
{
    const TestDir home;
    const QByteArray content("style=a\nicon=i\nwindow=2\ndrive=~=Home\n");
    const QString path = home.file(QStringLiteral(".Vantrel"), content);
    home.setTimes(QStringLiteral(".Vantrel"), 1000000000);
    const QByteArray realHome = qgetenv("HOME");
    qputenv("HOME", home.path().toLocal8Bit());
    ReadConfig(path);
    {
        BoxAnswers boxes;
        boxes.click(QStringLiteral("OK"));
        ReadConfig(home.path(QStringLiteral("missing")));
        QCOMPARE(boxes.left(), 0);
    }
    qputenv("HOME", realHome);
    QCOMPARE(home.tree(), QStringList{QStringLiteral(".Vantrel")});
    QCOMPARE(home.read(QStringLiteral(".Vantrel")), content);
    QCOMPARE(QFileInfo(path).lastModified().toSecsSinceEpoch(), 1000000000LL);
}

void TestReadConfigFiles::leavesNoDescriptor()
{
    read("icon=a\n");
    const int before = descriptorCount();
    for (int i = 0; i < 10; ++i) {
        read("icon=a\n");
    }
    QCOMPARE(descriptorCount(), before);
}

VANTREL_TEST_MAIN(TestReadConfigFiles)
#include "tst_ReadConfigFiles.moc"
