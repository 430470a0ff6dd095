#pragma once

#include <QAccessible>
#include <QHash>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QVector>

class QAbstractItemView;
class QAccessibleTableModelChangeEvent;

/// The parts of a listing or a tree that assistive technology has asked for. Each is made when it is first
/// asked for and keeps its identity while its item is there, also when rows move. All go when the view gets
/// another model. GUI thread only.
class AccessibleParts : public QObject
{
    Q_OBJECT

public:
    /// @param owner an MList or an MTree
    explicit AccessibleParts(QAbstractItemView* owner);
    ~AccessibleParts() override;

    /// @return the view; null once it is gone
    QAbstractItemView* view() const;

    /// @return whether an index is that of a cell of the listing, or of a folder of the tree
    bool has(const QModelIndex& index) const;

    /// @param index an index of the view's model
    /// @return what is told about the item; null for an index that is not in the view
    QAccessibleInterface* cell(const QModelIndex& index);
    /// @param onScreen a place on the screen
    /// @return what is told about the item there; null where there is none
    QAccessibleInterface* cellAt(const QPoint& onScreen);
    /// @return what is told about the item that has the keyboard, or null
    QAccessibleInterface* focusedCell();
    /// @param section of a header of the listing; -1 is the corner between both headers
    /// @return what is told about the section; null where there is none
    QAccessibleInterface* header(Qt::Orientation orientation, int section);

    /// @return columns of the model
    int columns() const;
    /// @return the folders of the tree that no folded one hides, from the top; of a listing, nothing
    const QVector<QPersistentModelIndex>& shownRows();
    /// @return number of an item's row in the view; -1 where it is not in the view, or hidden
    int rowOf(const QModelIndex& index);
    /// The number that Qt's views give an item in their events: row by row, with the header above the columns
    /// and, of a listing, that beside the rows, also where they are hidden. -1 where it is not in the view.
    int placeOf(const QModelIndex& index);
    /// The same of a part of the listing.
    /// @param row row of the listing, -1 for the header above the columns
    /// @param column column of the listing, -1 for the header beside the rows
    int placeInTable(int row, int column) const;
    /// @return number of a part among the children; -1 for what is no valid part of @p whole
    static int indexOf(const QAccessibleInterface* part, const QAccessibleInterface* whole);

    /// Frees the cells of rows that are gone; some time later where rows go one by one.
    void modelChanged(const QAccessibleTableModelChangeEvent* event);

    /// @return items and sections that are kept
    int count() const;

public slots:
    /// Frees all parts.
    void clear();

private slots:
    void focusMoved(QWidget* before, QWidget* now);
    void tellCurrentCell();
    void forgetShownRows();

private:
    void followModel();
    void followTree();
    void addShownRows(const QModelIndex& parent);
    void dropGone();

    QPointer<QAbstractItemView> m_view;
    const QObject* m_owner; ///< the view, only to compare with, also while it is being destroyed
    const bool m_isTree;
    QPointer<QObject> m_selectionModel; ///< goes with the model, and before it
    QHash<QPersistentModelIndex, QAccessible::Id> m_cells;
    QHash<int, QAccessible::Id> m_sections[2];
    QVector<QPersistentModelIndex> m_shownRows;
    int m_rowsGone = 0;
};
