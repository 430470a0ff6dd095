#include "panel/ViewDrag.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/DragFixture.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QCursor>
#include <QDrag>
#include <QTimer>

#include <functional>
#include <utility>

namespace {

/// Looks at the drag that a view makes, before it runs: the timer is the view's last child to come.
class DragNotes : public QObject
{
public:
    explicit DragNotes(QAbstractItemView* view)
        : m_view(view)
    {
        m_view->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::ChildAdded) {
            const QList<QDrag*> drags = m_view->findChildren<QDrag*>();
            for (const QDrag* drag : drags) {
                if (drag->mimeData() != nullptr && !seen.contains(drag)) {
                    seen.append(drag);
                    formats.append(drag->mimeData()->formats());
                    texts.append(drag->mimeData()->text());
                    urls = urls || drag->mimeData()->hasUrls();
                }
            }
        }
        return QObject::eventFilter(watched, event);
    }

    QList<const void*> seen;
    QStringList formats;
    QStringList texts;
    bool urls = false;

private:
    QAbstractItemView* m_view;
};

} // namespace

/// Drags that a view starts.
class TestViewDrag : public QObject, protected DragFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

    void startDistance_data();
    void startDistance();
    void onlyWithTheLeftButton_data();
    void onlyWithTheLeftButton();
    void listFillsThePending_data();
    void listFillsThePending();
    void orderOfThePaths();
    void pathsBelowTheTop();
    void treeFillsThePending();
    void markerText_data();
    void markerText();
    void nothingIsLeftAfterTheDrag_data();
    void nothingIsLeftAfterTheDrag();
    void startForgetsTheHover();
    void nudgeMovesToAndFro_data();
    void nudgeMovesToAndFro();
    void nudgeRestsWhileABoxIsOpen();
    void dropWaitsForTheEndOfTheDrag();
};

void TestViewDrag::startDistance_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<int>("less");
    QTest::addColumn<bool>("starts");
    for (const bool inTree : {true, false}) {
        const QByteArray name = inTree ? "tree, " : "listing, ";
        QTest::newRow(name + "no move") << inTree << 100 << false;
        QTest::newRow(name + "one pixel less") << inTree << 1 << false;
        QTest::newRow(name + "the distance") << inTree << 0 << true;
        QTest::newRow(name + "further") << inTree << -20 << true;
    }
}

void TestViewDrag::startDistance()
{
    QFETCH(bool, inTree);
    QFETCH(int, less);
    QFETCH(bool, starts);
    gsDragBase = QStringLiteral("before");
    dragFrom(inTree, inTree ? QStringLiteral("sub") : QStringLiteral("one.txt"),
        qMax(0, QApplication::startDragDistance() - less));
    QCOMPARE(gsDragBase != QLatin1String("before"), starts);
}

void TestViewDrag::onlyWithTheLeftButton_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::addColumn<int>("buttons");
    QTest::addColumn<bool>("starts");
    for (const bool inTree : {true, false}) {
        const QByteArray name = inTree ? "tree, " : "listing, ";
        QTest::newRow(name + "none") << inTree << int(Qt::NoButton) << false;
        QTest::newRow(name + "right") << inTree << int(Qt::RightButton) << false;
        QTest::newRow(name + "middle") << inTree << int(Qt::MiddleButton) << false;
        QTest::newRow(name + "left") << inTree << int(Qt::LeftButton) << true;
        QTest::newRow(name + "left and right") << inTree << int(Qt::LeftButton | Qt::RightButton) << true;
    }
}

void TestViewDrag::onlyWithTheLeftButton()
{
    QFETCH(bool, inTree);
    QFETCH(int, buttons);
    QFETCH(bool, starts);
    gsDragBase = QStringLiteral("before");
    dragFrom(inTree, inTree ? QStringLiteral("sub") : QStringLiteral("one.txt"), 50,
        static_cast<Qt::MouseButtons>(buttons));
    QCOMPARE(gsDragBase != QLatin1String("before"), starts);
}

void TestViewDrag::listFillsThePending_data()
{
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QStringList>("dragged");
    QTest::newRow("one file") << QStringList{"one.txt"} << QStringList{"one.txt"};
    QTest::newRow("file and folder") << QStringList{"sub", "one.txt"} << QStringList{"sub", "one.txt"};
    QTest::newRow("with the parent") << QStringList{"..", "two.txt"} << QStringList{"two.txt"};
    QTest::newRow("only the parent") << QStringList{".."} << QStringList();
    QTest::newRow("nothing") << QStringList() << QStringList();
}

void TestViewDrag::listFillsThePending()
{
    QFETCH(QStringList, selected);
    QFETCH(QStringList, dragged);
    select(selected);
    gslDragList = QStringList{"old"};
    gsDragBase = QStringLiteral("old");
    dragFrom(false, QStringLiteral("one.txt"), 50);
    QStringList expected;
    for (const QString& name : qAsConst(dragged)) {
        expected.append(dir->path(name));
    }
    QCOMPARE(gslDragList, expected);
    QCOMPARE(gsDragBase, dir->path());
}

void TestViewDrag::orderOfThePaths()
{
    select({"two.txt", "other", "one.txt"});
    dragFrom(false, QStringLiteral("one.txt"), 50);
    QCOMPARE(gslDragList,
        (QStringList{dir->path(QStringLiteral("two.txt")), dir->path(QStringLiteral("other")),
            dir->path(QStringLiteral("one.txt"))}));
}

