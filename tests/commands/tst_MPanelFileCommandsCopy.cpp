#include "app/aGlobal.h"
#include "fileops/MCopy.h"
#include "fileops/MProgress.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FileCommandPanels.h"
#include "tests/support/FormChild.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/ProgressWatch.h"
#include "tests/support/TestMain.h"
#include "tests/support/TypedAnswers.h"

#include <QDir>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

/// The command that copies what is selected to where the user says.
class TestMPanelFileCommandsCopy : public QObject, private FileCommandPanels
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }

    void copyIsCancelled_data();
    void copyIsCancelled();
    void copyDestination_data();
    void copyDestination();
    void copyOfSeveral_data();
    void copyOfSeveral();
    void copyFromRoot();
    void copyFromTheTree();
    void copyFromTheTreeRefused();
    void copyOfAFolderThatGoesMeanwhile();
    void copyOfRowsThatGoMeanwhile();
    void copyWithoutFocus();
    void copyLooksAtTheFocusBeforeTheDialog();
    void copyOfALinkToAFolder();
    void copyToMakesFolders();
    void copyOntoItself();
};

void TestMPanelFileCommandsCopy::copyIsCancelled_data()
{
    QTest::addColumn<int>("how");
    QTest::newRow("Cancel") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("title bar") << 2;
    QTest::newRow("OK on an empty line") << 3;
}

void TestMPanelFileCommandsCopy::copyIsCancelled()
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

void TestMPanelFileCommandsCopy::copyDestination_data()
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

void TestMPanelFileCommandsCopy::copyDestination()
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

void TestMPanelFileCommandsCopy::copyOfSeveral_data()
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

void TestMPanelFileCommandsCopy::copyOfSeveral()
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

void TestMPanelFileCommandsCopy::copyFromRoot()
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

void TestMPanelFileCommandsCopy::copyFromTheTree()
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

/// The panel goes to the folder above while the dialog stands: that one was never meant.
void TestMPanelFileCommandsCopy::copyOfAFolderThatGoesMeanwhile()
{
    panel->tree->setFocus();
    BoxAnswers boxes;
    boxes.click(yes).click(QStringLiteral("Ignore"));
    ModalAnswers answers;
    answers.meet<MCopy>([&](MCopy* dialog) {
        QVERIFY(QDir(from).removeRecursively());
        QTRY_COMPARE(panel->currentPath, root);
        formChild<QLineEdit>(*dialog, "lineEdit").setText(to);
        formChild<QPushButton>(*dialog, "pushButton_OK").click();
    });
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(gslDragList, QStringList{from});
    QCOMPARE(gsDragBase, root);
    QCOMPARE(boxes.texts().constFirst(), intoFolder + to);
    QVERIFY(!dir->exists(QStringLiteral("root/to/root")));
}

void TestMPanelFileCommandsCopy::copyOfRowsThatGoMeanwhile()
{
    select(panel, {QStringLiteral("a.txt"), QStringLiteral("b.txt")});
    BoxAnswers boxes;
    boxes.click(no);
    ModalAnswers answers;
    answers.meet<MCopy>([&](MCopy* dialog) {
        QVERIFY(QFile::remove(from + "/a.txt"));
        QTRY_VERIFY(!listIndex(panel, QStringLiteral("a.txt")).isValid());
        formChild<QLineEdit>(*dialog, "lineEdit").setText(to);
        formChild<QPushButton>(*dialog, "pushButton_OK").click();
    });
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(
        boxes.texts(), QStringList{intoFolder + to}); // two were meant: it does not become a copy to a name
    QCOMPARE(gslDragList, (QStringList{from + "/a.txt", from + "/b.txt"}));
}

void TestMPanelFileCommandsCopy::copyFromTheTreeRefused()
{
    panel->tree->setFocus();
    BoxAnswers boxes;
    boxes.click(QStringLiteral("OK"));
    ModalAnswers answers;
    typeDestination(answers, QStringLiteral("sub"));
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.texts(), QStringList{refusal});
    QVERIFY(window->activate());
    panel->tree->setFocus();
    typeDestination(answers, dir->path(QStringLiteral("root"))); // where it is
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.seen().size(), 1);
}

void TestMPanelFileCommandsCopy::copyWithoutFocus()
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

void TestMPanelFileCommandsCopy::copyLooksAtTheFocusBeforeTheDialog()
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

void TestMPanelFileCommandsCopy::copyOfALinkToAFolder()
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

void TestMPanelFileCommandsCopy::copyToMakesFolders()
{
    select(panel, {QStringLiteral("a.txt")});
    BoxAnswers boxes;
    boxes.click(yes);
    ModalAnswers answers;
    typeDestination(answers, QStringLiteral("one/two/x"));
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(dir->read(QStringLiteral("root/from/one/two/x")), QByteArray("aaa"));
}

void TestMPanelFileCommandsCopy::copyOntoItself()
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

VANTREL_TEST_MAIN(TestMPanelFileCommandsCopy)
#include "tst_MPanelFileCommandsCopy.moc"
