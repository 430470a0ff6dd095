#include "app/aGlobal.h"
#include "fileops/MCopy.h"
#include "fileops/MProgress.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FormChild.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include <memory>

namespace {

const QString yes = QStringLiteral("Yes");
const QString no = QStringLiteral("No");
const QString intoFolder = QStringLiteral("Copy selected files to folder: \n\n");
const QString toFile = QStringLiteral("Copy selected file to: \n\n");
const QString moveInto = QStringLiteral("Move selected files to folder: \n\n");
const QString deleteIn = QStringLiteral("Delete selected files in folder: \n\n");
const QString refusal
    = QStringLiteral("I'm sorry Dave, I'm afraid I can't do that.\nThe destination is a child of the source");

void select(const MPanel* panel, const QStringList& names)
{
    panel->list->setFocus();
    panel->list->clearSelection();
    for (const QString& name : names) {
        panel->list->selectionModel()->select(
            listIndex(panel, name), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

/// Answers the destination dialog by typing a text and OK.
void typeDestination(ModalAnswers& answers, const QString& text)
{
    answers.meet<MCopy>([text](MCopy* dialog) {
        formChild<QLineEdit>(*dialog, "lineEdit").setText(text);
        QTest::mouseClick(&formChild<QPushButton>(*dialog, "pushButton_OK"), Qt::LeftButton);
    });
}

/// Notes the progress dialogs that are shown while it lives.
class ProgressWatch : public QObject
{
public:
    ProgressWatch() { qApp->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* dialog = event->type() == QEvent::Show ? qobject_cast<MProgress*>(watched) : nullptr;
        if (dialog != nullptr && !dialogs.contains(dialog)) {
            dialogs.append(dialog);
            kinds.append(dialog->kind);
            parents.append(dialog->parentWidget());
        }
        return false;
    }

    QList<QPointer<MProgress>> dialogs;
    QList<int> kinds;
    QList<QWidget*> parents; ///< only to compare
};

} // namespace

class TestMPanelFileCommands : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void confirmation_data();
    void confirmation();
    void confirmationWithoutYes_data();
    void confirmationWithoutYes();
    void returnConfirms();

    void deleteSelection();
    void deleteTreeFolder();
    void deleteWithoutFocus();
    void deleteFillsThePendingOperation();

    void copyIsCancelled_data();
    void copyIsCancelled();
    void copyDestination_data();
    void copyDestination();
    void copyOfSeveral_data();
    void copyOfSeveral();
    void copyFromRoot();
    void copyFromTheTree();
    void copyFromTheTreeRefused();
    void copyWithoutFocus();
    void copyLooksAtTheFocusBeforeTheDialog();
    void copyOfALinkToAFolder();
    void copyToMakesFolders();
    void copyOntoItself();

    void dropChecks_data();
    void dropChecks();
    void intoItselfByAnotherWay_data();
    void intoItselfByAnotherWay();
    void ownFolderByAnotherWay_data();
    void ownFolderByAnotherWay();
    void dropOfNothing();
    void dropKeepsThePendingOperation();
    void dropCopyRuns();
    void dropMoveRuns();
    void dropFromTheOtherPanel();
    void bothPanelsShowTheTruth_data();
    void bothPanelsShowTheTruth();
    void progressDialogsAreFreed();

private:
    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> fixture;
    std::unique_ptr<MPanel> other; ///< shows the folder "to"
    MPanel* panel = nullptr; ///< shows the folder "from"
    QString from;
    QString to;
};

void TestMPanelFileCommands::init()
{
    dir = std::make_unique<TestDir>();
    dir->file(QStringLiteral("root/from/a.txt"), "aaa");
    dir->file(QStringLiteral("root/from/b.txt"), "bbb");
    dir->file(QStringLiteral("root/from/sub/inner.txt"), "inner");
    dir->file(QStringLiteral("root/to/kept.txt"), "kept");
    from = dir->path(QStringLiteral("root/from"));
    to = dir->path(QStringLiteral("root/to"));
    fixture = std::make_unique<PanelWindow>(dir->path(QStringLiteral("root")), QSize(780, 500));
    panel = fixture->panel;
    panel->setGeometry(0, 0, 390, 500);
    other = std::make_unique<MPanel>(&fixture->window);
    other->setGeometry(390, 0, 390, 500);
    other->show();
    gwPanel1 = panel;
    gwPanel2 = other.get();
    QVERIFY(fixture->activate());
    panel->setTreePath(from);
    other->setTreePath(to);
    QVERIFY(waitForList(panel));
    QVERIFY(waitForList(other.get()));
    QCOMPARE(panel->currentPath, from);
    gsDragBase = QStringLiteral("base before");
}

void TestMPanelFileCommands::cleanup()
{
    other.reset();
    fixture.reset();
    dir.reset();
}

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

void TestMPanelFileCommands::copyIsCancelled_data()
{
    QTest::addColumn<int>("how");
    QTest::newRow("Cancel") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("title bar") << 2;
    QTest::newRow("OK on an empty line") << 3;
}

void TestMPanelFileCommands::copyIsCancelled()
{
    QFETCH(int, how);
    select(panel, {QStringLiteral("a.txt")});
    gslDragList = QStringList{QStringLiteral("/before")};
    gsDropBase = QStringLiteral("/target before");
    const QStringList before = dir->tree();
    BoxAnswers boxes;
    ModalAnswers answers;
    QPointer<MCopy> met;
    answers.meet<MCopy>([&](MCopy* dialog) {
        met = dialog;
        QCOMPARE(dialog->parentWidget(), static_cast<QWidget*>(panel));
        QVERIFY(dialog->isModal());
        auto& line = formChild<QLineEdit>(*dialog, "lineEdit");
        QCOMPARE(line.text(), QString());
        line.setText(how == 3 ? QString() : to);
        if (how == 1) {
            QTest::keyClick(dialog, Qt::Key_Escape);
        } else if (how == 2) {
            dialog->close();
        } else {
            formChild<QPushButton>(*dialog, how == 0 ? "pushButton_Cancel" : "pushButton_OK").click();
        }
    });
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(answers.left(), 0);
    QVERIFY(met.isNull());
    QCOMPARE(gslDragList, QStringList{QStringLiteral("/before")});
    QCOMPARE(gsDropBase, QStringLiteral("/target before"));
    QCOMPARE(dir->tree(), before);
}

void TestMPanelFileCommands::copyDestination_data()
{
    QTest::addColumn<QString>("typed"); // "@" stands for the folder above both
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("made");

    QTest::newRow("absolute file") << "@/to/x.txt"
                                   << "@/to/x.txt"
                                   << "root/to/x.txt";
    QTest::newRow("absolute folder with a slash") << "@/to/"
                                                  << "@/to/a.txt"
                                                  << "root/to/a.txt";
    QTest::newRow("absolute new folder") << "@/new/"
                                         << "@/new/a.txt"
                                         << "root/new/a.txt";
    QTest::newRow("relative file") << "x.txt"
                                   << "@/from/x.txt"
                                   << "root/from/x.txt";
    QTest::newRow("relative folder with a slash") << "sub/"
                                                  << "@/from/sub/a.txt"
                                                  << "root/from/sub/a.txt";
    QTest::newRow("relative, up") << "../to/"
                                  << "@/from/../to/a.txt"
                                  << "root/to/a.txt";
    QTest::newRow("relative, up, a file") << "../x"
                                          << "@/from/../x"
                                          << "root/x";
    QTest::newRow("relative, this folder") << "./x"
                                           << "@/from/./x"
                                           << "root/from/x";
    QTest::newRow("tilde is a name") << "~"
                                     << "@/from/~"
                                     << "root/from/~";
    QTest::newRow("blanks are kept") << " x "
                                     << "@/from/ x "
                                     << "root/from/ x ";
    QTest::newRow("markup and dollar") << "<b>$HOME</b>"
                                       << "@/from/<b>$HOME</b>"
                                       << "root/from/<b>$HOME</b>";
    QTest::newRow("several slashes") << "@/to//"
                                     << "@/to//a.txt"
                                     << "root/to/a.txt";
}

void TestMPanelFileCommands::copyDestination()
{
    QFETCH(QString, typed);
    QFETCH(QString, asked);
    QFETCH(QString, made);
    const QString above = dir->path(QStringLiteral("root"));
    typed.replace(QLatin1Char('@'), above);
    asked.replace(QLatin1Char('@'), above);
    select(panel, {QStringLiteral("a.txt")});
    BoxAnswers boxes;
    boxes.click(yes);
    ModalAnswers answers;
    typeDestination(answers, typed);
    const ProgressWatch watch;
    panel->DoAction(CommandCopy, from + QStringLiteral("/b.txt"), QString());
    QCOMPARE(boxes.texts(), QStringList{toFile + asked});
    QCOMPARE(gsDropBase, asked);
    QCOMPARE(gslDragList, QStringList{from + QStringLiteral("/a.txt")});
    QCOMPARE(gsDragBase, QStringLiteral("base before"));
    QCOMPARE(watch.kinds, QList<int>{OpCopyTo});
    QCOMPARE(watch.parents, QList<QWidget*>{panel});
    QCOMPARE(dir->read(made), QByteArray("aaa"));
    QVERIFY(dir->exists(QStringLiteral("root/from/a.txt")));
}

void TestMPanelFileCommands::copyOfSeveral_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QStringList>("made");

    QTest::newRow("two files") << QStringList{"a.txt", "b.txt"} << "@/to"
                               << "@/to" << QStringList{"a.txt", "b.txt", "kept.txt"};
    QTest::newRow("one folder") << QStringList{"sub"} << "@/to"
                                << "@/to" << QStringList{"kept.txt", "sub/", "sub/inner.txt"};
    QTest::newRow("one folder, slash") << QStringList{"sub"} << "@/to/"
                                       << "@/to/" << QStringList{"kept.txt", "sub/", "sub/inner.txt"};
    QTest::newRow("folder and file") << QStringList{"sub", "a.txt"} << "../to"
                                     << "@/from/../to"
                                     << QStringList{"a.txt", "kept.txt", "sub/", "sub/inner.txt"};
    QTest::newRow("file and folder") << QStringList{"a.txt", "sub"} << "../to"
                                     << "@/from/../to"
                                     << QStringList{"a.txt", "kept.txt", "sub/", "sub/inner.txt"};
    QTest::newRow("new folder") << QStringList{"a.txt", "b.txt"} << "../to/new"
                                << "@/from/../to/new"
                                << QStringList{"kept.txt", "new/", "new/a.txt", "new/b.txt"};
    QTest::newRow("only the folder above") << QStringList{".."} << "@/to"
                                           << "@/to" << QStringList{"kept.txt"};
    QTest::newRow("nothing") << QStringList() << "@/to"
                             << "@/to" << QStringList{"kept.txt"};
    QTest::newRow("the folder above and two files") << QStringList{"..", "a.txt", "b.txt"} << "@/to"
                                                    << "@/to" << QStringList{"a.txt", "b.txt", "kept.txt"};
}

void TestMPanelFileCommands::copyOfSeveral()
{
    QFETCH(QStringList, names);
    QFETCH(QString, typed);
    QFETCH(QString, asked);
    QFETCH(QStringList, made);
    const QString above = dir->path(QStringLiteral("root"));
    typed.replace(QLatin1Char('@'), above);
    asked.replace(QLatin1Char('@'), above);
    select(panel, names);
    gslDragList = QStringList{QStringLiteral("/stale")};
    BoxAnswers boxes;
    boxes.click(yes);
    ModalAnswers answers;
    typeDestination(answers, typed);
    const ProgressWatch watch;
    panel->DoAction(CommandCopy, from, QString());
    QCOMPARE(boxes.texts(), QStringList{intoFolder + asked});
    QCOMPARE(gsDropBase, asked);
    QCOMPARE(gsDragBase, QStringLiteral("base before"));
    QStringList expected;
    for (const QString& name : qAsConst(names)) {
        if (name != QLatin1String("..")) {
            expected.append(from + QLatin1Char('/') + name);
        }
    }
    QCOMPARE(gslDragList, expected);
    QCOMPARE(watch.kinds, QList<int>{OpCopy});
    QCOMPARE(dir->tree(QStringLiteral("root/to")), made);
}

void TestMPanelFileCommands::copyFromRoot()
{
    select(panel, {QStringLiteral("a.txt")});
    panel->currentPath = QStringLiteral("/");
    BoxAnswers boxes;
    boxes.click(no);
    ModalAnswers answers;
    typeDestination(answers, QStringLiteral("sub"));
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(gsDropBase, QStringLiteral("//sub"));
    QCOMPARE(boxes.texts(), QStringList{toFile + QStringLiteral("//sub")});
}

void TestMPanelFileCommands::copyFromTheTree()
{
    select(panel, {QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    panel->tree->setFocus();
    gslDragList = QStringList{QStringLiteral("/stale")};
    BoxAnswers boxes;
    boxes.click(yes);
    ModalAnswers answers;
    typeDestination(answers, to);
    const ProgressWatch watch;
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.texts(), QStringList{intoFolder + to});
    QCOMPARE(gslDragList, QStringList{from});
    QCOMPARE(gsDragBase, dir->path(QStringLiteral("root")));
    QCOMPARE(watch.kinds, QList<int>{OpCopy});
    QCOMPARE(dir->tree(QStringLiteral("root/to/from")), dir->tree(QStringLiteral("root/from")));
}

void TestMPanelFileCommands::copyFromTheTreeRefused()
{
    panel->tree->setFocus();
    BoxAnswers boxes;
    boxes.click(QStringLiteral("OK"));
    ModalAnswers answers;
    typeDestination(answers, QStringLiteral("sub"));
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.texts(), QStringList{refusal});
    QVERIFY(fixture->activate());
    panel->tree->setFocus();
    typeDestination(answers, dir->path(QStringLiteral("root"))); // where it is
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.seen().size(), 1);
}

