#include "panel/FolderReturn.h"

#include "panel/FolderReader.h"

namespace {

constexpr int lookIntervalMs = 500;

} // namespace

FolderReturn::FolderReturn(QObject* parent)
    : QObject(parent)
    , m_reader(new FolderReader(this))
{
    m_timer.setInterval(lookIntervalMs);
    connect(&m_timer, SIGNAL(timeout()), this, SLOT(readFolder()));
    connect(m_reader, SIGNAL(readingDone(FolderReading)), this, SLOT(takeReading(FolderReading)));
}

void FolderReturn::waitFor(const QString& folder)
{
    if (folder != m_folder) {
        stop();
        m_folder = folder;
        m_timer.start();
    }
}

void FolderReturn::stop()
{
    m_timer.stop();
    m_reader->forget(m_folder);
    m_folder.clear();
}

void FolderReturn::look()
{
    if (isWaiting()) {
        readFolder();
    }
}

void FolderReturn::readFolder()
{
    if (!m_reader->knows(m_folder)) { // else a slow one is still being read
        m_reader->read(m_folder);
    }
}

void FolderReturn::takeReading(const FolderReading& reading)
{
    const QString folder = reading.folder;
    m_reader->forget(folder); // so that the next reading is a first one, which is always told of
    if (reading.exists) {
        stop();
        emit returned(folder);
    }
}
