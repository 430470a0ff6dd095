#pragma once

#include <QModelIndex>
#include <QString>
#include <QStringList>
#include <QWidget>

class MPanel;

/// A shown window with one panel that fills it, and the shared state that panels work with as it is after
/// start-up without settings. The destructor frees the panel and puts that state back.
class PanelWindow
{
public:
    /// @param root folder that the panel's tree is rooted at; empty keeps gstDrives as it is
    explicit PanelWindow(const QString& root, const QSize& size = QSize(1000, 600));
    ~PanelWindow();
    PanelWindow(const PanelWindow&) = delete;
    PanelWindow& operator=(const PanelWindow&) = delete;

    /// Shows the window and waits until it is the active one, which views need to have the focus.
    bool activate();

    QWidget window;
    MPanel* panel = nullptr;
};

/// Waits until the listing shows the folder that it was rooted at last.
bool waitForList(const MPanel* panel);
/// Opens a folder in the listing and waits until it is there.
bool openFolder(MPanel* panel, const QString& path);
/// Waits until the tree shows a row for a folder.
bool waitForTreeRow(const MPanel* panel, const QString& path);

/// Reads a folder that no panel shows, and waits for that: what was asked of the threads that read, and what
/// was posted, before has come by then.
bool readAnotherFolder();

/// @return texts of column 0 of the listing, from top to bottom, ".." included
QStringList listNames(const MPanel* panel);
/// @return index of the listing's row with that name; invalid where there is none
QModelIndex listIndex(const MPanel* panel, const QString& name, int column = 0);
/// @return text of a cell of the listing; null where there is no such row
QString listText(const MPanel* panel, const QString& name, int column);
/// @return folders of the tree that can be seen, from top to bottom, blank ones as empty texts
QStringList treeNames(const MPanel* panel);
