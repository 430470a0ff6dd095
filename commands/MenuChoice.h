#pragma once

#include <QObject>

class QAction;
class QMenu;

/// What was chosen from a menu that is executed. Assistive technology triggers an entry and leaves the menu
/// open, so that QMenu::exec() would not return; this closes it. GUI thread only.
class MenuChoice : public QObject
{
    Q_OBJECT

public:
    /// @param menu menu to be executed, which outlives this
    explicit MenuChoice(QMenu* menu);

    /// @return the entry that was triggered, owned by its menu; null as long as none was
    QAction* entry() const { return m_entry; }

private slots:
    void choose(QAction* action);

private:
    QMenu* m_menu;
    QAction* m_entry = nullptr;
};
