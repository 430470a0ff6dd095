#include "info/FolderWalk.h"

#include "app/PosixHandles.h"
#include "tests/support/DeepFolders.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestMain.h"

#include <QDir>

#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

/// Takes all descriptors below a number.
std::vector<Descriptor> takeBelow(int number)
{
    std::vector<Descriptor> taken;
    do {
        taken.emplace_back(::dup(STDIN_FILENO));
    } while (taken.back().number() >= 0 && taken.back().number() < number);
    return taken;
}

/// What a whole walk came by.
struct Seen
{
    int folders = 0;
    int files = 0;
    qint64 bytes = 0; ///< of files
    int mostDescriptors = 0;
};

dev_t deviceOf(const QString& path)
{
    struct stat info
    {
    };
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_dev : 0;
}

/// Walks through all that there is.
/// @param at called once, before the first entry whose path is longer than @p length
Seen walkAll(
    const QString& path, int length = 0, const std::function<void()>& at = [] {})
{
    const std::atomic<int> running{1};
    FolderWalk walk(path, deviceOf(path), running);
    Seen seen;
    bool isCalled = false;
    while (walk.next()) {
        if (!isCalled && walk.path().size() > length) {
            isCalled = true;
            at();
        }
        seen.mostDescriptors = qMax(seen.mostDescriptors, descriptorCount());
        const auto facts = walk.facts();
        if (!facts) {
            continue;
        }
        if (facts->isFolder) {
            ++seen.folders;
            walk.enter(facts->device);
        } else {
            ++seen.files;
            seen.bytes += facts->bytes;
        }
    }
    return seen;
}

/// @return "a/d/d/..." with so many folders below "a"
QString chain(int depth)
{
    return QStringLiteral("a") + QStringLiteral("/d").repeated(depth);
}

/// Makes the folders of chain(depth) with a file of 7 bytes in each.
void makeChain(const TestDir& dir, const QString& above, int depth)
{
    for (int level = 0; level <= depth; ++level) {
        dir.file(above + chain(level) + QStringLiteral("/f"), "1234567");
    }
}

/// Makes files of a size, so many that the walk leaves a folder between them.
constexpr int fileCount = 40;
void makeFiles(const TestDir& dir, const QString& folder, int size)
{
    for (int i = 0; i < fileCount; ++i) {
        dir.file(folder + QStringLiteral("/%1").arg(i), QByteArray(size, 'x'));
    }
}

void move(const TestDir& dir, const QString& from, const QString& to)
{
    QVERIFY(QDir().rename(dir.path(from), dir.path(to)));
}

} // namespace

class TestFolderWalk : public QObject
{
    Q_OBJECT

private slots:
    void pathIsThatOfTheEntry();
    void holdsFewFoldersOpen();
    void worksWithoutDescriptorsToSpare();
    void linksAreLeftWhereTheyWereEntered_data();
    void linksAreLeftWhereTheyWereEntered();
    void linksBelowOneAnother();
    void folderThatIsMovedIsCountedOn();
    void folderThatTookThePlaceIsNotCounted();
    void whatIsRemovedEndsTheWalk();
    void otherDeviceIsNotEntered();
    void stops();
};

void TestFolderWalk::pathIsThatOfTheEntry()
{
    const TestDir dir;
    makeChain(dir, QString(), 40);
    dir.file(QStringLiteral("ä/€"));
    const std::atomic<int> running{1};
    FolderWalk walk(dir.path(), deviceOf(dir.path()), running);
    QStringList paths;
    while (walk.next()) {
        const auto facts = walk.facts();
        QVERIFY(facts);
        QCOMPARE(facts->isFolder, QFileInfo(walk.path()).isDir());
        paths.append(walk.path().mid(dir.path().size() + 1) + (facts->isFolder ? "/" : ""));
        walk.enter(facts->device); // nothing happens where it is a file
    }
    paths.sort();
    QStringList expected = dir.tree();
    expected.sort();
    QCOMPARE(paths, expected);
}

void TestFolderWalk::holdsFewFoldersOpen()
{
    const DeepFolders deep(1000, "folder name");
    const int before = descriptorCount();
    const Seen seen = walkAll(deep.path());
    QCOMPARE(seen.folders, 1000);
    QCOMPARE(seen.files, 1000);
    QVERIFY2(seen.mostDescriptors - before <= 20, qPrintable(QString::number(seen.mostDescriptors - before)));
    QCOMPARE(descriptorCount(), before);
}

void TestFolderWalk::worksWithoutDescriptorsToSpare()
{
    const DeepFolders deep(1000, "folder name");
    const TestDir aside;
    makeChain(aside, QString(), 30);
    const QByteArray target = QFile::encodeName(aside.path());
    QCOMPARE(::symlinkat(target.constData(), deep.deepest(), "link"), 0);
    Seen seen;
    {
        // The start, a folder and one that is opened from it, and one to look at the others.
        const int first = 200;
        const auto taken = takeBelow(first);
        QCOMPARE(taken.back().number(), first);
        const FewDescriptors few(first + 1 + 4);
        seen = walkAll(deep.path());
    }
    QCOMPARE(seen.folders, 1000 + 1 + 31);
    QCOMPARE(seen.files, 1000 + 31);
}

