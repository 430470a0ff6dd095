#pragma once

#include <QAbstractItemView>
#include <QItemSelectionModel>

#include <vector>

/// Calls a function for each selected row of a view, with the index in column 0, in the order in which the
/// selection model's selectedRows() gives them. That function itself searches all ranges for each row, which
/// takes minutes for some ten thousand rows; here whole ranges are walked once.
/// @param view a view that selects rows
/// @param act called with a QModelIndex
template <typename Act>
void forEachSelectedRow(const QAbstractItemView* view, const Act& act)
{
    const QAbstractItemModel* model = view->model();
    const QItemSelection selection = view->selectionModel()->selection();
    for (const QItemSelectionRange& range : selection) {
        if (range.left() != 0 || range.right() != model->columnCount(range.parent()) - 1) {
            continue; // single cells, which only a program can select
        }
        for (int row = range.top(); row <= range.bottom(); ++row) {
            act(model->index(row, 0, range.parent()));
        }
    }
}

/// @param selected for each row of @p parent whether it is selected
/// @return the selected rows, with one range for each run of them
inline QItemSelection rowsSelection(
    const QAbstractItemModel* model, const QModelIndex& parent, const std::vector<bool>& selected)
{
    const int lastColumn = model->columnCount(parent) - 1;
    const auto count = static_cast<int>(selected.size());
    QItemSelection selection;
    int first = 0;
    for (int row = 0; row <= count; ++row) {
        if (row < count && selected[static_cast<std::size_t>(row)]) {
            continue;
        }
        if (first < row) {
            selection.append(QItemSelectionRange(
                model->index(first, 0, parent), model->index(row - 1, lastColumn, parent)));
        }
        first = row + 1;
    }
    return selection;
}
