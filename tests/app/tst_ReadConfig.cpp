#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTextCodec>

#include <algorithm>
#include <unistd.h>

namespace {

// Generous, so that no busy machine and no sanitizer reaches them; work that grows with the square of the
// input takes minutes here.
constexpr qint64 longestReadMs = 8000;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long mostMib = 4000;
#else
constexpr long mostMib = 200;
#endif

QStringList words(const QString& text)
{
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char(','));
}

QByteArray repeated(const QByteArray& line, int count)
{
    return line.repeated(count);
}

QString drivesAsText()
{
    QStringList all;
    for (const LSDRIVE& drive : qAsConst(gstDrives)) {
        all.append(drive.path + QLatin1Char('>') + drive.label);
    }
    return all.join(QLatin1Char(','));
}

QString associationsAsText()
{
    QStringList all;
    for (auto each = gmFileAssn.cbegin(); each != gmFileAssn.cend(); ++each) {
        all.append(each.key() + QLatin1Char('>') + each.value());
    }
    return all.join(QLatin1Char(','));
}

} // namespace

class TestReadConfig : public QObject
{
    Q_OBJECT

private:
    TestDir m_dir;

    void read(const QByteArray& content) { ReadConfig(m_dir.file(QStringLiteral(".Vantrel"), content)); }
    void compareDefaults() const;
    void compareFailure(const QString& path) const;

private slots:
    void init();

    void style_data();
    void style();
    void icon_data();
    void icon();
    void drive_data();
    void drive();
    void window_data();
    void window();
    void noRecurse_data();
    void noRecurse();
    void association_data();
    void association();
    void menu_data();
    void menu();
    void menuKeywords_data();
    void menuKeywords();
    void menuKeepsFileOrder();

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
    void everySettingOfOneFile();

    void cannotBeOpened_data();
    void cannotBeOpened();
    void unreadable();
    void failureKeepsSettings();
    void linkToFile();
    void secondReadEmptiesAllButDrives();

    void manyLines_data();
    void manyLines();
    void longLine_data();
    void longLine();
    void binary();
    void writesNothing();
    void leavesNoDescriptor();
};

void TestReadConfig::init()
{
    gsAppStyleSheet.clear();
    gsAppIcon.clear();
    gmFileAssn.clear();
    gstMenu.clear();
    gstDrives.clear();
    gsNoRecurse.clear();
    giWindowArrange = ArrangeSideBySide;
}

void TestReadConfig::compareDefaults() const
{
    QCOMPARE(gsAppStyleSheet, QString());
    QCOMPARE(gsAppIcon, QString());
    QCOMPARE(gmFileAssn.size(), 0);
    QCOMPARE(gstMenu.size(), 0);
    QCOMPARE(gstDrives.size(), 0);
    QCOMPARE(gsNoRecurse, QString());
    QCOMPARE(giWindowArrange, 0);
}

void TestReadConfig::compareFailure(const QString& path) const
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

void TestReadConfig::style_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("sheet");
    const auto row = [](const char* name, const char* content, const char* sheet) {
        QTest::newRow(name) << QByteArray(content) << QString::fromUtf8(sheet);
    };
    row("one", "style=QLabel { color: red; }\n", "QLabel { color: red; } ");
    row("blanks and capitals", "  STYLE = QWidget { font-size: 9pt; }", "QWidget { font-size: 9pt; } ");
    row("tabs", "\tstyle\t=\tA{}\t\n", "A{} ");
    row("further =", "style=a=b\n", "a=b ");
    row("blanks around further =", "style=a = b\n", "a = b ");
    row("accumulates in order", "style=a\nstyle=b\nstyle=c\n", "a b c ");
    row("accumulates around others", "style=a\nicon=i\n#\nStyle=b\n", "a b ");
    row("empty value", "style=\n", " ");
    row("no =", "style\n", " ");
    row("case kept", "style=QLabel#Name { COLOR: Red; }\n", "QLabel#Name { COLOR: Red; } ");
    row("# in the value", "style=a # b\n", "a # b ");
    row("commented out", "# style=a\n", "");
}

void TestReadConfig::style()
{
    QFETCH(QByteArray, content);
    read(content);
    QTEST(gsAppStyleSheet, "sheet");
}

