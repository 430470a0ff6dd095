#include "app/aGlobal.h"
#include "panel/MPanel.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/Recipes.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>

#include <memory>

/// The recipes, started by the program's own commands on names that are hard to hand on, and what they did.
/// A stand-in for the terminal runs what it is given, types the answers, and keeps what is shown.
class TestRecipeRuns : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void pack_data();
    void pack();
    void packKeepsWhatIsThere_data() { packers(); }
    void packKeepsWhatIsThere();
    void unpackKeepsWhatIsThere_data() { packers(); }
    void unpackKeepsWhatIsThere();
    void listAndTest_data() { packers(); }
    void listAndTest();
    void unpackOther();
    void unpackOfNoTarLeavesNothing();
    void decompress_data();
    void decompress();

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

    void trashAndRestore_data() { hardNames(); }
    void trashAndRestore();
    void trashOfTheDesktop_data() { hardNames(); }
    void trashOfTheDesktop();
    void restoreByTheDesktop_data();
    void restoreByTheDesktop();
    void restoreKeepsWhatIsThere();
    void trashEmptyAsks();
    void renameMany();
    void renamePattern_data();
    void renamePattern();
    void newFile();
    void link_data() { hardNames(); }
    void link();
    void linkOther_data() { hardNames(); }
    void linkOther();

    void permissions_data() { hardNames(); }
    void permissions();
    void checksums_data() { hardNames(); }
    void checksums();
    void signAndVerify_data() { hardNames(); }
    void signAndVerify();
    void encryptAndDecrypt_data() { hardNames(); }
    void encryptAndDecrypt();
    void git_data() { hardNames(); }
    void git();
    void runTerminal();
    void terminalIn_data() { hardNames(); }
    void terminalIn();
    void pictureTurn();
    void diskMap();

    void changesNothingBesideTheItems_data();
    void changesNothingBesideTheItems();

private:
    static void hardNames();
    static void packers();
    QString name() const;
    bool has(const Recipe& recipe);
    void openKeyring() const;
    QString run(const Recipe& recipe, const QString& path, const QByteArray& answers = QByteArray(),
        const QString& second = QString());
    QString run(const char* recipe, const QString& path, const QByteArray& answers = QByteArray(),
        const QString& second = QString());
    QString file(const QString& relative, const QByteArray& content = "content\n");
    QByteArray read(const QString& relative) const { return dir->read(QStringLiteral("w/") + relative); }
    QString path(const QString& relative = QString()) const
    {
        return dir->path(QStringLiteral("w/") + relative);
    }
    QStringList tree(const QString& relative = QString()) const
    {
        return dir->tree(relative.isEmpty() ? QStringLiteral("w") : QStringLiteral("w/") + relative);
    }

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    QByteArray pathBefore;
};

namespace {

/// Runs what follows "-e" with the answers as its input, and keeps what it shows.
const QByteArray terminal = "#!/bin/sh\n"
                            "[ \"$1\" = -e ] || exit 9\n"
                            "shift\n"
                            "here=${0%/*}\n"
                            "\"$@\" <\"$here/answers\" >\"$here/shown.part\" 2>&1\n"
                            "mv \"$here/shown.part\" \"$here/shown\"\n";

const char* const allInOne = "-a  b'c\"d`$(e)\\f\n[*]? ~${IFS}%s&";

} // namespace

#define NEEDS(recipe)                                                                                        \
    if (!has(recipe)) {                                                                                      \
        QSKIP(qPrintable(                                                                                    \
            QStringLiteral("not on this machine: ") + missingPrograms(recipe).join(QStringLiteral(", "))));  \
    }

void TestRecipeRuns::initTestCase()
{
    pathBefore = qgetenv("PATH");
    // Neither the user's editor nor the user's git settings.
    for (const char* variable : {"VISUAL", "EDITOR", "LESS", "LESSOPEN", "GIT_DIR", "GNUPGHOME", "TMPDIR"}) {
        qunsetenv(variable);
    }
    qputenv("GIT_CONFIG_GLOBAL", "/dev/null");
    qputenv("SHELL", "/bin/sh");
}

