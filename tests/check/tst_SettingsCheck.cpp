#include "app/aGlobal.h"
#include "check/SettingsCheck.h"
#include "tests/support/Settings.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

// What is found in the lines of a settings file. Commands are tst_CommandCheck.cpp, style sheets
// tst_StyleCheck.cpp.
class TestSettingsCheck : public QObject
{
    Q_OBJECT

private:
    TestDir m_dir;

    Findings check(const QByteArray& content) const;

private slots:
    void init() { resetSettings(); }

    void keys_data();
    void keys();
    void single_data();
    void single();
    void endlessLines_data();
    void endlessLines();
    void drives_data();
    void drives();
    void noRecurse_data();
    void noRecurse();
    void associations_data();
    void associations();
    void menu_data();
    void menu();
    void laterLines_data();
    void laterLines();
    void texts_data();
    void texts();
    void everythingIsTold();
    void findingsStandByLine();
    void fileThatCannotBeRead_data();
    void fileThatCannotBeRead();
};

namespace {

/// A line without which every file has a finding.
const QByteArray bounds("norecurse=^/proc\n");

/// @return "line kind" of each, parted by ", "
QString asText(const Findings& findings)
{
    QStringList all;
    for (const Finding& finding : findings) {
        all.append(QString::number(finding.line) + QLatin1Char(' ') + finding.kind);
    }
    return all.join(QStringLiteral(", "));
}

void addRow(const char* name, const char* content, const char* found)
{
    QTest::newRow(name) << QByteArray(content) << QString::fromLatin1(found);
}

void addColumns()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("found");
}

} // namespace

Findings TestSettingsCheck::check(const QByteArray& content) const
{
    SettingsCheck settings;
    return settings.read(m_dir.file(QStringLiteral("settings"), content))
        ? settings.findings()
        : Findings{{-1, QStringLiteral("unread"), QString()}};
}

void TestSettingsCheck::keys_data()
{
    addColumns();
    addRow("nothing but what is known", "", "");
    addRow("comments and blank lines", "#x=y\n\n   \n  # z\n", "");
    addRow("capitals", "WINDOW=1\n", "");
    addRow("unknown", "windows=1\n", "1 unknown-key");
    addRow("unknown, its line", "\n# x\nwindow=1\ncolor=red\n", "4 unknown-key");
    addRow("no =", "hello\n", "1 unknown-key");
    addRow("nothing before the =", "=x\n", "1 unknown-key");
    addRow("comment behind a value", "x # y\n", "1 unknown-key");
    addRow("blank in the key", "men u=copy=*=C\n", "1 unknown-key");
    addRow("each line", "a=1\nb=2\n", "1 unknown-key, 2 unknown-key");
    addRow("carriage returns", "window=1\r\nbogus=2\r\n", "2 unknown-key");
    addRow("no text in this encoding", "window=1\ndrive=/tmp=\xff\n", "2 encoding");
    addRow("beyond ASCII", "drive=/tmp=\xc3\xa4\n", "");
}

void TestSettingsCheck::keys()
{
    QFETCH(QByteArray, content);
    QTEST(asText(check(content + bounds)), "found");
}

void TestSettingsCheck::single_data()
{
    addColumns();
    addRow("window 0", "window=0\n", "");
    addRow("window 2", "window=2\n", "");
    addRow("window past the last", "window=3\n", "1 bad-window");
    addRow("window below 0", "window=-1\n", "1 bad-window");
    addRow("window as a word", "window=two\n", "1 bad-window");
    addRow("window with a comment", "window=2 # stacked\n", "1 bad-window");
    addRow("window empty", "window=\n", "1 missing-field");
    addRow("window without =", "window\n", "1 missing-field");
    addRow("icon empty", "icon=\n", "1 missing-field");
    addRow("icon not there", "icon=/nowhere/x.png\n", "1 icon-not-found");
    addRow("icon is a folder", "icon=/\n", "1 icon-not-found");
    addRow("icon is no picture", "icon=/etc/passwd\n", "1 bad-icon");
    addRow("style", "style=QLabel { color: red; }\n", "");
    addRow("style empty", "style=\n", "1 missing-field");
    addRow("style does not parse", "window=1\nstyle=QLabel { : red; }\n", "2 bad-style");
}

void TestSettingsCheck::single()
{
    QFETCH(QByteArray, content);
    QTEST(asText(check(content + bounds)), "found");
    if (qstrcmp(QTest::currentDataTag(), "icon not there") == 0) {
        const QByteArray icon = QFINDTESTDATA("../../packaging/vantrel-48.png").toLocal8Bit();
        QVERIFY(!icon.isEmpty());
        QCOMPARE(asText(check("icon=" + icon + '\n' + bounds)), QString());
    }
}

