#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "info/Checksum.h"
#include "tests/support/FaultShim.h"
#include "tests/support/FaultyMount.h"
#include "tests/support/MemoryMount.h"
#include "tests/support/OperationRun.h"
#include "tests/support/OwnMountsMain.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Reason.h"
#include "tests/support/TestDir.h"

#include <QCryptographicHash>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QRandomGenerator>

#include <cerrno>
#include <memory>
#include <sys/mount.h>

namespace {

constexpr int block = 1048576;
constexpr int readErrorAt = 100000; ///< as in faultyfs
constexpr int writeErrorAt = 1500000;

/// @return content that no file system makes smaller
QByteArray noise(int bytes)
{
    QRandomGenerator random(1);
    QByteArray content(bytes, '\0');
    for (char& one : content) {
        one = static_cast<char>(random.bounded(1, 256));
    }
    return content;
}

/// A btrfs in a file, with room for a number of bytes in its folder "limited".
class QuotaMount
{
public:
    QuotaMount(const TestDir& dir, const QString& place, int bytes)
        : m_place(place)
    {
        const QString image = dir.sparseFile("image", 128 * block);
        m_mounted = hasOwnMounts() && run("mkfs.btrfs", {"-q", image})
            && run("mount", {"-o", "loop", image, place});
        m_limited = m_mounted && run("btrfs", {"quota", "enable", place})
            && run("btrfs", {"subvolume", "create", place + "/limited"}) && setLimit(bytes);
    }
    ~QuotaMount()
    {
        if (m_mounted) {
            run("umount", {m_place});
        }
    }
    QuotaMount(const QuotaMount&) = delete;
    QuotaMount& operator=(const QuotaMount&) = delete;

    bool isLimited() const { return m_limited; }
    QByteArray reason() const { return "no btrfs with quotas can be mounted here: " + m_output; }
    bool setLimit(int bytes)
    {
        return run("btrfs", {"qgroup", "limit", QString::number(bytes), m_place + "/limited"});
    }

private:
    bool run(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        const bool done = process.waitForFinished() && process.exitStatus() == QProcess::NormalExit
            && process.exitCode() == 0;
        m_output = process.readAll();
        return done;
    }

    QString m_place;
    bool m_mounted = false;
    bool m_limited = false;
    QByteArray m_output;
};

} // namespace

/// Operations on file systems that have faults or limits of their own.
class TestForeignFileSystems : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void quota_data();
    void quota();
    void moveBetweenMountsOfOneFileSystem();

    void readErrorEndsAFile();
    void readErrorEndsChecksums();
    void writeError();
    void closeError_data();
    void closeError();
    void listingError_data();
    void listingError();
    void withoutOwnersAndReservedSpace();
    void serverDies_data();
    void serverDies();

private:
    void mountFaulty();

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<FaultyMount> faulty;
    int m_descriptors = 0;
};

void TestForeignFileSystems::init()
{
    m_descriptors = descriptorCount();
    dir = std::make_unique<TestDir>();
    dir->folder("behind");
    dir->folder("mount");
}

void TestForeignFileSystems::cleanup()
{
    faulty.reset();
    dir.reset();
    QTRY_COMPARE(descriptorCount(), m_descriptors);
}

/// Shows "behind" at "mount".
void TestForeignFileSystems::mountFaulty()
{
    faulty = std::make_unique<FaultyMount>(dir->path("behind"), dir->path("mount"));
}

void TestForeignFileSystems::quota_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("Retry") << "Retry";
    QTest::newRow("Ignore") << "Ignore";
    QTest::newRow("Abort") << "Abort";
}

