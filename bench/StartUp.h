#pragma once

#include "bench/BenchTable.h"

#include <QElapsedTimer>
#include <QFileSystemModel>
#include <QGuiApplication>
#include <QHeaderView>
#include <QImage>
#include <QMainWindow>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QSet>
#include <QSplitter>
#include <QTableView>
#include <QThread>
#include <QTreeView>

/// The window that start-up is compared with: two rooted trees, two rooted tables, each with a model of its
/// own.
class BareWindow : public QMainWindow
{
public:
    explicit BareWindow(const QString& folder)
    {
        auto* splitter = new QSplitter(this); // becomes the window's central widget
        for (int i = 0; i < 2; ++i) {
            addView(splitter, new QTreeView(splitter), folder);
            addView(splitter, new QTableView(splitter), folder);
        }
        setCentralWidget(splitter);
    }

private:
    static void addView(QSplitter* splitter, QAbstractItemView* view, const QString& folder)
    {
        auto* model = new QFileSystemModel(view);
        view->setModel(model);
        view->setRootIndex(model->setRootPath(folder));
        splitter->addWidget(view);
    }
};

/// Watches the screen of a virtual X server for the first thing that a program paints there. What is seen is
/// the row of pixels in the middle; nothing else may be on that screen.
class PaintWatch
{
public:
    /// Starts a program, waits for its first paint and kills it.
    /// @return seconds from before the start; negative if nothing was painted within 20 s
    static double firstPaint(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        QElapsedTimer clock;
        clock.start();
        process.start(program, arguments);
        double seconds = -1;
        while (seconds < 0 && clock.elapsed() < 20000) {
            if (isPainted()) {
                seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
            } else {
                QThread::usleep(500);
            }
        }
        process.kill();
        process.waitForFinished();
        while (isPainted() && clock.elapsed() < 30000) {
            QThread::usleep(1000);
        }
        return seconds;
    }

private:
    static bool isPainted()
    {
        QScreen* screen = QGuiApplication::primaryScreen();
        const QSize size = screen->size();
        const QImage band = screen->grabWindow(0, 0, size.height() / 2, size.width(), bandHeight).toImage();
        QSet<QRgb> colours;
        for (int y = 0; y < band.height(); ++y) {
            for (int x = 0; x < band.width() && colours.size() < coloursOfWindow; ++x) {
                colours.insert(band.pixel(x, y));
            }
        }
        return colours.size() >= coloursOfWindow;
    }

    static constexpr int bandHeight = 4;
    static constexpr int coloursOfWindow = 4;
};

/// Measures both programs by turns and prints the table.
/// @param vantrel path of the program
/// @param self path of this program, which shows the bare window when called with "--bare-window FOLDER"
/// @return whether both have painted each time
inline bool measureStartUp(const QString& vantrel, const QString& self, const QString& folder, int rounds)
{
    BenchSamples bare;
    BenchSamples ours;
    const QString figure = QStringLiteral("paint");
    for (int round = -1; round < rounds; ++round) {
        const double bareSeconds = PaintWatch::firstPaint(self, {QStringLiteral("--bare-window"), folder});
        const double ourSeconds = PaintWatch::firstPaint(vantrel, {});
        if (bareSeconds < 0 || ourSeconds < 0) {
            std::fprintf(stderr, "nothing was painted\n");
            return false;
        }
        if (round >= 0) { // the first round warms up
            bare.add(figure, bareSeconds);
            ours.add(figure, ourSeconds);
        }
    }
    std::printf("\nStart-up, process start to first paint, %d rounds\n\n", rounds);
    printHeader({QStringLiteral("program"), QStringLiteral("ms"), QStringLiteral("ratio")});
    printRow({QStringLiteral("bare window, two trees and two tables"), bare.spread(figure, 1000, 0),
        QStringLiteral("1")});
    printRow({QStringLiteral("Vantrel"), ours.spread(figure, 1000, 0), ours.ratio(figure, bare)});
    return true;
}
