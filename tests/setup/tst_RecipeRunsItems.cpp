#include "tests/support/RecipeRun.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

/// The recipes that remove, rename, link and protect items, and what they did.
class TestRecipeRunsItems : public QObject, private RecipeRun
{
    Q_OBJECT

private slots:
    void initTestCase() { prepare(); }
    void init() { open(); }
    void cleanup();

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

private:
    void openKeyring() const;
};

void TestRecipeRunsItems::cleanup()
{
    if (qEnvironmentVariableIsSet("GNUPGHOME")) {
        QProcess::execute(QStringLiteral("gpgconf"), {"--kill", "gpg-agent"});
        qunsetenv("GNUPGHOME");
    }
    close();
}

// --- Names and the trash

void TestRecipeRunsItems::trashAndRestore()
{
    const Recipe trash = recipeNamed(QStringLiteral("trash"), QStringLiteral("trash-put"));
    const Recipe restore = recipeNamed(QStringLiteral("trash-restore"), QStringLiteral("trash-restore"));
    VANTREL_NEEDS_RECIPE(trash);
    VANTREL_NEEDS_RECIPE(restore);
    file(QStringLiteral("beside"));
    file(name() + QStringLiteral("/inner"), "kept\n");
    run(trash, path(name()));
    QTRY_COMPARE(tree(), QStringList{"beside"});
    const QString shown = run(restore, QString(), "0\n");
    QVERIFY2(shown.contains(QStringLiteral("What file to restore")), qPrintable(shown));
    QCOMPARE(read(name() + QStringLiteral("/inner")), QByteArray("kept\n"));
    QCOMPARE(tree().size(), 3);
}

void TestRecipeRunsItems::trashOfTheDesktop()
{
    const Recipe trash = recipeNamed(QStringLiteral("trash"), QStringLiteral("gio"));
    VANTREL_NEEDS_RECIPE(trash);
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

void TestRecipeRunsItems::restoreByTheDesktop_data()
{
    QTest::addColumn<bool>("works");
    QTest::newRow("the desktop shows its trash") << true;
    QTest::newRow("no desktop that has one") << false;
}

// Where nothing can show the trash, that is said, and what else restores.
void TestRecipeRunsItems::restoreByTheDesktop()
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

void TestRecipeRunsItems::restoreKeepsWhatIsThere()
{
    const Recipe trash = recipeNamed(QStringLiteral("trash"), QStringLiteral("trash-put"));
    const Recipe restore = recipeNamed(QStringLiteral("trash-restore"), QStringLiteral("trash-restore"));
    VANTREL_NEEDS_RECIPE(trash);
    VANTREL_NEEDS_RECIPE(restore);
    file(QStringLiteral("a b"), "old\n");
    run(trash, path(QStringLiteral("a b")));
    QTRY_COMPARE(tree(), QStringList());
    file(QStringLiteral("a b"), "mine\n");
    run(restore, QString(), "0\n");
    QCOMPARE(read(QStringLiteral("a b")), QByteArray("mine\n"));
}

void TestRecipeRunsItems::trashEmptyAsks()
{
    const Recipe trash = recipeNamed(QStringLiteral("trash"), QStringLiteral("trash-put"));
    const Recipe empty = recipeNamed(QStringLiteral("trash-empty"));
    VANTREL_NEEDS_RECIPE(trash);
    VANTREL_NEEDS_RECIPE(empty);
    file(QStringLiteral("young"));
    run(trash, path(QStringLiteral("young")));
    QTRY_COMPARE(tree(), QStringList());
    // What is younger than 30 days stays even after "y".
    QVERIFY(run(empty, QString(), "y\n").contains(QStringLiteral("Delete for good")));
    QVERIFY(run(empty, QString(), "n\n").contains(path(QStringLiteral("young"))));
}

void TestRecipeRunsItems::renameMany()
{
    const Recipe recipe = recipeNamed(QStringLiteral("rename-many"), QStringLiteral("qmv"));
    VANTREL_NEEDS_RECIPE(recipe);
    qputenv("EDITOR", "sed -i s/old/new/");
    file(QStringLiteral("sub 'x'/old  name"), "1");
    file(QStringLiteral("sub 'x'/-old\"name"), "2");
    file(QStringLiteral("sub 'x'/other"), "3");
    run(recipe, path(QStringLiteral("sub 'x'")));
    QCOMPARE(tree(QStringLiteral("sub 'x'")), (QStringList{"-new\"name", "new  name", "other"}));
    QCOMPARE(read(QStringLiteral("sub 'x'/-new\"name")), QByteArray("2"));
}

void TestRecipeRunsItems::renamePattern_data()
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

void TestRecipeRunsItems::renamePattern()
{
    QFETCH(QByteArray, answers);
    QFETCH(QStringList, names);
    const Recipe recipe = recipeNamed(QStringLiteral("rename-pattern"));
    VANTREL_NEEDS_RECIPE(recipe);
    file(QString::fromLatin1(allInOne) + QStringLiteral(".old"));
    file(QStringLiteral("kept.old"), "old\n");
    file(QStringLiteral("kept.new"), "mine\n");
    run(recipe, path(), answers);
    QCOMPARE(tree(), names);
    QCOMPARE(read(QStringLiteral("kept.new")), QByteArray("mine\n"));
}

void TestRecipeRunsItems::newFile()
{
    run("new-file", QString(), "-it's \"a  new\" $file\n");
    QCOMPARE(tree(), QStringList{"-it's \"a  new\" $file"});
    file(QStringLiteral("there"), "mine\n");
    QVERIFY(run("new-file", QString(), "there\n").contains(QStringLiteral("FAILED")));
    QCOMPARE(read(QStringLiteral("there")), QByteArray("mine\n"));
}

void TestRecipeRunsItems::link()
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

void TestRecipeRunsItems::linkOther()
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

// --- Permissions, checks and passwords

void TestRecipeRunsItems::permissions()
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

void TestRecipeRunsItems::checksums()
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
void TestRecipeRunsItems::openKeyring() const
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

void TestRecipeRunsItems::signAndVerify()
{
    const Recipe sign = recipeNamed(QStringLiteral("sign"));
    VANTREL_NEEDS_RECIPE(sign);
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

void TestRecipeRunsItems::encryptAndDecrypt()
{
    const Recipe encrypt = recipeNamed(QStringLiteral("encrypt"));
    VANTREL_NEEDS_RECIPE(encrypt);
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

VANTREL_TEST_MAIN(TestRecipeRunsItems)
#include "tst_RecipeRunsItems.moc"
