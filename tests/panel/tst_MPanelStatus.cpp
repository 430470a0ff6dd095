#include "panel/MPanel.h"

#include "app/TextHelpers.h"
#include "app/aGlobal.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/FaultShim.h"
#include "tests/support/PanelFixture.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSemaphore>
#include <QStorageInfo>

/// What the status bar tells, and the selection that it counts.
class TestMPanelStatus : public QObject, protected PanelFixture
{
    Q_OBJECT

private slots:
    void init() { start(); }
    void cleanup() { end(); }

    void counts_data();
    void counts();
    void countsFollowTheDisk();
    void countsOfASlowFolder();
    void countsOfAFolderWithASlowEnd();
    void folderTextIsPlain();
    void selectionOfTheTree();
    void selectionOfTheList();
    void parentIsNotCounted();
    void selectionTexts_data();
    void selectionTexts();
    void freeSpaceText();
    void freeSpaceWithoutStorage_data();
    void freeSpaceWithoutStorage();
    void selectionOrder();
    void selectAllInABigFolder();

    void lastPathOfASelection();

private:
    QString status() const { return panel->selectionLabel->text(); }
};

void TestMPanelStatus::counts_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"plain", "%1 %2 %3", "<b>x<b>", "a\nb", "a b"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
    QTest::newRow("255 bytes") << QString(255, QLatin1Char('x'));
}

void TestMPanelStatus::counts()
{
    QFETCH(QString, name);
    const QString path = dir->folder(name);
    dir->file(name + QStringLiteral("/f"), QByteArray(1536, 'x'));
    dir->file(name + QStringLiteral("/.g"), QByteArray(1, 'x'));
    const qint64 folderBytes = QFileInfo(dir->folder(name + QStringLiteral("/sub"))).size();
    QVERIFY(openFolder(panel, path));
    QCOMPARE(panel->folderLabel->text(),
        path + QStringLiteral(" has 1 dirs, 2 files, ") + FormatBytes(1537 + folderBytes));
}

void TestMPanelStatus::countsFollowTheDisk()
{
    const QString path = dir->folder(QStringLiteral("new"));
    QVERIFY(openFolder(panel, path));
    QCOMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 0 files, 0 Bytes"));
    dir->file(QStringLiteral("new/f"), "12");
    QTRY_COMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 1 files, 2 Bytes"));
    dir->setTimes(QStringLiteral("new/f"), 1000);
    dir->file(QStringLiteral("new/f"), "12345");
    dir->setTimes(QStringLiteral("new/f"), 1000);
    QTRY_COMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 1 files, 5 Bytes"));
    QCOMPARE(listText(panel, QStringLiteral("f"), 1), QStringLiteral("5"));
    QVERIFY(QFile::remove(dir->path(QStringLiteral("new/f"))));
    QTRY_COMPARE(panel->folderLabel->text(), path + QStringLiteral(" has 0 dirs, 0 files, 0 Bytes"));
}

// The first part of a slow folder is shown, and not counted.
void TestMPanelStatus::countsOfASlowFolder()
{
    const QString slow = QStringLiteral("slow");
    dir->files(slow, 5);
    const QString before = panel->folderLabel->text();
    QVERIFY(!before.isEmpty());
    QSemaphore mayGoOn;
    FaultShim shim(dir->path());
    shim.delay("readdir", slow, 1050, 5, 1);
    shim.before("closedir", slow, 1, [&mayGoOn] { mayGoOn.acquire(); });
    panel->treeRowChanged(dir->path(slow));
    const auto rows = [this] { return panel->listModel->rowCount(panel->list->rootIndex()); };
    const bool partShown = QTest::qWaitFor([&rows] { return rows() > 0; });
    QCoreApplication::processEvents();
    const QString meanwhile = panel->folderLabel->text();
    mayGoOn.release();
    QVERIFY(partShown);
    QCOMPARE(meanwhile, before);
    QTRY_COMPARE(panel->folderLabel->text(), dir->path(slow) + " has 0 dirs, 5 files, 0 Bytes");
    QCOMPARE(rows(), 6);
}

// All entries are in the first part: nothing changes with the rest but that they are counted.
void TestMPanelStatus::countsOfAFolderWithASlowEnd()
{
    const QString slow = QStringLiteral("slow");
    dir->files(slow, 5);
    FaultShim shim(dir->path());
    shim.delay("readdir", slow, 1050, 8, 1);
    panel->treeRowChanged(dir->path(slow));
    QTRY_COMPARE(panel->folderLabel->text(), dir->path(slow) + " has 0 dirs, 5 files, 0 Bytes");
}

void TestMPanelStatus::folderTextIsPlain()
{
    QCOMPARE(panel->folderLabel->textFormat(), Qt::PlainText);
    QCOMPARE(panel->selectionLabel->textFormat(), Qt::PlainText);
}

void TestMPanelStatus::selectionOfTheTree()
{
    select({"one"});
    panel->tree->setFocus();
    panel->selectedCount = 7;
    panel->selectedBytes = 7;
    panel->selectedPaths = QStringList{"old"};
    panel->getSelection();
    QCOMPARE(panel->selectedPaths, QStringList{dir->path()});
    QCOMPARE(panel->selectedCount, 0);
    QCOMPARE(panel->selectedBytes, qint64(0));
    panel->driveBar->buttons.constFirst()->setFocus();
    panel->getSelection();
    QVERIFY(panel->selectedPaths.isEmpty());
}

