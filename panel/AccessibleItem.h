#pragma once

#include "panel/AccessiblePart.h"

#include <QPersistentModelIndex>

/// What assistive technology is told about an item of a view: a cell of the listing, a folder of the tree.
/// Each can be made current ("setFocus"), be used as with the mouse ("press"), be switched ("toggle"), and
/// show its context menu ("showMenu"). What may show boxes is done later, so that nobody waits for them.
class AccessibleItem : public AccessiblePart,
                       public QAccessibleTableCellInterface,
                       public QAccessibleActionInterface
{
public:
    AccessibleItem(AccessibleParts* siblings, const QModelIndex& index);

    int place() const override;
    bool isValid() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    QRect rect() const override;

    bool isSelected() const override;
    QList<QAccessibleInterface*> columnHeaderCells() const override;
    QList<QAccessibleInterface*> rowHeaderCells() const override;
    int columnIndex() const override;
    int rowIndex() const override;
    int columnExtent() const override;
    int rowExtent() const override;
    QAccessibleInterface* table() const override;

    QStringList actionNames() const override;
    void doAction(const QString& actionName) override;
    QStringList keyBindingsForAction(const QString& actionName) const override;

protected:
    const QPersistentModelIndex& index() const { return m_index; }

private:
    virtual void toggle() = 0;
    virtual void makeCurrent() = 0;
    /// As a click does: current and selected.
    virtual void choose() = 0;
    /// What is done later to press it, when it has been chosen: a slot of the view; null for nothing.
    virtual const char* pressSlot() const = 0;
    void chooseAndRun(const char* slot);

    QPersistentModelIndex m_index;
};
