#include "app/PathLabel.h"

#include <QPainter>
#include <QStyle>

void PathLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    drawFrame(&painter);
    const QRect place = contentsRect();
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, place.width());
    style()->drawItemText(&painter, place,
        static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment())), palette(), isEnabled(),
        shown, foregroundRole());
}