void TestSettingsCheck::endlessLines_data()
{
    QTest::addColumn<QString>("found");
    for (const char* start : {"style=", "menu=sendto=*=x=sh ", "assn=", "x", "drive=/="}) {
        QTest::newRow(start) << QStringLiteral("1 too-long");
    }
    QTest::newRow("#") << QString();
}

void TestSettingsCheck::endlessLines()
{
    QTEST(asText(check(QByteArray(QTest::currentDataTag()) + QByteArray(300000, 'x') + '\n' + bounds)),
        "found");
    QCOMPARE(asText(check("norecurse=" + QByteArray(300000, 'x') + '\n')), QStringLiteral("1 too-long"));
}

void TestSettingsCheck::drives_data()
{
    addColumns();
    addRow("home", "drive=~=Home\n", "");
    addRow("root", "drive=/=Root\n", "");
    addRow("twice", "drive=/=Root\ndrive=/=Root\n", "");
    addRow("label with a further =", "drive=/=a=b\n", "");
    addRow("not there", "drive=/no/where=X\n", "1 drive-not-found");
    addRow("a file", "drive=/etc/passwd=X\n", "1 drive-not-found");
    addRow("below home", "drive=~/=X\n", "1 drive-not-found");
    addRow("variable", "drive=$HOME=X\n", "1 drive-not-found");
    addRow("no full path", "drive=tmp=X\n", "1 drive-not-found");
    addRow("no label", "drive=/\n", "1 missing-field");
    addRow("no folder", "drive==X\n", "1 missing-field");
    addRow("nothing", "drive\n", "1 missing-field, 1 missing-field");
    addRow("label and folder", "drive=/no/where=\n", "1 missing-field, 1 drive-not-found");
}

void TestSettingsCheck::drives()
{
    QFETCH(QByteArray, content);
    QTEST(asText(check(content + bounds)), "found");
    const QByteArray odd = m_dir.folder(QStringLiteral("a$b ~c")).toLocal8Bit();
    QCOMPARE(asText(check("drive=" + odd + "=Odd\n" + bounds)), QString());
}

void TestSettingsCheck::noRecurse_data()
{
    addColumns();
    addRow("folders", "norecurse=^/(proc|sys|dev|run)(/|$)\n", "");
    addRow("with =", "norecurse=^/(?=proc)\n", "");
    addRow("home alone", "norecurse=^/home\n", "");
    addRow("no line", "window=1\n", "0 matches-everything");
    addRow("no line, in an empty file", "", "0 matches-everything");
    addRow("empty", "norecurse=\n", "1 matches-everything");
    addRow("without =", "norecurse\n", "1 matches-everything");
    addRow("commented out", "#norecurse=^/proc\n", "0 matches-everything");
    addRow("slash", "norecurse=/\n", "1 matches-everything");
    addRow("start", "norecurse=^\n", "1 matches-everything");
    addRow("any", "norecurse=.*\n", "1 matches-everything");
    addRow("an empty way", "norecurse=^/proc|\n", "1 matches-everything");
    addRow("all below the root folder", "norecurse=/.\n", "1 matches-everything");
    addRow("all below the root folder, from the start", "norecurse=^/.+\n", "1 matches-everything");
    addRow("first letter", "norecurse=^/[^/]\n", "1 matches-everything");
    addRow("two letters", "norecurse=/[a-z][a-z]\n", "1 matches-everything");
    addRow("any word", "norecurse=\\w\n", "1 matches-everything");
    addRow("any letter", "norecurse=[a-z]\n", "1 matches-everything");
    addRow("ending", "norecurse=\\.git$\n", "");
    addRow("names of letters", "norecurse=/[A-Z][a-z]+$\n", "");
    addRow("usual folders", "norecurse=^/(home|usr|srv|opt|root|tmp)\n", "");
    addRow("all but one folder", "norecurse=^/(?!home)\n", "");
    addRow("star of the shell", "norecurse=*\n", "1 bad-norecurse");
    addRow("open group", "window=1\nnorecurse=^/(proc\n", "2 bad-norecurse");
}

void TestSettingsCheck::noRecurse()
{
    QFETCH(QByteArray, content);
    QTEST(asText(check(content)), "found");
}

void TestSettingsCheck::associations_data()
{
    addColumns();
    addRow("several", "assn=JPG|png=sh\n", "");
    addRow("names without a dot", "assn=|=sh\n", "");
    addRow("command with =", "assn=x=sh --a=b\n", "");
    addRow("no command", "assn=x\n", "1 missing-field");
    addRow("empty command", "assn=x=\n", "1 missing-field");
    addRow("program not there", "assn=x=no-such-program\n", "1 program-not-found");
    addRow("with the dot", "assn=.txt=sh\n", "1 never-used");
    addRow("two dots", "assn=tar.gz|gz=sh\n", "1 never-used");
    addRow("star", "assn=*=sh\n", "1 never-used");
    addRow("blank beside the bar", "assn=a | b=sh\n", "1 never-used, 1 never-used");
    addRow("one suffix twice", "assn=x|X=sh\n", "");
}