void TestForeignFileSystems::quota()
{
    QFETCH(QString, button);
    QuotaMount mount(*dir, dir->path("mount"), 3 * block);
    if (!mount.isLimited()) {
        QSKIP(mount.reason().constData());
    }
    const QByteArray content = noise(8 * block);
    dir->file("src", content);
    OperationRun run(OpCopy, {dir->path("src")}, dir->path("mount/limited"));
    if (button == "Retry") {
        run.answers.meanwhile([&] { QVERIFY(mount.setLimit(100 * block)); }).click("Retry").click("Yes");
    } else {
        run.answers.click(button);
    }
    QVERIFY(run.run());
    const QString text = "Error writing file:\n" + dir->path("mount/limited/src") + "\n" + reason(EDQUOT);
    QCOMPARE(run.answers.texts().value(0), text);
    const QByteArray copy = dir->read("mount/limited/src");
    if (button == "Retry") {
        QVERIFY(copy == content);
    } else {
        QCOMPARE(run.answers.texts().size(), 1);
        QVERIFY(copy.size() < content.size() && content.startsWith(copy)); // what there was room for stays
    }
    QCOMPARE(run.abort, button == "Abort" ? 1 : 0);
    QVERIFY(dir->read("src") == content);
}

void TestForeignFileSystems::moveBetweenMountsOfOneFileSystem()
{
    const BindMount mount(dir->path("behind"), dir->path("mount"));
    NEEDS_MOUNT(mount)
    dir->file("f", "x");
    OperationRun run(OpMove, {dir->path("f")}, dir->path("mount"));
    run.answers.click("Retry").click("Ignore");
    QVERIFY(run.run());
    const QString text = "Error moving:\n" + dir->path("f") + "\n" + reason(EXDEV);
    QCOMPARE(run.answers.texts(), (QStringList{text, text}));
    QCOMPARE(dir->read("f"), QByteArray("x"));
    QVERIFY(!dir->exists("behind/f"));
}

void TestForeignFileSystems::readErrorEndsAFile()
{
    const QByteArray content = noise(3 * readErrorAt);
    dir->file("behind/readerror", content);
    dir->file("behind/whole", content);
    mountFaulty();
    NEEDS_FAULTY_MOUNT(*faulty)
    OperationRun run(OpCopy, {dir->path("mount/readerror"), dir->path("mount/whole")}, dir->path("to"));
    QVERIFY(run.run());
    // A read error is not reported: this is wanted. The space that was reserved stays, with zeros in it.
    QCOMPARE(run.answers.texts(), QStringList());
    QVERIFY(dir->read("to/readerror") == content.left(readErrorAt) + QByteArray(2 * readErrorAt, '\0'));
    QVERIFY(dir->read("to/whole") == content);
    QCOMPARE(run.done, qint64(4 * readErrorAt + 2));
    QCOMPARE(run.total, qint64(6 * readErrorAt + 3));
}

void TestForeignFileSystems::readErrorEndsChecksums()
{
    const QByteArray content = noise(3 * readErrorAt);
    dir->file("behind/readerror", content);
    mountFaulty();
    NEEDS_FAULTY_MOUNT(*faulty)
    QWidget parent;
    Checksum dialog(&parent, dir->path("mount/readerror"));
    QTRY_COMPARE(dialog.running.load(), 0);
    const QByteArray md5
        = QCryptographicHash::hash(content.left(readErrorAt), QCryptographicHash::Md5).toHex();
    QTRY_COMPARE(dialog.md5Text, QString(md5));
}

void TestForeignFileSystems::writeError()
{
    const QByteArray content = noise(3 * block);
    dir->file("writeerror", content);
    mountFaulty();
    NEEDS_FAULTY_MOUNT(*faulty)
    OperationRun run(OpCopy, {dir->path("writeerror")}, dir->path("mount"));
    run.answers.click("Retry").click("Yes").click("Ignore");
    QVERIFY(run.run());
    const QStringList texts = run.answers.texts();
    const QString text = "Error writing file:\n" + dir->path("mount/writeerror") + "\n" + reason(EIO);
    QCOMPARE(texts.value(0), text);
    QVERIFY(texts.value(1).startsWith("Replace file:\n"));
    QCOMPARE(texts.value(2), text);
    QVERIFY(content.startsWith(dir->read("behind/writeerror").left(writeErrorAt)));
}

void TestForeignFileSystems::closeError_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::newRow("of the copy") << "closeerror"
                                 << "mount";
    QTest::newRow("of the source") << "mount/closeerror"
                                   << "to";
}

