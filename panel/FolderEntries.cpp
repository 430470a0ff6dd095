#include "panel/FolderEntries.h"

#include <QCollator>
#include <QDateTime>
#include <QHash>

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace {

/// The collation that the file system model sorts names with.
QCollator nameCollator()
{
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

bool hasSurrogates(const FolderEntries& entries)
{
    return std::any_of(entries.begin(), entries.end(), [](const auto& entry) {
        const QString& name = entry.first;
        return std::any_of(name.begin(), name.end(), [](QChar unit) { return unit.isSurrogate(); });
    });
}

/// Puts the entries in the order of @p keys, folders first, equal keys by name.
template <typename Key, typename Compare>
void sortByKeys(FolderEntries& entries, const std::vector<Key>& keys, const Compare& compare)
{
    const auto count = static_cast<std::size_t>(entries.size());
    std::vector<char> isFile(count);
    for (std::size_t i = 0; i < count; ++i) {
        isFile[i] = entries.at(static_cast<int>(i)).second.isDir() ? 0 : 1;
    }
    std::vector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](int left, int right) {
        const auto l = static_cast<std::size_t>(left);
        const auto r = static_cast<std::size_t>(right);
        if (isFile[l] != isFile[r]) {
            return isFile[l] < isFile[r];
        }
        const int sign = compare(keys[l], keys[r]);
        return sign != 0 ? sign < 0 : entries.at(left).first < entries.at(right).first;
    });
    FolderEntries sorted;
    sorted.reserve(entries.size());
    for (const int at : order) {
        sorted.append(entries.at(at));
    }
    entries.swap(sorted);
}

void sortByCollation(FolderEntries& entries, const QCollator& collator)
{
    std::vector<QCollatorSortKey> keys;
    keys.reserve(static_cast<std::size_t>(entries.size()));
    for (const auto& entry : qAsConst(entries)) {
        keys.push_back(collator.sortKey(entry.first));
    }
    sortByKeys(entries, keys, [](const auto& l, const auto& r) { return l.compare(r); });
}

/// The names of all entries with each UTF-16 unit case-folded, which is what the C locale's collation
/// compares. They are one block of memory: as many small ones would stay with the thread when the sort is
/// done.
class FoldedNames
{
public:
    explicit FoldedNames(const FolderEntries& entries)
    {
        std::size_t units = 0;
        for (const auto& entry : entries) {
            units += static_cast<std::size_t>(entry.first.length());
        }
        m_text.reserve(units);
        for (const auto& entry : entries) {
            const std::size_t begin = m_text.size();
            for (const QChar unit : entry.first) {
                m_text.push_back(unit.toCaseFolded().unicode());
            }
            m_names.emplace_back(m_text.data() + begin, m_text.size() - begin);
        }
    }
    const std::vector<std::u16string_view>& names() const { return m_names; }

private:
    std::u16string m_text; ///< never grows beyond what was reserved, so the names stay where they are
    std::vector<std::u16string_view> m_names;
};

/// The C locale has no collation keys that know no case, so names are folded once instead of at each
/// comparison. Names beyond the basic plane, which are folded by pairs, are rare enough to be compared the
/// slow way.
void sortByFoldedNames(FolderEntries& entries, const QCollator& collator)
{
    if (!hasSurrogates(entries)) {
        const FoldedNames folded(entries);
        sortByKeys(entries, folded.names(), [](const auto& l, const auto& r) { return l.compare(r); });
        return;
    }
    std::vector<QString> names;
    names.reserve(static_cast<std::size_t>(entries.size()));
    for (const auto& entry : qAsConst(entries)) {
        names.push_back(entry.first);
    }
    sortByKeys(entries, names, [&](const QString& l, const QString& r) { return collator.compare(l, r); });
}