void TestSettingsCheck::associations()
{
    QFETCH(QByteArray, content);
    QTEST(asText(check(content + bounds)), "found");
}

void TestSettingsCheck::menu_data()
{
    addColumns();
    addRow("built in", "menu=copy=.|*=Copy ...=\n", "");
    addRow("capitals", "MENU=Copy=TXT=Copy\n", "");
    addRow("program", "menu=sendto=txt=Edit=sh\n", "");
    addRow("separator", "menu=separator\n", "");
    addRow("separator with empty fields", "menu=separator = = =\n", "");
    addRow("separator with fields", "menu=separator=*=x\n", "1 unused-field");
    addRow("unknown keyword", "menu=bogus=*=X=y\n", "1 unknown-keyword");
    addRow("no keyword", "menu==*=X=y\n", "1 missing-field");
    addRow("no label", "menu=copy=*\n", "1 missing-field");
    addRow("nothing", "menu\n", "1 missing-field, 1 missing-field, 1 never-shown");
    addRow("sendto without a command", "menu=sendto=*=X\n", "1 missing-field");
    addRow("compare without a command", "menu=compare=*=X=\n", "1 missing-field");
    addRow("terminal without a command", "menu=terminal=*=X\n", "1 missing-field");
    addRow("terminalex without a command", "menu=terminalex=*=X\n", "1 missing-field");
    addRow("execute with a command", "menu=execute=*=X=sh\n", "1 unused-field");
    addRow("delete with a command", "menu=delete=*=X=trash\n", "1 unused-field");
    addRow("cut", "menu=sendto=*=X=sh --a=b\n", "1 cut-text");
    addRow("cut at once", "menu=sendto=*=X==sh\n", "1 cut-text, 1 missing-field");
    addRow("cut where none is taken", "menu=copy=*=a=b=c\n", "1 cut-text, 1 unused-field");
    addRow("program not there", "menu=sendto=*=X=no-such-program\n", "1 program-not-found");
    addRow("no types", "menu=copy==X\n", "1 never-shown");
    addRow("bars only", "menu=copy=||=X\n", "1 never-shown");
    addRow("pattern of the shell", "menu=copy=*.txt=X\n", "1 never-used, 1 never-shown");
    addRow("with the dot", "menu=copy=.txt|.log=X\n", "1 never-used, 1 never-used, 1 never-shown");
    addRow("one of two fits", "menu=copy=tar.gz|gz=X\n", "1 never-used");
    addRow("blank beside the bar", "menu=copy=. | *=X\n", "1 never-used, 1 never-used, 1 never-shown");
    addRow("empty part", "menu=copy=|txt=X\n", "");
    addRow("twice", "menu=copy=*=X\nmenu=copy=*=X\n", "");
}

void TestSettingsCheck::menu()
{
    QFETCH(QByteArray, content);
    QTEST(asText(check(content + bounds)), "found");
}

void TestSettingsCheck::laterLines_data()
{
    addColumns();
    addRow("window", "window=1\nwindow=2\nnorecurse=^/x\n", "2 replaced");
    addRow("window three times", "window=1\nwindow=2\nWindow=0\nnorecurse=^/x\n", "2 replaced, 3 replaced");
    addRow("icon", "icon=/nowhere\nicon=/nowhere\nnorecurse=^/x\n",
        "1 icon-not-found, 2 replaced, 2 icon-not-found");
    addRow("norecurse", "norecurse=^/x\nnorecurse=^/y\n", "2 replaced");
    addRow("suffix", "assn=a|b=sh\nassn=B|c=sh\nnorecurse=^/x\n", "2 replaced");
    addRow("suffixes of two lines", "assn=a=sh\nassn=b=sh\nassn=a|b=sh\nnorecurse=^/x\n",
        "3 replaced, 3 replaced");
    addRow("names without a dot", "assn=a|=sh\nassn=|=sh\nnorecurse=^/x\n", "2 replaced");
    addRow("other suffixes", "assn=a=sh\nassn=b=sh\nnorecurse=^/x\n", "");
    addRow("styles add up", "style=A { color: red; }\nstyle=A { color: red; }\nnorecurse=^/x\n", "");
}

void TestSettingsCheck::laterLines()
{
    QFETCH(QByteArray, content);
    QTEST(asText(check(content)), "found");
}

