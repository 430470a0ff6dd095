#pragma once

#include "app/PosixHandles.h"

#include <QByteArray>

#include <atomic>
#include <cstddef>
#include <optional>
#include <sys/stat.h>
#include <vector>

/// The entries of one folder, listed at once, and what QFileInfo would tell of them at the price of one look
/// at the disk each. Left out is what QDir leaves out of a list of all entries without system ones: "." and
/// "..", broken links, what is neither file nor folder nor link, and names that are not UTF-8. Hidden entries
/// are in. May be used on any thread.
class WalkEntries
{
public:
    /// What is known of an entry. One that cannot be looked at, since its folder may be listed but not
    /// searched or its path is too long for the system, is a file of no bytes.
    struct Facts
    {
        bool isFolder = false; ///< a folder, or a link to one
        qint64 bytes = 0; ///< size as the file system tells it, of a link's target
        dev_t device = 0; ///< with the number: which folder this is, by whatever path
        ino_t number = 0;
    };

    /// Lists a folder by its path. One that cannot be read has no entries.
    /// @param path the folder's path in the file system's bytes, without "/" at its end unless it is "/"
    /// @param running the listing stops early once this is 0
    WalkEntries(const QByteArray& path, const std::atomic<int>& running);

    /// Lists the folder that is the current entry of another.
    /// @param parent the other, which this one does not refer to afterwards
    /// @param keepOpen whether to hold the folder open as long as this object lives, which makes facts() and
    ///        listing the folders in it cheaper
    /// @param running the listing stops early once this is 0
    WalkEntries(const WalkEntries& parent, bool keepOpen, const std::atomic<int>& running);

    /// Steps to the next entry, in the order of the file system. @return false behind the last
    bool next();
    /// @return path of the current entry, in the file system's bytes
    const QByteArray& path() const { return m_path; }
    /// Looks at the current entry. @return nothing where it is to be left out
    std::optional<Facts> facts();

private:
    WalkEntries(
        FolderListing listing, const QByteArray& path, bool keepOpen, const std::atomic<int>& running);

    void append(const dirent& entry);
    /// Of the current entry: what its path relative to openFolder() is.
    const char* relativePath() const;
    int openFolder() const;
    bool look(struct stat& info, int flags) const;

    std::optional<FolderListing> m_listing; ///< only while the folder is held open
    std::vector<char> m_entries; ///< of each: a byte with its kind, its name, a zero byte
    std::size_t m_nextEntry = 0;
    unsigned char m_kind = 0;
    QByteArray m_path;
    int m_folderLength; ///< of the folder's part of m_path, "/" included
};
