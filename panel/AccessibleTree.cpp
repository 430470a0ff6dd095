#include "panel/AccessibleTree.h"

#include "panel/AccessibleParts.h"
#include "panel/MTree.h"

namespace {

QAccessibleInterface* makeForTree(const QString& className, QObject* object)
{
    auto* tree = className == QLatin1String("MTree") ? qobject_cast<MTree*>(object) : nullptr;
    return tree != nullptr ? new AccessibleTree(tree) : nullptr; // owned by Qt's cache
}

} // namespace

void AccessibleTree::install()
{
    QAccessible::installFactory(makeForTree);
}

AccessibleTree::AccessibleTree(MTree* owner)
    : QAccessibleWidget(owner, QAccessible::Tree)
    , m_parts(std::make_unique<AccessibleParts>(owner))
{
}

AccessibleTree::~AccessibleTree() = default;

int AccessibleTree::keptParts() const
{
    return m_parts->count();
}

void* AccessibleTree::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                               : QAccessibleWidget::interface_cast(type);
}

int AccessibleTree::rowCount() const
{
    return m_parts->shownRows().size();
}

QAccessibleInterface* AccessibleTree::cellAt(int row, int column) const
{
    return column == 0 ? m_parts->cell(m_parts->shownRows().value(row)) : nullptr;
}

int AccessibleTree::childCount() const
{
    return m_parts->view() != nullptr ? (rowCount() + 1) * m_parts->columns() : 0;
}

QAccessibleInterface* AccessibleTree::child(int index) const
{
    if (index < 0 || index >= childCount()) {
        return nullptr;
    }
    return cellAt(index / m_parts->columns() - 1, index % m_parts->columns());
}

int AccessibleTree::indexOfChild(const QAccessibleInterface* part) const
{
    return m_parts->indexOf(part, this);
}

QAccessibleInterface* AccessibleTree::childAt(int x, int y) const
{
    return m_parts->cellAt(QPoint(x, y));
}

QAccessibleInterface* AccessibleTree::focusChild() const
{
    return m_parts->focusedCell();
}

QString AccessibleTree::columnDescription(int /*column*/) const
{
    return QString(); // the header is hidden
}

QString AccessibleTree::rowDescription(int /*row*/) const
{
    return QString();
}

// --- Selection: of one folder, or of none.

QList<int> AccessibleTree::selectedRows() const
{
    const QAbstractItemView* view = m_parts->view();
    const QModelIndexList selected
        = view != nullptr ? view->selectionModel()->selectedRows() : QModelIndexList();
    const int row = selected.isEmpty() ? -1 : m_parts->rowOf(selected.constFirst());
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

void AccessibleTree::modelChange(QAccessibleTableModelChangeEvent* event)
{
    m_parts->modelChanged(event);
}
