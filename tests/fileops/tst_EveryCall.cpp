#include "fileops/MProgress.h"

#include "tests/support/DescribedOperation.h"
#include "tests/support/FaultShim.h"
#include "tests/support/OperationRun.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QHash>
#include <QRandomGenerator>
#include <QSet>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <vector>

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
    QStringList items;
    QString destination;
    bool asks; ///< also where nothing fails
};

const QList<Operation> operations{{"count", 0, {"src", "other"}, "", false},
    {"copy a tree", OpCopy, {"src"}, "to", false},
    {"copy over a tree", OpCopy, {"src", "other"}, "full", true},
    {"copy into new folders", OpCopy, {"src"}, "to/new/er", false},
    {"copy a file", OpCopy, {"src/full"}, "to", false},
    {"copy to a name", OpCopyTo, {"src/full"}, "to/name", false},
    {"copy over a name", OpCopyTo, {"src/full"}, "other", true},
    {"copy to a name in new folders", OpCopyTo, {"src/full"}, "to/new/name", false},
    {"move", OpMove, {"src"}, "full/to", false},
    {"move several", OpMove, {"other", "src/full", "src/sub"}, "full/to", false},
    {"delete a tree", OpDelete, {"src"}, "", true}, {"delete a file", OpDelete, {"src/full"}, "", false},
    {"delete several", OpDelete, {"other", "src/sub", "src/link"}, "", true}};

void fill(const TestDir& dir)
{
    dir.file("src/full", "content");
    dir.file("src/empty");
    dir.link("src/link", "full");
    dir.file("src/sub/deep", "deep content");
    dir.file("other", "some other content");
    dir.folder("to");
    dir.folder("full/to"); // for moves: a name that is glued to "full" is still below the watched folder
    dir.file("full/src/full", "old and longer content");
    dir.file("full/src/sub/deep", "old");
}

/// The long form takes every error for every call, with every answer to the other questions.
bool isLong()
{
    return qEnvironmentVariableIntValue("VANTREL_LONG") != 0;
}

/// What can really become of a call on some file system, the most telling first.
QList<int> plausibleErrors(const QString& function)
{
    static const QHash<QString, QList<int>> errors{
        {"lstat", {ENOENT, EACCES, EIO, ELOOP, ENAMETOOLONG, ENOMEM, ENOTDIR, ESTALE}},
        {"opendir", {EACCES, EMFILE, ENOENT, EIO, ENFILE, ENOMEM, ENOTDIR, ESTALE}},
        {"readdir", {EIO, ENOENT, ESTALE}}, {"closedir", {EIO}},
        {"open",
            {EACCES, EMFILE, ENOSPC, EROFS, EIO, EINTR, ENFILE, ENOENT, EISDIR, ELOOP, ETXTBSY, ENXIO,
                EDQUOT}},
        {"read", {EIO, EINTR, EAGAIN, EISDIR, ESTALE}},
        {"write", {ENOSPC, EIO, EDQUOT, EFBIG, EINTR, EPIPE, EROFS, ESTALE}},
        {"close", {EIO, ENOSPC, EDQUOT, EINTR}}, {"ftruncate", {EPERM, EFBIG, EIO, EINVAL}},
        {"posix_fadvise", {EINVAL, ESPIPE}}, {"posix_fallocate", {ENOSPC, EOPNOTSUPP, EFBIG, EINTR}},
        {"fchown", {EPERM, EIO, EROFS, EDQUOT}}, {"fchmod", {EPERM, EIO, EROFS}},
        {"mkdir", {EACCES, ENOSPC, EEXIST, EROFS, EMLINK, EDQUOT, ENAMETOOLONG, ENOENT}},
        {"rename", {EXDEV, EACCES, EBUSY, ENOTEMPTY, EIO, EROFS, ENOSPC, ENOENT}},
        {"remove", {EACCES, EBUSY, EPERM, EROFS, EIO, ENOENT, ENOTEMPTY, ETXTBSY}},
        {"readlink", {EACCES, EIO, EINVAL, ENOENT}},
        {"symlink", {EEXIST, EPERM, ENOSPC, EACCES, EROFS, EDQUOT, EOPNOTSUPP}}};
    return errors.value(function, {EIO});
}

