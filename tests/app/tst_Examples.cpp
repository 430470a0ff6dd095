#include "app/ReadConfig.h"
#include "app/aGlobal.h"
#include "tests/support/SeenTexts.h"
#include "tests/support/TestMain.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

/// The settings files of examples/, read as the program reads them.
class TestExamples : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void isPlainAscii_data() { files(); }
    void isPlainAscii();
    void everyKeyIsKnown_data() { files(); }
    void everyKeyIsKnown();
    void menuIsComplete_data() { files(); }
    void menuIsComplete();
    void menuLosesNothing_data() { files(); }
    void menuLosesNothing();
    void drivesExist_data() { files(); }
    void drivesExist();
    void noRecurseLeavesOutSystemFolders_data() { files(); }
    void noRecurseLeavesOutSystemFolders();
    void associationsHaveCommands_data() { files(); }
    void associationsHaveCommands();
    void styleSheetParses_data() { files(); }
    void styleSheetParses();
    void textsCanBeRead_data() { files(); }
    void textsCanBeRead();
    void textsOnInheritedGroundsCanBeRead_data() { files(); }
    void textsOnInheritedGroundsCanBeRead();
    void progressCanBeRead_data() { files(); }
    void progressCanBeRead();
    void focusIsSeen_data();
    void focusIsSeen();
    void darkStyleCovers_data();
    void darkStyleCovers();

private:
    static void files();
    static QString path(const QString& name);
    static QList<QByteArray> settingLines(const QString& name);
};

namespace {

QStringList warnings;

void collectWarnings(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
{
    if (type != QtDebugMsg && type != QtInfoMsg) {
        warnings += text;
    }
}

/// The colour that a property of a style rule sets; an invalid one where it sets none.
QColor colorOf(const QString& declarations, const QString& property)
{
    const QRegularExpression pattern(QStringLiteral("(?:^|[;{\\s])%1:\\s*(#[0-9a-f]{6})").arg(property));
    return QColor(pattern.match(declarations).captured(1));
}

/// Least contrast that a text needs.
constexpr double leastForText = 4.5;

/// Least contrast that a mark needs, such as the frame around what has the keyboard.
constexpr double leastForMark = 3.0;

struct StyleRule
{
    QString selector;
    QString body;
};

/// The rules of the style sheet that was read, one for each selector.
QVector<StyleRule> styleRules()
{
    static const QRegularExpression rule(QStringLiteral("([^{}]+)\\{([^{}]*)\\}"));
    QVector<StyleRule> rules;
    auto matches = rule.globalMatch(gsAppStyleSheet);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QStringList selectors = match.captured(1).split(QLatin1Char(','));
        for (const QString& selector : selectors) {
            rules.append({selector.trimmed(), match.captured(2)});
        }
    }
    return rules;
}

/// The background that the rules give to exactly this selector; the last one counts.
QColor ownGround(const QString& selector)
{
    QColor ground;
    const QVector<StyleRule> rules = styleRules();
    for (const StyleRule& rule : rules) {
        const QColor color = colorOf(rule.body, QStringLiteral("background"));
        ground = rule.selector == selector && color.isValid() ? color : ground;
    }
    return ground;
}

/// The background that is seen behind a selector: its own, or that of what it is a state, a part or a kind
/// of.
QColor groundOf(QString selector)
{
    static const QRegularExpression narrowing(
        QStringLiteral("(::?[a-z-]+|#\\w+|\\[[^\\]]*\\])$|^\\S+ (?=\\S)"));
    QColor ground = ownGround(selector);
    while (!ground.isValid() && selector.contains(narrowing)) {
        selector.remove(narrowing);
        ground = ownGround(selector);
    }
    return ground.isValid() ? ground : ownGround(QStringLiteral("QWidget"));
}

QColor borderOf(const QString& declarations)
{
    static const QRegularExpression border(QStringLiteral("border(?:-color)?:[^;]*(#[0-9a-f]{6})"));
    return QColor(border.match(declarations).captured(1));
}

} // namespace

