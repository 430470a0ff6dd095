#include "tests/support/ModalAnswers.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTest>

namespace {

constexpr int modalLookIntervalMs = 2;
const char* const answeredProperty = "answeredByTest";

/// @return the dialog or menu that waits for the user; null where there is none
QWidget* openWidget()
{
    if (QWidget* popup = QApplication::activePopupWidget()) {
        return popup;
    }
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr || modal->inherits("QMessageBox") || modal->inherits("MProgress")) {
        return nullptr;
    }
    return modal;
}

} // namespace

ModalAnswers::ModalAnswers(QObject* parent)
    : QObject(parent)
{
    connect(&m_timer, &QTimer::timeout, this, &ModalAnswers::look);
    m_timer.start(modalLookIntervalMs);
}

ModalAnswers::~ModalAnswers()
{
    if (!m_answers.isEmpty()) {
        m_faults.append(QStringLiteral("%1 dialogs or menus never came").arg(m_answers.size()));
    }
    if (!m_faults.isEmpty()) {
        QTest::qFail(qPrintable(m_faults.join(QStringLiteral(" | "))), __FILE__, __LINE__);
    }
}

void ModalAnswers::look()
{
    const QPointer<QWidget> widget = openWidget();
    if (m_busy || widget.isNull() || widget->property(answeredProperty).toBool()) {
        return;
    }
    widget->setProperty(answeredProperty, true);
    const QString className = QLatin1String(widget->metaObject()->className());
    if (m_answers.isEmpty()) {
        m_faults.append(QStringLiteral("unexpected ") + className);
        widget->close();
        return;
    }
    m_busy = true;
    m_answers.dequeue()(widget);
    m_busy = false;
    if (widget && widget->isVisible()) {
        m_faults.append(className + QStringLiteral(" stays open"));
        widget->close();
    }
}
