#include "tests/support/ProgressWatch.h"

#include "fileops/MProgress.h"

#include <QCoreApplication>
#include <QEvent>

ProgressWatch::ProgressWatch()
{
    qApp->installEventFilter(this);
}

bool ProgressWatch::eventFilter(QObject* watched, QEvent* event)
{
    auto* dialog = event->type() == QEvent::Show ? qobject_cast<MProgress*>(watched) : nullptr;
    if (dialog != nullptr && !dialogs.contains(dialog)) {
        dialogs.append(dialog);
        kinds.append(dialog->kind);
        parents.append(dialog->parentWidget());
    }
    return false;
}
