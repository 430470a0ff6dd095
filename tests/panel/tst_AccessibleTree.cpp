#include "panel/AccessibleTree.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/AccessibleFixture.h"
#include "tests/support/Listening.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenu>

namespace {

QString pressName()
{
    return QAccessibleActionInterface::pressAction();
}

QString toggleName()
{
    return QAccessibleActionInterface::toggleAction();
}

} // namespace

/// What assistive technology is told of the folder tree.
class TestAccessibleTree : public QObject, protected AccessibleFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { end(); }

    void isMadeForTheTree();
    void rowsOfAllThatIsUnfolded();
    void childrenAreNumberedAsByQt();
    void outsideThereIsNothing();
    void namesAndLevels();
    void tableOfAFolder();
    void statesOfFolding();
    void stateOfTheCurrentFolder();
    void toggleUnfoldsAndFolds();
    void pressShowsTheFolder();
    void rowIsSelectedAsByAClick();
    void setFocusAction();
    void showMenu();
    void unknownAction();
    void movingTellsTheFolder();
    void currentFolderIsToldOnFocus();
    void placesOnScreen();
    void foldersThatComeAndGo();
    void foldersStayWhileOthersCome();
    void manyFoldersThatGoAreFreed();
    void anotherRoot();
    void survivesTheTree();

private:
    AccessibleTree* accessible() const;
    QAccessibleTableInterface* table() const { return accessible()->tableInterface(); }
    QStringList names() const;
    QAccessibleInterface* folder(const char* name) const;
    void act(const char* name, const QString& action) const;
    MTree* tree() const { return panel->tree; }

    QString root;
};

void TestAccessibleTree::init()
{
    VANTREL_NEEDS_LISTENING();
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("top/a/x/deep"));
    dir->folder(QStringLiteral("top/a/y"));
    dir->folder(QStringLiteral("top/b"));
    root = dir->path(QStringLiteral("top"));
    show(root);
    QTRY_COMPARE(names(), QStringList({"top", "a", "b"}));
    clearEvents();
}

AccessibleTree* TestAccessibleTree::accessible() const
{
    return dynamic_cast<AccessibleTree*>(QAccessible::queryAccessibleInterface(tree()));
}

/// All that is told, from the top.
QStringList TestAccessibleTree::names() const
{
    QStringList told;
    for (int row = 0; row < table()->rowCount(); ++row) {
        const QAccessibleInterface* part = table()->cellAt(row, 0);
        told.append(part != nullptr ? part->text(QAccessible::Name) : QStringLiteral("-"));
    }
    return told;
}

QAccessibleInterface* TestAccessibleTree::folder(const char* name) const
{
    return table()->cellAt(names().indexOf(QLatin1String(name)), 0);
}

void TestAccessibleTree::act(const char* name, const QString& action) const
{
    folder(name)->actionInterface()->doAction(action);
}

void TestAccessibleTree::isMadeForTheTree()
{
    QVERIFY(accessible() != nullptr);
    QCOMPARE(accessible()->role(), QAccessible::Tree);
    QCOMPARE(accessible()->text(QAccessible::Name), QStringLiteral("Folder tree"));
    QCOMPARE(accessible()->object(), tree());
    QVERIFY(accessible()->actionInterface() != nullptr);
    QCOMPARE(table()->caption(), nullptr);
    QCOMPARE(table()->summary(), nullptr);
    QCOMPARE(table()->columnCount(), 1);
    QCOMPARE(table()->columnDescription(0), QString());
    QCOMPARE(table()->rowDescription(0), QString());
}

void TestAccessibleTree::rowsOfAllThatIsUnfolded()
{
    act("a", toggleName());
    QTRY_COMPARE(names(), QStringList({"top", "a", "x", "y", "b"}));
    act("x", toggleName());
    QTRY_COMPARE(names(), QStringList({"top", "a", "x", "deep", "y", "b"}));
    act("a", toggleName());
    QCOMPARE(names(), QStringList({"top", "a", "b"}));
    act("a", toggleName()); // as it was before
    QCOMPARE(names(), QStringList({"top", "a", "x", "deep", "y", "b"}));
    act("top", toggleName());
    QCOMPARE(names(), QStringList({"top"}));
}

