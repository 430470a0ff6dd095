// Keys of a panel that stand for commands.

#include "panel/MPanel.h"

#include "app/HeldKeys.h"
#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/SelectedRows.h"
#include "panel/myFileSystemModel.h"

#include <QKeyEvent>

namespace {

/// The command of a key. The modifiers are not looked at on purpose: Ctrl+C copies like C.
int commandOfKey(int key)
{
    switch (key) {
    case Qt::Key_P:
        return CommandProperties;
    case Qt::Key_S:
        return CommandTotalSize;
    case Qt::Key_N:
        return CommandNewDir;
    case Qt::Key_R:
        return CommandRename;
    case Qt::Key_C:
        return CommandCopy;
    case Qt::Key_Delete:
        return CommandDelete;
    case Qt::Key_X:
        return CommandExecute;
    default:
        return CommandUnknown;
    }
}

} // namespace

/// @return what a key's command acts on: the selected row, by its own path; without one, the current folder.
///         The names of several are chained one after the other on purpose, ".." included
QString MPanel::keyPath() const
{
    QString path;
    forEachSelectedRow(list, [&](const QModelIndex& row) {
        path
            = path.isEmpty() ? listModel->filePath(row) : path + QLatin1Char('/') + listModel->entryName(row);
    });
    return path.isEmpty() ? currentPath : path;
}

bool MPanel::mykeyPressEvent(QKeyEvent* event)
{
    const int code = commandOfKey(event->key());
    if (code == CommandUnknown) {
        return false;
    }
    const bool isHeld = event->isAutoRepeat() || HeldKeys::isRepeating(); // which is one command
    if (takesCommands() && !isHeld) {
        DoAction(code, keyPath(), QString());
    }
    return true;
}
