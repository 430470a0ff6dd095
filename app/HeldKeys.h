#pragma once

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QVector>

class QKeyEvent;
class QWidget;

/// Lets a key that is held down act only where it was pressed, and there on no button: repeated presses are
/// kept from every other window, so that the Return that chose a command answers none of its questions, and
/// the letter of a command is not typed into its dialog. In a dialog repeated presses move the focus and edit
/// text, and do nothing else. Filters all events of the application for as long as it lives; one for the
/// process, GUI thread only.
class HeldKeys : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    HeldKeys();
    ~HeldKeys() override;

    /// @return whether the press that is being handled, or the shortcut that it stands for, is a repeated
    /// one. Qt's
    ///         own mark is missing under X where Qt has read the release of a repeated press without the
    ///         press
    static bool isRepeating();

    /// Notes what X reports of keys. Nothing is filtered here.
    bool nativeEventFilter(const QByteArray& eventType, void* message, long* result) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// What is known of a key of the keyboard.
    struct Key
    {
        // Of X: a repeated press comes with a release of the same time.
        QVector<quint32> presses; ///< times of the last presses that are no repeated ones, in ms
        int delivered = 0; ///< how many of them have come to a widget
        quint32 released = 0; ///< time of the last release
        quint32 pressedIn = 0; ///< window of the last of them; 0 where X has reported none
        // Where X reports nothing.
        QPointer<const QWidget> window; ///< where it was pressed; null once that window is gone
        bool isKnown = false; ///< it was pressed in a window of the program
    };

    quint32 codeOf(const QKeyEvent& event);
    static void notePress(Key& key, quint32 time, quint32 window);
    static bool isRepeated(Key& key, const QKeyEvent& press, const QWidget& window);
    static bool isElsewhere(const Key& key, const QWidget& window);
    bool isKept(const QWidget& receiver, const QKeyEvent& press);

    QHash<quint32, Key> m_keys; ///< by the code of the keyboard, or where there is none by Qt's
    QHash<int, quint32> m_codes; ///< codes of the keyboard by Qt's, for events that lack them
    const QEvent* m_press = nullptr; ///< press that goes from widget to parent; only to compare
    QPointer<const QWidget> m_receiver; ///< widget that it came to first
    bool m_isRepeating = false;
};
