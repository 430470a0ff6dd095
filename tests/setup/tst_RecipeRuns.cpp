#include "tests/support/RecipeRun.h"
#include "tests/support/TestMain.h"

#include <QFileInfo>
#include <QImage>
#include <QProcess>

/// The recipes, started by the program's own commands on names that are hard to hand on, and what they did.
/// Archives are tst_RecipeRunsArchives.cpp; what removes, renames, links and protects items is
/// tst_RecipeRunsItems.cpp.
class TestRecipeRuns : public QObject, private RecipeRun
{
    Q_OBJECT

private slots:
    void initTestCase() { prepare(); }
    void init() { open(); }
    void cleanup() { close(); }

    void look_data();
    void look();
    void searchName_data() { hardNames(); }
    void searchName();
    void searchContent_data() { hardNames(); }
    void searchContent();
    void searchHere();
    void searchLatest();
    void searchSame();

    void compareFiles_data() { hardNames(); }
    void compareFiles();
    void compareFolders();
    void synchronise_data();
    void synchronise();
    void synchroniseRefuses_data();
    void synchroniseRefuses();

    void git_data() { hardNames(); }
    void git();
    void runTerminal();
    void terminalIn_data() { hardNames(); }
    void terminalIn();
    void pictureTurn();
    void diskMap();

    void changesNothingBesideTheItems_data();
    void changesNothingBesideTheItems();
};

// --- Looking and searching

void TestRecipeRuns::look_data()
{
    QTest::addColumn<QString>("marker");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* name, const char* marker, const char* expected) {
        QTest::newRow(name) << QString::fromLatin1(marker) << QString::fromLatin1(expected);
    };
    row("view", "", "some text");
    row("view-hex", "xxd", "736f 6d65");
    row("view-hex", "od${IFS}", "73 6f 6d 65");
    row("file-type", "", "ASCII text");
    row("edit-terminal", "", "edited: some text");
}

void TestRecipeRuns::look()
{
    QFETCH(QString, marker);
    QFETCH(QString, expected);
    const Recipe recipe = recipeNamed(QString::fromLatin1(QTest::currentDataTag()), marker);
    VANTREL_NEEDS_RECIPE(recipe);
    qputenv("EDITOR",
        dir->file(QStringLiteral("tools/editor"), "#!/bin/sh\nprintf 'edited: '\ncat -- \"$1\"\n", 0755)
            .toLocal8Bit());
    const QString shown = run(recipe, file(QString::fromLatin1(allInOne), "some text\n"));
    QVERIFY2(shown.contains(expected), qPrintable(shown));
}

void TestRecipeRuns::searchName()
{
    file(QStringLiteral("in/") + name() + QStringLiteral("/My Two Words.txt"));
    file(QStringLiteral("in/other"));
    const QString shown = run("search-name", path(QStringLiteral("in/") + name()), "two words\n");
    QVERIFY2(shown.contains(path(QStringLiteral("in/") + name() + QStringLiteral("/My Two Words.txt"))),
        qPrintable(shown));
    QVERIFY(!shown.contains(QStringLiteral("in/other")));
}

void TestRecipeRuns::searchContent()
{
    file(QStringLiteral("in/") + name() + QStringLiteral("/f"), "first\nthe $HOME of 'It' [all]\n");
    file(QStringLiteral("in/") + name() + QStringLiteral("/g"), "nothing\n");
    const QString shown
        = run("search-content", path(QStringLiteral("in/") + name()), "$home of 'it' [ALL]\n");
    QVERIFY2(shown.contains(QStringLiteral("/f:2:the $HOME of 'It' [all]")), qPrintable(shown));
    QVERIFY(!shown.contains(QStringLiteral("/g")));
}

// A click beside the items has no path: the panel's folder is searched then.
void TestRecipeRuns::searchHere()
{
    file(QStringLiteral("needle"));
    const QString shown = run("search-name", QString(), "need\n");
    QVERIFY2(shown.contains(QStringLiteral("./needle")), qPrintable(shown));
}

