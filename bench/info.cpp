// Disk usage and checksums through their dialogs, beside the usual tools. See main() for what it takes.

#include "app/aGlobal.h"
#include "bench/BenchDisplay.h"
#include "bench/BenchTable.h"
#include "info/Checksum.h"
#include "info/DialogFileSize.h"
#include "tests/support/PlainWalk.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <fts.h>
#include <functional>
#include <sched.h>
#include <unistd.h>

namespace {

/// One way to do the work.
struct Case
{
    QString name;
    std::function<void()> run;
};

double secondsOf(const std::function<void()>& run)
{
    QElapsedTimer timer;
    timer.start();
    run();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

/// Runs all cases in turn, round by round, so that what disturbs the machine disturbs them alike. The first
/// round fills the caches and is left out.
BenchSamples measure(const QList<Case>& cases, int rounds)
{
    BenchSamples samples;
    for (int round = 0; round <= rounds; ++round) {
        for (const Case& each : cases) {
            const double seconds = secondsOf(each.run);
            if (round > 0) {
                samples.add(each.name, seconds);
            }
        }
    }
    return samples;
}

void runProgram(const QString& program, const QString& argument, const QString& path)
{
    QStringList arguments{path};
    if (!argument.isEmpty()) {
        arguments.prepend(argument);
    }
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(-1);
}

void runAtOnce(const QStringList& programs, const QString& path)
{
    std::vector<std::unique_ptr<QProcess>> processes;
    for (const QString& program : programs) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(program, {path});
    }
    for (const auto& process : processes) {
        process->waitForFinished(-1);
    }
}

template <typename Dialog>
void waitFor(const Dialog& dialog)
{
    while (dialog.running != 0) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void countByDialog(const QString& tree, TreeTotals& totals)
{
    DialogFileSize dialog(nullptr, tree);
    dialog.show();
    waitFor(dialog);
    totals = {dialog.folderCount, dialog.fileCount, dialog.byteCount};
}

/// @return sum of all sizes, so that nothing of the walk is left out by the compiler
qint64 walkByFts(const QString& tree)
{
    QByteArray path = QFile::encodeName(tree);
    char* paths[] = {path.data(), nullptr};
    FTS* walk = ::fts_open(paths, FTS_PHYSICAL | FTS_XDEV, nullptr);
    qint64 bytes = 0;
    while (const FTSENT* entry = ::fts_read(walk)) {
        bytes += entry->fts_statp->st_size;
    }
    ::fts_close(walk);
    return bytes;
}

void sumByDialog(const QString& file)
{
    const Checksum dialog(nullptr, file);
    waitFor(dialog);
}

/// Lets the process run on one core only while @p run runs.
void onOneCore(const std::function<void()>& run)
{
    cpu_set_t before;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<std::size_t>(::sched_getcpu()), &one);
    ::sched_getaffinity(0, sizeof before, &before);
    ::sched_setaffinity(0, sizeof one, &one);
    run();
    ::sched_setaffinity(0, sizeof before, &before);
}

bool makeFile(const QString& path, qint64 mebibytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        return false;
    }
    QVector<quint32> block((1 << 20) / sizeof(quint32));
    QRandomGenerator generator(1);
    for (qint64 i = 0; i < mebibytes; ++i) {
        generator.fillRange(block.data(), block.size());
        if (file.write(reinterpret_cast<const char*>(block.constData()), 1 << 20) != 1 << 20) {
            return false;
        }
    }
    return ::fsync(file.handle()) == 0; // or writing would go on while others are measured
}

BenchSamples renamed(const BenchSamples& samples, const QString& from, const QString& to)
{
    BenchSamples base;
    for (const double value : samples.values(from)) {
        base.add(to, value);
    }
    return base;
}

/// Prints how long each case took, and how long in comparison with each of @p bases.
void printTable(const BenchSamples& samples, const QList<Case>& cases, const QStringList& bases)
{
    QStringList header{QStringLiteral("case"), QStringLiteral("seconds")};
    for (const QString& base : bases) {
        header.append(QStringLiteral("to ") + base);
    }
    printHeader(header);
    for (const Case& each : cases) {
        QStringList row{each.name, samples.spread(each.name, 1, 3)};
        for (const QString& base : bases) {
            row.append(samples.ratio(each.name, renamed(samples, base, each.name)));
        }
        printRow(row);
    }
    std::printf("\n");
}

