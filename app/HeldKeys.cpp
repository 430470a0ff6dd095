#include "app/HeldKeys.h"

#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>

#include <cstring>

namespace {

HeldKeys* theOne = nullptr;

/// A key event as X sends it, up to what is needed here.
struct XKeyEvent
{
    quint8 type;
    quint8 keyCode;
    quint16 sequence;
    quint32 time; ///< ms
    quint32 root;
    quint32 window;
};

constexpr quint8 xKeyPress = 2;
constexpr quint8 xKeyRelease = 3;
constexpr quint8 sentByAProgram = 0x80;

/// Stands for the window of another program: no window has this number.
constexpr quint32 elsewhere = 1;

bool movesTheFocus(int key)
{
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        return true;
    default:
        return false;
    }
}

/// @return whether a press in a text field can only change or move in its text
bool editsText(const QWidget& receiver, const QKeyEvent& press)
{
    switch (press.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
        return false; // these are for the buttons
    default:
        return qobject_cast<const QLineEdit*>(&receiver) != nullptr
            && !press.modifiers().testFlag(Qt::AltModifier);
    }
}

} // namespace

HeldKeys::HeldKeys()
{
    theOne = this;
    qApp->installEventFilter(this);
    qApp->installNativeEventFilter(this);
}

HeldKeys::~HeldKeys()
{
    theOne = nullptr;
}

bool HeldKeys::isRepeating()
{
    return theOne != nullptr && theOne->m_isRepeating;
}

bool HeldKeys::nativeEventFilter(const QByteArray& eventType, void* message, long* /*result*/)
{
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    XKeyEvent event{};
    std::memcpy(&event, message, sizeof event);
    const int type = event.type & ~sentByAProgram;
    if (type == xKeyRelease) {
        m_keys[event.keyCode].released = event.time;
    } else if (type == xKeyPress) {
        notePress(m_keys[event.keyCode], event.time, event.window);
    }
    return false;
}

void HeldKeys::notePress(Key& key, quint32 time, quint32 window)
{
    constexpr int remembered = 32; // more than a user presses while the program is busy
    if (time != 0 && key.released == time) { // repeated
        key.pressedIn = key.pressedIn != 0 ? key.pressedIn : elsewhere;
        return;
    }
    if (key.presses.size() == remembered) {
        key.presses.removeFirst();
        key.delivered = qMax(0, key.delivered - 1);
    }
    key.presses.append(time);
    key.pressedIn = window;
}

/// Copies of events, which are made while assistive technology listens, lack some of what the first ones
/// tell.
quint32 HeldKeys::codeOf(const QKeyEvent& event)
{
    if (event.nativeScanCode() != 0) {
        m_codes[event.key()] = event.nativeScanCode();
    }
    return m_codes.value(event.key(), static_cast<quint32>(event.key()));
}

bool HeldKeys::eventFilter(QObject* watched, QEvent* event)
{
    const bool isPress = event->type() == QEvent::KeyPress;
    if ((!isPress && event->type() != QEvent::ShortcutOverride) || !watched->isWidgetType()) {
        return false;
    }
    const auto& receiver = static_cast<const QWidget&>(*watched);
    if (event == m_press && !m_receiver.isNull() && receiver.isAncestorOf(m_receiver)) {
        return false; // a parent is offered what its child did not take
    }
    m_press = isPress ? event : nullptr;
    m_receiver = &receiver;
    if (!isKept(receiver, static_cast<const QKeyEvent&>(*event))) {
        return false;
    }
    m_press = nullptr;
    event->accept(); // for ShortcutOverride that is: no shortcut, but a press, which is kept as well
    return true;
}

bool HeldKeys::isKept(const QWidget& receiver, const QKeyEvent& press)
{
    const QWidget* window = receiver.window();
    Key& key = m_keys[codeOf(press)];
    m_isRepeating = isRepeated(key, press, *window);
    if (!m_isRepeating) {
        key.window = window;
        key.isKnown = true;
        return false;
    }
    const bool isDialog = qobject_cast<const QDialog*>(window) != nullptr;
    if (key.pressedIn == 0 && !key.isKnown) {
        return isDialog || qobject_cast<const QMenu*>(window) != nullptr; // pressed in another program
    }
    return isElsewhere(key, *window)
        || (isDialog && !movesTheFocus(press.key()) && !editsText(receiver, press));
}

bool HeldKeys::isRepeated(Key& key, const QKeyEvent& press, const QWidget& window)
{
    if (press.isAutoRepeat() || key.pressedIn == 0) {
        return press.isAutoRepeat();
    }
    const bool isDelivery = press.type() == QEvent::KeyPress;
    if (press.timestamp() != 0) {
        const int at = key.presses.lastIndexOf(static_cast<quint32>(press.timestamp()));
        key.delivered = at < 0 ? key.delivered : at + (isDelivery ? 1 : 0);
        return at < 0;
    }
    // A copy: it is that of the first press that has not come yet.
    if (key.delivered == key.presses.size() || isElsewhere(key, window)) {
        return true;
    }
    key.delivered += isDelivery ? 1 : 0;
    return false;
}

bool HeldKeys::isElsewhere(const Key& key, const QWidget& window)
{
    return key.pressedIn != 0 ? key.pressedIn != window.internalWinId() : key.window != &window;
}
