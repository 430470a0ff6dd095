// The command dispatcher: every command of a panel runs through here.

#include "panel/MPanel.h"

#include "app/aGlobal.h"
#include "commands/DialogNewDir.h"
#include "commands/OneOperation.h"
#include "commands/Rename.h"
#include "info/Checksum.h"
#include "info/DialogFileSize.h"
#include "info/MProperties.h"
#include "panel/MList.h"
#include "panel/MTree.h"

#include <QClipboard>
#include <QGuiApplication>

namespace {

template <typename Dialog>
void runDialog(MPanel* panel, const QString& path)
{
    Dialog dialog(panel, path);
    dialog.exec();
}

bool preparesOperation(int code)
{
    return code == CommandCopy || code == CommandDelete || code == CommandDropCopy || code == CommandDropMove;
}

} // namespace

void MPanel::gotDrop(Qt::DropAction action, const QString& target)
{
    if (OneOperation::stands()) {
        return;
    }
    gsDropBase = target;
    if (action == Qt::CopyAction) {
        DoAction(CommandDropCopy, QString(), QString());
    } else if (action == Qt::MoveAction) {
        DoAction(CommandDropMove, QString(), QString());
    }
}

void MPanel::DoAction(int code, const QString& path, const QString& command)
{
    if (preparesOperation(code) && OneOperation::stands()) {
        return;
    }
    switch (code) {
    case CommandProperties:
        runDialog<MProperties>(this, path);
        break;
    case CommandTotalSize:
        runDialog<DialogFileSize>(this, path);
        break;
    case CommandChecksum:
        runDialog<Checksum>(this, path);
        break;
    case CommandNewDir:
        runDialog<DialogNewDir>(this, currentPath);
        break;
    case CommandRename:
        runDialog<Rename>(this, path);
        break;
    case CommandCopy:
        copySelected(path);
        break;
    case CommandDelete:
        deleteSelected();
        break;
    case CommandClipboard:
        copyPathsToClipboard();
        break;
    case CommandDropCopy:
    case CommandDropMove:
        dropPending(code);
        break;
    case CommandSendTo:
    case CommandTerminalEx:
        Launcher(command, path, QString(), currentPath);
        break;
    case CommandCompare:
        Launcher(command, gsLastPath2, gsLastPath1, currentPath);
        break;
    case CommandExecute:
        Launcher(path, QString(), QString(), currentPath);
        break;
    case CommandTerminal:
        Launcher(command, QString(), QString(), currentPath);
        break;
    default:
        break;
    }
}

void MPanel::copyPathsToClipboard()
{
    getSelection();
    QString text;
    for (const QString& path : qAsConst(selectedPaths)) {
        text += path + QLatin1Char('\n');
    }
    QGuiApplication::clipboard()->setText(text, QClipboard::Clipboard);
}