void TestExamples::files()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("starter") << QStringLiteral("Vantrel.starter");
    QTest::newRow("dark") << QStringLiteral("Vantrel.dark");
}

QString TestExamples::path(const QString& name)
{
    return QFINDTESTDATA(QStringLiteral("../../examples/") + name);
}

QList<QByteArray> TestExamples::settingLines(const QString& name)
{
    QFile file(path(name));
    QList<QByteArray> lines;
    if (file.open(QIODevice::ReadOnly)) {
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (!line.trimmed().isEmpty() && !line.trimmed().startsWith('#')) {
                lines += line.trimmed();
            }
        }
    }
    return lines;
}

void TestExamples::init()
{
    gstDrives.clear();
    gsNoRecurse.clear();
    if (QTest::currentDataTag() != nullptr) {
        QFETCH(QString, name);
        ReadConfig(path(name));
    }
}

// The file is read in the locale's encoding; plain ASCII is the same in all.
void TestExamples::isPlainAscii()
{
    QFETCH(QString, name);
    const QList<QByteArray> lines = settingLines(name);
    QVERIFY(!lines.isEmpty());
    for (const QByteArray& line : lines) {
        for (const char c : line) {
            QVERIFY2(c >= ' ' && c <= '~', line.constData());
        }
    }
}

void TestExamples::everyKeyIsKnown()
{
    QFETCH(QString, name);
    const QList<QByteArray> known{"style", "icon", "drive", "window", "norecurse", "assn", "menu"};
    for (const QByteArray& line : settingLines(name)) {
        QVERIFY2(known.contains(line.left(line.indexOf('='))), line.constData());
    }
}

void TestExamples::menuIsComplete()
{
    QFETCH(QString, name);
    QVector<int> wanted{CommandProperties, CommandTotalSize, CommandChecksum, CommandNewDir, CommandRename,
        CommandCopy, CommandDelete, CommandSendTo, CommandClipboard, CommandTerminal};
    if (name == QLatin1String("Vantrel.starter")) {
        wanted << CommandCompare << CommandExecute << CommandTerminalEx;
    }
    for (const LSMENU& entry : qAsConst(gstMenu)) {
        QVERIFY2(entry.code != CommandUnknown, qPrintable(entry.label));
        wanted.removeAll(entry.code);
        if (entry.code != CommandSeparator) {
            QVERIFY(!entry.label.isEmpty());
            QVERIFY2(entry.types.contains(QLatin1String("|.|")) || entry.types.contains(QLatin1String("|*|"))
                    || entry.types.contains(QLatin1String("|tar|")),
                qPrintable(entry.label));
        }
    }
    QCOMPARE(wanted, QVector<int>());
}

// A command ends at a further "=", so a line with one would be cut short.
void TestExamples::menuLosesNothing()
{
    QFETCH(QString, name);
    for (const QByteArray& line : settingLines(name)) {
        if (line.startsWith("menu=")) {
            QVERIFY2(line.count('=') == 4 || line == "menu=separator", line.constData());
        }
    }
    const QVector<int> launching{CommandSendTo, CommandCompare, CommandTerminal, CommandTerminalEx};
    for (const LSMENU& entry : qAsConst(gstMenu)) {
        QCOMPARE(!entry.command.isEmpty(), launching.contains(entry.code));
    }
}

void TestExamples::drivesExist()
{
    QVERIFY(gstDrives.size() >= 2);
    QCOMPARE(gstDrives.first().path, QDir::homePath());
    QCOMPARE(gstDrives.at(1).path, QStringLiteral("/"));
    for (const LSDRIVE& drive : qAsConst(gstDrives)) {
        QVERIFY2(QFileInfo(drive.path).isDir(), qPrintable(drive.path));
        QVERIFY(!drive.label.isEmpty());
    }
}

