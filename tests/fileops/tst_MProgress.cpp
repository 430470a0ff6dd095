#include "fileops/MProgress.h"

#include "app/aGlobal.h"
#include "tests/support/FaultShim.h"
#include "tests/support/OperationRun.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QMetaMethod>
#include <QPointer>
#include <QProgressBar>
#include <QProxyStyle>
#include <QPushButton>
#include <QRegularExpression>
#include <QSemaphore>
#include <QThread>

#include <cerrno>
#include <functional>
#include <limits>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

/// A running dialog whose worker waits in the shim, at its first look at the only item, until it is let go.
class HeldDialog
{
public:
    explicit HeldDialog(int kind)
        : m_shim(m_dir.path())
    {
        gslDragList = QStringList{m_dir.file("item", "x")};
        gsDropBase = m_dir.path("to");
        m_shim.before("lstat", "item", 1, [this] {
            m_reached.release();
            m_go.acquire();
        });
        m_panel.show();
        dialog = new MProgress(&m_panel, kind);
        m_reached.acquire();
    }
    ~HeldDialog()
    {
        m_go.release();
        delete dialog;
    }
    void letGo() { m_go.release(); }

    QString text(const char* label) const { return dialog->findChild<QLabel*>(label)->text(); }
    int bar() const { return dialog->findChild<QProgressBar*>("progressBar")->value(); }
    void tick() const
    {
        QTimerEvent event(-1); // whatever timer
        QCoreApplication::sendEvent(dialog, &event);
    }

private:
    TestDir m_dir;
    FaultShim m_shim;
    QSemaphore m_reached;
    QSemaphore m_go;
    QWidget m_panel;

public:
    QPointer<MProgress> dialog;
};

/// Notes the longest time that the event loop did not come back.
class GapMeter : public QObject
{
public:
    GapMeter()
    {
        m_clock.start();
        m_timer.setTimerType(Qt::PreciseTimer);
        connect(&m_timer, &QTimer::timeout, this, [this] { longestMs = qMax(longestMs, m_clock.restart()); });
        m_timer.start(1);
    }
    qint64 longestMs = 0;

private:
    QElapsedTimer m_clock;
    QTimer m_timer;
};

} // namespace

class TestMProgress : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    // Form and start.
    void form_data();
    void form();
    void dialog();
    void operationTexts_data();
    void operationTexts();
    void recordAtTheStart();
    void slotsInOrder();
    void isModalFromTheStart();

    // Display.
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

    // Life.
    void abortButton();
    void escapeAndTitleBarAbort();
    void closesWhenTheWorkerHasFinished();
    void freesItself();
    void execAfterTheEnd();
    void neverExecuted();
    void destroyedWithAQuestionPending();
    void onTheStack();
    void parentGone();
    void quitWhileAQuestionIsOpen_data();
    void quitWhileAQuestionIsOpen();
    void quitWhileItRuns();
    void noThreadToBeHad();
    void hundredOperations();
    void windowStaysLive();

private:
    int m_threads = 0;
};

void TestMProgress::initTestCase()
{
    QWidget window; // lets threads begin that stay, those of the platform
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    m_threads = threadCount();
}

void TestMProgress::form_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("initial");
    QTest::newRow("pushButton") << "pushButton" << QByteArray("QPushButton") << QRect(469, 200, 101, 32)
                                << "text"
                                << "&Abort";
    QTest::newRow("progressBar") << "progressBar" << QByteArray("QProgressBar") << QRect(30, 120, 541, 24)
                                 << "value"
                                 << "0";
    QTest::newRow("label_Operation") << "label_Operation" << QByteArray("QLabel") << QRect(30, 30, 541, 22)
                                     << "text"
                                     << ".";
    QTest::newRow("label_Path") << "label_Path" << QByteArray("QLabel") << QRect(30, 70, 541, 22) << "text"
                                << ".";
    QTest::newRow("label_Speed") << "label_Speed" << QByteArray("QLabel") << QRect(30, 150, 291, 22) << "text"
                                 << ".";
}

void TestMProgress::form()
{
    QFETCH(QString, name);
    QFETCH(QString, property);
    HeldDialog held(OpCopy);
    auto* widget = held.dialog->findChild<QWidget*>(name, Qt::FindDirectChildrenOnly);
    QVERIFY(widget != nullptr);
    QTEST(QByteArray(widget->metaObject()->className()), "type");
    QTEST(widget->geometry(), "geometry");
    QTEST(widget->property(property.toLatin1().constData()).toString(), "initial");
}

