#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ListSelection.h"
#include "tests/support/OnePanel.h"
#include "tests/support/StandIn.h"
#include "tests/support/TestMain.h"

/// The commands that start programs: what those are given, and where they are started.
class TestMPanelDoActionLaunch : public QObject, private OnePanel
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { close(); }

    void launch_data();
    void launch();
    void sendToAndTerminalExAreTheSame();
    void compareArguments_data();
    void compareArguments();
    void compareWhatThePanelsShowed();
    void executeSplitsAtBlanks();
    void pathStaysOneArgument_data();
    void pathStaysOneArgument();
    void wordsOfTheCommand_data();
    void wordsOfTheCommand();
    void workingFolder_data();
    void workingFolder();
    void startFails_data();
    void startFails();
};

void TestMPanelDoActionLaunch::init()
{
    make();
    dir->folder(QStringLiteral("root/alpha"));
    dir->file(QStringLiteral("root/a.txt"), "aaa");
    show();
}

void TestMPanelDoActionLaunch::launch_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("sendto") << 109 << QStringList{"-x", "/p a/th"};
    QTest::newRow("compare") << 113 << QStringList{"-x", "/last/2", "/last/1"};
    QTest::newRow("terminal") << 115 << QStringList{"-x"};
    QTest::newRow("terminalex") << 116 << QStringList{"-x", "/p a/th"};
}

void TestMPanelDoActionLaunch::launch()
{
    QFETCH(int, code);
    QFETCH(QStringList, expected);
    StandIn program(*dir);
    gsLastPath1 = QStringLiteral("/last/1");
    gsLastPath2 = QStringLiteral("/last/2");
    BoxAnswers boxes;
    panel->DoAction(code, QStringLiteral("/p a/th"), program.path() + QStringLiteral(" -x"));
    const StandIn::Call call = program.next();
    QCOMPARE(call.arguments, expected);
    QCOMPARE(call.folder, root);
    QCOMPARE(program.calls().size(), 1);
}

void TestMPanelDoActionLaunch::sendToAndTerminalExAreTheSame()
{
    StandIn program(*dir);
    for (const int code : {CommandSendTo, CommandTerminalEx}) {
        panel->DoAction(code, QStringLiteral("/x"), program.path() + QStringLiteral(" one"));
    }
    const StandIn::Call first = program.next();
    const StandIn::Call second = program.next();
    QCOMPARE(first.arguments, (QStringList{QStringLiteral("one"), QStringLiteral("/x")}));
    QCOMPARE(second.arguments, first.arguments);
    QCOMPARE(second.folder, first.folder);
}

void TestMPanelDoActionLaunch::compareArguments_data()
{
    QTest::addColumn<QString>("last1");
    QTest::addColumn<QString>("last2");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("both") << "/one"
                          << "/two" << QStringList{"/two", "/one"};
    QTest::newRow("only the first") << "/one"
                                    << "" << QStringList{"/one"};
    QTest::newRow("only the second") << ""
                                     << "/two" << QStringList{"/two"};
    QTest::newRow("neither") << ""
                             << "" << QStringList();
    QTest::newRow("with blanks") << "/o n e"
                                 << "/t\nwo" << QStringList{"/t\nwo", "/o n e"};
}

void TestMPanelDoActionLaunch::compareArguments()
{
    QFETCH(QString, last1);
    QFETCH(QString, last2);
    QFETCH(QStringList, expected);
    StandIn program(*dir);
    gsLastPath1 = last1;
    gsLastPath2 = last2;
    panel->DoAction(CommandCompare, QStringLiteral("/ignored"), program.path());
    QCOMPARE(program.next().arguments, expected);
}

void TestMPanelDoActionLaunch::compareWhatThePanelsShowed()
{
    StandIn program(*dir);
    const QString inSecond = dir->file(QStringLiteral("root/alpha/s.txt"));
    auto* second = new MPanel(&window->window);
    const std::unique_ptr<MPanel> owner(second);
    second->setGeometry(350, 0, 350, 500);
    second->show();
    gwPanel1 = panel;
    gwPanel2 = second;
    QVERIFY(openFolder(second, root + QStringLiteral("/alpha")));
    second->list->setFocus();
    selectRows(second, {QStringLiteral("s.txt")});
    panel->list->setFocus();
    selectRows(panel, {QStringLiteral("a.txt")});

    // The panel in gwPanel1 comes first, whichever of the two runs the command and was used last.
    const QStringList expected{root + QStringLiteral("/a.txt"), inSecond};
    panel->DoAction(CommandCompare, QString(), program.path());
    QCOMPARE(program.next().arguments, expected);
    second->DoAction(CommandCompare, QString(), program.path());
    const StandIn::Call fromSecond = program.next();
    QCOMPARE(fromSecond.arguments, expected);
    QCOMPARE(fromSecond.folder, root + QStringLiteral("/alpha"));
}

void TestMPanelDoActionLaunch::executeSplitsAtBlanks()
{
    StandIn program(*dir, QStringLiteral("root/run"));
    StandIn other(*dir, QStringLiteral("other"));
    panel->DoAction(CommandExecute, program.path(), other.path());
    const StandIn::Call call = program.next();
    QCOMPARE(call.arguments, QStringList());
    QCOMPARE(call.folder, root);
    // The path is the command line: what follows a blank becomes arguments.
    panel->DoAction(CommandExecute, program.path() + QStringLiteral(" me  now"), other.path());
    QCOMPARE(program.next().arguments, (QStringList{QStringLiteral("me"), QStringLiteral("now")}));
    QCOMPARE(other.calls().size(), 0);
}