void TestExamples::noRecurseLeavesOutSystemFolders()
{
    // An empty expression would match everything.
    QVERIFY(!gsNoRecurse.isEmpty());
    const QRegularExpression pattern(gsNoRecurse, QRegularExpression::CaseInsensitiveOption);
    QVERIFY2(pattern.isValid(), qPrintable(pattern.errorString()));
    for (const char* folder : {"/proc", "/proc/1", "/sys/class", "/dev", "/run/user/0"}) {
        QVERIFY2(pattern.match(QLatin1String(folder)).hasMatch(), folder);
    }
    for (const char* folder : {"/", "/home", "/home/dev", "/home/me/proc", "/devel", "/runs", "/usr"}) {
        QVERIFY2(!pattern.match(QLatin1String(folder)).hasMatch(), folder);
    }
}

void TestExamples::associationsHaveCommands()
{
    for (const char* suffix : {"", "txt", "png", "pdf", "odt", "mp3", "mp4", "zip", "html"}) {
        QCOMPARE(gmFileAssn.value(QLatin1String(suffix)), QStringLiteral("xdg-open"));
    }
    QVERIFY(!gmFileAssn.values().contains(QString()));
}

void TestExamples::styleSheetParses()
{
    warnings.clear();
    const QtMessageHandler before = qInstallMessageHandler(collectWarnings);
    qApp->setStyleSheet(gsAppStyleSheet);
    QWidget().ensurePolished();
    qApp->setStyleSheet(QString());
    qInstallMessageHandler(before);
    QCOMPARE(warnings, QStringList());
    QVERIFY(gsAppStyleSheet.count(QLatin1Char('{')) > 20);
    QCOMPARE(gsAppStyleSheet.count(QLatin1Char('{')), gsAppStyleSheet.count(QLatin1Char('}')));
}

// 4.5 is the least contrast for ordinary text; a disabled one is held to 3.
void TestExamples::textsCanBeRead()
{
    static const QRegularExpression rule(QStringLiteral("([^{}]+)\\{([^{}]*)\\}"));
    int compared = 0;
    auto matches = rule.globalMatch(gsAppStyleSheet);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const QString selector = match.captured(1).trimmed();
        const QString body = match.captured(2);
        const auto readable = [&](const QString& text, const QString& ground) {
            const QColor front = colorOf(body, text);
            const QColor back = colorOf(body, ground);
            if (!front.isValid() || !back.isValid()) {
                return true;
            }
            ++compared;
            return contrast(front, back) >= leastForText;
        };
        QVERIFY2(readable(QStringLiteral("color"), QStringLiteral("background")), qPrintable(selector));
        QVERIFY2(readable(QStringLiteral("color"), QStringLiteral("alternate-background-color")),
            qPrintable(selector));
        QVERIFY2(readable(QStringLiteral("selection-color"), QStringLiteral("selection-background-color")),
            qPrintable(selector));
    }
    QVERIFY(compared >= 15);
}

void TestExamples::textsOnInheritedGroundsCanBeRead()
{
    int compared = 0;
    const QVector<StyleRule> rules = styleRules();
    for (const StyleRule& rule : rules) {
        const QColor text = colorOf(rule.body, QStringLiteral("color"));
        if (text.isValid()) {
            const QColor ground = groundOf(rule.selector);
            QVERIFY2(ground.isValid(), qPrintable(rule.selector));
            QVERIFY2(contrast(text, ground) >= leastForText, qPrintable(rule.selector));
            ++compared;
        }
    }
    QVERIFY(compared >= 12);
}