void TestMProgress::dialog()
{
    HeldDialog held(OpCopy);
    QCOMPARE(held.dialog->size(), QSize(600, 269));
    QCOMPARE(held.dialog->windowTitle(), QString("Vantrel"));
    QCOMPARE(held.dialog->layout(), nullptr);
    QVERIFY(!held.dialog->testAttribute(Qt::WA_DeleteOnClose));
    const auto* bar = held.dialog->findChild<QProgressBar*>("progressBar");
    QCOMPARE(bar->minimum(), 0);
    QCOMPARE(bar->maximum(), 100);
}

void TestMProgress::operationTexts_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("text");
    QTest::newRow("delete") << int(OpDelete) << "Deleting:";
    QTest::newRow("copy") << int(OpCopy) << "Copying:";
    QTest::newRow("move") << int(OpMove) << "Moving:";
    QTest::newRow("copy to") << int(OpCopyTo) << "";
    QTest::newRow("other") << 0 << "";
}

void TestMProgress::operationTexts()
{
    QFETCH(int, kind);
    HeldDialog held(kind);
    QCOMPARE(held.dialog->kind, kind);
    QTEST(held.dialog->operationText, "text");
    held.tick();
    QTEST(held.text("label_Operation"), "text");
    QCOMPARE(held.text("label_Path"), QString("Counting..."));
}

void TestMProgress::recordAtTheStart()
{
    HeldDialog held(OpCopy);
    const MProgress& record = *held.dialog;
    QCOMPARE(record.panel, record.parentWidget());
    QCOMPARE(record.abort, 0);
    QCOMPARE(record.deleteAll, 0);
    QCOMPARE(record.ignoreAll, 0);
    QCOMPARE(record.fileCount, 0);
    QCOMPARE(record.folderCount, 0);
    QCOMPARE(record.total, 1);
    QCOMPARE(record.done, 0);
    QCOMPARE(record.pausedTime, 1);
}

void TestMProgress::slotsInOrder()
{
    const QMetaObject& meta = MProgress::staticMetaObject;
    QCOMPARE(meta.superClass(), &QDialog::staticMetaObject);
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        found.append(QString::fromLatin1(meta.method(i).methodSignature()));
    }
    QCOMPARE(found.mid(0, 4),
        (QStringList{
            "isfinished()", "on_pushButton_clicked()", "myQuestion(QString)", "myWarning(QString)"}));
}

void TestMProgress::isModalFromTheStart()
{
    QWidget other;
    other.show();
    HeldDialog held(OpCopy);
    QVERIFY(held.dialog->isVisible());
    QCOMPARE(held.dialog->windowModality(), Qt::ApplicationModal);
    QCOMPARE(QApplication::activeModalWidget(), held.dialog.data());
    bool clicked = false;
    QPushButton behind("behind");
    connect(&behind, &QPushButton::clicked, [&] { clicked = true; });
    behind.show();
    QTest::mouseClick(behind.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    QCoreApplication::processEvents();
    QVERIFY(!clicked);
}

void TestMProgress::refreshesByItself()
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

void TestMProgress::percentage_data()
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

void TestMProgress::percentage()
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

void TestMProgress::speedText()
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

void TestMProgress::speedAtTheStart()
{
    HeldDialog held(OpCopy);
    held.tick();
    QCOMPARE(held.text("label_Speed"), QString("Speed: 0.00 MBytes/sec"));
    QCOMPARE(held.bar(), 0);
}

void TestMProgress::speedWhileAQuestionIsOpen()
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

void TestMProgress::pausedTimeGrows()
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

void TestMProgress::pathIsPlainText()
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

void TestMProgress::longAndOddPaths()
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

void TestMProgress::question()
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

void TestMProgress::warning()
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

void TestMProgress::buttonsStayOnTheScreen()
{
    HeldDialog held(OpDelete);
    BoxAnswers answers;
    int height = 0;
    answers.meanwhile([&height] { height = QApplication::activeModalWidget()->height(); }).click("Ignore");
    held.dialog->myWarning("Error deleting file:\n/a/" + QString(250, QLatin1Char('\n')));
    QVERIFY2(height > 100 && height <= 600, QByteArray::number(height).constData());
}

/// As where the desktop wants icons on the buttons of dialogs.
void TestMProgress::buttonsHaveNoIcons()
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

void TestMProgress::questionAnswers_data()
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

void TestMProgress::questionAnswers()
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

void TestMProgress::returnIsTheDefaultButton()
{
    HeldDialog held(OpCopy);
    BoxAnswers answers;
    answers.key(Qt::Key_Return).key(Qt::Key_Return);
    held.dialog->myQuestion("x");
    QCOMPARE(held.dialog->answer, AnswerYes);
    held.dialog->myWarning("x");
    QCOMPARE(held.dialog->answer, AnswerRetry);
}

void TestMProgress::escapeAndCloseDoNotAnswer()
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

void TestMProgress::textIsPlain()
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

void TestMProgress::answersOfTheSlots_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<int>("answer");
    QTest::newRow("question") << QByteArray("myQuestion") << int(AnswerYes);
    QTest::newRow("warning") << QByteArray("myWarning") << int(AnswerRetry);
}

