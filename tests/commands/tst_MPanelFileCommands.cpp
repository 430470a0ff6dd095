#include "app/aGlobal.h"
#include "fileops/MProgress.h"
#include "panel/MDriveBar.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FileCommandPanels.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/ProgressWatch.h"
#include "tests/support/TestMain.h"
#include "tests/support/TypedAnswers.h"

#include <QDir>
#include <QPushButton>

/// What the commands that copy, move and delete have in common, and the one that deletes.
class TestMPanelFileCommands : public QObject, private FileCommandPanels
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }

    void confirmation_data();
    void confirmation();
    void confirmationWithoutYes_data();
    void confirmationWithoutYes();
    void returnConfirms();

    void deleteSelection();
    void deleteTreeFolder();
    void deleteWithoutFocus();
    void deleteFillsThePendingOperation();
    void folderSwappedWhileAsked_data();
    void folderSwappedWhileAsked();

    void bothPanelsShowTheTruth_data();
    void bothPanelsShowTheTruth();
    void progressDialogsAreFreed();
};

void TestMPanelFileCommands::confirmation_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("firstLine");
    QTest::newRow("copy") << 107 << toFile;
    QTest::newRow("delete") << 108 << deleteIn;
    QTest::newRow("dropcopy") << 111 << intoFolder;
    QTest::newRow("dropmove") << 112 << moveInto;
}

void TestMPanelFileCommands::confirmation()
{
    QFETCH(int, code);
    QFETCH(QString, firstLine);
    select(panel, {QStringLiteral("a.txt")});
    gslDragList = QStringList{from + QStringLiteral("/a.txt")};
    const QString target = QStringLiteral("/<b>far</b> && away");
    gsDropBase = target;
    panel->currentPath = target;
    BoxAnswers boxes;
    boxes.click(no);
    ModalAnswers answers;
    if (code == CommandCopy) {
        typeDestination(answers, target);
    }
    const ProgressWatch watch;
    panel->DoAction(code, QStringLiteral("/ignored"), QStringLiteral("ignored"));
    QCOMPARE(boxes.seen().size(), 1);
    const BoxAnswers::Box& box = boxes.seen().constFirst();
    QCOMPARE(box.title, QStringLiteral("Vantrel"));
    QCOMPARE(box.text, firstLine + target);
    QCOMPARE(box.icon, QMessageBox::Question);
    QCOMPARE(box.buttons.size(), 2);
    QVERIFY(box.buttons.contains(yes) && box.buttons.contains(no));
    QCOMPARE(box.defaultButton, yes);
    QCOMPARE(box.parent, static_cast<QWidget*>(panel));
    QVERIFY(box.modal);
    QVERIFY(watch.kinds.isEmpty());
}

void TestMPanelFileCommands::confirmationWithoutYes_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("answer");
    for (const int code : {107, 108, 111, 112}) {
        QTest::addRow("%d No", code) << code << 0;
        QTest::addRow("%d Escape", code) << code << 1;
        QTest::addRow("%d title bar", code) << code << 2;
    }
}

void TestMPanelFileCommands::confirmationWithoutYes()
{
    QFETCH(int, code);
    QFETCH(int, answer);
    select(panel, {QStringLiteral("a.txt")});
    gslDragList = QStringList{from + QStringLiteral("/a.txt")};
    gsDropBase = to;
    const QStringList before = dir->tree();
    BoxAnswers boxes;
    if (answer == 0) {
        boxes.click(no);
    } else if (answer == 1) {
        boxes.key(Qt::Key_Escape);
    } else {
        boxes.close();
    }
    ModalAnswers answers;
    if (code == CommandCopy) {
        typeDestination(answers, to + QLatin1Char('/'));
    }
    const ProgressWatch watch;
    panel->DoAction(code, QString(), QString());
    QCOMPARE(boxes.seen().size(), 1);
    QVERIFY(watch.kinds.isEmpty());
    QCOMPARE(dir->tree(), before);
}