// The numbers that Qt's tree view puts into its events: with the columns and the header that are hidden.
void TestAccessibleTree::childrenAreNumberedAsByQt()
{
    QCOMPARE(accessible()->childCount(), 16);
    for (int i = 0; i < accessible()->childCount(); ++i) {
        QAccessibleInterface* part = accessible()->child(i);
        QCOMPARE(part != nullptr, i >= 4 && i % 4 == 0);
        if (part == nullptr) {
            continue;
        }
        QVERIFY(part->isValid());
        QCOMPARE(part, table()->cellAt(i / 4 - 1, 0));
        QCOMPARE(accessible()->indexOfChild(part), i);
        QCOMPARE(part->parent(), static_cast<QAccessibleInterface*>(accessible()));
        QCOMPARE(part->role(), QAccessible::TreeItem);
        QCOMPARE(part->childCount(), 0);
        QCOMPARE(part->window(), window->window.windowHandle());
    }
    QCOMPARE(accessible()->keptParts(), 3);
}

void TestAccessibleTree::outsideThereIsNothing()
{
    QCOMPARE(accessible()->child(-1), nullptr);
    QCOMPARE(accessible()->child(16), nullptr);
    QCOMPARE(table()->cellAt(3, 0), nullptr);
    QCOMPARE(table()->cellAt(-1, 0), nullptr);
    QCOMPARE(table()->cellAt(0, 1), nullptr);
    QCOMPARE(accessible()->indexOfChild(nullptr), -1);
    QCOMPARE(accessible()->indexOfChild(accessible()), -1);
    QVERIFY(!table()->selectRow(3));
    QVERIFY(!table()->unselectRow(0));
    QVERIFY(!table()->selectColumn(0));
    QVERIFY(!table()->unselectColumn(0));
    QVERIFY(!table()->isColumnSelected(0));
    QVERIFY(table()->selectedColumns().isEmpty());
    QCOMPARE(table()->selectedColumnCount(), 0);
}

void TestAccessibleTree::namesAndLevels()
{
    act("a", toggleName());
    QTRY_COMPARE(table()->rowCount(), 5);
    QCOMPARE(folder("top")->text(QAccessible::Description), QStringLiteral("Level 1"));
    QCOMPARE(folder("a")->text(QAccessible::Description), QStringLiteral("Level 2"));
    QCOMPARE(folder("x")->text(QAccessible::Description), QStringLiteral("Level 3"));
    QCOMPARE(folder("b")->text(QAccessible::Description), QStringLiteral("Level 2"));
    QCOMPARE(folder("b")->text(QAccessible::Value), QString());
}

void TestAccessibleTree::tableOfAFolder()
{
    act("a", toggleName());
    QTRY_COMPARE(table()->rowCount(), 5);
    const QAccessibleTableCellInterface* inTable = folder("y")->tableCellInterface();
    QCOMPARE(inTable->rowIndex(), 3);
    QCOMPARE(inTable->columnIndex(), 0);
    QCOMPARE(inTable->rowExtent(), 1);
    QCOMPARE(inTable->columnExtent(), 1);
    QCOMPARE(inTable->table(), static_cast<QAccessibleInterface*>(accessible()));
    QVERIFY(inTable->rowHeaderCells().isEmpty());
    QVERIFY(inTable->columnHeaderCells().isEmpty());
}

void TestAccessibleTree::statesOfFolding()
{
    QVERIFY(folder("top")->state().expandable);
    QVERIFY(folder("top")->state().expanded);
    QVERIFY(!folder("top")->state().collapsed);
    QVERIFY(folder("a")->state().expandable);
    QVERIFY(!folder("a")->state().expanded);
    QVERIFY(folder("a")->state().collapsed);
    act("a", toggleName());
    QTRY_COMPARE(table()->rowCount(), 5);
    QVERIFY(folder("a")->state().expanded);
    QVERIFY(!folder("a")->state().collapsed);
}

void TestAccessibleTree::stateOfTheCurrentFolder()
{
    tree()->setFocus();
    QAccessible::State state = folder("top")->state();
    QVERIFY(state.selectable && state.focusable && state.selected && state.active && state.focused);
    QVERIFY(!state.multiSelectable && !state.invisible && !state.offscreen);
    QVERIFY(!folder("a")->state().selected && !folder("a")->state().active && !folder("a")->state().focused);
    QCOMPARE(accessible()->focusChild(), folder("top"));
    QCOMPARE(table()->selectedRows(), QList<int>({0}));
    QCOMPARE(table()->selectedCells(), QList<QAccessibleInterface*>({folder("top")}));
    QCOMPARE(table()->selectedRowCount(), 1);
    QCOMPARE(table()->selectedCellCount(), 1);
    panel->list->setFocus();
    QVERIFY(!folder("top")->state().focused);
    QVERIFY(folder("top")->state().selected);
    QCOMPARE(accessible()->focusChild(), nullptr);
    window->window.hide();
    QVERIFY(folder("top")->state().invisible);
}

