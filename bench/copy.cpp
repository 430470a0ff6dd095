// Copying, moving and deleting through the progress dialog, beside the usual tools and beside the bare calls.
// See the options in readOptions() for what it takes.

#include "app/aGlobal.h"
#include "bench/BareCalls.h"
#include "bench/BenchTable.h"
#include "fileops/MProgress.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <cstdio>
#include <functional>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

namespace {

struct Options
{
    QStringList places;
    int rounds = 7;
    int bigMiB = 2048;
    int files = 20000;
    int folders = 400;
    int items = 10000;
};

/// Answers the one question of a deletion at once, so that no box is part of the time.
class QuietProgress : public MProgress
{
    Q_OBJECT

public:
    using MProgress::MProgress;

public slots:
    void myQuestion(const QString& /*text*/) { answer = AnswerYesAll; }
};

/// Worst time that the window thread's event loop was away.
class GapMeter : public QObject
{
public:
    GapMeter()
    {
        m_clock.start();
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            worstMs = qMax(worstMs, static_cast<double>(m_clock.nsecsElapsed()) / 1e6), m_clock.restart();
        });
        m_timer.start(2);
    }
    double worstMs = 0;

private:
    QElapsedTimer m_clock;
    QTimer m_timer;
};

double worstGapMs = 0;
int boxesSeen = 0;

double seconds(const std::function<void()>& what)
{
    ::sync(); // so that no one pays for what others left to be written
    QElapsedTimer clock;
    clock.start();
    what();
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

void runTool(const QStringList& words)
{
    QList<QByteArray> bytes;
    for (const QString& word : words) {
        bytes.append(QFile::encodeName(word));
    }
    std::vector<char*> arguments;
    for (QByteArray& word : bytes) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t child = 0;
    int status = -1;
    if (::posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0
        || ::waitpid(child, &status, 0) != child || status != 0) {
        qFatal("%s failed", arguments[0]);
    }
}

void runProgram(QWidget* panel, int kind, const QStringList& items, const QString& destination)
{
    gslDragList = items;
    gsDropBase = destination;
    GapMeter meter;
    QTimer boxes;
    QObject::connect(&boxes, &QTimer::timeout, [] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            ++boxesSeen;
            box->button(QMessageBox::Reset)->click();
        }
    });
    boxes.start(20);
    (new QuietProgress(panel, kind))->exec(); // frees itself
    worstGapMs = qMax(worstGapMs, meter.worstMs);
}

struct Way
{
    QString name;
    std::function<void(int round)> run;
    std::function<void()> before = [] {}; ///< not timed
};

/// Runs the ways in turn, round by round, each round beginning with another, and prints one table. Round 0
/// only warms up.
void measure(const QString& title, int rounds, const QList<Way>& ways)
{
    QVector<QList<double>> times(ways.size());
    worstGapMs = 0;
    for (int round = 0; round <= rounds; ++round) {
        for (int turn = 0; turn < ways.size(); ++turn) {
            const int way = (turn + round) % ways.size();
            ways.at(way).before();
            const double time = seconds([&] { ways.at(way).run(round); });
            if (round > 0) {
                times[way].append(time);
            }
        }
    }
    std::printf("\n### %s\n\n", qPrintable(title));
    printHeader({"way", "seconds", "ratio to the tool", "ratio to the bare calls"});
    for (int way = 0; way < ways.size(); ++way) {
        QList<double> toTool;
        QList<double> toBare;
        for (int round = 0; round < rounds; ++round) {
            toTool.append(times.at(way).at(round) / times.at(1).at(round));
            toBare.append(times.at(way).at(round) / times.at(2).at(round));
        }
        printRow({ways.at(way).name, BenchSamples::spread(times.at(way), 1, 3),
            BenchSamples::spread(toTool, 1, 2), BenchSamples::spread(toBare, 1, 2)});
    }
    std::printf("\nWorst gap of the window's event loop: %.1f ms; questions: %d\n", worstGapMs, boxesSeen);
}

