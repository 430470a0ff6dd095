#include "info/FolderWalk.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>

namespace {

// Folders on the way down that are held open; more could use up the process's descriptors.
constexpr std::size_t openFolders = 16;

unsigned char kindOf(mode_t mode)
{
    return static_cast<unsigned char>(IFTODT(mode));
}

} // namespace

FolderWalk::FolderWalk(QString path, dev_t device, const std::atomic<int>& running)
    : m_running(running)
    , m_path(std::move(path))
{
    push(FolderListing(QFile::encodeName(m_path).constData()), device);
}

bool FolderWalk::next()
{
    while (!m_levels.empty() && m_running.load(std::memory_order_relaxed) != 0) {
        if (m_levels.back().entries.next()) {
            return true;
        }
        leave();
    }
    return false;
}

const QString& FolderWalk::path()
{
    const Level& level = m_levels.back();
    m_path.truncate(level.pathLength);
    m_path.append(QFile::decodeName(level.entries.name()));
    return m_path;
}

std::optional<FolderWalk::Facts> FolderWalk::facts() const
{
    const Level& level = m_levels.back();
    const auto look = [&level](struct stat& info, int flags) {
        return ::fstatat(level.folder->number(), level.entries.name(), &info, flags) == 0;
    };
    struct stat info
    {
    };
    unsigned char kind = level.entries.kind();
    if (kind == DT_UNKNOWN && look(info, AT_SYMLINK_NOFOLLOW)) {
        kind = kindOf(info.st_mode);
    }
    if (kind != DT_DIR && kind != DT_REG && kind != DT_LNK) {
        return std::nullopt;
    }
    if (look(info, 0)) {
        return Facts{S_ISDIR(info.st_mode), info.st_size, info.st_dev};
    }
    return kind == DT_LNK ? std::nullopt : std::make_optional<Facts>();
}

void FolderWalk::enter(dev_t device)
{
    path(); // of which the folder's begins
    const Level& level = m_levels.back();
    push(open(*level.folder, level.entries.name()), device);
}

std::optional<FolderWalk::Place> FolderWalk::placeOf(const FolderListing& folder)
{
    struct stat info
    {
    };
    if (!folder.isOpen() || ::fstat(folder.number(), &info) != 0) {
        return std::nullopt;
    }
    return Place(info.st_dev, info.st_ino);
}

void FolderWalk::push(FolderListing folder, dev_t device)
{
    const auto place = placeOf(folder);
    if (!place || place->first != device || m_places.contains(*place)) {
        return;
    }
    if (!m_path.endsWith(QLatin1Char('/'))) {
        m_path.append(QLatin1Char('/'));
    }
    WalkEntries entries(folder, m_running);
    m_levels.push_back({*place, std::move(folder), std::move(entries), m_path.size()});
    m_places.insert(*place);
    closeFarAbove(m_levels.size() - 1);
}

void FolderWalk::pop()
{
    m_places.remove(m_levels.back().place);
    m_levels.pop_back();
}

void FolderWalk::leave()
{
    std::optional<FolderListing> left = std::move(m_levels.back().folder);
    pop();
    if (m_levels.empty() || m_levels.back().folder) {
        return;
    }
    // Leads elsewhere from a folder that was entered by a link, or that has been moved.
    const bool isFound = reopen(m_levels.size() - 1, *left, "..");
    left.reset();
    if (!isFound) {
        reopenByNames();
    }
}

/// Where descriptors are short, those of the folders above are given up for the one that is needed.
FolderListing FolderWalk::open(const FolderListing& from, const char* name)
{
    FolderListing listing(from.number(), name);
    if (!listing.isOpen() && (errno == EMFILE || errno == ENFILE)) {
        closeAllBut(from);
        return {from.number(), name};
    }
    return listing;
}

/// @return whether what has that name is the folder that was listed as this level
bool FolderWalk::reopen(std::size_t level, const FolderListing& from, const char* name)
{
    FolderListing listing = open(from, name);
    if (placeOf(listing) != m_levels[level].place) {
        return false;
    }
    m_levels[level].folder = std::move(listing);
    return true;
}

/// Opens the last level again from the last that is open, on the way that led down to it. Levels that are
/// not there any more are given up.
void FolderWalk::reopenByNames()
{
    std::size_t level = m_levels.size() - 1;
    while (!m_levels[level].folder) {
        --level;
    }
    for (; level + 1 < m_levels.size(); ++level) {
        const Level& above = m_levels[level];
        if (!reopen(level + 1, *above.folder, above.entries.name())) {
            break;
        }
        closeFarAbove(level + 1);
    }
    while (m_levels.size() > level + 1) {
        pop();
    }
}

void FolderWalk::closeFarAbove(std::size_t level)
{
    if (level > openFolders) {
        m_levels[level - openFolders].folder.reset();
    }
}

void FolderWalk::closeAllBut(const FolderListing& wanted)
{
    for (std::size_t level = 1; level < m_levels.size(); ++level) {
        if (m_levels[level].folder && &*m_levels[level].folder != &wanted) {
            m_levels[level].folder.reset();
        }
    }
}