void TestForeignFileSystems::closeError()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    const QByteArray content = noise(200000);
    dir->file(from.startsWith("mount") ? QString("behind/closeerror") : from, content);
    mountFaulty();
    NEEDS_FAULTY_MOUNT(*faulty)
    OperationRun run(OpCopy, {dir->path(from)}, dir->path(to));
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList()); // nobody asks what closing says: this is wanted
    QVERIFY(dir->read(to == "mount" ? QString("behind/closeerror") : to + "/closeerror") == content);
    QCOMPARE(run.done, qint64(200001));
}

void TestForeignFileSystems::listingError_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("copy") << int(OpCopy);
    QTest::newRow("delete") << int(OpDelete);
}

void TestForeignFileSystems::listingError()
{
    QFETCH(int, kind);
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        dir->file(QStringLiteral("behind/listerror/") + name, name);
    }
    mountFaulty();
    NEEDS_FAULTY_MOUNT(*faulty)
    OperationRun run(kind, {dir->path("mount/listerror")}, dir->path("to"));
    run.answers.otherwise({"YesAll", "Ignore"});
    QVERIFY(run.run());
    if (kind == OpCopy) {
        QCOMPARE(run.answers.texts(), QStringList());
        QVERIFY(dir->tree("to/listerror").size() < 5);
    } else {
        QCOMPARE(run.answers.texts().constLast(),
            "Error deleting directory:\n" + dir->path("mount/listerror") + "\n" + reason(ENOTEMPTY));
    }
    // Only what was deleted is gone, and nothing else was touched.
    const QStringList left = dir->tree("behind/listerror");
    QVERIFY(kind == OpCopy ? left.size() == 5 : left.size() >= 3);
    for (const QString& name : left) {
        QCOMPARE(dir->read("behind/listerror/" + name), name.toUtf8());
    }
}

void TestForeignFileSystems::withoutOwnersAndReservedSpace()
{
    const QByteArray content = noise(2 * block + 1);
    dir->file("src/f", content, 0640);
    dir->link("src/link", "f");
    dir->folder("src/empty", 0700);
    mountFaulty();
    NEEDS_FAULTY_MOUNT(*faulty)
    OperationRun run(OpCopy, {dir->path("src")}, dir->path("mount"));
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts(), QStringList());
    QCOMPARE(dir->tree("behind"), (QStringList{"src/", "src/empty/", "src/f", "src/link@"}));
    QVERIFY(dir->read("behind/src/f") == content);
    QCOMPARE(QFile::permissions(dir->path("behind/src/f")) & 0xFFF,
        QFile::permissions(dir->path("src/f")) & 0xFFF);
}

void TestForeignFileSystems::serverDies_data()
{
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QString>("path");
    QTest::newRow("before counting") << QByteArray("lstat") << "mount/src";
    QTest::newRow("before listing") << QByteArray("opendir") << "mount/src";
    QTest::newRow("before a file is opened") << QByteArray("open") << "mount/src/f";
    QTest::newRow("before a file is read") << QByteArray("read") << "mount/src/f";
}

void TestForeignFileSystems::serverDies()
{
    QFETCH(QByteArray, function);
    QFETCH(QString, path);
    dir->file("behind/src/f", noise(200000));
    mountFaulty();
    NEEDS_FAULTY_MOUNT(*faulty)
    FaultShim shim(dir->path());
    shim.before(function.constData(), path, 1, [this] { faulty->kill(); });
    OperationRun run(OpCopy, {dir->path("mount/src")}, dir->path("to"));
    run.answers.otherwise({"Ignore"});
    QVERIFY(run.run());
    const QStringList texts = run.answers.texts();
    for (const QString& text : texts) {
        QVERIFY2(text.endsWith(reason(ENOTCONN)) || text.endsWith(reason(ECONNABORTED)), qPrintable(text));
    }
    QVERIFY(function == "read" || !texts.isEmpty());
    QVERIFY(dir->exists("behind/src/f"));
}

VANTREL_OWN_MOUNTS_TEST_MAIN(TestForeignFileSystems)
#include "tst_ForeignFileSystems.moc"
