#include "panel/FolderEntries.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/ShownFolderFixture.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QSignalSpy>

#include <functional>

/// What can become of the root of a panel while it is shown.
class TestShownFolderRoot : public QObject, protected ShownFolderFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

    void rootComesBack_data();
    void rootComesBack();
    void rootMadeAnewOverAndOver();
    void rootMadeByCommand();
    void rootThatNeverWas();
    void rootThatOnlyTheTreeMissed();
    void focusStaysInTheOtherPanel();
    void bigRootIsLeftAtOnce();

private:
    void followsRoot(MPanel* which);
};

void TestShownFolderRoot::rootComesBack_data()
{
    QTest::addColumn<QString>("gone");
    QTest::addColumn<bool>("noticed");
    QTest::addColumn<QString>("opened");
    for (const char* gone : {"removed", "file", "above removed"}) {
        QTest::addRow("%s, for long", gone) << gone << true << "";
        QTest::addRow("%s, for a moment", gone) << gone << false << "";
    }
    QTest::newRow("moved away, for a moment") << "moved away" << false << "";
    QTest::newRow("open below, for long") << "removed" << true << "shown";
}

/// A panel shows its root as it is on disk, in both views, and follows what is made there.
void TestShownFolderRoot::followsRoot(MPanel* which)
{
    const QString root = which->rootPath;
    QVERIFY(showsTheDisk(which, root));
    QCOMPARE(which->currentPath, root);
    QTRY_VERIFY(which->folderLabel->text().startsWith(root + " has "));
    const QString later = root + (which == panel ? "/later" : "/later still");
    QVERIFY(QDir().mkdir(later));
    QVERIFY(waitForTreeRow(which, later));
    QVERIFY(showsTheDisk(which, root));
    QVERIFY(QDir().rmdir(later));
    QVERIFY(showsTheDisk(which, root));
}

void TestShownFolderRoot::rootComesBack()
{
    QFETCH(QString, gone);
    QFETCH(bool, noticed);
    QFETCH(QString, opened);
    const QString root = dir->path(QStringLiteral("a/b"));
    for (MPanel* each : {panel, other.get()}) {
        each->setTreeRoot(root);
        QVERIFY(showsTheDisk(each, root));
        QVERIFY(waitForTreeRow(each, root + "/shown"));
        if (!opened.isEmpty()) {
            each->setTreePath(root + '/' + opened);
            QVERIFY(showsTheDisk(each, root + '/' + opened));
        }
    }
    if (gone == "above removed") {
        QVERIFY(QDir(dir->path(QStringLiteral("a"))).removeRecursively());
    } else if (gone == "moved away") {
        QVERIFY(QDir().rename(root, dir->path(QStringLiteral("to/b"))));
    } else {
        QVERIFY(QDir(root).removeRecursively());
    }
    if (gone == "file") {
        dir->file(QStringLiteral("a/b"), "a file");
    }
    for (MPanel* each : {panel, other.get()}) {
        if (noticed) {
            QTRY_COMPARE(listNames(each), QStringList());
        }
        QCOMPARE(each->rootPath, root);
    }
    QFile::remove(root);
    dir->file(QStringLiteral("a/b/NEW"), "new");
    dir->folder(QStringLiteral("a/b/new folder"));
    for (MPanel* each : {panel, other.get()}) {
        QVERIFY(waitForTreeRow(each, root + "/new folder"));
        followsRoot(each);
    }
}

void TestShownFolderRoot::rootMadeAnewOverAndOver()
{
    const QString root = dir->path(QStringLiteral("a/b"));
    for (MPanel* each : {panel, other.get()}) {
        each->setTreeRoot(root);
        QVERIFY(showsTheDisk(each, root));
    }
    for (int round = 0; round < 20; ++round) {
        QVERIFY(QDir(root).removeRecursively());
        for (int i = 0; i < round % 5; ++i) {
            QCoreApplication::processEvents();
        }
        dir->file(QStringLiteral("a/b/round%1").arg(round), QByteArray(round, 'x'));
        for (int i = 0; i < round; ++i) {
            QCoreApplication::processEvents();
        }
    }
    for (MPanel* each : {panel, other.get()}) {
        followsRoot(each);
    }
}

