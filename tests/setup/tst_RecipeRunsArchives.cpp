#include "tests/support/RecipeRun.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QProcess>

namespace {

struct Packer
{
    const char* packer; ///< name of the recipe
    const char* suffix; ///< of its archives
    const char* kind; ///< last part of the names of the recipes for those
};

const Packer allPackers[] = {{"pack-tar", ".tar.gz", "tar"}, {"pack-zstd", ".tar.zst", "tar"},
    {"pack-zip", ".zip", "zip"}, {"pack-7z", ".7z", "7z"}};

} // namespace

/// The recipes that pack and unpack, and what they did.
class TestRecipeRunsArchives : public QObject, private RecipeRun
{
    Q_OBJECT

private slots:
    void initTestCase() { prepare(); }
    void init() { open(); }
    void cleanup() { close(); }

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

private:
    static void packers();
};

void TestRecipeRunsArchives::packers()
{
    QTest::addColumn<QString>("packer");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("kind");
    for (const Packer& each : allPackers) {
        QTest::newRow(each.packer) << QString::fromLatin1(each.packer) << QString::fromLatin1(each.suffix)
                                   << QString::fromLatin1(each.kind);
    }
}

void TestRecipeRunsArchives::pack_data()
{
    QTest::addColumn<QString>("packer");
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("hard");
    for (const Packer& each : allPackers) {
        for (const char* hard : {"plain", " a  b ", "it's \"so\"", "one\ntwo", allInOne}) {
            QTest::addRow("%s %s", each.packer, hard)
                << QString::fromLatin1(each.packer) << QString::fromLatin1(each.suffix)
                << QString::fromLatin1(each.kind) << QString::fromLatin1(hard);
        }
    }
}

// A folder is packed beside itself, the archive unpacks elsewhere, and holds no chain of folders.
void TestRecipeRunsArchives::pack()
{
    QFETCH(QString, packer);
    QFETCH(QString, suffix);
    QFETCH(QString, kind);
    const Recipe pack = recipeNamed(packer);
    const Recipe unpack = recipeNamed(QStringLiteral("unpack-") + kind);
    VANTREL_NEEDS_RECIPE(pack);
    VANTREL_NEEDS_RECIPE(unpack);
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

void TestRecipeRunsArchives::packKeepsWhatIsThere()
{
    QFETCH(QString, packer);
    QFETCH(QString, suffix);
    const Recipe pack = recipeNamed(packer);
    VANTREL_NEEDS_RECIPE(pack);
    file(QStringLiteral("a"));
    file(QStringLiteral("a") + suffix, "mine\n");
    const QString shown = run(pack, path(QStringLiteral("a")));
    QVERIFY2(shown.contains(QStringLiteral("FAILED")), qPrintable(shown));
    QCOMPARE(read(QStringLiteral("a") + suffix), QByteArray("mine\n"));
    QCOMPARE(tree(), (QStringList{"a", "a" + suffix}));
}

void TestRecipeRunsArchives::unpackKeepsWhatIsThere()
{
    QFETCH(QString, packer);
    QFETCH(QString, suffix);
    QFETCH(QString, kind);
    const Recipe pack = recipeNamed(packer);
    const Recipe unpack = recipeNamed(QStringLiteral("unpack-") + kind);
    VANTREL_NEEDS_RECIPE(pack);
    VANTREL_NEEDS_RECIPE(unpack);
    file(QStringLiteral("a/in"), "packed\n");
    run(pack, path(QStringLiteral("a")));
    file(QStringLiteral("a/in"), "mine\n");
    const QString shown = run(unpack, path(QStringLiteral("a") + suffix));
    QVERIFY2(shown.contains(QStringLiteral("FAILED")), qPrintable(shown));
    QCOMPARE(read(QStringLiteral("a/in")), QByteArray("mine\n"));
    QCOMPARE(tree(QStringLiteral("a")), QStringList{"in"});
}

void TestRecipeRunsArchives::listAndTest()
{
    QFETCH(QString, packer);
    QFETCH(QString, suffix);
    QFETCH(QString, kind);
    const Recipe pack = recipeNamed(packer);
    const Recipe list = recipeNamed(QStringLiteral("list-") + kind);
    const Recipe test = recipeNamed(QStringLiteral("test-") + kind);
    VANTREL_NEEDS_RECIPE(pack);
    VANTREL_NEEDS_RECIPE(list);
    VANTREL_NEEDS_RECIPE(test);
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

void TestRecipeRunsArchives::unpackOther()
{
    const Recipe unpack = recipeNamed(QStringLiteral("unpack-other"));
    VANTREL_NEEDS_RECIPE(unpack);
    file(QStringLiteral("src/it's  in"), "inner\n");
    QCOMPARE(QProcess::execute(QStringLiteral("bsdtar"),
                 {"-c", "-f", path(QStringLiteral("a \"b\".cpio")), "--format", "cpio", "-C",
                     path(QStringLiteral("src")), "it's  in"}),
        0);
    QVERIFY(run("list-other", path(QStringLiteral("a \"b\".cpio"))).contains(QStringLiteral("it's  in")));
    run(unpack, path(QStringLiteral("a \"b\".cpio")));
    QCOMPARE(read(QStringLiteral("a \"b\"/it's  in")), QByteArray("inner\n"));
}

void TestRecipeRunsArchives::unpackOfNoTarLeavesNothing()
{
    file(QStringLiteral("my.things/a.tar.gz"), "no archive");
    file(QStringLiteral("my.things/b.gz"), "no archive");
    const QStringList before = tree();
    for (const char* archive : {"my.things/a.tar.gz", "my.things/b.gz"}) {
        QVERIFY(run("unpack-tar", path(QLatin1String(archive))).contains(QStringLiteral("FAILED")));
        QCOMPARE(tree(), before);
    }
}

void TestRecipeRunsArchives::decompress_data()
{
    QTest::addColumn<QString>("recipe");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("gz") << QStringLiteral("decompress") << QStringLiteral(".gz");
    QTest::newRow("xz") << QStringLiteral("decompress-xz") << QStringLiteral(".xz");
}

void TestRecipeRunsArchives::decompress()
{
    QFETCH(QString, recipe);
    QFETCH(QString, suffix);
    const Recipe decompress = recipeNamed(recipe);
    VANTREL_NEEDS_RECIPE(decompress);
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

VANTREL_TEST_MAIN(TestRecipeRunsArchives)
#include "tst_RecipeRunsArchives.moc"