void TestMPanelFileCommands::copyWithoutFocus()
{
    select(panel, {QStringLiteral("a.txt")});
    panel->driveBar->findChild<QPushButton*>()->setFocus();
    BoxAnswers boxes;
    boxes.click(no);
    ModalAnswers answers;
    typeDestination(answers, to);
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.texts(), QStringList{intoFolder + to});
    QCOMPARE(gslDragList, QStringList());
    QCOMPARE(gsDragBase, QStringLiteral("base before"));
}

void TestMPanelFileCommands::copyLooksAtTheFocusBeforeTheDialog()
{
    select(panel, {QStringLiteral("a.txt")});
    BoxAnswers boxes;
    boxes.click(no);
    ModalAnswers answers;
    answers.meet<MCopy>([&](MCopy* dialog) {
        QTRY_VERIFY(!panel->list->hasFocus());
        panel->tree->setFocus(); // where the focus goes once the dialog has closed
        dialog->destination = to + QLatin1Char('/');
        dialog->close();
    });
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.texts(), QStringList{toFile + to + QStringLiteral("/a.txt")});
    QCOMPARE(gslDragList, QStringList{from + QStringLiteral("/a.txt")});
}

void TestMPanelFileCommands::copyOfALinkToAFolder()
{
    dir->link(QStringLiteral("root/from/way"), QStringLiteral("sub"));
    QTRY_VERIFY(listNames(panel).contains(QStringLiteral("way")));
    select(panel, {QStringLiteral("way")});
    BoxAnswers boxes;
    boxes.click(yes);
    ModalAnswers answers;
    typeDestination(answers, to);
    panel->DoAction(CommandCopy, QString(), QString());
    // The listing takes it for a folder, so it goes into one; it is copied as the link that it is.
    QCOMPARE(boxes.texts(), QStringList{intoFolder + to});
    QCOMPARE(dir->tree(QStringLiteral("root/to")),
        (QStringList{QStringLiteral("kept.txt"), QStringLiteral("way@")}));
}

