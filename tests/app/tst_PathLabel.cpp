#include "app/PathLabel.h"
#include "tests/support/TestMain.h"

#include <QFontMetrics>
#include <QImage>

class TestPathLabel : public QObject
{
    Q_OBJECT

private slots:
    void shows_data();
    void shows();
    void textStaysWhole();
};

namespace {

constexpr int width = 200;

template <typename Label>
QImage pictureOf(const QString& text, const QString& style)
{
    Label label;
    label.setTextFormat(Qt::PlainText);
    label.setStyleSheet(style);
    label.setText(text);
    label.resize(width, 22);
    return label.grab().toImage();
}

} // namespace

void TestPathLabel::shows_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("style");
    QTest::addColumn<bool>("whole");
    const QString deep
        = QStringLiteral("/home/sam/") + QString(100, QLatin1Char('x')) + QStringLiteral("/file.txt");
    const QString style = QStringLiteral("color: #ff0000; background: #000000;");
    QTest::newRow("short") << QStringLiteral("/a") << QString() << true;
    QTest::newRow("short, with a style") << QStringLiteral("/a") << style << true;
    QTest::newRow("markup") << QStringLiteral("<b>&amp;") << QString() << true;
    QTest::newRow("empty") << QString() << QString() << true;
    QTest::newRow("long") << deep << QString() << false;
    QTest::newRow("long, with a style") << deep << QStringLiteral("color: #ff0000;") << false;
}

/// It looks like an ordinary label with what is to be shown.
void TestPathLabel::shows()
{
    QFETCH(QString, text);
    QFETCH(QString, style);
    QFETCH(bool, whole);
    const QString shown = QFontMetrics(QLabel().font()).elidedText(text, Qt::ElideMiddle, width);
    QCOMPARE(shown == text, whole);
    QVERIFY(
        whole || (shown.startsWith(QLatin1String("/home")) && shown.endsWith(QLatin1String("/file.txt"))));
    QCOMPARE(pictureOf<PathLabel>(text, style), pictureOf<QLabel>(shown, style));
    QVERIFY(whole || pictureOf<PathLabel>(text, style) != pictureOf<QLabel>(text, style));
}

void TestPathLabel::textStaysWhole()
{
    PathLabel label;
    label.resize(20, 20);
    label.setText(QStringLiteral("/a/long/path"));
    label.grab();
    QCOMPARE(label.text(), QStringLiteral("/a/long/path"));
}

VANTREL_TEST_MAIN(TestPathLabel)
#include "tst_PathLabel.moc"