/// A box that ends by no button and not because the application quits.
void TestMProgress::answersOfTheSlots()
{
    QFETCH(QByteArray, slot);
    HeldDialog held(OpCopy);
    BoxAnswers answers;
    answers.meanwhile([&] { qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->reject(); })
        .close();
    QVERIFY(QMetaObject::invokeMethod(held.dialog, slot.constData(), Q_ARG(QString, "x")));
    QTEST(held.dialog->answer.load(), "answer");
}

void TestMProgress::abortButton()
{
    HeldDialog held(OpCopy);
    auto* button = held.dialog->findChild<QPushButton*>("pushButton");
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(held.dialog->abort, 1);
    QVERIFY(held.dialog->isVisible());
    QVERIFY(button->isEnabled());
    QCOMPARE(button->text(), QString("&Abort"));
    held.letGo();
    QTRY_VERIFY(!held.dialog->isVisible());
}

void TestMProgress::escapeAndTitleBarAbort()
{
    for (const bool escape : {true, false}) {
        HeldDialog held(OpCopy);
        if (escape) {
            QTest::keyClick(held.dialog.data(), Qt::Key_Escape);
        } else {
            QVERIFY(!held.dialog->close());
        }
        QCOMPARE(held.dialog->abort, 1);
        QVERIFY(held.dialog->isVisible());
        held.letGo();
        QTRY_VERIFY(!held.dialog->isVisible());
    }
}

void TestMProgress::closesWhenTheWorkerHasFinished()
{
    HeldDialog held(0);
    QTimer::singleShot(0, [&] {
        QVERIFY(held.dialog->isVisible());
        held.letGo();
    });
    held.dialog->exec();
    QVERIFY(!held.dialog->isVisible());
    QCOMPARE(held.dialog->abort, 0);
}

void TestMProgress::freesItself()
{
    HeldDialog held(0);
    held.letGo();
    held.dialog->exec();
    QVERIFY(!held.dialog.isNull()); // not before control is back in the event loop
    QTRY_VERIFY(held.dialog.isNull());
}

void TestMProgress::execAfterTheEnd()
{
    HeldDialog held(0);
    held.letGo();
    QTRY_VERIFY(!held.dialog->isVisible());
    held.dialog->exec(); // returns at once
    QVERIFY(!held.dialog->isVisible());
    QTRY_VERIFY(held.dialog.isNull());
}

void TestMProgress::neverExecuted()
{
    {
        HeldDialog held(OpCopy);
        held.letGo();
    }
    QTRY_COMPARE(threadCount(), m_threads);
}

void TestMProgress::destroyedWithAQuestionPending()
{
    TestDir dir;
    dir.files("item", 50);
    // Counting looks at 51 names and deleting at two more before it waits with its question, which no event
    // loop runs to show.
    for (int looks = 1; looks <= 53; looks += 4) {
        QSemaphore reached;
        FaultShim shim(dir.path());
        shim.before("lstat", "*", looks, [&] { reached.release(); });
        QWidget panel;
        gslDragList = QStringList{dir.path("item")};
        new MProgress(&panel, OpDelete); // goes with the panel
        QVERIFY(reached.tryAcquire(1, 60000));
    }
    QCOMPARE(dir.tree("item").size(), 50);
}

void TestMProgress::onTheStack()
{
    TestDir dir;
    gslDragList = QStringList{dir.file("f", "x")};
    QWidget panel;
    panel.show();
    {
        MProgress dialog(&panel, OpDelete);
        dialog.exec();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    QVERIFY(!dir.exists("f"));
}

void TestMProgress::parentGone()
{
    auto* panel = new QWidget;
    gslDragList.clear();
    const QPointer<MProgress> dialog = new MProgress(panel, OpCopy);
    delete panel;
    QVERIFY(dialog.isNull());
    QTRY_COMPARE(threadCount(), m_threads);
}

void TestMProgress::quitWhileAQuestionIsOpen_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("question") << QByteArray("myQuestion");
    QTest::newRow("warning") << QByteArray("myWarning");
}

