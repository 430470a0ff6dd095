#include "tests/support/DragFixture.h"

#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/RunningDrag.h"
#include "panel/myFileSystemModel.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QTest>

void DragFixture::start()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("sub/deeper"));
    dir->folder(QStringLiteral("other"));
    dir->file(QStringLiteral("one.txt"), "1");
    dir->file(QStringLiteral("two.txt"), "22");
    show(dir->path());
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("sub"))));
    mime.setText(QStringLiteral("BlahBlah"));
}

void DragFixture::end()
{
    QDragLeaveEvent leave; // the application forgets the widget that the drag is over
    QApplication::sendEvent(panel->list->viewport(), &leave);
    PanelFixture::end();
}

void DragFixture::bothViews()
{
    QTest::addColumn<bool>("inTree");
    QTest::newRow("tree") << true;
    QTest::newRow("listing") << false;
}

QAbstractItemView* DragFixture::view(bool inTree) const
{
    return inTree ? static_cast<QAbstractItemView*>(panel->tree) : panel->list;
}

QPoint DragFixture::placeOf(bool inTree, const QString& name) const
{
    if (name.isEmpty()) {
        return QPoint(20, view(inTree)->viewport()->height() - 5);
    }
    const QModelIndex index = inTree ? treeAt(name) : listIndex(panel, name);
    return view(inTree)->visualRect(index).center();
}

void DragFixture::dragFrom(bool inTree, const QString& name, int distance, Qt::MouseButtons buttons) const
{
    const QPoint place = placeOf(inTree, name);
    (inTree ? static_cast<ViewDrag&>(*panel->tree) : *panel->list).pressPos = place;
    const QPoint to = place + QPoint(distance / 2, distance - distance / 2);
    QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(view(inTree)->viewport(), &move);
}

void DragFixture::enter(QWidget* viewport, const QPoint& place)
{
    QDragEnterEvent event(place, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &event);
}

Qt::DropAction DragFixture::hover(bool inTree, const QPoint& place, Qt::KeyboardModifiers modifiers)
{
    QDragMoveEvent event(place, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, modifiers);
    event.setDropAction(Qt::IgnoreAction);
    event.ignore();
    enter(view(inTree)->viewport(), place);
    QApplication::sendEvent(view(inTree)->viewport(), &event);
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
}

bool DragFixture::drop(MPanel* target, bool inTree, const QPoint& place, Qt::KeyboardModifiers modifiers)
{
    QDropEvent event(place, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, modifiers);
    event.ignore();
    QWidget* viewport = inTree ? target->tree->viewport() : target->list->viewport();
    enter(viewport, place);
    RunningDrag drag;
    QApplication::sendEvent(viewport, &event);
    drag.finish();
    return event.isAccepted();
}
