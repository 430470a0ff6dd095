#include "app/aGlobal.h"
#include "tests/support/TestMain.h"

#include <type_traits>

// The types are part of the contract: other rooms take references to them.
static_assert(std::is_same_v<decltype(gmFileAssn), QMap<QString, QString>>);
static_assert(std::is_same_v<decltype(gstMenu), QList<LSMENU>>);
static_assert(std::is_same_v<decltype(gstDrives), QList<LSDRIVE>>);
static_assert(std::is_same_v<decltype(giWindowArrange), int>);
static_assert(std::is_same_v<decltype(gslDragList), QStringList>);
static_assert(std::is_same_v<decltype(gmutexLock), QMutex>);
static_assert(std::is_same_v<decltype(gwPanel1), MPanel*> && std::is_same_v<decltype(gwPanel2), MPanel*>);
static_assert(std::is_same_v<decltype(gwMainframe), aVantrel*>);

class TestaGlobal : public QObject
{
    Q_OBJECT

private slots:
    void defaults();
    void barHeights();
    void texts();
    void lock();
    void records();
    void recordsAreCopied();
    void commandCodes();
    void arrangements();
};

void TestaGlobal::defaults()
{
    QCOMPARE(gsAppStyleSheet, QString());
    QCOMPARE(gsAppIcon, QString());
    QCOMPARE(gmFileAssn.size(), 0);
    QCOMPARE(gstMenu.size(), 0);
    QCOMPARE(gstDrives.size(), 0);
    QCOMPARE(gsNoRecurse, QString());
    QCOMPARE(giWindowArrange, 0);
    QCOMPARE(gsLastPath1, QString());
    QCOMPARE(gsLastPath2, QString());
    QCOMPARE(gslDragList.size(), 0);
    QCOMPARE(gsDragBase, QString());
    QCOMPARE(gsDropBase, QString());
    QCOMPARE(gwPanel1, nullptr);
    QCOMPARE(gwPanel2, nullptr);
    QCOMPARE(gwMainframe, nullptr);
}

void TestaGlobal::barHeights()
{
    QCOMPARE(giStatusBarHeight, 24);
    QCOMPARE(giNavBarHeight, 24);
    QCOMPARE(giDriveBarHeight, 30);
}

void TestaGlobal::texts()
{
    QCOMPARE(gsProduct, QStringLiteral("Vantrel"));
    QCOMPARE(gsVersion, QStringLiteral("Version 0.30"));
    QCOMPARE(gsCopywrite, QString::fromUtf8("Copyright \xc2\xa9 2026 The Vantrel authors"));
}

void TestaGlobal::lock()
{
    QVERIFY(!gmutexLock.isRecursive());
    QVERIFY(gmutexLock.tryLock());
    QVERIFY(!gmutexLock.tryLock());
    gmutexLock.unlock();
}

void TestaGlobal::records()
{
    const LSMENU entry;
    QCOMPARE(entry.code, 0);
    QCOMPARE(entry.types, QString());
    QCOMPARE(entry.label, QString());
    QCOMPARE(entry.command, QString());
    const LSDRIVE drive;
    QCOMPARE(drive.path, QString());
    QCOMPARE(drive.label, QString());
}

void TestaGlobal::recordsAreCopied()
{
    LSMENU entry{CommandCopy, QStringLiteral("|*|"), QStringLiteral("Copy"), QString()};
    QList<LSMENU> menu{entry};
    entry.label = QStringLiteral("changed");
    QCOMPARE(menu.first().code, 107);
    QCOMPARE(menu.first().types, QStringLiteral("|*|"));
    QCOMPARE(menu.first().label, QStringLiteral("Copy"));
}

void TestaGlobal::commandCodes()
{
    QCOMPARE(static_cast<int>(CommandUnknown), 0);
    QCOMPARE(static_cast<int>(CommandProperties), 101);
    QCOMPARE(static_cast<int>(CommandTotalSize), 102);
    QCOMPARE(static_cast<int>(CommandChecksum), 103);
    QCOMPARE(static_cast<int>(CommandSeparator), 104);
    QCOMPARE(static_cast<int>(CommandNewDir), 105);
    QCOMPARE(static_cast<int>(CommandRename), 106);
    QCOMPARE(static_cast<int>(CommandCopy), 107);
    QCOMPARE(static_cast<int>(CommandDelete), 108);
    QCOMPARE(static_cast<int>(CommandSendTo), 109);
    QCOMPARE(static_cast<int>(CommandClipboard), 110);
    QCOMPARE(static_cast<int>(CommandDropCopy), 111);
    QCOMPARE(static_cast<int>(CommandDropMove), 112);
    QCOMPARE(static_cast<int>(CommandCompare), 113);
    QCOMPARE(static_cast<int>(CommandExecute), 114);
    QCOMPARE(static_cast<int>(CommandTerminal), 115);
    QCOMPARE(static_cast<int>(CommandTerminalEx), 116);
}

void TestaGlobal::arrangements()
{
    QCOMPARE(static_cast<int>(ArrangeSideBySide), 0);
    QCOMPARE(static_cast<int>(ArrangeSinglePanel), 1);
    QCOMPARE(static_cast<int>(ArrangeStacked), 2);
}

VANTREL_TEST_MAIN(TestaGlobal)
#include "tst_aGlobal.moc"
