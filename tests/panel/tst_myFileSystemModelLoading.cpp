#include "panel/myFileSystemModel.h"

#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/AsNobody.h"
#include "tests/support/ModelFixture.h"
#include "tests/support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QThreadPool>

namespace {

/// Sets the default locale as long as it lives.
class LocaleHere
{
public:
    explicit LocaleHere(const QString& name)
    {
        QLocale::setDefault(name == QLatin1String("C") ? QLocale::c() : QLocale(name));
    }
    ~LocaleHere() { QLocale::setDefault(QLocale::c()); }
    Q_DISABLE_COPY_MOVE(LocaleHere)
};

} // namespace

/// How the entries of a folder come into the model, in which order, and how they follow the disk.
class TestmyFileSystemModelLoading : public QObject, protected ModelFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

    void loadsInTheStockOrder_data();
    void loadsInTheStockOrder();
    void sortsLikeTheStockModel_data();
    void sortsLikeTheStockModel();
    void sortsByOwnerText_data();
    void sortsByOwnerText();
    void rowsThatComeLaterAreSorted();
    void bigFolderComesWhole();
    void retired_data();
    void retired();

    void changesShow_data();
    void changesShow();
    void sizeAloneShows();
    void manyChangesAtOnce();
    void emptiedAndFilledAgain();
    void foldersAboveAreNotLoaded();
    void parentRowIsNotLoaded();
    void treeShowsRealFoldersOnly();
    void treeFollowsSubfolders();
    void removedSubfolderDoesNotLoseOtherReadings();
    void readingOfAFolderThatIsGoneAlready();
    void rootGone();
    void entriesGoneComesFirst();
    void manyRemovalsAskForANewModel();
    void manyRemovalsWithoutListener();
    void bigRootGone_data();
    void bigRootGone();
    void refreshShowsUnseenChanges();
    void unreadableFolder();
    void testerOnTree();

private:
    QString makeEntriesWithEqualKeys() const;
};

/// Files and folders of which several at a time have the same size and the same time, as has the folder
/// above.
/// @return the folder that they are in
QString TestmyFileSystemModelLoading::makeEntriesWithEqualKeys() const
{
    const QString folder = QStringLiteral("in/");
    QStringList names;
    for (int i = 0; i < 40; ++i) {
        names.append(folder + QStringLiteral("f%1").arg((i * 7) % 40));
    }
    for (const char* name : {"b", "C", "\xc3\xa4", "f3 more", "_", "zzz"}) {
        names.append(folder + QString::fromUtf8(name));
    }
    for (const QString& name : qAsConst(names)) {
        dir->file(name, QByteArray(10 + name.length() % 4, 'x'));
    }
    for (const char* name : {"a folder", "F7 folder", "f12 folder", "zz"}) {
        names.append(folder + QLatin1String(name));
        dir->folder(names.constLast());
    }
    dir->link(folder + "f9 link", QStringLiteral("zz"));
    dir->link(folder + "nothing", QStringLiteral("nowhere"));
    names.append(QStringLiteral("."));
    for (int i = 0; i < names.size(); ++i) {
        dir->setTimes(names.at(i), 1000000 + 100 * (i % 3));
    }
    return dir->path(QStringLiteral("in"));
}

void TestmyFileSystemModelLoading::loadsInTheStockOrder_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("C") << QStringLiteral("C");
    QTest::newRow("en_US") << QStringLiteral("en_US");
    QTest::newRow("de_DE") << QStringLiteral("de_DE");
}

void TestmyFileSystemModelLoading::loadsInTheStockOrder()
{
    QFETCH(QString, locale);
    QLocale::setDefault(locale == QLatin1String("C") ? QLocale::c() : QLocale(locale));
    for (const char* name :
        {"file1", "file10", "file2", "Zeta", "alpha", ".hidden", "_x", "a b", "a-b", "\xc3\xa4"}) {
        dir->file(QString::fromUtf8(name));
    }
    dir->folder(QStringLiteral("zz"));
    dir->folder(QStringLiteral("Folder 10"));
    dir->folder(QStringLiteral("folder 9"));
    load(dir->path());
    QCOMPARE(rowNames(*model, root), stockOrder(dir->path(), 0, Qt::AscendingOrder));
    QLocale::setDefault(QLocale::c());
}