// The text of a progress bar stands on both its grounds.
void TestExamples::progressCanBeRead()
{
    const QColor chunk = ownGround(QStringLiteral("QProgressBar::chunk"));
    const QColor groove = ownGround(QStringLiteral("QProgressBar"));
    QVERIFY(chunk.isValid() && groove.isValid());
    bool compared = false;
    const QVector<StyleRule> rules = styleRules();
    for (const StyleRule& rule : rules) {
        if (rule.selector == QLatin1String("QProgressBar")) {
            const QColor text = colorOf(rule.body, QStringLiteral("color"));
            QVERIFY(contrast(text, chunk) >= leastForText);
            QVERIFY(contrast(text, groove) >= leastForText);
            compared = true;
        }
    }
    QVERIFY(compared);
}

void TestExamples::focusIsSeen_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("selectors");
    const QStringList both{"QPushButton#NavBar:focus", "QTreeView:focus", "QTableView:focus"};
    QTest::newRow("starter") << QStringLiteral("Vantrel.starter")
                             << both
            + QStringList{"QPushButton#DriveBar:focus", "QPushButton:focus", "QLineEdit:focus"};
    QTest::newRow("dark") << QStringLiteral("Vantrel.dark")
                          << both + QStringList{"QPushButton:focus", "QLineEdit:focus"};
}

// The frame around what has the keyboard stands out from it, and from the frame without.
void TestExamples::focusIsSeen()
{
    QFETCH(QStringList, selectors);
    const QVector<StyleRule> rules = styleRules();
    for (const StyleRule& rule : rules) {
        const QColor frame = borderOf(rule.body);
        if (rule.selector.endsWith(QLatin1String(":focus")) && frame.isValid()) {
            const QColor ground = groundOf(rule.selector);
            QVERIFY2(ground.isValid(), qPrintable(rule.selector));
            QVERIFY2(contrast(frame, ground) >= leastForMark, qPrintable(rule.selector));
            for (const StyleRule& plain : rules) {
                if (plain.selector + QLatin1String(":focus") == rule.selector) {
                    QVERIFY2(borderOf(plain.body) != frame, qPrintable(rule.selector));
                }
            }
            selectors.removeAll(rule.selector);
        }
    }
    QVERIFY2(selectors.isEmpty(), qPrintable(selectors.join(QLatin1Char(' '))));
}

void TestExamples::darkStyleCovers_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("property");
    const auto add = [](const char* property, const QStringList& selectors) {
        for (const QString& selector : selectors) {
            QTest::addRow("%s of %s", property, qPrintable(selector))
                << QStringLiteral("Vantrel.dark") << selector << QString::fromLatin1(property);
        }
    };
    add("background",
        {"QMenu", "QMenu::item:selected", "QMenu::item:disabled", "QMenuBar::item:selected", "QMessageBox",
            "QToolTip", "QLineEdit", "QLineEdit#ReadOnly", "QHeaderView::section", "QScrollBar::handle",
            "QProgressBar::chunk"});
    add("color",
        {"QMenu", "QMenu::item:selected", "QMenu::item:disabled", "QLineEdit", "QLineEdit#ReadOnly",
            "QWidget:disabled", "QLabel#StatusBar", "QToolTip"});
    add("selection-background-color", {"QTableView", "QTableView:active", "QTreeView", "QTreeView:active"});
    add("border", {"QPushButton:focus", "QPushButton#NavBar:focus", "QTableView:focus"});
    add("border-color", {"QLineEdit:focus"});
    add("padding", {"QPushButton#DriveBar"});
}

// By a rule for exactly that: its name is also the beginning of other rules.
void TestExamples::darkStyleCovers()
{
    QFETCH(QString, selector);
    QFETCH(QString, property);
    const QRegularExpression declaration(QStringLiteral("(?:^|[;\\s])%1:").arg(property));
    bool covered = false;
    const QVector<StyleRule> rules = styleRules();
    for (const StyleRule& rule : rules) {
        covered = covered || (rule.selector == selector && rule.body.contains(declaration));
    }
    QVERIFY(covered);
}

VANTREL_TEST_MAIN(TestExamples)
#include "tst_Examples.moc"
