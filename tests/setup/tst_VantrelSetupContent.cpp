#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "tests/support/Recipes.h"
#include "tests/support/Settings.h"
#include "tests/support/SetupHome.h"
#include "tests/support/TestMain.h"

/// What vantrel-setup writes: the style, the drives, and the recipes that it takes.
class TestVantrelSetupContent : public QObject, private SetupHome
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { close(); }

    void style_data();
    void style();
    void drives();

    void takesWhatIsThere();
    void saysWhatItLeavesOut();
    void takesOneOfEachName();
    void commandOfTheShellIsNoProgram();
    void separatorsStandBetweenMenuSections();
    void without();
    void list();
    void badRecipes_data();
    void badRecipes();

private:
    using Run = SetupRun;
    QString recipeFile(const QByteArray& content) const;
};

namespace {

/// Three recipes: one that needs nothing, one with two ways, one whose program is nowhere.
const QByteArray threeRecipes = "# A comment\n"
                                "#: section Panels\n\n"
                                "#: recipe arrangement\n#: gives Panels one above the other\nwindow=2\n\n"
                                "#: section Menu\n\n"
                                "#: recipe look\n#: gives Looks\n#: needs looker-one from one-package\n"
                                "menu=sendto=*=Look=looker-one\n\n"
                                "#: recipe look\n#: gives Looks\n#: needs looker-two from two-package\n"
                                "menu=sendto=*=Look=looker-two\n\n"
                                "#: recipe both\n#: gives Does both\n#: needs looker-two from two-package\n"
                                "#: needs nowhere from no-package\nmenu=sendto=*=Both=looker-two\n";

} // namespace

void TestVantrelSetupContent::init()
{
    resetSettings();
    open();
}

QString TestVantrelSetupContent::recipeFile(const QByteArray& content) const
{
    return dir->file(QStringLiteral("own recipes"), content);
}

void TestVantrelSetupContent::style_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("example");
    QTest::newRow("none") << QStringList() << QStringLiteral("Vantrel.starter");
    QTest::newRow("light") << QStringList{"--light"} << QStringLiteral("Vantrel.starter");
    QTest::newRow("dark") << QStringList{"--dark"} << QStringLiteral("Vantrel.dark");
    QTest::newRow("the last counts") << QStringList{"--dark", "--light"} << QStringLiteral("Vantrel.starter");
}

void TestVantrelSetupContent::style()
{
    QFETCH(QStringList, options);
    QFETCH(QString, example);
    QCOMPARE(run(options).status, 0);
    readSettings();
    const QString written = gsAppStyleSheet;
    ReadConfig(projectFile(QStringLiteral("examples/") + example));
    QVERIFY(written.size() > 1000);
    QCOMPARE(written, gsAppStyleSheet);
}

void TestVantrelSetupContent::drives()
{
    dir->file(QStringLiteral("mounts"),
        "proc /proc proc rw 0 0\n"
        "/dev/sda1 / ext4 rw 0 0\n"
        "/dev/sdb1 /media/me/My\\040Stick vfat rw 0 0\n"
        "/dev/sdc1 /run/media/me/back\\134slash ext4 rw 0 0\n"
        "/dev/sdd1 /mnt ext4 rw 0 0\n"
        "/dev/sde1 /media/disk ext4 rw 0 0\n"
        "/dev/sde1 /media/disk ext4 rw 0 0\n"
        "/dev/sdf1 /mnt/disk ext4 rw 0 0\n"
        "/dev/sdg1 /media/a\\075b ext4 rw 0 0\n"
        "/dev/sdh1 /media/end\\040 ext4 rw 0 0\n"
        "/dev/sdi1 /media/line\\012 ext4 rw 0 0\n"
        "/dev/sdj1 /home ext4 rw 0 0\n"
        "/dev/sdk1 /mntal ext4 rw 0 0\n"
        "server:/media/x /srv nfs rw 0 0\n"
        "/dev/sdl1 /media/Root ext4 rw 0 0\n");
    const Run result = run();
    QCOMPARE(result.status, 0);
    readSettings();
    QCOMPARE(drivesAsText(),
        QDir::homePath()
            + QStringLiteral(
                ">Home,/>Root,/media/Root>/media/Root,/media/disk>disk,/media/me/My Stick>My Stick,"
                "/mnt>mnt,/mnt/disk>/mnt/disk,/run/media/me/back\\slash>back\\slash"));
    const QString told = result.output.section(QStringLiteral("no drive line can hold:"), 1);
    QCOMPARE(told.split(QLatin1Char('\n'), Qt::SkipEmptyParts),
        (QStringList{"  /media/a\\075b", "  /media/end\\040", "  /media/line\\012"}));
    QVERIFY(gsNoRecurse.contains(QStringLiteral("run(?!/media")));
}

void TestVantrelSetupContent::takesWhatIsThere()
{
    tool(QStringLiteral("looker-two"));
    onlyTools();
    const Run result = run({"--recipes", recipeFile(threeRecipes)});
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.status, 0);
    readSettings();
    QCOMPARE(giWindowArrange, 2);
    QCOMPARE(gstMenu.size(), 1);
    QCOMPARE(gstMenu.constFirst().command, QStringLiteral("looker-two"));
    QVERIFY(result.output.contains(QStringLiteral(" with 2 recipes.")));
}

