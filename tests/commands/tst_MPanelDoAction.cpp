#include "app/aGlobal.h"
#include "commands/DialogNewDir.h"
#include "commands/Rename.h"
#include "info/Checksum.h"
#include "info/DialogFileSize.h"
#include "info/MProperties.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FormChild.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/StandIn.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include <algorithm>
#include <memory>

namespace {

QString clipboardText()
{
    return QGuiApplication::clipboard()->text(QClipboard::Clipboard);
}

void select(const MPanel* panel, const QStringList& names)
{
    panel->list->clearSelection();
    for (const QString& name : names) {
        panel->list->selectionModel()->select(
            listIndex(panel, name), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

/// @return whether a child of that class and name shows the text
bool shows(const QDialog* dialog, const QString& className, const QString& name, const QString& text)
{
    const QList<QWidget*> children = dialog->findChildren<QWidget*>(name);
    return std::any_of(children.begin(), children.end(), [&](const QWidget* child) {
        return QLatin1String(child->metaObject()->className()) == className
            && child->property("text").toString() == text;
    });
}

} // namespace

class TestMPanelDoAction : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void codeWithoutCommand_data();
    void codeWithoutCommand();

    void dialogs_data();
    void dialogs();
    void newDirIsMadeInTheCurrentFolder();
    void renameRenamesThePath();
    void diskUsageThreadEndsWithItsDialog();
    void checksumOfThePath();

    void clipboardOfTheSelection_data();
    void clipboardOfTheSelection();
    void clipboardOfTheTree();
    void clipboardWithoutFocus();

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

    void dropSetsTheDestination_data();
    void dropSetsTheDestination();

private:
    void launchesNothing(const QString& program);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> fixture;
    MPanel* panel = nullptr;
    QString root;
};

void TestMPanelDoAction::init()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("root/alpha"));
    dir->file(QStringLiteral("root/a.txt"), "aaa");
    dir->file(QStringLiteral("root/b c.txt"), "b");
    dir->file(QStringLiteral("root/new\nline"), "n");
    root = dir->path(QStringLiteral("root"));
    fixture = std::make_unique<PanelWindow>(root, QSize(700, 500));
    panel = fixture->panel;
    QVERIFY(fixture->activate());
    QVERIFY(waitForList(panel));
}

void TestMPanelDoAction::cleanup()
{
    fixture.reset();
    dir.reset();
}

void TestMPanelDoAction::codeWithoutCommand_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {0, -1, 1, 100, 104, 117, 1000, 101 + 65536}) {
        QTest::addRow("%d", code) << code;
    }
}

void TestMPanelDoAction::codeWithoutCommand()
{
    QFETCH(int, code);
    StandIn program(*dir);
    QGuiApplication::clipboard()->setText(QStringLiteral("kept"));
    gslDragList = QStringList{QStringLiteral("/kept/item")};
    gsDragBase = QStringLiteral("/kept");
    gsDropBase = QStringLiteral("/kept/target");
    gsLastPath1 = QStringLiteral("/kept/1");
    BoxAnswers boxes;
    ModalAnswers answers;
    panel->DoAction(code, program.path(), program.path());
    QCoreApplication::processEvents();

    QCOMPARE(clipboardText(), QStringLiteral("kept"));
    QCOMPARE(gslDragList, QStringList{QStringLiteral("/kept/item")});
    QCOMPARE(gsDragBase, QStringLiteral("/kept"));
    QCOMPARE(gsDropBase, QStringLiteral("/kept/target"));
    QCOMPARE(gsLastPath1, QStringLiteral("/kept/1"));
    QCOMPARE(panel->currentPath, root);
    panel->DoAction(CommandTerminal, QString(), program.path() + QStringLiteral(" control"));
    QCOMPARE(program.next().arguments, QStringList{QStringLiteral("control")});
}

void TestMPanelDoAction::dialogs_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("pathClass");
    QTest::addColumn<QString>("pathChild");
    QTest::addColumn<QString>("shown");

    const QString item = QStringLiteral("/b c.txt");
    QTest::newRow("properties") << 101 << "MProperties"
                                << "QLineEdit"
                                << "ReadOnly" << item;
    QTest::newRow("totalsize") << 102 << "DialogFileSize"
                               << "QLabel"
                               << "label_Path" << item;
    QTest::newRow("checksum") << 103 << "Checksum"
                              << "QLineEdit"
                              << "ReadOnly" << item;
    // It takes the current folder, whatever the path is.
    QTest::newRow("newdir") << 105 << "DialogNewDir"
                            << "QLabel"
                            << "label_Path"
                            << "";
    QTest::newRow("rename") << 106 << "Rename"
                            << "QLineEdit"
                            << "lineEditNew"
                            << "b c.txt";
}

