#include "panel/MPanel.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MTree.h"
#include "panel/RunningDrag.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/PanelFixture.h"
#include "tests/support/TestMain.h"
#include "tests/support/TypedAnswers.h"

#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>

/// What the rows of a panel mean: their own paths, however the drive is spelt and whatever is shown; and that
/// there are none where the folder is not there.
class TestMPanelRows : public QObject, protected PanelFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup();

    void drivesSpeltOddly_data();
    void drivesSpeltOddly();
    void driveThatIsALink();
    void blankRowsMeanThemselves();
    void blankRowsStay();
    void blankRowIsCopiedUnderItsName();
    void rowsAreNotInTheCurrentFolder();
    void nothingIsShown_data();
    void nothingIsShown();
    void nothingIsTakenWhereNothingIsShown();
    void noDragWhereNothingIsShown();
    void rootThatGoesLeavesNothing();
    void folderThatIsBackIsListed();
    void rebuiltListingStaysInItsFolder();
    void noCommandWhileRowsAreReadAnew();
    void menuOverAFolderMadeAnew();
    void anotherFolderIsNotChosen_data();
    void anotherFolderIsNotChosen();
    void manyRemovalsKeepTheSelection();
    void whatIsSelectedMeanwhileStays();
    void selectionIsAskedOnceWhenRowsGo();

private:
    void expectNothing();
};

void TestMPanelRows::cleanup()
{
    end();
    gstMenu.clear();
    gstDrives.clear();
}

void TestMPanelRows::drivesSpeltOddly_data()
{
    QTest::addColumn<QString>("spelt");
    QTest::newRow("slash at the end") << "%1/";
    QTest::newRow("doubled slash") << "%1/../%2//";
    QTest::newRow("doubled slash at the beginning") << "/%1";
    QTest::newRow("dot") << "%1/./";
    QTest::newRow("dots") << "%1/a/../";
    QTest::newRow("dots above the top") << "/../..%1";
}

void TestMPanelRows::drivesSpeltOddly()
{
    QFETCH(QString, spelt);
    spelt.replace(QLatin1String("%1"), dir->path())
        .replace(QLatin1String("%2"), QFileInfo(dir->path()).fileName());
    panel->setTreeRoot(spelt);
    QVERIFY(waitForList(panel));
    QCOMPARE(panel->rootPath, dir->path());
    QCOMPARE(panel->currentPath, dir->path());
    QCOMPARE(listNames(panel), (QStringList{"..", "a", "d", "one", "two"}));
    QCOMPARE(treeNames(panel).constFirst(), QFileInfo(dir->path()).fileName());
    panel->list->setFocus();
    select({"one"});
    QCOMPARE(panel->selectedPaths, QStringList{dir->path(QStringLiteral("one"))});
    panel->list->takePending();
    QCOMPARE(gslDragList, QStringList{dir->path(QStringLiteral("one"))});
    panel->tree->takePending();
    QCOMPARE(gslDragList, QStringList{dir->path()});
}

/// The link is what a command in the tree means, not the folder that it leads to.
void TestMPanelRows::driveThatIsALink()
{
    const QString link = dir->link(QStringLiteral("link"), dir->path(QStringLiteral("a")));
    panel->setTreeRoot(link + '/');
    QVERIFY(waitForList(panel));
    QCOMPARE(listNames(panel), (QStringList{"..", "b"}));
    panel->tree->setFocus();
    BoxAnswers boxes;
    boxes.click(QStringLiteral("Yes"));
    QTest::keyClick(panel->tree, Qt::Key_Delete);
    QCOMPARE(boxes.texts(), QStringList{"Delete selected files in folder: \n\n" + link});
    QVERIFY(!dir->exists(QStringLiteral("link")));
    QCOMPARE(dir->tree(QStringLiteral("a")), (QStringList{"b/", "b/c/"}));
}

