#include "check/StyleCheck.h"
#include "tests/support/TestMain.h"
#include "tests/support/TextRows.h"

#include <QElapsedTimer>
#include <QLabel>

class TestStyleCheck : public QObject
{
    Q_OBJECT

private slots:
    void finds_data();
    void finds();
    void colours_data();
    void colours();
    void length_data();
    void length();
    void rulesBeforeTheMistakeAreUsed();
    void nothingWithoutLines();
    void leavesNoStyle();
};

namespace {

using Lines = QList<QPair<int, QString>>;

const char* const unread = "does not parse here; no rule from here on is used";

/// @return the lines, numbered from 10
Lines linesOf(const QString& text)
{
    Lines lines;
    const QStringList each = text.split(QLatin1Char('\n'));
    for (const QString& line : each) {
        lines.append({10 + lines.size(), line});
    }
    return lines;
}

} // namespace

void TestStyleCheck::finds_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<QStringList>("found"); // end of each text, with the line before it
    const auto row = [](const char* name, const char* sheet, const QStringList& found) {
        QTest::newRow(name) << QString::fromLatin1(sheet) << found;
    };
    const auto at = [](int line, const char* text) { return QStringLiteral("%1 %2").arg(line).arg(text); };
    row("good", "QLabel { color: red; }\nQWidget:disabled, QMenu::item { color: #fff; }", {});
    row("blank", " ", {});
    row("rule over several lines", "QLabel {\ncolor: red;\nfont: 9pt \"}\";\n}\nQMenu { color: red; }", {});
    row("selectors over several lines", "QLabel,\nQMenu { color: red; }", {});
    row("comment over several lines", "/* a {\nb */ QLabel { color: red; }", {});
    row("braces in a comment", "QLabel { /* { */ color: red; }\nQMenu { /* } */ color: red; }", {});
    row("pseudo states", "QPushButton:hover { color: red; }\nQPushButton:bogus { color: red; }", {});
    row("no braces", "color: red;", {at(10, unread)});
    row("no colon", "QMenu { color: red; }\nQLabel { font-size: 9pt; color red; }",
        {at(11, R"(in the style sheet: there is no ":" in "color red")")});
    row("no colon at all", "QLabel { color; red }",
        {at(10, R"(no ":" in "color")"), at(10, R"(no ":" in "red")")});
    row("colon in quotes", "QLabel { font \"a:b\"; }", {at(10, R"(there is no ":" in "font")")});
    row("no semicolon", "QMenu { color: red; }\nQLabel { color: red background: blue }", {at(11, unread)});
    row("two mistakes", "QMenu {{ color: red; }\n}\nQLabel { }\nQLabel { : red; }",
        {at(10, unread), at(13, unread)});
    row("import behind a rule", "QMenu { color: red; }\n@import \"x.css\";",
        {at(10, "does not parse as a whole, so that some of it is not used")});
    row("never closed", "QMenu { color: red; }\nQLabel {\ncolor: red;\nQMenu { color: red; }",
        {at(11, unread)});
    row("closed twice", "QMenu { color: red; } }\nQLabel { color: red; }", {at(10, unread)});
    row("comment never closed", "QMenu { color: red; }\n/* QLabel { color: red; }",
        {at(11, "in the style sheet: a comment is not closed")});
    row("closed too early", "QMenu { color: red; }\n/* a */ b */ QLabel { color: red; }", {at(11, unread)});
    row("part of a selector", "QMenu { color: red; }\nQLabel >", {at(11, unread)});
    row("unknown property", "QMenu { color: red; }\nQLabel { colour: red; }",
        {at(11, "in the style sheet: Unknown property colour")});
    row("unknown property for a state", "QLabel::item:hover, QMenu { colour: red; }",
        {at(10, "in the style sheet: Unknown property colour")});
    row("unknown property over several lines", "QLabel {\ncolor: red;\ncolour: red;\n}",
        {at(10, "in the style sheet: Unknown property colour")});
    row("one property twice", "QLabel { colour: red; }\nQMenu { colour: red; }",
        {at(10, "in the style sheet: Unknown property colour"),
            at(11, "in the style sheet: Unknown property colour")});
    row("unknown colour", "QLabel { color: #ff; }", {at(10, "Unknown color name '#ff'")});
    row("unknown name of a colour", "QMenu { color: red; }\nQLabel { color: rde; }",
        {at(11, "in the style sheet: Unknown color name 'rde'")});
    row("quote that is closed later", "QLabel { font: 9pt \"a; {\n} {b\"; }\nQMenu { : red; }",
        {at(12, unread)});
    row("quote beside braces", "QLabel { font: 9pt \"{\"; }\nQMenu { : red; }", {at(11, unread)});
    row("picture not there", "QLabel { background: url(/no/where.png); }",
        {at(10, "Could not create pixmap from /no/where.png")});
    row("property of a widget", "QPushButton { qproperty-flat: true; }", {});
    row("both", "QLabel { colour: red; }\nQMenu { : red; }",
        {at(11, unread), at(10, "in the style sheet: Unknown property colour")});
}

