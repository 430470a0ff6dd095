#pragma once

#include "panel/ViewDrag.h"

#include <QTableView>

class MPanel;
class MTree;

/// The listing of a panel's current folder.
class MList : public QTableView, public ViewDrag
{
    Q_OBJECT

public:
    /// @param owner the panel, also the Qt parent
    explicit MList(MPanel* owner);

    /// Connects the selection model to the view's selectionChanged(). Nobody needs to: the override runs by
    /// itself.
    void startChangeWatcher();
    /// Scrolls to a place once the model has loaded its folder.
    /// @param place value of the vertical scroll bar
    void placeWhenLoaded(int place);
    /// Makes the selected rows the pending items, as a drag does.
    void takePending() const;

    MTree* partner = nullptr; ///< the panel's other view
    int charWidth = 0; ///< average width of a digit in pixels; 0 until the first resize

public slots:
    void nudgeMouse();
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    /// Opens the current row, as a double-click on it does.
    void openCurrent();
    /// Opens the context menu of the current row, as a right click on it does.
    void showMenuOfCurrent();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private slots:
    void restorePlace();

private:
    void repaintFocus();

    int m_place = 0;
};
