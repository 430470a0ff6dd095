#pragma once

#include <QAccessible>
#include <QAccessibleInterface>
#include <QPointer>

class AccessibleParts;
class QAbstractItemView;

/// What assistive technology is told about a part of the listing or the tree: a cell, a folder, a section of
/// a header, the corner between the headers. Parts are made by AccessibleParts, which also keeps and frees
/// them. GUI thread only.
class AccessiblePart : public QAccessibleInterface
{
public:
    /// @param siblings the parts of the same view; outlives this one
    explicit AccessiblePart(AccessibleParts* siblings);

    /// @return number among the children of the view; -1 where the part is gone
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
    /// @return the view; null once it is gone
    QAbstractItemView* view() const;
    AccessibleParts* parts() const { return m_parts; }
    /// @param inside a place in the view's own coordinates
    /// @return the same place on the screen
    QRect onScreen(const QRect& inside) const;

private:
    AccessibleParts* m_parts;
};
