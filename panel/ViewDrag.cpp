#include "panel/ViewDrag.h"

#include "app/WindowSystem.h"
#include "app/aGlobal.h"
#include "panel/MPanel.h"
#include "panel/myDelegate.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QScopedValueRollback>
#include <QTimer>

namespace {

constexpr int nudgeMs = 100;

/// All that a drag carries: the paths travel in the pending operation.
const QString marker = QStringLiteral("BlahBlah");

/// A drag of another program, and one that comes while a dialog stands, must not start an operation: the
/// pending items are those of an earlier command, or of the operation that runs.
bool isStranger(const QDropEvent* event)
{
    const QMimeData* data = event->mimeData();
    return QApplication::activeModalWidget() != nullptr
        || (!data->formats().isEmpty() && data->text() != marker);
}

/// A drop that waits for the end of its drag.
struct Drop
{
    QPointer<MPanel> panel; ///< that the items were dropped in; null where nothing was dropped
    Qt::DropAction action = Qt::IgnoreAction;
    QString target;
};

/// The drop of the drag that runs; null while none does. All drags of the program are over before another
/// begins.
Drop* runningDrag = nullptr;

/// Drags what is pending until it is dropped or the drag is cancelled.
Drop execDrag(QAbstractItemView* view)
{
    Drop drop;
    const QScopedValueRollback<Drop*> running(runningDrag, &drop);
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
    return drop;
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
    if (!event->buttons().testFlag(Qt::LeftButton) || !panel->showsFolder()) {
        return false;
    }
    const QPoint moved = event->localPos().toPoint() - pressPos;
    return moved.manhattanLength() >= QApplication::startDragDistance();
}

void ViewDrag::runDrag()
{
    // Whatever happens meanwhile, what was dragged is what is dropped.
    const QStringList items = gslDragList;
    const QString base = gsDragBase;
    const Drop drop = execDrag(view);
    if (!drop.panel.isNull()) {
        gslDragList = items;
        gsDragBase = base;
        drop.panel->gotDrop(drop.action, drop.target);
    }
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
    if (runningDrag != nullptr) {
        // The question waits until the drag is over: Wayland takes the keyboard until then, and does not bear
        // a box that ends within the drag.
        *runningDrag = {panel, event->dropAction(), target};
    } else {
        panel->gotDrop(event->dropAction(), target);
    }
}

void ViewDrag::repaintCell(const QModelIndex& index) const
{
    if (index.isValid() && index.model() == view->model()) {
        emit view->model()->dataChanged(index, index);
    }
}
