#include "info/SizeWorkerClass.h"

#include "app/aGlobal.h"
#include "info/DialogFileSize.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>

namespace {

// Folders on the way down that are held open; more could use up the process's descriptors.
constexpr std::size_t openFolders = 32;

void add(std::atomic<qint64>& count, qint64 amount)
{
    count.fetch_add(amount, std::memory_order_relaxed);
}

} // namespace

SizeWorkerClass::SizeWorkerClass(DialogFileSize* parent)
    : m_parent(parent)
    , m_noRecurse(gsNoRecurse, QRegularExpression::CaseInsensitiveOption)
{
}

void SizeWorkerClass::StartWork()
{
    const QFileInfo info(m_parent->path);
    if (info.exists() && info.isFile()) {
        add(m_parent->fileCount, 1);
        add(m_parent->byteCount, info.size());
    } else {
        RecursiveSize(m_parent->path);
    }
    emit finished();
}

void SizeWorkerClass::RecursiveSize(const QString& path)
{
    struct stat info
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &info) != 0) {
        return;
    }
    const WalkEntries::Facts folder{true, info.st_size, info.st_dev, info.st_ino};
    if (isToEnter(path, folder)) {
        const QByteArray absolutePath = QFile::encodeName(QDir(path).absolutePath());
        countEntries(WalkEntries(absolutePath, m_parent->running), folder);
    }
}

bool SizeWorkerClass::isToEnter(const QString& path, const WalkEntries::Facts& folder)
{
    return !isSkipped(path) && isOnDevice(folder.device, path) && !isAncestor(folder);
}

void SizeWorkerClass::countEntries(WalkEntries entries, const WalkEntries::Facts& folder)
{
    m_ancestors.push_back({folder.device, folder.number});
    while (entries.next() && !isStopped()) {
        const auto facts = entries.facts();
        if (!facts) {
            continue;
        }
        add(m_parent->byteCount, facts->bytes);
        if (!facts->isFolder) {
            add(m_parent->fileCount, 1);
            continue;
        }
        add(m_parent->folderCount, 1);
        if (isToEnter(QFile::decodeName(entries.path()), *facts)) {
            const bool keepOpen = m_ancestors.size() < openFolders;
            countEntries(WalkEntries(entries, keepOpen, m_parent->running), *facts);
        }
    }
    m_ancestors.pop_back();
}

bool SizeWorkerClass::isStopped() const
{
    return m_parent->running.load(std::memory_order_relaxed) == 0;
}

bool SizeWorkerClass::isSkipped(const QString& path) const
{
    return m_noRecurse.isValid() && m_noRecurse.match(path).hasMatch();
}

bool SizeWorkerClass::isOnDevice(dev_t device, const QString& path)
{
    const auto known = m_isOnDevice.constFind(device);
    if (known != m_isOnDevice.constEnd()) {
        return known.value();
    }
    const QStorageInfo volume(path);
    const bool isOn = QFile::decodeName(volume.device()) == m_parent->device;
    if (volume.isValid()) { // not so for a folder that has just gone, which says nothing about its volume
        m_isOnDevice.insert(device, isOn);
    }
    return isOn;
}

bool SizeWorkerClass::isAncestor(const WalkEntries::Facts& folder) const
{
    return std::any_of(m_ancestors.begin(), m_ancestors.end(), [&folder](const Ancestor& ancestor) {
        return ancestor.device == folder.device && ancestor.number == folder.number;
    });
}
