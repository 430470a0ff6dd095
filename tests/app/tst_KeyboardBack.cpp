#include "app/aVantrel.h"
#include "tests/support/Keyboard.h"
#include "tests/support/Settings.h"
#include "tests/support/TestMain.h"

#include <QDialog>
#include <QWindow>

#include <memory>

/// What the main window does when the dialog before it is gone.
class TestKeyboardBack : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { window.reset(); }

    void takesTheKeyboard();
    void takesItAfterARealDialog();
    void leavesItToTheNextDialog();
    void leavesItToAnotherProgram();

private:
    void unblock() const;

    std::unique_ptr<aVantrel> window;
};

void TestKeyboardBack::init()
{
    resetSettings();
    window = std::make_unique<aVantrel>();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
}

/// What Qt tells the window when no dialog is before it any more, and all that follows from it.
void TestKeyboardBack::unblock() const
{
    QEvent event(QEvent::WindowUnblocked);
    QCoreApplication::sendEvent(window.get(), &event);
    QCoreApplication::processEvents();
}

void TestKeyboardBack::takesTheKeyboard()
{
    QApplication::setActiveWindow(nullptr);
    unblock();
    QCOMPARE(QApplication::activeWindow(), window.get());
}

void TestKeyboardBack::takesItAfterARealDialog()
{
    QDialog dialog(window.get());
    dialog.setModal(true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    dialog.hide();
    QApplication::setActiveWindow(nullptr);
    QTRY_COMPARE(QApplication::activeWindow(), window.get());
}

void TestKeyboardBack::leavesItToTheNextDialog()
{
    QDialog dialog(window.get());
    dialog.setModal(true);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    unblock();
    QCOMPARE(QApplication::activeWindow(), &dialog);
}

void TestKeyboardBack::leavesItToAnotherProgram()
{
    giveKeyboard(nullptr);
    unblock();
    QCOMPARE(QApplication::activeWindow(), nullptr);
    giveKeyboard(window->windowHandle());
    unblock();
    QCOMPARE(QApplication::activeWindow(), window.get());
}

VANTREL_TEST_MAIN(TestKeyboardBack)
#include "tst_KeyboardBack.moc"
