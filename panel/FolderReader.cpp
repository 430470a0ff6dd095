#include "panel/FolderReader.h"

#include "panel/FolderReadJob.h"
#include "panel/FolderWatch.h"
#include "panel/MountWatch.h"

#include <QThreadPool>

namespace {

/// Shortest time between two readings of a folder that keeps changing; one that takes long is read less
/// often, so that reading never takes more than a fifth of the time.
constexpr qint64 shortestPauseMs = 100;
constexpr qint64 pausePerReading = 4;

/// Threads that may wait for slow folders at the same time.
constexpr int readerThreads = 8;

QThreadPool& readerPool()
{
    struct Pool : QThreadPool
    {
        Pool() { setMaxThreadCount(readerThreads); }
    };
    static Pool pool;
    return pool;
}

} // namespace

FolderReader::FolderReader(QObject* parent)
    : QObject(parent)
    , m_watch(new FolderWatch(this))
    , m_mounts(MountWatch::shared())
    , m_abandoned(std::make_shared<std::atomic<bool>>(false))
{
    qRegisterMetaType<FolderReading>();
    m_dueTimer.setSingleShot(true);
    connect(m_watch, SIGNAL(changed(QString)), this, SLOT(folderChanged(QString)));
    connect(m_mounts.get(), SIGNAL(changed()), this, SLOT(mountsChanged()));
    connect(&m_dueTimer, SIGNAL(timeout()), this, SLOT(readDueFolders()));
}

FolderReader::~FolderReader()
{
    m_abandoned->store(true, std::memory_order_relaxed);
}

void FolderReader::read(const QString& folder)
{
    Folder& state = m_folders[folder];
    watch(folder, state);
    if (state.running) {
        state.due = true;
    } else {
        start(folder, state);
    }
}

void FolderReader::refresh()
{
    const QStringList folders = m_folders.keys();
    for (const QString& folder : folders) {
        read(folder);
    }
}

void FolderReader::refreshUnwatched()
{
    const QStringList folders = m_folders.keys();
    for (const QString& folder : folders) {
        if (!m_watch->watches(folder)) {
            read(folder);
        }
    }
}

void FolderReader::forget(const QString& folder)
{
    const QString below = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    const QStringList folders = m_folders.keys();
    for (const QString& known : folders) {
        if (known == folder || known.startsWith(below)) {
            m_folders.remove(known);
            m_watch->remove(known);
        }
    }
}

void FolderReader::start(const QString& folder, Folder& state)
{
    state.running = true;
    state.due = false;
    state.serial = ++m_lastSerial;
    auto before = state.read ? std::make_unique<const FolderEntries>(state.entries) : nullptr;
    // Owned by the pool, which deletes it when it has run.
    auto* job = new FolderReadJob(folder, m_foldersOnly, std::move(before), m_abandoned, state.serial);
    connect(job, SIGNAL(done(FolderReading, qint64, quint64)), this,
        SLOT(takeReading(FolderReading, qint64, quint64)), Qt::QueuedConnection);
    readerPool().start(job);
}

void FolderReader::wakeDueTimer()
{
    if (!m_dueTimer.isActive()) {
        m_dueTimer.start(0);
    }
}

void FolderReader::folderChanged(const QString& folder)
{
    const auto state = m_folders.find(folder);
    if (state != m_folders.end()) {
        state->due = true;
        wakeDueTimer();
    }
}

/// Watches a folder before it is read, so that what changes in between is read once more rather than missed.
/// Where that is another watch than before, another folder has come to stand there: no number is given twice.
void FolderReader::watch(const QString& folder, Folder& state)
{
    m_watch->add(folder);
    const int now = m_watch->watchOf(folder);
    state.another = state.another || (state.watch >= 0 && now >= 0 && now != state.watch);
    state.watch = now >= 0 ? now : state.watch;
}

/// Where something was mounted over a folder, or taken away from it, it is read again without a pause.
void FolderReader::mountsChanged()
{
    for (auto state = m_folders.begin(); state != m_folders.end(); ++state) {
        if (!m_watch->leadsToWatched(state.key())) {
            state->due = true;
            state->since.invalidate();
            m_dueTimer.start(0);
        }
    }
}

/// A file system may tell other numbers of one folder from time to time: they count only where it is not
/// watched.
bool FolderReader::isReplaced(const Folder& state, const FolderReading& reading)
{
    return state.read && reading.exists
        && (state.another || state.device != reading.device
            || (state.watch < 0 && state.number != reading.number));
}

void FolderReader::takeReading(FolderReading reading, qint64 tookMs, quint64 serial)
{
    const auto state = m_folders.find(reading.folder);
    if (state == m_folders.end() || state->serial != serial) {
        return; // forgotten since it was started, and perhaps asked for again
    }
    if (state->read && state->number != reading.number) {
        watch(reading.folder, *state); // it may have been replaced between being watched and being read
    }
    reading.replaced = isReplaced(*state, reading);
    state->another = false;
    state->device = reading.device;
    state->number = reading.number;
    const bool completes = state->partTold && reading.complete;
    state->entries = reading.entries;
    state->read = true;
    state->partTold = !reading.complete;
    if (reading.complete) {
        state->running = false;
        state->tookMs = tookMs;
        state->since.start();
        if (reading.exists && !m_watch->watches(reading.folder)) {
            // Made after the watch was asked for: what has changed between reading and watching is read too.
            // Gone again since it was read, it is read once more, as nothing else would tell of that.
            const bool isThere = m_watch->add(reading.folder);
            state->due = state->due || !isThere || m_watch->watches(reading.folder);
        }
        if (state->due) {
            wakeDueTimer();
        }
    }
    if (reading.first || completes || reading.replaced || !reading.exists || !reading.changed.isEmpty()
        || !reading.removed.isEmpty()) {
        emit readingDone(reading);
    }
}

void FolderReader::readDueFolders()
{
    qint64 nextMs = -1;
    for (auto state = m_folders.begin(); state != m_folders.end(); ++state) {
        if (!state->due || state->running) {
            continue;
        }
        const qint64 pauseMs = qMax(shortestPauseMs, pausePerReading * state->tookMs);
        const qint64 leftMs = state->since.isValid() ? pauseMs - state->since.elapsed() : 0;
        if (leftMs <= 0) {
            watch(state.key(), state.value()); // a folder that was removed and made again wants a new one
            start(state.key(), state.value());
        } else {
            nextMs = nextMs < 0 ? leftMs : qMin(nextMs, leftMs);
        }
    }
    if (nextMs >= 0) {
        m_dueTimer.start(static_cast<int>(nextMs));
    }
}