void TestReadConfig::icon_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("icon");
    const auto row = [](const char* name, const char* content, const char* icon) {
        QTest::newRow(name) << QByteArray(content) << QString::fromUtf8(icon);
    };
    row("one", "icon=/usr/share/icons/App Icon.PNG\n", "/usr/share/icons/App Icon.PNG");
    row("second wins", "icon=first\nicon=second\n", "second");
    row("empty wins", "icon=first\nicon=\n", "");
    row("further =", "icon=a=b = c\n", "a=b = c");
    row("capitals", "Icon = X\n", "X");
    row("~ is kept", "icon=~/x.png\n", "~/x.png");
}

void TestReadConfig::icon()
{
    QFETCH(QByteArray, content);
    read(content);
    QTEST(gsAppIcon, "icon");
}

void TestReadConfig::drive_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("drives");
    const auto row = [](const char* name, const char* content, const QString& drives) {
        QTest::newRow(name) << QByteArray(content) << drives;
    };
    row("home", "drive=~=Home\n", QDir::homePath() + QStringLiteral(">Home"));
    row("home with blanks", "drive = ~ = My Home \n", QDir::homePath() + QStringLiteral(">My Home"));
    row("home without label", "drive=~\n", QDir::homePath() + QStringLiteral(">"));
    row("below home is kept", "drive=~/Music=Music\n", QStringLiteral("~/Music>Music"));
    row("two tildes are kept", "drive=~~=x\n", QStringLiteral("~~>x"));
    row("other home is kept", "drive=~user=x\n", QStringLiteral("~user>x"));
    row("~ as label", "drive=/=~\n", QStringLiteral("/>~"));
    row("label keeps further =", "drive=/a=b=c = d\n", QStringLiteral("/a>b=c = d"));
    row("case kept", "DRIVE=/MNT/Data=Big DATA\n", QStringLiteral("/MNT/Data>Big DATA"));
    row("file order", "drive=/c=3\ndrive=/a=1\ndrive=/b=2\n", QStringLiteral("/c>3,/a>1,/b>2"));
    row("duplicates stay", "drive=/=R\ndrive=/=R\n", QStringLiteral("/>R,/>R"));
    row("no label", "drive=/mnt\n", QStringLiteral("/mnt>"));
    row("empty path", "drive==L\n", QStringLiteral(">L"));
    row("nothing", "drive\n", QStringLiteral(">"));
}

void TestReadConfig::drive()
{
    QFETCH(QByteArray, content);
    read(content);
    QTEST(drivesAsText(), "drives");
}

void TestReadConfig::window_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("arrange");
    QTest::newRow("side by side") << QByteArray("window=0") << 0;
    QTest::newRow("single") << QByteArray("window=1") << 1;
    QTest::newRow("stacked") << QByteArray("window=2") << 2;
    QTest::newRow("unknown number is kept") << QByteArray("window=7") << 7;
    QTest::newRow("negative") << QByteArray("window=-3") << -3;
    QTest::newRow("leading zero is decimal") << QByteArray("window=010") << 10;
    QTest::newRow("plus") << QByteArray("window=+2") << 2;
    QTest::newRow("blanks") << QByteArray("  Window  =  2  ") << 2;
    QTest::newRow("word") << QByteArray("window=two") << 0;
    QTest::newRow("hexadecimal") << QByteArray("window=0x2") << 0;
    QTest::newRow("number and word") << QByteArray("window=2 panels") << 0;
    QTest::newRow("fraction") << QByteArray("window=1.0") << 0;
    QTest::newRow("further =") << QByteArray("window=2=1") << 0;
    QTest::newRow("empty") << QByteArray("window=") << 0;
    QTest::newRow("no =") << QByteArray("window") << 0;
    QTest::newRow("largest int") << QByteArray("window=2147483647") << 2147483647;
    QTest::newRow("past int") << QByteArray("window=2147483648") << 0;
    QTest::newRow("last wins") << QByteArray("window=1\nwindow=2\n") << 2;
    QTest::newRow("word after number") << QByteArray("window=2\nwindow=x\n") << 0;
}

void TestReadConfig::window()
{
    giWindowArrange = 9;
    QFETCH(QByteArray, content);
    read(content);
    QTEST(giWindowArrange, "arrange");
}

