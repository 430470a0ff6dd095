#include "panel/SelectedRows.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QStandardItemModel>
#include <QTableView>
#include <QTreeView>

namespace {

QModelIndexList walkedRows(const QAbstractItemView* view)
{
    QModelIndexList rows;
    forEachSelectedRow(view, [&rows](const QModelIndex& index) { rows.append(index); });
    return rows;
}

using Flags = QItemSelectionModel::SelectionFlags;
const Flags selectRows = QItemSelectionModel::Select | QItemSelectionModel::Rows;
const Flags toggleRows = QItemSelectionModel::Toggle | QItemSelectionModel::Rows;
const Flags deselectRows = QItemSelectionModel::Deselect | QItemSelectionModel::Rows;
const Flags onlyRows = QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;

} // namespace

class TestSelectedRows : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void nothingSelected();
    void oneRow();
    void allRows();
    void orderOfSelection();
    void selectionInTwoSteps();
    void singleCellsAreNoRow();
    void random_data();
    void random();
    void rowsBelowAParent();
    void alternateRowsOfABigModelAreFast();

private:
    QStandardItemModel model{60, 4};
    QTableView view;
};

void TestSelectedRows::init()
{
    view.setSelectionBehavior(QAbstractItemView::SelectRows);
    view.setSelectionMode(QAbstractItemView::ExtendedSelection);
    view.setModel(&model);
    view.clearSelection();
}

void TestSelectedRows::nothingSelected()
{
    QVERIFY(walkedRows(&view).isEmpty());
}

void TestSelectedRows::oneRow()
{
    view.selectRow(7);
    QCOMPARE(walkedRows(&view), QModelIndexList{model.index(7, 0)});
}

void TestSelectedRows::allRows()
{
    view.selectAll();
    QCOMPARE(walkedRows(&view).size(), 60);
    QCOMPARE(walkedRows(&view), view.selectionModel()->selectedRows());
}

void TestSelectedRows::orderOfSelection()
{
    for (const int row : {9, 3, 30, 4}) {
        view.selectionModel()->select(model.index(row, 0), selectRows);
    }
    QCOMPARE(walkedRows(&view),
        (QModelIndexList{model.index(9, 0), model.index(3, 0), model.index(30, 0), model.index(4, 0)}));
    QCOMPARE(walkedRows(&view), view.selectionModel()->selectedRows());
}

void TestSelectedRows::selectionInTwoSteps()
{
    view.selectionModel()->select(QItemSelection(model.index(5, 0), model.index(15, 3)), selectRows);
    view.selectionModel()->select(model.index(10, 2), deselectRows);
    QCOMPARE(walkedRows(&view).size(), 10);
    QCOMPARE(walkedRows(&view), view.selectionModel()->selectedRows());
}

void TestSelectedRows::singleCellsAreNoRow()
{
    view.selectionModel()->select(model.index(5, 0), QItemSelectionModel::Select);
    view.selectionModel()->select(model.index(6, 2), QItemSelectionModel::Select);
    QVERIFY(walkedRows(&view).isEmpty());
    QCOMPARE(walkedRows(&view), view.selectionModel()->selectedRows());
}

void TestSelectedRows::random_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 40; ++seed) {
        QTest::newRow(("seed " + QByteArray::number(seed)).constData()) << seed;
    }
}

void TestSelectedRows::random()
{
    QFETCH(quint32, seed);
    QRandomGenerator numbers(seed);
    const Flags commands[] = {selectRows, toggleRows, deselectRows, selectRows, toggleRows, onlyRows};
    for (int step = 0; step < 60; ++step) {
        const int one = numbers.bounded(60);
        const int other = numbers.bounded(4) == 0 ? numbers.bounded(60) : qMin(59, one + numbers.bounded(4));
        const QItemSelection rows(model.index(qMin(one, other), 0), model.index(qMax(one, other), 3));
        view.selectionModel()->select(rows, commands[numbers.bounded(step % 20 == 19 ? 6 : 5)]);
        QCOMPARE(walkedRows(&view), view.selectionModel()->selectedRows());
    }
}

void TestSelectedRows::rowsBelowAParent()
{
    QStandardItemModel tree;
    for (const char* name : {"one", "two"}) {
        auto* item = new QStandardItem(QLatin1String(name)); // the model's from now on
        item->appendRow({new QStandardItem(QStringLiteral("a")), new QStandardItem(QStringLiteral("b"))});
        item->appendRow({new QStandardItem(QStringLiteral("c")), new QStandardItem(QStringLiteral("d"))});
        tree.appendRow({item, new QStandardItem(QStringLiteral("second"))});
    }
    QTreeView treeView;
    treeView.setModel(&tree);
    const QModelIndex parent = tree.index(1, 0);
    for (const QModelIndex& index : {tree.index(1, 0, parent), tree.index(0, 0), tree.index(0, 0, parent)}) {
        treeView.selectionModel()->select(index, selectRows);
    }
    QCOMPARE(walkedRows(&treeView).size(), 3);
    QCOMPARE(walkedRows(&treeView), treeView.selectionModel()->selectedRows());
}

// The selection model's own function takes half a minute for this.
void TestSelectedRows::alternateRowsOfABigModelAreFast()
{
    constexpr int rows = 40000;
    QStandardItemModel big(rows, 2);
    QTableView bigView;
    bigView.setSelectionBehavior(QAbstractItemView::SelectRows);
    bigView.setModel(&big);
    QItemSelection alternate;
    for (int row = 0; row < rows; row += 2) {
        alternate.append(QItemSelectionRange(big.index(row, 0), big.index(row, 1)));
    }
    bigView.selectionModel()->select(alternate, QItemSelectionModel::Select);
    QElapsedTimer clock;
    clock.start();
    const QModelIndexList walked = walkedRows(&bigView);
    QVERIFY2(clock.elapsed() < 1000, QByteArray::number(clock.elapsed()).constData());
    QCOMPARE(walked.size(), rows / 2);
    QCOMPARE(walked.at(17).row(), 34);
}

VANTREL_TEST_MAIN(TestSelectedRows)
#include "tst_SelectedRows.moc"
