#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "tests/support/Settings.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>

// What the lines of the settings file mean. What kinds of file are read is tst_ReadConfigFiles.cpp.
class TestReadConfig : public QObject
{
    Q_OBJECT

private:
    TestDir m_dir;

    void read(const QByteArray& content) { ReadConfig(m_dir.file(QStringLiteral(".Vantrel"), content)); }

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
    void everySettingOfOneFile();
    void secondReadEmptiesAllButDrives();
};

void TestReadConfig::init()
{
    resetSettings();
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
    row("no =, blanks around", "  style\t\n", " ");
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
    QCOMPARE(labels, (QStringList{"Z", "", "A", "Z"}));
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

VANTREL_TEST_MAIN(TestReadConfig)
#include "tst_ReadConfig.moc"