void TestMPanelFileCommands::copyToMakesFolders()
{
    select(panel, {QStringLiteral("a.txt")});
    BoxAnswers boxes;
    boxes.click(yes);
    ModalAnswers answers;
    typeDestination(answers, QStringLiteral("one/two/x"));
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(dir->read(QStringLiteral("root/from/one/two/x")), QByteArray("aaa"));
}

void TestMPanelFileCommands::copyOntoItself()
{
    // A single file is not checked: the operation's own question is the last word.
    select(panel, {QStringLiteral("a.txt")});
    BoxAnswers boxes;
    boxes.click(yes).click(no);
    ModalAnswers answers;
    typeDestination(answers, QStringLiteral("a.txt"));
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.texts().size(), 2);
    QCOMPARE(boxes.texts().constFirst(), toFile + from + QStringLiteral("/a.txt"));
    QVERIFY(boxes.texts().constLast().startsWith(QStringLiteral("Replace file:\n")));
    QCOMPARE(dir->read(QStringLiteral("root/from/a.txt")), QByteArray("aaa"));
}

void TestMPanelFileCommands::dropChecks_data()
{
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("outcome"); // "asked", "refused" or "silent"

    QTest::newRow("elsewhere") << QStringList{"/a/b"} << "/c"
                               << "asked";
    QTest::newRow("same place") << QStringList{"/a/b"} << "/a"
                                << "silent";
    QTest::newRow("into itself") << QStringList{"/a/b"} << "/a/b"
                                 << "refused";
    QTest::newRow("into a child") << QStringList{"/a/b"} << "/a/b/c"
                                  << "refused";
    QTest::newRow("deep below") << QStringList{"/a/b"} << "/a/b/c/d/e"
                                << "refused";
    QTest::newRow("prefix of a sibling's name") << QStringList{"/a/b"} << "/a/bc"
                                                << "refused";
    QTest::newRow("prefix below a sibling") << QStringList{"/a/b"} << "/a/bc/d"
                                            << "refused";
    QTest::newRow("prefix in another case") << QStringList{"/a/b"} << "/a/Bc"
                                            << "asked";
    QTest::newRow("up") << QStringList{"/a/b/c"} << "/a"
                        << "asked";
    QTest::newRow("target shorter than the item") << QStringList{"/aaaa/bbbbbb/c"} << "/a"
                                                  << "asked";
    QTest::newRow("root as the target") << QStringList{"/a/b"} << "/"
                                        << "asked";
    QTest::newRow("same place in the root") << QStringList{"/a"} << "/"
                                            << "silent";
    QTest::newRow("same name in the root") << QStringList{"/b/b"} << "/"
                                           << "asked";
    QTest::newRow("root as the item") << QStringList{"/"} << "/a"
                                      << "refused";
    QTest::newRow("one of two in the same place") << QStringList{"/c/d", "/a/b"} << "/a"
                                                  << "silent";
    QTest::newRow("one of two inside") << QStringList{"/c/d", "/a/b"} << "/a/b"
                                       << "refused";
    QTest::newRow("same place wins over inside") << QStringList{"/a/b/x", "/a"} << "/a/b"
                                                 << "silent";
    QTest::newRow("inside first, same place after") << QStringList{"/a", "/a/b/x"} << "/a/b"
                                                    << "silent";
    QTest::newRow("slash at the target's end") << QStringList{"/a/b"} << "/a/"
                                               << "asked";
    QTest::newRow("nothing") << QStringList() << "/a"
                             << "asked";
    QTest::newRow("names with blanks") << QStringList{"/a/b c"} << "/a/b c/d"
                                       << "refused";
}

