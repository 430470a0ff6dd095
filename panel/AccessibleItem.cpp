#include "panel/AccessibleItem.h"

#include "panel/AccessibleParts.h"

#include <QAbstractItemView>
#include <QItemSelectionModel>

AccessibleItem::AccessibleItem(AccessibleParts* siblings, const QModelIndex& index)
    : AccessiblePart(siblings)
    , m_index(index)
{
}

bool AccessibleItem::isValid() const
{
    return parts()->has(m_index);
}

int AccessibleItem::place() const
{
    return parts()->placeOf(m_index);
}

void* AccessibleItem::interface_cast(QAccessible::InterfaceType type)
{
    switch (type) {
    case QAccessible::TableCellInterface:
        return static_cast<QAccessibleTableCellInterface*>(this);
    case QAccessible::ActionInterface:
        return static_cast<QAccessibleActionInterface*>(this);
    default:
        return nullptr;
    }
}

QAccessible::State AccessibleItem::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = 1;
        return state;
    }
    const bool isCurrent = view()->currentIndex() == m_index;
    const QRect seen = view()->visualRect(m_index) & view()->viewport()->rect();
    state.selectable = 1;
    state.focusable = 1;
    state.selected = isSelected() ? 1 : 0;
    state.active = isCurrent ? 1 : 0;
    state.focused = isCurrent && view()->hasFocus() ? 1 : 0;
    state.offscreen = seen.isEmpty() ? 1 : 0;
    state.invisible = view()->isVisible() ? 0 : 1;
    return state;
}

QString AccessibleItem::text(QAccessible::Text kind) const
{
    return isValid() && kind == QAccessible::Name ? m_index.data(Qt::DisplayRole).toString() : QString();
}

QRect AccessibleItem::rect() const
{
    if (!isValid()) {
        return QRect();
    }
    const QRect place = view()->visualRect(m_index);
    return onScreen(place.translated(view()->viewport()->pos()));
}

bool AccessibleItem::isSelected() const
{
    return isValid() && view()->selectionModel()->isSelected(m_index);
}

QList<QAccessibleInterface*> AccessibleItem::columnHeaderCells() const
{
    return {};
}

QList<QAccessibleInterface*> AccessibleItem::rowHeaderCells() const
{
    return {}; // rows have no header to be seen
}

int AccessibleItem::columnIndex() const
{
    return isValid() ? m_index.column() : -1;
}

int AccessibleItem::rowIndex() const
{
    return parts()->rowOf(m_index);
}

int AccessibleItem::columnExtent() const
{
    return 1;
}

int AccessibleItem::rowExtent() const
{
    return 1;
}

QAccessibleInterface* AccessibleItem::table() const
{
    return parent();
}

QStringList AccessibleItem::actionNames() const
{
    return {pressAction(), toggleAction(), showMenuAction(), setFocusAction()};
}

void AccessibleItem::doAction(const QString& actionName)
{
    if (!isValid()) {
        return;
    }
    if (actionName == toggleAction()) {
        toggle();
    } else if (actionName == setFocusAction()) {
        makeCurrent();
    } else if (actionName == pressAction()) {
        chooseAndRun(pressSlot());
    } else if (actionName == showMenuAction()) {
        chooseAndRun("showMenuOfCurrent");
    }
}

QStringList AccessibleItem::keyBindingsForAction(const QString& /*actionName*/) const
{
    return {};
}

/// The order is right: what is queued comes last, and this may be gone when it has been chosen.
void AccessibleItem::chooseAndRun(const char* slot)
{
    if (slot != nullptr) {
        QMetaObject::invokeMethod(view(), slot, Qt::QueuedConnection);
    }
    choose();
}
