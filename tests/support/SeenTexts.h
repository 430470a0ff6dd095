#pragma once

#include <QColor>
#include <QString>
#include <QVector>

class QWidget;

/// @return contrast of two colours, from 1 to 21
double contrast(const QColor& one, const QColor& other);

/// A text as a widget paints it.
struct SeenText
{
    QString text;
    QColor ink; ///< what it is written with
    QColor ground; ///< what is seen behind most of it
    bool large = false; ///< bold from 14 points on, or from 18 points on, at 96 dots an inch

    /// @return whether its contrast is enough to be read: 4.5, or 3 where it is large
    bool canBeRead() const { return contrast(ink, ground) >= (large ? 3.0 : 4.5); }
};

/// @return all texts that a widget and what is in it paint now, as far as they are not clipped
QVector<SeenText> seenTexts(QWidget* widget);