void TestRecipeRuns::init()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("w"));
    dir->file(QStringLiteral("tools/x-terminal-emulator"), terminal, 0755);
    qputenv("PATH", dir->path(QStringLiteral("tools")).toLocal8Bit() + ':' + pathBefore);
    window = std::make_unique<PanelWindow>(path());
    panel = window->panel;
}

void TestRecipeRuns::cleanup()
{
    window.reset();
    if (qEnvironmentVariableIsSet("GNUPGHOME")) {
        QProcess::execute(QStringLiteral("gpgconf"), {"--kill", "gpg-agent"});
        qunsetenv("GNUPGHOME");
    }
    dir.reset();
    qputenv("PATH", pathBefore);
    qunsetenv("EDITOR");
}

void TestRecipeRuns::hardNames()
{
    QTest::addColumn<QString>("hard");
    QTest::newRow("plain") << QStringLiteral("plain");
    QTest::newRow("blanks") << QStringLiteral(" a  b ");
    QTest::newRow("quotes") << QStringLiteral("it's \"so\"");
    QTest::newRow("newlines") << QStringLiteral("one\ntwo\n");
    QTest::newRow("all") << QString::fromLatin1(allInOne);
}

void TestRecipeRuns::packers()
{
    QTest::addColumn<QString>("packer");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("kind");
    const auto row = [](const char* packer, const char* suffix, const char* kind) {
        QTest::newRow(packer) << QString::fromLatin1(packer) << QString::fromLatin1(suffix)
                              << QString::fromLatin1(kind);
    };
    row("pack-tar", ".tar.gz", "tar");
    row("pack-zstd", ".tar.zst", "tar");
    row("pack-zip", ".zip", "zip");
    row("pack-7z", ".7z", "7z");
}

bool TestRecipeRuns::has(const Recipe& recipe)
{
    return !recipe.name.isEmpty() && missingPrograms(recipe).isEmpty();
}

QString TestRecipeRuns::name() const
{
    QFETCH(QString, hard);
    return hard;
}

/// Starts the recipe as the context menu does, and waits for the terminal if it opens one.
/// @return what the terminal showed
QString TestRecipeRuns::run(
    const Recipe& recipe, const QString& path, const QByteArray& answers, const QString& second)
{
    const QString line = recipe.lines.value(0);
    const QMap<QString, int> codes{{"sendto", CommandSendTo}, {"compare", CommandCompare},
        {"terminal", CommandTerminal}, {"terminalex", CommandTerminalEx}};
    const QString command = line.section(QLatin1Char('='), 4);
    dir->file(QStringLiteral("tools/answers"), answers);
    QFile::remove(dir->path(QStringLiteral("tools/shown")));
    gsLastPath2 = path;
    gsLastPath1 = second;
    panel->DoAction(codes.value(line.section(QLatin1Char('='), 1, 1)), path, command);
    if (!command.startsWith(QLatin1String("x-terminal-emulator"))) {
        return QString();
    }
    const bool ended = QTest::qWaitFor([this] { return dir->exists(QStringLiteral("tools/shown")); }, 30000);
    return ended ? QString::fromUtf8(dir->read(QStringLiteral("tools/shown")))
                 : QStringLiteral("did not end");
}

QString TestRecipeRuns::run(
    const char* recipe, const QString& path, const QByteArray& answers, const QString& second)
{
    return run(recipeNamed(QString::fromLatin1(recipe)), path, answers, second);
}

QString TestRecipeRuns::file(const QString& relative, const QByteArray& content)
{
    return dir->file(QStringLiteral("w/") + relative, content);
}

// --- Archives

void TestRecipeRuns::pack_data()
{
    QTest::addColumn<QString>("packer");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("hard");
    const QList<QPair<QString, QString>> suffixes{
        {"pack-tar", ".tar.gz"}, {"pack-zstd", ".tar.zst"}, {"pack-zip", ".zip"}, {"pack-7z", ".7z"}};
    for (const auto& each : suffixes) {
        const QString kind
            = each.second.contains(QLatin1String("tar")) ? QStringLiteral("tar") : each.second.mid(1);
        for (const char* hard : {"plain", " a  b ", "it's \"so\"", "one\ntwo", allInOne}) {
            QTest::addRow("%s %s", qPrintable(each.first), hard)
                << each.first << each.second << kind << QString::fromLatin1(hard);
        }
    }
}

