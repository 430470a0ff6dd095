#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/HeldDialog.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QProxyStyle>
#include <QPushButton>

#include <limits>

/// What the dialog shows while it runs, and the boxes in which it asks.
class TestMProgressDisplay : public QObject
{
    Q_OBJECT

private slots:
    // Display.
    void operationTexts_data();
    void operationTexts();
    void refreshesByItself();
    void percentage_data();
    void percentage();
    void speedText();
    void speedAtTheStart();
    void speedWhileAQuestionIsOpen();
    void pausedTimeGrows();
    void pathIsPlainText();
    void longAndOddPaths();

    // Questions.
    void question();
    void warning();
    void buttonsStayOnTheScreen();
    void buttonsHaveNoIcons();
    void questionAnswers_data();
    void questionAnswers();
    void returnIsTheDefaultButton();
    void escapeAndCloseDoNotAnswer();
    void textIsPlain();
    void answersOfTheSlots_data();
    void answersOfTheSlots();
};

void TestMProgressDisplay::operationTexts_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("text");
    QTest::newRow("delete") << int(OpDelete) << "Deleting:";
    QTest::newRow("copy") << int(OpCopy) << "Copying:";
    QTest::newRow("move") << int(OpMove) << "Moving:";
    QTest::newRow("copy to") << int(OpCopyTo) << "";
    QTest::newRow("other") << 0 << "";
}

void TestMProgressDisplay::operationTexts()
{
    QFETCH(int, kind);
    HeldDialog held(kind);
    QCOMPARE(held.dialog->kind, kind);
    QTEST(held.dialog->operationText, "text");
    held.tick();
    QTEST(held.text("label_Operation"), "text");
    QCOMPARE(held.text("label_Path"), QString("Counting..."));
}

void TestMProgressDisplay::refreshesByItself()
{
    HeldDialog held(OpCopy);
    held.dialog->total = 4;
    held.dialog->done = 1;
    QElapsedTimer clock;
    clock.start();
    QTRY_COMPARE(held.bar(), 25);
    held.dialog->done = 2;
    QTRY_COMPARE(held.bar(), 50);
    // Ten times a second, give and take what a coarse timer may and what a busy machine adds.
    QVERIFY2(clock.elapsed() >= 90, qPrintable(QString::number(clock.elapsed())));
    QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
}

void TestMProgressDisplay::percentage_data()
{
    QTest::addColumn<qint64>("done");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<int>("shown");
    QTest::newRow("nothing") << qint64(0) << qint64(1) << 0;
    QTest::newRow("all") << qint64(1) << qint64(1) << 100;
    QTest::newRow("cut, not rounded") << qint64(999) << qint64(1000) << 99;
    QTest::newRow("third") << qint64(1) << qint64(3) << 33;
    QTest::newRow("single precision") << (qint64(1) << 40) - 1 << (qint64(1) << 40) << 100;
    QTest::newRow("more than all stays") << qint64(21) << qint64(10) << 7;
    QTest::newRow("no items") << qint64(0) << qint64(0) << 0;
    QTest::newRow("something of nothing") << qint64(5) << qint64(0) << 7;
    QTest::newRow("huge") << std::numeric_limits<qint64>::max() << qint64(1) << 7;
    QTest::newRow("negative") << qint64(-5) << qint64(1) << 7;
    QTest::newRow("very negative") << std::numeric_limits<qint64>::min() << qint64(1) << 7;
}

void TestMProgressDisplay::percentage()
{
    QFETCH(qint64, done);
    QFETCH(qint64, total);
    HeldDialog held(OpCopy);
    held.dialog->findChild<QProgressBar*>("progressBar")->setValue(7);
    held.dialog->done = done;
    held.dialog->total = total;
    held.tick();
    QTEST(held.bar(), "shown");
}

void TestMProgressDisplay::speedText()
{
    HeldDialog held(OpCopy);
    held.dialog->pausedTime = 1000000000; // so long that the time that goes by here does not show
    held.dialog->done = 2500000000000;
    held.tick();
    QCOMPARE(held.text("label_Speed"), QString("Speed: 2.50 MBytes/sec"));
    held.dialog->done = 1500000000;
    held.tick();
    QCOMPARE(held.text("label_Speed"), QString("Speed: 0.00 MBytes/sec"));
}

void TestMProgressDisplay::speedAtTheStart()
{
    HeldDialog held(OpCopy);
    held.tick();
    QCOMPARE(held.text("label_Speed"), QString("Speed: 0.00 MBytes/sec"));
    QCOMPARE(held.bar(), 0);
}

void TestMProgressDisplay::speedWhileAQuestionIsOpen()
{
    HeldDialog held(OpCopy);
    BoxAnswers answers;
    QString before;
    QString after;
    answers
        .meanwhile([&] {
            held.tick();
            before = held.text("label_Speed");
            held.dialog->done = 1;
            held.tick();
            after = held.text("label_Speed");
        })
        .click("Yes");
    held.dialog->myQuestion("x");
    QCOMPARE(before, QString("Speed: nan MBytes/sec"));
    QCOMPARE(after, QString("Speed: inf MBytes/sec"));
    held.tick();
    QVERIFY(!held.text("label_Speed").contains("inf"));
}

