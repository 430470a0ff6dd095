#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

class FolderListing;
struct dirent;

/// The names in one folder, listed at once. Left out is what QDir leaves out of a list of all entries without
/// system ones, as far as the listing tells it: "." and "..", what is neither file nor folder nor link, and
/// names that are not UTF-8. Hidden entries are in. May be used on any thread.
class WalkEntries
{
public:
    /// @param folder an open folder of which nothing has been read, which this object does not refer to
    ///        afterwards
    /// @param running the listing stops early once this is 0
    WalkEntries(FolderListing& folder, const std::atomic<int>& running);

    /// Steps to the next entry, in the order of the file system. @return false behind the last
    bool next();
    /// @return name of the current entry, in the file system's bytes
    const char* name() const { return &m_entries[m_entry + 1]; }
    /// @return its kind as the listing tells it: DT_DIR, DT_REG, DT_LNK or DT_UNKNOWN
    unsigned char kind() const { return static_cast<unsigned char>(m_entries[m_entry]); }

private:
    void append(const dirent& entry);

    std::vector<char> m_entries; ///< of each: a byte with its kind, its name, a zero byte
    std::size_t m_entry = 0;
    std::size_t m_nextEntry = 0;
};