void TestMPanelFileCommands::dropChecks()
{
    QFETCH(QStringList, items);
    QFETCH(QString, target);
    QFETCH(QString, outcome);
    for (const int code : {CommandDropCopy, CommandDropMove}) {
        gslDragList = items;
        gsDropBase = target;
        BoxAnswers boxes;
        if (outcome == QLatin1String("asked")) {
            boxes.click(no);
        } else if (outcome == QLatin1String("refused")) {
            boxes.click(QStringLiteral("OK"));
        }
        const ProgressWatch watch;
        panel->DoAction(code, QString(), QString());
        QVERIFY(watch.kinds.isEmpty());
        if (outcome == QLatin1String("silent")) {
            QCOMPARE(boxes.texts(), QStringList());
        } else if (outcome == QLatin1String("asked")) {
            QCOMPARE(boxes.texts(), QStringList{(code == CommandDropCopy ? intoFolder : moveInto) + target});
        } else {
            QCOMPARE(boxes.texts(), QStringList{refusal});
            const BoxAnswers::Box& box = boxes.seen().constFirst();
            QCOMPARE(box.title, QStringLiteral("Vantrel"));
            QCOMPARE(box.icon, QMessageBox::Critical);
            QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
            QCOMPARE(box.parent, static_cast<QWidget*>(panel));
            QVERIFY(box.modal);
        }
    }
}