void TestFolderWalk::linksAreLeftWhereTheyWereEntered_data()
{
    QTest::addColumn<int>("depth");
    QTest::newRow("where a path leads") << 30;
    QTest::newRow("deeper than a path") << 1000;
}

void TestFolderWalk::linksAreLeftWhereTheyWereEntered()
{
    QFETCH(int, depth);
    const DeepFolders deep(depth, "folder name");
    const TestDir aside;
    makeChain(aside, QString(), 30);
    aside.file(QStringLiteral("f"), QByteArray(100000, 'x')); // not to be taken for that beside the links
    const QByteArray target = QFile::encodeName(aside.path(QStringLiteral("a")));
    for (const char* name : {"1", "2", "3"}) {
        QCOMPARE(::symlinkat(target.constData(), deep.deepest(), name), 0);
    }
    const Seen seen = walkAll(deep.path());
    QCOMPARE(seen.folders, depth + 3 * 31);
    QCOMPARE(seen.files, depth + 3 * 31);
    QCOMPARE(seen.bytes, 7 * (depth + 3 * 31));
}

void TestFolderWalk::linksBelowOneAnother()
{
    // More than the system follows in one path, and no ".." of them leads to the folder above.
    const TestDir dir;
    const int links = 300;
    for (int i = 0; i < links; ++i) {
        const QString folder = QStringLiteral("%1/%2").arg(i % 7).arg(i);
        dir.file(folder + QStringLiteral("/f"), "1234567");
        dir.link(folder + QStringLiteral("/link"), QStringLiteral("../../%1/%2").arg((i + 1) % 7).arg(i + 1));
    }
    const Seen seen = walkAll(dir.path(QStringLiteral("0/0")));
    QCOMPARE(seen.folders, links - 1);
    QCOMPARE(seen.files, links);
}

void TestFolderWalk::folderThatIsMovedIsCountedOn()
{
    const TestDir dir;
    makeChain(dir, QStringLiteral("start/"), 60);
    makeFiles(dir, QStringLiteral("start/") + chain(19), 7);
    makeFiles(dir, QStringLiteral("elsewhere"), 1000);
    const QString deepest = dir.path(QStringLiteral("start/") + chain(60));
    const Seen seen = walkAll(dir.path(QStringLiteral("start")), deepest.size(),
        [&dir] { move(dir, QStringLiteral("start/") + chain(20), QStringLiteral("elsewhere/d")); });
    QCOMPARE(seen.folders, 61);
    QCOMPARE(seen.files, 61 + fileCount);
    QCOMPARE(seen.bytes, 7 * (61 + fileCount));
}

void TestFolderWalk::folderThatTookThePlaceIsNotCounted()
{
    const TestDir dir;
    makeChain(dir, QStringLiteral("aside/"), 60);
    makeFiles(dir, QStringLiteral("aside"), 1000);
    makeFiles(dir, QStringLiteral("new"), 1000);
    makeFiles(dir, QStringLiteral("start/x"), 7);
    makeFiles(dir, QStringLiteral("start"), 7);
    dir.link(QStringLiteral("start/x/link"), QStringLiteral("../../aside/a"));
    const QString deepest = dir.path(QStringLiteral("start/x/link") + chain(60).mid(1));
    const Seen seen = walkAll(dir.path(QStringLiteral("start")), deepest.size(), [&dir] {
        move(dir, QStringLiteral("start/x"), QStringLiteral("old"));
        move(dir, QStringLiteral("new"), QStringLiteral("start/x"));
    });
    QCOMPARE(seen.folders, 2 + 60);
    // Of what is left in the folder that has gone, nothing is told.
    QVERIFY(seen.files >= 61 + fileCount);
    QVERIFY(seen.files <= 61 + 2 * fileCount);
    QCOMPARE(seen.bytes, 7 * seen.files);
}

void TestFolderWalk::whatIsRemovedEndsTheWalk()
{
    const TestDir dir;
    makeChain(dir, QStringLiteral("start/"), 60);
    const QString deepest = dir.path(QStringLiteral("start/") + chain(60));
    const Seen seen = walkAll(dir.path(QStringLiteral("start")), deepest.size(),
        [&dir] { QVERIFY(QDir(dir.path(QStringLiteral("start"))).removeRecursively()); });
    QCOMPARE(seen.folders, 61);
}

void TestFolderWalk::otherDeviceIsNotEntered()
{
    const std::atomic<int> running{1};
    FolderWalk walk(QStringLiteral("/"), deviceOf(QStringLiteral("/proc")), running);
    QVERIFY(!walk.next());
}

void TestFolderWalk::stops()
{
    const TestDir dir;
    dir.files(QString(), 10);
    std::atomic<int> running{1};
    FolderWalk walk(dir.path(), deviceOf(dir.path()), running);
    QVERIFY(walk.next());
    running = 0;
    QVERIFY(!walk.next());
}

VANTREL_TEST_MAIN(TestFolderWalk)
#include "tst_FolderWalk.moc"