void TestSettingsCheck::texts_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text"); // of the last finding
    const auto row = [](const char* content, const char* text) {
        QTest::newRow(content) << QByteArray(content) << QString::fromLatin1(text);
    };
    row("Colour=x", "there is no key \"colour\"");
    row("=x", "there is no key before the \"=\"");
    row("menu=Bogus=*=X", "there is no keyword \"Bogus\": the entry does nothing");
    row("menu=sendto=*=X=sh a = b = c",
        R"(the command ends at the further "="; what follows is dropped: "=b = c")");
    row("menu=copy=*=X=sh", "this keyword takes no command: \"sh\" is never used");
    row("menu=separator=x", "a separator has no further fields");
    row("menu=copy==X", "the entry is never shown: it has no types");
    row("menu=copy=a.b=X", "the entry is never shown: none of its types fits an item");
    row("assn=.a=sh",
        "no file has the suffix \".a\": a suffix is what follows the last dot, without the dot");
    row("assn=a*=sh", "no file has the suffix \"a*\": a star stands for any file only where it stands alone");
    row("assn= a |b=sh", "no file has the suffix \"a \": the blank beside it counts");
    QTest::newRow("assn later") << QByteArray("assn=a|b|c=sh\nassn=c|b=sh")
                                << QStringLiteral("for \"c|b\" this line takes the place of line 1");
    QTest::newRow("window later") << QByteArray("window=1\nwindow=2")
                                  << QStringLiteral("this line takes the place of line 1");
    row("window=x", "\"x\" is no number, and counts as 0");
    row("window=9", "9 is no arrangement: 0 is side by side, 1 a single panel, 2 one above the other");
    row("drive=/nope=X", "there is no folder \"/nope\"");
    row("drive=nope=X", "there is no folder \"nope\": this is no full path");
    row("drive=~/x=X", "there is no folder \"~/x\": only a ~ that stands alone is expanded");
    row("drive=/$x=X", "there is no folder \"/$x\": only a ~ that stands alone is expanded");
    row("icon=/nope", "there is no file \"/nope\"");
    row("icon=/etc/passwd", "\"/etc/passwd\" is no picture that can be read");
    row("drive==X", "the folder is missing");
    row("drive=/", "the label is missing");
    row("assn=x", "the command is missing");
    row("window=", "the number is missing");
    row("icon=", "the file of the icon is missing");
    row("style=", "the style sheet is missing");
    row("drive=/=\xff", "this line is not text in the encoding of the locale");
}

void TestSettingsCheck::texts()
{
    QFETCH(QByteArray, content);
    const Findings found = check(content + '\n' + bounds);
    QVERIFY(!found.isEmpty());
    QTEST(found.last().text, "text");
}

void TestSettingsCheck::everythingIsTold()
{
    const Findings empty = check("norecurse=\n");
    QCOMPARE(empty.size(), 1);
    QCOMPARE(empty.first().text,
        QStringLiteral("the empty expression matches, and so skips, every folder in disk usage"));
    QCOMPARE(check("norecurse=/\n").value(0).text,
        QStringLiteral("the expression matches, and so skips, every folder in disk usage"));
    QCOMPARE(check("window=1\n").value(0).text,
        QStringLiteral("there is no norecurse line: an empty expression skips every folder in disk usage"));
    QVERIFY(check("norecurse=(\n")
                .value(0)
                .text.startsWith(
                    QStringLiteral("the expression is not valid, so that disk usage skips nothing: ")));
}

void TestSettingsCheck::findingsStandByLine()
{
    // What is found at the end, in the style sheet and of the file as a whole, stands where its line does.
    QCOMPARE(asText(check("x=1\nstyle=A {\nassn=a=no-such-program\ny=2\n")),
        QStringLiteral("0 matches-everything, 1 unknown-key, 2 bad-style, 3 program-not-found, "
                       "4 unknown-key"));
}

void TestSettingsCheck::fileThatCannotBeRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("folder") << QStringLiteral("folder");
    QTest::newRow("pipe") << QStringLiteral("pipe");
    QTest::newRow("link to nothing") << QStringLiteral("link");
}

void TestSettingsCheck::fileThatCannotBeRead()
{
    QFETCH(QString, name);
    if (name == QLatin1String("folder")) {
        m_dir.folder(name);
    } else if (name == QLatin1String("pipe")) {
        m_dir.fifo(name);
    } else if (name == QLatin1String("link")) {
        m_dir.link(name, QStringLiteral("nothing"));
    }
    SettingsCheck settings;
    QVERIFY(!settings.read(m_dir.path(name)));
    QCOMPARE(settings.findings().size(), 0);
}

VANTREL_TEST_MAIN(TestSettingsCheck)
#include "tst_SettingsCheck.moc"