/// Chooses the buttons of one run. Retry is chosen twice for the same failure, and then given up.
class Choice
{
public:
    Choice(QString warning, QString question)
        : m_warning(std::move(warning))
        , m_question(std::move(question))
    {
    }
    QString operator()(const QString& text)
    {
        if (text.startsWith("Replace file:\n") || text.startsWith("Delete file:\n")) {
            return m_question;
        }
        return m_warning == "Retry" && ++m_seen[text] > 2 ? QString("Ignore") : m_warning;
    }

private:
    QString m_warning;
    QString m_question;
    QHash<QString, int> m_seen;
};

/// What is done to the calls of a run.
struct Fault
{
    enum Kind { Fail, Shorten, Stop };
    Kind kind;
    Call call;
    int amount; ///< errno or bytes
    int times;

    QString text() const
    {
        const char* const names[] = {"fails", "is short", "stops"};
        return QStringLiteral("%1 %2, number %3, %4 (%5, %6)")
            .arg(call.function, call.path)
            .arg(call.number)
            .arg(QLatin1String(names[kind]))
            .arg(amount)
            .arg(times == FaultShim::always ? QString("from then on") : QString::number(times));
    }
};

} // namespace

/// Lets every call of every operation fail, be short, or be the moment at which the operation is stopped, and
/// compares all that is asked, done and left with what must be.
class TestEveryCall : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void fails_data() { eachOperation(); }
    void fails();
    void failsFromThenOn_data() { eachOperation(); }
    void failsFromThenOn();
    void isShort_data() { eachOperation(); }
    void isShort();
    void stops_data() { eachOperation(); }
    void stops();
    void severalFail_data() { eachOperation(); }
    void severalFail();
    void cleanupTestCase();

private:
    static void eachOperation();
    QList<Call> record(const Operation& operation);
    void check(const Operation& operation, const std::vector<Fault>& faults, const QString& button,
        const QString& question);
    QString checked(const Operation& operation, const std::vector<Fault>& faults, const QString& button,
        const QString& question);
    void failAll(int times);
    void failOne(const Operation& operation, const Fault& fault, const QString& button);
    QStringList questionsOf(const Operation& operation);

    int m_runs = 0;
    int m_boxes = 0;
    int m_descriptors = 0;
    int m_threads = 0;
};

void TestEveryCall::initTestCase()
{
    QWidget window; // what the platform starts with the first window stays
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    m_threads = threadCount();
    QVERIFY(!record(operations.constFirst()).isEmpty());
    QTRY_COMPARE(threadCount(), m_threads);
    m_descriptors = descriptorCount();
}

void TestEveryCall::eachOperation()
{
    QTest::addColumn<int>("which");
    for (int i = 0; i < operations.size(); ++i) {
        QTest::newRow(operations.at(i).name) << i;
    }
}

QList<Call> TestEveryCall::record(const Operation& operation)
{
    TestDir dir(TestDir::inMemory());
    fill(dir);
    FaultShim shim(dir.path());
    QStringList items;
    for (const QString& item : operation.items) {
        items.append(dir.path(item));
    }
    OperationRun run(
        operation.kind, items, operation.destination.isEmpty() ? QString() : dir.path(operation.destination));
    run.answers.otherwise({"YesAll"});
    QList<Call> calls;
    if (run.run()) {
        QHash<QString, int> numbers;
        const QStringList lines = shim.shortCalls(true);
        for (const QString& line : lines) {
            calls.append({line.section(' ', 0, 0), line.section(' ', 1), ++numbers[line]});
        }
    }
    return calls;
}