void TestViewDrag::pathsBelowTheTop()
{
    panel->setTreeRoot(QStringLiteral("/"));
    QVERIFY(waitForList(panel));
    select({"usr"});
    dragFrom(false, QStringLiteral("usr"), 50);
    QCOMPARE(gslDragList, QStringList{"/usr"});
    QCOMPARE(gsDragBase, QStringLiteral("/"));
}

void TestViewDrag::treeFillsThePending()
{
    panel->setTreePath(dir->path(QStringLiteral("sub")));
    gslDragList = QStringList{"old", "older"};
    dragFrom(true, QStringLiteral("other"), 50); // the current folder, wherever the pointer is
    QCOMPARE(gslDragList, QStringList{dir->path(QStringLiteral("sub"))});
    QCOMPARE(gsDragBase, dir->path());
}

void TestViewDrag::markerText_data()
{
    bothViews();
}

void TestViewDrag::markerText()
{
    QFETCH(bool, inTree);
    select({"one.txt"});
    DragNotes notes(view(inTree));
    dragFrom(inTree, inTree ? QStringLiteral("sub") : QStringLiteral("one.txt"), 50);
    QCOMPARE(notes.texts, QStringList{"BlahBlah"});
    QCOMPARE(notes.formats, QStringList{"text/plain"});
    QVERIFY(!notes.urls);
}

void TestViewDrag::nothingIsLeftAfterTheDrag_data()
{
    bothViews();
}

void TestViewDrag::nothingIsLeftAfterTheDrag()
{
    QFETCH(bool, inTree);
    const int timers = view(inTree)->findChildren<QTimer*>().size();
    for (int i = 0; i < 5; ++i) {
        dragFrom(inTree, inTree ? QStringLiteral("sub") : QStringLiteral("one.txt"), 50);
    }
    QVERIFY(view(inTree)->findChildren<QDrag*>().isEmpty());
    QCOMPARE(view(inTree)->findChildren<QTimer*>().size(), timers);
}

void TestViewDrag::startForgetsTheHover()
{
    hover(false, placeOf(false, QStringLiteral("sub")));
    QVERIFY(panel->list->hoverIndex.isValid());
    dragFrom(false, QStringLiteral("one.txt"), 50);
    QVERIFY(!panel->list->hoverIndex.isValid());
}

void TestViewDrag::nudgeMovesToAndFro_data()
{
    bothViews();
}

void TestViewDrag::nudgeMovesToAndFro()
{
    QFETCH(bool, inTree);
    QCursor::setPos(200, 150);
    const QPoint start = QCursor::pos();
    const ViewDrag& drag = inTree ? static_cast<const ViewDrag&>(*panel->tree) : *panel->list;
    QVERIFY(QMetaObject::invokeMethod(view(inTree), "nudgeMouse"));
    QVERIFY(drag.nudgeToggle);
    QCOMPARE(QCursor::pos(), start + QPoint(1, 0));
    QVERIFY(QMetaObject::invokeMethod(view(inTree), "nudgeMouse"));
    QVERIFY(!drag.nudgeToggle);
    QCOMPARE(QCursor::pos(), start);
}

void TestViewDrag::nudgeRestsWhileABoxIsOpen()
{
    QCursor::setPos(200, 150);
    const QPoint start = QCursor::pos();
    QPoint during;
    BoxAnswers answers;
    answers.meanwhile([&] {
        panel->list->nudgeMouse();
        during = QCursor::pos();
    });
    answers.click(QStringLiteral("OK"));
    QMessageBox box(QMessageBox::Information, QString(), QStringLiteral("open"), QMessageBox::Ok, panel);
    box.exec();
    QCOMPARE(during, start);
    QVERIFY(!panel->list->nudgeToggle);
}

/// What happens while the drag runs changes nothing of what was dragged.
void TestViewDrag::dropWaitsForTheEndOfTheDrag()
{
    struct DropMeanwhile : QObject
    {
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            if (event->type() == QEvent::ChildAdded && act) {
                const std::function<void()> once = std::exchange(act, nullptr);
                once();
            }
            return QObject::eventFilter(watched, event);
        }
        std::function<void()> act;
    };
    DropMeanwhile meanwhile;
    BoxAnswers answers;
    answers.click(QStringLiteral("No"));
    panel->list->setFocus();
    select({"one.txt"});
    panel->list->installEventFilter(&meanwhile);
    meanwhile.act = [&] {
        QDropEvent event(placeOf(false, QStringLiteral("sub")), Qt::CopyAction | Qt::MoveAction, &mime,
            Qt::LeftButton, Qt::NoModifier);
        enter(panel->list->viewport(), event.pos());
        QApplication::sendEvent(panel->list->viewport(), &event);
        QVERIFY(event.isAccepted());
        QVERIFY(answers.seen().isEmpty());
        gslDragList = QStringList{QStringLiteral("/another")};
        gsDragBase = QStringLiteral("/elsewhere");
    };
    dragFrom(false, QStringLiteral("one.txt"), 50);
    QVERIFY(!meanwhile.act);
    QCOMPARE(answers.texts(),
        QStringList{"Copy selected files to folder: \n\n" + dir->path(QStringLiteral("sub"))});
    QCOMPARE(gslDragList, QStringList{dir->path(QStringLiteral("one.txt"))});
    QCOMPARE(gsDragBase, dir->path());
    QCOMPARE(gsDropBase, dir->path(QStringLiteral("sub")));
}

VANTREL_TEST_MAIN(TestViewDrag)
#include "tst_ViewDrag.moc"