void TestmyFileSystemModelLoading::sortsLikeTheStockModel_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("order");
    QTest::addColumn<QString>("locale");
    const char* names[] = {"name", "size", "owner", "modified"};
    for (const char* locale : {"C", "en_US"}) {
        for (const int column : {0, 1, 3}) {
            const QByteArray name = QByteArray(locale) + ' ' + names[column];
            QTest::newRow(name + " ascending") << column << int(Qt::AscendingOrder) << QString(locale);
            QTest::newRow(name + " descending") << column << int(Qt::DescendingOrder) << QString(locale);
        }
    }
}

void TestmyFileSystemModelLoading::sortsLikeTheStockModel()
{
    QFETCH(int, column);
    QFETCH(int, order);
    QFETCH(QString, locale);
    const LocaleHere here(locale);
    const QString folder = makeEntriesWithEqualKeys();
    load(folder);
    model->sort(column, static_cast<Qt::SortOrder>(order));
    const QStringList expected = stockOrder(folder, column, static_cast<Qt::SortOrder>(order));
    QCOMPARE(expected.size(), 53);
    QCOMPARE(rowNames(*model, root), expected);
    // The same from every other order, the way that header clicks go.
    for (const int before : {0, 1, 2, 3}) {
        model->sort(before, order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder);
        model->sort(column, static_cast<Qt::SortOrder>(order));
        QCOMPARE(rowNames(*model, root), expected);
    }
}

void TestmyFileSystemModelLoading::sortsByOwnerText_data()
{
    QTest::addColumn<int>("order");
    QTest::newRow("ascending") << int(Qt::AscendingOrder);
    QTest::newRow("descending") << int(Qt::DescendingOrder);
}

// The texts as they are shown; equal ones by name, folders not apart.
void TestmyFileSystemModelLoading::sortsByOwnerText()
{
    QFETCH(int, order);
    const LocaleHere here(QStringLiteral("en_US")); // numbers as numbers
    for (const char* name : {"m 10", "B", "z", "a"}) {
        dir->file(QLatin1String(name));
        dir->setMode(QLatin1String(name), 0700);
    }
    for (const char* name : {"m 9", "c"}) {
        dir->folder(QLatin1String(name));
        dir->setMode(QLatin1String(name), 0700);
    }
    dir->file(QStringLiteral("first"));
    dir->setMode(QStringLiteral("first"), 0600);
    load(dir->path());
    model->sort(2, static_cast<Qt::SortOrder>(order));
    QStringList names = rowNames(*model, root);
    names.removeAll(QStringLiteral(".."));
    QStringList expected{"first", "a", "B", "c", "m 9", "m 10", "z"};
    if (order == Qt::DescendingOrder) {
        std::reverse(expected.begin(), expected.end());
    }
    QCOMPARE(names, expected);
}

void TestmyFileSystemModelLoading::rowsThatComeLaterAreSorted()
{
    dir->file(QStringLiteral("b"), "22");
    dir->file(QStringLiteral("d"), "1");
    load(dir->path());
    checkRules();
    dir->file(QStringLiteral("a"), "4444");
    dir->file(QStringLiteral("c"), "333");
    QTRY_COMPARE(rowNames(*model, root), (QStringList{"..", "a", "b", "c", "d"}));
    model->sort(1, Qt::DescendingOrder);
    const QStringList bySize = rowNames(*model, root);
    QCOMPARE(bySize.mid(bySize.indexOf(QStringLiteral("a"))).mid(0, 4), (QStringList{"a", "c", "b", "d"}));
    dir->file(QStringLiteral("d"), "7777777");
    QTRY_COMPARE(rowNames(*model, root).indexOf(QStringLiteral("d")) + 1,
        rowNames(*model, root).indexOf(QStringLiteral("a")));
    dir->file(QStringLiteral("e"), "55555");
    QTRY_COMPARE(rowNames(*model, root).mid(bySize.indexOf(QStringLiteral("a")), 5),
        (QStringList{"d", "e", "a", "c", "b"}));
}

void TestmyFileSystemModelLoading::bigFolderComesWhole()
{
    dir->files(QStringLiteral("."), 3000, QStringLiteral("f%1"));
    dir->folder(QStringLiteral("folder"));
    load(dir->path());
    QCOMPARE(model->rowCount(root), 3002);
    QCOMPARE(rowNames(*model, root), stockOrder(dir->path(), 0, Qt::AscendingOrder));
}

