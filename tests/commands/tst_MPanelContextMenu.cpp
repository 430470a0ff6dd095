#include "app/aGlobal.h"
#include "commands/DialogNewDir.h"
#include "commands/Rename.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FormChild.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/StandIn.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QWindow>

#include <memory>

namespace {

const QPoint somewhere(60, 60);

LSMENU entry(const QString& label, const QString& types, int code = CommandTerminalEx,
    const QString& command = QStringLiteral("no-program"))
{
    return LSMENU{code, types, label, command};
}

/// The labels of a menu from top to bottom, "-" for a separator.
QStringList labels(const QMenu* menu)
{
    QStringList all;
    const QList<QAction*> actions = menu->actions();
    for (const QAction* action : actions) {
        all.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    }
    return all;
}

void dismiss(QMenu* menu)
{
    QTest::keyClick(menu, Qt::Key_Escape);
}

void choose(QMenu* menu, int row)
{
    QTest::mouseClick(
        menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(menu->actions().at(row)).center());
}

/// Runs the menu for an item and dismisses it.
/// @return what it offered
QStringList offered(MPanel* panel, const QString& path, bool isFolder)
{
    QStringList seen;
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) {
        seen = labels(menu);
        dismiss(menu);
    });
    panel->ShowContextMenu(path, isFolder ? 1 : 0, somewhere);
    return seen;
}

/// Where the running menu of a slot was, and what it offered.
struct Shown
{
    QPoint place;
    QStringList entries;
};

template <typename Call>
Shown shownBy(const Call& call)
{
    Shown shown;
    ModalAnswers answers;
    answers.meet<QMenu>([&](QMenu* menu) {
        shown.place = menu->pos();
        shown.entries = labels(menu);
        dismiss(menu);
    });
    call();
    return shown;
}

QPoint centre(const QAbstractItemView* view, const QModelIndex& index)
{
    return view->visualRect(index).center();
}

} // namespace

class TestMPanelContextMenu : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

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
    void dismissedRunsNothing_data();
    void dismissedRunsNothing();

    void treeSlotTakesTheFolder();
    void treeSlotOffersFolderEntries();
    void treeSlotOnEmptySpace();
    void treeSlotPlace();
    void newFolderInTheTreesFolder();
    void listSlotTakesTheItem_data();
    void listSlotTakesTheItem();
    void listSlotOnEmptySpace();
    void listSlotPlace();
    void renameOfTheListsItem();
    void rightClickInTheTree();
    void rightClickInTheList();

private:
    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> fixture;
    MPanel* panel = nullptr;
    QString root;
};

void TestMPanelContextMenu::init()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("root/alpha/inner"));
    dir->folder(QStringLiteral("root/beta.d"));
    dir->file(QStringLiteral("root/Report.TXT"), "x");
    dir->file(QStringLiteral("root/Makefile"), "x");
    dir->link(QStringLiteral("root/zlink"), QStringLiteral("alpha"));
    root = dir->path(QStringLiteral("root"));
    fixture = std::make_unique<PanelWindow>(root, QSize(700, 500));
    panel = fixture->panel;
    QVERIFY(fixture->activate());
    QVERIFY(waitForList(panel));
    QVERIFY(waitForTreeRow(panel, root + QStringLiteral("/beta.d")));
}

void TestMPanelContextMenu::cleanup()
{
    fixture.reset();
    dir.reset();
}

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

void TestMPanelContextMenu::treeSlotTakesTheFolder()
{
    const QString beta = root + QStringLiteral("/beta.d");
    const QPersistentModelIndex index = panel->treeModel->index(beta);
    const QPoint pos = centre(panel->tree, index);
    QCOMPARE(panel->tree->indexAt(pos), QModelIndex(index));
    const QStringList namesBefore = listNames(panel);
    const QAbstractItemModel* modelBefore = panel->listModel;
    gsLastPath1 = QStringLiteral("untouched");
    panel->contextPath = QStringLiteral("/before");

    shownBy([&] { panel->ShowContextMenuTree(pos); });
    QCOMPARE(panel->currentTreeIndex, index);
    QCOMPARE(panel->currentPath, beta);
    QCOMPARE(panel->contextPath, beta);

    // The listing shows what it did.
    QCOMPARE(static_cast<const QAbstractItemModel*>(panel->listModel), modelBefore);
    QCOMPARE(panel->listModel->rootPath(), root);
    QCOMPARE(listNames(panel), namesBefore);
    QCOMPARE(gsLastPath1, QStringLiteral("untouched"));
}