void TestRecipeRuns::searchLatest()
{
    file(QStringLiteral("old one"));
    file(QStringLiteral("new one"));
    dir->setTimes(QStringLiteral("w/old one"), 1000000000);
    const QString shown = run("search-latest", path());
    QVERIFY2(shown.contains(QStringLiteral("2001-09-09 01:46 ") + path(QStringLiteral("/old one"))),
        qPrintable(shown));
    QVERIFY(shown.indexOf(QStringLiteral("new one")) < shown.indexOf(QStringLiteral("old one")));
}

void TestRecipeRuns::searchSame()
{
    const Recipe recipe = recipeNamed(QStringLiteral("search-same"));
    VANTREL_NEEDS_RECIPE(recipe);
    file(QStringLiteral("one"), "same\n");
    file(QStringLiteral("sub/it's  two"), "same\n");
    file(QStringLiteral("three"), "other\n");
    const QString shown = run(recipe, path());
    QVERIFY2(shown.contains(QStringLiteral("/one")) && shown.contains(QStringLiteral("it's  two")),
        qPrintable(shown));
    QVERIFY(!shown.contains(QStringLiteral("three")));
    QCOMPARE(tree().size(), 4);
}

// --- Comparing

void TestRecipeRuns::compareFiles()
{
    const QString left = file(QStringLiteral("l/") + name(), "same\nold\n");
    const QString right = file(QStringLiteral("r/") + name(), "same\nnew\n");
    const QString shown = run("compare-files", left, QByteArray(), right);
    QVERIFY2(shown.contains(QStringLiteral("\n-old\n+new\n")), qPrintable(shown));
    file(QStringLiteral("r/") + name(), "same\nold\n");
    QVERIFY(run("compare-files", left, QByteArray(), right).contains(QStringLiteral("identical")));
}

void TestRecipeRuns::compareFolders()
{
    for (const char* each : {"l' 1/both", "l' 1/left", "r\" 2/both", "r\" 2/right"}) {
        file(QLatin1String(each), QByteArray(each).left(1));
    }
    const QString shown
        = run("compare-folders", path(QStringLiteral("l' 1")), QByteArray(), path(QStringLiteral("r\" 2")));
    QVERIFY2(shown.contains(QStringLiteral(": left")) && shown.contains(QStringLiteral(": right"))
            && shown.contains(QStringLiteral(" differ")),
        qPrintable(shown));
}

void TestRecipeRuns::synchronise_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("copies");
    QTest::newRow("y") << QByteArray("y\n") << true;
    QTest::newRow("Y") << QByteArray("Y\n") << true;
    QTest::newRow("n") << QByteArray("n\n") << false;
    QTest::newRow("nothing") << QByteArray("\n") << false;
    QTest::newRow("no answer") << QByteArray() << false;
}