/// @return what is wrong with a run; empty where nothing is
QString TestEveryCall::checked(const Operation& operation, const std::vector<Fault>& faults,
    const QString& button, const QString& question)
{
    TestDir dir(TestDir::inMemory());
    fill(dir);
    const FileTree before = fileTreeOf(dir.path());
    QStringList items;
    for (const QString& item : operation.items) {
        items.append(dir.path(item));
    }
    const QString destination = operation.destination.isEmpty() ? QString() : dir.path(operation.destination);
    FaultShim shim(dir.path());
    shim.tellKinds();
    OperationRun run(operation.kind, items, destination);
    DescribedOperation::StopBefore stop;
    for (const Fault& fault : faults) {
        const QByteArray function = fault.call.function.toUtf8();
        if (fault.kind == Fault::Fail) {
            shim.fail(function.constData(), fault.call.path, fault.amount, fault.call.number, fault.times);
        } else if (fault.kind == Fault::Shorten) {
            shim.shorten(function.constData(), fault.call.path, fault.amount, fault.call.number, fault.times);
        } else {
            stop = {fault.call.function, fault.call.path, fault.call.number};
            shim.before(function.constData(), fault.call.path, fault.call.number, [&run] { run.abortNow(); });
        }
    }
    Choice choice(button, question);
    run.answers.otherwise(
        [&choice](const QString& text) { return choice(DescribedOperation::withoutFacts(text)); });
    ++m_runs;
    if (!run.run()) {
        return "it does not end";
    }
    const QStringList calls = shim.calls();
    DescribedOperation described(dir.path(), before, calls);
    const QString wrong = described.run(operation.kind, items, destination, Choice(button, question), stop);
    if (!wrong.isEmpty()) {
        return wrong;
    }
    QStringList texts;
    for (const QString& text : run.answers.texts()) {
        texts.append(DescribedOperation::withoutFacts(text));
    }
    m_boxes += texts.size();
    if (texts != described.texts) {
        return "asked: " + texts.join(" | ") + "\nexpected: " + described.texts.join(" | ");
    }
    const QStringList differences = differencesOf(fileTreeOf(dir.path()), described.after);
    if (!differences.isEmpty()) {
        return differences.join("\n");
    }
    const QList<qint64> figures{run.abort, run.ignoreAll, run.replaceAll, run.deleteAll, run.fileCount,
        run.folderCount, run.total, run.done};
    const QList<qint64> expected{described.abort, described.ignoreAll, described.replaceAll,
        described.deleteAll, described.fileCount, described.folderCount, described.total, described.done};
    if (figures != expected) {
        QString text = "figures, found and expected:";
        for (int i = 0; i < figures.size(); ++i) {
            text += QStringLiteral(" %1/%2").arg(figures.at(i)).arg(expected.at(i));
        }
        return text;
    }
    const auto isClean = [this] {
        return descriptorCount() == m_descriptors && threadCount() == m_threads && childCount() == 0;
    };
    // A thread that was waited for is still there for a moment, much shorter than QTRY_VERIFY looks away.
    QElapsedTimer clock;
    clock.start();
    while (!isClean() && clock.elapsed() < 5000) {
        QThread::yieldCurrentThread();
    }
    if (!isClean()) {
        return QStringLiteral("left: %1 descriptors, %2 threads, %3 children")
            .arg(descriptorCount() - m_descriptors)
            .arg(threadCount() - m_threads)
            .arg(childCount());
    }
    return QString();
}

void TestEveryCall::check(const Operation& operation, const std::vector<Fault>& faults, const QString& button,
    const QString& question)
{
    const QString wrong = checked(operation, faults, button, question);
    if (!wrong.isEmpty()) {
        QString text = wrong + "\nwith " + button + " and " + question;
        for (const Fault& fault : faults) {
            text += "\nwhere " + fault.text();
        }
        QFAIL(qPrintable(text));
    }
}

/// @return answers to give to the questions that are no failures, where there are such
QStringList TestEveryCall::questionsOf(const Operation& operation)
{
    if (!operation.asks) {
        return {"YesAll"};
    }
    if (isLong()) {
        return {"YesAll", "Yes", "No", "Abort"};
    }
    return {m_runs % 2 == 0 ? "YesAll" : "Yes"};
}

void TestEveryCall::failOne(const Operation& operation, const Fault& fault, const QString& button)
{
    for (const QString& question : questionsOf(operation)) {
        check(operation, {fault}, button, question);
    }
}