void TestReadConfig::noRecurse_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    QTest::newRow("as written") << QByteArray("norecurse=^/(Proc|sys)\\b")
                                << QStringLiteral("^/(Proc|sys)\\b");
    QTest::newRow("further =") << QByteArray("norecurse=(?=x) = y") << QStringLiteral("(?=x) = y");
    QTest::newRow("capital key") << QByteArray("NoRecurse = /proc ") << QStringLiteral("/proc");
    QTest::newRow("last wins") << QByteArray("norecurse=a\nnorecurse=b") << QStringLiteral("b");
    QTest::newRow("empty wins") << QByteArray("norecurse=a\nnorecurse=") << QString();
}

void TestReadConfig::noRecurse()
{
    QFETCH(QByteArray, content);
    read(content);
    QTEST(gsNoRecurse, "text");
}

void TestReadConfig::association_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("associations"); // sorted by suffix
    const auto row = [](const char* name, const char* content, const char* associations) {
        QTest::newRow(name) << QByteArray(content) << QString::fromUtf8(associations);
    };
    row("one", "assn=txt=Editor\n", "txt>Editor");
    row("list, lower-cased", "assn=JPG|png=viewer --full\n", "jpg>viewer --full,png>viewer --full");
    row("later replaces its suffix only", "assn=JPG|png=viewer --full\nassn=png=other\n",
        "jpg>viewer --full,png>other");
    row("later replaces whatever the case", "assn=PNG=a\nassn=Png=b\n", "png>b");
    row("empty part", "assn=pdf||ps=v\n", ">v,pdf>v,ps>v");
    row("bar at the end", "assn=pdf|=v\n", ">v,pdf>v");
    row("bar at the start", "assn=|pdf=v\n", ">v,pdf>v");
    row("only a bar", "assn=|=v\n", ">v");
    row("no suffix", "assn==v\n", ">v");
    row("blanks inside stay", "assn= a | b =v\n", " b>v,a >v");
    row("command keeps case and further =", "assn=x=Run --A=B = C\n", "x>Run --A=B = C");
    row("no command", "assn=x\n", "x>");
    row("empty command replaces", "assn=x=a\nassn=x=\n", "x>");
    row("nothing", "assn\n", ">");
    row("two dots", "assn=tar.gz=t\n", "tar.gz>t");
    row("beyond ASCII", "assn=\xc3\x84\xc3\x96=v\n", "\xc3\xa4\xc3\xb6>v");
}

void TestReadConfig::association()
{
    QFETCH(QByteArray, content);
    read(content);
    QTEST(associationsAsText(), "associations");
}

void TestReadConfig::menu_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("types");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("command");
    const auto row = [](const char* name, const char* content, int code, const char* types, const char* label,
                         const char* command) {
        QTest::newRow(name) << QByteArray(content) << code << QString::fromUtf8(types)
                            << QString::fromUtf8(label) << QString::fromUtf8(command);
    };
    row("command is cut at =", "menu=Execute=TXT|*=Edit=editor a=b", 114, "|txt|*|", "Edit", "editor a");
    row("command is trimmed before =", "menu=execute=*=E=a = b = c", 114, "|*|", "E", "a");
    row("unknown keyword", "menu=bogus=*=X=y", 0, "|*|", "X", "y");
    row("empty keyword", "menu==*=X=y", 0, "|*|", "X", "y");
    row("keyword prefix", "menu=exec=*=X=y", 0, "|*|", "X", "y");
    row("keyword and more", "menu=executes=*=X=y", 0, "|*|", "X", "y");
    row("separator", "menu=separator", 104, "||", "", "");
    row("separator with =", "menu=separator=", 104, "||", "", "");
    row("nothing", "menu", 0, "||", "", "");
    row("types only", "menu=copy=.|*", 107, "|.|*|", "", "");
    row("no command", "menu=rename=*=Rename", 106, "|*|", "Rename", "");
    row("empty types", "menu=delete==Delete", 108, "||", "Delete", "");
    row("types lower-cased", "menu=delete=JPG|Png|.=D", 108, "|jpg|png|.|", "D", "");
    row("blanks inside types stay", "menu=delete= a | b =D", 108, "|a | b|", "D", "");
    row("label and command keep case", "menu=EXECUTE=*=Open WITH=Run --ALL", 114, "|*|", "Open WITH",
        "Run --ALL");
    row("blanks around everything", " MENU = Execute = * = Label = cmd %1 ", 114, "|*|", "Label", "cmd %1");
    row("place markers stay", "menu=execute=%1=%2=%3 %L1 %%", 114, "|%1|", "%2", "%3 %L1 %%");
    row("ampersand stays", "menu=execute=*=A & B=x && y", 114, "|*|", "A & B", "x && y");
}