void TestMPanelFileCommands::intoItselfByAnotherWay_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("refused");
    QTest::newRow("by a link") << "from/sub"
                               << "link" << true;
    QTest::newRow("below a link") << "from/sub"
                                  << "link/deep" << true;
    QTest::newRow("by the way up") << "from/sub"
                                   << "to/../from/sub" << true;
    QTest::newRow("to be made behind the way up") << "from/sub"
                                                  << "to/../from/sub/new/newer" << true;
    QTest::newRow("a folder around it") << "from"
                                        << "link/deep" << true;
    QTest::newRow("beside it by the way up") << "from/sub"
                                             << "from/sub/../../to" << true; // by its name
    QTest::newRow("elsewhere by the way up") << "from/sub"
                                             << "from/../to" << false;
    QTest::newRow("the link itself") << "link"
                                     << "from/sub/deep" << false;
    QTest::newRow("a file") << "from/a.txt"
                            << "from/../to" << false;
}

void TestMPanelFileCommands::intoItselfByAnotherWay()
{
    QFETCH(QString, item);
    QFETCH(QString, target);
    QFETCH(bool, refused);
    dir->folder(QStringLiteral("root/from/sub/deep"));
    dir->link(QStringLiteral("root/link"), from + QStringLiteral("/sub"));
    for (const int code : {CommandDropCopy, CommandDropMove}) {
        gslDragList = QStringList{dir->path(QStringLiteral("root/") + item)};
        gsDropBase = dir->path(QStringLiteral("root")) + QLatin1Char('/') + target;
        BoxAnswers boxes;
        boxes.click(refused ? QStringLiteral("OK") : no);
        panel->DoAction(code, QString(), QString());
        QCOMPARE(boxes.texts(),
            QStringList{refused ? refusal : (code == CommandDropCopy ? intoFolder : moveInto) + gsDropBase});
    }
}