void TestMPanelFileCommands::returnConfirms()
{
    select(panel, {QStringLiteral("a.txt")});
    BoxAnswers boxes;
    boxes.key(Qt::Key_Return);
    panel->DoAction(CommandDelete, QString(), QString());
    QVERIFY(!dir->exists(QStringLiteral("root/from/a.txt")));
}

void TestMPanelFileCommands::deleteSelection()
{
    select(panel, {QStringLiteral("sub"), QStringLiteral("a.txt")});
    BoxAnswers boxes;
    boxes.click(yes).click(QStringLiteral("YesAll"));
    const ProgressWatch watch;
    // The path is not looked at.
    panel->DoAction(CommandDelete, from + QStringLiteral("/b.txt"), QString());
    QCOMPARE(boxes.texts().constFirst(), deleteIn + from);
    QCOMPARE(watch.kinds, QList<int>{OpDelete});
    QCOMPARE(watch.parents, QList<QWidget*>{panel});
    QCOMPARE(dir->tree(QStringLiteral("root/from")), QStringList{QStringLiteral("b.txt")});
    QTRY_COMPARE(listNames(panel), (QStringList{QStringLiteral(".."), QStringLiteral("b.txt")}));
}

void TestMPanelFileCommands::deleteTreeFolder()
{
    select(panel, {QStringLiteral("a.txt")});
    panel->setTreePath(from + QStringLiteral("/sub"));
    QVERIFY(panel->tree->hasFocus());
    BoxAnswers boxes;
    boxes.click(yes).click(QStringLiteral("YesAll"));
    panel->DoAction(CommandDelete, QString(), QString());
    QCOMPARE(boxes.texts().constFirst(), deleteIn + from + QStringLiteral("/sub"));
    QVERIFY(!dir->exists(QStringLiteral("root/from/sub")));
    QVERIFY(dir->exists(QStringLiteral("root/from/a.txt")));
    QTRY_COMPARE(panel->currentPath, from); // it was listed; the panel goes up
}

void TestMPanelFileCommands::deleteWithoutFocus()
{
    select(panel, {QStringLiteral("a.txt")});
    panel->driveBar->findChild<QPushButton*>()->setFocus();
    const QStringList before = dir->tree();
    BoxAnswers boxes;
    boxes.click(yes);
    const ProgressWatch watch;
    panel->DoAction(CommandDelete, QString(), QString());
    QCOMPARE(gslDragList, QStringList());
    QCOMPARE(boxes.texts(), QStringList{deleteIn + from});
    QCOMPARE(watch.kinds, QList<int>{OpDelete});
    QCOMPARE(dir->tree(), before);
}

void TestMPanelFileCommands::deleteFillsThePendingOperation()
{
    select(panel, {QStringLiteral("b.txt"), QStringLiteral("sub"), QStringLiteral("..")});
    gslDragList = QStringList{QStringLiteral("/before")};
    gsDropBase = QStringLiteral("/target before");
    QStringList whileAsked;
    BoxAnswers boxes;
    boxes.meanwhile([&] { whileAsked = gslDragList; }).click(no);
    panel->DoAction(CommandDelete, QString(), QString());
    const QStringList expected{from + QStringLiteral("/b.txt"), from + QStringLiteral("/sub")};
    QCOMPARE(whileAsked, expected);
    QCOMPARE(gslDragList, expected);
    QCOMPARE(panel->selectedPaths, expected);
    QCOMPARE(gsDragBase, QStringLiteral("base before"));
    QCOMPARE(gsDropBase, QStringLiteral("/target before"));
}

void TestMPanelFileCommands::folderSwappedWhileAsked_data()
{
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<int>("boxesBefore");
    QTest::addColumn<QString>("failure");
    const QString file = QStringLiteral("Error deleting file:\n");
    const QString folder = QStringLiteral("Error accessing directory:\n");
    QTest::newRow("one file, confirmation") << QStringList{"a.txt"} << 0 << file;
    QTest::newRow("two files, confirmation") << QStringList{"a.txt", "b.txt"} << 0 << file;
    QTest::newRow("two files, first question") << QStringList{"a.txt", "b.txt"} << 1 << file;
    QTest::newRow("two files, second question") << QStringList{"a.txt", "b.txt"} << 2 << file;
    QTest::newRow("folder, confirmation") << QStringList{"sub"} << 0 << folder;
}

