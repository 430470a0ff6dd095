#include "panel/AccessibleListPart.h"

#include "panel/AccessibleParts.h"
#include "panel/MList.h"

#include <QWindow>

AccessibleListPart::AccessibleListPart(AccessibleParts* siblings)
    : m_parts(siblings)
{
}

int AccessibleListPart::placeOf(const QAbstractItemView* view, int row, int column)
{
    const int columns = view->model()->columnCount(view->rootIndex());
    return (row + 1) * (columns + 1) + column + 1;
}

MList* AccessibleListPart::list() const
{
    return m_parts->list();
}

bool AccessibleListPart::isValid() const
{
    return list() != nullptr;
}

QObject* AccessibleListPart::object() const
{
    return nullptr;
}

QWindow* AccessibleListPart::window() const
{
    return isValid() ? list()->window()->windowHandle() : nullptr;
}

QAccessibleInterface* AccessibleListPart::parent() const
{
    return isValid() ? QAccessible::queryAccessibleInterface(list()) : nullptr;
}

QAccessibleInterface* AccessibleListPart::child(int /*index*/) const
{
    return nullptr;
}

QAccessibleInterface* AccessibleListPart::childAt(int /*x*/, int /*y*/) const
{
    return nullptr;
}

int AccessibleListPart::childCount() const
{
    return 0;
}

int AccessibleListPart::indexOfChild(const QAccessibleInterface* /*part*/) const
{
    return -1;
}

void AccessibleListPart::setText(QAccessible::Text /*kind*/, const QString& /*text*/)
{
    // Names are changed by the rename command only.
}

QRect AccessibleListPart::onScreen(const QRect& inside) const
{
    return inside.isEmpty() ? QRect() : QRect(list()->mapToGlobal(inside.topLeft()), inside.size());
}
