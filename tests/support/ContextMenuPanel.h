#pragma once

#include "app/aGlobal.h"
#include "tests/support/OnePanel.h"

#include <QMenu>
#include <QPoint>
#include <QStringList>

#include <functional>

/// A panel over "root" with the folders "alpha", which has the folder "inner", and "beta.d", the files
/// "Report.TXT" and "Makefile", and "zlink", a link to "alpha". And what is done with its context menu.
class ContextMenuPanel : public OnePanel
{
public:
    /// Makes it, and waits for its listing and for the tree's rows.
    void open();

    /// @param types as gstMenu holds them
    /// @return an entry for gstMenu
    static LSMENU entry(const QString& label, const QString& types, int code = CommandTerminalEx,
        const QString& command = QStringLiteral("no-program"));

    /// Where a menu was, and what it offered: its labels from top to bottom, "-" for a separator.
    struct Shown
    {
        QPoint place;
        QStringList entries;
    };
    /// Runs the menu by @p call, and dismisses it.
    static Shown shownBy(const std::function<void()>& call);

    static void dismiss(QMenu* menu);
    /// Clicks on a row; the first one is 0.
    static void choose(QMenu* menu, int row);
};
