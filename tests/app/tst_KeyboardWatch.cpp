#include "app/KeyboardWatch.h"
#include "tests/support/Keyboard.h"
#include "tests/support/TestMain.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QWindow>

#include <memory>

/// Whose the keyboard is when it moves between windows of the program and of others.
class TestKeyboardWatch : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void windowHasIt();
    void userGoesToAnotherProgram();
    void userComesBack();
    void windowClosesAndNobodyHasIt();
    void windowIsDestroyed();
    void closedLongAgo();
    void userGoesAndThenItCloses();
    void anotherWindowTakesItUp();
    void windowIsShownAgain();
    void madeWhileNobodyHasIt();

private:
    std::unique_ptr<QWindow> one;
    std::unique_ptr<QWindow> two;
};

void TestKeyboardWatch::init()
{
    one = std::make_unique<QWindow>();
    two = std::make_unique<QWindow>();
    one->show();
    two->show();
    QVERIFY(QTest::qWaitForWindowActive(two.get()));
    giveKeyboard(one.get());
}

void TestKeyboardWatch::cleanup()
{
    giveKeyboard(nullptr);
    one.reset();
    two.reset();
}

void TestKeyboardWatch::windowHasIt()
{
    const KeyboardWatch watch;
    QVERIFY(watch.isOurs());
    giveKeyboard(two.get());
    QVERIFY(watch.isOurs());
}

void TestKeyboardWatch::userGoesToAnotherProgram()
{
    const KeyboardWatch watch;
    giveKeyboard(nullptr);
    QVERIFY(!watch.isOurs());
}

void TestKeyboardWatch::userComesBack()
{
    const KeyboardWatch watch;
    giveKeyboard(nullptr);
    giveKeyboard(two.get());
    QVERIFY(watch.isOurs());
}

void TestKeyboardWatch::windowClosesAndNobodyHasIt()
{
    const KeyboardWatch watch;
    one->hide();
    QVERIFY(watch.isOurs());
    giveKeyboard(nullptr);
    QVERIFY(watch.isOurs());
}

void TestKeyboardWatch::windowIsDestroyed()
{
    const KeyboardWatch watch;
    one.reset();
    QVERIFY(watch.isOurs());
}

void TestKeyboardWatch::closedLongAgo()
{
    const KeyboardWatch watch;
    one->hide();
    giveKeyboard(nullptr);
    QElapsedTimer time;
    time.start();
    QTRY_VERIFY(!watch.isOurs());
    QVERIFY2(time.elapsed() > 800, QByteArray::number(time.elapsed()).constData());
}

// The dialog of an operation that ends by itself.
void TestKeyboardWatch::userGoesAndThenItCloses()
{
    const KeyboardWatch watch;
    giveKeyboard(nullptr);
    one->hide();
    QVERIFY(!watch.isOurs());
}

void TestKeyboardWatch::anotherWindowTakesItUp()
{
    const KeyboardWatch watch;
    one->hide();
    giveKeyboard(two.get());
    one->show();
    one->hide(); // means nothing any more
    giveKeyboard(nullptr);
    QVERIFY(!watch.isOurs());
}

void TestKeyboardWatch::windowIsShownAgain()
{
    const KeyboardWatch watch;
    one->hide();
    one->show();
    giveKeyboard(nullptr);
    QVERIFY(!watch.isOurs());
}

void TestKeyboardWatch::madeWhileNobodyHasIt()
{
    giveKeyboard(nullptr);
    const KeyboardWatch watch;
    QVERIFY(watch.isOurs());
    QTRY_VERIFY(!watch.isOurs());
    giveKeyboard(two.get());
    QVERIFY(watch.isOurs());
}

VANTREL_TEST_MAIN(TestKeyboardWatch)
#include "tst_KeyboardWatch.moc"
