// The commands that start a file operation: copy, delete, and the end of a drag.

#include "panel/MPanel.h"

#include "app/KeyboardWatch.h"
#include "app/MessageBoxes.h"
#include "app/PosixHandles.h"
#include "app/TextHelpers.h"
#include "app/WindowSystem.h"
#include "app/aGlobal.h"
#include "commands/OneOperation.h"
#include "fileops/MCopy.h"
#include "fileops/MProgress.h"
#include "panel/MList.h"
#include "panel/MTree.h"
#include "panel/SelectedRows.h"
#include "panel/myFileSystemModel.h"

#include <QApplication>
#include <QByteArray>
#include <QPair>
#include <QPointer>
#include <QVector>

#include <memory>
#include <sys/stat.h>

namespace {

/// How long a window manager may take to give the keyboard to a window, in milliseconds.
constexpr int momentMs = 1000;

/// @return the folder that the pending items are in, which is one for all; null where there are none
std::shared_ptr<const HeldFolder> folderOfItems()
{
    if (gslDragList.isEmpty()) {
        return nullptr;
    }
    const QByteArray item = gslDragList.constFirst().toUtf8();
    const QByteArray above = item.left(item.lastIndexOf('/'));
    return std::make_shared<const HeldFolder>(above.isEmpty() ? "/" : above.constData());
}

/// Asks, and runs the pending operation if the answer is Yes.
void askAndRun(QWidget* parent, const QString& question, int kind)
{
    const OneOperation here;
    const KeyboardWatch keyboard;
    const std::shared_ptr<const HeldFolder> folder = folderOfItems(); // before there is time to swap it
    if (!questionBox(parent, gsProduct, question)) {
        return;
    }
    const QPointer<MProgress> progress
        = new MProgress(parent, kind, folder); // frees itself when it has been executed
    progress->exec();
    if (!keyboard.isOurs()) {
        return; // the user has gone to another program, and types there
    }
    // Where a question and the dialog close together, some window managers leave the keyboard to nobody.
    askForKeyboard(parent->window());
    const QWidget* active = QApplication::activeWindow();
    if ((active == nullptr || !active->isVisible()) && progress && progress->undisturbedMs() < momentMs) {
        // The dialog came and went while the window manager was still giving the keyboard from the question
        // back to the window. Qt hands it on to the dialog then, and is never told that the window has it.
        noteKeyboard(parent->window());
    }
}

QString askDestination(QWidget* parent)
{
    MCopy dialog(parent);
    dialog.exec();
    return dialog.destination;
}

/// The folders that the destination is in, itself included. Names do not tell: links and ".." lead to a
/// folder by other ways. Of a destination that is still to be made, what is there of its path counts.
class FoldersAbove
{
public:
    explicit FoldersAbove(QString path)
    {
        Descriptor folder = open(AT_FDCWD, path.toUtf8());
        while (folder.number() < 0 && !path.isEmpty()) {
            path.truncate(path.lastIndexOf(QLatin1Char('/')));
            folder = open(AT_FDCWD, path.toUtf8());
        }
        // Up by the folders themselves: on the way there may be names that are no text.
        struct stat info;
        while (::fstat(folder.number(), &info) == 0 && !m_folders.contains({info.st_dev, info.st_ino})) {
            m_folders.append({info.st_dev, info.st_ino});
            folder = open(folder.number(), "..");
        }
    }

    /// @return whether the item is one of them. A link to one is not
    bool contain(const QString& item) const
    {
        struct stat info;
        return ::lstat(item.toUtf8().constData(), &info) == 0 && S_ISDIR(info.st_mode)
            && m_folders.contains({info.st_dev, info.st_ino});
    }

private:
    static Descriptor open(int from, const QByteArray& path)
    {
        return Descriptor(::openat(from, path.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    }

    QVector<QPair<dev_t, ino_t>> m_folders;
};

/// @return whether two paths lead to one folder that is there, however they are spelt
bool isSameFolder(const QString& one, const QString& other)
{
    struct stat first;
    struct stat second;
    return ::stat(one.toUtf8().constData(), &first) == 0 && ::stat(other.toUtf8().constData(), &second) == 0
        && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// @return path of an item once it is in the folder gsDropBase
QString droppedPath(const QString& item)
{
    const QString name = item.mid(item.lastIndexOf(QLatin1Char('/')) + 1);
    return gsDropBase == QLatin1String("/") ? gsDropBase + name : gsDropBase + QLatin1Char('/') + name;
}

} // namespace

void MPanel::deleteSelected()
{
    getSelection();
    gslDragList = selectedPaths;
    askAndRun(this, QStringLiteral("Delete selected files in folder: \n\n") + currentPath, OpDelete);
}

MPanel::CopySource MPanel::listSelectionForCopy()
{
    CopySource source;
    forEachSelectedRow(list, [&](const QModelIndex& row) {
        const QString name = listModel->entryName(row);
        if (name == QLatin1String("..")) {
            return;
        }
        source.name = name;
        source.paths.append(listModel->filePath(row));
        source.hasFolder = source.hasFolder || listModel->isDir(row);
    });
    return source;
}

void MPanel::copySelected(const QString& path)
{
    // All is taken before the dialog takes the focus: while it stands the folder can go, and the panel goes
    // to the one above. It is also what the user saw when the command was given.
    const bool treeHadFocus = tree->hasFocus();
    const QString folder = currentPath;
    const CopySource source = list->hasFocus() ? listSelectionForCopy() : CopySource();
    const QString destination = askDestination(this);
    if (destination.isEmpty()) {
        return;
    }
    gsDropBase = destination;
    if (!destination.startsWith(QLatin1Char('/'))) {
        gsDropBase = folder + QLatin1Char('/') + destination;
    }
    gslDragList = source.paths;
    if (gslDragList.size() == 1 && !source.hasFolder) {
        if (destination.endsWith(QLatin1Char('/'))) {
            gsDropBase += source.name;
        }
        askAndRun(this, QStringLiteral("Copy selected file to: \n\n") + gsDropBase, OpCopyTo);
        return;
    }
    if (treeHadFocus) {
        gslDragList.append(folder);
        gsDragBase = xs_UpOneLevel(folder);
    }
    DoAction(CommandDropCopy, path, QString());
}

void MPanel::dropPending(int code)
{
    const QStringList items = gslDragList;
    const FoldersAbove above(gsDropBase);
    int samePlace = 0;
    int insideSource = 0;
    for (const QString& item : items) {
        const QString target = droppedPath(item);
        // By another spelling ("/a/b/..", "/a/", a link) the files would be replaced by themselves, and
        // emptied.
        samePlace += target == item || isSameFolder(gsDropBase, xs_UpOneLevel(item)) ? 1 : 0;
        // A plain prefix on purpose, without regard to "/": copying /a/b into /a/bc is refused as well.
        // A copy of a folder into itself by another way would go on until the disk is full.
        insideSource += target.startsWith(item) || above.contain(item) ? 1 : 0;
    }
    if (samePlace != 0) {
        return;
    }
    if (insideSource != 0) {
        criticalBox(this, gsProduct,
            QStringLiteral(
                "I'm sorry Dave, I'm afraid I can't do that.\nThe destination is a child of the source"));
        return;
    }
    const bool copies = code == CommandDropCopy;
    askAndRun(this,
        (copies ? QStringLiteral("Copy selected files to folder: \n\n")
                : QStringLiteral("Move selected files to folder: \n\n"))
            + gsDropBase,
        copies ? OpCopy : OpMove);
}
