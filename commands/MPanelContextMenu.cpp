// The context menus of a panel, built afresh from the settings at each click.

#include "panel/MPanel.h"

#include "app/PosixHandles.h"
#include "app/aGlobal.h"
#include "commands/MenuChoice.h"
#include "commands/MenuFilter.h"
#include "panel/MList.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"

#include <QFile>
#include <QMenu>

namespace {

void addEntry(QMenu& menu, const LSMENU& entry)
{
    QAction* action = menu.addAction(entry.label);
    action->setData(entry.code);
    action->setStatusTip(entry.command);
}

} // namespace

void MPanel::ShowContextMenuTree(const QPoint& pos)
{
    if (!takesCommands()) {
        return;
    }
    // The tree's own coordinates here and the viewport's in the listing, on purpose.
    const QPoint globalPos = tree->mapToGlobal(pos);
    const QModelIndex index = tree->indexAt(pos);
    contextPath = treeModel->filePath(index);
    if (index.isValid()) { // a click beside the folders leaves the panel where it is
        currentTreeIndex = index;
        currentPath = contextPath;
    }
    ShowContextMenu(index.data(Qt::DisplayRole).toString(), treeModel->isDir(index) ? 1 : 0, globalPos);
}

void MPanel::ShowContextMenuList(const QPoint& pos)
{
    if (!takesCommands()) {
        return;
    }
    const QPoint globalPos = list->viewport()->mapToGlobal(pos);
    const QModelIndex index = list->indexAt(pos);
    contextPath = listModel->filePath(index);
    ShowContextMenu(contextPath, listModel->isDir(index) ? 1 : 0, globalPos);
}

void MPanel::ShowContextMenu(const QString& path, int isFolder, const QPoint& globalPos)
{
    const QString pattern = isFolder != 0 ? QString() : suffixPattern(path);
    QMenu menu;
    menu.setObjectName(QStringLiteral("Popup"));
    for (const LSMENU& entry : qAsConst(gstMenu)) {
        if (entry.code == CommandSeparator) {
            menu.addSeparator();
        } else if (isOffered(entry, isFolder != 0, pattern)) {
            addEntry(menu, entry);
        }
    }
    const MenuChoice choice(&menu);
    const QString shown = currentPath;
    const QString item = contextPath;
    const HeldFolder folder(QFile::encodeName(shown).constData());
    menu.exec(globalPos);
    if (!takesCommands() || currentPath != shown || !folder.isAt(QFile::encodeName(shown).constData())) {
        return; // the folder went while the menu was open: what was meant is not there any more
    }
    if (const QAction* chosen = choice.entry()) {
        DoAction(chosen->data().toInt(), item, chosen->statusTip());
    }
}
