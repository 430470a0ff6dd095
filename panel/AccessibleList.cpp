#include "panel/AccessibleList.h"

#include "panel/MList.h"
#include "panel/SelectedRows.h"

#include <QHeaderView>

void AccessibleList::install()
{
    installFor<AccessibleList, MList>();
}

AccessibleList::AccessibleList(MList* owner)
    : AccessibleView(owner, QAccessible::Table)
{
}

MList* AccessibleList::list() const
{
    return static_cast<MList*>(parts().view());
}

QAccessible::State AccessibleList::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.multiSelectable = 1;
    state.extSelectable = 1;
    return state;
}

// --- Children: the cells row by row, with the headers above and beside them.

int AccessibleList::childCount() const
{
    return (rowCount() + 1) * (columnCount() + 1);
}

QAccessibleInterface* AccessibleList::child(int index) const
{
    if (list() == nullptr || index < 0 || index >= childCount()) {
        return nullptr;
    }
    const int row = index / (columnCount() + 1) - 1;
    const int column = index % (columnCount() + 1) - 1;
    if (row < 0) {
        return parts().header(Qt::Horizontal, column);
    }
    return column < 0 ? parts().header(Qt::Vertical, row) : cellAt(row, column);
}

QAccessibleInterface* AccessibleList::childAt(int x, int y) const
{
    if (list() == nullptr) {
        return nullptr;
    }
    const QHeaderView* header = list()->horizontalHeader();
    const QPoint inHeader = header->mapFromGlobal(QPoint(x, y));
    if (header->isVisible() && header->rect().contains(inHeader)) {
        const int section = header->logicalIndexAt(inHeader);
        return section < 0 ? nullptr : parts().header(Qt::Horizontal, section);
    }
    return parts().cellAt(QPoint(x, y));
}

// --- The table.

QModelIndex AccessibleList::rowIndex(int row) const
{
    return list() != nullptr ? list()->model()->index(row, 0, list()->rootIndex()) : QModelIndex();
}

QAccessibleInterface* AccessibleList::cellAt(int row, int column) const
{
    return list() != nullptr ? parts().cell(list()->model()->index(row, column, list()->rootIndex()))
                             : nullptr;
}

int AccessibleList::columnCount() const
{
    return parts().columns();
}

int AccessibleList::rowCount() const
{
    return list() != nullptr ? list()->model()->rowCount(list()->rootIndex()) : 0;
}

QString AccessibleList::columnDescription(int column) const
{
    return list() != nullptr ? list()->model()->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString()
                             : QString();
}

// --- Selection: of whole rows, as in the window.

QList<int> AccessibleList::selectedRows() const
{
    QList<int> rows;
    if (list() != nullptr) {
        forEachSelectedRow(list(), [&](const QModelIndex& row) { rows.append(row.row()); });
    }
    return rows;
}

int AccessibleList::selectedRowCount() const
{
    int count = 0;
    if (list() != nullptr) {
        const QItemSelection selection = list()->selectionModel()->selection();
        for (const QItemSelectionRange& range : selection) {
            count += range.height();
        }
    }
    return count;
}

int AccessibleList::selectedCellCount() const
{
    return selectedRowCount() * columnCount();
}

QList<QAccessibleInterface*> AccessibleList::selectedCells() const
{
    QList<QAccessibleInterface*> cells;
    const QList<int> rows = selectedRows();
    for (const int row : rows) {
        for (int column = 0; column < columnCount(); ++column) {
            cells.append(cellAt(row, column));
        }
    }
    return cells;
}

int AccessibleList::selectedColumnCount() const
{
    return selectedColumns().size();
}

QList<int> AccessibleList::selectedColumns() const
{
    QList<int> columns;
    for (int column = 0; column < columnCount() && isColumnSelected(column); ++column) {
        columns.append(column);
    }
    return columns;
}

bool AccessibleList::isColumnSelected(int column) const
{
    return column >= 0 && column < columnCount() && rowCount() > 0 && selectedRowCount() == rowCount();
}

bool AccessibleList::isRowSelected(int row) const
{
    const QModelIndex index = rowIndex(row);
    return index.isValid() && list()->selectionModel()->isSelected(index);
}

bool AccessibleList::select(int row, bool on)
{
    const QModelIndex index = rowIndex(row);
    if (!index.isValid()) {
        return false;
    }
    list()->selectionModel()->select(index,
        (on ? QItemSelectionModel::Select : QItemSelectionModel::Deselect) | QItemSelectionModel::Rows);
    return true;
}

bool AccessibleList::selectRow(int row)
{
    return select(row, true);
}

bool AccessibleList::unselectRow(int row)
{
    return select(row, false);
}

bool AccessibleList::selectColumn(int /*column*/)
{
    return false;
}

bool AccessibleList::unselectColumn(int /*column*/)
{
    return false;
}
