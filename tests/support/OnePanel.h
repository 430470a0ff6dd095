#pragma once

#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"

#include <memory>

/// A panel in a window of its own, over the folder "root" of a test folder. What happens in make() and show()
/// may fail the running test.
class OnePanel
{
public:
    /// Makes the test folder with "root", which is to be filled before show().
    void make();
    /// Shows the panel, and waits until its window is the active one and the listing is there.
    void show(const QSize& size = QSize(700, 500));
    void close();

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    QString root; ///< full path of "root"
};
