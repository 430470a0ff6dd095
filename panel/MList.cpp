#include "panel/MList.h"

#include "app/aGlobal.h"
#include "panel/AccessibleList.h"
#include "panel/MPanel.h"
#include "panel/SelectedRows.h"
#include "panel/myDelegate.h"
#include "panel/myFileSystemModel.h"

#include <QScrollBar>

#include <vector>

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
    if (!panel->listModel->isRemoving()) {
        panel->listSelectionChanged();
    } else if (!m_isChangePending) {
        // Each row that goes changes the selection, and each time all of it would be gone through.
        m_isChangePending = true;
        QMetaObject::invokeMethod(this, "endPendingChange", Qt::QueuedConnection);
    }
}

void MList::endPendingChange()
{
    m_isChangePending = false;
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
    forEachSelectedRow(this, [this](const QModelIndex& row) {
        if (panel->listModel->entryName(row) != QLatin1String("..")) {
            gslDragList.append(panel->listModel->filePath(row));
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

MList::Place MList::place() const
{
    if (isRestoring()) {
        return m_place;
    }
    Place now;
    forEachSelectedRow(
        this, [&](const QModelIndex& row) { now.selected.insert(panel->listModel->entryName(row)); });
    now.current = panel->listModel->entryName(currentIndex());
    now.column = qMax(0, currentIndex().column());
    now.scrolled = verticalScrollBar()->value();
    return now;
}

void MList::restoreWhenLoaded(const Place& place)
{
    m_place = place;
    m_placeModel = model();
    connect(model(), SIGNAL(directoryLoaded(QString)), this, SLOT(restorePlace()));
}

void MList::restorePlace()
{
    disconnect(model(), SIGNAL(directoryLoaded(QString)), this, SLOT(restorePlace()));
    m_placeModel.clear();
    if (!selectionModel()->hasSelection() && !currentIndex().isValid()) {
        restoreRows();
    }
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(m_place.scrolled);
}

void MList::restoreRows()
{
    const myFileSystemModel* rows = panel->listModel;
    const QModelIndex folder = rootIndex();
    const int count = rows->rowCount(folder);
    std::vector<bool> selected;
    selected.reserve(static_cast<std::size_t>(count));
    QModelIndex current;
    for (int row = 0; row < count; ++row) {
        const QString name = rows->entryName(rows->index(row, 0, folder));
        selected.push_back(m_place.selected.contains(name));
        if (name == m_place.current) {
            current = rows->index(row, m_place.column, folder);
        }
    }
    selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    selectionModel()->select(rowsSelection(rows, folder, selected), QItemSelectionModel::Select);
}
