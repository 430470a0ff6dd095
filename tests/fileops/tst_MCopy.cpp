#include "fileops/MCopy.h"

#include "tests/support/TestMain.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

class TestMCopy : public QObject
{
    Q_OBJECT

private slots:
    void form_data();
    void form();
    void dialog();
    void ok_data();
    void ok();
    void cancel();
    void escape();
    void closed();
    void returnIsOk();
    void okAfterCancel();
};

void TestMCopy::form_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QString>("text");
    QTest::newRow("label") << "label" << QByteArray("QLabel") << QRect(40, 20, 481, 22)
                           << "Copy selected items to:";
    QTest::newRow("lineEdit") << "lineEdit" << QByteArray("QLineEdit") << QRect(40, 40, 561, 30) << "";
    QTest::newRow("pushButton_Cancel")
        << "pushButton_Cancel" << QByteArray("QPushButton") << QRect(350, 100, 108, 30) << "&Cancel";
    QTest::newRow("pushButton_OK") << "pushButton_OK" << QByteArray("QPushButton") << QRect(490, 100, 108, 30)
                                   << "&OK";
}

void TestMCopy::form()
{
    QFETCH(QString, name);
    MCopy dialog(nullptr);
    auto* widget = dialog.findChild<QWidget*>(name, Qt::FindDirectChildrenOnly);
    QVERIFY(widget != nullptr);
    QTEST(QByteArray(widget->metaObject()->className()), "type");
    QTEST(widget->geometry(), "geometry");
    QTEST(widget->property("text").toString(), "text");
}

void TestMCopy::dialog()
{
    QWidget parent;
    MCopy dialog(&parent);
    QCOMPARE(dialog.parentWidget(), &parent);
    QCOMPARE(dialog.size(), QSize(651, 159));
    QCOMPARE(dialog.windowTitle(), QString("Vantrel"));
    QCOMPARE(dialog.destination, QString());
    QVERIFY(!dialog.isVisible());
    QVERIFY(dialog.layout() == nullptr);
}

void TestMCopy::ok_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("path") << "/tmp/here";
    QTest::newRow("blanks") << "  /tmp/ with blanks ";
    QTest::newRow("empty") << "";
    QTest::newRow("relative") << "sub";
}

void TestMCopy::ok()
{
    QFETCH(QString, text);
    MCopy dialog(nullptr);
    QTimer::singleShot(0, &dialog, [&] {
        QVERIFY(dialog.isModal());
        QTest::keyClicks(dialog.findChild<QLineEdit*>("lineEdit"), text);
        QTest::mouseClick(dialog.findChild<QPushButton*>("pushButton_OK"), Qt::LeftButton);
    });
    dialog.exec();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.destination, text);
}

void TestMCopy::cancel()
{
    MCopy dialog(nullptr);
    QTimer::singleShot(0, &dialog, [&] {
        QTest::keyClicks(dialog.findChild<QLineEdit*>("lineEdit"), "/tmp");
        QTest::mouseClick(dialog.findChild<QPushButton*>("pushButton_Cancel"), Qt::LeftButton);
    });
    dialog.exec();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.destination, QString());
}

void TestMCopy::escape()
{
    MCopy dialog(nullptr);
    QTimer::singleShot(0, &dialog, [&] {
        QTest::keyClicks(dialog.findChild<QLineEdit*>("lineEdit"), "/tmp");
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    dialog.exec();
    QCOMPARE(dialog.destination, QString());
}

void TestMCopy::closed()
{
    MCopy dialog(nullptr);
    QTimer::singleShot(0, &dialog, [&] {
        QTest::keyClicks(dialog.findChild<QLineEdit*>("lineEdit"), "/tmp");
        dialog.close();
    });
    dialog.exec();
    QCOMPARE(dialog.destination, QString());
}

void TestMCopy::returnIsOk()
{
    MCopy dialog(nullptr);
    QTimer::singleShot(0, &dialog, [&] {
        auto* line = dialog.findChild<QLineEdit*>("lineEdit");
        QTest::keyClicks(line, "/tmp");
        QTest::keyClick(line, Qt::Key_Return);
    });
    dialog.exec();
    QCOMPARE(dialog.destination, QString("/tmp"));
}

void TestMCopy::okAfterCancel()
{
    MCopy dialog(nullptr);
    dialog.findChild<QLineEdit*>("lineEdit")->setText("x");
    dialog.on_pushButton_OK_clicked();
    QCOMPARE(dialog.destination, QString("x"));
    dialog.on_pushButton_Cancel_clicked();
    QCOMPARE(dialog.destination, QString());
}

VANTREL_TEST_MAIN(TestMCopy)
#include "tst_MCopy.moc"