// Copies what is missing and newer, keeps what it replaces, and deletes nothing.
void TestRecipeRuns::synchronise()
{
    QFETCH(QByteArray, answer);
    QFETCH(bool, copies);
    const Recipe recipe = recipeNamed(QStringLiteral("synchronise"));
    VANTREL_NEEDS_RECIPE(recipe);
    const QString hard = QString::fromLatin1(allInOne);
    file(hard + QStringLiteral("1/missing"), "m\n");
    file(hard + QStringLiteral("1/newer"), "new content\n");
    file(hard + QStringLiteral("1/older"), "old content\n");
    file(hard + QStringLiteral("2/newer"), "replaced\n");
    file(hard + QStringLiteral("2/older"), "kept\n");
    file(hard + QStringLiteral("2/only"), "only\n");
    dir->setTimes(QStringLiteral("w/") + hard + QStringLiteral("2/newer"), 1000000000);
    dir->setTimes(QStringLiteral("w/") + hard + QStringLiteral("1/older"), 1000000000);
    const QStringList before = tree(hard + QLatin1Char('2'));
    const QString shown = run(recipe, path(hard + QLatin1Char('1')), answer, path(hard + QLatin1Char('2')));
    QVERIFY2(shown.contains(QStringLiteral("Copy these? [y/N]")), qPrintable(shown));
    QVERIFY(shown.contains(QStringLiteral("missing")) && !shown.contains(QStringLiteral("older")));
    const QString right = hard + QLatin1Char('2') + QLatin1Char('/');
    QCOMPARE(read(right + QStringLiteral("older")), QByteArray("kept\n"));
    QCOMPARE(read(right + QStringLiteral("only")), QByteArray("only\n"));
    QCOMPARE(read(right + QStringLiteral("newer")), QByteArray(copies ? "new content\n" : "replaced\n"));
    QCOMPARE(read(right + QStringLiteral("missing")), QByteArray(copies ? "m\n" : ""));
    if (!copies) {
        QCOMPARE(tree(hard + QLatin1Char('2')), before);
        return;
    }
    const QString kept = tree(hard + QLatin1Char('2')).filter(QStringLiteral(".replaced-")).value(1);
    QVERIFY2(kept.endsWith(QStringLiteral("/newer")), qPrintable(kept));
    QCOMPARE(read(right + kept), QByteArray("replaced\n"));
    QCOMPARE(tree(hard + QLatin1Char('1')), (QStringList{"missing", "newer", "older"}));
}

void TestRecipeRuns::synchroniseRefuses_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::newRow("the same") << QStringLiteral("a") << QStringLiteral("a");
    QTest::newRow("right inside left") << QStringLiteral("a") << QStringLiteral("a/b");
    QTest::newRow("left inside right") << QStringLiteral("a/b") << QStringLiteral("a");
    QTest::newRow("a file") << QStringLiteral("a/b/f") << QStringLiteral("c");
    QTest::newRow("not there") << QStringLiteral("a") << QStringLiteral("none");
}

void TestRecipeRuns::synchroniseRefuses()
{
    QFETCH(QString, left);
    QFETCH(QString, right);
    const Recipe recipe = recipeNamed(QStringLiteral("synchronise"));
    VANTREL_NEEDS_RECIPE(recipe);
    file(QStringLiteral("a/b/f"));
    dir->folder(QStringLiteral("w/c"));
    const QStringList before = tree();
    const QString shown = run(recipe, path(left), "y\ny\n", path(right));
    QVERIFY2(shown.contains(QStringLiteral("Stopped")), qPrintable(shown));
    QCOMPARE(tree(), before);
}

// --- Versions, terminals, pictures

void TestRecipeRuns::git()
{
    const Recipe status = recipeNamed(QStringLiteral("git-status"));
    VANTREL_NEEDS_RECIPE(status);
    const QString folder = dir->folder(QStringLiteral("w/") + name());
    const auto inFolder = [&folder](const QStringList& arguments) {
        return QProcess::execute(QStringLiteral("git"),
            QStringList{"-C", folder, "-c", "user.name=me", "-c", "user.email=me@here"} + arguments);
    };
    const QString source = name().trimmed() + QStringLiteral("x.c");
    file(name() + QLatin1Char('/') + source, "int one;\n");
    QCOMPARE(inFolder({"init", "-q"}), 0);
    QCOMPARE(inFolder({"add", "-A"}), 0);
    QCOMPARE(inFolder({"commit", "-q", "-m", "The first one"}), 0);
    file(name() + QLatin1Char('/') + source, "int two;\n");
    const QString changes = run(status, folder);
    QVERIFY2(changes.contains(QStringLiteral("modified:")) && changes.contains(QStringLiteral("+int two;")),
        qPrintable(changes));
    QVERIFY(run("git-log", folder).contains(QStringLiteral("The first one")));
    const QString history = run("git-file", folder + QLatin1Char('/') + source);
    QVERIFY2(
        history.contains(QStringLiteral("The first one")) && history.contains(QStringLiteral("+int one;")),
        qPrintable(history));
}

