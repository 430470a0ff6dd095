#include "panel/AccessibleCell.h"

#include "panel/AccessibleParts.h"
#include "panel/MList.h"
#include "panel/myFileSystemModel.h"

#include <QItemSelectionModel>

AccessibleCell::AccessibleCell(AccessibleParts* siblings, const QModelIndex& index)
    : AccessibleListPart(siblings)
    , m_index(index)
{
}

bool AccessibleCell::isValid() const
{
    return AccessibleListPart::isValid() && m_index.isValid() && m_index.model() == list()->model()
        && m_index.parent() == list()->rootIndex();
}

int AccessibleCell::place() const
{
    return isValid() ? placeOf(list(), m_index.row(), m_index.column()) : -1;
}

void* AccessibleCell::interface_cast(QAccessible::InterfaceType type)
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

QAccessible::Role AccessibleCell::role() const
{
    return QAccessible::Cell;
}

QAccessible::State AccessibleCell::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = 1;
        return state;
    }
    const bool isCurrent = list()->currentIndex() == m_index;
    const QRect seen = list()->visualRect(m_index) & list()->viewport()->rect();
    state.selectable = 1;
    state.focusable = 1;
    state.multiSelectable = 1;
    state.selected = isSelected() ? 1 : 0;
    state.active = isCurrent ? 1 : 0;
    state.focused = isCurrent && list()->hasFocus() ? 1 : 0;
    state.offscreen = seen.isEmpty() ? 1 : 0;
    state.invisible = list()->isVisible() ? 0 : 1;
    return state;
}

QString AccessibleCell::text(QAccessible::Text kind) const
{
    if (!isValid()) {
        return QString();
    }
    if (kind == QAccessible::Name) {
        return m_index.data(Qt::DisplayRole).toString();
    }
    if (kind == QAccessible::Description && m_index.column() == 0) {
        // What the icon shows.
        const auto* model = static_cast<const myFileSystemModel*>(m_index.model());
        if (model->fileInfo(m_index).isSymLink()) {
            return QStringLiteral("Link");
        }
        return model->isDir(m_index) ? QStringLiteral("Folder") : QString();
    }
    return QString();
}

QRect AccessibleCell::rect() const
{
    if (!isValid()) {
        return QRect();
    }
    const QRect place = list()->visualRect(m_index);
    return onScreen(place.translated(list()->viewport()->pos()));
}

bool AccessibleCell::isSelected() const
{
    return isValid() && list()->selectionModel()->isSelected(m_index);
}

QList<QAccessibleInterface*> AccessibleCell::columnHeaderCells() const
{
    QAccessibleInterface* header = isValid() ? parts()->header(Qt::Horizontal, m_index.column()) : nullptr;
    return header != nullptr ? QList<QAccessibleInterface*>{header} : QList<QAccessibleInterface*>();
}

QList<QAccessibleInterface*> AccessibleCell::rowHeaderCells() const
{
    return {}; // rows have no header to be seen
}

int AccessibleCell::columnIndex() const
{
    return isValid() ? m_index.column() : -1;
}

int AccessibleCell::rowIndex() const
{
    return isValid() ? m_index.row() : -1;
}

int AccessibleCell::columnExtent() const
{
    return 1;
}

int AccessibleCell::rowExtent() const
{
    return 1;
}

QAccessibleInterface* AccessibleCell::table() const
{
    return parent();
}

QStringList AccessibleCell::actionNames() const
{
    return {pressAction(), toggleAction(), showMenuAction(), setFocusAction()};
}

void AccessibleCell::doAction(const QString& actionName)
{
    if (!isValid()) {
        return;
    }
    if (actionName == toggleAction()) {
        toggle();
    } else if (actionName == setFocusAction()) {
        makeCurrent();
    } else if (actionName == pressAction()) {
        makeCurrentAndSelected();
        QMetaObject::invokeMethod(list(), "openCurrent", Qt::QueuedConnection);
    } else if (actionName == showMenuAction()) {
        makeCurrentAndSelected();
        QMetaObject::invokeMethod(list(), "showMenuOfCurrent", Qt::QueuedConnection);
    }
}

QStringList AccessibleCell::keyBindingsForAction(const QString& /*actionName*/) const
{
    return {};
}

void AccessibleCell::toggle()
{
    list()->selectionModel()->select(m_index, QItemSelectionModel::Toggle | QItemSelectionModel::Rows);
}

void AccessibleCell::makeCurrent()
{
    list()->setFocus(Qt::OtherFocusReason);
    list()->selectionModel()->setCurrentIndex(m_index, QItemSelectionModel::NoUpdate);
}

/// As a click does: what is selected already stays so.
void AccessibleCell::makeCurrentAndSelected()
{
    makeCurrent();
    if (!isSelected()) {
        list()->selectionModel()->select(
            m_index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
}
