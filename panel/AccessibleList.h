#pragma once

#include <QAccessibleWidget>

#include <memory>

class AccessibleParts;
class MList;

/// The listing, as assistive technology is told of it: a table with the rows of the folder that is shown.
/// Qt's own table would tell the number of rows at the top of the model. It exists only where assistive
/// technology asks. GUI thread only.
class AccessibleList final : public QAccessibleWidget, public QAccessibleTableInterface
{
public:
    /// Lets Qt make one of these for every MList from now on; may be called any number of times.
    static void install();

    explicit AccessibleList(MList* owner);
    ~AccessibleList() override;

    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;
    QAccessibleInterface* child(int index) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface* part) const override;

    QAccessibleInterface* caption() const override;
    QAccessibleInterface* summary() const override;
    QAccessibleInterface* cellAt(int row, int column) const override;
    int columnCount() const override;
    int rowCount() const override;
    QString columnDescription(int column) const override;
    QString rowDescription(int row) const override;

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

    void modelChange(QAccessibleTableModelChangeEvent* event) override;

    /// @return cells and sections that are kept for assistive technology
    int keptParts() const;

private:
    MList* list() const;
    QModelIndex rowIndex(int row) const;
    bool select(int row, bool on);

    std::unique_ptr<AccessibleParts> m_parts;
};
