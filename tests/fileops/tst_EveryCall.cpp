#include "fileops/MProgress.h"

#include "tests/support/FaultShim.h"
#include "tests/support/OperationRun.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QHash>

#include <cerrno>
#include <cstring>

namespace {

/// A call of a recorded run, and how many calls of its function on its path there were up to it.
struct Call
{
    QString function;
    QString path;
    int number = 0;
};

struct Operation
{
    const char* name;
    int kind;
    QString item;
    QString destination;
};

const QList<Operation> operations{{"count", 0, "src", ""}, {"copy a tree", OpCopy, "src", "to"},
    {"copy a file", OpCopy, "src/full", "to"}, {"copy to a name", OpCopyTo, "src/full", "to/new"},
    {"move", OpMove, "src", "to"}, {"delete a tree", OpDelete, "src", ""},
    {"delete a file", OpDelete, "src/full", ""}};

QString reason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

void fill(const TestDir& dir)
{
    dir.file("src/full", "content");
    dir.file("src/empty");
    dir.link("src/link", "full");
    dir.file("src/sub/deep", "deep content");
    dir.folder("to");
}

QList<Call> callsOf(const FaultShim& shim)
{
    QList<Call> calls;
    QHash<QString, int> numbers;
    const QStringList lines = shim.shortCalls(true);
    for (const QString& line : lines) {
        calls.append({line.section(' ', 0, 0), line.section(' ', 1), ++numbers[line]});
    }
    return calls;
}

bool isFolder(const QString& path)
{
    return path == "src" || path == "src/sub";
}

QString copied(const Operation& operation, const QString& path)
{
    return operation.kind == OpCopyTo ? operation.destination
        : operation.item == "src"     ? "to/" + path
                                      : "to/full";
}

/// @return beginning and path of the report that a failure of that call alone must bring; empty where it must
///         bring none
QString expectedReport(const Operation& operation, const Call& call)
{
    const QString& function = call.function;
    const QString& path = call.path;
    const bool topLevel = path == operation.item;
    if (operation.kind == OpMove) {
        return function == "rename" ? QString("Error moving:\n src") : QString();
    }
    if (operation.kind == OpDelete) {
        if (function == "remove") {
            return (isFolder(path) ? "Error deleting directory:\n " : "Error deleting file:\n ") + path;
        }
        if (function == "opendir" && call.number == 2) {
            return "Error accessing directory:\n " + path;
        }
        // A top-level item that cannot be seen is taken for a folder.
        if (function == "lstat" && topLevel && !isFolder(path) && call.number == 2) {
            return "Error accessing directory:\n " + path;
        }
        // The folder is named, not its entry.
        if (function == "lstat" && !topLevel && call.number == (isFolder(path) ? 3 : 2)) {
            return "Error deleting directory:\n " + path.section('/', 0, -2);
        }
        return QString();
    }
    if (operation.kind == OpCopy || operation.kind == OpCopyTo) {
        if (function == "lstat" && (path == "." || path == "to") && call.number == 1) {
            return "Error creating directory:\n " + copied(operation, operation.item);
        }
        if (function == "mkdir") {
            return "Error creating directory:\n " + path;
        }
        if (function == "opendir" && call.number == 2) {
            return "Error reading directory:\n " + path;
        }
        if (function == "open") {
            return (path.startsWith("src") ? "Unable to open source file:\n "
                                           : "Unable to open destination file:\n ")
                + path;
        }
        if (function == "write" || (function == "fchmod" && path.endsWith("empty"))) {
            return "Error writing file:\n " + path;
        }
        if (function == "readlink" || function == "symlink") {
            return "Unable to create symbolic link:\n "
                + (path.startsWith("src") ? copied(operation, path) : path);
        }
        if (function == "lstat" && path.startsWith("src/") && !isFolder(path)
            && call.number == (operation.kind == OpCopyTo ? 2 : 3)) {
            return "Cannot find source file:\n " + path;
        }
        if (function == "lstat" && operation.kind == OpCopy && topLevel && !isFolder(path)
            && call.number == 2) {
            return "Error reading directory:\n " + path;
        }
    }
    return QString();
}

} // namespace

/// Lets every call of every operation fail, one after the other.
class TestEveryCall : public QObject
{
    Q_OBJECT

private slots:
    void fails_data();
    void fails();
    void failsFromThenOn_data();
    void failsFromThenOn();

private:
    QList<Call> record(const Operation& operation);
    void check(const Operation& operation, const Call& call, const QString& button, int times);
    void runAll(int times);

    int m_runs = 0;
};

