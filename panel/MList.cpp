#include "panel/MList.h"

#include "app/aGlobal.h"
#include "panel/AccessibleList.h"
#include "panel/MPanel.h"
#include "panel/SelectedRows.h"
#include "panel/myDelegate.h"
#include "panel/myFileSystemModel.h"

#include <QScrollBar>

namespace {

/// Widths of the columns after the first, in average digits.
constexpr int sizeDigits = 18;
constexpr int ownerDigits = 14;
constexpr int timeDigits = 20;
constexpr int allDigits = sizeDigits + ownerDigits + timeDigits;

/// Pixels kept free at the right edge, without and with a vertical scroll bar.
constexpr int marginPixels = 4;
constexpr int scrolledMarginPixels = 8;

} // namespace

MList::MList(MPanel* owner)
    : QTableView(owner)
    , ViewDrag(this, new myDelegate(this), owner)
{
    AccessibleList::install(); // before anything is told to assistive technology
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setItemDelegate(delegate);
    setTabKeyNavigation(false); // Tab leaves the listing, which is one control
    setAccessibleName(QStringLiteral("File list"));
}

void MList::startChangeWatcher()
{
    connect(selectionModel(), SIGNAL(selectionChanged(const QItemSelection&, const QItemSelection&)), this,
        SLOT(selectionChanged(const QItemSelection&, const QItemSelection&)));
}

void MList::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTableView::selectionChanged(selected, deselected);
    panel->listSelectionChanged();
}

void MList::keyPressEvent(QKeyEvent* event)
{
    if (!panel->mykeyPressEvent(event)) {
        QAbstractItemView::keyPressEvent(event);
    }
}

void MList::mousePressEvent(QMouseEvent* event)
{
    notePress(event);
    QTableView::mousePressEvent(event);
}

void MList::mouseMoveEvent(QMouseEvent* event)
{
    // The base handler is never called: a move with the button held drags and does not extend the selection.
    dragWhenMoved(event, [this] { takePending(); });
}

void MList::takePending() const
{
    gsDragBase = panel->currentPath;
    gslDragList.clear();
    const QString prefix = panel->listModel->pathPrefix(rootIndex());
    forEachSelectedRow(this, [&](const QModelIndex& row) {
        const QString name = panel->listModel->fileName(row);
        if (name != QLatin1String("..")) {
            gslDragList.append(prefix + name);
        }
    });
}

void MList::openCurrent()
{
    if (currentIndex().isValid()) {
        panel->on_ListView_DoubleClicked(currentIndex());
    }
}

void MList::showMenuOfCurrent()
{
    scrollTo(currentIndex());
    emit customContextMenuRequested(visualRect(currentIndex()).center());
}

void MList::nudgeMouse()
{
    nudgeCursor();
}

void MList::dragEnterEvent(QDragEnterEvent* event)
{
    dragEntered(event);
}

void MList::dragMoveEvent(QDragMoveEvent* event)
{
    dragHovers(event);
}

void MList::dragLeaveEvent(QDragLeaveEvent* event)
{
    dragLeft(event);
}

void MList::dropEvent(QDropEvent* event)
{
    dropped(event, [this](const QModelIndex& index) {
        return index.isValid() && panel->listModel->isDir(index) ? panel->listModel->filePath(index)
                                                                 : panel->currentPath;
    });
}

void MList::resizeEvent(QResizeEvent* /*event*/)
{
    if (charWidth == 0) {
        ensurePolished(); // the font of the style sheet
        charWidth = fontMetrics().horizontalAdvance(QStringLiteral("01234567890123456789")) / 20;
    }
    const QScrollBar* bar = verticalScrollBar();
    const int taken = bar->maximum() == bar->minimum() ? marginPixels : scrolledMarginPixels + bar->width();
    setColumnWidth(0, width() - taken - allDigits * charWidth);
    setColumnWidth(1, sizeDigits * charWidth);
    setColumnWidth(2, ownerDigits * charWidth);
    setColumnWidth(3, timeDigits * charWidth);
    updateGeometries(); // the scroll bars' ranges, which the base handler would have set
}

void MList::focusInEvent(QFocusEvent* /*event*/)
{
    panel->listSelectionChanged();
    repaintFocus();
}

void MList::focusOutEvent(QFocusEvent* /*event*/)
{
    panel->listSelectionChanged();
    repaintFocus();
}

/// The base handlers would have the frame and the rows drawn anew.
void MList::repaintFocus()
{
    update();
    viewport()->update();
}

void MList::placeWhenLoaded(int place)
{
    m_place = place;
    connect(model(), SIGNAL(directoryLoaded(QString)), this, SLOT(restorePlace()));
}

void MList::restorePlace()
{
    disconnect(model(), SIGNAL(directoryLoaded(QString)), this, SLOT(restorePlace()));
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(m_place);
}