void TestMPanelDoActionLaunch::pathStaysOneArgument_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("blanks") << "/a b/  c ";
    QTest::newRow("newlines") << "/a\nb\n";
    QTest::newRow("leading dash") << "-rf";
    QTest::newRow("leading dashes") << "--help me";
    QTest::newRow("quotes") << "/it's a \"name\"";
    QTest::newRow("dollar") << "/$HOME/${x}/$(id)/`id`";
    QTest::newRow("shell characters") << "/a;b#c*d?e[f]g{h,i}|j&k<l>m~!";
    QTest::newRow("backslash") << "/a\\ b\\n";
    QTest::newRow("percent") << "/%1%2%f%%";
    QTest::newRow("tab") << "/a\tb";
    QTest::newRow("other scripts") << QString::fromUtf8("/\u00e4\u6587\U0001F600");
    QTest::newRow("only a blank") << " ";
}

void TestMPanelDoActionLaunch::pathStaysOneArgument()
{
    QFETCH(QString, path);
    StandIn program(*dir);
    panel->DoAction(CommandSendTo, path, program.path() + QStringLiteral(" word"));
    QCOMPARE(program.next().arguments, (QStringList{QStringLiteral("word"), path}));
    gsLastPath1 = path;
    gsLastPath2 = QStringLiteral("/two");
    panel->DoAction(CommandCompare, QString(), program.path());
    QCOMPARE(program.next().arguments, (QStringList{QStringLiteral("/two"), path}));
}

void TestMPanelDoActionLaunch::wordsOfTheCommand_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("none") << "" << QStringList();
    QTest::newRow("one") << " -e" << QStringList{"-e"};
    QTest::newRow("several blanks") << "   a    b  " << QStringList{"a", "b"};
    QTest::newRow("double quotes") << " \"a b\"" << QStringList{"\"a", "b\""};
    QTest::newRow("single quotes") << " 'a b'" << QStringList{"'a", "b'"};
    QTest::newRow("dollar") << " $HOME ${HOME} $(id)" << QStringList{"$HOME", "${HOME}", "$(id)"};
    QTest::newRow("braces") << " {a,b} {} }" << QStringList{"{a,b}", "{}", "}"};
    QTest::newRow("semicolon") << " a; b" << QStringList{"a;", "b"};
    QTest::newRow("hash") << " # rest" << QStringList{"#", "rest"};
    QTest::newRow("star") << " * ?" << QStringList{"*", "?"};
    QTest::newRow("pipes") << " | & && > <" << QStringList{"|", "&", "&&", ">", "<"};
    QTest::newRow("backslash") << " a\\ b" << QStringList{"a\\", "b"};
    QTest::newRow("tilde") << " ~ ~/x" << QStringList{"~", "~/x"};
    QTest::newRow("percent") << " %f %1" << QStringList{"%f", "%1"};
    QTest::newRow("tab is no blank") << " a\tb" << QStringList{"a\tb"};
}

void TestMPanelDoActionLaunch::wordsOfTheCommand()
{
    QFETCH(QString, words);
    QFETCH(QStringList, expected);
    StandIn program(*dir);
    panel->DoAction(CommandTerminal, QStringLiteral("/ignored"), program.path() + words);
    QCOMPARE(program.next().arguments, expected);
    panel->DoAction(CommandTerminalEx, QStringLiteral("/the path"), program.path() + words);
    QCOMPARE(program.next().arguments, expected + QStringList{QStringLiteral("/the path")});
}

void TestMPanelDoActionLaunch::workingFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "alpha";
    QTest::newRow("blanks and quotes") << "it's \"a\" folder";
    QTest::newRow("newline") << "two\nlines";
    QTest::newRow("leading dash") << "-P";
}

void TestMPanelDoActionLaunch::workingFolder()
{
    QFETCH(QString, name);
    StandIn program(*dir);
    const QString folder = dir->folder(QStringLiteral("root/") + name);
    panel->currentPath = folder;
    panel->contextPath = QStringLiteral("/");
    for (const int code : {CommandSendTo, CommandCompare, CommandTerminal, CommandTerminalEx}) {
        panel->DoAction(code, QStringLiteral("/x"), program.path());
        QCOMPARE(program.next().folder, folder);
    }
    panel->DoAction(CommandExecute, program.path(), QString());
    QCOMPARE(program.next().folder, folder);
}

void TestMPanelDoActionLaunch::startFails_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("program");
    for (const int code : {109, 113, 114, 115, 116}) {
        QTest::addRow("%d missing", code) << code << "missing";
        QTest::addRow("%d not executable", code) << code << "plain";
        QTest::addRow("%d folder", code) << code << "root";
    }
}

void TestMPanelDoActionLaunch::startFails()
{
    QFETCH(int, code);
    QFETCH(QString, program);
    dir->file(QStringLiteral("plain"), "#!/bin/sh\n", 0644);
    const QString path = dir->path(program);
    BoxAnswers boxes;
    boxes.click(QStringLiteral("OK"));
    const QString line = path + QStringLiteral(" <b>word</b>");
    panel->DoAction(code, code == CommandExecute ? line : QStringLiteral("/x"), line);
    QCOMPARE(boxes.seen().size(), 1);
    const BoxAnswers::Box& box = boxes.seen().constFirst();
    QCOMPARE(box.title, QStringLiteral("Error"));
    QCOMPARE(box.text, QStringLiteral("Failed to start program:\n") + path);
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
    QCOMPARE(box.parent, static_cast<QWidget*>(panel));
    QVERIFY(box.modal);
    QCOMPARE(panel->currentPath, root);
}

VANTREL_TEST_MAIN(TestMPanelDoActionLaunch)
#include "tst_MPanelDoActionLaunch.moc"
