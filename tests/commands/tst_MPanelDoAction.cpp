#include "app/aGlobal.h"
#include "info/Checksum.h"
#include "info/DialogFileSize.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ListSelection.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/OnePanel.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/StandIn.h"
#include "tests/support/TestMain.h"
#include "tests/support/TypedAnswers.h"

#include <QApplication>
#include <QClipboard>
#include <QPointer>
#include <QPushButton>

#include <algorithm>

namespace {

QString clipboardText()
{
    return QGuiApplication::clipboard()->text(QClipboard::Clipboard);
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

/// The commands that open dialogs, the one that fills the clipboard, and what a drop sets.
class TestMPanelDoAction : public QObject, private OnePanel
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { close(); }

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

    void dropSetsTheDestination_data();
    void dropSetsTheDestination();
};

void TestMPanelDoAction::init()
{
    make();
    dir->folder(QStringLiteral("root/alpha"));
    dir->file(QStringLiteral("root/a.txt"), "aaa");
    dir->file(QStringLiteral("root/b c.txt"), "b");
    dir->file(QStringLiteral("root/new\nline"), "n");
    show();
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
    typeNewFolder(answers, QStringLiteral("made"));
    panel->DoAction(CommandNewDir, root + QStringLiteral("/alpha"), QString());
    QVERIFY(QFileInfo(root + QStringLiteral("/made")).isDir());
    QCOMPARE(dir->tree(QStringLiteral("root/alpha")), QStringList());
    QTRY_VERIFY(listNames(panel).contains(QStringLiteral("made")));
}

void TestMPanelDoAction::renameRenamesThePath()
{
    selectRows(panel, {QStringLiteral("alpha")});
    ModalAnswers answers;
    typeNewName(answers, QStringLiteral("z.txt"));
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
    selectRows(panel, names);
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
    selectRows(panel, {QStringLiteral("a.txt")});
    panel->tree->setFocus();
    panel->DoAction(CommandClipboard, QString(), QString());
    QCOMPARE(clipboardText(), root + QLatin1Char('\n'));
}

void TestMPanelDoAction::clipboardWithoutFocus()
{
    selectRows(panel, {QStringLiteral("a.txt")});
    panel->driveBar->findChild<QPushButton*>()->setFocus();
    QVERIFY(!panel->tree->hasFocus() && !panel->list->hasFocus());
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    panel->DoAction(CommandClipboard, QString(), QString());
    QCOMPARE(clipboardText(), QString());
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
