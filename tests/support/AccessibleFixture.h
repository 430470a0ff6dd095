#pragma once

#include "tests/support/PanelFixture.h"

#include <QAccessible>
#include <QList>

/// A PanelFixture for what assistive technology is told, which it notes as long as it lives. It stands for
/// QTestAccessibility, whose header may be included in one source of a program only.
class AccessibleFixture : protected PanelFixture
{
public:
    AccessibleFixture(const AccessibleFixture&) = delete;
    AccessibleFixture& operator=(const AccessibleFixture&) = delete;

protected:
    AccessibleFixture();
    ~AccessibleFixture();

    /// Frees the panel and lets nobody listen any more.
    void end();

    /// @return what has been told since clearEvents(), oldest first
    static QList<QAccessibleEvent*> events();
    static void clearEvents();
};
