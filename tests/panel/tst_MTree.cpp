#include "panel/MTree.h"

#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/myDelegate.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QHeaderView>
#include <QPainter>
#include <QPointer>
#include <QScrollBar>

#include <memory>

namespace {

/// The tree with its event handlers within reach.
class Tree : public MTree
{
public:
    using MTree::drawBranches;
    using MTree::MTree;
};

} // namespace

class TestMTree : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void construction();
    void startState();
    void drawsNoBranches();
    void currentRowOpensTheFolder();
    void invalidCurrentRowChangesNothing();
    void watcherFollowsTheNewModel();
    void clickOpensTheFolder();
    void resizeFitsTheColumn();
    void realDoubleClickOnAFoldedFolder();
    void realDoubleClickOnAnOpenFolder();
    void realDoubleClickOnTheRoot();
    void leftPressIsNoted();
    void rightPressIsNot();
    void moveNeverSelects();
    void accessibleName();

private:
    MTree* tree() const { return panel->tree; }
    QModelIndex at(const QString& relative) const { return panel->treeModel->index(dir->path(relative)); }
    void doubleClick(const QString& relative);

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
};

void TestMTree::init()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("a/b/c"));
    dir->folder(QStringLiteral("d"));
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    QVERIFY(window->activate());
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a"))));
}

void TestMTree::cleanup()
{
    window.reset();
    dir.reset();
}

void TestMTree::doubleClick(const QString& relative)
{
    const QPoint place = tree()->visualRect(at(relative)).center();
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseDClick(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QTest::mouseRelease(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
}

void TestMTree::construction()
{
    const MTree fresh(panel);
    QVERIFY(fresh.dragEnabled());
    QVERIFY(fresh.acceptDrops());
    QVERIFY(fresh.showDropIndicator());
    QCOMPARE(fresh.dragDropMode(), QAbstractItemView::DragDrop);
    QCOMPARE(fresh.selectionMode(), QAbstractItemView::SingleSelection);
    QVERIFY(!fresh.rootIsDecorated());
    QCOMPARE(fresh.indentation(), 15);
    QCOMPARE(fresh.parent(), panel);
    QCOMPARE(fresh.panel, panel);
    QCOMPARE(fresh.itemDelegate(), fresh.delegate);
    QVERIFY(fresh.delegate != tree()->delegate);
    QCOMPARE(fresh.metaObject()->superClass()->className(), "QTreeView");
    QVERIFY(fresh.metaObject()->indexOfSlot("nudgeMouse()") >= 0);
    QVERIFY(fresh.metaObject()->indexOfSlot("currentRowChanged(QModelIndex,QModelIndex)") >= 0);
}

void TestMTree::startState()
{
    const MTree fresh(panel);
    QCOMPARE(fresh.pressPos, QPoint(0, 0));
    QVERIFY(!fresh.nudgeToggle);
    QVERIFY(!fresh.hoverIndex.isValid());
    QVERIFY(!fresh.delegate->dropTargetIndex.isValid());
    QCOMPARE(fresh.partner, nullptr);
}

void TestMTree::drawsNoBranches()
{
    QImage image(60, 30, QImage::Format_RGB32);
    image.fill(Qt::white);
    const QImage before = image;
    QPainter painter(&image);
    Tree fresh(panel);
    fresh.setModel(panel->treeModel);
    fresh.drawBranches(&painter, image.rect(), at(QStringLiteral("a")));
    painter.end();
    QCOMPARE(image, before);
}

void TestMTree::currentRowOpensTheFolder()
{
    tree()->setCurrentIndex(at(QStringLiteral("a")));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
    QCOMPARE(QModelIndex(panel->currentTreeIndex), at(QStringLiteral("a")));
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("a")));
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), (QStringList{"..", "b"}));
}

void TestMTree::invalidCurrentRowChangesNothing()
{
    tree()->setCurrentIndex(at(QStringLiteral("a")));
    tree()->setCurrentIndex(QModelIndex());
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
    QCOMPARE(panel->listModel->rootPath(), dir->path(QStringLiteral("a")));
}