void TestMPanelDoAction::dialogs()
{
    QFETCH(int, code);
    QFETCH(QString, className);
    QFETCH(QString, pathClass);
    QFETCH(QString, pathChild);
    QFETCH(QString, shown);
    const QString expected = code == CommandRename ? shown : root + shown;
    QPointer<QDialog> dialog;
    ModalAnswers answers;
    answers.meet<QDialog>([&](QDialog* opened) {
        dialog = opened;
        QCOMPARE(QLatin1String(opened->metaObject()->className()), className);
        QCOMPARE(opened->parentWidget(), static_cast<QWidget*>(panel));
        QVERIFY(opened->isModal());
        QTRY_VERIFY(shows(opened, pathClass, pathChild, expected));
        opened->close();
    });
    panel->DoAction(code, root + QStringLiteral("/b c.txt"), QStringLiteral("ignored"));
    QCOMPARE(answers.left(), 0);
    QVERIFY2(dialog.isNull(), "gone when the command has ended");
}

void TestMPanelDoAction::newDirIsMadeInTheCurrentFolder()
{
    ModalAnswers answers;
    answers.meet<DialogNewDir>([](DialogNewDir* dialog) {
        formChild<QLineEdit>(*dialog, "lineEdit").setText(QStringLiteral("made"));
        formChild<QPushButton>(*dialog, "pushButtonOK").click();
    });
    panel->DoAction(CommandNewDir, root + QStringLiteral("/alpha"), QString());
    QVERIFY(QFileInfo(root + QStringLiteral("/made")).isDir());
    QCOMPARE(dir->tree(QStringLiteral("root/alpha")), QStringList());
    QTRY_VERIFY(listNames(panel).contains(QStringLiteral("made")));
}

void TestMPanelDoAction::renameRenamesThePath()
{
    select(panel, {QStringLiteral("alpha")});
    ModalAnswers answers;
    answers.meet<Rename>([](Rename* dialog) {
        formChild<QLineEdit>(*dialog, "lineEditNew").setText(QStringLiteral("z.txt"));
        formChild<QPushButton>(*dialog, "pushButtonOK").click();
    });
    panel->DoAction(CommandRename, root + QStringLiteral("/a.txt"), QString());
    QCOMPARE(dir->read(QStringLiteral("root/z.txt")), QByteArray("aaa"));
    QVERIFY(!dir->exists(QStringLiteral("root/a.txt")));
    QTRY_VERIFY(listNames(panel).contains(QStringLiteral("z.txt")));
    QTRY_VERIFY(!listNames(panel).contains(QStringLiteral("a.txt")));
}

