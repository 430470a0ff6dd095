#pragma once

#include "panel/MPanel.h"
#include "tests/support/PanelFixture.h"

/// A PanelFixture with a second panel beside the first, over "a/b/shown" with the files "f" (1 byte) and "g"
/// (2 bytes) and the folder "sub", the file "a/b/beside" and the folder "to". Both panels are the
/// application's own two.
class ShownFolderFixture : protected PanelFixture
{
protected:
    void start();
    void end();

    /// @return whether the tests are to take their long forms
    static bool isLong();
    /// @return names in a folder as the listing has to show them, sorted
    static QStringList namesOnDisk(const QString& folder);
    /// Waits until the listing shows a folder as it is on disk, the sizes of its files included; prints what
    /// differs where it never does.
    static bool showsTheDisk(const MPanel* which, const QString& folder);

    /// Opens a folder step by step, as a user does.
    void open(MPanel* which, const QString& relative) const;
    /// Runs a command of the panel as its menu does.
    /// @param operation "copy" or "move" of "a/b/shown/f" into "to", "delete" or "rename" of it, or
    ///        "new folder" in the folder that is shown
    void runOperation(const QString& operation) const;

    std::unique_ptr<MPanel> other;
};
