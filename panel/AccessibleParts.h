#pragma once

#include <QAccessible>
#include <QHash>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPointer>

class MList;

/// The parts of a listing that assistive technology has asked for. Each is made when it is first asked for
/// and keeps its identity while its item is there, also when rows move. All go when the listing gets another
/// model. GUI thread only.
class AccessibleParts : public QObject
{
    Q_OBJECT

public:
    explicit AccessibleParts(MList* owner);
    ~AccessibleParts() override;

    /// @return the listing; null once it is gone
    MList* list() const;

    /// @param index an index of the listing's model
    /// @return what is told about the cell; null for an index that is not in the listing
    QAccessibleInterface* cell(const QModelIndex& index);
    /// @param section of a header; -1 is the corner between both headers
    /// @return what is told about the section; null where there is none
    QAccessibleInterface* header(Qt::Orientation orientation, int section);

    /// Rows are gone from the model. Their cells are freed some time later: rows often go one by one.
    void rowsGone(int count);

    /// Frees the cells of rows that are gone.
    void dropGone();

    /// @return cells and sections that are kept
    int count() const;

public slots:
    /// Frees all parts.
    void clear();

private slots:
    void focusMoved(QWidget* before, QWidget* now);
    void tellCurrentCell();

private:
    void followModel();

    QPointer<MList> m_list;
    const QObject* m_owner; ///< the listing, only to compare with, also while it is being destroyed
    QPointer<QObject> m_selectionModel; ///< goes with the model, and before it
    QHash<QPersistentModelIndex, QAccessible::Id> m_cells;
    QHash<int, QAccessible::Id> m_sections[2];
    int m_rowsGone = 0;
};
