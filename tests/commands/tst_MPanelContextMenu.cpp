#include "app/aGlobal.h"
#include "panel/MPanel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ContextMenuPanel.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/StandIn.h"
#include "tests/support/TestMain.h"

#include <QClipboard>
#include <QDialog>
#include <QDir>
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>

namespace {

const QPoint somewhere(60, 60);

/// @return what the menu for an item offers
QStringList offered(MPanel* panel, const QString& path, bool isFolder)
{
    return ContextMenuPanel::shownBy([&] {
        panel->ShowContextMenu(path, isFolder ? 1 : 0, somewhere);
    }).entries;
}

} // namespace

/// What the context menu offers for an item, and what happens when an entry is chosen.
class TestMPanelContextMenu : public QObject, private ContextMenuPanel
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }

    void filter_data();
    void filter();
    void typesAreComparedWithTheirCase();
    void separatorsEverywhere_data();
    void separatorsEverywhere();
    void noEntries();
    void orderOfTheSettings();
    void menuAndItsActions();
    void labelIsKept_data();
    void labelIsKept();
    void menuIsGoneAfterwards();

    void chosenEntryRuns_data();
    void chosenEntryRuns();
    void chosenEntryPassesItsOwnCode_data();
    void chosenEntryPassesItsOwnCode();
    void chosenByKeyboard();
    void unknownCodeDoesNothing();
    void folderGoneMeanwhileRunsNothing();
    void dismissedRunsNothing_data();
    void dismissedRunsNothing();
};

void TestMPanelContextMenu::filter_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isFolder");
    QTest::addColumn<QString>("expected");

    QTest::newRow("suffix") << "/x/notes.txt" << false << "files,folders+files,txt,txt+c";
    QTest::newRow("upper case suffix") << "/x/Report.TXT" << false << "files,folders+files,txt,txt+c";
    QTest::newRow("second of two types") << "/x/main.c" << false << "files,folders+files,txt+c";
    QTest::newRow("last of two suffixes") << "/x/notes.txt.gz" << false << "files,folders+files,gz";
    QTest::newRow("part of a type") << "/x/notes.tx" << false << "files,folders+files";
    QTest::newRow("type is part of the suffix") << "/x/notes.txt2" << false << "files,folders+files";
    QTest::newRow("hidden, no other dot") << "/x/.txt" << false << "files,folders+files,txt,txt+c";
    QTest::newRow("suffix with a blank") << "/x/notes.txt " << false << "files,folders+files";
    QTest::newRow("no dot at all") << "/x/Makefile" << false << "files,folders+files,whole path";
    QTest::newRow("suffix as a name") << "/x/txt" << false << "files,folders+files";
    QTest::newRow("dot in a folder's name")
        << "/x.txt/Makefile" << false << "files,folders+files,behind the folder's dot";
    QTest::newRow("dots in folder and name") << "/x.gz/a.txt" << false << "files,folders+files,txt,txt+c";
    QTest::newRow("ends in a dot")
        << "/x/odd." << false
        << "files,folders,folders+files,txt,txt+c,gz,whole path,behind the folder's dot,nothing";
    QTest::newRow("only a dot")
        << "." << false
        << "files,folders,folders+files,txt,txt+c,gz,whole path,behind the folder's dot,nothing";
    QTest::newRow("empty, no folder")
        << "" << false
        << "files,folders,folders+files,txt,txt+c,gz,whole path,behind the folder's dot,nothing";
    QTest::newRow("folder") << "/x/alpha" << true << "folders,folders+files";
    QTest::newRow("folder with a suffix") << "/x/alpha.txt" << true << "folders,folders+files";
    QTest::newRow("folder that ends in a dot") << "/x/alpha." << true << "folders,folders+files";
    QTest::newRow("empty, folder") << "" << true << "folders,folders+files";
}