/// Blank texts are only what is shown.
void TestMPanelRows::blankRowsMeanThemselves()
{
    panel->list->setFocus();
    select({"..", "one", "two"});
    const QStringList paths{dir->path(QStringLiteral("one")), dir->path(QStringLiteral("two"))};
    panel->rootPath = QStringLiteral("/no/such/root");
    QCOMPARE(listNames(panel), (QStringList{"", "", "", "", ""}));
    panel->getSelection();
    QCOMPARE(panel->selectedPaths, paths);
    panel->list->takePending();
    QCOMPARE(gslDragList, paths);
    QCOMPARE(panel->listModel->entryName(panel->list->selectionModel()->selectedIndexes().at(3)), "..");
    QCOMPARE(panel->listModel->entryName(QModelIndex()), QString());
    BoxAnswers boxes;
    boxes.click(QStringLiteral("OK"));
    QTest::keyClick(panel->list, Qt::Key_X);
    QCOMPARE(boxes.texts(), QStringList{"Failed to start program:\n" + dir->path() + "/../one/two"});
}

/// The rows that stay when another goes are told by their names as well.
void TestMPanelRows::blankRowsStay()
{
    panel->rootPath = QStringLiteral("/no/such/root");
    QVERIFY(QFile::remove(dir->path(QStringLiteral("one"))));
    const auto rows = [this] { return panel->listModel->rowCount(panel->list->rootIndex()); };
    QTRY_COMPARE(rows(), 4);
    QVERIFY(readAnotherFolder());
    QCOMPARE(rows(), 4);
    panel->rootPath = dir->path();
    QCOMPARE(listNames(panel), (QStringList{"..", "a", "d", "two"}));
}

/// One file, copied into a folder, keeps its own name.
void TestMPanelRows::blankRowIsCopiedUnderItsName()
{
    panel->list->setFocus();
    select({"..", "one"});
    panel->rootPath = QStringLiteral("/no/such/root");
    BoxAnswers boxes;
    boxes.click(QStringLiteral("No"));
    ModalAnswers answers;
    typeDestination(answers, dir->path(QStringLiteral("d/")));
    panel->DoAction(CommandCopy, QString(), QString());
    QCOMPARE(boxes.texts(), QStringList{"Copy selected file to: \n\n" + dir->path(QStringLiteral("d/one"))});
    QCOMPARE(gslDragList, QStringList{dir->path(QStringLiteral("one"))});
}

/// A row's path is not put together from the current folder, which a right click in the tree changes.
void TestMPanelRows::rowsAreNotInTheCurrentFolder()
{
    dir->file(QStringLiteral("d/one"), "another");
    panel->list->setFocus();
    select({"one"});
    panel->currentPath = dir->path(QStringLiteral("d"));
    BoxAnswers boxes;
    boxes.click(QStringLiteral("OK"));
    QTest::keyClick(panel->list, Qt::Key_X);
    QCOMPARE(boxes.texts(), QStringList{"Failed to start program:\n" + dir->path(QStringLiteral("one"))});
}

/// Nothing is there to be chosen, and nothing that a user does comes to anything.
void TestMPanelRows::expectNothing()
{
    const BoxAnswers boxes; // both fail the test where a box, dialog or menu comes
    const ModalAnswers answers;
    gstMenu = {{CommandDelete, QStringLiteral("|.|*|"), QStringLiteral("Delete"), QString()}};
    const bool descendingNext = panel->sortDescendingNext;
    for (int section = 0; section < 4; ++section) {
        panel->headerClicked(section);
        QCOMPARE(panel->sortDescendingNext, descendingNext);
        panel->listModel->sort(section, Qt::DescendingOrder);
    }
    QCOMPARE(listNames(panel), QStringList());
    for (QAbstractItemView* view :
        {static_cast<QAbstractItemView*>(panel->tree), static_cast<QAbstractItemView*>(panel->list)}) {
        view->setFocus();
        QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
        for (const Qt::Key key :
            {Qt::Key_C, Qt::Key_N, Qt::Key_R, Qt::Key_Delete, Qt::Key_P, Qt::Key_S, Qt::Key_X}) {
            QTest::keyClick(view, key);
        }
        QTest::keyClick(view, Qt::Key_O, Qt::ControlModifier);
        QTest::keyClick(view, Qt::Key_F10, Qt::ShiftModifier);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 5));
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 5));
        emit view->customContextMenuRequested(QPoint(20, 5));
        QCOMPARE(view->selectionModel()->selectedIndexes(), QModelIndexList());
    }
}

