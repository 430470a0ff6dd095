#include "tests/support/Recipes.h"
#include "tests/support/TestMain.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>

/// The man pages name what the programs understand: no more and no less.
class TestManPages : public QObject
{
    Q_OBJECT

private slots:
    void settingsHasEveryKey();
    void settingsHasEveryKeyword();
    void setupHasEveryOption();
    void checkHasEveryKind();
    void everyShortcutIsTold_data();
    void everyShortcutIsTold();
    void refersToPagesThatAreThere_data();
    void refersToPagesThatAreThere();
};

namespace {

QString textOf(const QString& relative)
{
    QFile file(projectFile(relative));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// What the first group of an expression finds in a text.
QSet<QString> allOf(const QString& text, const QString& expression)
{
    QSet<QString> found;
    const QRegularExpression wanted(expression, QRegularExpression::MultilineOption);
    for (QRegularExpressionMatchIterator it = wanted.globalMatch(text); it.hasNext();) {
        found.insert(it.next().captured(1));
    }
    return found;
}

/// Every name in the initialiser of an array of ReadConfig.cpp.
QSet<QString> tableOf(const QString& array)
{
    QString text = textOf(QStringLiteral("app/ReadConfig.cpp"));
    text = text.mid(text.indexOf(array + QStringLiteral("{{")));
    text.truncate(text.indexOf(QLatin1String("}};")));
    return allOf(text, QStringLiteral("QLatin1String\\(\"([a-z]+)\"\\)"));
}

/// A section of a page, with what is below its headline.
QString sectionOf(const QString& page, const QString& headline)
{
    QString text = textOf(page);
    text = text.mid(text.indexOf(QStringLiteral(".Ss ") + headline + QLatin1Char('\n')) + 4);
    text.truncate(
        text.indexOf(QRegularExpression(QStringLiteral("^\\.S[sh] "), QRegularExpression::MultilineOption)));
    return text;
}

} // namespace

void TestManPages::settingsHasEveryKey()
{
    const QSet<QString> keys = tableOf(QStringLiteral(" keys"));
    QCOMPARE(keys.size(), 7);
    QCOMPARE(allOf(sectionOf(QStringLiteral("man/vantrel.5"), QStringLiteral("Keys")),
                 QStringLiteral("^\\.It Cm ([a-z]+) Ns =")),
        keys);
}

void TestManPages::settingsHasEveryKeyword()
{
    const QSet<QString> keywords = tableOf(QStringLiteral(" keywords"));
    QCOMPARE(keywords.size(), 14);
    QString text = sectionOf(QStringLiteral("man/vantrel.5"), QStringLiteral("Keywords of menu lines"));
    // Two keywords of one paragraph stand in one line.
    text.replace(QLatin1String(" , Cm "), QLatin1String("\n.It Cm "));
    QCOMPARE(allOf(text, QStringLiteral("^\\.It Cm ([a-z]+)$")), keywords);
}

void TestManPages::setupHasEveryOption()
{
    QProcess setup;
    setup.start(QStringLiteral("/bin/sh"), {projectFile(QStringLiteral("setup/vantrel-setup")), "--help"});
    QVERIFY(setup.waitForFinished());
    QCOMPARE(setup.exitCode(), 0);
    const QSet<QString> told
        = allOf(QString::fromUtf8(setup.readAllStandardOutput()), QStringLiteral("(?:^ +|, )--([a-z]+)"));
    QVERIFY2(told.size() >= 8, QByteArray::number(told.size()).constData());
    QString page = textOf(QStringLiteral("man/vantrel-setup.1"));
    page.replace(QLatin1String(" , Fl "), QLatin1String("\n.It Fl "));
    QCOMPARE(allOf(page, QStringLiteral("^\\.It Fl -([a-z]+)")), told);
}

void TestManPages::everyShortcutIsTold_data()
{
    QTest::addColumn<QString>("constant");
    QTest::addColumn<QString>("told");
    QTest::newRow("open") << "ctrl(Qt::Key_O)"
                          << "Ctrl+O";
    QTest::newRow("context menu") << "Qt::Key_F10"
                                  << "Shift+F10";
    QTest::newRow("copy") << "Qt::Key_F5"
                          << "F5";
    QTest::newRow("move") << "Qt::Key_F6"
                          << "F6";
    QTest::newRow("widen tree") << "ctrl(Qt::Key_Greater)"
                                << "Ctrl+>";
    QTest::newRow("narrow tree") << "ctrl(Qt::Key_Less)"
                                 << "Ctrl+<";
    QTest::newRow("widen column") << "ctrl(Qt::Key_BracketRight)"
                                  << "Ctrl+]";
    QTest::newRow("narrow column") << "ctrl(Qt::Key_BracketLeft)"
                                   << "Ctrl+[";
    QTest::newRow("sort") << "ctrl(Qt::Key_1 + column)"
                          << "Ctrl+1";
}

void TestManPages::everyShortcutIsTold()
{
    QFETCH(QString, constant);
    QFETCH(QString, told);
    const QString source = textOf(QStringLiteral("panel/MPanelShortcuts.cpp"));
    QVERIFY(source.contains(constant));
    // As many calls as there are rows: a new key is told here, too. Opening and the menu have two each.
    QCOMPARE(source.count(QLatin1String("    addCommand(")) + source.count(QLatin1String("    addMovement("))
            + source.count(QLatin1String("new PanelShortcut(ctrl")),
        11);
    QVERIFY(textOf(QStringLiteral("docs/guide.md")).contains(told));
    QVERIFY(textOf(QStringLiteral("man/vantrel.1")).contains(told));
}

/// The page and the guide name the kinds of findings that the sources do.
void TestManPages::checkHasEveryKind()
{
    QString sources;
    for (const char* file :
        {"SettingsCheck.cpp", "SettingsCheckEntries.cpp", "CommandCheck.cpp", "StyleCheck.cpp"}) {
        sources += textOf(QStringLiteral("check/") + QLatin1String(file));
    }
    const QSet<QString> kinds = allOf(sources, QStringLiteral("add\\([a-z.]+,\\s*\"([a-z-]+)\""))
        + allOf(sources, QStringLiteral("\\{line, QStringLiteral\\(\"([a-z-]+)\"\\)"));
    QCOMPARE(kinds.size(), 20);
    QCOMPARE(
        allOf(textOf(QStringLiteral("man/vantrel-check.1")), QStringLiteral("^\\.It Cm ([a-z-]+)$")), kinds);
    QString guide = textOf(QStringLiteral("docs/guide.md"));
    guide = guide.mid(guide.indexOf(QLatin1String("| it finds | in brackets |")));
    guide.truncate(guide.indexOf(QLatin1String("\n\n")));
    guide.replace(QLatin1String("`, `"), QLatin1String("` |\n| `"));
    QCOMPARE(allOf(guide, QStringLiteral("\\| `([a-z-]+)` \\|$")), kinds);
}

void TestManPages::refersToPagesThatAreThere_data()
{
    QTest::addColumn<QString>("page");
    for (const char* page : {"vantrel.1", "vantrel.5", "vantrel-setup.1", "vantrel-check.1"}) {
        QTest::newRow(page) << QStringLiteral("man/") + QLatin1String(page);
    }
}

void TestManPages::refersToPagesThatAreThere()
{
    QFETCH(QString, page);
    const QSet<QString> named = allOf(textOf(page), QStringLiteral("^\\.Xr (\\S+ \\d)"));
    QVERIFY(!named.isEmpty());
    for (QString other : named) {
        other.replace(QLatin1Char(' '), QLatin1Char('.'));
        QVERIFY2(!textOf(QStringLiteral("man/") + other).isEmpty(), qPrintable(other));
    }
    // What is not named is not installed.
    QVERIFY2(textOf(QStringLiteral("CMakeLists.txt")).contains(page), qPrintable(page));
}

VANTREL_TEST_MAIN(TestManPages)
#include "tst_ManPages.moc"