void TestVantrelSetupContent::saysWhatItLeavesOut()
{
    onlyTools();
    const QString recipes = recipeFile(threeRecipes);
    const Run result = run({"--recipes=" + recipes});
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.status, 0);
    const QString told = result.output.section(QStringLiteral("bring what is missing:\n"), 1);
    QCOMPARE(told.split(QLatin1Char('\n'), Qt::SkipEmptyParts),
        (QStringList{"  look                Looks: one-package or two-package",
            "  both                Does both: two-package, no-package",
            "Once one of them is installed, \"vantrel-setup --force\" takes it in."}));
    // Printed settings are not mixed with it.
    const Run printed = run({"--print", "--recipes", recipes});
    QCOMPARE(printed.status, 0);
    QVERIFY2(printed.errors.contains(told), qPrintable(printed.errors));
    QVERIFY(!printed.output.contains(QStringLiteral("one-package")));
}

void TestVantrelSetupContent::takesOneOfEachName()
{
    tool(QStringLiteral("looker-one"));
    tool(QStringLiteral("looker-two"));
    onlyTools();
    const Run result = run({"--recipes", recipeFile(threeRecipes)});
    QCOMPARE(result.status, 0);
    readSettings();
    QCOMPARE(gstMenu.size(), 1);
    QCOMPARE(gstMenu.constFirst().command, QStringLiteral("looker-one"));
    QVERIFY(!result.output.contains(QStringLiteral("Looks")));
}

void TestVantrelSetupContent::commandOfTheShellIsNoProgram()
{
    onlyTools();
    const Run result = run({"--list", "--recipes",
        recipeFile("#: recipe a\n#: gives A\n#: needs export from b\nmenu=terminal=.=A=export\n")});
    QVERIFY2(
        result.output.startsWith(QStringLiteral("a                   missing ")), qPrintable(result.output));
}

void TestVantrelSetupContent::separatorsStandBetweenMenuSections()
{
    const QString recipes = recipeFile("#: section One\n#: recipe w\n#: gives W\nwindow=1\n"
                                       "#: section Two\n#: recipe a\n#: gives A\nmenu=copy=*=A=\n"
                                       "#: section Three\n#: recipe b\n#: gives B\n#: needs nowhere from p\n"
                                       "menu=sendto=*=B=nowhere\n"
                                       "#: section Four\n#: recipe c\n#: gives C\nmenu=copy=*=C=\n"
                                       "#: recipe d\n#: gives D\nmenu=copy=*=D=\n");
    QCOMPARE(run({"--recipes", recipes}).status, 0);
    readSettings();
    QStringList labels;
    for (const LSMENU& entry : qAsConst(gstMenu)) {
        labels.append(entry.code == CommandSeparator ? QStringLiteral("-") : entry.label);
    }
    QCOMPARE(labels, (QStringList{"A", "-", "C", "D"}));
    const QByteArray text = dir->read(QStringLiteral("home/.Vantrel"));
    QVERIFY(text.contains("# --- Four\n") && !text.contains("# --- Three\n"));
}

void TestVantrelSetupContent::without()
{
    tool(QStringLiteral("looker-one"));
    onlyTools();
    const Run result
        = run({"--without", "arrangement", "--without=look", "--recipes", recipeFile(threeRecipes)});
    QCOMPARE(result.status, 0);
    readSettings();
    QCOMPARE(giWindowArrange, 0);
    QCOMPARE(gstMenu.size(), 0);
    QVERIFY(!result.output.contains(QStringLiteral("Looks")));
}

void TestVantrelSetupContent::list()
{
    tool(QStringLiteral("looker-one"));
    tool(QStringLiteral("looker-two"));
    onlyTools();
    const Run result = run({"--list", "--recipes", recipeFile(threeRecipes)});
    QCOMPARE(result.status, 0);
    QStringList rows;
    for (const QString& row : result.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        rows.append(row.simplified());
    }
    QCOMPARE(rows,
        (QStringList{"arrangement there - Panels one above the other",
            "look there looker-one (one-package) Looks", "look spare looker-two (two-package) Looks",
            "both missing looker-two (two-package), nowhere (no-package) Does both"}));
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList());
    // With its own recipes, and where settings are there already.
    dir->file(QStringLiteral("home/.Vantrel"));
    QCOMPARE(run({"--list"}).output.split(QLatin1Char('\n')).size() - 1, allRecipes().size());
}

void TestVantrelSetupContent::badRecipes_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("settings without recipes") << QByteArray("window=0\n");
    QTest::newRow("unknown mark") << QByteArray("#: recipe a\n#: gives A\n#: wants b\nwindow=0\n");
    QTest::newRow("need without package") << QByteArray("#: recipe a\n#: gives A\n#: needs b\nwindow=0\n");
    QTest::newRow("no file") << QByteArray("-");
}

void TestVantrelSetupContent::badRecipes()
{
    QFETCH(QByteArray, content);
    const QString path = content == "-" ? dir->path(QStringLiteral("no file")) : recipeFile(content);
    const Run result = run({"--recipes", path});
    QCOMPARE(result.status, 1);
    QVERIFY2(result.errors.startsWith(QStringLiteral("vantrel-setup: ") + path), qPrintable(result.errors));
    QCOMPARE(dir->tree(QStringLiteral("home")), QStringList());
}

VANTREL_TEST_MAIN(TestVantrelSetupContent)
#include "tst_VantrelSetupContent.moc"
