#include "panel/MountWatch.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/MemoryMount.h"
#include "tests/support/OwnMountsMain.h"
#include "tests/support/PanelFixture.h"

#include <QLabel>
#include <QSignalSpy>

#include <memory>

/// Volumes that are mounted over a shown folder, and go again.
class TestMountWatch : public QObject, protected PanelFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { end(); }

    void tellsOfEveryChange();
    void shownFolder();
    void sameNamesAreOtherFiles();
    void folderAbove();
    void rootOfTheTree();
    void otherMountsChangeNothing();

private:
    /// Opens "d", with the listing in use and "same" selected.
    void openAndSelect();
};

void TestMountWatch::init()
{
    if (!hasOwnMounts()) {
        QSKIP("nothing can be mounted here");
    }
    start();
    dir->file(QStringLiteral("d/same"), "below");
    dir->file(QStringLiteral("d/other"), "below");
    dir->file(QStringLiteral("volume/same"), "on top");
    dir->folder(QStringLiteral("volume/inner"));
}

void TestMountWatch::openAndSelect()
{
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    panel->list->setFocus();
    select({"same"});
    QCOMPARE(panel->selectedCount, 1);
}

void TestMountWatch::tellsOfEveryChange()
{
    const std::shared_ptr<MountWatch> watch = MountWatch::shared();
    QCOMPARE(watch, MountWatch::shared());
    QSignalSpy changed(watch.get(), &MountWatch::changed);
    MemoryMount mount(dir->path(QStringLiteral("a")), "");
    NEEDS_MOUNT(mount)
    QTRY_VERIFY(!changed.isEmpty());
    changed.clear();
    mount.unmount();
    QTRY_VERIFY(!changed.isEmpty());
    QCoreApplication::processEvents();
    changed.clear();
    QVERIFY(readAnotherFolder());
    QCOMPARE(changed.size(), 0); // it does not go on telling
}

void TestMountWatch::shownFolder()
{
    openAndSelect();
    panel->tree->setFocus();
    const QString before = panel->selectionLabel->text();
    MemoryMount mount(dir->path(QStringLiteral("d")), "size=64k");
    NEEDS_MOUNT(mount)
    QTRY_COMPARE(listNames(panel), QStringList{".."});
    QTRY_VERIFY(panel->folderLabel->text().contains(QStringLiteral(" 0 files")));
    QVERIFY(panel->selectionLabel->text().startsWith(QStringLiteral("tmpfs: 64KB")));
    dir->file(QStringLiteral("d/made"));
    QTRY_COMPARE(listNames(panel), (QStringList{"..", "made"})); // the new folder is the one that is watched
    mount.unmount();
    QTRY_COMPARE(listNames(panel), (QStringList{"..", "other", "same"}));
    QTRY_COMPARE(panel->selectionLabel->text().section(':', 0, 0), before.section(':', 0, 0));
    dir->file(QStringLiteral("d/later"));
    QTRY_COMPARE(listNames(panel), (QStringList{"..", "later", "other", "same"}));
}

/// A selection is of files, not of names.
void TestMountWatch::sameNamesAreOtherFiles()
{
    openAndSelect();
    {
        const BindMount mount(dir->path(QStringLiteral("volume")), dir->path(QStringLiteral("d")));
        NEEDS_MOUNT(mount)
        QTRY_COMPARE(listNames(panel), (QStringList{"..", "inner", "same"}));
        QVERIFY(!panel->list->selectionModel()->hasSelection());
        QVERIFY(!panel->list->currentIndex().isValid());
        QVERIFY(panel->list->hasFocus());
        QCOMPARE(panel->selectionLabel->text(), QStringLiteral("Selected 0 file(s), 0 Bytes"));
        select({"same"});
    }
    QTRY_COMPARE(listNames(panel), (QStringList{"..", "other", "same"}));
    QVERIFY(!panel->list->selectionModel()->hasSelection());
}

void TestMountWatch::folderAbove()
{
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("a/b/c"))));
    MemoryMount mount(dir->path(QStringLiteral("a")), "");
    NEEDS_MOUNT(mount)
    QTRY_COMPARE(panel->currentPath, dir->path(QStringLiteral("a"))); // what was shown is not there any more
    QTRY_COMPARE(listNames(panel), QStringList{".."});
    mount.unmount();
    QTRY_COMPARE(listNames(panel), (QStringList{"..", "b"}));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
}

void TestMountWatch::rootOfTheTree()
{
    panel->setTreeRoot(dir->path(QStringLiteral("a")));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
    const BindMount mount(dir->path(QStringLiteral("volume")), dir->path(QStringLiteral("a")));
    NEEDS_MOUNT(mount)
    QTRY_COMPARE(listNames(panel), (QStringList{"..", "inner", "same"}));
    QTRY_COMPARE(treeNames(panel), (QStringList{"a", "inner"}));
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a")));
}

void TestMountWatch::otherMountsChangeNothing()
{
    openAndSelect();
    const myFileSystemModel* model = panel->listModel;
    const QSignalSpy changed(MountWatch::shared().get(), &MountWatch::changed);
    const MemoryMount mount(dir->path(QStringLiteral("a")), "");
    NEEDS_MOUNT(mount)
    QTRY_VERIFY(!changed.isEmpty());
    QVERIFY(readAnotherFolder());
    QCOMPARE(panel->listModel, model);
    panel->getSelection();
    QCOMPARE(panel->selectedPaths, QStringList{dir->path(QStringLiteral("d/same"))});
}

VANTREL_OWN_MOUNTS_TEST_MAIN(TestMountWatch)
#include "tst_MountWatch.moc"