// A folder is packed beside itself, the archive unpacks elsewhere, and holds no chain of folders.
void TestRecipeRuns::pack()
{
    QFETCH(QString, packer);
    QFETCH(QString, suffix);
    QFETCH(QString, kind);
    const Recipe pack = recipeNamed(packer);
    const Recipe unpack = recipeNamed(QStringLiteral("unpack-") + kind);
    NEEDS(pack);
    NEEDS(unpack);
    file(name() + QStringLiteral("/in/") + name(), "inner\n");
    file(name() + QStringLiteral("/.hidden"), "hidden\n");
    dir->link(QStringLiteral("w/") + name() + QStringLiteral("/link"), QStringLiteral(".hidden"));
    const QStringList packed = tree(name());
    QCOMPARE(packed.size(), 4);
    QVERIFY2(!run(pack, path(name())).contains(QStringLiteral("FAILED")), "pack");
    QCOMPARE(tree().filter(suffix), QStringList{name() + suffix});
    QCOMPARE(tree(name()), packed);

    dir->folder(QStringLiteral("w/else where"));
    const QString archive = path(QStringLiteral("else where/") + name() + suffix);
    QVERIFY(QFile::rename(path(name() + suffix), archive));
    const QString shown = run(unpack, archive);
    QVERIFY2(!shown.contains(QStringLiteral("FAILED")), qPrintable(shown));
    const QString target = QStringLiteral("else where/") + name() + QLatin1Char('/');
    QCOMPARE(tree(target + name()), packed);
    QCOMPARE(read(target + name() + QStringLiteral("/in/") + name()), QByteArray("inner\n"));
    QCOMPARE(QFile::symLinkTarget(path(target + name() + QStringLiteral("/link"))),
        path(target + name() + QStringLiteral("/.hidden")));
    QVERIFY(QFile::exists(archive));
}

void TestRecipeRuns::packKeepsWhatIsThere()
{
    QFETCH(QString, packer);
    QFETCH(QString, suffix);
    const Recipe pack = recipeNamed(packer);
    NEEDS(pack);
    file(QStringLiteral("a"));
    file(QStringLiteral("a") + suffix, "mine\n");
    const QString shown = run(pack, path(QStringLiteral("a")));
    QVERIFY2(shown.contains(QStringLiteral("FAILED")), qPrintable(shown));
    QCOMPARE(read(QStringLiteral("a") + suffix), QByteArray("mine\n"));
    QCOMPARE(tree(), (QStringList{"a", "a" + suffix}));
}

void TestRecipeRuns::unpackKeepsWhatIsThere()
{
    QFETCH(QString, packer);
    QFETCH(QString, suffix);
    QFETCH(QString, kind);
    const Recipe pack = recipeNamed(packer);
    const Recipe unpack = recipeNamed(QStringLiteral("unpack-") + kind);
    NEEDS(pack);
    NEEDS(unpack);
    file(QStringLiteral("a/in"), "packed\n");
    run(pack, path(QStringLiteral("a")));
    file(QStringLiteral("a/in"), "mine\n");
    const QString shown = run(unpack, path(QStringLiteral("a") + suffix));
    QVERIFY2(shown.contains(QStringLiteral("FAILED")), qPrintable(shown));
    QCOMPARE(read(QStringLiteral("a/in")), QByteArray("mine\n"));
    QCOMPARE(tree(QStringLiteral("a")), QStringList{"in"});
}

void TestRecipeRuns::listAndTest()
{
    QFETCH(QString, packer);
    QFETCH(QString, suffix);
    QFETCH(QString, kind);
    const Recipe pack = recipeNamed(packer);
    const Recipe list = recipeNamed(QStringLiteral("list-") + kind);
    const Recipe test = recipeNamed(QStringLiteral("test-") + kind);
    NEEDS(pack);
    NEEDS(list);
    NEEDS(test);
    file(QStringLiteral("a 'b'/inner name"), QByteArray(5000, 'x') + "end");
    run(pack, path(QStringLiteral("a 'b'")));
    const QString archive = path(QStringLiteral("a 'b'") + suffix);
    QVERIFY(run(list, archive).contains(QStringLiteral("inner name")));
    const QString whole = run(test, archive);
    QVERIFY2(whole.contains(QStringLiteral("is whole")), qPrintable(whole));
    QFile cut(archive);
    QVERIFY(cut.resize(cut.size() / 2));
    const QString damaged = run(test, archive);
    QVERIFY2(damaged.contains(QStringLiteral("DAMAGED")), qPrintable(damaged));
    QVERIFY(!damaged.contains(QStringLiteral("is whole")));
}

