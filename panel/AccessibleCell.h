#pragma once

#include "panel/AccessibleListPart.h"

#include <QPersistentModelIndex>

/// A cell of the listing, as assistive technology is told of it. It can be made current ("setFocus"), opened
/// as by a double-click ("press"), selected or not with its row ("toggle"), and asked for its context menu
/// ("showMenu"). What opens something is done later, so that nobody waits for the boxes it may show.
class AccessibleCell final : public AccessibleListPart,
                             public QAccessibleTableCellInterface,
                             public QAccessibleActionInterface
{
public:
    AccessibleCell(AccessibleParts* siblings, const QModelIndex& index);

    int place() const override;
    bool isValid() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::Role role() const override;
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

private:
    void toggle();
    void makeCurrent();
    void makeCurrentAndSelected();

    QPersistentModelIndex m_index;
};
