#pragma once

#include <QPersistentModelIndex>
#include <QStyledItemDelegate>

/// Draws a view's items, and a blue outline around the one that a drag hovers over. Each view owns its own.
class myDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// The cell to outline; set by the view while a drag hovers over it, invalid otherwise.
    QPersistentModelIndex dropTargetIndex;
};