void TestRecipeRuns::unpackOther()
{
    const Recipe unpack = recipeNamed(QStringLiteral("unpack-other"));
    NEEDS(unpack);
    file(QStringLiteral("src/it's  in"), "inner\n");
    QCOMPARE(QProcess::execute(QStringLiteral("bsdtar"),
                 {"-c", "-f", path(QStringLiteral("a \"b\".cpio")), "--format", "cpio", "-C",
                     path(QStringLiteral("src")), "it's  in"}),
        0);
    QVERIFY(run("list-other", path(QStringLiteral("a \"b\".cpio"))).contains(QStringLiteral("it's  in")));
    run(unpack, path(QStringLiteral("a \"b\".cpio")));
    QCOMPARE(read(QStringLiteral("a \"b\"/it's  in")), QByteArray("inner\n"));
}

void TestRecipeRuns::unpackOfNoTarLeavesNothing()
{
    file(QStringLiteral("my.things/a.tar.gz"), "no archive");
    file(QStringLiteral("my.things/b.gz"), "no archive");
    const QStringList before = tree();
    for (const char* archive : {"my.things/a.tar.gz", "my.things/b.gz"}) {
        QVERIFY(run("unpack-tar", path(QLatin1String(archive))).contains(QStringLiteral("FAILED")));
        QCOMPARE(tree(), before);
    }
}

void TestRecipeRuns::decompress_data()
{
    QTest::addColumn<QString>("recipe");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("gz") << QStringLiteral("decompress") << QStringLiteral(".gz");
    QTest::newRow("xz") << QStringLiteral("decompress-xz") << QStringLiteral(".xz");
}

void TestRecipeRuns::decompress()
{
    QFETCH(QString, recipe);
    QFETCH(QString, suffix);
    const Recipe decompress = recipeNamed(recipe);
    NEEDS(decompress);
    const QString hard = QString::fromLatin1(allInOne);
    const QString plain = file(hard, "text\n");
    QCOMPARE(QProcess::execute(suffix == QLatin1String(".gz") ? "gzip" : "xz", {"--", plain}), 0);
    QCOMPARE(tree(), QStringList{hard + suffix});
    run(decompress, plain + suffix);
    QCOMPARE(tree(), (QStringList{hard, hard + suffix}));
    QCOMPARE(read(hard), QByteArray("text\n"));
    file(hard, "mine\n");
    run(decompress, plain + suffix, "n\n");
    QCOMPARE(read(hard), QByteArray("mine\n"));
}

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
    NEEDS(recipe);
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
    NEEDS(recipe);
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
    NEEDS(recipe);
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
    NEEDS(recipe);
    file(QStringLiteral("a/b/f"));
    dir->folder(QStringLiteral("w/c"));
    const QStringList before = tree();
    const QString shown = run(recipe, path(left), "y\ny\n", path(right));
    QVERIFY2(shown.contains(QStringLiteral("Stopped")), qPrintable(shown));
    QCOMPARE(tree(), before);
}

// --- Names and the trash

void TestRecipeRuns::trashAndRestore()
{
    const Recipe trash = recipeNamed(QStringLiteral("trash"), QStringLiteral("trash-put"));
    const Recipe restore = recipeNamed(QStringLiteral("trash-restore"), QStringLiteral("trash-restore"));
    NEEDS(trash);
    NEEDS(restore);
    file(QStringLiteral("beside"));
    file(name() + QStringLiteral("/inner"), "kept\n");
    run(trash, path(name()));
    QTRY_COMPARE(tree(), QStringList{"beside"});
    const QString shown = run(restore, QString(), "0\n");
    QVERIFY2(shown.contains(QStringLiteral("What file to restore")), qPrintable(shown));
    QCOMPARE(read(name() + QStringLiteral("/inner")), QByteArray("kept\n"));
    QCOMPARE(tree().size(), 3);
}

