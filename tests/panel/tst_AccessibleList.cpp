#include "panel/AccessibleList.h"

#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/AccessibleListFixture.h"
#include "tests/support/Listening.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QHeaderView>

/// The parts of the listing that assistive technology is told of.
class TestAccessibleList : public QObject, protected AccessibleListFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

    void isMadeForTheListing();
    void rowsAndColumns();
    void childrenAreNumberedAsByQt();
    void outsideThereIsNothing();
    void cellTexts();
    void folderAndLinkAreTold();
    void columnHeaders();
    void rowHeadersAreHidden();
    void corner();
    void tableOfACell();
    void cellsStayWhileRowsMove();
    void rowsThatGo();
    void cellsOfManyRowsThatGoAreFreed();
    void anotherFolder();
    void anotherFolderWhileNobodyListens();
    void folderThatVanishes();
    void noFolderAtAll();
    void onlyWhatIsAskedForIsKept();
    void namesAreNotSet();
    void survivesTheListing();
};

void TestAccessibleList::isMadeForTheListing()
{
    QVERIFY(accessible() != nullptr);
    QCOMPARE(accessible()->role(), QAccessible::Table);
    QCOMPARE(accessible()->text(QAccessible::Name), QStringLiteral("File list"));
    QVERIFY(accessible()->isValid());
    QCOMPARE(accessible()->object(), list());
    QVERIFY(accessible()->actionInterface() != nullptr);
    QCOMPARE(table()->caption(), nullptr);
    QCOMPARE(table()->summary(), nullptr);
}

void TestAccessibleList::rowsAndColumns()
{
    QCOMPARE(table()->rowCount(), 4);
    QCOMPARE(table()->columnCount(), 4);
    QCOMPARE(accessible()->childCount(), 25);
}

// Row by row with both headers: the numbers that Qt's views put into their events.
void TestAccessibleList::childrenAreNumberedAsByQt()
{
    for (int i = 0; i < accessible()->childCount(); ++i) {
        QAccessibleInterface* part = accessible()->child(i);
        QVERIFY(part != nullptr && part->isValid());
        QCOMPARE(accessible()->indexOfChild(part), i);
        QCOMPARE(part->parent(), static_cast<QAccessibleInterface*>(accessible()));
        QCOMPARE(accessible()->child(i), part); // the same one again
        QCOMPARE(part->childCount(), 0);
        QCOMPARE(part->child(0), nullptr);
        QCOMPARE(part->indexOfChild(part), -1);
        QCOMPARE(part->childAt(1, 1), nullptr);
        QCOMPARE(part->object(), nullptr);
        QCOMPARE(part->window(), window->window.windowHandle());
    }
    QCOMPARE(accessible()->child(0)->role(), QAccessible::Pane);
    QCOMPARE(accessible()->child(2)->role(), QAccessible::ColumnHeader);
    QCOMPARE(accessible()->child(2)->text(QAccessible::Name), QStringLiteral("Size"));
    QCOMPARE(accessible()->child(5)->role(), QAccessible::RowHeader);
    QCOMPARE(accessible()->child(6)->role(), QAccessible::Cell);
    QCOMPARE(accessible()->child(6)->text(QAccessible::Name), QStringLiteral(".."));
    QCOMPARE(accessible()->child(22)->text(QAccessible::Name), QStringLiteral("6"));
    QCOMPARE(accessible()->child(21), table()->cellAt(3, 0));
}

void TestAccessibleList::outsideThereIsNothing()
{
    QCOMPARE(accessible()->child(-1), nullptr);
    QCOMPARE(accessible()->child(25), nullptr);
    QCOMPARE(table()->cellAt(4, 0), nullptr);
    QCOMPARE(table()->cellAt(0, 4), nullptr);
    QCOMPARE(table()->cellAt(-1, 0), nullptr);
    QCOMPARE(accessible()->indexOfChild(nullptr), -1);
    QCOMPARE(accessible()->indexOfChild(accessible()), -1);
    // The same cell of another listing is none of this one.
    const PanelWindow other(dir->path());
    QVERIFY(waitForList(other.panel));
    QAccessibleInterface* stranger = tableOf(other.panel->list)->cellAt(1, 0);
    QVERIFY(stranger != nullptr);
    QCOMPARE(accessible()->indexOfChild(stranger), -1);
    QVERIFY(!table()->selectRow(4));
    QVERIFY(!table()->unselectRow(-1));
    QVERIFY(!table()->isRowSelected(4));
    QVERIFY(!table()->selectColumn(0));
    QVERIFY(!table()->unselectColumn(0));
}

void TestAccessibleList::cellTexts()
{
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            const QModelIndex index = panel->listModel->index(row, column, list()->rootIndex());
            QVERIFY(!index.data().toString().isEmpty());
            QCOMPARE(table()->cellAt(row, column)->text(QAccessible::Name), index.data().toString());
        }
    }
    QCOMPARE(cell("b", 1)->text(QAccessible::Name), QStringLiteral("6"));
    QCOMPARE(cell("b", 1)->text(QAccessible::Value), QString());
}

