#include "app/HeldKeys.h"

#include "tests/support/TestMain.h"

#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>

#include <algorithm>
#include <memory>

namespace {

constexpr quint32 codeOfR = 27;

/// A dialog with a field and a default button.
class Form : public QDialog
{
public:
    Form()
        : field(this)
        , ok(QStringLiteral("&Ok"), this)
    {
        ok.setDefault(true);
        ok.move(0, 50);
    }

    QLineEdit field;
    QPushButton ok;
};

} // namespace

class TestHeldKeys : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void boxIsNotAnswered_data();
    void boxIsNotAnswered();
    void freshPressCounts_data();
    void freshPressCounts();
    void dialogIsNotAnswered_data();
    void dialogIsNotAnswered();
    void textIsEdited();
    void letterOfTheCommandIsNotTyped();
    void nextDialogOnTheSamePlace();
    void focusMoves();
    void viewsFollowAHeldKey();
    void keyFromAnotherProgram();
    void releaseAndPressAtOneMoment();
    void severalFreshPressesAtOnce();
    void copiesWithoutATime();
    void pressThatNeverCame();
    void heldSinceBeforeTheStart();

private:
    static void press(
        QWidget* receiver, int key, bool repeated, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void release(QWidget* receiver, int key);
    void x(bool isPress, quint32 time, const QWidget* in) const;
    static void deliver(QWidget* receiver, quint32 time);

    std::unique_ptr<HeldKeys> filter;
    std::unique_ptr<QListWidget> window; ///< stands for the main window
};

void TestHeldKeys::init()
{
    filter = std::make_unique<HeldKeys>();
    window = std::make_unique<QListWidget>();
    window->addItems({"a", "b", "c", "d"});
    window->setCurrentRow(0);
    window->show();
}

void TestHeldKeys::cleanup()
{
    window.reset();
    filter.reset();
}

/// Sends a widget what it gets of a press: a shortcut is looked for first.
/// @param time of the event in ms; 0 for none
void sendPress(
    QWidget* receiver, int key, bool repeated, Qt::KeyboardModifiers modifiers, quint32 time, quint32 code)
{
    const QString text = key < 128 ? QString(QChar(key)).toLower() : QString();
    for (const QEvent::Type type : {QEvent::ShortcutOverride, QEvent::KeyPress}) {
        QKeyEvent event(type, key, modifiers, code, 0, 0, text, repeated);
        event.setTimestamp(time);
        event.setAccepted(type == QEvent::KeyPress);
        QCoreApplication::sendEvent(receiver, &event);
    }
}

void TestHeldKeys::press(QWidget* receiver, int key, bool repeated, Qt::KeyboardModifiers modifiers)
{
    sendPress(receiver, key, repeated, modifiers, 0, 0);
}

void TestHeldKeys::release(QWidget* receiver, int key)
{
    QKeyEvent event(QEvent::KeyRelease, key, Qt::NoModifier);
    QCoreApplication::sendEvent(receiver, &event);
}

/// What X reports of the key R.
void TestHeldKeys::x(bool isPress, quint32 time, const QWidget* in) const
{
    const quint32 words[]
        = {quint32(isPress ? 2 : 3) | (codeOfR << 8U), time, 0, quint32(in->winId()), 0, 0, 0, 0};
    quint32 event[8];
    std::copy(std::begin(words), std::end(words), event);
    QVERIFY(!filter->nativeEventFilter("xcb_generic_event_t", event, nullptr));
}

/// What comes to a widget of a press of the key R, not marked as a repeated one.
void TestHeldKeys::deliver(QWidget* receiver, quint32 time)
{
    sendPress(receiver, Qt::Key_R, false, Qt::NoModifier, time, codeOfR);
}

void TestHeldKeys::boxIsNotAnswered_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::newRow("Return") << int(Qt::Key_Return) << int(Qt::NoModifier);
    QTest::newRow("Enter") << int(Qt::Key_Enter) << int(Qt::KeypadModifier);
    QTest::newRow("Space") << int(Qt::Key_Space) << int(Qt::NoModifier);
    QTest::newRow("Escape") << int(Qt::Key_Escape) << int(Qt::NoModifier);
    QTest::newRow("letter of a button") << int(Qt::Key_Y) << int(Qt::NoModifier);
    QTest::newRow("letter of a button with Alt") << int(Qt::Key_Y) << int(Qt::AltModifier);
}

