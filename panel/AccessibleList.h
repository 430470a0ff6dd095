#pragma once

#include "panel/AccessibleView.h"

class MList;

/// The listing, as assistive technology is told of it: a table with the rows of the folder that is shown.
/// Qt's own table would tell the number of rows at the top of the model. It exists only where assistive
/// technology asks. GUI thread only.
class AccessibleList final : public AccessibleView
{
public:
    /// Lets Qt make one of these for every MList from now on; may be called any number of times.
    static void install();

    explicit AccessibleList(MList* owner);

    QAccessible::State state() const override;
    QAccessibleInterface* child(int index) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    int childCount() const override;

    QAccessibleInterface* cellAt(int row, int column) const override;
    int columnCount() const override;
    int rowCount() const override;
    QString columnDescription(int column) const override;

    int selectedCellCount() const override;
    QList<QAccessibleInterface*> selectedCells() const override;
    int selectedColumnCount() const override;
    QList<int> selectedColumns() const override;
    bool isColumnSelected(int column) const override;
    int selectedRowCount() const override;
    QList<int> selectedRows() const override;
    bool isRowSelected(int row) const override;
    bool selectRow(int row) override;
    bool selectColumn(int column) override;
    bool unselectRow(int row) override;
    bool unselectColumn(int column) override;

private:
    MList* list() const;
    QModelIndex rowIndex(int row) const;
    bool select(int row, bool on);
};
