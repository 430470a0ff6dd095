#include "tests/support/AsNobody.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

constexpr int million = 1000000;

bool isLong()
{
    return qEnvironmentVariableIntValue("VANTREL_LONG") != 0;
}

/// What a run of a program took.
struct Run
{
    int status = -1; ///< exit status
    double cpuSeconds = 0; ///< so that a busy machine does not count
    long mebibytes = 0; ///< at the most
};

/// @return whether the process has a handler for SIGTERM: from then on, that ends it once its start-up is
/// done
bool isReadyToEnd(pid_t process)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(process));
    if (!status.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray text = status.readAll();
    const QByteArray caught = text.mid(text.indexOf("SigCgt:") + 7, 17).trimmed();
    return (caught.toULongLong(nullptr, 16) & (1ULL << (SIGTERM - 1))) != 0;
}

/// @return the process, which runs the program already
pid_t spawn(const QString& program)
{
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    QByteArray path = QFile::encodeName(program);
    const std::array<char*, 2> arguments{path.data(), nullptr};
    pid_t process = -1;
    if (::posix_spawn(&process, path.constData(), &actions, nullptr, arguments.data(), environ) != 0) {
        process = -1;
    }
    ::posix_spawn_file_actions_destroy(&actions);
    return process;
}

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / million;
}

/// @param endIt whether it is to be ended as soon as it has started
Run runIn(const QString& home, const QString& program, bool endIt)
{
    qputenv("HOME", home.toLocal8Bit());
    Run run;
    const pid_t process = spawn(program);
    bool told = !endIt;
    int status = 0;
    rusage used{};
    const auto hasEnded = [&] {
        told = told || (isReadyToEnd(process) && ::kill(process, SIGTERM) == 0);
        return ::wait4(process, &status, WNOHANG, &used) != 0;
    };
    if (process > 0 && !QTest::qWaitFor(hasEnded, 120000)) {
        ::kill(process, SIGKILL);
        ::wait4(process, &status, 0, &used);
    }
    run.status = process > 0 && WIFEXITED(status) && told ? WEXITSTATUS(status) : -1;
    run.cpuSeconds = seconds(used.ru_utime) + seconds(used.ru_stime);
    run.mebibytes = used.ru_maxrss / 1024;
    return run;
}

} // namespace

/// Starts the real program, and the one that checks the settings, with settings that no user would write. A
/// message box does not keep the program, as SIGTERM ends that as well.
class TestHostileStart : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void settings_data();
    void settings();
    void linesThatAreRead_data();
    void linesThatAreRead();
    void unreadable();

private:
    void check(const TestDir& home, bool isFile, bool isLimited = true) const;

    QString m_program;
    QString m_checker;
};

void TestHostileStart::initTestCase()
{
    const QString folder = QCoreApplication::applicationDirPath();
    m_program = QFileInfo(folder + QStringLiteral("/../vantrel")).canonicalFilePath();
    m_checker = QFileInfo(folder + QStringLiteral("/../vantrel-check")).canonicalFilePath();
    QVERIFY(QFileInfo(m_program).isExecutable());
    QVERIFY(QFileInfo(m_checker).isExecutable());
    // What the platform loses when the application object goes is not ours.
    qputenv("ASAN_OPTIONS", qgetenv("ASAN_OPTIONS") + ":detect_leaks=0");
}

/// @param isFile whether the settings can be read
/// @param isLimited whether little time and memory may be used
void TestHostileStart::check(const TestDir& home, bool isFile, bool isLimited) const
{
    for (const QString& program : {m_program, m_checker}) {
        const bool isChecker = program == m_checker;
        const Run run = runIn(home.path(), program, !isChecker);
        if (isChecker) {
            // 1 where something is found, 2 where the file cannot be read
            QVERIFY2(isFile ? run.status == 0 || run.status == 1 : run.status == 2,
                QByteArray::number(run.status).constData());
        } else {
            QCOMPARE(run.status, 0);
        }
        const QByteArray figures = QByteArray::number(run.cpuSeconds, 'f', 2) + " s, "
            + QByteArray::number(static_cast<qlonglong>(run.mebibytes)) + " MiB";
        if (isLong()) {
            std::printf("%s, %s: %s\n",
                QTest::currentDataTag() != nullptr ? QTest::currentDataTag() : "unreadable",
                isChecker ? "check" : "start", figures.constData());
        }
        // What the checker finds, it holds until it tells it in order: here, up to two things a line.
        const bool isModest
            = run.cpuSeconds < (isChecker ? 30 : 2) && run.mebibytes < (isChecker ? 2000 : 200);
        QVERIFY2(!isLimited || isSanitized || isModest, figures.constData());
    }
}

