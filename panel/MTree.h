#pragma once

#include "panel/ViewDrag.h"

#include <QTreeView>

class MList;
class MPanel;

/// The folder tree of a panel. Its current row is the panel's current folder.
class MTree : public QTreeView, public ViewDrag
{
    Q_OBJECT

public:
    /// @param owner the panel, also the Qt parent
    explicit MTree(MPanel* owner);

    /// Follows the current row from now on; to be called after each new model.
    void startChangeWatcher();

    /// Makes a folder the current row that the panel shows already, without telling the panel again.
    void showCurrent(const QModelIndex& folder);

    /// Makes the panel's current folder the pending item, as a drag does.
    void takePending() const;

    MList* partner = nullptr; ///< the panel's other view

public slots:
    void nudgeMouse();
    void currentRowChanged(const QModelIndex& current, const QModelIndex& previous);
    /// Folds the current folder, or reads the root again, as a double-click on it does.
    void openCurrent();
    /// Opens the context menu of the current folder, as a right click on it does.
    void showMenuOfCurrent();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;

private:
    bool m_panelLeads = false; ///< the panel is setting the current row itself
};
