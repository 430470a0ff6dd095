#pragma once

#include <QList>
#include <QMap>
#include <QMutex>
#include <QString>
#include <QStringList>

class MPanel;
class aVantrel;

/// Process-wide settings and shared state. All of it is constructed before main() and lives until exit.
/// Only the GUI thread writes here, except where a line says otherwise.

/// Command codes, as a menu entry carries them and MPanel::DoAction() receives them. The numbers are fixed;
/// CommandDropCopy and CommandDropMove have no keyword in the settings file, so the keywords skip them.
enum CommandCode {
    CommandUnknown = 0,
    CommandProperties = 101,
    CommandTotalSize = 102,
    CommandChecksum = 103,
    CommandSeparator = 104,
    CommandNewDir = 105,
    CommandRename = 106,
    CommandCopy = 107,
    CommandDelete = 108,
    CommandSendTo = 109,
    CommandClipboard = 110,
    CommandDropCopy = 111,
    CommandDropMove = 112,
    CommandCompare = 113,
    CommandExecute = 114,
    CommandTerminal = 115,
    CommandTerminalEx = 116
};

/// Arrangement of the two panels in the main window.
enum WindowArrange { ArrangeSideBySide = 0, ArrangeSinglePanel = 1, ArrangeStacked = 2 };

/// One configured entry of the context menu.
struct LSMENU
{
    int code = CommandUnknown; ///< CommandCode of the keyword; 0 for an unknown keyword
    QString types; ///< lower-case item types, wrapped in "|" on both sides: "|txt|log|"
    QString label; ///< text of the entry
    QString command; ///< argument of the command
};

/// One configured button of the drive bar.
struct LSDRIVE
{
    QString path; ///< folder that the button roots the tree at
    QString label; ///< text of the button
};

// Settings, filled by ReadConfig() before any window exists and only read afterwards.
extern QString gsAppStyleSheet; ///< application style sheet
extern QString gsAppIcon; ///< file name of the window icon
extern QMap<QString, QString> gmFileAssn; ///< lower-case suffix to the command that opens such a file
extern QList<LSMENU> gstMenu; ///< context-menu entries, in file order
extern QList<LSDRIVE> gstDrives; ///< drive buttons, in file order
extern QString gsNoRecurse; ///< expression of the folders that the disk-usage count does not enter
extern int giWindowArrange; ///< WindowArrange; the Window menu changes it as well

// Constants of the window layout, in pixels. No setting changes them.
extern const int giStatusBarHeight;
extern const int giNavBarHeight;
extern const int giDriveBarHeight;

// Texts of the main window and its About box.
extern const QString gsProduct;
extern const QString gsVersion;
extern const QString gsCopywrite;

// The last folder opened or item selected in a panel, written crosswise: the panel in gwPanel1 writes
// gsLastPath2, any other panel writes gsLastPath1.
extern QString gsLastPath1;
extern QString gsLastPath2;

// The pending file operation. Filled on the GUI thread before the operation's dialog is made and read by its
// worker, which takes copies; never refilled while an operation runs.
extern QStringList gslDragList; ///< full paths of the items to act on
extern QString gsDragBase; ///< folder that the items come from
extern QString gsDropBase; ///< destination folder, or the new file's path for a copy to a name
extern QMutex gmutexLock; ///< guards the current-path text of the running operation, between two threads

// Windows. Set while the main window is built, never cleared.
extern MPanel* gwPanel1;
extern MPanel* gwPanel2;
extern aVantrel* gwMainframe;