void TestRecipeRuns::trashOfTheDesktop()
{
    const Recipe trash = recipeNamed(QStringLiteral("trash"), QStringLiteral("gio"));
    NEEDS(trash);
    file(QStringLiteral("beside"));
    // gio moves nothing away that lies in the folder for temporary files' own volume unless that has a trash.
    file(name(), "kept\n");
    run(trash, path(name()));
    const QString bin = QDir::homePath() + QStringLiteral("/.local/share/Trash/files/");
    QTRY_VERIFY(tree() == QStringList{"beside"} || dir->exists(QStringLiteral("tools/shown")));
    if (dir->exists(QStringLiteral("tools/shown"))) {
        QCOMPARE(read(name()), QByteArray("kept\n"));
        QSKIP("the trash of the desktop does not work here");
    }
    bool found = false;
    const QStringList kept = QDir(bin).entryList(QDir::Files | QDir::Hidden);
    for (const QString& each : kept) {
        QFile content(bin + each);
        found = found || (content.open(QIODevice::ReadOnly) && content.readAll() == "kept\n");
    }
    QVERIFY(found);
}

void TestRecipeRuns::restoreByTheDesktop_data()
{
    QTest::addColumn<bool>("works");
    QTest::newRow("the desktop shows its trash") << true;
    QTest::newRow("no desktop that has one") << false;
}

// Where nothing can show the trash, that is said, and what else restores.
void TestRecipeRuns::restoreByTheDesktop()
{
    QFETCH(bool, works);
    const QByteArray gio = "#!/bin/sh\n[ \"$1 $2\" = 'open trash:///' ] && echo >>\"${0%/*}/asked\"\n";
    const QByteArray result = works ? "exit 0\n" : "echo 'not supported' >&2\nexit 2\n";
    dir->file(QStringLiteral("tools/gio"), gio + result, 0755);
    run(recipeNamed(QStringLiteral("trash-restore"), QStringLiteral("gio")), path());
    if (works) {
        QTRY_COMPARE(dir->read(QStringLiteral("tools/asked")), QByteArray("\n"));
        return;
    }
    QTRY_VERIFY(dir->exists(QStringLiteral("tools/shown")));
    const QByteArray shown = dir->read(QStringLiteral("tools/shown"));
    QVERIFY2(shown.contains("not supported\n") && shown.contains("The package trash-cli"), shown.constData());
}

void TestRecipeRuns::restoreKeepsWhatIsThere()
{
    const Recipe trash = recipeNamed(QStringLiteral("trash"), QStringLiteral("trash-put"));
    const Recipe restore = recipeNamed(QStringLiteral("trash-restore"), QStringLiteral("trash-restore"));
    NEEDS(trash);
    NEEDS(restore);
    file(QStringLiteral("a b"), "old\n");
    run(trash, path(QStringLiteral("a b")));
    QTRY_COMPARE(tree(), QStringList());
    file(QStringLiteral("a b"), "mine\n");
    run(restore, QString(), "0\n");
    QCOMPARE(read(QStringLiteral("a b")), QByteArray("mine\n"));
}

void TestRecipeRuns::trashEmptyAsks()
{
    const Recipe trash = recipeNamed(QStringLiteral("trash"), QStringLiteral("trash-put"));
    const Recipe empty = recipeNamed(QStringLiteral("trash-empty"));
    NEEDS(trash);
    NEEDS(empty);
    file(QStringLiteral("young"));
    run(trash, path(QStringLiteral("young")));
    QTRY_COMPARE(tree(), QStringList());
    // What is younger than 30 days stays even after "y".
    QVERIFY(run(empty, QString(), "y\n").contains(QStringLiteral("Delete for good")));
    QVERIFY(run(empty, QString(), "n\n").contains(path(QStringLiteral("young"))));
}