void TestReadConfig::menu()
{
    QFETCH(QByteArray, content);
    read(content);
    QCOMPARE(gstMenu.size(), 1);
    const LSMENU entry = gstMenu.first();
    QTEST(entry.code, "code");
    QTEST(entry.types, "types");
    QTEST(entry.label, "label");
    QTEST(entry.command, "command");
}

void TestReadConfig::menuKeywords_data()
{
    QTest::addColumn<int>("code");
    QTest::newRow("properties") << 101;
    QTest::newRow("totalsize") << 102;
    QTest::newRow("checksum") << 103;
    QTest::newRow("separator") << 104;
    QTest::newRow("newdir") << 105;
    QTest::newRow("rename") << 106;
    QTest::newRow("copy") << 107;
    QTest::newRow("delete") << 108;
    QTest::newRow("sendto") << 109;
    QTest::newRow("clipboard") << 110;
    QTest::newRow("compare") << 113;
    QTest::newRow("execute") << 114;
    QTest::newRow("terminal") << 115;
    QTest::newRow("terminalex") << 116;
}

void TestReadConfig::menuKeywords()
{
    QFETCH(int, code);
    const QByteArray keyword = QTest::currentDataTag();
    read("menu=" + keyword + "=*=x\nmenu=" + keyword.toUpper() + "=*=y\n");
    QCOMPARE(gstMenu.size(), 2);
    QCOMPARE(gstMenu.at(0).code, code);
    QCOMPARE(gstMenu.at(1).code, code);
}

void TestReadConfig::menuKeepsFileOrder()
{
    read("menu=copy=*=Z\nmenu=separator\nmenu=bogus=*=A\nmenu=copy=*=Z\n");
    QStringList labels;
    for (const LSMENU& entry : qAsConst(gstMenu)) {
        labels.append(entry.label);
    }
    QCOMPARE(labels, words(QStringLiteral("Z,,A,Z")));
}

void TestReadConfig::ignoredLines_data()
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

void TestReadConfig::ignoredLines()
{
    BoxAnswers boxes;
    QFETCH(QByteArray, content);
    read(content);
    compareDefaults();
    QCOMPARE(boxes.seen().size(), 0);
}

void TestReadConfig::lineEnds_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("LF") << QByteArray("icon=a\nwindow=2\n");
    QTest::newRow("CR LF") << QByteArray("icon=a\r\nwindow=2\r\n");
    QTest::newRow("mixed") << QByteArray("icon=a\r\nwindow=2\n");
    QTest::newRow("blank lines between") << QByteArray("\r\n\n\r\nicon=a\n\n\r\n\nwindow=2");
}

void TestReadConfig::lineEnds()
{
    QFETCH(QByteArray, content);
    read(content);
    QCOMPARE(gsAppIcon, QStringLiteral("a"));
    QCOMPARE(giWindowArrange, 2);
}

void TestReadConfig::byteOrderMark_data()
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

void TestReadConfig::byteOrderMark()
{
    QFETCH(QByteArray, content);
    read(content);
    QCOMPARE(gsAppIcon, QStringLiteral("\u00e4"));
    QCOMPARE(giWindowArrange, 2);
}

void TestReadConfig::localeCodec()
{
    read("icon=/\xc3\xa4/\xe2\x82\xac.png\n");
    QCOMPARE(gsAppIcon, QStringLiteral("/\u00e4/\u20ac.png"));
    read("icon=a\xff\xfe"
         "b\nwindow=2\n");
    QVERIFY(gsAppIcon.startsWith(QLatin1Char('a')) && gsAppIcon.endsWith(QLatin1Char('b')));
    QCOMPARE(giWindowArrange, 2);
}

void TestReadConfig::localeCodecThatIsNotUtf8()
{
    QTextCodec* const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    read("icon=/\xe4.png\n");
    QTextCodec::setCodecForLocale(before);
    QCOMPARE(gsAppIcon, QStringLiteral("/\u00e4.png"));
}

