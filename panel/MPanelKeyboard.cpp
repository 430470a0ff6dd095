// Keys of a panel that stand for commands.

#include "panel/MPanel.h"

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

bool MPanel::mykeyPressEvent(QKeyEvent* event)
{
    const int code = commandOfKey(event->key());
    if (code == CommandUnknown) {
        return false;
    }
    // Several selected names are chained one after the other on purpose, ".." included: with one row this is
    // its path.
    QString path = currentPath;
    forEachSelectedRow(list, [&](const QModelIndex& row) {
        path += QLatin1Char('/') + listModel->data(row, Qt::DisplayRole).toString();
    });
    DoAction(code, path, QString());
    return true;
}
