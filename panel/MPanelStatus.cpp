// The selection and the status texts of a panel.

#include "panel/MPanel.h"

#include "app/TextHelpers.h"
#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MTree.h"
#include "panel/SelectedRows.h"
#include "panel/myFileSystemModel.h"

#include <QLabel>
#include <QStorageInfo>

void MPanel::getSelection()
{
    selectedPaths.clear();
    selectedCount = 0;
    selectedBytes = 0;
    if (tree->hasFocus()) {
        selectedPaths.append(currentPath);
    }
    if (!list->hasFocus()) {
        return;
    }
    forEachSelectedRow(list, [this](const QModelIndex& row) {
        if (listModel->entryName(row) == QLatin1String("..")) {
            return;
        }
        selectedPaths.append(listModel->filePath(row));
        ++selectedCount;
        selectedBytes += listModel->size(row);
    });
}

void MPanel::listSelectionChanged()
{
    if (!list->hasFocus()) {
        showFreeSpace();
        return;
    }
    getSelection();
    if (!selectedPaths.isEmpty()) {
        noteLastPath(selectedPaths.constFirst());
    }
    selectionLabel->setText(QStringLiteral("Selected %1 file(s), %2")
                                .arg(QString::number(selectedCount), FormatBytes(selectedBytes)));
}

void MPanel::showFreeSpace()
{
    const QStorageInfo storage(currentPath);
    const qint64 total = storage.bytesTotal();
    const qint64 available = storage.bytesFree();
    // Single precision; where there is no storage, nothing divided by nothing shows as such.
    const float used = static_cast<float>(total - available) / static_cast<float>(total) * 100.0F;
    selectionLabel->setText(QStringLiteral("%1: %2 %3% used")
                                .arg(QString::fromLocal8Bit(storage.device()), FormatBytes(total),
                                    QString::number(static_cast<double>(used), 'f', 2)));
}

/// The current folder may be on another volume now.
void MPanel::showVolume()
{
    if (!list->hasFocus()) {
        showFreeSpace();
    }
}

void MPanel::listDirectoryLoaded(const QString& path)
{
    qint64 dirs = 0;
    qint64 files = 0;
    qint64 bytes = 0;
    listModel->getFolderStats(path, dirs, files, bytes);
    showCounts(path, dirs, files, bytes);
}

void MPanel::showCounts(const QString& path, qint64 dirs, qint64 files, qint64 bytes)
{
    folderLabel->setText(QStringLiteral("%1 has %2 dirs, %3 files, %4")
                             .arg(path, QString::number(dirs), QString::number(files), FormatBytes(bytes)));
}
