#include "panel/RunningDrag.h"

#include "app/aGlobal.h"
#include "panel/MPanel.h"

namespace {

RunningDrag* running = nullptr;

} // namespace

RunningDrag::RunningDrag()
    : m_before(running)
    , m_items(gslDragList)
    , m_base(gsDragBase)
{
    running = this;
}

RunningDrag::~RunningDrag()
{
    if (running == this) {
        running = m_before;
    }
}

RunningDrag* RunningDrag::current()
{
    return running;
}

void RunningDrag::drop(MPanel* panel, Qt::DropAction action, const QString& target)
{
    m_panel = panel;
    m_action = action;
    m_target = target;
}

void RunningDrag::finish()
{
    running = m_before;
    if (!m_panel.isNull()) {
        gslDragList = m_items;
        gsDragBase = m_base;
        m_panel->gotDrop(m_action, m_target);
    }
}
