#pragma once

#include <QMessageBox>
#include <QObject>
#include <QQueue>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <functional>

/// Answers the message boxes that the code under test shows. Arm it with answers before the call that shows
/// them; it looks for a visible QMessageBox whenever the event loop is free, notes what the box says, and
/// answers it. A box that no answer was armed for is noted as unexpected, closed, and fails the test in the
/// destructor.
class BoxAnswers : public QObject
{
    Q_OBJECT

public:
    /// What a box showed.
    struct Box
    {
        QString title;
        QString text;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QStringList buttons; ///< texts, in the order of QMessageBox::buttons()
        QString defaultButton; ///< text of the default button
        bool modal = false;
        QWidget* parent = nullptr; ///< only to compare, it may be gone
    };

    explicit BoxAnswers(QObject* parent = nullptr);
    ~BoxAnswers() override;

    /// Answers the next box by a click on the button with that text ("&" ignored).
    BoxAnswers& click(const QString& buttonText);
    /// Answers the next box by a key.
    BoxAnswers& key(Qt::Key key);
    /// Answers the next box by closing its window.
    BoxAnswers& close();
    /// Answers every box that no other answer is armed for: by the first of these buttons that it has.
    BoxAnswers& otherwise(const QStringList& buttonTexts);
    /// Answers every box that no other answer is armed for: by the button that @p choose names for its text.
    /// An empty name leaves the box as it is.
    BoxAnswers& otherwise(std::function<QString(const QString& text)> choose);
    /// Runs @p what while the next box is open, before the answer that is armed after it.
    BoxAnswers& meanwhile(std::function<void()> what);

    /// All boxes seen so far, oldest first.
    const QVector<Box>& seen() const { return m_seen; }
    /// Texts of the boxes seen so far.
    QStringList texts() const;
    /// Number of armed answers that no box has used.
    int left() const { return m_answers.size(); }

private:
    void look();

    void giveUp(QMessageBox* box);

    QQueue<std::function<void(QMessageBox*)>> m_answers;
    QStringList m_otherwise;
    std::function<QString(const QString&)> m_choose;
    QVector<Box> m_seen;
    QStringList m_unexpected;
    QTimer m_timer;
    bool m_busy = false;
};
