#pragma once

#include <QDialog>

#include <atomic>
#include <memory>

class WorkerThread;

namespace Ui {
class DialogFileSize;
}

/// Counts the folders, files and bytes below a path on a thread of its own and shows them while they grow.
/// The count starts at once, and ends with the dialog at the latest.
class DialogFileSize : public QDialog
{
    Q_OBJECT

public:
    /// @param parent window that the dialog is modal to
    /// @param path absolute path of the file or folder to count
    DialogFileSize(QWidget* parent, const QString& path);
    /// Stops the count and waits for its thread.
    ~DialogFileSize() override;

    /// Shows path, device and the counts as they are now.
    void UpdateDisplay();
    /// Stops the count, however the dialog is closed.
    void reject() override;

    // Shared with the worker. The first two are never changed after it started.
    const QString path;
    const QString device; ///< of the file system that holds the path
    std::atomic<qint64> folderCount{0};
    std::atomic<qint64> fileCount{0};
    std::atomic<qint64> byteCount{0};
    std::atomic<int> running{1}; ///< 0 once the count has ended or is to end; polled by the worker

public slots:
    /// The worker's last word.
    void isfinished();

protected:
    void timerEvent(QTimerEvent* event) override;

private slots:
    void on_pushButton_clicked();

private:
    std::unique_ptr<Ui::DialogFileSize> m_ui;
    std::unique_ptr<WorkerThread> m_thread; // last, so that it ends before what its worker touches
};
