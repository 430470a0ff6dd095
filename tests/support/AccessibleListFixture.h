#pragma once

#include "tests/support/AccessibleFixture.h"

class AccessibleList;
class MList;

/// An AccessibleFixture over the folder "d" and the files "a" (4 bytes) and "b" (6 bytes), and the ways to
/// what assistive technology is told of the listing.
class AccessibleListFixture : protected AccessibleFixture
{
protected:
    /// Skips the test where nobody can listen.
    void start();

    MList* list() const;
    AccessibleList* accessible() const;
    QAccessibleTableInterface* table() const { return tableOf(list()); }
    static QAccessibleTableInterface* tableOf(MList* list);
    /// @return the cell of an item; null where there is none
    QAccessibleInterface* cell(const char* name, int column = 0) const;
    static QAccessibleActionInterface* actions(QAccessibleInterface* part) { return part->actionInterface(); }
};
