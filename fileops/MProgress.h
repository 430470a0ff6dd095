#pragma once

#include <QDialog>
#include <QElapsedTimer>

#include <atomic>
#include <memory>

class HeldFolder;
class WorkerThread;
namespace Ui {
class MProgress;
}

/// What an operation does with the pending items.
enum OperationKind {
    OpDelete = 1, ///< deletes every item, folders with all that is in them
    OpCopy = 2, ///< copies every item into the folder gsDropBase
    OpMove = 3, ///< renames every item into the folder gsDropBase
    OpCopyTo = 4 ///< copies the only item to the new file gsDropBase
};

/// The user's answer to a question of the running operation.
enum AnswerCode {
    AnswerRetry = 1,
    AnswerIgnore = 2,
    AnswerIgnoreAll = 3,
    AnswerAbort = 4,
    AnswerYes = 5,
    AnswerYesAll = 6,
    AnswerNo = 7
};

/// The dialog that stands while a copy, move or delete runs. Making it shows it, modal to the whole
/// application, and starts the worker on its own thread; what to do is read from gslDragList, gsDragBase and
/// gsDropBase, which stay untouched until the operation has ended. exec() then waits for the end.
///
/// The dialog closes when the worker has finished and not before: its button, Escape and the title bar all
/// tell the worker to stop. Destroying the dialog earlier, on the GUI thread, stops the worker and waits.
/// It must not be destroyed from within one of its own questions, for then the worker waits for that
/// question.
class MProgress : public QDialog
{
    Q_OBJECT

public:
    /// @param parent the panel that the operation was started in; only a parent, nothing else is known of it
    /// @param kind OperationKind; any other number counts the items and does nothing
    /// @param itemsFolder the folder that the items were chosen in: what a deletion finds in another one that
    ///        stands in its place is kept, and told. Null where nothing is known of it
    MProgress(QWidget* parent, int kind, std::shared_ptr<const HeldFolder> itemsFolder = nullptr);
    ~MProgress() override;

    /// Runs the dialog until the operation has ended, and frees the dialog once control is back in the event
    /// loop. The caller must have made it with new, or must not care: a dialog that ends earlier is just
    /// gone.
    int exec() override;
    /// @return milliseconds since the dialog was shown or the last question was answered. GUI thread only
    qint64 undisturbedMs() const;

    // What the two threads share. The worker reads and writes these fields while it runs; those that both
    // threads touch are atomic, without any order between them.
    QWidget* const panel;
    const int kind;
    QString operationText; ///< GUI thread only
    std::atomic<int> abort{0}; ///< 1: end at the next check. Set by both threads, never cleared
    std::atomic<int> deleteAll{0}; ///< 1: delete files without asking
    std::atomic<int> ignoreAll{0}; ///< 1: pass over failures without a word
    std::atomic<int> replaceAll{0}; ///< 1: replace files without asking
    std::atomic<int> answer{0}; ///< AnswerCode of the last question
    std::atomic<qint64> fileCount{0}; ///< whatever is no folder, found by counting
    std::atomic<qint64> folderCount{0};
    std::atomic<qint64> total{1}; ///< bytes and files to do, or items to move. Starts at 1, never at 0
    std::atomic<qint64> done{0}; ///< the part of total that is done
    qint64 pausedTime = 1; ///< ms that went by before the last question; GUI thread only. Starts at 1
    QString currentPath; ///< guarded by gmutexLock

public slots:
    /// The worker has finished: closes the dialog.
    void isfinished();
    /// Tells the worker to stop. The dialog stays until it has.
    void on_pushButton_clicked();
    /// Asks whether to go on with a file and stores Yes, YesAll, No or Abort in answer.
    void myQuestion(const QString& text);
    /// Reports a failure and stores Retry, Ignore, IgnoreAll or Abort in answer.
    void myWarning(const QString& text);

    /// Escape and the title bar: like the button while the worker runs.
    void reject() override;

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct Choices;

    void ask(const QString& text, const Choices& choices);

    int timerId = 0;
    std::unique_ptr<QElapsedTimer> elapsed; ///< time since the last question; invalid while one is open
    std::unique_ptr<Ui::MProgress> ui;
    bool workerEnded = false;
    std::unique_ptr<WorkerThread> work; ///< last, so that it goes first
};