void TestHostileStart::settings_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QByteArray>("part");
    QTest::addColumn<int>("times");
    const auto add = [](const char* name, const QByteArray& part, int times, bool isShort = false) {
        if (isShort || isLong()) {
            QTest::newRow(name) << "file" << part << times;
        }
    };
    add("no UTF-8", "icon=\xff\xfe\x80\xc0\xaf\xed\xa0\x80\ndrive=/\xff=\xfe\nmenu=\xff=*=\xff=\xff\n", 3,
        true);
    if (isSanitized) {
        return; // the reader itself runs in tests of its own
    }
    for (const char* kind : {"none", "folder", "pipe", "link to an endless device"}) {
        QTest::newRow(kind) << kind << QByteArray() << 0;
    }
    add("a line of 100 MB", QByteArray(million, 'x'), 100, true);
    add("a million comments", "# a comment of usual length\n", million);
    add("a million unknown keys", "colour = red\n", million);
    add("a million icons", "icon=/nowhere/icon.png\n", million);
    add("a million lines of three blanks", "   \n", million);
    add("a comment of 100 MB", QByteArray(million, '#'), 100);
    add("100 MB of NUL", QByteArray(million, '\0'), 100);
    add("100 MB of blanks", QByteArray(million, ' '), 100);
    add("100 MB of separators", QByteArray(million, '='), 100);
    add("100 MB of carriage returns", QByteArray(million, '\r'), 100);
    add("NUL everywhere", QByteArray("style\0=\0a\n\0icon=\0x\0\nwindow=\0\n", 29), 1000);
    add("UTF-16", QByteArray("\xff\xfei\0c\0o\0n\0=\0x\0\n\0", 16), 1);
    add("UTF-16, the other way round", QByteArray("\xfe\xff\0i\0c\0o\0n\0=\0x\0\n", 16), 1);
    add("UTF-16, half a pair", QByteArray("\xff\xfei\0\0\xd8\n\0=\0x", 11), 1);
    add("carriage returns", "icon=a\r\r\n\r\rwindow=2\r", 100000);
    add("style sheet of brackets", "style=" + QByteArray(100000, '{') + "\n", 1);
}

void TestHostileStart::settings()
{
    QFETCH(QString, kind);
    QFETCH(QByteArray, part);
    QFETCH(int, times);
    const TestDir home(TestDir::inMemory());
    const QString name = QStringLiteral(".Vantrel");
    if (kind == "folder") {
        home.folder(name);
    } else if (kind == "pipe") {
        home.fifo(name);
    } else if (kind == "link to an endless device") {
        home.link(name, QStringLiteral("/dev/zero"));
    } else if (kind == "file") {
        QFile file(home.path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        for (int i = 0; i < times; ++i) {
            QCOMPARE(file.write(part), part.size());
        }
    }
    check(home, kind == "file");
}

void TestHostileStart::linesThatAreRead_data()
{
    QTest::addColumn<QByteArray>("begin");
    QTest::newRow("icon=") << QByteArray("icon=");
    if (!isLong()) {
        return;
    }
    for (const char* begin : {"style=", "drive=/=", "window=", "norecurse=", "assn=", "assn=x=", "menu=",
             "menu=copy=", "menu=copy=*=", "menu=copy=*=a="}) {
        QTest::newRow(begin) << QByteArray(begin);
    }
}

/// A line that means something is read to its end, however long that takes.
void TestHostileStart::linesThatAreRead()
{
    QFETCH(QByteArray, begin);
    const TestDir home(TestDir::inMemory());
    QFile file(home.path(QStringLiteral(".Vantrel")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(begin);
    const QByteArray part(million, 'x');
    for (int i = 0; i < (isLong() ? 100 : 1); ++i) {
        QCOMPARE(file.write(part), million);
    }
    file.close();
    check(home, true, false);
}

void TestHostileStart::unreadable()
{
    const TestDir home(TestDir::inMemory());
    home.file(QStringLiteral(".Vantrel"), "icon=x\n", 0);
    home.setMode(QString(), 0777);
    // Who may not read the settings may not reach the build's folder either.
    for (QString* program : {&m_program, &m_checker}) {
        const QString copy = home.path(QFileInfo(*program).fileName());
        QVERIFY(QFile::copy(*program, copy));
        *program = copy;
    }
    {
        const AsNobody nobody; // root may read everything
        check(home, false);
    }
    initTestCase();
}

VANTREL_TEST_MAIN(TestHostileStart)
#include "tst_HostileStart.moc"
