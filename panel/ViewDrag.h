#pragma once

#include <QPersistentModelIndex>
#include <QPoint>

class MPanel;
class QAbstractItemView;
class QDragEnterEvent;
class QDragLeaveEvent;
class QDragMoveEvent;
class QDropEvent;
class QMouseEvent;
class myDelegate;

/// What both views of a panel have in common: the state and the handling of drags. The mime data carries only
/// a marker text; the dragged paths travel in the pending operation (gslDragList, gsDragBase, gsDropBase).
/// GUI thread only.
class ViewDrag
{
public:
    /// @param owner the view that this is a part of
    /// @param ownerDelegate the view's delegate, which draws the outline
    /// @param ownerPanel the panel that drops are handed to
    ViewDrag(QAbstractItemView* owner, myDelegate* ownerDelegate, MPanel* ownerPanel);

    /// Notes where a left press was.
    void notePress(const QMouseEvent* event);
    /// Starts a drag once the pointer is far enough from the press with the left button held. Blocks until it
    /// ends.
    /// @param fillPending fills the pending operation with what the view drags
    template <typename FillPending>
    void dragWhenMoved(const QMouseEvent* event, const FillPending& fillPending)
    {
        if (isDragStart(event)) {
            hoverIndex = QPersistentModelIndex();
            fillPending();
            runDrag();
        }
    }
    void dragEntered(QDragEnterEvent* event) const;
    void dragHovers(QDragMoveEvent* event);
    void dragLeft(QDragLeaveEvent* event);
    /// Ends a drag over the view. Its command runs once the drag is over. What another program dragged is
    /// refused, as is everything while a modal dialog stands or the panel's folder is not there.
    /// @param targetOf gives the target folder for the index under the pointer
    template <typename TargetOf>
    void dropped(QDropEvent* event, const TargetOf& targetOf)
    {
        const QModelIndex index = endHover(event);
        finishDrop(event, targetOf(index));
    }
    /// Moves the pointer by one pixel, to and fro, so that the drag goes on being reported while the mouse
    /// rests.
    void nudgeCursor();

    QPoint pressPos; ///< last left press, in view coordinates
    bool nudgeToggle = false; ///< direction of the next nudge
    QPersistentModelIndex hoverIndex; ///< item that a drag hovered over last

    myDelegate* delegate; ///< draws the outline, child of the view
    MPanel* panel;

private:
    bool isDragStart(const QMouseEvent* event) const;
    void runDrag();
    QModelIndex endHover(QDropEvent* event);
    void finishDrop(QDropEvent* event, const QString& target);
    void repaintCell(const QModelIndex& index) const;

    QAbstractItemView* view;
};