void TestRecipeRuns::renameMany()
{
    const Recipe recipe = recipeNamed(QStringLiteral("rename-many"), QStringLiteral("qmv"));
    NEEDS(recipe);
    qputenv("EDITOR", "sed -i s/old/new/");
    file(QStringLiteral("sub 'x'/old  name"), "1");
    file(QStringLiteral("sub 'x'/-old\"name"), "2");
    file(QStringLiteral("sub 'x'/other"), "3");
    run(recipe, path(QStringLiteral("sub 'x'")));
    QCOMPARE(tree(QStringLiteral("sub 'x'")), (QStringList{"-new\"name", "new  name", "other"}));
    QCOMPARE(read(QStringLiteral("sub 'x'/-new\"name")), QByteArray("2"));
}

void TestRecipeRuns::renamePattern_data()
{
    QTest::addColumn<QByteArray>("answers");
    QTest::addColumn<QStringList>("names");
    const QString hard = QString::fromLatin1(allInOne);
    const QStringList before{hard + ".old", "kept.new", "kept.old"};
    QTest::newRow("yes") << QByteArray("s/old$/new/\ny\n")
                         << QStringList{hard + ".new", "kept.new", "kept.old"};
    QTest::newRow("no") << QByteArray("s/old$/new/\nn\n") << before;
    QTest::newRow("no answer") << QByteArray("s/old$/new/\n") << before;
    QTest::newRow("no expression") << QByteArray("s/(\ny\n") << before;
}

void TestRecipeRuns::renamePattern()
{
    QFETCH(QByteArray, answers);
    QFETCH(QStringList, names);
    const Recipe recipe = recipeNamed(QStringLiteral("rename-pattern"));
    NEEDS(recipe);
    file(QString::fromLatin1(allInOne) + QStringLiteral(".old"));
    file(QStringLiteral("kept.old"), "old\n");
    file(QStringLiteral("kept.new"), "mine\n");
    run(recipe, path(), answers);
    QCOMPARE(tree(), names);
    QCOMPARE(read(QStringLiteral("kept.new")), QByteArray("mine\n"));
}

void TestRecipeRuns::newFile()
{
    run("new-file", QString(), "-it's \"a  new\" $file\n");
    QCOMPARE(tree(), QStringList{"-it's \"a  new\" $file"});
    file(QStringLiteral("there"), "mine\n");
    QVERIFY(run("new-file", QString(), "there\n").contains(QStringLiteral("FAILED")));
    QCOMPARE(read(QStringLiteral("there")), QByteArray("mine\n"));
}

void TestRecipeRuns::link()
{
    file(name(), "target\n");
    run("link", path(name()));
    QTRY_COMPARE(read(name() + QStringLiteral(".link")), QByteArray("target\n"));
    QVERIFY(QFileInfo(path(name() + QStringLiteral(".link"))).isSymLink());
    file(QStringLiteral("a"));
    file(QStringLiteral("a.link"), "mine\n");
    run("link", path(QStringLiteral("a")));
    run("view", path(QStringLiteral("a"))); // by then the one before has ended
    QCOMPARE(read(QStringLiteral("a.link")), QByteArray("mine\n"));
}

void TestRecipeRuns::linkOther()
{
    const QString left = file(QStringLiteral("l/") + name(), "target\n");
    const QString right = dir->folder(QStringLiteral("w/r ") + name());
    run("link-other", left, QByteArray(), right);
    const QString linked = QStringLiteral("r ") + name() + QLatin1Char('/') + name();
    QCOMPARE(tree(QStringLiteral("r ") + name()), QStringList{name() + QLatin1Char('@')});
    QCOMPARE(read(linked), QByteArray("target\n"));
    QVERIFY(run("link-other", left, QByteArray(), right).contains(QStringLiteral("FAILED")));
    QVERIFY(run("link-other", left).contains(QStringLiteral("FAILED")));
}

// --- Permissions, checks, versions, terminals

void TestRecipeRuns::permissions()
{
    const QString script = file(name());
    const auto mode = [&] { return QFileInfo(script).permissions() & QFileDevice::Permissions(0x7777); };
    const auto others = QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther;
    run("make-executable", script);
    QTRY_VERIFY((mode() & others) == others);
    run("write-protect", script);
    QTRY_VERIFY((mode() & (QFileDevice::WriteOwner | QFileDevice::WriteGroup)) == 0);
    const QString shown = run("permissions", script, "u+w,a-x\n");
    QVERIFY2(shown.contains(QStringLiteral("New permissions")), qPrintable(shown));
    QVERIFY((mode() & others) == 0);
    QVERIFY((mode() & QFileDevice::WriteOwner) != 0);
}