void TestReadConfig::nulInsideValues()
{
    read(QByteArray("icon=a\0b\nwindow=2\n", 18));
    QCOMPARE(gsAppIcon, QString::fromLatin1("a\0b", 3));
    QCOMPARE(giWindowArrange, 2);
}

void TestReadConfig::lastLineWithoutEnd()
{
    read("window=2\nicon=last");
    QCOMPARE(gsAppIcon, QStringLiteral("last"));
}

void TestReadConfig::everySettingOfOneFile()
{
    read("style=A {}\nicon=i.png\ndrive=/=Root\nwindow=1\nnorecurse=/proc\nassn=txt=edit\n"
         "menu=copy=*=Copy\n");
    QCOMPARE(gsAppStyleSheet, QStringLiteral("A {} "));
    QCOMPARE(gsAppIcon, QStringLiteral("i.png"));
    QCOMPARE(drivesAsText(), QStringLiteral("/>Root"));
    QCOMPARE(giWindowArrange, 1);
    QCOMPARE(gsNoRecurse, QStringLiteral("/proc"));
    QCOMPARE(associationsAsText(), QStringLiteral("txt>edit"));
    QCOMPARE(gstMenu.size(), 1);
}

void TestReadConfig::cannotBeOpened_data()
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

void TestReadConfig::cannotBeOpened()
{
    QFETCH(QString, path);
    compareFailure(path);
}

void TestReadConfig::unreadable()
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

void TestReadConfig::failureKeepsSettings()
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

void TestReadConfig::linkToFile()
{
    m_dir.file(QStringLiteral("target"), "icon=x\n");
    ReadConfig(m_dir.link(QStringLiteral("link"), QStringLiteral("target")));
    QCOMPARE(gsAppIcon, QStringLiteral("x"));
}

void TestReadConfig::secondReadEmptiesAllButDrives()
{
    const QByteArray all("style=a\nicon=i\ndrive=/=R\nwindow=2\nnorecurse=n\nassn=x=y\nmenu=copy\n");
    read(all);
    read(QByteArray());
    QCOMPARE(gsAppStyleSheet, QString());
    QCOMPARE(gmFileAssn.size(), 0);
    QCOMPARE(gstMenu.size(), 0);
    QCOMPARE(gstDrives.size(), 1);
    QCOMPARE(gsAppIcon, QStringLiteral("i"));
    QCOMPARE(gsNoRecurse, QStringLiteral("n"));
    QCOMPARE(giWindowArrange, 2);
    read(all);
    QCOMPARE(gsAppStyleSheet, QStringLiteral("a "));
    QCOMPARE(gstMenu.size(), 1);
    QCOMPARE(gstDrives.size(), 2);
}

void TestReadConfig::manyLines_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("styleLength");
    QTest::addColumn<int>("menuEntries");
    QTest::addColumn<int>("drives");
    constexpr int million = 1000000;
    QTest::newRow("comments") << QByteArray("# a comment line of usual length\n") << 0 << 0 << 0;
    QTest::newRow("blank") << QByteArray("\n") << 0 << 0 << 0;
    QTest::newRow("unknown") << QByteArray("unknown = value\n") << 0 << 0 << 0;
    QTest::newRow("style") << QByteArray("style=QLabel {}\n") << 10 * million << 0 << 0;
    QTest::newRow("icon") << QByteArray("icon=/usr/share/icon.png\n") << 0 << 0 << 0;
    QTest::newRow("menu") << QByteArray("menu=copy=*=Copy\n") << 0 << million << 0;
    QTest::newRow("drive") << QByteArray("drive=/mnt=Data\n") << 0 << 0 << million;
}

void TestReadConfig::manyLines()
{
    QFETCH(QByteArray, line);
    const QString path = m_dir.file(QStringLiteral("many"), repeated(line, 1000000));
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

void TestReadConfig::longLine_data()
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

void TestReadConfig::longLine()
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

void TestReadConfig::binary()
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

void TestReadConfig::writesNothing()
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

void TestReadConfig::leavesNoDescriptor()
{
    read("icon=a\n");
    const int before = descriptorCount();
    for (int i = 0; i < 100; ++i) {
        read("icon=a\n");
    }
    QCOMPARE(descriptorCount(), before);
}

VANTREL_TEST_MAIN(TestReadConfig)
#include "tst_ReadConfig.moc"
