#include "panel/AccessibleList.h"

#include "panel/AccessibleParts.h"
#include "panel/MList.h"
#include "panel/SelectedRows.h"

#include <QHeaderView>

namespace {

QAccessibleInterface* makeForList(const QString& className, QObject* object)
{
    auto* list = className == QLatin1String("MList") ? qobject_cast<MList*>(object) : nullptr;
    return list != nullptr ? new AccessibleList(list) : nullptr; // owned by Qt's cache
}

} // namespace

void AccessibleList::install()
{
    QAccessible::installFactory(makeForList);
}

AccessibleList::AccessibleList(MList* owner)
    : QAccessibleWidget(owner, QAccessible::Table)
    , m_parts(std::make_unique<AccessibleParts>(owner))
{
}

AccessibleList::~AccessibleList() = default;

MList* AccessibleList::list() const
{
    return static_cast<MList*>(m_parts->view());
}

int AccessibleList::keptParts() const
{
    return m_parts->count();
}

void* AccessibleList::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                               : QAccessibleWidget::interface_cast(type);
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
        return m_parts->header(Qt::Horizontal, column);
    }
    return column < 0 ? m_parts->header(Qt::Vertical, row) : cellAt(row, column);
}

int AccessibleList::indexOfChild(const QAccessibleInterface* part) const
{
    return AccessibleParts::indexOf(part, this);
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
        return section < 0 ? nullptr : m_parts->header(Qt::Horizontal, section);
    }
    return m_parts->cellAt(QPoint(x, y));
}

QAccessibleInterface* AccessibleList::focusChild() const
{
    return m_parts->focusedCell();
}

// --- The table.

QModelIndex AccessibleList::rowIndex(int row) const
{
    return list() != nullptr ? list()->model()->index(row, 0, list()->rootIndex()) : QModelIndex();
}

QAccessibleInterface* AccessibleList::cellAt(int row, int column) const
{
    return list() != nullptr ? m_parts->cell(list()->model()->index(row, column, list()->rootIndex()))
                             : nullptr;
}

QAccessibleInterface* AccessibleList::caption() const
{
    return nullptr;
}

QAccessibleInterface* AccessibleList::summary() const
{
    return nullptr;
}

int AccessibleList::columnCount() const
{
    return m_parts->columns();
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

QString AccessibleList::rowDescription(int /*row*/) const
{
    return QString(); // rows have no header to be seen
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

void AccessibleList::modelChange(QAccessibleTableModelChangeEvent* event)
{
    m_parts->modelChanged(event);
}