void TestMProgressDisplay::pausedTimeGrows()
{
    QElapsedTimer clock;
    clock.start();
    HeldDialog held(OpCopy);
    const qint64 made = clock.elapsed();
    QTRY_VERIFY(clock.elapsed() >= made + 20);
    qint64 asked = clock.elapsed();
    qint64 shown = 0;
    qint64 stood = 0;
    BoxAnswers answers;
    const auto stand = [&] {
        shown = clock.elapsed();
        QTRY_VERIFY(clock.elapsed() >= shown + 20);
        stood = clock.elapsed();
    };
    answers.meanwhile(stand).click("Ignore");
    held.dialog->myWarning("x");
    // All time before the question, which begins with the 1 that stands there from the start.
    const qint64 first = held.dialog->pausedTime;
    QVERIFY2(first >= asked - made && first <= shown + 1,
        qPrintable(QStringLiteral("%1 of %2 to %3").arg(first).arg(asked - made).arg(shown + 1)));

    // The time that the first box stood is not in it.
    const qint64 earliest = stood;
    const qint64 answered = clock.elapsed();
    QTRY_VERIFY(clock.elapsed() >= answered + 20);
    asked = clock.elapsed();
    answers.meanwhile(stand).click("Ignore");
    held.dialog->myWarning("x");
    const qint64 second = held.dialog->pausedTime - first;
    const qint64 most = shown - earliest + 1; // each time is cut to whole ms
    QVERIFY2(second >= asked - answered - 1 && second <= most,
        qPrintable(QStringLiteral("%1 of %2 to %3").arg(second).arg(asked - answered).arg(most)));
}

void TestMProgressDisplay::pathIsPlainText()
{
    HeldDialog held(OpCopy);
    const QString path = "/tmp/<b>bold</b>&amp;<img src=x>";
    {
        const QMutexLocker lock(&gmutexLock);
        held.dialog->currentPath = path;
    }
    held.tick();
    QCOMPARE(held.text("label_Path"), path);
    QCOMPARE(held.dialog->findChild<QLabel*>("label_Path")->textFormat(), Qt::PlainText);
}

void TestMProgressDisplay::longAndOddPaths()
{
    HeldDialog held(OpCopy);
    for (const QString& path :
        {QString(4096, 'w'), QString("a\nb\nc\n").repeated(100), QString("\t\u202e\ufffd")}) {
        {
            const QMutexLocker lock(&gmutexLock);
            held.dialog->currentPath = path;
        }
        held.tick();
        held.dialog->grab();
        QCOMPARE(held.text("label_Path"), path);
        QCOMPARE(held.dialog->size(), QSize(600, 269));
        QCOMPARE(held.dialog->findChild<QLabel*>("label_Path")->size(), QSize(541, 22));
    }
}

void TestMProgressDisplay::question()
{
    HeldDialog held(OpCopy);
    BoxAnswers answers;
    answers.click("No");
    held.dialog->myQuestion("The text\nof it");
    QCOMPARE(answers.seen().size(), 1);
    const BoxAnswers::Box box = answers.seen().first();
    QCOMPARE(box.title, gsProduct);
    QCOMPARE(box.text, QString("The text\nof it"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.parent, nullptr);
    QVERIFY(box.modal);
    QCOMPARE(box.defaultButton, QString("Yes"));
    QStringList buttons = box.buttons;
    buttons.sort();
    QCOMPARE(buttons, (QStringList{"Abort", "No", "Yes", "YesAll"}));
}

void TestMProgressDisplay::warning()
{
    HeldDialog held(OpCopy);
    BoxAnswers answers;
    answers.click("Ignore");
    held.dialog->myWarning("The text\nof it");
    QCOMPARE(answers.seen().size(), 1);
    const BoxAnswers::Box box = answers.seen().first();
    QCOMPARE(box.title, gsProduct);
    QCOMPARE(box.text, QString("The text\nof it"));
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.parent, nullptr);
    QCOMPARE(box.defaultButton, QString("Retry"));
    QStringList buttons = box.buttons;
    buttons.sort();
    QCOMPARE(buttons, (QStringList{"Abort", "Ignore", "IgnoreAll", "Retry"}));
}

void TestMProgressDisplay::buttonsStayOnTheScreen()
{
    HeldDialog held(OpDelete);
    BoxAnswers answers;
    int height = 0;
    answers.meanwhile([&height] { height = QApplication::activeModalWidget()->height(); }).click("Ignore");
    held.dialog->myWarning("Error deleting file:\n/a/" + QString(250, QLatin1Char('\n')));
    QVERIFY2(height > 100 && height <= 600, QByteArray::number(height).constData());
}

