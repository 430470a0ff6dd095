#include "panel/myDelegate.h"

#include <QPainter>

void myDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    if (!dropTargetIndex.isValid() || dropTargetIndex != index) {
        return;
    }
    const QRect& cell = option.rect;
    painter->save();
    painter->setPen(Qt::blue);
    painter->drawRect(
        QRect(QPoint(cell.left() + 1, cell.top() + 1), QPoint(cell.right() - 1, cell.bottom() - 1)));
    painter->restore();
}
