#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

class MProgress;
class QWidget;

/// Notes the progress dialogs that are shown while it lives, oldest first.
class ProgressWatch : public QObject
{
public:
    ProgressWatch();

    bool eventFilter(QObject* watched, QEvent* event) override;

    QList<QPointer<MProgress>> dialogs;
    QList<int> kinds; ///< OperationKind of each
    QList<QWidget*> parents; ///< only to compare
};