void TestMPanelContextMenu::treeSlotOffersFolderEntries()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("file"), QStringLiteral("|*|")),
        entry(QStringLiteral("suffix"), QStringLiteral("|d|"))};
    const QModelIndex index = panel->treeModel->index(root + QStringLiteral("/beta.d"));
    const Shown shown = shownBy([&] { panel->ShowContextMenuTree(centre(panel->tree, index)); });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("folder")});
}

void TestMPanelContextMenu::treeSlotOnEmptySpace()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("file"), QStringLiteral("|*|"))};
    const QPersistentModelIndex indexBefore = panel->currentTreeIndex;
    panel->contextPath = QStringLiteral("/before");
    const QPoint pos(20, panel->tree->viewport()->height() - 4);
    QVERIFY(!panel->tree->indexAt(pos).isValid());
    const Shown shown = shownBy([&] { panel->ShowContextMenuTree(pos); });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("folder")});
    QCOMPARE(panel->contextPath, QString());
    QCOMPARE(panel->currentPath, root); // the panel stays where it is
    QCOMPARE(panel->currentTreeIndex, indexBefore);
}

void TestMPanelContextMenu::treeSlotPlace()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|"))};
    const QPoint pos = centre(panel->tree, panel->treeModel->index(root + QStringLiteral("/alpha")));
    const QPoint expected = panel->tree->mapToGlobal(pos);
    QVERIFY(expected != panel->tree->viewport()->mapToGlobal(pos));
    QCOMPARE(shownBy([&] { panel->ShowContextMenuTree(pos); }).place, expected);
}

void TestMPanelContextMenu::newFolderInTheTreesFolder()
{
    gstMenu = {entry(QStringLiteral("New"), QStringLiteral("|.|"), CommandNewDir)};
    ModalAnswers answers;
    answers.meet<QMenu>([](QMenu* menu) { choose(menu, 0); });
    answers.meet<DialogNewDir>([](DialogNewDir* dialog) {
        formChild<QLineEdit>(*dialog, "lineEdit").setText(QStringLiteral("made"));
        formChild<QPushButton>(*dialog, "pushButtonOK").click();
    });
    panel->ShowContextMenuTree(
        centre(panel->tree, panel->treeModel->index(root + QStringLiteral("/beta.d"))));
    QCOMPARE(dir->tree(QStringLiteral("root/beta.d")), QStringList{QStringLiteral("made/")});
    QVERIFY(!dir->exists(QStringLiteral("root/made")));
}

void TestMPanelContextMenu::listSlotTakesTheItem_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("expected");
    QTest::newRow("file") << "Report.TXT" << 0 << "file,suffix";
    QTest::newRow("file, another column") << "Report.TXT" << 3 << "file,suffix";
    QTest::newRow("file without a dot") << "Makefile" << 1 << "file";
    QTest::newRow("folder") << "alpha" << 0 << "folder";
    QTest::newRow("folder with a suffix") << "beta.d" << 2 << "folder";
    QTest::newRow("link to a folder") << "zlink" << 0 << "folder";
    QTest::newRow("the folder above") << ".." << 0 << "folder";
}

void TestMPanelContextMenu::listSlotTakesTheItem()
{
    QFETCH(QString, name);
    QFETCH(int, column);
    QFETCH(QString, expected);
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("file"), QStringLiteral("|*|")),
        entry(QStringLiteral("suffix"), QStringLiteral("|txt|d|"))};
    const QPersistentModelIndex treeIndex = panel->currentTreeIndex;
    const QModelIndex index = listIndex(panel, name, column);
    QVERIFY(index.isValid());
    const Shown shown = shownBy([&] { panel->ShowContextMenuList(centre(panel->list, index)); });
    QCOMPARE(shown.entries.join(QLatin1Char(',')), expected);
    QCOMPARE(panel->contextPath, root + QLatin1Char('/') + name);
    QCOMPARE(panel->currentPath, root);
    QCOMPARE(panel->currentTreeIndex, treeIndex);
}