// What stands in a folder that has taken the place of the chosen items' own was never chosen.
void TestMPanelFileCommands::folderSwappedWhileAsked()
{
    QFETCH(QStringList, items);
    QFETCH(int, boxesBefore);
    QFETCH(QString, failure);
    dir->file(QStringLiteral("victim/a.txt"), "1");
    dir->file(QStringLiteral("victim/b.txt"), "2");
    dir->file(QStringLiteral("victim/sub/inner.txt"), "3");
    const QStringList before = dir->tree(QStringLiteral("victim"));
    select(panel, items);
    BoxAnswers boxes;
    for (int i = 0; i < boxesBefore; ++i) {
        boxes.click(yes);
    }
    boxes.meanwhile([this] {
        QVERIFY(QDir().rename(from, dir->path(QStringLiteral("aside"))));
        dir->link(QStringLiteral("root/from"), dir->path(QStringLiteral("victim")));
    });
    boxes.click(yes).otherwise({yes, QStringLiteral("Ignore")});
    panel->DoAction(CommandDelete, QString(), QString());
    QCOMPARE(dir->tree(QStringLiteral("victim")), before);
    QCOMPARE(boxes.texts().filter(failure + from).isEmpty(), false);
}

void TestMPanelFileCommands::bothPanelsShowTheTruth_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<QStringList>("right");
    QTest::newRow("copy") << 107 << QStringList{"..", "a.txt", "b.txt", "sub"}
                          << QStringList{"..", "b.txt", "kept.txt", "sub"};
    QTest::newRow("delete") << 108 << QStringList{"..", "a.txt"} << QStringList{"..", "kept.txt"};
    QTest::newRow("dropcopy") << 111 << QStringList{"..", "a.txt", "b.txt", "sub"}
                              << QStringList{"..", "b.txt", "kept.txt", "sub"};
    QTest::newRow("dropmove") << 112 << QStringList{"..", "a.txt"}
                              << QStringList{"..", "b.txt", "kept.txt", "sub"};
}

void TestMPanelFileCommands::bothPanelsShowTheTruth()
{
    QFETCH(int, code);
    QFETCH(QStringList, left);
    QFETCH(QStringList, right);
    select(panel, {QStringLiteral("b.txt"), QStringLiteral("sub")});
    gslDragList = QStringList{from + QStringLiteral("/b.txt"), from + QStringLiteral("/sub")};
    gsDropBase = to;
    BoxAnswers boxes;
    boxes.click(yes);
    ModalAnswers answers;
    if (code == CommandDelete) {
        boxes.click(QStringLiteral("YesAll"));
    } else if (code == CommandCopy) {
        typeDestination(answers, to);
    }
    panel->DoAction(code, QString(), QString());
    const auto sorted = [](QStringList names) {
        names.sort();
        return names;
    };
    QTRY_COMPARE(sorted(listNames(panel)), left);
    QTRY_COMPARE(sorted(listNames(other.get())), right);
    if (right.contains(QStringLiteral("b.txt"))) {
        QTRY_COMPARE(listText(other.get(), QStringLiteral("b.txt"), 1), QStringLiteral("3"));
    }
}

void TestMPanelFileCommands::progressDialogsAreFreed()
{
    const ProgressWatch watch;
    gslDragList = QStringList{from + QStringLiteral("/a.txt")};
    for (const QString& target : {to, dir->path(QStringLiteral("root/new"))}) {
        gsDropBase = target;
        BoxAnswers boxes;
        boxes.click(yes);
        panel->DoAction(CommandDropCopy, QString(), QString());
    }
    QCOMPARE(watch.dialogs.size(), 2);
    QTRY_VERIFY(watch.dialogs.at(0).isNull() && watch.dialogs.at(1).isNull());
    QCOMPARE(panel->findChildren<MProgress*>().size(), 0);
}

VANTREL_TEST_MAIN(TestMPanelFileCommands)
#include "tst_MPanelFileCommands.moc"
