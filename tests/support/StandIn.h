#pragma once

#include "tests/support/TestDir.h"

#include <QString>
#include <QStringList>
#include <QVector>

/// An executable that stands for a program which the code under test starts: it notes what it was given.
class StandIn
{
public:
    /// What a start gave.
    struct Call
    {
        QString folder; ///< working folder, with links resolved
        QStringList arguments;
    };

    /// @param dir folder that the program and its notes are made in; must outlive the object
    explicit StandIn(const TestDir& dir, const QString& relative = QStringLiteral("stand-in"));

    /// @return full path of the program
    QString path() const { return m_path; }
    /// @return what was noted so far, oldest first; a start shows some time after the program was started
    QVector<Call> calls() const;
    /// Waits for the first call that was not taken yet.
    /// @return the call; one without a folder where none came in time
    Call next();
    /// Waits until @p count starts were noted.
    bool waitForCalls(int count) const;

private:
    QString m_path;
    QString m_notes;
    int m_taken = 0;
};