void TestmyFileSystemModelLoading::retired_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<bool>("atOnce");
    QTest::newRow("few rows") << 10 << true;
    QTest::newRow("as many as are freed at once") << 4999 << true; // and ".."
    QTest::newRow("one more") << 5000 << false;
}

void TestmyFileSystemModelLoading::retired()
{
    QFETCH(int, files);
    QFETCH(bool, atOnce);
    dir->files(QStringLiteral("big"), files);
    load(dir->path(QStringLiteral("big")));
    QCOMPARE(model->rowCount(root), files + 1);
    root = QPersistentModelIndex();
    const QPointer<myFileSystemModel> retired = model;
    model->retire();
    QCOMPARE(retired.isNull(), atOnce);
    if (!atOnce) {
        QCOMPARE(retired->parent(), nullptr);
    }
    QTRY_VERIFY(retired.isNull());
    QThreadPool::globalInstance()->waitForDone();
}

void TestmyFileSystemModelLoading::changesShow_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what : {"made", "made folder", "made link", "removed", "renamed", "size", "mode", "time",
             "file becomes folder", "folder becomes file", "awkward names"}) {
        QTest::newRow(what) << QString::fromLatin1(what);
    }
}

void TestmyFileSystemModelLoading::changesShow()
{
    QFETCH(QString, what);
    dir->file(QStringLiteral("file"), "123");
    dir->folder(QStringLiteral("folder"));
    load(dir->path());
    checkRules();
    const auto names = [this] { return rowNames(*model, root); };
    const QString file = dir->path(QStringLiteral("file"));
    const QString folder = dir->path(QStringLiteral("folder"));
    if (what == QLatin1String("made")) {
        dir->file(QStringLiteral("new"), "12345");
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "file", "new"}));
        QTRY_COMPARE(text(QStringLiteral("new"), 1).toString(), QStringLiteral("5"));
    } else if (what == QLatin1String("made folder")) {
        QVERIFY(QDir().mkdir(dir->path(QStringLiteral("new"))));
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "new", "file"}));
    } else if (what == QLatin1String("made link")) {
        dir->link(QStringLiteral("new"), QStringLiteral("nowhere"));
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "file", "new"}));
    } else if (what == QLatin1String("removed")) {
        QVERIFY(QFile::remove(file));
        QTRY_COMPARE(names(), (QStringList{"..", "folder"}));
    } else if (what == QLatin1String("renamed")) {
        QVERIFY(QFile::rename(file, dir->path(QStringLiteral("a"))));
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "a"}));
    } else if (what == QLatin1String("size")) {
        dir->file(QStringLiteral("file"), QByteArray(12345, 'x'));
        QTRY_COMPARE(text(QStringLiteral("file"), 1).toString(), QStringLiteral("12,345"));
    } else if (what == QLatin1String("mode")) {
        dir->setMode(QStringLiteral("file"), 0600);
        QTRY_VERIFY(text(QStringLiteral("file"), 2).toString().endsWith(QLatin1String(" 600")));
    } else if (what == QLatin1String("time")) {
        dir->setTimes(QStringLiteral("file"), 1);
        QTRY_COMPARE(text(QStringLiteral("file"), 3).toString(), QStringLiteral("1970-01-01 00:00"));
    } else if (what == QLatin1String("file becomes folder")) {
        QVERIFY(QFile::remove(file) && QDir().mkdir(file));
        QTRY_VERIFY(model->isDir(row(QStringLiteral("file"))));
        QCOMPARE(names().size(), 3);
    } else if (what == QLatin1String("folder becomes file")) {
        QVERIFY(QDir().rmdir(folder));
        dir->file(QStringLiteral("folder"), "1234");
        QTRY_COMPARE(text(QStringLiteral("folder"), 1).toString(), QStringLiteral("4"));
        QVERIFY(!model->isDir(row(QStringLiteral("folder"))));
    } else {
        for (const char* name : {"%1", "<b>", "a\nb"}) {
            dir->file(QLatin1String(name));
        }
        QTRY_COMPARE(model->rowCount(root), 6);
        for (const char* name : {"%1", "<b>", "a\nb"}) {
            QVERIFY(QFile::remove(dir->path(QLatin1String(name))));
        }
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "file"}));
    }
}

