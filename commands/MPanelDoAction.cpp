// The command dispatcher: every command of a panel runs through here.

#include "panel/MPanel.h"

#include "app/aGlobal.h"

#include <QClipboard>
#include <QGuiApplication>

void MPanel::gotDrop(Qt::DropAction action, const QString& target)
{
    gsDropBase = target;
    if (action == Qt::CopyAction) {
        DoAction(CommandDropCopy, QString(), QString());
    } else if (action == Qt::MoveAction) {
        DoAction(CommandDropMove, QString(), QString());
    }
}

void MPanel::DoAction(int code, const QString& path, const QString& command)
{
    switch (code) {
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
