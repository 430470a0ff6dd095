#include "panel/AccessibleView.h"

#include <QAbstractItemView>

AccessibleView::AccessibleView(QAbstractItemView* owner, QAccessible::Role role)
    : QAccessibleWidget(owner, role)
    , m_parts(std::make_unique<AccessibleParts>(owner))
{
}

AccessibleView::~AccessibleView() = default;

void* AccessibleView::interface_cast(QAccessible::InterfaceType type)
{
    return type == QAccessible::TableInterface ? static_cast<QAccessibleTableInterface*>(this)
                                               : QAccessibleWidget::interface_cast(type);
}

QAccessibleInterface* AccessibleView::focusChild() const
{
    return m_parts->focusedCell();
}

int AccessibleView::indexOfChild(const QAccessibleInterface* part) const
{
    return AccessibleParts::indexOf(part, this);
}

QString AccessibleView::rowDescription(int /*row*/) const
{
    return QString();
}

void AccessibleView::modelChange(QAccessibleTableModelChangeEvent* event)
{
    m_parts->modelChanged(event);
}

int AccessibleView::keptParts() const
{
    return m_parts->count();
}