void TestAccessibleTree::toggleUnfoldsAndFolds()
{
    QCOMPARE(folder("a")->actionInterface()->actionNames(),
        QStringList({pressName(), toggleName(), QAccessibleActionInterface::showMenuAction(),
            QAccessibleActionInterface::setFocusAction()}));
    QVERIFY(folder("a")->actionInterface()->keyBindingsForAction(pressName()).isEmpty());
    act("a", toggleName());
    QVERIFY(tree()->isExpanded(panel->treeModel->index(root + "/a")));
    QCOMPARE(panel->currentPath, root); // shown is what was
    act("a", toggleName());
    QVERIFY(!tree()->isExpanded(panel->treeModel->index(root + "/a")));
}

void TestAccessibleTree::pressShowsTheFolder()
{
    panel->list->setFocus();
    act("b", pressName());
    QCOMPARE(panel->currentPath, root + "/b");
    QCOMPARE(panel->list->rootIndex(), panel->listModel->index(root + "/b"));
    QVERIFY(tree()->hasFocus());
    QCOMPARE(accessible()->focusChild(), folder("b"));
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), QStringList({".."}));
    act("top", pressName());
    QCOMPARE(panel->currentPath, root);
}

void TestAccessibleTree::rowIsSelectedAsByAClick()
{
    QVERIFY(table()->selectRow(2));
    QCOMPARE(panel->currentPath, root + "/b");
    QVERIFY(table()->isRowSelected(2));
    QVERIFY(!table()->isRowSelected(0));
}

void TestAccessibleTree::setFocusAction()
{
    panel->list->setFocus();
    act("a", QAccessibleActionInterface::setFocusAction());
    QVERIFY(tree()->hasFocus());
    QCOMPARE(panel->currentPath, root + "/a");
}

void TestAccessibleTree::showMenu()
{
    gstMenu = {LSMENU{CommandProperties, QStringLiteral("|.|"), QStringLiteral("Facts"), QString()}};
    ModalAnswers answers;
    const QRect place = folder("b")->rect();
    answers.meet<QMenu>([&](QMenu* menu) {
        QCOMPARE(menu->actions().size(), 1);
        QVERIFY(place.contains(menu->geometry().topLeft()));
        QTest::keyClick(menu, Qt::Key_Escape);
    });
    act("b", QAccessibleActionInterface::showMenuAction());
    QCOMPARE(answers.left(), 1); // later
    QTRY_COMPARE(answers.left(), 0);
    QCOMPARE(panel->currentPath, root + "/b");
}

void TestAccessibleTree::unknownAction()
{
    act("a", QStringLiteral("no such action"));
    folder("a")->setText(QAccessible::Name, QStringLiteral("other"));
    QCOMPARE(panel->currentPath, root);
    QCOMPARE(names(), QStringList({"top", "a", "b"}));
}

void TestAccessibleTree::movingTellsTheFolder()
{
    tree()->setFocus();
    clearEvents();
    QTest::keyClick(tree(), Qt::Key_Down);
    QList<QAccessibleInterface*> told;
    for (QAccessibleEvent* event : events()) {
        if (event->type() == QAccessible::Focus && event->object() == tree() && event->child() > 0) {
            told.append(accessible()->child(event->child()));
        }
    }
    QVERIFY(!told.isEmpty());
    QCOMPARE(told.constFirst(), folder("a"));
    QCOMPARE(told.constLast(), folder("a"));
}

void TestAccessibleTree::currentFolderIsToldOnFocus()
{
    act("b", pressName());
    panel->list->setFocus();
    QCoreApplication::processEvents();
    clearEvents();
    tree()->setFocus();
    // Last, so that it is not the tree as a whole that is read.
    QTRY_COMPARE(events().constLast()->child(), 12);
    QCOMPARE(events().constLast()->type(), QAccessible::Focus);
    QCOMPARE(accessible()->child(12), folder("b"));
}