void TestMPanelRows::nothingIsShown_data()
{
    QTest::addColumn<QString>("drive");
    QTest::newRow("no such folder") << "/no/such/place";
    QTest::newRow("nothing of it at the top") << "/nosuchplace/";
    QTest::newRow("a file") << "one";
    QTest::newRow("empty") << "";
    QTest::newRow("kept as written") << "~/x";
}

void TestMPanelRows::nothingIsShown()
{
    QFETCH(QString, drive);
    panel->setTreeRoot(drive == "one" ? dir->path(drive) : drive);
    QVERIFY(!panel->showsFolder());
    QCOMPARE(treeNames(panel), QStringList());
    expectNothing();
    QCOMPARE(treeNames(panel), QStringList());
    QVERIFY(!panel->tree->currentIndex().isValid());
    panel->reloadList(); // as a model asks that has been replaced since
    panel->listAnotherFolder();
    QVERIFY(!panel->showsFolder());
    QVERIFY(!panel->list->isRestoring());
}

void TestMPanelRows::nothingIsTakenWhereNothingIsShown()
{
    MPanel other(&window->window);
    other.setGeometry(0, 0, 300, 300);
    other.show();
    gwPanel1 = panel;
    gwPanel2 = &other;
    gslDragList = QStringList{QStringLiteral("/before")};
    const BoxAnswers boxes;
    other.setTreeRoot(QStringLiteral("/no/such/place"));
    panel->list->setFocus();
    select({"one"});
    panel->copyToOther(); // from a folder to nowhere
    panel->tree->setFocus();
    panel->moveToOther();
    other.tree->setFocus();
    other.moveToOther(); // from nowhere to a folder
    QCOMPARE(gslDragList, QStringList{"/before"});
}

void TestMPanelRows::noDragWhereNothingIsShown()
{
    panel->setTreeRoot(QStringLiteral("/no/such/place"));
    gslDragList = QStringList{QStringLiteral("/before")};
    const BoxAnswers boxes;
    for (QAbstractItemView* view :
        {static_cast<QAbstractItemView*>(panel->tree), static_cast<QAbstractItemView*>(panel->list)}) {
        QMouseEvent move(QEvent::MouseMove, QPoint(90, 90), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(view->viewport(), &move);
        QCOMPARE(gslDragList, QStringList{"/before"});
        QMimeData mime;
        mime.setText(QStringLiteral("BlahBlah"));
        QDropEvent drop(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        RunningDrag drag;
        QApplication::sendEvent(view->viewport(), &drop);
        drag.finish();
        QVERIFY(!drop.isAccepted());
    }
}

void TestMPanelRows::rootThatGoesLeavesNothing()
{
    panel->setTreeRoot(dir->path(QStringLiteral("a/b")));
    QVERIFY(waitForList(panel));
    panel->setTreePath(dir->path(QStringLiteral("a/b/c")));
    QVERIFY(waitForList(panel));
    QVERIFY(QDir(dir->path(QStringLiteral("a"))).removeRecursively());
    QTRY_VERIFY(!panel->showsFolder());
    QTRY_COMPARE(treeNames(panel), QStringList());
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("a/b")));
    expectNothing();
    dir->file(QStringLiteral("a/b/new"));
    QTRY_VERIFY(panel->showsFolder());
    QTRY_COMPARE(listNames(panel), (QStringList{"..", "new"}));
}

/// It is gone for the moment in which it is to be opened; nobody hears of that.
void TestMPanelRows::folderThatIsBackIsListed()
{
    QVERIFY(QDir().rename(dir->path("d"), dir->path("away")));
    panel->treeRowChanged(dir->path(QStringLiteral("d")));
    QVERIFY(!panel->showsFolder());
    QCOMPARE(panel->folderLabel->text(), dir->path("d") + " has 0 dirs, 0 files, 0 Bytes");
    dir->file(QStringLiteral("away/f"));
    QVERIFY(QDir().rename(dir->path("away"), dir->path("d")));
    QTRY_COMPARE(listNames(panel), (QStringList{"..", "f"}));
    QCOMPARE(panel->rootPath, dir->path());
}