void TestmyFileSystemModelLoading::sizeAloneShows()
{
    dir->file(QStringLiteral("file"), "123");
    dir->setTimes(QStringLiteral("file"), 1000);
    load(dir->path());
    checkRules();
    for (int size = 4; size < 7; ++size) {
        dir->file(QStringLiteral("file"), QByteArray(size, 'x'));
        dir->setTimes(QStringLiteral("file"), 1000);
        QTRY_COMPARE(text(QStringLiteral("file"), 1).toString(), QString::number(size));
        QCOMPARE(text(QStringLiteral("file"), 3).toString(), QStringLiteral("1970-01-01 00:16"));
    }
}

void TestmyFileSystemModelLoading::manyChangesAtOnce()
{
    dir->files(QStringLiteral("."), 300, QStringLiteral("f%1"));
    load(dir->path());
    for (int i = 0; i < 300; i += 2) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("f%1").arg(i))));
        dir->file(QStringLiteral("g%1").arg(i), "1");
        dir->file(QStringLiteral("f%1").arg(i + 1), "22");
    }
    QTRY_COMPARE(rowNames(*model, root), stockOrder(dir->path(), 0, Qt::AscendingOrder));
    QTRY_COMPARE(text(QStringLiteral("f299"), 1).toString(), QStringLiteral("2"));
    QTRY_COMPARE(text(QStringLiteral("g298"), 1).toString(), QStringLiteral("1"));
}

void TestmyFileSystemModelLoading::emptiedAndFilledAgain()
{
    load(dir->path());
    checkRules();
    QCOMPARE(rowNames(*model, root), QStringList{".."});
    for (int round = 0; round < 3; ++round) {
        dir->files(QStringLiteral("."), 40);
        QTRY_COMPARE(model->rowCount(root), 41);
        for (int i = 0; i < 40; ++i) {
            QVERIFY(QFile::remove(dir->path(QStringLiteral("file%1.txt").arg(i))));
        }
        QTRY_COMPARE(rowNames(*model, root), QStringList{".."});
    }
}

void TestmyFileSystemModelLoading::foldersAboveAreNotLoaded()
{
    dir->file(QStringLiteral("a/b/file"));
    dir->folder(QStringLiteral("a/sibling"));
    load(dir->path(QStringLiteral("a/b")), treeFilter, 1);
    const QModelIndex above = model->index(dir->path(QStringLiteral("a")));
    QVERIFY(!model->canFetchMore(above));
    QVERIFY(!model->canFetchMore(model->index(dir->path())));
    QVERIFY(!model->canFetchMore(model->index(QStringLiteral("/"))));
    QVERIFY(!model->canFetchMore(QModelIndex()));
    model->fetchMore(above);
    dir->folder(QStringLiteral("a/b/later")); // is read later than the one above would be
    QTRY_COMPARE(rowNames(*model, root), QStringList{"later"});
    QCOMPARE(rowNames(*model, above), QStringList{"b"});
    // A name that only begins like the root's is above or beside it too.
    dir->folder(QStringLiteral("a/bc/d"));
    QVERIFY(!model->canFetchMore(model->index(dir->path(QStringLiteral("a/bc")))));
}

void TestmyFileSystemModelLoading::parentRowIsNotLoaded()
{
    load(dir->folder(QStringLiteral("sub")));
    QVERIFY(model->isDir(row(QStringLiteral(".."))));
    QVERIFY(!model->canFetchMore(row(QStringLiteral(".."))));
}

void TestmyFileSystemModelLoading::treeShowsRealFoldersOnly()
{
    dir->file(QStringLiteral("file"));
    dir->folder(QStringLiteral("folder"));
    dir->folder(QStringLiteral(".hidden"));
    dir->link(QStringLiteral("link"), QStringLiteral("folder"));
    dir->link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    load(dir->path(), treeFilter, 1);
    QCOMPARE(rowNames(*model, root), (QStringList{".hidden", "folder"}));
}