void TestEveryCall::failAll(int times)
{
    QFETCH(int, which);
    const Operation& operation = operations.at(which);
    const QList<Call> calls = record(operation);
    QVERIFY(!calls.isEmpty());
    // The short form takes one of the answers and one of the errors each time, others where the call fails
    // for good.
    const QStringList buttons{"Retry", "Ignore", "IgnoreAll", "Abort"};
    int turn = times == 1 ? which : which + 2;
    int nextError = 0;
    for (const Call& call : calls) {
        const QList<int> errors = plausibleErrors(call.function);
        for (const QString& button : isLong() ? buttons : QStringList{buttons.at(turn++ % 4)}) {
            for (const int error : isLong() ? errors : QList<int>{errors.at(nextError++ % errors.size())}) {
                failOne(operation, {Fault::Fail, call, error, times}, button);
                if (QTest::currentTestFailed()) {
                    return;
                }
            }
        }
    }
}

void TestEveryCall::fails()
{
    failAll(1);
}

void TestEveryCall::failsFromThenOn()
{
    failAll(FaultShim::always);
}

void TestEveryCall::isShort()
{
    QFETCH(int, which);
    const Operation& operation = operations.at(which);
    const QList<Call> calls = record(operation);
    QVERIFY(!calls.isEmpty());
    QSet<QString> moving;
    for (const Call& call : calls) {
        if (call.function != "read" && call.function != "write") {
            continue;
        }
        moving.insert(call.function);
        for (const int bytes : {0, 1, 3}) {
            for (const int times : {1, FaultShim::always}) {
                check(operation, {{Fault::Shorten, call, bytes, times}}, "Abort", "YesAll");
                if (QTest::currentTestFailed()) {
                    return;
                }
            }
        }
    }
    // All but the copies leave the content of files alone.
    const bool copies = operation.kind == OpCopy || operation.kind == OpCopyTo;
    QCOMPARE(moving, copies ? (QSet<QString>{"read", "write"}) : QSet<QString>());
}

void TestEveryCall::stops()
{
    QFETCH(int, which);
    const Operation& operation = operations.at(which);
    const QList<Call> calls = record(operation);
    QVERIFY(!calls.isEmpty());
    for (const Call& call : calls) {
        for (const QString& question : questionsOf(operation)) {
            check(operation, {{Fault::Stop, call, 0, 1}}, "Ignore", question);
            if (QTest::currentTestFailed()) {
                return;
            }
        }
    }
}

/// Two to four faults at once, picked at random. The seed is VANTREL_SEED, or always the same.
void TestEveryCall::severalFail()
{
    QFETCH(int, which);
    const Operation& operation = operations.at(which);
    const QList<Call> calls = record(operation);
    const QString given = qEnvironmentVariable("VANTREL_SEED", "1");
    QRandomGenerator random(given.toUInt() + static_cast<quint32>(which));
    const int rounds = isLong() ? 500 : 10;
    const QStringList buttons{"Retry", "Ignore", "IgnoreAll", "Abort"};
    const QStringList questions{"Yes", "YesAll", "No"};
    for (int round = 0; round < rounds; ++round) {
        std::vector<Fault> faults;
        const int count = random.bounded(2, 5);
        for (int i = 0; i < count; ++i) {
            const Call& call = calls.at(random.bounded(calls.size()));
            const bool moves = call.function == "read" || call.function == "write";
            const QList<int> errors = plausibleErrors(call.function);
            const int times = random.bounded(3) == 0 ? FaultShim::always : random.bounded(1, 4);
            if (moves && random.bounded(2) == 0) {
                faults.push_back({Fault::Shorten, call, random.bounded(0, 8), times});
            } else {
                faults.push_back({Fault::Fail, call, errors.at(random.bounded(errors.size())), times});
            }
        }
        check(operation, faults, buttons.at(random.bounded(4)), questions.at(random.bounded(3)));
        if (QTest::currentTestFailed()) {
            return;
        }
    }
}

void TestEveryCall::cleanupTestCase()
{
    std::printf("%d runs, %d boxes answered\n", m_runs, m_boxes); // more than QtTest lets through
}

VANTREL_TEST_MAIN(TestEveryCall)
#include "tst_EveryCall.moc"
