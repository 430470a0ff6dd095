#include "tests/support/BoxAnswers.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPointer>
#include <QPushButton>
#include <QTest>

namespace {

constexpr int lookIntervalMs = 2;

QString plain(QString text)
{
    return text.remove(QLatin1Char('&'));
}

QMessageBox* visibleBox()
{
    if (auto* active = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        return active;
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        auto* box = qobject_cast<QMessageBox*>(window);
        if (box != nullptr && box->isVisible()) {
            return box;
        }
    }
    return nullptr;
}

QAbstractButton* buttonOf(QMessageBox* box, const QString& text)
{
    const QList<QAbstractButton*> buttons = box->buttons();
    for (QAbstractButton* button : buttons) {
        if (plain(button->text()) == plain(text)) {
            return button;
        }
    }
    return nullptr;
}

} // namespace

BoxAnswers::BoxAnswers(QObject* parent)
    : QObject(parent)
{
    connect(&m_timer, &QTimer::timeout, this, &BoxAnswers::look);
    m_timer.start(lookIntervalMs);
}

BoxAnswers::~BoxAnswers()
{
    if (!m_unexpected.isEmpty()) {
        QTest::qFail(
            qPrintable(QStringLiteral("unexpected box: ") + m_unexpected.join(QStringLiteral(" | "))),
            __FILE__, __LINE__);
    }
}

BoxAnswers& BoxAnswers::click(const QString& buttonText)
{
    m_answers.enqueue([this, buttonText](QMessageBox* box) {
        if (QAbstractButton* button = buttonOf(box, buttonText)) {
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
        m_unexpected.append(QStringLiteral("no button \"%1\" in: %2").arg(buttonText, box->text()));
        giveUp(box);
    });
    return *this;
}

BoxAnswers& BoxAnswers::key(Qt::Key key)
{
    m_answers.enqueue([key](QMessageBox* box) { QTest::keyClick(box, key); });
    return *this;
}

BoxAnswers& BoxAnswers::close()
{
    m_answers.enqueue([](QMessageBox* box) { box->close(); });
    return *this;
}

BoxAnswers& BoxAnswers::otherwise(const QStringList& buttonTexts)
{
    m_otherwise = buttonTexts;
    return *this;
}

BoxAnswers& BoxAnswers::otherwise(std::function<QString(const QString&)> choose)
{
    m_choose = std::move(choose);
    return *this;
}

BoxAnswers& BoxAnswers::meanwhile(std::function<void()> what)
{
    m_answers.enqueue([this, what = std::move(what)](QMessageBox* box) {
        what();
        if (m_answers.isEmpty()) {
            m_unexpected.append(QStringLiteral("no answer after meanwhile for: ") + box->text());
            giveUp(box);
        } else {
            m_answers.dequeue()(box);
        }
    });
    return *this;
}

QStringList BoxAnswers::texts() const
{
    QStringList all;
    for (const Box& box : m_seen) {
        all.append(box.text);
    }
    return all;
}

/// Gets rid of a box, also of one that cannot be closed but by its buttons.
void BoxAnswers::giveUp(QMessageBox* box)
{
    box->close();
    if (box->isVisible() && box->button(QMessageBox::Discard) != nullptr) {
        box->button(QMessageBox::Discard)->click();
    } else if (box->isVisible()) {
        box->reject();
    }
}

void BoxAnswers::look()
{
    if (m_busy) {
        return;
    }
    QMessageBox* box = visibleBox();
    if (box == nullptr || box->property("answeredByTest").toBool()) {
        return;
    }
    box->setProperty("answeredByTest", true);

    Box noted;
    noted.title = box->windowTitle();
    noted.text = box->text();
    noted.icon = box->icon();
    noted.modal = box->isModal();
    noted.parent = box->parentWidget();
    const QList<QAbstractButton*> buttons = box->buttons();
    for (QAbstractButton* button : buttons) {
        noted.buttons.append(plain(button->text()));
    }
    if (box->defaultButton() != nullptr) {
        noted.defaultButton = plain(box->defaultButton()->text());
    }
    m_seen.append(noted);

    const QStringList otherwise = m_choose ? QStringList{m_choose(noted.text)} : m_otherwise;
    if (m_answers.isEmpty() && otherwise == QStringList{QString()}) {
        return;
    }
    if (m_answers.isEmpty() && !otherwise.isEmpty()) {
        for (const QString& text : otherwise) {
            if (QAbstractButton* button = buttonOf(box, text)) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
    }
    if (m_answers.isEmpty()) {
        m_unexpected.append(noted.text);
        giveUp(box);
        return;
    }
    m_busy = true;
    m_answers.dequeue()(box);
    m_busy = false;
}
