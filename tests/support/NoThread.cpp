#include "tests/support/NoThread.h"

#include <QApplication>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

/// A dialog that says nothing would stand for ever.
constexpr int patienceMs = 10000;

} // namespace

NoThread::NoThread(const QString& folder)
    : m_shim(folder)
{
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("^QThread::start: Thread creation error"));
    m_shim.refuseThreads();
}

void NoThread::run(QDialog* dialog, const std::function<void()>& meanwhile)
{
    const QPointer<QDialog> alive(dialog);
    const QSignalSpy ended(dialog, &QDialog::finished);
    bool inFront = false;
    boxes
        .meanwhile([&] {
            const QWidget* box = QApplication::activeModalWidget();
            inFront
                = box != dialog && box->parentWidget() == dialog && dialog->isVisible() && dialog->isModal();
            if (meanwhile) {
                meanwhile();
            }
        })
        .click(QStringLiteral("OK"));
    QTimer::singleShot(patienceMs, dialog, [dialog] { dialog->done(QDialog::Rejected); });
    dialog->exec();
    QCOMPARE(boxes.seen().size(), 1);
    const BoxAnswers::Box& box = boxes.seen().constFirst();
    QCOMPARE(box.icon, QMessageBox::Critical);
    QCOMPARE(box.title, QStringLiteral("Error"));
    QCOMPARE(box.text,
        QStringLiteral("Failed to start the operation:\n"
                       "The system has too many tasks or too little memory."));
    QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
    QVERIFY(inFront);
    QVERIFY(!alive.isNull());
    QVERIFY(!dialog->isVisible());
    QCOMPARE(ended.size(), 1);
}
