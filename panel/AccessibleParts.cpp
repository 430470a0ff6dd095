#include "panel/AccessibleParts.h"

#include "panel/AccessibleCell.h"
#include "panel/AccessibleFolder.h"
#include "panel/AccessibleSection.h"
#include "panel/MTree.h"

#include <QApplication>

namespace {

/// Cells that may belong to rows that are gone before all are looked through; more where more are kept.
constexpr int goneAtOnce = 256;

} // namespace

AccessibleParts::AccessibleParts(QAbstractItemView* owner)
    : m_view(owner)
    , m_owner(owner)
    , m_isTree(qobject_cast<MTree*>(owner) != nullptr)
{
    connect(qApp, SIGNAL(focusChanged(QWidget*, QWidget*)), this, SLOT(focusMoved(QWidget*, QWidget*)));
}

AccessibleParts::~AccessibleParts()
{
    clear();
}

QAbstractItemView* AccessibleParts::view() const
{
    return m_view;
}

/// A model may be freed on another thread, which must not meet indexes of this one: all parts go as soon as
/// the view's old selection model does, which is before.
void AccessibleParts::followModel()
{
    QObject* selectionModel = m_view->selectionModel();
    if (m_selectionModel == selectionModel) {
        return;
    }
    clear();
    m_selectionModel = selectionModel;
    connect(selectionModel, SIGNAL(destroyed(QObject*)), this, SLOT(clear()));
    if (m_isTree) {
        followTree();
    }
}

void AccessibleParts::followTree()
{
    connect(
        m_view, SIGNAL(expanded(const QModelIndex&)), this, SLOT(forgetShownRows()), Qt::UniqueConnection);
    connect(
        m_view, SIGNAL(collapsed(const QModelIndex&)), this, SLOT(forgetShownRows()), Qt::UniqueConnection);
    const QAbstractItemModel* model = m_view->model();
    connect(model, SIGNAL(rowsInserted(const QModelIndex&, int, int)), this, SLOT(forgetShownRows()));
    connect(model, SIGNAL(rowsRemoved(const QModelIndex&, int, int)), this, SLOT(forgetShownRows()));
    connect(model, SIGNAL(layoutChanged()), this, SLOT(forgetShownRows()));
    connect(model, SIGNAL(modelReset()), this, SLOT(forgetShownRows()));
}

bool AccessibleParts::has(const QModelIndex& index) const
{
    return m_view != nullptr && index.isValid() && index.model() == m_view->model()
        && (m_isTree ? index.column() == 0 : index.parent() == m_view->rootIndex());
}

QAccessibleInterface* AccessibleParts::cell(const QModelIndex& index)
{
    if (!has(index)) {
        return nullptr;
    }
    followModel();
    QAccessible::Id& id = m_cells[index];
    if (id == 0) {
        QAccessibleInterface* item = m_isTree
            ? static_cast<QAccessibleInterface*>(new AccessibleFolder(this, index))
            : new AccessibleCell(this, index);
        id = QAccessible::registerAccessibleInterface(item); // owned by Qt's cache
    }
    return QAccessible::accessibleInterface(id);
}

QAccessibleInterface* AccessibleParts::cellAt(const QPoint& onScreen)
{
    const QAbstractItemView* view = m_view;
    if (view == nullptr) {
        return nullptr;
    }
    const QPoint inViewport = view->viewport()->mapFromGlobal(onScreen);
    const bool isInside = view->viewport()->rect().contains(inViewport);
    return isInside ? cell(view->indexAt(inViewport)) : nullptr;
}

QAccessibleInterface* AccessibleParts::focusedCell()
{
    return m_view != nullptr && m_view->hasFocus() ? cell(m_view->currentIndex()) : nullptr;
}

// --- Rows and numbers.

int AccessibleParts::columns() const
{
    return m_view != nullptr ? m_view->model()->columnCount(m_view->rootIndex()) : 0;
}

void AccessibleParts::addShownRows(const QModelIndex& parent)
{
    const auto* tree = static_cast<const QTreeView*>(m_view.data());
    const int count = tree->model()->rowCount(parent);
    for (int row = 0; row < count; ++row) {
        const QModelIndex index = tree->model()->index(row, 0, parent);
        m_shownRows.append(index);
        if (tree->isExpanded(index)) {
            addShownRows(index);
        }
    }
}

