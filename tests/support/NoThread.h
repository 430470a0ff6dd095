#pragma once

#include "tests/support/BoxAnswers.h"
#include "tests/support/FaultShim.h"

#include <QDialog>

#include <functional>

/// Grants no new thread while it lives. Make it, then the dialog whose worker wants one, and run that.
class NoThread
{
public:
    /// @param folder absolute path of some folder of the test
    explicit NoThread(const QString& folder);

    /// Executes the dialog and answers the box that has to say what is wrong; the test fails where it does
    /// not, where dialog and box are not modal at that time, or where they do not go together.
    /// @param meanwhile is run while the box stands
    void run(QDialog* dialog, const std::function<void()>& meanwhile = {});

    /// Answers to further boxes, and what they were.
    BoxAnswers boxes;

private:
    FaultShim m_shim;
};