void TestAccessibleTree::placesOnScreen()
{
    const QRect shown = tree()->visualRect(panel->treeModel->index(root + "/b"));
    QVERIFY(!shown.isEmpty());
    const QRect place(tree()->viewport()->mapToGlobal(shown.topLeft()), shown.size());
    QCOMPARE(folder("b")->rect(), place);
    QCOMPARE(accessible()->childAt(place.center().x(), place.center().y()), folder("b"));
    QCOMPARE(accessible()->childAt(place.center().x(), place.bottom() + 50), nullptr);
    QCOMPARE(accessible()->childAt(-5000, -5000), nullptr);
    act("top", toggleName());
    QCOMPARE(table()->rowCount(), 1);
}

void TestAccessibleTree::foldersThatComeAndGo()
{
    const QAccessible::Id gone = QAccessible::uniqueId(folder("a"));
    dir->folder(QStringLiteral("top/c"));
    QTRY_COMPARE(names(), QStringList({"top", "a", "b", "c"}));
    QVERIFY(QDir(root + "/a").removeRecursively());
    QTRY_COMPARE(names(), QStringList({"top", "b", "c"}));
    QCOMPARE(accessible()->childCount(), 16);
    QAccessibleInterface* before = QAccessible::accessibleInterface(gone);
    QVERIFY(before == nullptr || !before->isValid());
    if (before != nullptr) {
        QVERIFY(before->state().invalid);
        QVERIFY(!before->state().expandable);
        QCOMPARE(before->text(QAccessible::Name), QString());
        QCOMPARE(before->text(QAccessible::Description), QString());
        QVERIFY(before->rect().isEmpty());
        QCOMPARE(accessible()->indexOfChild(before), -1);
        before->actionInterface()->doAction(pressName()); // nothing
        QCOMPARE(panel->currentPath, root);
    }
}

void TestAccessibleTree::foldersStayWhileOthersCome()
{
    QAccessibleInterface* b = folder("b");
    QCOMPARE(accessible()->indexOfChild(b), 12);
    act("a", toggleName());
    QTRY_COMPARE(table()->rowCount(), 5);
    QVERIFY(b->isValid());
    QCOMPARE(folder("b"), b);
    QCOMPARE(accessible()->indexOfChild(b), 20);
    QCOMPARE(b->tableCellInterface()->rowIndex(), 4);
    act("a", pressName());
    QAccessibleInterface* x = folder("x");
    act("a", toggleName());
    QVERIFY(x->isValid()); // folded away
    QCOMPARE(accessible()->indexOfChild(x), -1);
    QVERIFY(x->state().offscreen);
}

void TestAccessibleTree::manyFoldersThatGoAreFreed()
{
    constexpr int count = 400;
    for (int i = 0; i < count; ++i) {
        dir->folder(QStringLiteral("top/f%1").arg(i));
    }
    QTRY_COMPARE(table()->rowCount(), count + 3);
    QCOMPARE(names().size(), count + 3);
    QCOMPARE(accessible()->keptParts(), count + 3);
    for (int i = 0; i < count; ++i) {
        QVERIFY(QDir().rmdir(dir->path(QStringLiteral("top/f%1").arg(i))));
    }
    QTRY_COMPARE(table()->rowCount(), 3);
    const int kept = accessible()->keptParts();
    QVERIFY2(kept < count, qPrintable(QString::number(kept)));
}

// A model may be freed on another thread: no index of it may be left.
void TestAccessibleTree::anotherRoot()
{
    QVERIFY(folder("a") != nullptr && folder("b") != nullptr);
    QCOMPARE(accessible()->keptParts(), 3);
    setListening(false);
    panel->setTreeRoot(root + "/a");
    QCOMPARE(accessible()->keptParts(), 0);
    setListening(true);
    QTRY_COMPARE(names(), QStringList({"a", "x", "y"}));
    QCOMPARE(folder("a")->text(QAccessible::Description), QStringLiteral("Level 1"));
    panel->setTreeRoot(QStringLiteral("/"));
    QTRY_VERIFY(names().contains(QStringLiteral("usr")));
    QCOMPARE(table()->cellAt(0, 0)->text(QAccessible::Description), QStringLiteral("Level 1"));
    QCOMPARE(folder("usr")->text(QAccessible::Description), QStringLiteral("Level 2"));
}

void TestAccessibleTree::survivesTheTree()
{
    const QAccessible::Id id = QAccessible::uniqueId(folder("a"));
    const QAccessible::Id whole = QAccessible::uniqueId(accessible());
    window.reset();
    QCOMPARE(QAccessible::accessibleInterface(id), nullptr);
    QCOMPARE(QAccessible::accessibleInterface(whole), nullptr);
}

VANTREL_TEST_MAIN(TestAccessibleTree)
#include "tst_AccessibleTree.moc"