const QVector<QPersistentModelIndex>& AccessibleParts::shownRows()
{
    if (m_isTree && m_view != nullptr) {
        followModel();
        if (m_shownRows.isEmpty()) {
            addShownRows(m_view->rootIndex());
        }
    }
    return m_shownRows;
}

void AccessibleParts::forgetShownRows()
{
    m_shownRows.clear();
}

int AccessibleParts::rowOf(const QModelIndex& index)
{
    if (!has(index)) {
        return -1;
    }
    return m_isTree ? shownRows().indexOf(index) : index.row();
}

int AccessibleParts::placeInTable(int row, int column) const
{
    return (row + 1) * (columns() + 1) + column + 1;
}

int AccessibleParts::placeOf(const QModelIndex& index)
{
    const int row = rowOf(index);
    if (row < 0) {
        return -1;
    }
    return m_isTree ? (row + 1) * columns() : placeInTable(row, index.column());
}

int AccessibleParts::indexOf(const QAccessibleInterface* part, const QAccessibleInterface* whole)
{
    const auto* ours = dynamic_cast<const AccessiblePart*>(part);
    return ours != nullptr && ours->isValid() && ours->parent() == whole ? ours->place() : -1;
}

// --- Parts that come and go.

QAccessibleInterface* AccessibleParts::header(Qt::Orientation orientation, int section)
{
    if (m_view == nullptr || !AccessibleSection::exists(m_view, orientation, section)) {
        return nullptr;
    }
    followModel();
    QAccessible::Id& id = m_sections[orientation == Qt::Horizontal ? 0 : 1][section];
    if (id == 0) {
        auto* part = new AccessibleSection(this, orientation, section); // owned by Qt's cache
        id = QAccessible::registerAccessibleInterface(part);
    }
    return QAccessible::accessibleInterface(id);
}

int AccessibleParts::count() const
{
    return m_cells.size() + m_sections[0].size() + m_sections[1].size();
}

void AccessibleParts::clear()
{
    // Taken out first: what is told that a part goes may ask for another one.
    const QList<QAccessible::Id> cells = m_cells.values();
    m_cells.clear();
    for (const QAccessible::Id id : cells) {
        QAccessible::deleteAccessibleInterface(id);
    }
    for (auto& sections : m_sections) {
        const auto gone = std::exchange(sections, {});
        for (const QAccessible::Id id : gone) {
            QAccessible::deleteAccessibleInterface(id);
        }
    }
    m_shownRows.clear();
    m_rowsGone = 0;
}

void AccessibleParts::modelChanged(const QAccessibleTableModelChangeEvent* event)
{
    if (event->modelChangeType() == QAccessibleTableModelChangeEvent::ModelReset) {
        dropGone(); // sent for a new order, too, where all cells stay
    } else if (event->modelChangeType() == QAccessibleTableModelChangeEvent::RowsRemoved) {
        m_rowsGone += event->lastRow() - event->firstRow() + 1;
        if (m_rowsGone > goneAtOnce + m_cells.size() / 8) {
            dropGone();
        }
    }
}

void AccessibleParts::dropGone()
{
    m_rowsGone = 0;
    for (auto it = m_cells.begin(); it != m_cells.end();) {
        if (m_view != nullptr && it.key().isValid() && it.key().model() == m_view->model()) {
            ++it;
            continue;
        }
        const QAccessible::Id id = it.value();
        it = m_cells.erase(it);
        QAccessible::deleteAccessibleInterface(id);
    }
}

/// Qt tells that the view has got the focus, and nothing of its current item.
void AccessibleParts::focusMoved(QWidget* /*before*/, QWidget* now)
{
    if (now != nullptr && now == m_owner && QAccessible::isActive()) {
        QMetaObject::invokeMethod(this, "tellCurrentCell", Qt::QueuedConnection);
    }
}

void AccessibleParts::tellCurrentCell()
{
    if (focusedCell() == nullptr) {
        return;
    }
    QAccessibleEvent event(m_view, QAccessible::Focus);
    event.setChild(placeOf(m_view->currentIndex()));
    QAccessible::updateAccessibility(&event);
}
