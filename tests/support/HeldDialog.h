#pragma once

#include "fileops/MProgress.h"
#include "tests/support/FaultShim.h"
#include "tests/support/TestDir.h"

#include <QPointer>
#include <QSemaphore>
#include <QString>
#include <QWidget>

/// A running dialog whose worker waits in the shim, at its first look at the only item, until it is let go.
class HeldDialog
{
public:
    /// @param kind OperationKind; any other only counts
    explicit HeldDialog(int kind);
    ~HeldDialog();
    HeldDialog(const HeldDialog&) = delete;
    HeldDialog& operator=(const HeldDialog&) = delete;

    void letGo() { m_go.release(); }

    /// @return what the label of that object name shows
    QString text(const char* label) const;
    /// @return what the progress bar shows
    int bar() const;
    /// Refreshes the dialog as its timer would.
    void tick() const;

private:
    TestDir m_dir;
    FaultShim m_shim;
    QSemaphore m_reached;
    QSemaphore m_go;
    QWidget m_panel;

public:
    QPointer<MProgress> dialog; ///< null when it has freed itself
};