void TestAccessibleList::folderAndLinkAreTold()
{
    QVERIFY(QFile::link(QStringLiteral("a"), dir->path(QStringLiteral("l"))));
    QTRY_VERIFY(cell("l") != nullptr);
    QCOMPARE(cell("d")->text(QAccessible::Description), QStringLiteral("Folder"));
    QCOMPARE(cell("l")->text(QAccessible::Description), QStringLiteral("Link"));
    QCOMPARE(cell("a")->text(QAccessible::Description), QString());
    QCOMPARE(cell("d", 1)->text(QAccessible::Description), QString());
}

void TestAccessibleList::columnHeaders()
{
    const QStringList names{"Name", "Size", "Owner", "Modified"};
    for (int column = 0; column < 4; ++column) {
        QAccessibleInterface* header = accessible()->child(column + 1);
        QCOMPARE(header->text(QAccessible::Name), names.at(column));
        QCOMPARE(header->text(QAccessible::Description), QString());
        QCOMPARE(table()->columnDescription(column), names.at(column));
        QVERIFY(!header->state().invisible);
        QCOMPARE(header->tableCellInterface(), nullptr);
        const QRect shown(
            list()->horizontalHeader()->mapToGlobal(QPoint(list()->columnViewportPosition(column), 0)),
            QSize(list()->columnWidth(column), list()->horizontalHeader()->height()));
        QCOMPARE(header->rect(), shown);
        const auto headers = cell("a", column)->tableCellInterface()->columnHeaderCells();
        QCOMPARE(headers, QList<QAccessibleInterface*>({header}));
    }
}

void TestAccessibleList::rowHeadersAreHidden()
{
    QAccessibleInterface* header = accessible()->child(10);
    QCOMPARE(header->role(), QAccessible::RowHeader);
    QVERIFY(header->state().invisible);
    QVERIFY(header->rect().isEmpty());
    QCOMPARE(header->actionInterface(), nullptr);
    QCOMPARE(header->text(QAccessible::Name), QString());
    QCOMPARE(table()->rowDescription(1), QString());
    QVERIFY(cell("a")->tableCellInterface()->rowHeaderCells().isEmpty());
}

void TestAccessibleList::corner()
{
    QAccessibleInterface* corner = accessible()->child(0);
    QVERIFY(corner->state().invisible);
    QCOMPARE(corner->actionInterface(), nullptr);
    QCOMPARE(corner->text(QAccessible::Name), QString());
}

void TestAccessibleList::tableOfACell()
{
    const QAccessibleTableCellInterface* inTable = cell("b", 2)->tableCellInterface();
    QCOMPARE(inTable->rowIndex(), 3);
    QCOMPARE(inTable->columnIndex(), 2);
    QCOMPARE(inTable->rowExtent(), 1);
    QCOMPARE(inTable->columnExtent(), 1);
    QCOMPARE(inTable->table(), static_cast<QAccessibleInterface*>(accessible()));
}

void TestAccessibleList::cellsStayWhileRowsMove()
{
    QAccessibleInterface* a = cell("a", 1);
    QAccessibleInterface* b = cell("b", 1);
    panel->headerClicked(0); // descending
    QTRY_COMPARE(listNames(panel), QStringList({"b", "a", "d", ".."}));
    QVERIFY(a->isValid() && b->isValid());
    QCOMPARE(a->text(QAccessible::Name), QStringLiteral("4"));
    QCOMPARE(a->tableCellInterface()->rowIndex(), listIndex(panel, QStringLiteral("a")).row());
    QCOMPARE(b->tableCellInterface()->rowIndex(), listIndex(panel, QStringLiteral("b")).row());
    QCOMPARE(cell("a", 1), a);
    QCOMPARE(cell("b", 1), b);
    QCOMPARE(accessible()->indexOfChild(a), 5 * (a->tableCellInterface()->rowIndex() + 1) + 2);
    dir->folder(QStringLiteral("c")); // a row before them
    QTRY_COMPARE(table()->rowCount(), 5);
    QCOMPARE(cell("a", 1), a);
}

void TestAccessibleList::rowsThatGo()
{
    const QAccessible::Id gone = QAccessible::uniqueId(cell("a"));
    QAccessibleInterface* stays = cell("b");
    QVERIFY(QFile::remove(dir->path(QStringLiteral("a"))));
    QTRY_COMPARE(table()->rowCount(), 3);
    QCOMPARE(accessible()->childCount(), 20);
    QAccessibleInterface* before = QAccessible::accessibleInterface(gone);
    QVERIFY(before == nullptr || !before->isValid());
    if (before != nullptr) {
        QCOMPARE(before->text(QAccessible::Name), QString());
        QVERIFY(before->rect().isEmpty());
        QVERIFY(before->state().invalid);
        QCOMPARE(accessible()->indexOfChild(before), -1);
        QCOMPARE(before->tableCellInterface()->rowIndex(), -1);
        QCOMPARE(before->tableCellInterface()->columnIndex(), -1);
        QVERIFY(before->tableCellInterface()->columnHeaderCells().isEmpty());
        before->actionInterface()->doAction(QAccessibleActionInterface::pressAction()); // nothing
    }
    QCOMPARE(cell("b"), stays);
    QCOMPARE(accessible()->indexOfChild(stays), 16);
}

