#include "panel/ViewDrag.h"

#include "app/WindowSystem.h"
#include "panel/MPanel.h"
#include "panel/RunningDrag.h"
#include "panel/myDelegate.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QTimer>

namespace {

constexpr int nudgeMs = 100;

/// All that a drag carries: the paths travel in the pending operation.
const QString marker = QStringLiteral("BlahBlah");

/// A drag of another program, another run of this one included, and one that comes while a dialog stands,
/// must not start an operation: the pending items are those of an earlier command, or of the operation that
/// runs.
bool isStranger(const QDropEvent* event)
{
    const QMimeData* data = event->mimeData();
    return RunningDrag::current() == nullptr || QApplication::activeModalWidget() != nullptr
        || (!data->formats().isEmpty() && data->text() != marker);
}

/// Drags what is pending until it is dropped or the drag is cancelled.
void execDrag(QAbstractItemView* view)
{
    // Both are watched: the view, and with it its children, can go while the drag runs.
    const QPointer<QDrag> drag = new QDrag(view);
    auto* data = new QMimeData; // owned by the drag
    data->setText(marker);
    drag->setMimeData(data);
    const QPointer<QTimer> timer = new QTimer(view);
    QObject::connect(timer, SIGNAL(timeout()), view, SLOT(nudgeMouse()));
    timer->start(nudgeMs);
    drag->exec(Qt::CopyAction | Qt::MoveAction);
    delete drag;
    delete timer;
}

/// The action of a drop: what the user holds decides, not what the source proposes.
Qt::DropAction wantedAction(const QDropEvent* event)
{
    return event->keyboardModifiers().testFlag(Qt::ShiftModifier) ? Qt::MoveAction : Qt::CopyAction;
}

} // namespace

ViewDrag::ViewDrag(QAbstractItemView* owner, myDelegate* ownerDelegate, MPanel* ownerPanel)
    : delegate(ownerDelegate)
    , panel(ownerPanel)
    , view(owner)
{
}

void ViewDrag::notePress(const QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        pressPos = event->localPos().toPoint();
    }
}

bool ViewDrag::isDragStart(const QMouseEvent* event) const
{
    if (!event->buttons().testFlag(Qt::LeftButton) || !panel->takesCommands()) {
        return false;
    }
    const QPoint moved = event->localPos().toPoint() - pressPos;
    return moved.manhattanLength() >= QApplication::startDragDistance();
}

void ViewDrag::runDrag()
{
    RunningDrag drag;
    execDrag(view);
    drag.finish();
}

void ViewDrag::nudgeCursor()
{
    if (QApplication::activeModalWidget() != nullptr) {
        return; // dropped: what stands now is the question about it
    }
    moveCursor(QPoint(nudgeToggle ? -1 : 1, 0));
    nudgeToggle = !nudgeToggle;
}

void ViewDrag::dragEntered(QDragEnterEvent* event) const
{
    event->setDropAction(event->proposedAction());
    event->accept();
}

void ViewDrag::dragHovers(QDragMoveEvent* event)
{
    const QModelIndex index = view->indexAt(event->posF().toPoint());
    if (index.isValid()) {
        delegate->dropTargetIndex = index;
        repaintCell(hoverIndex);
        repaintCell(index);
        hoverIndex = index;
    }
    event->setDropAction(wantedAction(event));
    event->accept();
}

void ViewDrag::dragLeft(QDragLeaveEvent* event)
{
    event->accept();
    const QModelIndex outlined = delegate->dropTargetIndex;
    delegate->dropTargetIndex = QPersistentModelIndex();
    repaintCell(outlined);
}

QModelIndex ViewDrag::endHover(QDropEvent* event)
{
    delegate->dropTargetIndex = QPersistentModelIndex();
    repaintCell(hoverIndex);
    event->setDropAction(wantedAction(event));
    event->accept();
    return view->indexAt(event->posF().toPoint());
}

void ViewDrag::finishDrop(QDropEvent* event, const QString& target)
{
    if (isStranger(event) || !panel->showsFolder()) {
        event->setDropAction(Qt::IgnoreAction);
        event->ignore();
        return;
    }
    RunningDrag::current()->drop(panel, event->dropAction(), target);
}

void ViewDrag::repaintCell(const QModelIndex& index) const
{
    if (index.isValid() && index.model() == view->model()) {
        emit view->model()->dataChanged(index, index);
    }
}
