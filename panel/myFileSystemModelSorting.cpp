// Sorting, and the end of a model.

#include "panel/myFileSystemModel.h"

#include <QCoreApplication>
#include <QEvent>
#include <QScopedValueRollback>
#include <QThreadPool>

namespace {

/// Column that the base class compares fast enough by itself.
constexpr int sizeColumn = 1;

/// Column of the base class that compares the entries' type texts, which the icon provider gives.
constexpr int typeColumn = 2;

/// A model with more rows than this is freed on a thread: it takes microseconds a row.
constexpr int manyRows = 5000;

/// Until then the timers that the base class starts after each insertion have run out, and none is stopped
/// from the other thread.
constexpr int timersRunOutMs = 200;

/// Frees a model on a pool's thread.
class Disposal : public QRunnable
{
public:
    explicit Disposal(QObject* unwanted)
        : m_unwanted(unwanted)
    {
    }
    void run() override { delete m_unwanted; }

private:
    QObject* m_unwanted;
};

} // namespace

bool myFileSystemModel::event(QEvent* event)
{
    const QScopedValueRollback<bool> rollback(m_inQueuedCall, event->type() == QEvent::MetaCall);
    return QFileSystemModel::event(event);
}

void myFileSystemModel::sort(int column, Qt::SortOrder order)
{
    // The base class asks for a sort after every insertion. The rows are in their place already then, or are
    // sorted once, when all of them are there.
    if (m_showsNothing || m_inQueuedCall
        || (column == m_sortColumn && order == m_sortOrder && !m_needsSort)) {
        return;
    }
    const bool onlyTurned = m_ranked && column == m_sortColumn && !m_needsSort;
    m_sortColumn = column;
    m_sortOrder = order;
    if (onlyTurned) {
        QFileSystemModel::sort(typeColumn, order);
    } else {
        sortNow();
    }
}

void myFileSystemModel::sortNow()
{
    m_needsSort = false;
    m_ranked = false;
    if (filter().testFlag(QDir::Files) && m_sortColumn != sizeColumn) {
        sortListing();
    } else {
        QFileSystemModel::sort(m_sortColumn, m_sortOrder);
    }
}

void myFileSystemModel::sortListing()
{
    // The base class compares names and times the slow way, each time anew. The order is found here, with
    // each fact looked up once, and given to the base class as the type text of the entries, which are fast
    // to compare.
    const FolderEntries entries = m_reader->entries(rootPath());
    const std::vector<int> order = orderFolderEntries(
        entries, m_sortColumn, [this](const QFileInfo& info) { return ownerTextOf(info); });
    QHash<QString, int> ranks;
    ranks.reserve(entries.size());
    for (const int at : order) {
        ranks.insert(entries.at(at).first, ranks.size());
    }
    m_provider.setRanks(std::move(ranks));
    QEvent askTypesAgain(QEvent::LanguageChange);
    QFileSystemModel::event(&askTypesAgain);
    // Makes the base class sort although its column stays the same; without name filters it changes nothing
    // else.
    setNameFilterDisables(!nameFilterDisables());
    QFileSystemModel::sort(typeColumn, m_sortOrder);
    m_provider.setRanks({});
    m_ranked = true;
}

void myFileSystemModel::retire()
{
    const int rows = rowCount(index(rootPath()));
    m_feedTimer.stop();
    m_feeds.clear();
    delete m_reader;
    m_reader = nullptr;
    if (rows <= manyRows) {
        delete this;
        return;
    }
    disconnect();
    setParent(nullptr);
    connect(QCoreApplication::instance(), SIGNAL(aboutToQuit()), this, SLOT(deleteLater()));
    QTimer::singleShot(timersRunOutMs, this, [this] {
        moveToThread(nullptr);
        QThreadPool::globalInstance()->start(new Disposal(this)); // the pool frees the disposal
    });
}
