#pragma once

#include "panel/AccessibleItem.h"

/// A cell of the listing, as assistive technology is told of it. "press" opens it as a double-click does,
/// "toggle" selects its row or not.
class AccessibleCell final : public AccessibleItem
{
public:
    using AccessibleItem::AccessibleItem;

    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    QList<QAccessibleInterface*> columnHeaderCells() const override;

private:
    void toggle() override;
    void makeCurrent() override;
    void choose() override;
    const char* pressSlot() const override { return "openCurrent"; }
};