void TestmyFileSystemModelLoading::treeFollowsSubfolders()
{
    dir->folder(QStringLiteral("a/b"));
    load(dir->path(), treeFilter, 1);
    const QPersistentModelIndex a = row(QStringLiteral("a"));
    QVERIFY(model->canFetchMore(a));
    model->fetchMore(a);
    QVERIFY(!model->canFetchMore(a));
    QTRY_COMPARE(rowNames(*model, a), QStringList{"b"});
    QVERIFY(QDir().mkdir(dir->path(QStringLiteral("a/c"))));
    QTRY_COMPARE(rowNames(*model, a), (QStringList{"b", "c"}));
    QVERIFY(QDir().rmdir(dir->path(QStringLiteral("a/b"))));
    QTRY_COMPARE(rowNames(*model, a), QStringList{"c"});
    QVERIFY(QDir(dir->path(QStringLiteral("a"))).removeRecursively());
    QTRY_COMPARE(rowNames(*model, root), QStringList());
    // A folder of the same name is a new one.
    QVERIFY(QDir().mkpath(dir->path(QStringLiteral("a/d"))));
    QTRY_COMPARE(rowNames(*model, root), QStringList{"a"});
    QTRY_VERIFY(model->canFetchMore(row(QStringLiteral("a"))));
    model->fetchMore(row(QStringLiteral("a")));
    QTRY_COMPARE(rowNames(*model, row(QStringLiteral("a"))), QStringList{"d"});
}

// A folder goes while rows of another one are still on their way.
void TestmyFileSystemModelLoading::removedSubfolderDoesNotLoseOtherReadings()
{
    dir->folder(QStringLiteral("a"));
    dir->folder(QStringLiteral("b"));
    load(dir->path(), treeFilter, 1);
    const QPersistentModelIndex b = row(QStringLiteral("b"));
    FolderReading waiting;
    waiting.folder = dir->path(QStringLiteral("b"));
    waiting.exists = true;
    waiting.first = true;
    const QFileInfo sub(dir->folder(QStringLiteral("b/sub")));
    QVERIFY(sub.isDir());
    waiting.entries.append(qMakePair(QStringLiteral("sub"), sub));
    waiting.changed = waiting.entries;
    FolderReading gone;
    gone.folder = dir->path(QStringLiteral("a"));
    QVERIFY(QMetaObject::invokeMethod(model, "takeReading", Q_ARG(FolderReading, waiting)));
    QVERIFY(QMetaObject::invokeMethod(model, "takeReading", Q_ARG(FolderReading, gone)));
    QTRY_COMPARE(rowNames(*model, b), QStringList{"sub"});
}

void TestmyFileSystemModelLoading::readingOfAFolderThatIsGoneAlready()
{
    dir->file(QStringLiteral("file"));
    load(dir->path());
    FolderReading gone;
    gone.folder = dir->path(QStringLiteral("never there"));
    QSignalSpy rootGone(model, &myFileSystemModel::rootGone);
    QVERIFY(QMetaObject::invokeMethod(model, "takeReading", Q_ARG(FolderReading, gone)));
    QVERIFY(root.isValid());
    QCOMPARE(rowNames(*model, root), (QStringList{"..", "file"}));
    QVERIFY(rootGone.isEmpty());
}

void TestmyFileSystemModelLoading::rootGone()
{
    dir->file(QStringLiteral("it/file"));
    load(dir->path(QStringLiteral("it")));
    QSignalSpy gone(model, &myFileSystemModel::rootGone);
    QSignalSpy loaded(model, &QFileSystemModel::directoryLoaded);
    QVERIFY(QDir(dir->path(QStringLiteral("it"))).removeRecursively());
    QTRY_COMPARE(gone.size(), 1);
    QCOMPARE(gone.constFirst().constFirst().toString(), dir->path(QStringLiteral("it")));
    QCOMPARE(loaded.constLast().constFirst().toString(), dir->path(QStringLiteral("it")));
    QCOMPARE(model->rowCount(root), 0);
}

void TestmyFileSystemModelLoading::entriesGoneComesFirst()
{
    dir->folder(QStringLiteral("a"));
    dir->folder(QStringLiteral("b"));
    load(dir->path(), treeFilter, 1);
    int rowsThen = -1;
    QStringList names;
    QString folder;
    connect(
        model, &myFileSystemModel::entriesGone, this, [&](const QString& where, const QStringList& which) {
            rowsThen = model->rowCount(root);
            names = which;
            folder = where;
        });
    QVERIFY(QDir().rmdir(dir->path(QStringLiteral("a"))));
    QTRY_COMPARE(rowNames(*model, root), QStringList{"b"});
    QCOMPARE(rowsThen, 2);
    QCOMPARE(names, QStringList{"a"});
    QCOMPARE(folder, dir->path());
}

