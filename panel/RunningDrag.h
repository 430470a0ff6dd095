#pragma once

#include <QPointer>
#include <QString>
#include <QStringList>

class MPanel;

/// A drag of this program, from its start to the command of its drop. Without one, whatever is dropped comes
/// from elsewhere. The command waits for the end of the drag: until then Wayland keeps the keyboard from
/// every window, and does not bear a box that ends within the drag. What is pending at the start is what is
/// dropped, whatever happens meanwhile. One at a time, on the GUI thread.
class RunningDrag
{
public:
    RunningDrag();
    ~RunningDrag();
    RunningDrag(const RunningDrag&) = delete;
    RunningDrag& operator=(const RunningDrag&) = delete;

    /// @return the one that runs; null where none does
    static RunningDrag* current();

    /// Notes what is dropped where.
    void drop(MPanel* panel, Qt::DropAction action, const QString& target);
    /// Ends the drag, and runs the command where something was dropped.
    void finish();

private:
    RunningDrag* m_before; ///< that ran already; null but in a test
    QStringList m_items;
    QString m_base;
    QPointer<MPanel> m_panel; ///< that was dropped in
    Qt::DropAction m_action = Qt::IgnoreAction;
    QString m_target;
};