QList<Call> TestEveryCall::record(const Operation& operation)
{
    TestDir dir;
    fill(dir);
    FaultShim shim(dir.path());
    OperationRun run(operation.kind, {dir.path(operation.item)},
        operation.destination.isEmpty() ? QString() : dir.path(operation.destination));
    run.answers.otherwise({"YesAll"});
    return run.run() ? callsOf(shim) : QList<Call>();
}

void TestEveryCall::check(const Operation& operation, const Call& call, const QString& button, int times)
{
    constexpr int error = EDQUOT; // which none of the calls gives here by itself
    TestDir dir;
    fill(dir);
    const QStringList before = dir.tree("src");
    QStringList warnings;
    {
        FaultShim shim(dir.path());
        shim.fail(qPrintable(call.function), call.path, error, call.number, times);
        OperationRun run(operation.kind, {dir.path(operation.item)},
            operation.destination.isEmpty() ? QString() : dir.path(operation.destination));
        // What fails for good is not to be tried again for ever. So does a file that was once taken for a
        // folder, and a folder that was not listed to its end and is to be removed.
        const bool forGood = times == FaultShim::always || call.function == "readdir"
            || (call.function == "lstat" && call.path == operation.item && !isFolder(call.path));
        const QString answer = button == "Retry" && forGood ? "Abort" : button;
        run.answers.otherwise({"YesAll", answer});
        QVERIFY(run.run());
        const QStringList texts = run.answers.texts();
        for (const QString& text : texts) {
            if (!text.startsWith("Replace file:\n") && !text.startsWith("Delete file:\n")) {
                warnings.append(text);
            }
        }
        QCOMPARE(run.abort, answer == "Abort" && !warnings.isEmpty() ? 1 : 0);
        QCOMPARE(run.ignoreAll, button == "IgnoreAll" && !warnings.isEmpty() ? 1 : 0);
        if (answer == "IgnoreAll" || answer == "Abort") {
            QVERIFY2(warnings.size() <= 1, qPrintable(warnings.join(" | ")));
        }
    }
    // The end of a listing is no failure, but may leave a folder behind that is not empty.
    if (times == 1 && call.function != "readdir") {
        QString expected = expectedReport(operation, call);
        QCOMPARE(warnings.isEmpty(), expected.isEmpty());
        expected.replace("\n ", "\n" + dir.path() + "/");
        const QString first = warnings.value(0);
        QVERIFY2(
            expected.isEmpty() || first.startsWith(expected + "\n"), qPrintable(first + " for " + expected));
        const bool direct = call.function != "lstat" || expected.startsWith("Cannot find")
            || expected.startsWith("Error deleting");
        QVERIFY2(expected.isEmpty() || !direct || first.endsWith("\n" + reason(error)), qPrintable(first));
    }
    if (operation.kind != OpDelete && operation.kind != OpMove) {
        QCOMPARE(dir.tree("src"), before);
        QCOMPARE(dir.read("src/full"), QByteArray("content"));
        QCOMPARE(dir.read("src/sub/deep"), QByteArray("deep content"));
    }
    if (operation.kind == OpDelete && button == "Retry" && times == 1 && call.function != "readdir"
        && !(call.function == "lstat" && call.path == "src/full" && operation.item == "src/full")) {
        QVERIFY(!dir.exists(operation.item));
    }
    ++m_runs;
}

void TestEveryCall::runAll(int times)
{
    QFETCH(int, which);
    const Operation& operation = operations.at(which);
    const QList<Call> calls = record(operation);
    QVERIFY(!calls.isEmpty());
    const int descriptors = descriptorCount();
    for (const Call& call : calls) {
        for (const char* button : {"Retry", "Ignore", "IgnoreAll", "Abort"}) {
            check(operation, call, button, times);
            if (QTest::currentTestFailed()) {
                QFAIL(qPrintable(QStringLiteral("%1 %2, number %3, %4")
                                     .arg(call.function, call.path)
                                     .arg(call.number)
                                     .arg(button)));
            }
        }
    }
    QTRY_COMPARE(descriptorCount(), descriptors);
    qInfo("%d runs so far", m_runs);
}

void TestEveryCall::fails_data()
{
    QTest::addColumn<int>("which");
    for (int i = 0; i < operations.size(); ++i) {
        QTest::newRow(operations.at(i).name) << i;
    }
}

void TestEveryCall::fails()
{
    runAll(1);
}

void TestEveryCall::failsFromThenOn_data()
{
    fails_data();
}

void TestEveryCall::failsFromThenOn()
{
    runAll(FaultShim::always);
}

VANTREL_TEST_MAIN(TestEveryCall)
#include "tst_EveryCall.moc"
