// Opening folders and starting up, beside bare Qt views. See usage() for what it takes.

#include "bench/BenchDisplay.h"
#include "bench/BenchFolder.h"
#include "bench/BenchTable.h"
#include "bench/OpenChild.h"
#include "bench/StartUp.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>

namespace {

struct Kind
{
    const char* name;
    const char* title;
};

/// The first one is what the others are compared with.
const QList<Kind> kinds{{"empty", "bare view, empty provider"}, {"standard", "bare view, standard provider"},
    {"vantrel", "Vantrel"}, {"double", "Vantrel, by double-click"}, {"both", "Vantrel, in both panels"}};

struct Column
{
    const char* title;
    const char* figure;
    double factor;
    int decimals;
};

const QList<Column> columns{{"opened, s", "open.s", 1, 3}, {"worst gap, ms", "open.gap", 1, 0},
    {"peak, MB", "peak.opened", 1 / 1000.0, 0}, {"sort by size, s", "sort1.s", 1, 3},
    {"2nd click, s", "sort2.s", 1, 3}, {"by date, s", "date.s", 1, 3},
    {"select all, ms", "select.s", 1000, 0}, {"leaving, ms", "leave.s", 1000, 0}};

struct Options
{
    QList<int> sizes;
    QStringList kinds;
    QString place;
    QString platform;
    QString theme;
    QString settings;
    QString vantrel;
    int rounds = 5;
    bool byDate = false;
    bool opening = true;
    bool startUp = true;
};

/// Runs one case in a process of its own.
/// @return whether it ended well; its figures are added to @p samples and its longest event is put in @p
/// event
bool runChild(const Options& options, const QString& kind, const QString& folder, int entries,
    BenchSamples& samples, QByteArray& event)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), options.platform);
    if (!options.theme.isEmpty()) {
        environment.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), options.theme);
    }
    process.setProcessEnvironment(environment);
    QStringList arguments{QStringLiteral("--case"), kind, folder, QString::number(entries)};
    if (options.byDate) {
        arguments.append(QStringLiteral("--date"));
    }
    process.start(QCoreApplication::applicationFilePath(), arguments);
    process.waitForFinished(-1);
    const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    for (const QByteArray& line : lines) {
        const int equals = line.indexOf('=');
        if (line.startsWith("open.event=")) {
            event = line.mid(equals + 1);
        } else if (equals > 0) {
            samples.add(QString::fromLatin1(line.left(equals)), line.mid(equals + 1).toDouble());
        }
    }
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

void printTable(const QMap<QString, BenchSamples>& samples, const QMap<QString, QByteArray>& events)
{
    const BenchSamples& base = samples[QLatin1String(kinds.constFirst().name)];
    QList<Column> shown;
    QStringList titles{QStringLiteral("list"), QStringLiteral("ratio")};
    for (const Column& column : columns) {
        if (base.has(QLatin1String(column.figure))) {
            shown.append(column);
            titles.append(QLatin1String(column.title));
        }
    }
    printHeader(titles);
    for (const Kind& kind : kinds) {
        const auto mine = samples.find(QLatin1String(kind.name));
        if (mine == samples.end()) {
            continue;
        }
        QStringList cells{QLatin1String(kind.title), mine->ratio(QStringLiteral("open.s"), base)};
        for (const Column& column : qAsConst(shown)) {
            cells.append(mine->spread(QLatin1String(column.figure), column.factor, column.decimals));
        }
        printRow(cells);
    }
    std::printf("\nLongest event of the last round:\n\n");
    for (const Kind& kind : kinds) {
        if (events.contains(QLatin1String(kind.name))) {
            std::printf("- %s: %s\n", kind.title, events[QLatin1String(kind.name)].constData());
        }
    }
}

bool measureOpening(const Options& options, const QString& folder, int entries)
{
    QMap<QString, BenchSamples> samples;
    QMap<QString, QByteArray> events;
    BenchSamples warmUp;
    QByteArray warmUpEvent;
    if (!runChild(options, options.kinds.constFirst(), folder, entries, warmUp, warmUpEvent)) {
        return false;
    }
    for (int round = 0; round < options.rounds; ++round) {
        for (const QString& kind : options.kinds) {
            if (!runChild(options, kind, folder, entries, samples[kind], events[kind])) {
                std::fprintf(stderr, "%s failed with %d entries\n", qPrintable(kind), entries);
                return false;
            }
        }
    }
    std::printf("\n%d files, %d rounds%s; median (lowest to highest)\n\n", entries, options.rounds,
        options.theme.isEmpty() ? "" : qPrintable(QStringLiteral(", XDG_CURRENT_DESKTOP=") + options.theme));
    printTable(samples, events);
    return true;
}

/// Everything that is measured lies below one temporary folder, in folders named by their number of files.
bool measureAllOpening(const Options& options)
{
    for (const int entries : options.sizes) {
        const QTemporaryDir place(options.place + QStringLiteral("/vantrel-bench-XXXXXX"));
        const QString folder = place.filePath(QString::number(entries));
        if (!makeBenchFolder(folder, entries)) {
            std::fprintf(stderr, "%s could not be filled\n", qPrintable(folder));
            return false;
        }
        if (!measureOpening(options, folder, entries)) {
            return false;
        }
    }
    return true;
}