void TestShownFolderRoot::rootMadeByCommand()
{
    const QString root = dir->path(QStringLiteral("a/new folder"));
    QVERIFY(QDir().mkdir(root));
    other->setTreeRoot(root);
    QVERIFY(showsTheDisk(other.get(), root));
    open(panel, QStringLiteral("a"));
    QVERIFY(QDir().rmdir(root));
    QTRY_COMPARE(listNames(other.get()), QStringList());
    QVERIFY(showsTheDisk(panel, dir->path(QStringLiteral("a"))));
    runOperation(QStringLiteral("new folder"));
    QVERIFY(QFileInfo(root).isDir());
    followsRoot(other.get());
}

void TestShownFolderRoot::rootThatNeverWas()
{
    const QString root = dir->path(QStringLiteral("to/come"));
    panel->setTreeRoot(root);
    other->setTreeRoot(root);
    other->setTreeRoot(dir->path(QStringLiteral("a"))); // and is wanted no more
    QVERIFY(waitForList(other.get()));
    dir->file(QStringLiteral("to/come/f"));
    followsRoot(panel);
    QCOMPARE(other->rootPath, dir->path(QStringLiteral("a")));
    followsRoot(other.get());
}

/// The tree has met a moment in which the root was gone, and it is there when the panel hears of that. No row
/// goes by which the tree would look again.
void TestShownFolderRoot::rootThatOnlyTheTreeMissed()
{
    const QString root = dir->path(QStringLiteral("to"));
    panel->setTreeRoot(root);
    followsRoot(panel);
    QTRY_COMPARE(treeNames(panel), QStringList{"to"});
    other->list->setFocus();
    FolderReading gone;
    gone.folder = root;
    QVERIFY(QMetaObject::invokeMethod(panel->treeModel, "takeReading", Q_ARG(FolderReading, gone)));
    followsRoot(panel);
    QVERIFY(other->list->hasFocus());
}

void TestShownFolderRoot::focusStaysInTheOtherPanel()
{
    const QString root = dir->path(QStringLiteral("a/b"));
    panel->setTreeRoot(root);
    QVERIFY(showsTheDisk(panel, root));
    QVERIFY(QDir(root).removeRecursively());
    QTRY_COMPARE(listNames(panel), QStringList());
    other->list->setFocus();
    dir->file(QStringLiteral("a/b/NEW"), "new");
    QVERIFY(showsTheDisk(panel, root));
    QVERIFY(other->list->hasFocus());
}

void TestShownFolderRoot::bigRootIsLeftAtOnce()
{
    constexpr int files = 20000;
    const TestDir memory(TestDir::inMemory());
    const QString root = memory.folder(QStringLiteral("big"));
    memory.files(QStringLiteral("big"), files);
    const auto show = [](int rows) {
        return [rows](MPanel* each) { return each->listModel->rowCount(each->list->rootIndex()) == rows; };
    };
    const auto both = [this](const std::function<bool(MPanel*)>& is) {
        return QTest::qWaitFor([this, &is] { return is(panel) && is(other.get()); }, 20000);
    };
    panel->setTreeRoot(root);
    other->setTreeRoot(root);
    QVERIFY(both(show(files + 1)));
    const QSignalSpy removed(panel->listModel, &QAbstractItemModel::rowsRemoved);
    QVERIFY(QDir().rename(root, memory.path(QStringLiteral("aside"))));
    QVERIFY(both(show(0)));
    QCOMPARE(removed.size(), 0); // each would cost a search through all the others
    QCOMPARE(panel->folderLabel->text(), root + " has 0 dirs, 0 files, 0 Bytes");
    QVERIFY(QDir().rename(memory.path(QStringLiteral("aside")), root));
    QVERIFY(both(show(files + 1)));
}

VANTREL_TEST_MAIN(TestShownFolderRoot)
#include "tst_ShownFolderRoot.moc"
