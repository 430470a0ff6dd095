#pragma once

#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"

#include <QModelIndex>
#include <QString>
#include <QStringList>

#include <memory>

class MPanel;

/// What test classes with one panel over a temporary folder have in common: each derives from it besides
/// QObject, and has slots init() and cleanup() that call start() and end().
class PanelFixture
{
protected:
    /// Makes the folders "a/b/c" and "d" and the files "one" (1 byte) and "two" (2 bytes), and shows them.
    void start();
    /// Frees the panel, the window and the temporary folder.
    void end();

    /// Makes the window with its panel.
    /// @param root folder that the panel's tree is rooted at
    void makePanel(const QString& root);
    /// Makes the window, and waits until it is the active one and its panel shows the folder.
    void show(const QString& root);
    /// Selects rows of the listing by their names, in that order, and no others.
    void select(const QStringList& names) const;
    /// @return index of a folder in the tree's model; @p relative to the temporary folder
    QModelIndex treeAt(const QString& relative) const;

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr; ///< the window's
};
