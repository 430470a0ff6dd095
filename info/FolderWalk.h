#pragma once

#include "app/PosixHandles.h"
#include "info/WalkEntries.h"

#include <QPair>
#include <QSet>
#include <QString>

#include <atomic>
#include <cstddef>
#include <optional>
#include <sys/stat.h>
#include <vector>

/// A walk through the entries of a folder and of those folders below it that the caller enters, at the price
/// of one look at the disk for each entry. It goes as deep as the folders do, also where a path is too long
/// for the system: a folder is opened by the one above, and that one is found again by "..". Only the last
/// few folders on the way down are open. Names are those of WalkEntries. May be used on any thread.
class FolderWalk
{
public:
    /// What is known of an entry. One that cannot be looked at, since its folder may be listed but not
    /// searched, is a file of no bytes.
    struct Facts
    {
        bool isFolder = false; ///< a folder, or a link to one
        qint64 bytes = 0; ///< size as the file system tells it, of a link's target
        dev_t device = 0;
    };

    /// Begins with the entries of a folder. One that cannot be read, or is on another device, has none.
    /// @param path the folder's path, without "/" at its end unless it is "/"
    /// @param device where it has to be
    /// @param running the walk ends early once this is 0
    FolderWalk(QString path, dev_t device, const std::atomic<int>& running);

    /// Steps to the next entry: of the folder that was entered last or, behind its last, of the one above it.
    /// Left out is what is left of a folder that was moved or removed and cannot be found again.
    /// @return false behind the last of all
    bool next();
    /// @return path of the current entry, however long; valid until the next call
    const QString& path();
    /// Looks at the current entry. @return nothing where it is to be left out
    std::optional<Facts> facts() const;
    /// Goes on with the entries of the current entry. Nothing happens where it cannot be read, is one of the
    /// folders above, by way of a link, or is on another device.
    /// @param device where it has to be
    void enter(dev_t device);

private:
    using Place = QPair<quint64, quint64>; ///< device and number: which folder it is, by whatever path

    /// A folder on the way down.
    struct Level
    {
        Place place;
        std::optional<FolderListing> folder; ///< while it is open, as the first and the last always are
        WalkEntries entries;
        int pathLength; ///< of its path in m_path, "/" included
    };

    static std::optional<Place> placeOf(const FolderListing& folder);

    void push(FolderListing folder, dev_t device);
    void pop();
    void leave();
    FolderListing open(const FolderListing& from, const char* name);
    bool reopen(std::size_t level, const FolderListing& from, const char* name);
    void reopenByNames();
    void closeFarAbove(std::size_t level);
    void closeAllBut(const FolderListing& wanted);

    const std::atomic<int>& m_running;
    QString m_path; ///< one for the whole walk: of the last level, and perhaps more
    std::vector<Level> m_levels;
    QSet<Place> m_places; ///< of all levels
};