void TestStyleCheck::colours_data()
{
    const auto row = textRows("declarations", "unknown");
    row("color: red", "");
    row("color: Dark\\red", "Dark\\red");
    row("COLOR: RED; color: #fff; color: transparent; color: none", "");
    row("color: rde", "rde");
    row("color: rde; background-color: bleu; color: rde", "rde bleu");
    row("gridline-color: rde", "rde");
    row("color: #ff", "#ff");
    row("gridline-color: #12345", "#12345");
    row("color: red !important", "");
    row("color: rgb(300,0)", "rgb(300,0)");
    row("color: rgb(300,0,0)", "rgb(300,0,0)");
    row("color: rgb(a,0,0)", "rgb(a,0,0)");
    row("color: rgb( 255, 0 , 10% )", "");
    row("color: rgb(0,0,101%)", "rgb(0,0,101%)");
    row("color: rgba(1,2,3,0.5); color: rgba(1,2,3,50%); color: rgb(1,2,3,4)", "");
    row("color: hsv(359,255,255); color: hsla(1,2,3,4)", "");
    row("color: hsv(360,0,0)", "hsv(360,0,0)");
    row("color: cmyk(1,2,3,4)", "cmyk(1,2,3,4)");
    row("color: palette(window-text); alternate-background-color: palette(base)", "");
    row("background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 white, stop:1 rgba(0,0,0,5))", "");
    row("background-color: qradialgradient(cx:0.5, stop: 0 red)", "");
    row("background: rde", "rde");
    row("background: none; background: red", "");
    row("background: url() no-repeat top left fixed; background: #fff repeat-x 3px", "");
    row("border-color: red rde #fff blue", "rde");
    row("border: 1px solid rde", "rde");
    row("border: none; border-top: 1px dashed #aaa; border-left: .5em dot-dot-dash red", "");
    row("border-radius: rde; border-style: rde; font: rde; image: rde; border-width: rde", "");
    row("outline: 1px solid rde; outline: none", "rde");
    row("qproperty-some-color: rde", "");
}

void TestStyleCheck::colours()
{
    QFETCH(QString, declarations);
    for (const char* frame : {"QTableView { %1 }", "QTableView{%1;}"}) {
        QStringList unknown;
        const QString sheet = QString::fromLatin1(frame).arg(declarations);
        for (const Finding& finding : checkStyle(linesOf(sheet))) {
            if (finding.text.startsWith(QLatin1String("in the style sheet: Unknown color name "))) {
                unknown.append(finding.text.section(QLatin1Char('\''), 1, 1));
            }
        }
        QTEST(unknown.join(QLatin1Char(' ')), "unknown");
    }
}

void TestStyleCheck::length_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("tooLongAt"); // 0 where it is not
    const QString rule = QStringLiteral("QLabel { color: red; }  ");
    QTest::newRow("long") << rule.repeated(10000) << 1 << 0;
    QTest::newRow("too long") << rule.repeated(12000) << 1 << 10;
    QTest::newRow("one endless") << QStringLiteral("x").repeated(20000000) << 1 << 10;
    QTest::newRow("many") << QStringLiteral("x").repeated(999) << 300 << 272;
    QTest::newRow("many that end nowhere") << QStringLiteral("{;") << 80000 << 0;
}

/// Within seconds, whatever stands there.
void TestStyleCheck::length()
{
    QFETCH(QString, line);
    QFETCH(int, number);
    QFETCH(int, tooLongAt);
    Lines lines;
    for (int i = 0; i < number; ++i) {
        lines.append({10 + i, line});
    }
    QElapsedTimer time;
    time.start();
    const Findings found = checkStyle(lines);
    QVERIFY2(time.elapsed() < 20000, QByteArray::number(time.elapsed()).constData());
    const bool isTooLong = !found.isEmpty() && found.first().kind == QLatin1String("too-long");
    QCOMPARE(isTooLong ? found.first().line : 0, tooLongAt);
    QVERIFY(!isTooLong || found.size() == 1);
    QVERIFY(!isTooLong || found.first().text == QLatin1String("the style sheet is too long to check"));
}

void TestStyleCheck::finds()
{
    QFETCH(QString, sheet);
    QFETCH(QStringList, found);
    const Findings findings = checkStyle(linesOf(sheet));
    QStringList got;
    for (const Finding& finding : findings) {
        QCOMPARE(finding.kind, QStringLiteral("bad-style"));
        got.append(QStringLiteral("%1 %2").arg(finding.line).arg(finding.text));
    }
    QCOMPARE(got.size(), found.size());
    for (int i = 0; i < got.size(); ++i) {
        QCOMPARE(got.at(i).left(3), found.at(i).left(3));
        QVERIFY2(got.at(i).endsWith(found.at(i).midRef(3)), qPrintable(got.at(i)));
    }
}

/// What the text says of a sheet that does not parse is what Qt does with it.
void TestStyleCheck::rulesBeforeTheMistakeAreUsed()
{
    QTest::ignoreMessage(QtWarningMsg, "Could not parse application stylesheet");
    qApp->setStyleSheet(
        QStringLiteral("QLabel#a { color: #ff0000; } QMenu { : } QLabel#b { color: #ff0000; }"));
    QLabel before(QStringLiteral("a"));
    before.setObjectName(QStringLiteral("a"));
    before.ensurePolished();
    QLabel after(QStringLiteral("b"));
    after.setObjectName(QStringLiteral("b"));
    after.ensurePolished();
    QCOMPARE(before.palette().color(QPalette::WindowText), QColor(Qt::red));
    QVERIFY(after.palette().color(QPalette::WindowText) != QColor(Qt::red));
    qApp->setStyleSheet(QString());
}

void TestStyleCheck::nothingWithoutLines()
{
    QCOMPARE(checkStyle(Lines()).size(), 0);
}

void TestStyleCheck::leavesNoStyle()
{
    checkStyle(linesOf(QStringLiteral("QLabel { color: red; }\nQLabel {")));
    QCOMPARE(qApp->styleSheet(), QString());
    QTest::ignoreMessage(QtWarningMsg, "heard");
    qWarning("heard");
}

VANTREL_TEST_MAIN(TestStyleCheck)
#include "tst_StyleCheck.moc"