bool benchUsage(const QString& tree, int rounds)
{
    gsNoRecurse = QStringLiteral("^/proc");
    TreeTotals byDialog;
    TreeTotals plain;
    const QString du = QStringLiteral("du -s");
    const QString plainName = QStringLiteral("plain Qt walk");
    const QList<Case> cases{{du, [&tree] { runProgram(QStringLiteral("du"), QStringLiteral("-s"), tree); }},
        {QStringLiteral("fts walk"), [&tree] { walkByFts(tree); }},
        {plainName, [&tree, &plain] { plain = PlainWalk(tree, gsNoRecurse).totals(); }},
        {QStringLiteral("disk usage dialog"), [&tree, &byDialog] { countByDialog(tree, byDialog); }}};
    const BenchSamples samples = measure(cases, rounds);
    std::printf("Disk usage of %s: %lld folders, %lld files, %lld bytes; median (least to most) of %d.\n\n",
        qPrintable(tree), byDialog.folders, byDialog.files, byDialog.bytes, rounds);
    printTable(samples, cases, {du, plainName});
    if (!(byDialog == plain)) {
        std::fprintf(stderr, "the dialog and the plain walk count differently\n");
        return false;
    }
    return true;
}

bool benchChecksums(const QString& place, qint64 mebibytes, int rounds)
{
    const QTemporaryDir folder(place + QStringLiteral("/vantrel-bench-XXXXXX"));
    const QString file = folder.filePath(QStringLiteral("file"));
    if (!makeFile(file, mebibytes)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
        return false;
    }
    const QString md5 = QStringLiteral("md5sum");
    const QString sha1 = QStringLiteral("sha1sum");
    const QString both = QStringLiteral("one after the other");
    const QString slower = QStringLiteral("the slower of the two alone");
    QList<Case> cases{{md5, [&] { runProgram(md5, QString(), file); }},
        {sha1, [&] { runProgram(sha1, QString(), file); }},
        {QStringLiteral("both at once"),
            [&] {
                runAtOnce({md5, sha1}, file);
            }},
        {QStringLiteral("checksum dialog"), [&] { sumByDialog(file); }},
        {QStringLiteral("checksum dialog, one core"), [&] { onOneCore([&] { sumByDialog(file); }); }}};
    BenchSamples samples = measure(cases, rounds);
    for (int round = 0; round < rounds; ++round) {
        const double md5Seconds = samples.values(md5).at(round);
        const double sha1Seconds = samples.values(sha1).at(round);
        samples.add(both, md5Seconds + sha1Seconds);
        samples.add(slower, qMax(md5Seconds, sha1Seconds));
    }
    std::printf(
        "Checksums of a cached file of %lld MiB; median (least to most) of %d.\n\n", mebibytes, rounds);
    printTable(samples, cases, {both, slower});
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const BenchDisplay display;
    if (display.name().isEmpty()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    } else {
        qputenv("DISPLAY", display.name());
    }
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Measures the disk usage and checksum dialogs beside the usual tools."));
    parser.addHelpOption();
    const QCommandLineOption rounds(QStringLiteral("rounds"), QStringLiteral("Rounds that count."),
        QStringLiteral("N"), QStringLiteral("5"));
    const QCommandLineOption tree(QStringLiteral("tree"), QStringLiteral("Folder to count."),
        QStringLiteral("FOLDER"), QStringLiteral("/usr"));
    const QCommandLineOption size(QStringLiteral("mebibytes"), QStringLiteral("Size of the file to sum."),
        QStringLiteral("N"), QStringLiteral("2048"));
    const QCommandLineOption place(QStringLiteral("place"), QStringLiteral("Folder to make the file in."),
        QStringLiteral("FOLDER"), QDir::tempPath());
    const QCommandLineOption only(QStringLiteral("only"),
        QStringLiteral("Measure only \"usage\" or \"checksums\"."), QStringLiteral("WHAT"));
    parser.addOptions({rounds, tree, size, place, only});
    parser.process(app);

    const QString wanted = parser.value(only);
    const int count = qMax(1, parser.value(rounds).toInt());
    bool good = true;
    if (wanted.isEmpty() || wanted == QLatin1String("usage")) {
        good = benchUsage(parser.value(tree), count);
    }
    if (wanted.isEmpty() || wanted == QLatin1String("checksums")) {
        good = benchChecksums(parser.value(place), parser.value(size).toLongLong(), count) && good;
    }
    return good ? 0 : 1;
}
