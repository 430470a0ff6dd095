#pragma once

#include "panel/AccessibleView.h"

class MTree;

/// The tree, as assistive technology is told of it: a table of one column with the folders that are unfolded.
/// Qt's own offers nothing to do with them. It exists only where assistive technology asks. GUI thread only.
class AccessibleTree final : public AccessibleView
{
public:
    /// Lets Qt make one of these for every MTree from now on; may be called any number of times.
    static void install();

    explicit AccessibleTree(MTree* owner);

    /// @param index a number as Qt's tree view has them in its events: row by row from the header, which is
    /// hidden,
    ///              with all columns
    /// @return the folder; null where the number is that of something that is hidden
    QAccessibleInterface* child(int index) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    int childCount() const override;

    QAccessibleInterface* cellAt(int row, int column) const override;
    int columnCount() const override { return 1; }
    int rowCount() const override;
    QString columnDescription(int column) const override;

    int selectedCellCount() const override { return selectedRowCount(); }
    QList<QAccessibleInterface*> selectedCells() const override;
    int selectedColumnCount() const override { return 0; }
    QList<int> selectedColumns() const override { return {}; }
    bool isColumnSelected(int /*column*/) const override { return false; }
    int selectedRowCount() const override { return selectedRows().size(); }
    QList<int> selectedRows() const override;
    bool isRowSelected(int row) const override;
    bool selectRow(int row) override;
    bool selectColumn(int /*column*/) override { return false; }
    bool unselectRow(int /*row*/) override { return false; } // one folder is always the current one
    bool unselectColumn(int /*column*/) override { return false; }
};