void TestRecipeRuns::runTerminal()
{
    const QString script = dir->file(QStringLiteral("w/") + QString::fromLatin1(allInOne),
        "#!/bin/sh\nprintf 'ran in %s' \"$PWD\"\n", 0755);
    const QString shown = run("run-terminal", script);
    QVERIFY2(shown.startsWith(QStringLiteral("ran in ") + path().chopped(1)), qPrintable(shown));
    QVERIFY(shown.contains(QStringLiteral("[Return]")));
}

void TestRecipeRuns::terminalIn()
{
    const QString folder = dir->folder(QStringLiteral("w/") + name());
    QCOMPARE(run("terminal-in", folder, "pwd\n"), folder + QLatin1Char('\n'));
}

void TestRecipeRuns::pictureTurn()
{
    const Recipe recipe = recipeNamed(QStringLiteral("picture-turn"));
    VANTREL_NEEDS_RECIPE(recipe);
    const QString base = QStringLiteral("a:b [0] %d*");
    QVERIFY(QImage(30, 10, QImage::Format_RGB32).save(path(base + QStringLiteral(".png"))));
    const QByteArray before = read(base + QStringLiteral(".png"));
    run(recipe, path(base + QStringLiteral(".png")));
    QTRY_COMPARE(QImage(path(base + QStringLiteral("-turned.png"))).size(), QSize(10, 30));
    QCOMPARE(read(base + QStringLiteral(".png")), before);
    QCOMPARE(tree().size(), 2);
    const QString facts = run(recipeNamed(QStringLiteral("picture-facts"), QStringLiteral("identify")),
        path(base + QStringLiteral(".png")));
    QVERIFY2(facts.contains(QStringLiteral("30x10")), qPrintable(facts));
}

void TestRecipeRuns::diskMap()
{
    file(QStringLiteral("small"), QByteArray(100, 'x'));
    file(QStringLiteral("it's  big"), QByteArray(200000, 'x'));
    const QString shown
        = run(recipeNamed(QStringLiteral("disk-map"), QStringLiteral("du${IFS}")), path().chopped(1));
    QVERIFY2(shown.indexOf(QStringLiteral("it's  big")) > 0, qPrintable(shown));
    QVERIFY(shown.indexOf(QStringLiteral("it's  big")) < shown.indexOf(QStringLiteral("small")));
}

// --- The row that leads up, and a click beside the items

void TestRecipeRuns::changesNothingBesideTheItems_data()
{
    QTest::addColumn<QString>("marker");
    QTest::addColumn<QString>("relative");
    for (const char* name : {"trash trash-put", "trash gio", "link", "pack-tar", "pack-zstd", "pack-zip",
             "pack-7z", "permissions", "owner", "checksums-write", "sftp-send", "link-other"}) {
        const QString all = QString::fromLatin1(name);
        QTest::addRow("%s: up", name) << all << QStringLiteral("sub/..");
        QTest::addRow("%s: beside", name) << all << QString();
    }
}

// No item means neither the folder above nor a file that happens to be called like a word of the command.
void TestRecipeRuns::changesNothingBesideTheItems()
{
    QFETCH(QString, marker);
    QFETCH(QString, relative);
    const Recipe recipe
        = recipeNamed(marker.section(QLatin1Char(' '), 0, 0), marker.section(QLatin1Char(' '), 1));
    VANTREL_NEEDS_RECIPE(recipe);
    for (const char* each : {"sub/f", "sh", "vantrel", "a"}) {
        file(QLatin1String(each), each);
    }
    const QStringList before = tree();
    const QFileInfo info(path());
    const auto mode = info.permissions();
    const QString at = relative.isEmpty() ? QString() : path(relative);
    run(recipe, at, "000\nnobody\ny\n");
    run("view", path(QStringLiteral("a"))); // by then the one before has ended
    QCOMPARE(tree(), before);
    QCOMPARE(QFileInfo(path()).permissions(), mode);
    QVERIFY(!QFileInfo::exists(dir->path(QStringLiteral("w.link"))));
}

VANTREL_TEST_MAIN(TestRecipeRuns)
#include "tst_RecipeRuns.moc"
