#include "panel/AccessibleFolder.h"

#include "panel/AccessibleParts.h"

#include <QItemSelectionModel>
#include <QTreeView>

QTreeView* AccessibleFolder::tree() const
{
    return static_cast<QTreeView*>(view());
}

QAccessible::Role AccessibleFolder::role() const
{
    return QAccessible::TreeItem;
}

QAccessible::State AccessibleFolder::state() const
{
    QAccessible::State state = AccessibleItem::state();
    if (isValid() && index().model()->hasChildren(index())) {
        state.expandable = 1;
        state.expanded = tree()->isExpanded(index()) ? 1 : 0;
        state.collapsed = state.expanded ? 0 : 1;
    }
    return state;
}

QString AccessibleFolder::text(QAccessible::Text kind) const
{
    if (kind != QAccessible::Description || !isValid()) {
        return AccessibleItem::text(kind);
    }
    // All folders are told as parts of the tree, one below the other.
    int level = 1;
    for (QModelIndex above = index().parent(); above != tree()->rootIndex(); above = above.parent()) {
        ++level;
    }
    return QStringLiteral("Level %1").arg(level);
}

void AccessibleFolder::toggle()
{
    tree()->setExpanded(index(), !tree()->isExpanded(index()));
}

/// The current folder of the tree is the one that the listing shows.
void AccessibleFolder::makeCurrent()
{
    tree()->setFocus(Qt::OtherFocusReason);
    tree()->selectionModel()->setCurrentIndex(
        index(), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}
