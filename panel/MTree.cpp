#include "panel/MTree.h"

#include "app/TextHelpers.h"
#include "app/aGlobal.h"
#include "panel/AccessibleTree.h"
#include "panel/MPanel.h"
#include "panel/myDelegate.h"
#include "panel/myFileSystemModel.h"

#include <QMouseEvent>
#include <QScopedValueRollback>

namespace {

constexpr int indentationPixels = 15;

} // namespace

MTree::MTree(MPanel* owner)
    : QTreeView(owner)
    , ViewDrag(this, new myDelegate(this), owner)
{
    AccessibleTree::install(); // before anything is told to assistive technology
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setRootIsDecorated(false);
    setIndentation(indentationPixels);
    setItemDelegate(delegate);
    setAccessibleName(QStringLiteral("Folder tree"));
}

void MTree::startChangeWatcher()
{
    connect(selectionModel(), SIGNAL(currentRowChanged(const QModelIndex&, const QModelIndex&)), this,
        SLOT(currentRowChanged(const QModelIndex&, const QModelIndex&)));
}

void MTree::currentRowChanged(const QModelIndex& current, const QModelIndex& /*previous*/)
{
    if (!current.isValid() || m_panelLeads) {
        return; // the tree has lost its rows, or the panel shows that folder already
    }
    panel->currentTreeIndex = current;
    panel->currentPath = panel->treeModel->filePath(current);
    panel->treeRowChanged(panel->currentPath);
}

void MTree::showCurrent(const QModelIndex& folder)
{
    if (!folder.isValid() || folder == currentIndex()) {
        return;
    }
    const QScopedValueRollback<bool> leading(m_panelLeads, true);
    selectionModel()->setCurrentIndex(
        folder, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    panel->currentTreeIndex = folder;
}

void MTree::showMenuOfCurrent()
{
    scrollTo(currentIndex());
    emit customContextMenuRequested(visualRect(currentIndex()).center());
}

void MTree::keyPressEvent(QKeyEvent* event)
{
    if (!panel->mykeyPressEvent(event)) {
        QTreeView::keyPressEvent(event);
    }
}

void MTree::mousePressEvent(QMouseEvent* event)
{
    notePress(event);
    QTreeView::mousePressEvent(event);
}

void MTree::mouseMoveEvent(QMouseEvent* event)
{
    // The base handler is never called: a move with the button held drags and does not select.
    dragWhenMoved(event, [this] { takePending(); });
}

void MTree::takePending() const
{
    gslDragList = QStringList(panel->currentPath);
    gsDragBase = xs_UpOneLevel(panel->currentPath);
}

void MTree::openCurrent()
{
    const QModelIndex current = currentIndex();
    if (!current.isValid()) {
        return;
    }
    const bool opens = !isExpanded(current);
    const QPersistentModelIndex folder(current);
    panel->on_TreeView_DoubleClicked(current);
    if (opens) {
        expand(folder); // not the root, which stays folded and whose index went with the old model
    }
}

void MTree::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The view would toggle the folder after the panel has handled the double-click. One that is folded opens
    // by that; one that is open stays open, with its subfolders folded up. The root, which the panel shows in
    // a new model, stays as it was.
    const QModelIndex folder = indexAt(event->pos());
    const bool isRoot = panel->treeModel->filePath(folder) == panel->rootPath;
    setExpandsOnDoubleClick(!isRoot && !isExpanded(folder));
    QTreeView::mouseDoubleClickEvent(event);
}

void MTree::nudgeMouse()
{
    nudgeCursor();
}

void MTree::dragEnterEvent(QDragEnterEvent* event)
{
    dragEntered(event);
}

void MTree::dragMoveEvent(QDragMoveEvent* event)
{
    dragHovers(event);
}

void MTree::dragLeaveEvent(QDragLeaveEvent* event)
{
    dragLeft(event);
}

void MTree::dropEvent(QDropEvent* event)
{
    dropped(event, [this](const QModelIndex& index) {
        return index.isValid() ? panel->treeModel->filePath(index) : panel->currentPath;
    });
}

void MTree::resizeEvent(QResizeEvent* /*event*/)
{
    resizeColumnToContents(0);
    updateGeometries(); // the scroll bars' ranges, which the base handler would have set
}

void MTree::drawBranches(QPainter* /*painter*/, const QRect& /*rect*/, const QModelIndex& /*index*/) const
{
    // The tree has no branch lines and no arrows.
}
