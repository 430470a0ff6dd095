#include "app/aVantrel.h"
#include "tests/support/Settings.h"
#include "tests/support/TestMain.h"

#include <QDialog>
#include <QElapsedTimer>

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
    void takesItAfterAShortAbsence();

private:
    void unblock() const;
    void note(Qt::ApplicationState state) const;

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

void TestKeyboardBack::note(Qt::ApplicationState state) const
{
    QVERIFY(QMetaObject::invokeMethod(
        window.get(), "noteApplicationState", Qt::DirectConnection, Q_ARG(Qt::ApplicationState, state)));
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
    QApplication::setActiveWindow(nullptr);
    note(Qt::ApplicationInactive);
    QElapsedTimer away;
    away.start();
    QTRY_VERIFY(away.hasExpired(1100));
    note(Qt::ApplicationInactive); // told again: the absence does not begin anew
    unblock();
    QCOMPARE(QApplication::activeWindow(), nullptr);
    note(Qt::ApplicationActive);
    unblock();
    QCOMPARE(QApplication::activeWindow(), window.get());
}

void TestKeyboardBack::takesItAfterAShortAbsence()
{
    QApplication::setActiveWindow(nullptr);
    note(Qt::ApplicationInactive);
    unblock();
    QCOMPARE(QApplication::activeWindow(), window.get());
}

VANTREL_TEST_MAIN(TestKeyboardBack)
#include "tst_KeyboardBack.moc"
