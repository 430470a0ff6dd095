#include "info/WalkEntries.h"

#include "app/FileNames.h"
#include "app/PosixHandles.h"

#include <cstring>

WalkEntries::WalkEntries(FolderListing& folder, const std::atomic<int>& running)
{
    while (const dirent* entry = folder.nextEntry()) {
        if (running.load(std::memory_order_relaxed) == 0) {
            break;
        }
        append(*entry);
    }
}

void WalkEntries::append(const dirent& entry)
{
    const std::size_t length = std::strlen(entry.d_name);
    const bool maybeWanted = entry.d_type == DT_DIR || entry.d_type == DT_REG || entry.d_type == DT_LNK
        || entry.d_type == DT_UNKNOWN;
    if (!maybeWanted || FolderListing::isDots(entry.d_name) || !isFileName(entry.d_name, length)) {
        return;
    }
    m_entries.push_back(static_cast<char>(entry.d_type));
    m_entries.insert(m_entries.end(), entry.d_name, entry.d_name + length + 1);
}

bool WalkEntries::next()
{
    if (m_nextEntry == m_entries.size()) {
        return false;
    }
    m_entry = m_nextEntry;
    m_nextEntry += std::strlen(name()) + 2;
    return true;
}