/// As where the desktop wants icons on the buttons of dialogs.
void TestMProgressDisplay::buttonsHaveNoIcons()
{
    class WithIcons : public QProxyStyle
    {
        int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
            QStyleHintReturn* result) const override
        {
            return hint == SH_DialogButtonBox_ButtonsHaveIcons
                ? 1
                : QProxyStyle::styleHint(hint, option, widget, result);
        }
    };
    const QString before = QApplication::style()->objectName();
    QApplication::setStyle(new WithIcons); // the application owns it
    const QMessageBox plain(QMessageBox::Warning, QString(), QString(), QMessageBox::Apply);
    QVERIFY(!plain.button(QMessageBox::Apply)->icon().isNull());

    HeldDialog held(OpCopy);
    BoxAnswers answers;
    int without = 0;
    answers.meanwhile([&without] {
        const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        const QList<QAbstractButton*> buttons = box->buttons();
        for (const QAbstractButton* button : buttons) {
            without += button->icon().isNull() ? 1 : 0;
        }
    });
    answers.click("Yes");
    held.dialog->myQuestion("The text");
    QApplication::setStyle(before);
    QCOMPARE(without, 4);
}

void TestMProgressDisplay::questionAnswers_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("standard");
    QTest::addColumn<int>("answer");
    const auto row = [](const char* slot, const char* button, int standard, int answer) {
        QTest::newRow(button == QLatin1String("Abort") ? qPrintable(QString("%1 Abort").arg(slot)) : button)
            << QByteArray(slot) << QString(button) << standard << answer;
    };
    row("myQuestion", "Yes", QMessageBox::Help, 5);
    row("myQuestion", "YesAll", QMessageBox::Reset, 6);
    row("myQuestion", "No", QMessageBox::Apply, 7);
    row("myQuestion", "Abort", QMessageBox::Discard, 4);
    row("myWarning", "Retry", QMessageBox::Help, 1);
    row("myWarning", "Ignore", QMessageBox::Reset, 2);
    row("myWarning", "IgnoreAll", QMessageBox::Apply, 3);
    row("myWarning", "Abort", QMessageBox::Discard, 4);
}

void TestMProgressDisplay::questionAnswers()
{
    QFETCH(QByteArray, slot);
    QFETCH(QString, button);
    HeldDialog held(OpCopy);
    int standard = 0;
    BoxAnswers answers;
    answers
        .meanwhile([&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            const QList<QAbstractButton*> all = box->buttons();
            for (QAbstractButton* one : all) {
                if (one->text() == button) {
                    standard = box->standardButton(one);
                }
            }
        })
        .click(button);
    QVERIFY(QMetaObject::invokeMethod(held.dialog, slot.constData(), Q_ARG(QString, "x")));
    QTEST(standard, "standard"); // which gives its place in the row
    QTEST(held.dialog->answer.load(), "answer");
    QCOMPARE(held.dialog->abort, 0); // that is the worker's to set
}

void TestMProgressDisplay::returnIsTheDefaultButton()
{
    HeldDialog held(OpCopy);
    BoxAnswers answers;
    answers.key(Qt::Key_Return).key(Qt::Key_Return);
    held.dialog->myQuestion("x");
    QCOMPARE(held.dialog->answer, AnswerYes);
    held.dialog->myWarning("x");
    QCOMPARE(held.dialog->answer, AnswerRetry);
}

void TestMProgressDisplay::escapeAndCloseDoNotAnswer()
{
    // None of the four is a button to escape by, so the box stays until one is chosen.
    HeldDialog held(OpCopy);
    bool stays = false;
    BoxAnswers answers;
    answers
        .meanwhile([&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QTest::keyClick(box, Qt::Key_Escape);
            box->close();
            QCoreApplication::processEvents();
            stays = box->isVisible();
        })
        .click("No");
    held.dialog->myQuestion("x");
    QVERIFY(stays);
    QCOMPARE(held.dialog->answer, AnswerNo);
}

void TestMProgressDisplay::textIsPlain()
{
    HeldDialog held(OpCopy);
    Qt::TextFormat format = Qt::AutoText;
    BoxAnswers answers;
    answers
        .meanwhile(
            [&] { format = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->textFormat(); })
        .click("Yes");
    held.dialog->myQuestion("<h1>x</h1>");
    QCOMPARE(format, Qt::PlainText);
    QCOMPARE(answers.texts(), QStringList{"<h1>x</h1>"});
}

void TestMProgressDisplay::answersOfTheSlots_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<int>("answer");
    QTest::newRow("question") << QByteArray("myQuestion") << int(AnswerYes);
    QTest::newRow("warning") << QByteArray("myWarning") << int(AnswerRetry);
}

/// A box that ends by no button and not because the application quits.
void TestMProgressDisplay::answersOfTheSlots()
{
    QFETCH(QByteArray, slot);
    HeldDialog held(OpCopy);
    BoxAnswers answers;
    answers.meanwhile([&] { qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->reject(); })
        .close();
    QVERIFY(QMetaObject::invokeMethod(held.dialog, slot.constData(), Q_ARG(QString, "x")));
    QTEST(held.dialog->answer.load(), "answer");
}

VANTREL_TEST_MAIN(TestMProgressDisplay)
#include "tst_MProgressDisplay.moc"
