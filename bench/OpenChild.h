#pragma once

#include "bench/LoopWatch.h"
#include "bench/OpenCases.h"

#include <QFile>
#include <QMouseEvent>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

/// The measured process: one case, one folder. It prints its figures as lines "what.figure=value".
class OpenChild
{
public:
    /// @param kind one of the names in makeCase()
    /// @param parentFolder folder that holds @p folder and an empty one named "empty"
    OpenChild(LoopWatch& watch, const QString& kind, const QString& parentFolder, const QString& folder,
        int entries)
        : m_watch(watch)
        , m_parent(parentFolder)
        , m_folder(folder)
        , m_entries(entries)
        , m_case(makeCase(kind, parentFolder))
    {
    }

    /// @return whether nothing timed out
    bool run(bool byDate)
    {
        m_watch.start();
        m_watch.settle([]() { return true; });
        printFigure("rss.before", statusKib("VmRSS:"));
        measureOpen();
        printFigure("rss.opened", statusKib("VmRSS:"));
        printFigure("peak.opened", statusKib("VmHWM:"));
        measure("sort1", [this]() { clickHeader(1); });
        measure("sort2", [this]() { clickHeader(1); });
        if (byDate) {
            measure("date", [this]() { clickHeader(3); });
        }
        measure("select", [this]() { m_case->views().constFirst()->selectAll(); });
        measure("leave", [this]() { m_case->open(m_parent); });
        printFigure("rss.left", statusKib("VmRSS:"));
        printFigure("peak.all", statusKib("VmHWM:"));
        return !m_timedOut;
    }

private:
    static std::unique_ptr<OpenCase> makeCase(const QString& kind, const QString& parentFolder)
    {
        if (kind == QLatin1String("standard")) {
            return std::make_unique<BareCase>(nullptr, parentFolder);
        }
        if (kind == QLatin1String("empty")) {
            return std::make_unique<BareCase>(std::make_unique<FixedIconProvider>(), parentFolder);
        }
        const PanelCase::Way way = kind == QLatin1String("double") ? PanelCase::ByDoubleClick
            : kind == QLatin1String("both")                        ? PanelCase::InBoth
                                                                   : PanelCase::ByCall;
        return std::make_unique<PanelCase>(way, parentFolder);
    }

    static double statusKib(const char* key)
    {
        QFile file(QStringLiteral("/proc/self/status"));
        if (file.open(QIODevice::ReadOnly)) {
            const QList<QByteArray> lines = file.readAll().split('\n');
            for (const QByteArray& line : lines) {
                if (line.startsWith(key)) {
                    return line.simplified().split(' ').at(1).toDouble();
                }
            }
        }
        return 0;
    }

    static void printFigure(const char* what, double value) { std::printf("%s=%.4f\n", what, value); }

    void measure(const char* what, const std::function<void()>& call)
    {
        m_watch.start();
        call();
        m_watch.callReturned();
        printMeasured(what, m_watch.settle([]() { return true; }));
    }

    void measureOpen()
    {
        m_watch.start();
        m_case->open(m_folder);
        m_watch.callReturned();
        for (QTableView* view : m_case->views()) {
            tellChanges(view->model());
        }
        printMeasured("open", m_watch.settle([this]() { return isShown(); }));
    }

    void printMeasured(const char* what, const LoopWatch::Figures& figures)
    {
        m_timedOut = m_timedOut || figures.timedOut;
        std::printf("%s.s=%.4f\n%s.gap=%.2f\n%s.event=%s\n", what, figures.seconds, what, figures.gapMs, what,
            figures.longestEvent.constData());
        std::fflush(stdout);
    }

    void tellChanges(QAbstractItemModel* model)
    {
        auto* files = qobject_cast<QFileSystemModel*>(model);
        QObject::connect(files, &QFileSystemModel::directoryLoaded, files, [this](const QString& path) {
            m_loaded += path == m_folder ? 1 : 0;
            m_watch.note("loaded");
        });
        QObject::connect(
            files, &QAbstractItemModel::rowsInserted, files, [this](const QModelIndex&, int first, int last) {
                m_watch.note(QByteArray::number(last - first + 1) + " rows");
            });
        QObject::connect(
            files, &QAbstractItemModel::layoutChanged, files, [this]() { m_watch.note("sorted"); });
    }

    /// All views are loaded and have been painted. What is to be painted yet ends with the loop's quiet time.
    bool isShown() const
    {
        const QList<QTableView*> views = m_case->views();
        return m_loaded >= views.size()
            && std::all_of(views.begin(), views.end(), [this](const QTableView* view) {
                   return view->model()->rowCount(view->rootIndex()) >= m_entries
                       && m_watch.isPainted(view->viewport());
               });
    }

    void clickHeader(int section)
    {
        const QHeaderView* header = m_case->views().constFirst()->horizontalHeader();
        const QPoint at(header->sectionViewportPosition(section) + header->sectionSize(section) / 2,
            header->height() / 2);
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            const Qt::MouseButtons held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
            QMouseEvent event(type, at, header->mapToGlobal(at), Qt::LeftButton, held, Qt::NoModifier);
            QCoreApplication::sendEvent(header->viewport(), &event);
        }
    }

    LoopWatch& m_watch;
    QString m_parent;
    QString m_folder;
    int m_entries;
    std::unique_ptr<OpenCase> m_case;
    int m_loaded = 0;
    bool m_timedOut = false;
};
