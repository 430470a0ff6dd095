#include "panel/AccessibleCell.h"

#include "panel/AccessibleParts.h"
#include "panel/myFileSystemModel.h"

#include <QAbstractItemView>
#include <QItemSelectionModel>

QAccessible::Role AccessibleCell::role() const
{
    return QAccessible::Cell;
}

QAccessible::State AccessibleCell::state() const
{
    QAccessible::State state = AccessibleItem::state();
    state.multiSelectable = state.selectable;
    return state;
}

QString AccessibleCell::text(QAccessible::Text kind) const
{
    if (kind != QAccessible::Description || !isValid() || index().column() != 0) {
        return AccessibleItem::text(kind);
    }
    // What the icon shows.
    const auto* model = static_cast<const myFileSystemModel*>(index().model());
    if (model->fileInfo(index()).isSymLink()) {
        return QStringLiteral("Link");
    }
    return model->isDir(index()) ? QStringLiteral("Folder") : QString();
}

QList<QAccessibleInterface*> AccessibleCell::columnHeaderCells() const
{
    QAccessibleInterface* header = isValid() ? parts()->header(Qt::Horizontal, index().column()) : nullptr;
    return header != nullptr ? QList<QAccessibleInterface*>{header} : QList<QAccessibleInterface*>();
}

void AccessibleCell::toggle()
{
    view()->selectionModel()->select(index(), QItemSelectionModel::Toggle | QItemSelectionModel::Rows);
}

void AccessibleCell::makeCurrent()
{
    view()->setFocus(Qt::OtherFocusReason);
    view()->selectionModel()->setCurrentIndex(index(), QItemSelectionModel::NoUpdate);
}

/// What is selected already stays so.
void AccessibleCell::choose()
{
    makeCurrent();
    if (!isSelected()) {
        view()->selectionModel()->select(
            index(), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    }
}