/// Whether the key was pressed before the box came, in it, or in another program.
void TestHeldKeys::boxIsNotAnswered()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    for (const int pressed : {0, 1, 2}) {
        QMessageBox box(QMessageBox::Question, "t", "x", QMessageBox::Yes | QMessageBox::No);
        box.setDefaultButton(QMessageBox::Yes);
        box.open();
        const QSignalSpy ended(&box, &QDialog::finished);
        if (pressed == 0) {
            press(window.get(), key, false, Qt::KeyboardModifiers(modifiers));
        } else if (pressed == 1) {
            press(&box, Qt::Key_A, false); // a key without a meaning, and then another one
        }
        for (int i = 0; i < 5; ++i) {
            press(box.button(QMessageBox::Yes), key, true, Qt::KeyboardModifiers(modifiers));
            release(box.button(QMessageBox::Yes), key);
        }
        QCoreApplication::processEvents();
        QCOMPARE(ended.size(), 0);
        QVERIFY(!box.button(QMessageBox::Yes)->isDown());
        QVERIFY(box.isVisible());
    }
}

void TestHeldKeys::freshPressCounts_data()
{
    boxIsNotAnswered_data();
}

void TestHeldKeys::freshPressCounts()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    if (modifiers == int(Qt::AltModifier)) {
        return; // a shortcut, which only a real key press reaches
    }
    QMessageBox box(QMessageBox::Question, "t", "x", QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::Yes);
    box.open();
    const QSignalSpy ended(&box, &QDialog::finished);
    press(window.get(), key, false);
    press(box.button(QMessageBox::Yes), key, true);
    press(box.button(QMessageBox::Yes), key, false, Qt::KeyboardModifiers(modifiers));
    release(box.button(QMessageBox::Yes), key);
    QTRY_COMPARE(ended.size(), 1);
}

void TestHeldKeys::dialogIsNotAnswered_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Return") << int(Qt::Key_Return);
    QTest::newRow("Enter") << int(Qt::Key_Enter);
    QTest::newRow("Escape") << int(Qt::Key_Escape);
}

void TestHeldKeys::dialogIsNotAnswered()
{
    QFETCH(int, key);
    Form form;
    form.open();
    const QSignalSpy pressed(&form.ok, &QPushButton::clicked);
    press(&form.field, Qt::Key_B, false);
    press(&form.field, key, true);
    press(&form.field, key, true);
    QCOMPARE(pressed.size(), 0);
    QVERIFY(form.isVisible());
}

void TestHeldKeys::textIsEdited()
{
    Form form;
    form.open();
    press(&form.field, Qt::Key_R, false);
    press(&form.field, Qt::Key_R, true);
    press(&form.field, Qt::Key_R, true);
    QCOMPARE(form.field.text(), QStringLiteral("rrr"));
    press(&form.field, Qt::Key_Backspace, false);
    press(&form.field, Qt::Key_Backspace, true);
    QCOMPARE(form.field.text(), QStringLiteral("r"));
}

void TestHeldKeys::letterOfTheCommandIsNotTyped()
{
    press(window.get(), Qt::Key_R, false);
    Form form;
    form.open();
    for (int i = 0; i < 5; ++i) {
        press(&form.field, Qt::Key_R, true);
        release(&form.field, Qt::Key_R);
    }
    QCOMPARE(form.field.text(), QString());
    press(&form.field, Qt::Key_R, false);
    press(&form.field, Qt::Key_R, true);
    QCOMPARE(form.field.text(), QStringLiteral("rr"));
}

/// Dialogs that come one after the other often stand at one place in memory.
void TestHeldKeys::nextDialogOnTheSamePlace()
{
    alignas(Form) unsigned char place[sizeof(Form)];
    auto* form = new (place) Form;
    form->open();
    press(&form->field, Qt::Key_R, false);
    form->~Form();
    form = new (place) Form;
    form->open();
    press(&form->field, Qt::Key_R, true);
    QCOMPARE(form->field.text(), QString());
    form->~Form();
}