/// The selection is of files, also where the current folder is another one that has files of the same names.
void TestMPanelRows::rebuiltListingStaysInItsFolder()
{
    dir->file(QStringLiteral("d/one"), "not chosen");
    panel->list->setFocus();
    select({"one"});
    panel->currentPath = dir->path(QStringLiteral("d"));
    panel->reloadList();
    QTRY_VERIFY(panel->list->selectionModel()->hasSelection());
    panel->list->takePending();
    QCOMPARE(gslDragList, QStringList{dir->path("one")});
}

/// With the selection still to come, a command would mean the whole folder.
void TestMPanelRows::noCommandWhileRowsAreReadAnew()
{
    panel->list->setFocus();
    select({"one"});
    panel->reloadList();
    QVERIFY(!panel->takesCommands());
    {
        const BoxAnswers boxes;
        const ModalAnswers answers;
        QTest::keyClick(panel->list, Qt::Key_X);
        QTest::keyClick(panel->list, Qt::Key_P);
        emit panel->list->customContextMenuRequested(QPoint(20, 5));
    }
    QTRY_VERIFY(panel->takesCommands());
    QCOMPARE(panel->selectedPaths, QStringList{dir->path("one")});
}

/// What the menu was opened for is not there any more, whatever has its name now.
void TestMPanelRows::menuOverAFolderMadeAnew()
{
    dir->file(QStringLiteral("d/item"), "old");
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    gstMenu = {{CommandExecute, QStringLiteral("|*|"), QStringLiteral("Run"), QString()}};
    const QPoint place = panel->list->visualRect(listIndex(panel, QStringLiteral("item"))).center();
    for (const bool madeAnew : {true, false}) {
        BoxAnswers boxes;
        if (!madeAnew) {
            boxes.click(QStringLiteral("OK")); // it cannot be started
        }
        ModalAnswers answers;
        answers.meet<QMenu>([&](QMenu* menu) {
            if (madeAnew) {
                QVERIFY(QDir().rename(dir->path("d"), dir->path("away")));
                dir->file(QStringLiteral("d/item"), "another");
            }
            menu->setActiveAction(menu->actions().constFirst());
            QTest::keyClick(menu, Qt::Key_Return);
        });
        panel->ShowContextMenuList(place);
        QCOMPARE(boxes.seen().size(), madeAnew ? 0 : 1);
        QVERIFY(waitForList(panel));
        QTRY_VERIFY(listIndex(panel, QStringLiteral("item")).isValid());
    }
}

void TestMPanelRows::anotherFolderIsNotChosen_data()
{
    QTest::addColumn<QString>("drive");
    QTest::addColumn<QString>("shown");
    QTest::newRow("folder swapped") << ""
                                    << "d";
    QTest::newRow("root swapped") << "d"
                                  << "d";
    QTest::newRow("link turned") << "link"
                                 << "link";
    QTest::newRow("link above turned") << "link"
                                       << "link/inner";
}

/// A selection is of files: those of the same names in a folder that takes the place of theirs are not in it.
void TestMPanelRows::anotherFolderIsNotChosen()
{
    QFETCH(QString, drive);
    QFETCH(QString, shown);
    for (const char* folder : {"d", "e", "d/inner", "e/inner"}) {
        dir->file(QString(QLatin1String(folder)) + "/same", folder);
    }
    dir->file(QStringLiteral("e/inner/new"));
    dir->file(QStringLiteral("e/new"));
    dir->link(QStringLiteral("link"), QStringLiteral("d"));
    panel->setTreeRoot(dir->path(drive));
    QVERIFY(openFolder(panel, dir->path(shown)));
    panel->list->setFocus();
    select({"same"});
    QCOMPARE(panel->selectedCount, 1);
    if (shown == "d") {
        QVERIFY(QDir().rename(dir->path("d"), dir->path("away")));
        QVERIFY(QDir().rename(dir->path("e"), dir->path("d")));
    } else {
        QVERIFY(QFile::remove(dir->path("link")));
        dir->link(QStringLiteral("link"), QStringLiteral("e"));
    }
    QTRY_VERIFY(listNames(panel).contains(QStringLiteral("new")));
    QVERIFY(listNames(panel).contains(QStringLiteral("same")));
    panel->list->takePending();
    QCOMPARE(gslDragList, QStringList());
    QVERIFY(!panel->list->currentIndex().isValid());
}

