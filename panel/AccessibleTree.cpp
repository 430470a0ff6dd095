#include "panel/AccessibleTree.h"

#include "panel/MTree.h"

void AccessibleTree::install()
{
    installFor<AccessibleTree, MTree>();
}

AccessibleTree::AccessibleTree(MTree* owner)
    : AccessibleView(owner, QAccessible::Tree)
{
}

int AccessibleTree::rowCount() const
{
    return parts().shownRows().size();
}

QAccessibleInterface* AccessibleTree::cellAt(int row, int column) const
{
    return column == 0 ? parts().cell(parts().shownRows().value(row)) : nullptr;
}

int AccessibleTree::childCount() const
{
    return parts().view() != nullptr ? (rowCount() + 1) * parts().columns() : 0;
}

QAccessibleInterface* AccessibleTree::child(int index) const
{
    if (index < 0 || index >= childCount()) {
        return nullptr;
    }
    return cellAt(index / parts().columns() - 1, index % parts().columns());
}

QAccessibleInterface* AccessibleTree::childAt(int x, int y) const
{
    return parts().cellAt(QPoint(x, y));
}

QString AccessibleTree::columnDescription(int /*column*/) const
{
    return QString(); // the header is hidden
}

// --- Selection: of one folder, or of none.

QList<int> AccessibleTree::selectedRows() const
{
    const QAbstractItemView* view = parts().view();
    const QModelIndexList selected
        = view != nullptr ? view->selectionModel()->selectedRows() : QModelIndexList();
    const int row = selected.isEmpty() ? -1 : parts().rowOf(selected.constFirst());
    return row >= 0 ? QList<int>{row} : QList<int>();
}

QList<QAccessibleInterface*> AccessibleTree::selectedCells() const
{
    QList<QAccessibleInterface*> cells;
    const QList<int> rows = selectedRows();
    for (const int row : rows) {
        cells.append(cellAt(row, 0));
    }
    return cells;
}

bool AccessibleTree::isRowSelected(int row) const
{
    return selectedRows().contains(row);
}

bool AccessibleTree::selectRow(int row)
{
    QAccessibleInterface* folder = cellAt(row, 0);
    if (folder != nullptr) {
        folder->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    }
    return folder != nullptr;
}