void TestHeldKeys::focusMoves()
{
    QMessageBox box(QMessageBox::Question, "t", "x", QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::Yes);
    box.show();
    QVERIFY(QTest::qWaitForWindowActive(&box));
    QTRY_VERIFY(box.button(QMessageBox::Yes)->hasFocus());
    press(box.button(QMessageBox::Yes), Qt::Key_Tab, false);
    press(box.button(QMessageBox::No), Qt::Key_Tab, true);
    QVERIFY(box.button(QMessageBox::Yes)->hasFocus());
}

void TestHeldKeys::viewsFollowAHeldKey()
{
    press(window.get(), Qt::Key_Down, false);
    press(window.get(), Qt::Key_Down, true);
    QCOMPARE(window->currentRow(), 2);
}

void TestHeldKeys::keyFromAnotherProgram()
{
    Form form;
    form.open();
    press(&form.field, Qt::Key_R, true);
    QCOMPARE(form.field.text(), QString());
    press(window.get(), Qt::Key_Down, true);
    QCOMPARE(window->currentRow(), 1);
}

/// Qt has seen the release alone, and takes the press for a fresh one.
void TestHeldKeys::releaseAndPressAtOneMoment()
{
    x(true, 1000, window.get());
    deliver(window.get(), 1000);
    Form form;
    form.open();
    for (quint32 time = 1500; time < 1600; time += 30) {
        x(false, time, &form);
        x(true, time, &form);
        deliver(&form.field, time);
        QVERIFY(HeldKeys::isRepeating());
    }
    QCOMPARE(form.field.text(), QString());
    x(false, 1610, &form);
    x(true, 1700, &form);
    deliver(&form.field, 1700);
    QVERIFY(!HeldKeys::isRepeating());
    QCOMPARE(form.field.text(), QStringLiteral("r"));
}

/// While the program was busy.
void TestHeldKeys::severalFreshPressesAtOnce()
{
    Form form;
    form.open();
    for (quint32 time = 1000; time < 1500; time += 100) {
        x(true, time, &form);
        x(false, time + 50, &form);
    }
    for (quint32 time = 1000; time < 1500; time += 100) {
        deliver(&form.field, time);
    }
    QCOMPARE(form.field.text(), QStringLiteral("rrrrr"));
}

/// Assistive technology is asked first, and what comes then are copies without a time.
void TestHeldKeys::copiesWithoutATime()
{
    x(true, 1000, window.get());
    deliver(window.get(), 0);
    QVERIFY(!HeldKeys::isRepeating());
    Form form;
    form.open();
    for (quint32 time = 1500; time < 1600; time += 30) {
        x(false, time, &form);
        x(true, time, &form);
        deliver(&form.field, 0);
    }
    QCOMPARE(form.field.text(), QString());
    for (quint32 time = 1700; time < 2000; time += 100) {
        x(false, time - 50, &form);
        x(true, time, &form);
    }
    for (int i = 0; i < 3; ++i) {
        deliver(&form.field, 0);
    }
    QCOMPARE(form.field.text(), QStringLiteral("rrr"));
}

/// The first press never came: the window was blocked, or a shortcut took it.
void TestHeldKeys::pressThatNeverCame()
{
    x(true, 1000, window.get());
    Form form;
    form.open();
    x(false, 1500, &form);
    x(true, 1500, &form);
    deliver(&form.field, 0);
    deliver(&form.field, 1500);
    QCOMPARE(form.field.text(), QString());
}

/// The first that is heard of the key is a repeated press.
void TestHeldKeys::heldSinceBeforeTheStart()
{
    Form form;
    form.open();
    for (const bool hasTime : {true, false, true}) {
        x(false, 1000, &form);
        x(true, 1000, &form);
        deliver(&form.field, hasTime ? 1000 : 0);
        QVERIFY(HeldKeys::isRepeating());
    }
    QCOMPARE(form.field.text(), QString());
    x(false, 1200, &form);
    x(true, 1300, &form);
    deliver(&form.field, 1300);
    QCOMPARE(form.field.text(), QStringLiteral("r"));
}

VANTREL_TEST_MAIN(TestHeldKeys)
#include "tst_HeldKeys.moc"
