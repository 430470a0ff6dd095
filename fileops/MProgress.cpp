#include "fileops/MProgress.h"

#include "app/MessageBoxes.h"
#include "app/Truncated.h"
#include "app/WorkerThread.h"
#include "app/aGlobal.h"
#include "fileops/ProgressWorker.h"
#include "ui_MProgress.h"

#include <QIcon>
#include <QMessageBox>
#include <QMutexLocker>
#include <QPointer>
#include <QPushButton>
#include <QWindow>

#include <utility>

namespace {

constexpr int refreshIntervalMs = 100;

QString textOf(int kind)
{
    switch (kind) {
    case OpDelete:
        return QStringLiteral("Deleting:");
    case OpCopy:
        return QStringLiteral("Copying:");
    case OpMove:
        return QStringLiteral("Moving:");
    default:
        return QString();
    }
}

} // namespace

/// Texts and answers of a question's first three buttons, from the default one on. The last is always Abort.
struct MProgress::Choices
{
    QString firstText;
    int first;
    QString secondText;
    int second;
    QString thirdText;
    int third;
};

MProgress::MProgress(QWidget* parent, int operationKind, std::shared_ptr<const HeldFolder> itemsFolder)
    : QDialog(parent)
    , panel(parent)
    , kind(operationKind)
    , operationText(textOf(operationKind))
    , elapsed(std::make_unique<QElapsedTimer>())
    , ui(std::make_unique<Ui::MProgress>())
{
    ui->setupUi(this);
    // A dialog that is shown before exec() stays as it was shown.
    setModal(true);
    show();
    timerId = startTimer(refreshIntervalMs, Qt::CoarseTimer);
    elapsed->start();

    auto* worker = new ProgressWorker(this); // owned by the thread below
    worker->panel = parent;
    worker->itemsFolder = std::move(itemsFolder);
    work = std::make_unique<WorkerThread>(worker, this);
}

MProgress::~MProgress()
{
    abort = 1;
    answer = AnswerAbort;
    work.reset();
    killTimer(timerId);
}

int MProgress::exec()
{
    const QPointer<MProgress> self(this);
    const int result = workerEnded ? QDialog::result() : QDialog::exec();
    if (self) {
        if (!workerEnded) {
            abort = 1; // the application quits
        }
        deleteLater();
    }
    return result;
}

qint64 MProgress::undisturbedMs() const
{
    return elapsed->elapsed();
}

void MProgress::timerEvent(QTimerEvent* /*event*/)
{
    QMutexLocker lock(&gmutexLock);
    const QString path = currentPath;
    lock.unlock();
    ui->label_Operation->setText(operationText);
    ui->label_Path->setText(path);

    const auto doneNow = static_cast<float>(done);
    ui->progressBar->setValue(truncated(doneNow / static_cast<float>(total) * 100));

    // No seconds while a question is open: the speed reads "inf" then, or "nan". This is wanted.
    const float seconds = elapsed->isValid()
        ? static_cast<float>(static_cast<double>(pausedTime + elapsed->elapsed()) / 1000.0)
        : 0;
    const float speed = doneNow / seconds / 1e6F;
    ui->label_Speed->setText(QStringLiteral("Speed: ") + QString::number(static_cast<double>(speed), 'f', 2)
        + QStringLiteral(" MBytes/sec"));
}

void MProgress::isfinished()
{
    workerEnded = true;
    close();
}

void MProgress::on_pushButton_clicked()
{
    abort = 1;
}

void MProgress::reject()
{
    if (workerEnded) {
        QDialog::reject();
    } else {
        on_pushButton_clicked();
    }
}

void MProgress::myQuestion(const QString& text)
{
    ask(text,
        {QStringLiteral("Yes"), AnswerYes, QStringLiteral("YesAll"), AnswerYesAll, QStringLiteral("No"),
            AnswerNo});
}

void MProgress::myWarning(const QString& text)
{
    ask(text,
        {QStringLiteral("Retry"), AnswerRetry, QStringLiteral("Ignore"), AnswerIgnore,
            QStringLiteral("IgnoreAll"), AnswerIgnoreAll});
}

void MProgress::ask(const QString& text, const Choices& choices)
{
    pausedTime += elapsed->elapsed();
    elapsed->invalidate();

    // These four, for the places that their roles have in the row.
    QMessageBox box(QMessageBox::Warning, gsProduct, boxText(text),
        QMessageBox::Help | QMessageBox::Reset | QMessageBox::Apply | QMessageBox::Discard);
    box.setTextFormat(Qt::PlainText);
    box.button(QMessageBox::Help)->setText(choices.firstText);
    box.button(QMessageBox::Reset)->setText(choices.secondText);
    box.button(QMessageBox::Apply)->setText(choices.thirdText);
    box.button(QMessageBox::Discard)->setText(QStringLiteral("Abort"));
    const QList<QAbstractButton*> buttons = box.buttons();
    for (QAbstractButton* button : buttons) {
        button->setIcon(QIcon()); // some desktops put one there, which says what the button was
    }
    box.setDefaultButton(QMessageBox::Help);
    // Without a parent, but above this window: else another window could cover it, and Wayland would not give
    // it the keyboard back.
    box.winId();
    box.windowHandle()->setTransientParent(windowHandle());
    const int pressed = box.exec();

    if (pressed == QMessageBox::Reset) {
        answer = choices.second;
    } else if (pressed == QMessageBox::Apply) {
        answer = choices.third;
    } else if (pressed == QMessageBox::Discard || box.isVisible()) {
        // Still visible: not answered, the application quits.
        answer = AnswerAbort;
    } else {
        answer = choices.first;
    }
    elapsed->start();
}