void TestMTree::watcherFollowsTheNewModel()
{
    panel->setTreeRoot(dir->path());
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("d"))));
    tree()->setCurrentIndex(at(QStringLiteral("d")));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("d")));
}

void TestMTree::clickOpensTheFolder()
{
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, Qt::NoModifier,
        tree()->visualRect(at(QStringLiteral("d"))).center());
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("d")));
    QVERIFY(tree()->hasFocus());
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), QStringList{".."});
}

void TestMTree::resizeFitsTheColumn()
{
    dir->folder(QString(200, QLatin1Char('w')));
    QVERIFY(waitForTreeRow(panel, dir->path(QString(200, QLatin1Char('w')))));
    tree()->resize(200, 300);
    tree()->setColumnWidth(0, 50);
    tree()->resize(201, 300);
    const int fitted = tree()->columnWidth(0);
    QVERIFY(fitted > 201);
    tree()->resizeColumnToContents(0);
    QCOMPARE(tree()->columnWidth(0), fitted);
    QVERIFY(tree()->horizontalScrollBar()->maximum() > 0);
}

void TestMTree::realDoubleClickOnAFoldedFolder()
{
    QVERIFY(!tree()->isExpanded(at(QStringLiteral("a"))));
    doubleClick(QStringLiteral("a"));
    QVERIFY(tree()->isExpanded(at(QStringLiteral("a"))));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), (QStringList{"..", "b"}));
}

void TestMTree::realDoubleClickOnAnOpenFolder()
{
    tree()->expand(at(QStringLiteral("a")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
    tree()->expand(at(QStringLiteral("a/b")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b/c"))));
    QCOMPARE(treeNames(panel).size(), 5);
    doubleClick(QStringLiteral("a"));
    QVERIFY(tree()->isExpanded(at(QStringLiteral("a"))));
    QVERIFY(!tree()->isExpanded(at(QStringLiteral("a/b"))));
    QCOMPARE(treeNames(panel).mid(1), (QStringList{"a", "b", "d"}));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
}

void TestMTree::realDoubleClickOnTheRoot()
{
    const QPointer<myFileSystemModel> before = panel->treeModel;
    doubleClick(QString());
    QVERIFY(before.isNull());
    QVERIFY(tree()->isExpanded(at(QString())));
    QTRY_COMPARE(treeNames(panel).mid(1), (QStringList{"a", "d"}));
    tree()->collapse(at(QString()));
    doubleClick(QString());
    QVERIFY(!tree()->isExpanded(at(QString())));
    QCOMPARE(panel->currentPath, dir->path());
    tree()->openCurrent();
    QVERIFY(!tree()->isExpanded(at(QString())));
    QCOMPARE(treeNames(panel), QStringList{QFileInfo(dir->path()).fileName()});
}

void TestMTree::leftPressIsNoted()
{
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(22, 9));
    QCOMPARE(tree()->pressPos, QPoint(22, 9));
}

void TestMTree::rightPressIsNot()
{
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(22, 9));
    QTest::mouseClick(tree()->viewport(), Qt::RightButton, Qt::NoModifier, QPoint(40, 12));
    QCOMPARE(tree()->pressPos, QPoint(22, 9));
}

void TestMTree::moveNeverSelects()
{
    const QPoint a = tree()->visualRect(at(QStringLiteral("a"))).center();
    const QPoint d = tree()->visualRect(at(QStringLiteral("d"))).center();
    QTest::mousePress(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, a);
    QTest::mouseMove(tree()->viewport(), d);
    QTest::mouseRelease(tree()->viewport(), Qt::LeftButton, Qt::NoModifier, d);
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
}

void TestMTree::accessibleName()
{
    QCOMPARE(tree()->accessibleName(), QStringLiteral("Folder tree"));
}

VANTREL_TEST_MAIN(TestMTree)
#include "tst_MTree.moc"