void TestMPanelStatus::selectionOfTheList()
{
    panel->list->setFocus();
    select({"two", "a", "one"});
    panel->getSelection();
    QCOMPARE(panel->selectedPaths,
        (QStringList{dir->path(QStringLiteral("two")), dir->path(QStringLiteral("a")),
            dir->path(QStringLiteral("one"))}));
    QCOMPARE(panel->selectedCount, 3);
    QCOMPARE(panel->selectedBytes, qint64(3)); // the size of a folder in the listing is 0
}

void TestMPanelStatus::parentIsNotCounted()
{
    panel->list->setFocus();
    select({".."});
    QVERIFY(panel->selectedPaths.isEmpty());
    QCOMPARE(status(), QStringLiteral("Selected 0 file(s), 0 Bytes"));
    select({"..", "two"});
    QCOMPARE(panel->selectedPaths, QStringList{dir->path(QStringLiteral("two"))});
}

void TestMPanelStatus::selectionTexts_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("1") << 1 << QStringLiteral("Selected 1 file(s), 1 Bytes");
    QTest::newRow("1 KB") << 1024 << QStringLiteral("Selected 1 file(s), 1KB");
    QTest::newRow("1.5 KB") << 1536 << QStringLiteral("Selected 1 file(s), 1.50KB");
}

void TestMPanelStatus::selectionTexts()
{
    QFETCH(int, bytes);
    QFETCH(QString, text);
    dir->file(QStringLiteral("d/it"), QByteArray(bytes, 'x'));
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    panel->list->setFocus();
    select({"it"});
    QCOMPARE(status(), text);
}

void TestMPanelStatus::freeSpaceText()
{
    panel->tree->setFocus();
    panel->listSelectionChanged();
    const QStorageInfo storage(dir->path());
    const float used = static_cast<float>(storage.bytesTotal() - storage.bytesFree())
        / static_cast<float>(storage.bytesTotal()) * 100.0F;
    const QString start = QString::fromLocal8Bit(storage.device()) + QStringLiteral(": ")
        + FormatBytes(storage.bytesTotal()) + QLatin1Char(' ');
    QVERIFY2(status().startsWith(start), qPrintable(status()));
    const QRegularExpression rest(QStringLiteral("^(\\d+\\.\\d\\d)% used$"));
    const QRegularExpressionMatch match = rest.match(status().mid(start.length()));
    QVERIFY2(match.hasMatch(), qPrintable(status()));
    QVERIFY(qAbs(match.captured(1).toFloat() - used) < 1.0F);
}

void TestMPanelStatus::freeSpaceWithoutStorage_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("end");
    QTest::newRow("no blocks at all") << QStringLiteral("/proc") << QStringLiteral("proc: 0 Bytes nan% used");
    QTest::newRow("no such folder") << QStringLiteral("/no/such/folder") << QStringLiteral("% used");
}

void TestMPanelStatus::freeSpaceWithoutStorage()
{
    QFETCH(QString, path);
    QFETCH(QString, end);
    panel->currentPath = path;
    panel->tree->setFocus();
    panel->listSelectionChanged();
    QString text = status();
    QVERIFY2(text.remove(QLatin1Char('-')).endsWith(end), qPrintable(status()));
}

void TestMPanelStatus::selectionOrder()
{
    panel->list->setFocus();
    panel->headerClicked(0);
    panel->list->selectAll();
    QStringList expected;
    for (const QString& name : listNames(panel)) {
        if (name != QLatin1String("..")) {
            expected.append(dir->path(name));
        }
    }
    QCOMPARE(panel->selectedPaths, expected);
}

void TestMPanelStatus::selectAllInABigFolder()
{
    dir->files(QStringLiteral("d"), 5000);
    QVERIFY(openFolder(panel, dir->path(QStringLiteral("d"))));
    QTRY_COMPARE(listNames(panel).size(), 5001);
    panel->list->setFocus();
    QElapsedTimer clock;
    clock.start();
    panel->list->selectAll();
    QVERIFY2(clock.elapsed() < 1000, QByteArray::number(clock.elapsed()).constData());
    QCOMPARE(panel->selectedCount, 5000);
    QCOMPARE(status(), QStringLiteral("Selected 5000 file(s), 0 Bytes"));
}

void TestMPanelStatus::lastPathOfASelection()
{
    panel->list->setFocus();
    select({"two", "one"});
    QCOMPARE(gsLastPath1, dir->path(QStringLiteral("two")));
    QCOMPARE(gsLastPath2, QString());
    gwPanel1 = panel;
    select({"one"});
    QCOMPARE(gsLastPath2, dir->path(QStringLiteral("one")));
    panel->list->clearSelection();
    QCOMPARE(gsLastPath2, dir->path(QStringLiteral("one"))); // an empty selection names nothing
    panel->tree->setFocus();
    select({"two"});
    QCOMPARE(gsLastPath2, dir->path(QStringLiteral("one")));
}

VANTREL_TEST_MAIN(TestMPanelStatus)
#include "tst_MPanelStatus.moc"
