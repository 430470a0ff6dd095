#include "info/SizeWorkerClass.h"

#include "app/aGlobal.h"
#include "info/DialogFileSize.h"
#include "info/FolderWalk.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

namespace {

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
    const QString absolutePath = QDir(path).absolutePath();
    struct stat info
    {
    };
    if (::stat(QFile::encodeName(absolutePath).constData(), &info) != 0 || !isToEnter(path, info.st_dev)) {
        return;
    }
    FolderWalk walk(absolutePath, info.st_dev, m_parent->running);
    while (walk.next()) {
        countEntry(walk);
    }
}

void SizeWorkerClass::countEntry(FolderWalk& walk)
{
    const auto facts = walk.facts();
    if (!facts) {
        return;
    }
    add(m_parent->byteCount, facts->bytes);
    add(facts->isFolder ? m_parent->folderCount : m_parent->fileCount, 1);
    if (facts->isFolder && isToEnter(walk.path(), facts->device)) {
        walk.enter(facts->device);
    }
}

bool SizeWorkerClass::isToEnter(const QString& path, dev_t device)
{
    return !isSkipped(path) && isOnDevice(device, path);
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
