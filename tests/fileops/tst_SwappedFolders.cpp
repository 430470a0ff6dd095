#include "fileops/MProgress.h"

#include "tests/support/FaultShim.h"
#include "tests/support/FileTree.h"
#include "tests/support/OperationRun.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstring>

namespace {

const QString notAFolder = '\n' + QString::fromLocal8Bit(std::strerror(ENOTDIR));

/// A tree to delete, and one outside of it with the same names, which a link comes to lead to.
class Swap
{
public:
    Swap()
    {
        for (const char* place : {"src/sub", "outside", "outside/sub"}) {
            dir.file(QLatin1String(place) + "/f", QByteArray(place));
            dir.file(QLatin1String(place) + "/deep/f", QByteArray(place));
        }
        dir.folder("outside/empty");
        dir.folder("src/sub/empty");
        before = fileTreeOf(dir.path("outside"));
    }

    /// Puts a link to the outside tree in the place of a folder.
    void swap(const QString& folder)
    {
        swapped = folder;
        QDir().rename(dir.path(folder), dir.path("aside"));
        dir.link(folder, dir.path("outside"));
    }
    void swapBack() const
    {
        QFile::remove(dir.path(swapped));
        QDir().rename(dir.path("aside"), dir.path(swapped));
    }
    QStringList damage() const { return differencesOf(fileTreeOf(dir.path("outside")), before); }

    TestDir dir;
    FileTree before;
    QString swapped;
};

} // namespace

/// Folders that are swapped for links while they are deleted: what the links lead to stays untouched.
class TestSwappedFolders : public QObject
{
    Q_OBJECT

private slots:
    void beforeACall_data();
    void beforeACall();
    void whileAQuestionIsOpen_data();
    void whileAQuestionIsOpen();
    void whileAFailureIsReported();
    void swappedBackAndRetried();
    void vanishedFolder();
    void linksAreDeletedAsLinks();
};

void TestSwappedFolders::beforeACall_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QByteArray>("function");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("firstReport"); // "" where the order of the entries decides
    // Counting makes the first calls, and the deletion the next.
    QTest::newRow("listing") << "src/sub" << QByteArray("opendir") << "src/sub" << 2
                             << "Error accessing directory:\n src/sub";
    QTest::newRow("listing of the chosen item")
        << "src" << QByteArray("opendir") << "src" << 2 << "Error accessing directory:\n src";
    QTest::newRow("listing deeper") << "src" << QByteArray("opendir") << "src/sub/deep" << 2
                                    << "Error accessing directory:\n src/sub/deep";
    QTest::newRow("first entry") << "src/sub" << QByteArray("readdir") << "src/sub" << 7 << "";
    QTest::newRow("a file") << "src/sub" << QByteArray("lstat") << "src/sub/f" << 2
                            << "Error deleting directory:\n src/sub";
    QTest::newRow("a file, folder above")
        << "src" << QByteArray("lstat") << "src/sub/f" << 2 << "Error deleting directory:\n src/sub";
    QTest::newRow("a folder") << "src/sub" << QByteArray("lstat") << "src/sub/deep" << 3
                              << "Error deleting directory:\n src/sub";
    QTest::newRow("the end of a folder") << "src/sub" << QByteArray("closedir") << "src/sub/empty" << 2
                                         << "Error deleting directory:\n src/sub/empty";
}

void TestSwappedFolders::beforeACall()
{
    QFETCH(QString, folder);
    QFETCH(QByteArray, function);
    QFETCH(QString, path);
    QFETCH(int, number);
    QFETCH(QString, firstReport);
    Swap swap;
    {
        FaultShim shim(swap.dir.path());
        shim.before(function.constData(), path, number, [&] { swap.swap(folder); });
        OperationRun run(OpDelete, {swap.dir.path("src")});
        run.answers.otherwise({"YesAll", "Ignore"});
        QVERIFY(run.run());
        QCOMPARE(swap.swapped, folder);
        QCOMPARE(swap.damage(), QStringList());
        QStringList reports = run.answers.texts().filter("Error ");
        QVERIFY(!reports.isEmpty());
        if (!firstReport.isEmpty()) {
            QCOMPARE(reports.constFirst(),
                QString(firstReport).replace("\n ", "\n" + swap.dir.path() + '/') + notAFolder);
        }
    }
}

