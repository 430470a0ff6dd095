#pragma once

#include "tests/support/PanelFixture.h"

#include <QMimeData>
#include <QPoint>

class QAbstractItemView;
class QWidget;

/// A PanelFixture for drags, over the folders "sub/deeper" and "other" and the files "one.txt" (1 byte) and
/// "two.txt" (2 bytes): what the pointer does on the tree or on the listing, and what the window system tells
/// of a drag there.
class DragFixture : protected PanelFixture
{
protected:
    void start();
    void end();

    /// Makes the data rows of a test that is the same for both views: whether it is "inTree".
    static void bothViews();

    QAbstractItemView* view(bool inTree) const;
    /// @return the middle of an item; with an empty name a place below all items
    QPoint placeOf(bool inTree, const QString& name) const;
    /// Moves the pointer by a distance from a press, without selecting anything.
    void dragFrom(
        bool inTree, const QString& name, int distance, Qt::MouseButtons buttons = Qt::LeftButton) const;
    /// Moves a drag onto a view, as it comes before every other event of the drag there.
    void enter(QWidget* viewport, const QPoint& place);
    /// @return the action that the view takes there; IgnoreAction where it takes none
    Qt::DropAction hover(bool inTree, const QPoint& place, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// @return whether the view of @p target takes what is dropped
    bool drop(
        MPanel* target, bool inTree, const QPoint& place, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    QMimeData mime; ///< what is dragged: the program's own marker, unless a test changes it
};
