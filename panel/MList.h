#pragma once

#include "panel/ViewDrag.h"

#include <QPointer>
#include <QSet>
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
    /// What is to be as it was in a listing that is read anew, by names, since rows change.
    struct Place
    {
        QSet<QString> selected;
        QString current; ///< empty where no row is the current one
        int column = 0; ///< of the current row
        int scrolled = 0; ///< value of the vertical scroll bar
    };
    /// @return the selection, the current row and the place; what is still to be restored where the model has
    /// not
    ///         loaded its folder since the last restoreWhenLoaded()
    Place place() const;
    /// Selects, makes current and scrolls once the model has loaded its folder. What the user has selected
    /// until then stays instead.
    void restoreWhenLoaded(const Place& place);
    /// @return whether something is still to be restored
    bool isRestoring() const { return !m_placeModel.isNull() && m_placeModel == model(); }
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
    void endPendingChange();
    void restorePlace();

private:
    void repaintFocus();
    void restoreRows();

    bool m_isChangePending = false; ///< the panel is to be called once all rows have gone
    Place m_place; ///< to be restored
    QPointer<QAbstractItemModel>
        m_placeModel; ///< model whose loading m_place waits for; null where none does
};
