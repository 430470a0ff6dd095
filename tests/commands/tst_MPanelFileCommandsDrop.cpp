#include "app/aGlobal.h"
#include "fileops/MProgress.h"
#include "panel/MPanel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FileCommandPanels.h"
#include "tests/support/ProgressWatch.h"
#include "tests/support/TestMain.h"

#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

/// The commands that copy and move what was dropped.
class TestMPanelFileCommandsDrop : public QObject, private FileCommandPanels
{
    Q_OBJECT

private slots:
    void init() { open(); }
    void cleanup() { close(); }

    void dropChecks_data();
    void dropChecks();
    void intoItselfByAnotherWay_data();
    void intoItselfByAnotherWay();
    void intoItselfThroughANameThatIsNoText();
    void ownFolderByAnotherWay_data();
    void ownFolderByAnotherWay();
    void dropOfNothing();
    void dropKeepsThePendingOperation();
    void dropCopyRuns();
    void dropMoveRuns();
    void dropFromTheOtherPanel();
};

void TestMPanelFileCommandsDrop::dropChecks_data()
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

void TestMPanelFileCommandsDrop::dropChecks()
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

void TestMPanelFileCommandsDrop::intoItselfByAnotherWay_data()
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

void TestMPanelFileCommandsDrop::intoItselfByAnotherWay()
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

void TestMPanelFileCommandsDrop::intoItselfThroughANameThatIsNoText()
{
    const QByteArray folder = QFile::encodeName(from) + "/x\xe9";
    QCOMPARE(::mkdir(folder.constData(), 0755), 0);
    QCOMPARE(::mkdir((folder + "/sub").constData(), 0755), 0);
    const QString target = dir->path(QStringLiteral("root/link"));
    QCOMPARE(::symlink((folder + "/sub").constData(), QFile::encodeName(target).constData()), 0);
    for (const QString& end : {QString(), QStringLiteral("/new")}) {
        gslDragList = QStringList{from};
        gsDropBase = target + end;
        BoxAnswers boxes;
        boxes.click(QStringLiteral("OK"));
        panel->DoAction(CommandDropCopy, QString(), QString());
        QCOMPARE(boxes.texts(), QStringList{refusal});
    }
}

void TestMPanelFileCommandsDrop::ownFolderByAnotherWay_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("the row that leads up") << "from/sub/..";
    QTest::newRow("a slash at the end") << "from/";
    QTest::newRow("a link") << "link";
}

void TestMPanelFileCommandsDrop::ownFolderByAnotherWay()
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

void TestMPanelFileCommandsDrop::dropOfNothing()
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

void TestMPanelFileCommandsDrop::dropKeepsThePendingOperation()
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

void TestMPanelFileCommandsDrop::dropCopyRuns()
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

void TestMPanelFileCommandsDrop::dropMoveRuns()
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

void TestMPanelFileCommandsDrop::dropFromTheOtherPanel()
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

VANTREL_TEST_MAIN(TestMPanelFileCommandsDrop)
#include "tst_MPanelFileCommandsDrop.moc"