void TestmyFileSystemModelLoading::manyRemovalsAskForANewModel()
{
    dir->files(QStringLiteral("."), 4000, QStringLiteral("f%1"));
    load(dir->path());
    QSignalSpy wanted(model, &myFileSystemModel::reloadWanted);
    for (int i = 0; i < 3990; ++i) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("f%1").arg(i))));
    }
    QTRY_VERIFY(!wanted.isEmpty());
}

void TestmyFileSystemModelLoading::manyRemovalsWithoutListener()
{
    dir->files(QStringLiteral("."), 4000, QStringLiteral("f%1"));
    load(dir->path());
    for (int i = 0; i < 3990; ++i) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("f%1").arg(i))));
    }
    QTRY_COMPARE(model->rowCount(root), 11);
}

void TestmyFileSystemModelLoading::bigRootGone_data()
{
    QTest::addColumn<bool>("isHeard");
    QTest::newRow("somebody makes a new model") << true;
    QTest::newRow("nobody does") << false;
}

void TestmyFileSystemModelLoading::bigRootGone()
{
    QFETCH(bool, isHeard);
    const QString folder = dir->folder(QStringLiteral("it"));
    dir->files(QStringLiteral("it"), 4000);
    load(folder);
    QStringList told;
    connect(model, &myFileSystemModel::rootGone, this, [&told] { told.append("gone"); });
    if (isHeard) {
        connect(model, &myFileSystemModel::reloadWanted, this, [&told] { told.append("reload"); });
    }
    QVERIFY(QDir().rename(folder, dir->path(QStringLiteral("aside"))));
    QTRY_COMPARE(told, isHeard ? (QStringList{"reload", "gone"}) : QStringList{"gone"});
    QCOMPARE(model->rowCount(root), isHeard ? 4001 : 0);
}

void TestmyFileSystemModelLoading::refreshShowsUnseenChanges()
{
    dir->file(QStringLiteral("one/old"));
    dir->file(QStringLiteral("two/new"));
    const QString link = dir->link(QStringLiteral("link"), QStringLiteral("one"));
    load(link);
    QVERIFY(QFile::remove(link));
    dir->link(QStringLiteral("link"), QStringLiteral("two"));
    model->refresh();
    QTRY_COMPARE(rowNames(*model, root), (QStringList{"..", "new"}));
}

void TestmyFileSystemModelLoading::unreadableFolder()
{
    dir->setMode(QString(), 0755);
    dir->file(QStringLiteral("it/file"));
    dir->setMode(QStringLiteral("it"), 0);
    QStringList names{"not asked"};
    {
        const AsNobody nobody;
        load(dir->path(QStringLiteral("it")));
        QTRY_VERIFY(model->rowCount(root) > 0 || !model->canFetchMore(root));
        names = rowNames(*model, root);
    }
    QVERIFY2(names.isEmpty() || names == QStringList{".."}, qPrintable(names.join(QLatin1Char(' '))));
}

void TestmyFileSystemModelLoading::testerOnTree()
{
    for (const char* name : {"a/b/c", "a/d", "e"}) {
        dir->folder(QLatin1String(name));
    }
    panel->setTreeRoot(dir->path());
    panel->rootPath = QStringLiteral("/"); // the tester takes blank items for faults
    const QAbstractItemModelTester tester(
        panel->treeModel, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a"))));
    panel->tree->expandAll();
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
    panel->tree->expandAll();
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b/c"))));
    dir->folder(QStringLiteral("a/b/new"));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b/new"))));
    QVERIFY(QDir(dir->path(QStringLiteral("a"))).removeRecursively());
    QTRY_COMPARE(treeNames(panel), (QStringList{QFileInfo(dir->path()).fileName(), "e"}));
    dir->folder(QStringLiteral("a/x"));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a"))));
}

VANTREL_TEST_MAIN(TestmyFileSystemModelLoading)
#include "tst_myFileSystemModelLoading.moc"