void writeFile(const QString& path, qint64 bytes)
{
    QFile file(path);
    const QByteArray block(static_cast<int>(qMin<qint64>(bytes, 1048576)), 'v');
    bool made = file.open(QIODevice::WriteOnly);
    for (qint64 left = bytes; made && left > 0; left -= block.size()) {
        made = file.write(block.constData(), qMin<qint64>(left, block.size())) > 0;
    }
    if (!made) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

void makeTree(const QString& path, const Options& options)
{
    for (int i = 0; i < options.files; ++i) {
        const QString folder = QStringLiteral("%1/folder%2").arg(path).arg(i % options.folders);
        if (i < options.folders && !QDir().mkpath(folder)) {
            qFatal("cannot make %s", qPrintable(folder));
        }
        writeFile(QStringLiteral("%1/file%2.txt").arg(folder).arg(i), 4096);
    }
}

void warm(const QString& path)
{
    runTool({"sh", "-c", "tar -cf - -C \"$0\" . | cat > /dev/null", path});
}

/// The measurements in one folder, which is gone afterwards.
class Bench
{
public:
    Bench(const QString& place, const Options& options)
        : m_base(QStringLiteral("%1/vantrel-bench-%2").arg(place).arg(QCoreApplication::applicationPid()))
        , m_place(place)
        , m_options(options)
    {
        if (!QDir().mkpath(m_base)) {
            qFatal("cannot make %s", qPrintable(m_base));
        }
        m_panel.show();
    }
    ~Bench() { QDir(m_base).removeRecursively(); }
    Q_DISABLE_COPY(Bench)

    void tree()
    {
        const QString source = m_base + "/tree";
        makeTree(source, m_options);
        warm(source);
        const QString title = QStringLiteral("%1 files of 4 KiB in %2 folders, %3")
                                  .arg(m_options.files)
                                  .arg(m_options.folders)
                                  .arg(m_place);
        measure("Copy of " + title, m_options.rounds,
            {{"Vantrel", [&](int i) { runProgram(&m_panel, OpCopy, {source}, fresh("a", i)); }},
                {"cp -r",
                    [&](int i) {
                        runTool({"cp", "-r", source, fresh("b", i)});
                    }},
                {"bare calls", [&](int i) { bareCopy(source, fresh("c", i) + "/tree"); }}});
        // What was copied is what is deleted, in the order in which it was made.
        measure("Deletion of " + title, m_options.rounds,
            {{"Vantrel", [&](int i) { runProgram(&m_panel, OpDelete, {name("a", i) + "/tree"}, QString()); }},
                {"rm -rf",
                    [&](int i) {
                        runTool({"rm", "-rf", name("b", i) + "/tree"});
                    }},
                {"bare calls", [&](int i) { bareRemove(name("c", i) + "/tree"); }}});
    }

    void move()
    {
        const QString source = m_base + "/items";
        const QString target = m_base + "/moved";
        QDir().mkpath(source);
        QDir().mkpath(target);
        for (int i = 0; i < m_options.items; ++i) {
            writeFile(QStringLiteral("%1/item%2").arg(source).arg(i), 1);
        }
        const auto paths = [&](const QString& folder) {
            QStringList all;
            for (int i = 0; i < m_options.items; ++i) {
                all.append(QStringLiteral("%1/item%2").arg(folder).arg(i));
            }
            return all;
        };
        const QStringList here = paths(source);
        const QStringList there = paths(target);
        // There and back again: two moves a run.
        measure(QStringLiteral("Move of %1 files, there and back, %2").arg(m_options.items).arg(m_place),
            m_options.rounds,
            {{"Vantrel",
                 [&](int) {
                     runProgram(&m_panel, OpMove, here, target);
                     runProgram(&m_panel, OpMove, there, source);
                 }},
                {"mv",
                    [&](int) {
                        runTool(QStringList{"mv", "-t", target} + here);
                        runTool(QStringList{"mv", "-t", source} + there);
                    }},
                {"bare calls", [&](int) {
                     bareMove(here, target);
                     bareMove(there, source);
                 }}});
    }

    void big()
    {
        const QString source = m_base + "/big";
        writeFile(source, qint64(m_options.bigMiB) * 1048576);
        warm(m_base);
        const QString target = m_base + "/copy";
        const auto gone = [target] { QFile::remove(target); };
        measure(QStringLiteral("Copy of one file of %1 MiB, %2").arg(m_options.bigMiB).arg(m_place),
            m_options.rounds,
            {{"Vantrel", [&](int) { runProgram(&m_panel, OpCopyTo, {source}, target); }, gone},
                {"cp --reflink=never",
                    [&](int) {
                        runTool({"cp", "--reflink=never", source, target});
                    },
                    gone},
                {"bare calls", [&](int) { bareCopy(source, target); }, gone}});
        gone();
        QFile::remove(source);
    }

private:
    QString name(const char* way, int round) const
    {
        return QStringLiteral("%1/%2%3").arg(m_base, way).arg(round);
    }
    QString fresh(const char* way, int round) const
    {
        QDir().mkpath(name(way, round));
        return name(way, round);
    }
    static void bareCopy(const QString& source, const QString& target)
    {
        bare::Counts counts;
        bare::count(source.toStdString(), counts);
        bare::copy(source.toStdString(), target.toStdString());
    }
    static void bareRemove(const QString& path)
    {
        bare::Counts counts;
        bare::count(path.toStdString(), counts);
        bare::remove(path.toStdString());
    }
    static void bareMove(const QStringList& items, const QString& target)
    {
        bare::Counts counts;
        for (const QString& item : items) {
            bare::count(item.toStdString(), counts);
        }
        for (const QString& item : items) {
            const std::string from = item.toStdString();
            const std::string to = (target + item.mid(item.lastIndexOf('/'))).toStdString();
            if (::rename(from.c_str(), to.c_str()) != 0) {
                qFatal("bare move failed");
            }
        }
    }

    QString m_base;
    QString m_place;
    const Options& m_options;
    QWidget m_panel;
};

Options readOptions()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Times copies, moves and deletions of the program beside the usual tools.");
    parser.addHelpOption();
    parser.addOption({"small", "A run of seconds, to see that all of it works."});
    parser.addOption({"rounds", "Rounds that count; one more warms up.", "n", "7"});
    parser.addOption({"big", "Size of the big file, in MiB.", "n", "2048"});
    parser.addOption({"files", "Files in the tree.", "n", "20000"});
    parser.addOption({"folders", "Folders in the tree.", "n", "400"});
    parser.addOption({"items", "Files to move.", "n", "10000"});
    parser.addOption({"place", "Folder to work in; may be given several times.", "folder"});
    parser.process(*QCoreApplication::instance());

    Options options;
    const bool small = parser.isSet("small");
    const auto value = [&](const char* name, int smallValue) {
        return small && !parser.isSet(name) ? smallValue : parser.value(name).toInt();
    };
    options.rounds = qMax(1, value("rounds", 3));
    options.bigMiB = qMax(1, value("big", 64));
    options.files = qMax(1, value("files", 1000));
    options.folders = qMax(1, value("folders", 20));
    options.items = qMax(1, value("items", 500));
    options.places = parser.values("place");
    if (options.places.isEmpty()) {
        options.places = QStringList{QDir::currentPath(), "/dev/shm"};
    }
    return options;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const Options options = readOptions();
    std::printf(
        "Median (least to most) of %d rounds; ratios round by round; everything is in memory before.\n",
        options.rounds);
    for (const QString& place : options.places) {
        Bench bench(place, options);
        bench.big();
        bench.tree();
        bench.move();
    }
    return 0;
}

#include "copy.moc"