void TestMPanelContextMenu::filter()
{
    QFETCH(QString, path);
    QFETCH(bool, isFolder);
    QFETCH(QString, expected);
    for (const auto& [label, types] : std::initializer_list<std::pair<const char*, const char*>>{
             {"files", "|*|"}, {"folders", "|.|"}, {"folders+files", "|.|*|"}, {"txt", "|txt|"},
             {"txt+c", "|txt|c|"}, {"gz", "|gz|"}, {"whole path", "|/x/makefile|"},
             {"behind the folder's dot", "|txt/makefile|"}, {"nothing", "||"}}) {
        gstMenu.append(entry(QLatin1String(label), QLatin1String(types)));
    }
    QCOMPARE(offered(panel, path, isFolder).join(QLatin1Char(',')), expected);
}

void TestMPanelContextMenu::typesAreComparedWithTheirCase()
{
    gstMenu = {entry(QStringLiteral("upper"), QStringLiteral("|TXT|")),
        entry(QStringLiteral("lower"), QStringLiteral("|txt|"))};
    QCOMPARE(offered(panel, QStringLiteral("/x/a.TXT"), false), QStringList{QStringLiteral("lower")});
}

void TestMPanelContextMenu::separatorsEverywhere_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isFolder");
    QTest::addColumn<QString>("expected");

    QTest::newRow("folder") << "/x/alpha" << true << "- folder - - - -";
    QTest::newRow("file") << "/x/a.txt" << false << "- - - file - -";
    QTest::newRow("neither") << "/x/a.gz" << false << "- - - - -";
}

void TestMPanelContextMenu::separatorsEverywhere()
{
    QFETCH(QString, path);
    QFETCH(bool, isFolder);
    QFETCH(QString, expected);
    // Whatever else its entry says, a separator is one.
    gstMenu = {entry(QString(), QStringLiteral("||"), CommandSeparator),
        entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("label"), QStringLiteral("|.|"), CommandSeparator),
        entry(QStringLiteral("label"), QStringLiteral("|txt|"), CommandSeparator),
        entry(QStringLiteral("file"), QStringLiteral("|txt|")),
        entry(QStringLiteral("label"), QStringLiteral("|*|"), CommandSeparator),
        entry(QString(), QString(), CommandSeparator)};
    QCOMPARE(offered(panel, path, isFolder).join(QLatin1Char(' ')), expected);
}

void TestMPanelContextMenu::noEntries()
{
    bool met = false;
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) {
        met = menu->actions().isEmpty();
        dismiss(menu);
    });
    panel->ShowContextMenu(QStringLiteral("/x/a.txt"), 0, somewhere);
    QVERIFY(met);
}

void TestMPanelContextMenu::orderOfTheSettings()
{
    QStringList expected;
    for (const char* label : {"c", "a", "b", "a"}) {
        gstMenu.append(entry(QLatin1String(label), QStringLiteral("|*|")));
        expected.append(QLatin1String(label));
    }
    QCOMPARE(offered(panel, QStringLiteral("/x/y"), false), expected);
    gstMenu.removeFirst(); // each menu is built afresh
    expected.removeFirst();
    QCOMPARE(offered(panel, QStringLiteral("/x/y"), false), expected);
}

void TestMPanelContextMenu::menuAndItsActions()
{
    gstMenu
        = {entry(QStringLiteral("First"), QStringLiteral("|*|"), CommandCompare, QStringLiteral("a -b  c")),
            entry(QStringLiteral("Second"), QStringLiteral("|*|"), CommandProperties, QString())};
    bool met = false;
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) {
        QCOMPARE(menu->objectName(), QStringLiteral("Popup"));
        QVERIFY(menu->parent() == nullptr);
        QCOMPARE(menu->actions().size(), 2);
        const QAction* first = menu->actions().at(0);
        QCOMPARE(first->data(), QVariant(113));
        QCOMPARE(first->data().type(), QVariant::Int);
        QCOMPARE(first->statusTip(), QStringLiteral("a -b  c"));
        QCOMPARE(first->text(), QStringLiteral("First"));
        QVERIFY(first->isEnabled() && first->isVisible());
        const QAction* second = menu->actions().at(1);
        QCOMPARE(second->data(), QVariant(101));
        QCOMPARE(second->statusTip(), QString());
        met = true;
        dismiss(menu);
    });
    panel->ShowContextMenu(QStringLiteral("/x/a.txt"), 0, somewhere);
    QVERIFY(met);
}