void TestMPanelDoAction::diskUsageThreadEndsWithItsDialog()
{
    gsNoRecurse = QStringLiteral("^/proc");
    const int before = threadCount();
    ModalAnswers answers;
    answers.meet<DialogFileSize>([](DialogFileSize* dialog) {
        QTRY_COMPARE(int(dialog->running), 0);
        QCOMPARE(qint64(dialog->fileCount), qint64(3));
        QCOMPARE(qint64(dialog->folderCount), qint64(1));
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    panel->DoAction(CommandTotalSize, root, QString());
    gsNoRecurse.clear();
    QTRY_VERIFY(threadCount() <= before);
}

void TestMPanelDoAction::checksumOfThePath()
{
    ModalAnswers answers;
    answers.meet<Checksum>([](Checksum* dialog) {
        QTRY_COMPARE(dialog->md5Text, QStringLiteral("47bce5c74f589f4867dbd57e9ca9f808"));
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    panel->DoAction(CommandChecksum, root + QStringLiteral("/a.txt"), QString());
    QCOMPARE(answers.left(), 0);
}

void TestMPanelDoAction::clipboardOfTheSelection_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("expected"); // of the names in the folder, "@" before each
    QTest::newRow("two items") << QStringList{"a.txt", "b c.txt"} << "@a.txt\n@b c.txt\n";
    QTest::newRow("in the order of selection") << QStringList{"b c.txt", "a.txt"} << "@b c.txt\n@a.txt\n";
    QTest::newRow("a folder") << QStringList{"alpha"} << "@alpha\n";
    QTest::newRow("name with a newline") << QStringList{"new\nline"} << "@new\nline\n";
    QTest::newRow("the folder above") << QStringList{".."} << "";
    QTest::newRow("the folder above and a file") << QStringList{"..", "a.txt"} << "@a.txt\n";
    QTest::newRow("nothing") << QStringList() << "";
}

void TestMPanelDoAction::clipboardOfTheSelection()
{
    QFETCH(QStringList, names);
    QFETCH(QString, expected);
    expected.replace(QLatin1Char('@'), root + QLatin1Char('/'));
    panel->list->setFocus();
    select(panel, names);
    panel->selectedPaths = QStringList{QStringLiteral("stale")};
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    BoxAnswers boxes;
    ModalAnswers answers;
    panel->DoAction(CommandClipboard, QStringLiteral("/ignored"), QStringLiteral("ignored"));
    QCOMPARE(clipboardText(), expected);
}

void TestMPanelDoAction::clipboardOfTheTree()
{
    panel->list->setFocus();
    select(panel, {QStringLiteral("a.txt")});
    panel->tree->setFocus();
    panel->DoAction(CommandClipboard, QString(), QString());
    QCOMPARE(clipboardText(), root + QLatin1Char('\n'));
}

void TestMPanelDoAction::clipboardWithoutFocus()
{
    select(panel, {QStringLiteral("a.txt")});
    panel->driveBar->findChild<QPushButton*>()->setFocus();
    QVERIFY(!panel->tree->hasFocus() && !panel->list->hasFocus());
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    panel->DoAction(CommandClipboard, QString(), QString());
    QCOMPARE(clipboardText(), QString());
}

void TestMPanelDoAction::launch_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("sendto") << 109 << QStringList{"-x", "/p a/th"};
    QTest::newRow("compare") << 113 << QStringList{"-x", "/last/2", "/last/1"};
    QTest::newRow("terminal") << 115 << QStringList{"-x"};
    QTest::newRow("terminalex") << 116 << QStringList{"-x", "/p a/th"};
}

void TestMPanelDoAction::launch()
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

void TestMPanelDoAction::sendToAndTerminalExAreTheSame()
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

void TestMPanelDoAction::compareArguments_data()
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

void TestMPanelDoAction::compareArguments()
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

void TestMPanelDoAction::compareWhatThePanelsShowed()
{
    StandIn program(*dir);
    const QString inSecond = dir->file(QStringLiteral("root/alpha/s.txt"));
    auto* second = new MPanel(&fixture->window);
    const std::unique_ptr<MPanel> owner(second);
    second->setGeometry(350, 0, 350, 500);
    second->show();
    gwPanel1 = panel;
    gwPanel2 = second;
    QVERIFY(openFolder(second, root + QStringLiteral("/alpha")));
    second->list->setFocus();
    select(second, {QStringLiteral("s.txt")});
    panel->list->setFocus();
    select(panel, {QStringLiteral("a.txt")});

    // The panel in gwPanel1 comes first, whichever of the two runs the command and was used last.
    const QStringList expected{root + QStringLiteral("/a.txt"), inSecond};
    panel->DoAction(CommandCompare, QString(), program.path());
    QCOMPARE(program.next().arguments, expected);
    second->DoAction(CommandCompare, QString(), program.path());
    const StandIn::Call fromSecond = program.next();
    QCOMPARE(fromSecond.arguments, expected);
    QCOMPARE(fromSecond.folder, root + QStringLiteral("/alpha"));
}

void TestMPanelDoAction::executeSplitsAtBlanks()
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

void TestMPanelDoAction::pathStaysOneArgument_data()
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

void TestMPanelDoAction::pathStaysOneArgument()
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

void TestMPanelDoAction::wordsOfTheCommand_data()
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

void TestMPanelDoAction::wordsOfTheCommand()
{
    QFETCH(QString, words);
    QFETCH(QStringList, expected);
    StandIn program(*dir);
    panel->DoAction(CommandTerminal, QStringLiteral("/ignored"), program.path() + words);
    QCOMPARE(program.next().arguments, expected);
    panel->DoAction(CommandTerminalEx, QStringLiteral("/the path"), program.path() + words);
    QCOMPARE(program.next().arguments, expected + QStringList{QStringLiteral("/the path")});
}

void TestMPanelDoAction::workingFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "alpha";
    QTest::newRow("blanks and quotes") << "it's \"a\" folder";
    QTest::newRow("newline") << "two\nlines";
    QTest::newRow("leading dash") << "-P";
}

void TestMPanelDoAction::workingFolder()
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

void TestMPanelDoAction::startFails_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("program");
    for (const int code : {109, 113, 114, 115, 116}) {
        QTest::addRow("%d missing", code) << code << "missing";
        QTest::addRow("%d not executable", code) << code << "plain";
        QTest::addRow("%d folder", code) << code << "root";
    }
}

void TestMPanelDoAction::startFails()
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

void TestMPanelDoAction::dropSetsTheDestination_data()
{
    QTest::addColumn<int>("action");
    QTest::addColumn<QString>("question");
    QTest::newRow("copy") << int(Qt::CopyAction) << "Copy selected files to folder: \n\n/target";
    QTest::newRow("move") << int(Qt::MoveAction) << "Move selected files to folder: \n\n/target";
    QTest::newRow("link") << int(Qt::LinkAction) << "";
    QTest::newRow("ignored") << int(Qt::IgnoreAction) << "";
}

void TestMPanelDoAction::dropSetsTheDestination()
{
    QFETCH(int, action);
    QFETCH(QString, question);
    gslDragList = QStringList{root + QStringLiteral("/a.txt")};
    gsDragBase = root;
    gsDropBase = QStringLiteral("/before");
    BoxAnswers boxes;
    if (!question.isEmpty()) {
        boxes.click(QStringLiteral("No"));
    }
    panel->gotDrop(static_cast<Qt::DropAction>(action), QStringLiteral("/target"));
    QCOMPARE(gsDropBase, QStringLiteral("/target"));
    QCOMPARE(boxes.texts().join(QLatin1Char('|')), question);
    QCOMPARE(gslDragList, QStringList{root + QStringLiteral("/a.txt")});
}

VANTREL_TEST_MAIN(TestMPanelDoAction)
#include "tst_MPanelDoAction.moc"
