#pragma once

#include "tests/support/TestDir.h"

#include <memory>

class MPanel;
class QWidget;
class aVantrel;

/// The main window over a folder with the folders "d" and "e" and the files "a" (4 bytes) and "b" (2 bytes),
/// which is the drive "One"; "e" is the drive "Two" and what the second panel shows. The destructor puts all
/// settings back.
class TwoPanels
{
public:
    TwoPanels();
    ~TwoPanels();
    TwoPanels(const TwoPanels&) = delete;
    TwoPanels& operator=(const TwoPanels&) = delete;

    /// Waits until the window is the active one and all is loaded, and gives the first listing the focus.
    bool ready();
    /// Chooses from the menu "Window".
    /// @param action object name of the action
    void arrange(const char* action) const;

    TestDir dir;
    std::unique_ptr<aVantrel> window;
    MPanel* panel = nullptr; ///< the first one
    MPanel* other = nullptr; ///< the second one
};
