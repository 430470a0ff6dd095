#include "info/WalkEntries.h"

#include "app/FileNames.h"

#include <climits>
#include <cstring>
#include <fcntl.h>

namespace {

unsigned char kindOf(mode_t mode)
{
    return static_cast<unsigned char>(IFTODT(mode));
}

} // namespace

WalkEntries::WalkEntries(const QByteArray& path, const std::atomic<int>& running)
    : WalkEntries(FolderListing(path.constData()), path, true, running)
{
}

WalkEntries::WalkEntries(const WalkEntries& parent, bool keepOpen, const std::atomic<int>& running)
    : WalkEntries(FolderListing(parent.openFolder(), parent.relativePath()), parent.m_path, keepOpen, running)
{
}

WalkEntries::WalkEntries(
    FolderListing listing, const QByteArray& path, bool keepOpen, const std::atomic<int>& running)
    : m_listing(std::move(listing))
    , m_path(path.endsWith('/') ? path : path + '/')
    , m_folderLength(m_path.size())
{
    if (!m_listing->isOpen()) {
        return;
    }
    while (const dirent* entry = m_listing->nextEntry()) {
        if (running.load(std::memory_order_relaxed) == 0) {
            break;
        }
        append(*entry);
    }
    if (!keepOpen) {
        m_listing.reset();
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
    m_kind = static_cast<unsigned char>(m_entries[m_nextEntry]);
    const char* name = &m_entries[m_nextEntry + 1];
    const std::size_t length = std::strlen(name);
    m_path.truncate(m_folderLength);
    m_path.append(name, static_cast<int>(length));
    m_nextEntry += length + 2;
    return true;
}

std::optional<WalkEntries::Facts> WalkEntries::facts()
{
    struct stat info
    {
    };
    if (m_kind == DT_UNKNOWN && look(info, AT_SYMLINK_NOFOLLOW)) {
        m_kind = kindOf(info.st_mode);
    }
    if (m_kind != DT_DIR && m_kind != DT_REG && m_kind != DT_LNK) {
        return std::nullopt;
    }
    if (look(info, 0)) {
        return Facts{S_ISDIR(info.st_mode), info.st_size, info.st_dev, info.st_ino};
    }
    return m_kind == DT_LNK ? std::nullopt : std::make_optional<Facts>();
}

bool WalkEntries::look(struct stat& info, int flags) const
{
    if (m_path.size() >= PATH_MAX) {
        return false; // no call that takes a path could
    }
    return ::fstatat(openFolder(), relativePath(), &info, flags) == 0;
}

int WalkEntries::openFolder() const
{
    return m_listing ? m_listing->number() : AT_FDCWD;
}

const char* WalkEntries::relativePath() const
{
    return m_path.constData() + (m_listing ? m_folderLength : 0);
}
