#pragma once

#include <QDialog>

#include <atomic>
#include <memory>

class WorkerThread;

namespace Ui {
class Checksum;
}

/// Takes the MD5 and SHA-1 digests of a file on a thread of its own. The constructor shows the dialog, tells
/// of a file that cannot be read, and starts the work, which ends with the dialog at the latest.
class Checksum : public QDialog
{
    Q_OBJECT

public:
    /// @param parent window that the dialog is modal to
    /// @param path absolute path of the file
    Checksum(QWidget* parent, const QString& path);
    /// Stops the work and waits for its thread.
    ~Checksum() override;

    /// Stops the work, however the dialog is closed.
    void reject() override;

    // Shared with the worker. The path is never changed.
    const QString path;
    std::atomic<int> running{1}; ///< 0 once the work has ended or is to end; polled by the worker
    qint64 total = 0; ///< size of the file at the start, in bytes
    std::atomic<qint64> done{0}; ///< bytes read so far; more than total for a file that grows
    QString md5Text; ///< written by the worker before its last word, to be read only after it
    QString sha1Text; ///< likewise

public slots:
    /// The worker's last word.
    void isfinished();

protected:
    void timerEvent(QTimerEvent* event) override;

private slots:
    void on_OKButton_clicked();
    void on_CopyClipButton_clicked();

private:
    void buildForm();
    void checkFile();

    std::unique_ptr<Ui::Checksum> m_ui;
    std::unique_ptr<WorkerThread> m_thread; // last, so that it ends before what its worker touches
};
