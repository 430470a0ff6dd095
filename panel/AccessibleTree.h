#pragma once

#include <QAccessibleWidget>

#include <memory>

class AccessibleParts;
class MTree;

/// The tree, as assistive technology is told of it: a table of one column with the folders that are unfolded.
/// Qt's own offers nothing to do with them. It exists only where assistive technology asks. GUI thread only.
class AccessibleTree final : public QAccessibleWidget, public QAccessibleTableInterface
{
public:
    /// Lets Qt make one of these for every MTree from now on; may be called any number of times.
    static void install();

    explicit AccessibleTree(MTree* owner);
    ~AccessibleTree() override;

    void* interface_cast(QAccessible::InterfaceType type) override;
    /// @param index a number as Qt's tree view has them in its events: row by row from the header, which is
    /// hidden,
    ///              with all columns
    /// @return the folder; null where the number is that of something that is hidden
    QAccessibleInterface* child(int index) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface* part) const override;

    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override;
    int columnCount() const override { return 1; }
    int rowCount() const override;
    QString columnDescription(int column) const override;
    QString rowDescription(int row) const override;

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

    void modelChange(QAccessibleTableModelChangeEvent* event) override;

    /// @return folders that are kept for assistive technology
    int keptParts() const;

private:
    std::unique_ptr<AccessibleParts> m_parts;
};