void TestSwappedFolders::whileAQuestionIsOpen_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("button");
    for (const char* folder : {"src", "src/sub"}) {
        for (const char* button : {"Yes", "YesAll"}) {
            QTest::addRow("%s, %s", folder, button) << folder << button;
        }
    }
}

void TestSwappedFolders::whileAQuestionIsOpen()
{
    QFETCH(QString, folder);
    QFETCH(QString, button);
    Swap swap;
    OperationRun run(OpDelete, {swap.dir.path("src")});
    run.answers.meanwhile([&] { swap.swap(folder); }).click(button).otherwise({"Yes", "Ignore"});
    QVERIFY(run.run());
    QCOMPARE(swap.damage(), QStringList());
    QVERIFY(run.answers.texts().value(1).startsWith("Error deleting file:\n" + swap.dir.path("src/sub/")));
    QVERIFY(run.answers.texts().value(1).endsWith(notAFolder));
}

void TestSwappedFolders::whileAFailureIsReported()
{
    Swap swap;
    FaultShim shim(swap.dir.path());
    shim.fail("remove", "src/sub/f", EBUSY);
    OperationRun run(OpDelete, {swap.dir.path("src")});
    run.answers.otherwise([&](const QString& text) {
        if (text.endsWith(QString::fromLocal8Bit(std::strerror(EBUSY)))) {
            swap.swap("src/sub");
            return QString("Retry");
        }
        return QString(text.startsWith("Delete") ? "YesAll" : "Ignore");
    });
    QVERIFY(run.run());
    QCOMPARE(swap.damage(), QStringList());
    QVERIFY(run.answers.texts().contains("Error deleting file:\n" + swap.dir.path("src/sub/f") + notAFolder));
}

void TestSwappedFolders::swappedBackAndRetried()
{
    Swap swap;
    OperationRun run(OpDelete, {swap.dir.path("src")});
    run.answers.meanwhile([&] { swap.swap("src/sub"); })
        .click("YesAll")
        .meanwhile([&] { swap.swapBack(); })
        .click("Retry");
    QVERIFY(run.run());
    QCOMPARE(swap.damage(), QStringList());
    QCOMPARE(run.answers.texts().size(), 2);
    QVERIFY(!swap.dir.exists("src"));
}

/// What is not there any more is told so.
void TestSwappedFolders::vanishedFolder()
{
    Swap swap;
    OperationRun run(OpDelete, {swap.dir.path("src")});
    const auto moveAway = [&] { QDir().rename(swap.dir.path("src/sub"), swap.dir.path("aside")); };
    run.answers.meanwhile(moveAway).click("Yes").otherwise({"Yes", "Ignore"});
    QVERIFY(run.run());
    const QString reason = '\n' + QString::fromLocal8Bit(std::strerror(ENOENT));
    QVERIFY(run.answers.texts().value(1).startsWith("Error deleting file:\n" + swap.dir.path("src/sub/")));
    QVERIFY2(run.answers.texts().value(1).endsWith(reason), qPrintable(run.answers.texts().value(1)));
    QVERIFY(swap.dir.exists("aside/f"));
}

void TestSwappedFolders::linksAreDeletedAsLinks()
{
    Swap swap;
    swap.dir.link("src/link", swap.dir.path("outside"));
    swap.dir.link("src/sub/link", "../../outside/sub");
    OperationRun run(OpDelete, {swap.dir.path("src")});
    run.answers.otherwise({"YesAll"});
    QVERIFY(run.run());
    QCOMPARE(run.answers.texts().size(), 1);
    QCOMPARE(swap.damage(), QStringList());
    QVERIFY(!swap.dir.exists("src"));
}

VANTREL_TEST_MAIN(TestSwappedFolders)
#include "tst_SwappedFolders.moc"
