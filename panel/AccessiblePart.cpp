#include "panel/AccessiblePart.h"

#include "panel/AccessibleParts.h"

#include <QAbstractItemView>
#include <QWindow>

AccessiblePart::AccessiblePart(AccessibleParts* siblings)
    : m_parts(siblings)
{
}

QAbstractItemView* AccessiblePart::view() const
{
    return m_parts->view();
}

bool AccessiblePart::isValid() const
{
    return view() != nullptr;
}

QObject* AccessiblePart::object() const
{
    return nullptr;
}

QWindow* AccessiblePart::window() const
{
    return isValid() ? view()->window()->windowHandle() : nullptr;
}

QAccessibleInterface* AccessiblePart::parent() const
{
    return isValid() ? QAccessible::queryAccessibleInterface(view()) : nullptr;
}

QAccessibleInterface* AccessiblePart::child(int /*index*/) const
{
    return nullptr;
}

QAccessibleInterface* AccessiblePart::childAt(int /*x*/, int /*y*/) const
{
    return nullptr;
}

int AccessiblePart::childCount() const
{
    return 0;
}

int AccessiblePart::indexOfChild(const QAccessibleInterface* /*part*/) const
{
    return -1;
}

void AccessiblePart::setText(QAccessible::Text /*kind*/, const QString& /*text*/)
{
    // Names are changed by the rename command only.
}

QRect AccessiblePart::onScreen(const QRect& inside) const
{
    return inside.isEmpty() ? QRect() : QRect(view()->mapToGlobal(inside.topLeft()), inside.size());
}
