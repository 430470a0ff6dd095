#pragma once

#include <QFileInfo>
#include <QMetaType>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <vector>

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
    bool replaced = false; ///< it is not the folder that was read before: files of the same names are others
    quint64 device = 0; ///< with `number`, which folder it is
    quint64 number = 0; ///< inode number
    FolderEntries entries; ///< everything that is there now, in the listing's order
    FolderEntries changed; ///< what is new or differs
    QStringList removed; ///< names that are gone
    qint64 dirs = 0; ///< number of folders among the entries, ".." not counted
    qint64 files = 0; ///< number of the others
    qint64 bytes = 0; ///< sum of the sizes of all but "..", folders included
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

/// Counts the entries of a reading into its totals. May be called from any thread.
void countFolderEntries(FolderReading& reading);

/// Gives the order of entries by a column of the listing: by owner text or by time, equal ones by
/// name, folders not apart. May be called from any thread.
/// @param entries the entries, in the order of sortFolderEntries()
/// @param column 2 for the owner, 3 for the time, any other for the order as it is
/// @param ownerText text of the owner column for an entry
/// @return positions in @p entries, first row first
std::vector<int> orderFolderEntries(
    const FolderEntries& entries, int column, const std::function<QString(const QFileInfo&)>& ownerText);