void TestMPanelRows::manyRemovalsKeepTheSelection()
{
    dir->files(QStringLiteral("d"), 4000, QStringLiteral("f%1"));
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    QTRY_COMPARE(listNames(panel).size(), 4001);
    panel->list->setFocus();
    select({"f7", "f3990", "f3991", "f3999"});
    panel->list->selectionModel()->setCurrentIndex(
        listIndex(panel, QStringLiteral("f3997"), 2), QItemSelectionModel::NoUpdate);
    const QPointer<myFileSystemModel> before(panel->listModel);
    for (int i = 0; i < 3990; ++i) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("d/f%1").arg(i))));
    }
    QTRY_COMPARE(listNames(panel).size(), 11);
    QTRY_VERIFY(before.isNull()); // else this shows nothing
    QTRY_COMPARE(panel->selectionLabel->text(), QStringLiteral("Selected 3 file(s), 0 Bytes"));
    panel->getSelection();
    QCOMPARE(panel->selectedPaths,
        (QStringList{dir->path("d/f3990"), dir->path("d/f3991"), dir->path("d/f3999")}));
    QCOMPARE(panel->list->currentIndex(), listIndex(panel, QStringLiteral("f3997"), 2));
    QVERIFY(panel->list->hasFocus());
}

/// Whoever selects something before the listing is complete again has chosen anew.
void TestMPanelRows::whatIsSelectedMeanwhileStays()
{
    panel->list->setFocus();
    select({"one"});
    panel->reloadList();
    panel->reloadList(); // before the first has come to its end
    QTRY_COMPARE(panel->selectedPaths, QStringList{dir->path("one")});
    panel->reloadList();
    connect(panel->listModel, &QAbstractItemModel::rowsInserted, this, [this] {
        if (listIndex(panel, QStringLiteral("two")).isValid()) {
            select({"two"});
        }
    });
    QVERIFY(waitForList(panel));
    QTRY_VERIFY(listIndex(panel, QStringLiteral("two")).isValid());
    QVERIFY(readAnotherFolder());
    panel->getSelection();
    QCOMPARE(panel->selectedPaths, QStringList{dir->path("two")});
}

/// Asking for all selected rows at each one that goes froze the window for seconds.
void TestMPanelRows::selectionIsAskedOnceWhenRowsGo()
{
    dir->files(QStringLiteral("d"), 40, QStringLiteral("f%1"));
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    panel->list->setFocus();
    panel->list->selectAll();
    QCOMPARE(panel->selectedCount, 40);
    QList<int> counts;
    connect(panel->listModel, &QAbstractItemModel::rowsRemoved, this,
        [&] { counts.append(panel->selectedCount); });
    FolderReading reading;
    reading.folder = dir->path(QStringLiteral("d"));
    reading.exists = true;
    for (int i = 0; i < 30; ++i) {
        reading.removed.append(QStringLiteral("f%1").arg(i));
        QVERIFY(QFile::remove(dir->path(QStringLiteral("d/f%1").arg(i))));
    }
    QVERIFY(QMetaObject::invokeMethod(panel->listModel, "takeReading", Q_ARG(FolderReading, reading)));
    QTRY_COMPARE(panel->selectionLabel->text(), QStringLiteral("Selected 10 file(s), 0 Bytes"));
    QVERIFY(counts.size() >= 30);
    QCOMPARE(counts.mid(0, 30), QVector<int>(30, 40).toList());
    QCOMPARE(panel->selectedPaths.size(), 10);
}

VANTREL_TEST_MAIN(TestMPanelRows)
#include "tst_MPanelRows.moc"
