#include "panel/AccessibleParts.h"

#include "panel/AccessibleCell.h"
#include "panel/AccessibleSection.h"
#include "panel/MList.h"

#include <QApplication>

namespace {

/// Cells that may belong to rows that are gone before all are looked through; more where more are kept.
constexpr int goneAtOnce = 256;

} // namespace

AccessibleParts::AccessibleParts(MList* owner)
    : m_list(owner)
    , m_owner(owner)
{
    connect(qApp, SIGNAL(focusChanged(QWidget*, QWidget*)), this, SLOT(focusMoved(QWidget*, QWidget*)));
}

AccessibleParts::~AccessibleParts()
{
    clear();
}

MList* AccessibleParts::list() const
{
    return m_list;
}

/// A model may be freed on another thread, which must not meet indexes of this one: all parts go as soon as
/// the listing's old selection model does, which is before.
void AccessibleParts::followModel()
{
    QObject* selectionModel = m_list->selectionModel();
    if (m_selectionModel != selectionModel) {
        clear();
        m_selectionModel = selectionModel;
        connect(selectionModel, SIGNAL(destroyed(QObject*)), this, SLOT(clear()));
    }
}

QAccessibleInterface* AccessibleParts::cell(const QModelIndex& index)
{
    if (m_list == nullptr || !index.isValid() || index.model() != m_list->model()
        || index.parent() != m_list->rootIndex()) {
        return nullptr;
    }
    followModel();
    QAccessible::Id& id = m_cells[index];
    if (id == 0) {
        id = QAccessible::registerAccessibleInterface(new AccessibleCell(this, index)); // owned by Qt's cache
    }
    return QAccessible::accessibleInterface(id);
}

QAccessibleInterface* AccessibleParts::header(Qt::Orientation orientation, int section)
{
    if (m_list == nullptr || !AccessibleSection::exists(m_list, orientation, section)) {
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
    m_rowsGone = 0;
}

void AccessibleParts::rowsGone(int count)
{
    m_rowsGone += count;
    if (m_rowsGone > goneAtOnce + m_cells.size() / 8) {
        dropGone();
    }
}

void AccessibleParts::dropGone()
{
    m_rowsGone = 0;
    for (auto it = m_cells.begin(); it != m_cells.end();) {
        if (m_list != nullptr && it.key().isValid() && it.key().model() == m_list->model()) {
            ++it;
            continue;
        }
        const QAccessible::Id id = it.value();
        it = m_cells.erase(it);
        QAccessible::deleteAccessibleInterface(id);
    }
}

/// Qt tells that the listing has got the focus, and nothing of its current cell.
void AccessibleParts::focusMoved(QWidget* /*before*/, QWidget* now)
{
    if (now != nullptr && now == m_owner && QAccessible::isActive()) {
        QMetaObject::invokeMethod(this, "tellCurrentCell", Qt::QueuedConnection);
    }
}

void AccessibleParts::tellCurrentCell()
{
    if (m_list == nullptr || !m_list->hasFocus() || cell(m_list->currentIndex()) == nullptr) {
        return;
    }
    const QModelIndex current = m_list->currentIndex();
    QAccessibleEvent event(m_list, QAccessible::Focus);
    event.setChild(AccessibleListPart::placeOf(m_list, current.row(), current.column()));
    QAccessible::updateAccessibility(&event);
}