void TestMPanelFileCommands::ownFolderByAnotherWay_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("the row that leads up") << "from/sub/..";
    QTest::newRow("a slash at the end") << "from/";
    QTest::newRow("a link") << "link";
}

void TestMPanelFileCommands::ownFolderByAnotherWay()
{
    QFETCH(QString, target);
    dir->folder(QStringLiteral("root/from/sub"));
    dir->file(QStringLiteral("root/from/one"), "1");
    dir->link(QStringLiteral("root/link"), from);
    for (const int code : {CommandDropCopy, CommandDropMove}) {
        gslDragList = QStringList{from + QStringLiteral("/one")};
        gsDropBase = dir->path(QStringLiteral("root")) + QLatin1Char('/') + target;
        const BoxAnswers boxes; // none is expected
        panel->DoAction(code, QString(), QString());
        QVERIFY(boxes.seen().isEmpty());
        QCOMPARE(dir->read(QStringLiteral("root/from/one")), QByteArray("1"));
    }
}

void TestMPanelFileCommands::dropOfNothing()
{
    const QStringList before = dir->tree();
    gslDragList.clear();
    gsDropBase = to;
    for (const int code : {CommandDropCopy, CommandDropMove}) {
        BoxAnswers boxes;
        boxes.click(yes);
        const ProgressWatch watch;
        panel->DoAction(code, QString(), QString());
        QCOMPARE(watch.kinds, QList<int>{code == CommandDropCopy ? OpCopy : OpMove});
        QCOMPARE(boxes.seen().size(), 1);
    }
    QCOMPARE(dir->tree(), before);
}