void TestMProgress::quitWhileAQuestionIsOpen()
{
    QFETCH(QByteArray, slot);
    TestDir dir;
    dir.files("item", 3);
    FaultShim shim(dir.path());
    shim.fail("opendir", "item", EIO, 2, slot == "myWarning" ? FaultShim::always : 0);
    QWidget panel;
    panel.show();
    gslDragList = QStringList{dir.path("item")};
    QPointer<MProgress> dialog;
    int answer = 0;
    BoxAnswers answers;
    answers.meanwhile([] { QCoreApplication::quit(); }).close();
    QTimer::singleShot(0, [&] {
        dialog = new MProgress(&panel, OpDelete);
        dialog->exec();
        answer = dialog->answer;
    });
    QCoreApplication::exec();
    QCOMPARE(answer, int(AnswerAbort));
    QVERIFY(dialog.isNull()); // the end of the loop frees it, and waits for its thread
    QCOMPARE(dir.tree("item").size(), 3);
}

void TestMProgress::quitWhileItRuns()
{
    TestDir dir;
    dir.files("src", 3);
    FaultShim shim(dir.path());
    QWidget panel;
    panel.show();
    gslDragList = QStringList{dir.path("src")};
    gsDropBase = dir.path("to");
    QPointer<MProgress> dialog;
    QSemaphore go;
    shim.before("mkdir", "to/src", 1, [&] {
        QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
        go.acquire();
    });
    QTimer::singleShot(0, [&] {
        dialog = new MProgress(&panel, OpCopy);
        dialog->exec();
        QCOMPARE(dialog->abort, 1);
        go.release();
    });
    QCoreApplication::exec();
    QVERIFY(dialog.isNull());
    QCOMPARE(dir.tree("to/src"), QStringList());
}

void TestMProgress::noThreadToBeHad()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer does not work in a limited address space");
#endif
    TestDir dir;
    gslDragList = QStringList{dir.file("f", "x")};
    QWidget panel;
    panel.show();

    // Stacks that ended threads have left would be taken again, so they are put to use first.
    QSemaphore end;
    std::vector<std::unique_ptr<QThread>> users;
    for (int i = 0; i < 12; ++i) {
        users.emplace_back(QThread::create([&] { end.acquire(); }));
        users.back()->start();
    }
    QFile figures("/proc/self/statm");
    QVERIFY(figures.open(QIODevice::ReadOnly));
    const rlim_t pages = figures.readAll().split(' ').value(0).toULongLong();
    rlimit before = {};
    ::getrlimit(RLIMIT_AS, &before);
    rlimit tight = before;
    tight.rlim_cur = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + 1048576;
    ::setrlimit(RLIMIT_AS, &tight);
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("^QThread::start: Thread creation error"));
    const QPointer<MProgress> dialog = new MProgress(&panel, OpDelete);
    ::setrlimit(RLIMIT_AS, &before);
    end.release(12);
    for (const auto& user : users) {
        user->wait();
    }
    dialog->exec();
    QTRY_VERIFY(dialog.isNull());
    QVERIFY(dir.exists("f"));
}

void TestMProgress::hundredOperations()
{
    TestDir dir;
    dir.file("src/f", "x");
    const auto round = [&](int i) {
        OperationRun run(OpCopy, {dir.path("src")}, dir.path(QStringLiteral("to%1").arg(i)));
        return run.run();
    };
    for (int i = 0; i < 5; ++i) {
        QVERIFY(round(i));
    }
    const int descriptors = descriptorCount();
    const int widgets = QApplication::allWidgets().size();
    for (int i = 5; i < 105; ++i) {
        QVERIFY(round(i));
    }
    QTRY_COMPARE(threadCount(), m_threads);
    QTRY_COMPARE(descriptorCount(), descriptors);
    QCOMPARE(QApplication::allWidgets().size(), widgets);
}

void TestMProgress::windowStaysLive()
{
    TestDir dir;
    for (int i = 0; i < 40; ++i) {
        dir.files(QStringLiteral("src/%1").arg(i), 50);
    }
    dir.file("src/big", QByteArray(64 * 1048576, 'x'));
    // A busy machine may hold up one round. What holds up the window by itself does so in every round.
    qint64 copying = std::numeric_limits<qint64>::max();
    qint64 deleting = std::numeric_limits<qint64>::max();
    for (int round = 0; round < 5 && (copying >= 50 || deleting >= 50); ++round) {
        const QString to = dir.path(QStringLiteral("to%1").arg(round));
        {
            OperationRun run(OpCopy, {dir.path("src")}, to);
            GapMeter meter;
            QVERIFY(run.run());
            copying = qMin(copying, meter.longestMs);
        }
        OperationRun run(OpDelete, {to});
        run.answers.click("YesAll");
        GapMeter meter;
        QVERIFY(run.run());
        deleting = qMin(deleting, meter.longestMs);
    }
    QVERIFY2(
        copying < 50 && deleting < 50, qPrintable(QStringLiteral("%1 and %2 ms").arg(copying).arg(deleting)));
}

VANTREL_TEST_MAIN(TestMProgress)
#include "tst_MProgress.moc"
