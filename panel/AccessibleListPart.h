#pragma once

#include <QAccessible>
#include <QAccessibleInterface>
#include <QPointer>

class AccessibleParts;
class MList;
class QAbstractItemView;

/// What assistive technology is told about a part of the listing: a cell, a section of a header, the corner
/// between the headers. Parts are made by AccessibleParts, which also keeps and frees them. GUI thread only.
class AccessibleListPart : public QAccessibleInterface
{
public:
    /// @param siblings the parts of the same listing; outlives this one
    explicit AccessibleListPart(AccessibleParts* siblings);

    /// The number that Qt's views give a cell in their events: row by row, both headers included, also where
    /// a header is hidden.
    /// @param row row of the listing, -1 for the header above the columns
    /// @param column column of the listing, -1 for the header beside the rows
    static int placeOf(const QAbstractItemView* view, int row, int column);

    /// @return number among the children of the listing; -1 where the part is gone
    virtual int place() const = 0;

    bool isValid() const override;
    QObject* object() const override;
    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int index) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface* part) const override;
    void setText(QAccessible::Text kind, const QString& text) override;

protected:
    MList* list() const;
    AccessibleParts* parts() const { return m_parts; }
    /// @param inside a place in the listing's own coordinates
    /// @return the same place on the screen
    QRect onScreen(const QRect& inside) const;

private:
    AccessibleParts* m_parts;
};
