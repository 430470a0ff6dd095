#include "panel/BarButtons.h"

#include "tests/support/TestMain.h"

#include <QAccessible>
#include <QImage>
#include <QPushButton>
#include <QTest>

namespace {

/// What a button of the style itself shows for a text in which "&&" stands for one "&".
QImage pictureOf(QWidget* bar, const QString& markedText)
{
    QPushButton button(bar);
    button.setFlat(true);
    button.setAutoFillBackground(true);
    button.setText(markedText);
    button.resize(200, 22);
    return button.grab().toImage();
}

} // namespace

class TestBarButtons : public QObject
{
    Q_OBJECT

private slots:
    void showsNamesAsTheyAre_data();
    void showsNamesAsTheyAre();
    void isAPushButtonToStyleSheets();
};

void TestBarButtons::showsNamesAsTheyAre_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("marked");

    QTest::newRow("plain") << "docs/"
                           << "docs/";
    QTest::newRow("and sign") << "R&D/"
                              << "R&&D/";
    QTest::newRow("two of them") << "a&&b/"
                                 << "a&&&&b/";
    QTest::newRow("at the end") << "a&"
                                << "a&&";
    QTest::newRow("markup") << "<b>x</b>"
                            << "<b>x</b>";
}

void TestBarButtons::showsNamesAsTheyAre()
{
    QFETCH(QString, name);
    QFETCH(QString, marked);
    QWidget bar;
    QPushButton* button = makeBarButton(&bar, QStringLiteral("NavBar"), name, true);
    button->resize(200, 22);

    QCOMPARE(button->text(), name);
    QVERIFY2(button->shortcut().isEmpty(), "a letter of a name is no shortcut");
    QCOMPARE(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name), name);
    QCOMPARE(button->grab().toImage(), pictureOf(&bar, marked));
    QVERIFY2(button->grab().toImage() != pictureOf(&bar, QString()), "something is drawn at all");
}

void TestBarButtons::isAPushButtonToStyleSheets()
{
    QWidget bar;
    const QPushButton* button = makeBarButton(&bar, QStringLiteral("NavBar"), QStringLiteral("a/"), true);

    QCOMPARE(button->metaObject()->className(), "QPushButton");
}

VANTREL_TEST_MAIN(TestBarButtons)
#include "tst_BarButtons.moc"