void TestMPanelContextMenu::labelIsKept_data()
{
    QTest::addColumn<QString>("label");
    QTest::newRow("mnemonic") << "&Copy";
    QTest::newRow("escaped ampersand") << "Cut && paste";
    QTest::newRow("markup") << "<b>Bold</b><br>text";
    QTest::newRow("blanks around") << "  far  out  ";
    QTest::newRow("empty") << "";
    QTest::newRow("other scripts") << QString::fromUtf8("\u00c4ndern \u6587\u4ef6");
}

void TestMPanelContextMenu::labelIsKept()
{
    QFETCH(QString, label);
    gstMenu = {entry(label, QStringLiteral("|*|"))};
    QCOMPARE(offered(panel, QStringLiteral("/x/y"), false), QStringList{label});
}

void TestMPanelContextMenu::menuIsGoneAfterwards()
{
    gstMenu = {entry(QStringLiteral("Entry"), QStringLiteral("|*|"), CommandUnknown)};
    QPointer<QMenu> menuLeft;
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) {
        menuLeft = menu;
        dismiss(menu);
    });
    panel->ShowContextMenu(QStringLiteral("/x/y"), 0, somewhere);
    QVERIFY(menuLeft.isNull());
    answers.meet<QMenu>([&](QMenu* menu) {
        menuLeft = menu;
        choose(menu, 0);
    });
    panel->ShowContextMenu(QStringLiteral("/x/y"), 0, somewhere);
    QVERIFY(menuLeft.isNull());
}

void TestMPanelContextMenu::chosenEntryRuns_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("contextPath");
    QTest::addColumn<QStringList>("arguments");

    const QString plain = QStringLiteral("/x/y.txt");
    QTest::newRow("words") << 0 << plain << QStringList{"one", "two", "/x/y.txt"};
    QTest::newRow("same label, other command") << 1 << plain << QStringList{"three", "/x/y.txt"};
    QTest::newRow("special characters")
        << 3 << plain << QStringList{"\"a", "b\"", "$HOME", "${x}", ";", "#", "*", "&", "'", "/x/y.txt"};
    QTest::newRow("path with blanks") << 1 << "/x y/ z .txt" << QStringList{"three", "/x y/ z .txt"};
    QTest::newRow("path with an ampersand") << 1 << "/a && b/&c" << QStringList{"three", "/a && b/&c"};
}

void TestMPanelContextMenu::chosenEntryRuns()
{
    QFETCH(int, row);
    QFETCH(QString, contextPath);
    QFETCH(QStringList, arguments);
    StandIn program(*dir);
    const QString same = QStringLiteral("Same");
    const QString all = QStringLiteral("|*|");
    gstMenu = {entry(same, all, CommandTerminalEx, program.path() + QStringLiteral(" one two")),
        entry(same, all, CommandTerminalEx, program.path() + QStringLiteral(" three")),
        entry(QString(), QString(), CommandSeparator),
        entry(QStringLiteral("&Last"), all, CommandSendTo,
            program.path() + QStringLiteral(" \"a b\" $HOME ${x} ; # * & '"))};
    panel->contextPath = contextPath;
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) { choose(menu, row); });
    // What the menu is built for is not what the command gets: that is the context path.
    panel->ShowContextMenu(QStringLiteral("other.txt"), 0, somewhere);
    QCOMPARE(program.next().arguments, arguments);
    QCOMPARE(program.calls().size(), 1);
}

void TestMPanelContextMenu::chosenEntryPassesItsOwnCode_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("dialog");
    QTest::newRow("properties") << 101 << "MProperties";
    QTest::newRow("disk usage") << 102 << "DialogFileSize";
    QTest::newRow("checksum") << 103 << "Checksum";
    QTest::newRow("new folder") << 105 << "DialogNewDir";
    QTest::newRow("rename") << 106 << "Rename";
    QTest::newRow("copy") << 107 << "MCopy";
}

