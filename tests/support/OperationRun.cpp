#include "tests/support/OperationRun.h"

#include "app/aGlobal.h"
#include "fileops/MProgress.h"

#include <QFile>
#include <QPointer>
#include <QTest>
#include <QThread>

#include <ftw.h>
#include <sys/fsuid.h>
#include <unistd.h>

namespace {

constexpr unsigned ordinaryUser = 65534;
constexpr int patienceMs = 60000;

int giveEntry(const char* path, const struct stat* /*info*/, int /*kind*/, struct FTW* /*place*/)
{
    return ::lchown(path, ordinaryUser, ordinaryUser);
}

} // namespace

OperationRun::OperationRun(int kind, const QStringList& items, const QString& destination)
    : m_kind(kind)
{
    gslDragList = items;
    gsDragBase = items.isEmpty() ? QString() : items.first().section(QLatin1Char('/'), 0, -2);
    gsDropBase = destination;
    m_panel.show(); // so that the end of the dialog is not the end of the last window
}

bool OperationRun::run()
{
    const QPointer<MProgress> dialog = new MProgress(&m_panel, m_kind); // frees itself after exec()
    m_dialog = dialog;
    QTimer patience;
    bool late = false;
    QObject::connect(&patience, &QTimer::timeout, [&] {
        late = true;
        dialog->abort = 1;
    });
    patience.start(patienceMs);
    if (atStart) {
        atStart(dialog);
    }
    dialog->exec();
    if (dialog.isNull()) {
        return false;
    }
    note(*dialog);
    // Like the event loop, to which control would be back now.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return QTest::qWaitFor([&] { return dialog.isNull(); }) && !late;
}

MProgress* OperationRun::dialog() const
{
    while (m_dialog == nullptr) {
        QThread::yieldCurrentThread();
    }
    return m_dialog;
}

void OperationRun::abortNow()
{
    dialog()->abort = 1;
}

void OperationRun::note(const MProgress& dialog)
{
    abort = dialog.abort;
    deleteAll = dialog.deleteAll;
    ignoreAll = dialog.ignoreAll;
    replaceAll = dialog.replaceAll;
    answer = dialog.answer;
    fileCount = dialog.fileCount;
    folderCount = dialog.folderCount;
    total = dialog.total;
    done = dialog.done;
    const QMutexLocker lock(&gmutexLock);
    lastPath = dialog.currentPath;
}

void asOrdinaryUser(FaultShim& shim, const QString& item)
{
    if (::geteuid() == 0) {
        shim.before("lstat", item, 1, [] {
            ::setfsgid(ordinaryUser);
            ::setfsuid(ordinaryUser);
        });
    }
}

void giveToOrdinaryUser(const QString& folder)
{
    if (::geteuid() == 0 && ::nftw(QFile::encodeName(folder).constData(), giveEntry, 64, FTW_PHYS) != 0) {
        qFatal("cannot give away %s", qPrintable(folder));
    }
}