void TestMPanelFileCommands::dropKeepsThePendingOperation()
{
    gslDragList = QStringList{from + QStringLiteral("/a.txt")};
    gsDragBase = from;
    gsDropBase = to;
    BoxAnswers boxes;
    boxes.click(yes);
    panel->DoAction(CommandDropCopy, QStringLiteral("/ignored"), QStringLiteral("ignored"));
    QCOMPARE(gslDragList, QStringList{from + QStringLiteral("/a.txt")});
    QCOMPARE(gsDragBase, from);
    QCOMPARE(gsDropBase, to);
}

void TestMPanelFileCommands::dropCopyRuns()
{
    gslDragList = QStringList{from + QStringLiteral("/a.txt"), from + QStringLiteral("/sub")};
    gsDropBase = to;
    BoxAnswers boxes;
    boxes.click(yes);
    const ProgressWatch watch;
    panel->DoAction(CommandDropCopy, QString(), QString());
    QCOMPARE(watch.kinds, QList<int>{OpCopy});
    QCOMPARE(watch.parents, QList<QWidget*>{panel});
    QCOMPARE(dir->read(QStringLiteral("root/to/a.txt")), QByteArray("aaa"));
    QCOMPARE(dir->read(QStringLiteral("root/to/sub/inner.txt")), QByteArray("inner"));
    QVERIFY(dir->exists(QStringLiteral("root/from/a.txt")));
    QVERIFY(dir->exists(QStringLiteral("root/from/sub/inner.txt")));
}

void TestMPanelFileCommands::dropMoveRuns()
{
    gslDragList = QStringList{from + QStringLiteral("/a.txt"), from + QStringLiteral("/sub")};
    gsDropBase = to;
    BoxAnswers boxes;
    boxes.click(yes);
    const ProgressWatch watch;
    panel->DoAction(CommandDropMove, QString(), QString());
    QCOMPARE(watch.kinds, QList<int>{OpMove});
    QCOMPARE(watch.parents, QList<QWidget*>{panel});
    QCOMPARE(dir->read(QStringLiteral("root/to/a.txt")), QByteArray("aaa"));
    QCOMPARE(dir->read(QStringLiteral("root/to/sub/inner.txt")), QByteArray("inner"));
    QCOMPARE(dir->tree(QStringLiteral("root/from")), QStringList{QStringLiteral("b.txt")});
}

void TestMPanelFileCommands::dropFromTheOtherPanel()
{
    // The panel that receives the drop runs the command.
    gslDragList = QStringList{from + QStringLiteral("/a.txt")};
    gsDragBase = from;
    BoxAnswers boxes;
    boxes.click(yes);
    const ProgressWatch watch;
    other->gotDrop(Qt::MoveAction, to);
    QCOMPARE(boxes.seen().constFirst().parent, static_cast<QWidget*>(other.get()));
    QCOMPARE(watch.parents, QList<QWidget*>{other.get()});
    QVERIFY(dir->exists(QStringLiteral("root/to/a.txt")));
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
