#pragma once

#include <QObject>
#include <QQueue>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <functional>

/// Answers the dialogs and menus that the code under test runs. Arm it with one function for each before the
/// call that runs them; whenever the event loop is free it looks for the one that is open and hands it to the
/// next function, which must end it. One that nobody waits for, or of another class than the next function
/// takes, is closed and fails the test in the destructor, as does one that never came. Message boxes are left
/// to BoxAnswers, and progress dialogs end by themselves.
class ModalAnswers : public QObject
{
    Q_OBJECT

public:
    explicit ModalAnswers(QObject* parent = nullptr);
    ~ModalAnswers() override;

    /// Hands the next dialog or menu, which must be a Widget, to @p answer.
    template <typename Widget>
    ModalAnswers& meet(const std::function<void(Widget*)>& answer)
    {
        m_answers.enqueue([this, answer](QWidget* widget) {
            auto* met = qobject_cast<Widget*>(widget);
            if (met == nullptr) {
                m_faults.append(QStringLiteral("met %1 instead of %2")
                                    .arg(QLatin1String(widget->metaObject()->className()),
                                        QLatin1String(Widget::staticMetaObject.className())));
                return;
            }
            answer(met);
        });
        return *this;
    }

    /// Number of functions that nothing was handed to yet.
    int left() const { return m_answers.size(); }

private:
    void look();

    QQueue<std::function<void(QWidget*)>> m_answers;
    QStringList m_faults;
    QTimer m_timer;
    bool m_busy = false;
};