void TestMPanelContextMenu::listSlotOnEmptySpace()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|")),
        entry(QStringLiteral("file"), QStringLiteral("|*|"))};
    panel->contextPath = QStringLiteral("/before");
    const QPoint pos(20, panel->list->viewport()->height() - 4);
    QVERIFY(!panel->list->indexAt(pos).isValid());
    const Shown shown = shownBy([&] { panel->ShowContextMenuList(pos); });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("folder")});
    QCOMPARE(panel->contextPath, QString());
    QCOMPARE(panel->currentPath, root);
}

void TestMPanelContextMenu::listSlotPlace()
{
    gstMenu = {entry(QStringLiteral("file"), QStringLiteral("|*|"))};
    const QPoint pos = centre(panel->list, listIndex(panel, QStringLiteral("Makefile")));
    const QPoint expected = panel->list->viewport()->mapToGlobal(pos);
    QVERIFY(expected != panel->list->mapToGlobal(pos));
    QCOMPARE(shownBy([&] { panel->ShowContextMenuList(pos); }).place, expected);
}

void TestMPanelContextMenu::renameOfTheListsItem()
{
    gstMenu = {entry(QStringLiteral("Rename"), QStringLiteral("|*|"), CommandRename)};
    ModalAnswers answers;
    answers.meet<QMenu>([](QMenu* menu) { choose(menu, 0); });
    answers.meet<Rename>([](Rename* dialog) {
        formChild<QLineEdit>(*dialog, "lineEditNew").setText(QStringLiteral("Renamed"));
        formChild<QPushButton>(*dialog, "pushButtonOK").click();
    });
    panel->ShowContextMenuList(centre(panel->list, listIndex(panel, QStringLiteral("Makefile"))));
    QVERIFY(dir->exists(QStringLiteral("root/Renamed")));
    QVERIFY(!dir->exists(QStringLiteral("root/Makefile")));
}

void TestMPanelContextMenu::rightClickInTheTree()
{
    gstMenu = {entry(QStringLiteral("folder"), QStringLiteral("|.|"))};
    const QString alpha = root + QStringLiteral("/alpha");
    const QPoint pos = centre(panel->tree, panel->treeModel->index(alpha));
    const QPoint inWindow = panel->tree->viewport()->mapTo(&fixture->window, pos);
    const Shown shown = shownBy([&] {
        QTest::mouseClick(fixture->window.windowHandle(), Qt::RightButton, Qt::NoModifier, inWindow);
        QTRY_COMPARE(panel->contextPath, alpha);
    });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("folder")});
    QCOMPARE(panel->currentPath, alpha);
    QCOMPARE(panel->currentTreeIndex, QPersistentModelIndex(panel->treeModel->index(alpha)));
}

void TestMPanelContextMenu::rightClickInTheList()
{
    gstMenu = {entry(QStringLiteral("file"), QStringLiteral("|*|"))};
    const QPoint pos = centre(panel->list, listIndex(panel, QStringLiteral("Makefile"), 1));
    const QPoint inWindow = panel->list->viewport()->mapTo(&fixture->window, pos);
    const Shown shown = shownBy([&] {
        QTest::mouseClick(fixture->window.windowHandle(), Qt::RightButton, Qt::NoModifier, inWindow);
        QTRY_COMPARE(panel->contextPath, root + QStringLiteral("/Makefile"));
    });
    QCOMPARE(shown.entries, QStringList{QStringLiteral("file")});
    QCOMPARE(shown.place, panel->list->viewport()->mapToGlobal(pos));
}

VANTREL_TEST_MAIN(TestMPanelContextMenu)
#include "tst_MPanelContextMenu.moc"
