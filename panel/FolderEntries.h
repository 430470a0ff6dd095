#pragma once

#include <QFileInfo>
#include <QMetaType>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

/// Entries of one folder, as the file system model takes them: name and facts. The facts are looked up
/// completely when an entry is made, so that reading them later costs no system call and is safe from any
/// thread.
using FolderEntries = QVector<QPair<QString, QFileInfo>>;

/// What a reading of a folder found, compared with the reading before it. A value that crosses threads.
struct FolderReading
{
    QString folder; ///< absolute path that was read
    bool exists = false; ///< false: the path is gone or is no folder
    bool first = false; ///< nothing was known of the folder before
    bool complete = true; ///< false: a first part of a slow folder, more follows
    FolderEntries entries; ///< everything that is there now, in the listing's order
    FolderEntries changed; ///< what is new or differs
    QStringList removed; ///< names that are gone
};
Q_DECLARE_METATYPE(FolderReading)

/// Sorts entries the way the file system model sorts by name: folders first, then by the user's collation,
/// numbers as numbers and without regard to case. May be called from any thread.
/// @param entries sorted in place
void sortFolderEntries(FolderEntries& entries);

/// Compares two readings of a folder, in whatever order they are. May be called from any thread.
/// @param before entries of the earlier reading
/// @param reading its `entries` are compared; its `changed` and `removed` are filled
void compareFolderEntries(const FolderEntries& before, FolderReading& reading);
