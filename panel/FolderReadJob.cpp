#include "panel/FolderReadJob.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>

#include <sys/stat.h>
#include <utility>

namespace {

/// A folder that has given only few entries in this time is shown before it is complete. Local folders never
/// are: they give many thousands by then, and showing those in two steps would mean sorting them on the GUI
/// thread.
constexpr qint64 slowFolderMs = 1000;
constexpr int slowFolderEntries = 2000;

QDir::Filters listedKinds(bool foldersOnly)
{
    if (foldersOnly) {
        return QDir::AllDirs | QDir::Hidden | QDir::System | QDir::NoSymLinks | QDir::NoDotAndDotDot;
    }
    return QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDot;
}

/// Looks up what the window's thread asks of an entry later, so that it finds it there and nothing is written
/// to the entry any more, which both threads share from then on.
void lookUpFacts(const QFileInfo& info)
{
    const bool facts[]
        = {info.size() != 0, info.exists(), info.isDir(), info.isFile(), info.isSymLink(), info.isHidden()};
    Q_UNUSED(facts)
}

} // namespace

FolderReadJob::FolderReadJob(QString folder, bool foldersOnly, std::unique_ptr<const FolderEntries> before,
    std::shared_ptr<const std::atomic<bool>> abandoned, quint64 serial)
    : m_folder(std::move(folder))
    , m_foldersOnly(foldersOnly)
    , m_before(std::move(before))
    , m_abandoned(std::move(abandoned))
    , m_serial(serial)
{
    setAutoDelete(true);
}

void FolderReadJob::run()
{
    QElapsedTimer clock;
    clock.start();
    FolderReading reading;
    reading.folder = m_folder;
    struct stat info = {};
    reading.exists
        = wanted() && ::stat(QFile::encodeName(m_folder).constData(), &info) == 0 && S_ISDIR(info.st_mode);
    reading.device = m_device = info.st_dev;
    reading.number = m_number = info.st_ino;
    if (reading.exists) {
        reading.entries = readEntries();
    }
    if (wanted()) {
        sortFolderEntries(reading.entries);
        countFolderEntries(reading);
        reading.first = m_before == nullptr;
        if (reading.first) {
            reading.changed = reading.entries;
        } else {
            compareFolderEntries(*m_before, reading);
        }
        emit done(reading, clock.elapsed(), m_serial);
    }
}

/// A folder that is replaced while it is read is listed as what it was and has the facts of what it is. Its
/// name counts as gone then: the base class would take the row out as well, but nobody would hear of it.
bool FolderReadJob::isListed(const QFileInfo& info) const
{
    return !m_foldersOnly || (info.isDir() && !info.isSymLink());
}

FolderEntries FolderReadJob::readEntries()
{
    QElapsedTimer clock;
    clock.start();
    FolderEntries entries;
    QDirIterator names(m_folder, listedKinds(m_foldersOnly));
    while (wanted() && names.hasNext()) {
        names.next();
        const QFileInfo info = names.fileInfo();
        lookUpFacts(info);
        if (isListed(info)) {
            entries.append(qMakePair(info.fileName(), info));
        }
        if (!m_firstPartDecided && clock.elapsed() >= slowFolderMs) {
            m_firstPartDecided = true;
            showFirstPart(entries, clock.elapsed());
        }
    }
    return entries;
}

void FolderReadJob::showFirstPart(const FolderEntries& soFar, qint64 elapsedMs)
{
    if (m_before != nullptr || soFar.size() > slowFolderEntries) {
        return;
    }
    FolderReading part;
    part.folder = m_folder;
    part.exists = true;
    part.device = m_device;
    part.number = m_number;
    part.first = true;
    part.complete = false;
    part.entries = soFar;
    sortFolderEntries(part.entries);
    countFolderEntries(part);
    part.changed = part.entries;
    m_before = std::make_unique<const FolderEntries>(part.entries);
    emit done(part, elapsedMs, m_serial);
}