/// The watcher needs an application object of the X server's platform, so it is a process of its own too.
bool runStartUp(const Options& options)
{
    const QTemporaryDir home;
    QFile settings(home.filePath(QStringLiteral(".Vantrel")));
    if (!options.settings.isEmpty()) {
        QFile::copy(options.settings, settings.fileName());
    } else if (settings.open(QIODevice::WriteOnly)) {
        settings.write("drive=/=root\n");
        settings.close();
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("HOME"), home.path());
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(),
        {QStringLiteral("--start-up"), options.vantrel, QString::number(options.rounds * 4)});
    process.waitForFinished(-1);
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

Options readOptions(const QCoreApplication& app)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Measures opening folders and starting up, beside bare Qt views."));
    parser.addHelpOption();
    const auto add
        = [&parser](const char* name, const char* text, const char* value = "", const char* preset = "") {
              parser.addOption(
                  {QLatin1String(name), QLatin1String(text), QLatin1String(value), QLatin1String(preset)});
          };
    add("all", "Adds 1,000,000 files to the sizes.");
    add("rounds", "Rounds of each case.", "number", "5");
    add("cases", "Cases, by commas: empty, standard, vantrel, double, both.", "names",
        "empty,standard,vantrel,double,both");
    add("place", "Folder to make the measured folders in.", "folder", qPrintable(QDir::tempPath()));
    add("platform", "xcb (on a virtual X server of its own) or offscreen.", "name", "xcb");
    add("theme", "Desktop name to run the cases under.", "name");
    add("date", "Also sorts by date.");
    add("only", "Only \"open\" or only \"start\".", "what");
    add("settings", "Settings file for the start-up.", "file");
    add("program", "Program to start up.", "file",
        qPrintable(app.applicationDirPath() + QStringLiteral("/../vantrel")));
    parser.addPositionalArgument(
        QStringLiteral("sizes"), QStringLiteral("Numbers of files (1000 10000 100000)."));
    parser.process(app);
    Options options;
    for (const QString& size : parser.positionalArguments()) {
        options.sizes.append(size.toInt());
    }
    if (options.sizes.isEmpty()) {
        options.sizes = {1000, 10000, 100000};
    }
    if (parser.isSet(QStringLiteral("all"))) {
        options.sizes.append(1000000);
    }
    options.rounds = qMax(1, parser.value(QStringLiteral("rounds")).toInt());
    options.kinds = parser.value(QStringLiteral("cases")).split(QLatin1Char(','));
    options.place = parser.value(QStringLiteral("place"));
    options.platform = parser.value(QStringLiteral("platform"));
    options.theme = parser.value(QStringLiteral("theme"));
    options.byDate = parser.isSet(QStringLiteral("date"));
    options.settings = parser.value(QStringLiteral("settings"));
    options.vantrel = parser.value(QStringLiteral("program"));
    options.opening = parser.value(QStringLiteral("only")) != QLatin1String("start");
    options.startUp = parser.value(QStringLiteral("only")) != QLatin1String("open");
    return options;
}

int runParent(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    const Options options = readOptions(app);
    const QTemporaryDir runtime; // Qt says so where there is none
    if (!qEnvironmentVariableIsSet("XDG_RUNTIME_DIR")) {
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    }
    const BenchDisplay display;
    qputenv("DISPLAY", display.name());
    if (display.name().isEmpty() && (options.startUp || options.platform == QLatin1String("xcb"))) {
        std::fprintf(stderr, "Xvfb or openbox did not start\n");
        return 1;
    }
    const bool opened = !options.opening || measureAllOpening(options);
    const bool started = !options.startUp || runStartUp(options);
    return opened && started ? 0 : 1;
}

/// What Vantrel's own start does before its application object is made; the bare views start as Qt has it.
void prepareLikeVantrel()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    qputenv("QT_XCB_GL_INTEGRATION", "none");
}

int runCase(int argc, char** argv)
{
    const QString kind = QString::fromLatin1(argv[2]);
    // Both read local times at the same cost; only the time zone file's repeated look-up would differ.
    qputenv("TZ", ":/etc/localtime");
    if (kind != QLatin1String("empty") && kind != QLatin1String("standard")) {
        prepareLikeVantrel();
    }
    LoopWatch app(argc, argv);
    const QString folder = QFile::decodeName(argv[3]);
    OpenChild child(app, kind, QFileInfo(folder).path(), folder, QByteArray(argv[4]).toInt());
    return child.run(argc > 5) ? 0 : 1;
}

int runBareWindow(int argc, char** argv)
{
    const QApplication app(argc, argv);
    BareWindow window(QFile::decodeName(argv[2]));
    window.showMaximized();
    return QApplication::exec();
}

int runWatcher(int argc, char** argv)
{
    const QGuiApplication app(argc, argv);
    return measureStartUp(QFile::decodeName(argv[2]), QCoreApplication::applicationFilePath(),
               QStringLiteral("/"), QByteArray(argv[3]).toInt())
        ? 0
        : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const QByteArray mode = argc > 1 ? QByteArray(argv[1]) : QByteArray();
    if (mode == "--case" && argc > 4) {
        return runCase(argc, argv);
    }
    if (mode == "--bare-window" && argc > 2) {
        return runBareWindow(argc, argv);
    }
    if (mode == "--start-up" && argc > 3) {
        return runWatcher(argc, argv);
    }
    return runParent(argc, argv);
}