/// Permission bits of owner, group and others. QFile::Permissions would ask the system for those of the user
/// as well.
int modeOf(const QFileInfo& info)
{
    int mode = 0;
    for (const QFile::Permission flag :
        {QFile::ReadOwner, QFile::WriteOwner, QFile::ExeOwner, QFile::ReadGroup, QFile::WriteGroup,
            QFile::ExeGroup, QFile::ReadOther, QFile::WriteOther, QFile::ExeOther}) {
        mode |= info.permission(flag) ? static_cast<int>(flag) : 0;
    }
    return mode;
}

bool factsDiffer(const QFileInfo& one, const QFileInfo& other)
{
    return one.size() != other.size() || modeOf(one) != modeOf(other) || one.isDir() != other.isDir()
        || one.isSymLink() != other.isSymLink() || one.ownerId() != other.ownerId()
        || one.lastModified() != other.lastModified();
}

std::vector<int> positionsOf(const FolderEntries& entries)
{
    std::vector<int> positions(static_cast<std::size_t>(entries.size()));
    std::iota(positions.begin(), positions.end(), 0);
    return positions;
}

/// @param entries in the order of names, folders first
/// @return their positions in the order of names, folders not apart
std::vector<int> orderByName(const FolderEntries& entries)
{
    std::vector<int> order = positionsOf(entries);
    const auto firstFile = std::partition_point(
        order.begin(), order.end(), [&entries](int at) { return entries.at(at).second.isDir(); });
    const QCollator collator = nameCollator();
    std::inplace_merge(order.begin(), firstFile, order.end(), [&](int left, int right) {
        const QString& leftName = entries.at(left).first;
        const QString& rightName = entries.at(right).first;
        const int sign = collator.compare(leftName, rightName);
        return sign != 0 ? sign < 0 : leftName < rightName;
    });
    return order;
}

/// @param keyOf gives what an entry is sorted by
/// @return positions of the entries in the order of their keys, equal ones by name. Folders are not apart:
/// the file system model puts them first only by name and by size.
template <typename KeyOf>
std::vector<int> orderByKeys(const FolderEntries& entries, const KeyOf& keyOf)
{
    std::vector<decltype(keyOf(QFileInfo()))> keys;
    keys.reserve(static_cast<std::size_t>(entries.size()));
    for (const auto& entry : entries) {
        keys.push_back(keyOf(entry.second));
    }
    std::vector<int> order = orderByName(entries);
    std::stable_sort(order.begin(), order.end(), [&keys](int left, int right) {
        return keys[static_cast<std::size_t>(left)] < keys[static_cast<std::size_t>(right)];
    });
    return order;
}

} // namespace

void sortFolderEntries(FolderEntries& entries)
{
    const QCollator collator = nameCollator();
    if (collator.locale().language() == QLocale::C) {
        sortByFoldedNames(entries, collator);
    } else {
        sortByCollation(entries, collator);
    }
}

void compareFolderEntries(const FolderEntries& before, FolderReading& reading)
{
    QHash<QString, int> known;
    known.reserve(before.size());
    for (int i = 0; i < before.size(); ++i) {
        known.insert(before.at(i).first, i);
    }
    for (const auto& entry : qAsConst(reading.entries)) {
        const auto was = known.find(entry.first);
        if (was == known.end()) {
            reading.changed.append(entry);
            continue;
        }
        if (factsDiffer(before.at(was.value()).second, entry.second)) {
            reading.changed.append(entry);
        }
        known.erase(was);
    }
    reading.removed = known.keys();
}

void countFolderEntries(FolderReading& reading)
{
    for (const auto& entry : qAsConst(reading.entries)) {
        if (entry.first != QLatin1String("..")) {
            (entry.second.isDir() ? reading.dirs : reading.files) += 1;
            reading.bytes += entry.second.size();
        }
    }
}

std::vector<int> orderFolderEntries(
    const FolderEntries& entries, int column, const std::function<QString(const QFileInfo&)>& ownerText)
{
    if (column == 2) {
        return orderByKeys(entries, ownerText);
    }
    if (column == 3) {
        return orderByKeys(
            entries, [](const QFileInfo& info) { return info.lastModified().toMSecsSinceEpoch(); });
    }
    return positionsOf(entries);
}
