#pragma once

#include "panel/AccessiblePart.h"

/// A section of one of the listing's headers, or the corner between them, as assistive technology is told of
/// it. "press" on the header of a column sorts, as a click there does. The header beside the rows is hidden,
/// but counted among the parts of any table.
class AccessibleSection final : public AccessiblePart, public QAccessibleActionInterface
{
public:
    AccessibleSection(AccessibleParts* siblings, Qt::Orientation orientation, int section);

    /// @return whether the listing has that section now
    static bool exists(const QAbstractItemView* list, Qt::Orientation orientation, int section);

    int place() const override;
    bool isValid() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    QRect rect() const override;

    QStringList actionNames() const override;
    void doAction(const QString& actionName) override;
    QStringList keyBindingsForAction(const QString& actionName) const override;

private:
    bool isColumn() const { return m_orientation == Qt::Horizontal && m_section >= 0; }

    Qt::Orientation m_orientation;
    int m_section; ///< -1 for the corner
};
