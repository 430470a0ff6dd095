#pragma once

#include "panel/AccessibleItem.h"

class QTreeView;

/// A folder of the tree, as assistive technology is told of it. "press" shows it in the listing, as a click
/// does; "toggle" folds or unfolds it.
class AccessibleFolder final : public AccessibleItem
{
public:
    using AccessibleItem::AccessibleItem;

    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;

private:
    void toggle() override;
    void makeCurrent() override;
    void choose() override { makeCurrent(); }
    const char* pressSlot() const override { return nullptr; }
    QTreeView* tree() const;
};
