#include "panel/AccessibleSection.h"

#include "panel/AccessibleParts.h"
#include "panel/MList.h"

#include <QHeaderView>

AccessibleSection::AccessibleSection(AccessibleParts* siblings, Qt::Orientation orientation, int section)
    : AccessiblePart(siblings)
    , m_orientation(orientation)
    , m_section(section)
{
}

bool AccessibleSection::exists(const QAbstractItemView* list, Qt::Orientation orientation, int section)
{
    const QModelIndex root = list->rootIndex();
    const int count
        = orientation == Qt::Horizontal ? list->model()->columnCount(root) : list->model()->rowCount(root);
    return section >= -1 && section < count;
}

bool AccessibleSection::isValid() const
{
    return AccessiblePart::isValid() && exists(view(), m_orientation, m_section);
}

int AccessibleSection::place() const
{
    if (!isValid()) {
        return -1;
    }
    return isColumn() ? parts()->placeInTable(-1, m_section) : parts()->placeInTable(m_section, -1);
}

void* AccessibleSection::interface_cast(QAccessible::InterfaceType type)
{
    const bool acts = type == QAccessible::ActionInterface && isColumn();
    return acts ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
}

QAccessible::Role AccessibleSection::role() const
{
    if (m_section < 0) {
        return QAccessible::Pane;
    }
    return isColumn() ? QAccessible::ColumnHeader : QAccessible::RowHeader;
}

QAccessible::State AccessibleSection::state() const
{
    QAccessible::State state;
    state.invalid = isValid() ? 0 : 1;
    state.invisible = isValid() && isColumn() && view()->isVisible() ? 0 : 1;
    return state;
}

QString AccessibleSection::text(QAccessible::Text kind) const
{
    return kind == QAccessible::Name && isValid() && isColumn()
        ? view()->model()->headerData(m_section, Qt::Horizontal, Qt::DisplayRole).toString()
        : QString();
}

QRect AccessibleSection::rect() const
{
    if (!isValid() || !isColumn()) {
        return QRect();
    }
    const QHeaderView* header = static_cast<const MList*>(view())->horizontalHeader();
    const QRect section(
        header->sectionViewportPosition(m_section), 0, header->sectionSize(m_section), header->height());
    return onScreen(section.translated(header->pos()));
}

QStringList AccessibleSection::actionNames() const
{
    return {pressAction()};
}

void AccessibleSection::doAction(const QString& actionName)
{
    if (isValid() && isColumn() && actionName == pressAction()) {
        QMetaObject::invokeMethod(static_cast<const MList*>(view())->horizontalHeader(), "sectionClicked",
            Qt::QueuedConnection, Q_ARG(int, m_section));
    }
}

QStringList AccessibleSection::keyBindingsForAction(const QString& /*actionName*/) const
{
    return {};
}