void TestRecipeRuns::checksums()
{
    file(name() + QStringLiteral("/in/") + name(), "first\n");
    file(name() + QStringLiteral("/second"), "second\n");
    run("checksums-write", path(name()));
    const QString list = path(name() + QStringLiteral(".sha256"));
    QCOMPARE(read(name() + QStringLiteral(".sha256")).trimmed().split('\n').size(), 2);
    QVERIFY(run("checksums-verify", list).contains(QStringLiteral("All files are whole")));
    QVERIFY(run("checksums-write", path(name())).contains(QStringLiteral("FAILED")));
    file(name() + QStringLiteral("/second"), "changed\n");
    const QString damaged = run("checksums-verify", list);
    QVERIFY2(damaged.contains(QStringLiteral("DAMAGED")), qPrintable(damaged));
}

/// A keyring of its own, whose agent gets "secret-1234" for every password that it asks for.
void TestRecipeRuns::openKeyring() const
{
    const QString pinentry = dir->file(QStringLiteral("tools/pinentry"),
        "#!/bin/sh\necho OK\nwhile read -r word rest; do\n"
        "    [ \"$word\" != GETPIN ] || echo D secret-1234\n    echo OK\n    [ \"$word\" != BYE ] || exit "
        "0\ndone\n",
        0755);
    dir->folder(QStringLiteral("keys"), 0700);
    dir->file(
        QStringLiteral("keys/gpg-agent.conf"), "pinentry-program " + QFile::encodeName(pinentry) + '\n');
    // Passwords are not stretched as long as they should be: it takes a second each time.
    dir->file(QStringLiteral("keys/gpg.conf"), "s2k-count 65536\n");
    qputenv("GNUPGHOME", QFile::encodeName(dir->path(QStringLiteral("keys"))));
}

void TestRecipeRuns::signAndVerify()
{
    const Recipe sign = recipeNamed(QStringLiteral("sign"));
    NEEDS(sign);
    openKeyring();
    QCOMPARE(QProcess::execute(QStringLiteral("gpg"),
                 {"--batch", "-q", "--passphrase", "", "--quick-gen-key", "me@here", "ed25519", "sign"}),
        0);
    const QString signedFile = file(name() + QStringLiteral(".txt"));
    run(sign, signedFile);
    QCOMPARE(tree().size(), 2);
    const QString signature = signedFile + QStringLiteral(".sig");
    const QString good = run("verify-signature", signature);
    QVERIFY2(good.contains(QStringLiteral("Good signature from \"me@here\"")), qPrintable(good));
    file(name() + QStringLiteral(".txt"), "changed\n");
    const QString bad = run("verify-signature", signature);
    QVERIFY2(bad.contains(QStringLiteral("BAD signature")), qPrintable(bad));
}

void TestRecipeRuns::encryptAndDecrypt()
{
    const Recipe encrypt = recipeNamed(QStringLiteral("encrypt"));
    NEEDS(encrypt);
    openKeyring();
    const QString plain = file(name(), "only mine\n");
    run(encrypt, plain);
    QVERIFY(!read(name() + QStringLiteral(".gpg")).isEmpty());
    QVERIFY(!read(name() + QStringLiteral(".gpg")).contains("only mine"));
    QVERIFY(QFile::remove(plain));
    run("decrypt", plain + QStringLiteral(".gpg"));
    QCOMPARE(read(name()), QByteArray("only mine\n"));
    // No one says that a file may be replaced.
    file(name(), "other\n");
    QVERIFY(run("decrypt", plain + QStringLiteral(".gpg")).contains(QStringLiteral("FAILED")));
    QCOMPARE(read(name()), QByteArray("other\n"));
}

void TestRecipeRuns::git()
{
    const Recipe status = recipeNamed(QStringLiteral("git-status"));
    NEEDS(status);
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
    NEEDS(recipe);
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
    NEEDS(recipe);
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
