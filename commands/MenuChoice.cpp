#include "commands/MenuChoice.h"

#include <QMenu>

MenuChoice::MenuChoice(QMenu* menu)
    : m_menu(menu)
{
    connect(menu, SIGNAL(triggered(QAction*)), this, SLOT(choose(QAction*)));
}

void MenuChoice::choose(QAction* action)
{
    m_entry = action;
    m_menu->close();
}