void TestMPanelContextMenu::chosenEntryPassesItsOwnCode()
{
    QFETCH(int, code);
    QFETCH(QString, dialog);
    gstMenu = {entry(QStringLiteral("Before"), QStringLiteral("|*|"), CommandDelete),
        entry(QStringLiteral("Entry"), QStringLiteral("|*|"), code),
        entry(QStringLiteral("After"), QStringLiteral("|*|"), CommandDelete)};
    panel->contextPath = root + QStringLiteral("/Makefile");
    QString met;
    ModalAnswers answers;
    answers.meet<QMenu>([](QMenu* menu) { choose(menu, 1); });
    answers.meet<QDialog>([&](QDialog* opened) {
        met = QLatin1String(opened->metaObject()->className());
        opened->close();
    });
    panel->ShowContextMenu(panel->contextPath, 0, somewhere);
    QCOMPARE(met, dialog);
}

void TestMPanelContextMenu::chosenByKeyboard()
{
    StandIn program(*dir);
    gstMenu = {entry(QStringLiteral("&First"), QStringLiteral("|*|")),
        entry(QStringLiteral("&Second"), QStringLiteral("|*|"), CommandTerminal, program.path())};
    ModalAnswers answers;
    answers.meet<QMenu>([](QMenu* menu) {
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    panel->ShowContextMenu(QStringLiteral("/x"), 0, somewhere);
    QCOMPARE(program.next().arguments, QStringList());
    answers.meet<QMenu>([](QMenu* menu) { QTest::keyClick(menu, Qt::Key_S); });
    panel->ShowContextMenu(QStringLiteral("/x"), 0, somewhere);
    QCOMPARE(program.next().arguments, QStringList());
    QCOMPARE(program.calls().size(), 2);
}

void TestMPanelContextMenu::unknownCodeDoesNothing()
{
    StandIn program(*dir);
    gstMenu = {entry(QStringLiteral("Odd"), QStringLiteral("|*|"), CommandUnknown, program.path())};
    BoxAnswers boxes;
    ModalAnswers answers;
    answers.meet<QMenu>([](QMenu* menu) { choose(menu, 0); });
    panel->ShowContextMenu(QStringLiteral("/x"), 0, somewhere);
    panel->DoAction(CommandTerminal, QString(), program.path() + QStringLiteral(" control"));
    QCOMPARE(program.next().arguments, QStringList{QStringLiteral("control")});
}

void TestMPanelContextMenu::folderGoneMeanwhileRunsNothing()
{
    panel->setTreePath(root + QStringLiteral("/alpha/inner"));
    QTRY_COMPARE(panel->currentPath, root + QStringLiteral("/alpha/inner"));
    gstMenu = {entry(QStringLiteral("Only"), QStringLiteral("|*|"), CommandClipboard)};
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    ModalAnswers answers;
    answers.meet<QMenu>([this](QMenu* menu) {
        QVERIFY(QDir(root + QStringLiteral("/alpha/inner")).removeRecursively());
        QTRY_COMPARE(panel->currentPath, root + QStringLiteral("/alpha"));
        choose(menu, 0);
    });
    panel->ShowContextMenu(QStringLiteral("/x/y.txt"), 0, QPoint(10, 10));
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
}

void TestMPanelContextMenu::dismissedRunsNothing_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("Escape") << true;
    QTest::newRow("click beside it") << false;
}

void TestMPanelContextMenu::dismissedRunsNothing()
{
    QFETCH(bool, byKey);
    StandIn program(*dir);
    gstMenu = {entry(QStringLiteral("Entry"), QStringLiteral("|*|"), CommandTerminal, program.path())};
    ModalAnswers answers;
    answers.meet<QMenu>([byKey](QMenu* menu) {
        menu->setActiveAction(menu->actions().constFirst());
        if (byKey) {
            dismiss(menu);
        } else {
            QTest::mousePress(menu, Qt::LeftButton, Qt::NoModifier, QPoint(-20, -20));
        }
    });
    panel->ShowContextMenu(QStringLiteral("/x"), 0, somewhere);
    panel->DoAction(CommandTerminal, QString(), program.path() + QStringLiteral(" control"));
    QCOMPARE(program.next().arguments, QStringList{QStringLiteral("control")});
}

VANTREL_TEST_MAIN(TestMPanelContextMenu)
#include "tst_MPanelContextMenu.moc"