void TestAccessibleList::cellsOfManyRowsThatGoAreFreed()
{
    QStringList names;
    for (int i = 0; i < 400; ++i) {
        names.append(QStringLiteral("f%1").arg(i));
        dir->file(names.last());
    }
    QTRY_COMPARE(table()->rowCount(), 404);
    for (int row = 0; row < 404; ++row) {
        QVERIFY(table()->cellAt(row, 0) != nullptr);
    }
    QCOMPARE(accessible()->keptParts(), 404);
    for (const QString& name : qAsConst(names)) {
        QVERIFY(QFile::remove(dir->path(name)));
    }
    QTRY_COMPARE(table()->rowCount(), 4);
    QVERIFY2(accessible()->keptParts() < 404, qPrintable(QString::number(accessible()->keptParts())));
}

void TestAccessibleList::anotherFolder()
{
    for (int i = 0; i < accessible()->childCount(); ++i) {
        QVERIFY(accessible()->child(i) != nullptr);
    }
    QCOMPARE(accessible()->keptParts(), 25);
    dir->file(QStringLiteral("d/x"), "1");
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    QCOMPARE(accessible()->keptParts(), 0);
    QCOMPARE(table()->rowCount(), 2);
    QCOMPARE(table()->cellAt(1, 0)->text(QAccessible::Name), QStringLiteral("x"));
    QCOMPARE(accessible()->keptParts(), 1);
}

// A model may be freed on another thread: no index of it may be left.
void TestAccessibleList::anotherFolderWhileNobodyListens()
{
    QVERIFY(cell("a") != nullptr);
    QVERIFY(accessible()->child(1) != nullptr);
    QCOMPARE(accessible()->keptParts(), 2);
    setListening(false);
    panel->treeRowChanged(dir->path(QStringLiteral("d")));
    QCOMPARE(accessible()->keptParts(), 0);
}

void TestAccessibleList::folderThatVanishes()
{
    dir->file(QStringLiteral("d/x"), "1");
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    list()->setFocus();
    list()->selectRow(1);
    for (int i = 0; i < accessible()->childCount(); ++i) {
        QVERIFY(accessible()->child(i) != nullptr);
    }
    QVERIFY(QFile::remove(dir->path(QStringLiteral("d/x"))));
    QVERIFY(QDir().rmdir(dir->path(QStringLiteral("d"))));
    // All that is told is whole at any time.
    QTRY_VERIFY(([&] {
        for (int i = 0; i < accessible()->childCount(); ++i) {
            const QAccessibleInterface* part = accessible()->child(i);
            if (part == nullptr || !part->isValid()) {
                return false;
            }
        }
        return panel->currentPath == dir->path();
    }()));
    QVERIFY(waitForList(panel));
    QCOMPARE(table()->rowCount(), 3);
    QCOMPARE(cell("b")->text(QAccessible::Name), QStringLiteral("b"));
}

void TestAccessibleList::noFolderAtAll()
{
    panel->setTreeRoot(dir->path(QStringLiteral("nowhere")));
    QCOMPARE(table()->rowCount(), panel->listModel->rowCount(list()->rootIndex()));
    for (int i = 0; i < accessible()->childCount(); ++i) {
        QAccessibleInterface* part = accessible()->child(i);
        QVERIFY(part != nullptr && part->isValid());
        QCOMPARE(accessible()->indexOfChild(part), i);
    }
}

void TestAccessibleList::onlyWhatIsAskedForIsKept()
{
    for (int i = 0; i < 3000; ++i) {
        dir->file(QStringLiteral("d/%1").arg(i));
    }
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    QCOMPARE(table()->rowCount(), 3001);
    list()->selectAll();
    QCOMPARE(table()->selectedRowCount(), 3001);
    QVERIFY(table()->isColumnSelected(3));
    QVERIFY(table()->cellAt(3000, 3) != nullptr);
    // Besides that one: what Qt tells of the selection.
    QVERIFY2(accessible()->keptParts() <= 3, qPrintable(QString::number(accessible()->keptParts())));
}

void TestAccessibleList::namesAreNotSet()
{
    cell("a")->setText(QAccessible::Name, QStringLiteral("other"));
    QCOMPARE(cell("a")->text(QAccessible::Name), QStringLiteral("a"));
    QVERIFY(QFile::exists(dir->path(QStringLiteral("a"))));
}

void TestAccessibleList::survivesTheListing()
{
    const QAccessible::Id id = QAccessible::uniqueId(cell("a"));
    const QAccessible::Id whole = QAccessible::uniqueId(accessible());
    window.reset();
    QCOMPARE(QAccessible::accessibleInterface(id), nullptr);
    QCOMPARE(QAccessible::accessibleInterface(whole), nullptr);
}

VANTREL_TEST_MAIN(TestAccessibleList)
#include "tst_AccessibleList.moc"
