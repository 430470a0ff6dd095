#pragma once

#include "tests/support/BoxAnswers.h"
#include "tests/support/FaultShim.h"

#include <QString>
#include <QStringList>
#include <QWidget>

#include <atomic>
#include <functional>

class MProgress;

/// Runs one file operation from the pending items to the end of its dialog, with real threads and boxes.
/// Answers are armed before run(); what the dialog held at the end can be read after it.
class OperationRun
{
public:
    /// @param kind OperationKind
    /// @param items full paths; @param destination gsDropBase
    OperationRun(int kind, const QStringList& items, const QString& destination = QString());

    /// Makes the dialog, waits for its end, and for the end of its thread. Fails the test after a minute.
    /// @return whether it came to its end
    bool run();

    /// @return the dialog, for any thread; waits until run() has got hold of it
    MProgress* dialog() const;
    /// What the dialog's button does, for any thread.
    void abortNow();

    BoxAnswers answers;
    /// Called with the dialog before exec().
    std::function<void(MProgress*)> atStart;

    // The dialog's fields at the end.
    int abort = -1;
    int deleteAll = -1;
    int ignoreAll = -1;
    int replaceAll = -1;
    int answer = -1;
    qint64 fileCount = -1;
    qint64 folderCount = -1;
    qint64 total = -1;
    qint64 done = -1;
    QString lastPath;

private:
    void note(const MProgress& dialog);

    int m_kind;
    std::atomic<MProgress*> m_dialog{nullptr};
    QWidget m_panel;
};

/// Lets the worker of the next operation use files as an ordinary user, where the test runs as root: before
/// the first look at the first item, which counting does, its thread gives up root's rights on files for
/// good.
/// @param item the operation's first item, relative to the watched folder
void asOrdinaryUser(FaultShim& shim, const QString& item);

/// Makes the folder and all that is in it belong to the user whom asOrdinaryUser() means.
void giveToOrdinaryUser(const QString& folder);
