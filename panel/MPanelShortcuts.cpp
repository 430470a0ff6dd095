// What the mouse does in a panel by a double-click, a click on a header, a drag to the other panel and drags
// of the splitter and of the headers' edges, for those who have keys only. Keys that stand for commands are
// in MPanelKeyboard.cpp.

#include "panel/MPanel.h"

#include "app/HeldKeys.h"
#include "app/aGlobal.h"
#include "panel/MDriveBar.h"
#include "panel/MList.h"
#include "panel/MNavBar.h"
#include "panel/MTree.h"

#include <QApplication>
#include <QHeaderView>
#include <QPushButton>
#include <QShortcut>
#include <QSignalMapper>
#include <QSplitter>

namespace {

constexpr int columns = 4;

/// Parts of the panel's width that one key press moves the splitter by.
constexpr int splitterSteps = 40;

/// Pixels that one key press changes a column by.
constexpr int columnStepPixels = 10;

/// @return a key together with Ctrl
constexpr int ctrl(int key)
{
    return static_cast<int>(Qt::CTRL) + key;
}

/// A shortcut of a widget and what is in it. Qt would find it behind an open menu, too, which has all keys.
class PanelShortcut : public QShortcut
{
public:
    PanelShortcut(const QKeySequence& keys, QWidget* owner)
        : QShortcut(keys, owner)
    {
        setContext(Qt::WidgetWithChildrenShortcut);
    }

protected:
    bool event(QEvent* event) override
    {
        // Qt does not know of every repeated press.
        const bool isOneTooMany = !autoRepeat() && HeldKeys::isRepeating();
        return QApplication::activePopupWidget() != nullptr || isOneTooMany || QShortcut::event(event);
    }
};

/// A shortcut for a command.
void addCommand(QWidget* owner, const QKeySequence& keys, QObject* receiver, const char* slot)
{
    auto* shortcut = new PanelShortcut(keys, owner);
    shortcut->setAutoRepeat(false); // a key that is held is one command
    QObject::connect(shortcut, SIGNAL(activated()), receiver, slot);
}

/// A shortcut that goes on for as long as it is held.
void addMovement(QWidget* owner, const QKeySequence& keys, QObject* receiver, const char* slot)
{
    QObject::connect(new PanelShortcut(keys, owner), SIGNAL(activated()), receiver, slot);
}

} // namespace

void MPanel::makeShortcuts()
{
    // Only keys that neither stand for a command nor mean anything to the views: Return, + and - do, even
    // with Ctrl.
    addCommand(tree, ctrl(Qt::Key_O), tree, SLOT(openCurrent()));
    addCommand(list, ctrl(Qt::Key_O), list, SLOT(openCurrent()));
    // Qt opens context menus by the Menu key only, which many keyboards lack.
    const int menuKey = static_cast<int>(Qt::SHIFT) + Qt::Key_F10;
    addCommand(tree, menuKey, tree, SLOT(showMenuOfCurrent()));
    addCommand(list, menuKey, list, SLOT(showMenuOfCurrent()));
    addCommand(this, Qt::Key_F5, this, SLOT(copyToOther()));
    addCommand(this, Qt::Key_F6, this, SLOT(moveToOther()));
    addMovement(this, ctrl(Qt::Key_Greater), this, SLOT(widenTree()));
    addMovement(this, ctrl(Qt::Key_Less), this, SLOT(narrowTree()));
    addMovement(list, ctrl(Qt::Key_BracketRight), this, SLOT(widenColumn()));
    addMovement(list, ctrl(Qt::Key_BracketLeft), this, SLOT(narrowColumn()));

    auto* sections = new QSignalMapper(this);
    connect(sections, SIGNAL(mapped(int)), this, SLOT(headerClicked(int)));
    for (int column = 0; column < columns; ++column) {
        auto* shortcut = new PanelShortcut(ctrl(Qt::Key_1 + column), this);
        shortcut->setAutoRepeat(false);
        connect(shortcut, SIGNAL(activated()), sections, SLOT(map()));
        sections->setMapping(shortcut, column);
    }
}

QList<QWidget*> MPanel::tabStops() const
{
    QList<QWidget*> stops;
    for (QPushButton* button : qAsConst(driveBar->buttons)) {
        stops.append(button);
    }
    for (QPushButton* button : qAsConst(navBar->buttons)) {
        stops.append(button);
    }
    stops << tree << list;
    return stops;
}

void MPanel::copyToOther()
{
    sendToOther(Qt::CopyAction);
}

void MPanel::moveToOther()
{
    sendToOther(Qt::MoveAction);
}

/// Does what dragging the selection to the other panel's empty space does. Where that panel is not visible,
/// or a panel's folder is not there, nothing can be dragged.
void MPanel::sendToOther(Qt::DropAction action)
{
    MPanel* other = this == gwPanel1 ? gwPanel2 : gwPanel1;
    if (other == nullptr || other->size().isEmpty() || !takesCommands() || !other->showsFolder()) {
        return;
    }
    if (list->hasFocus()) {
        list->takePending();
    } else if (tree->hasFocus()) {
        tree->takePending();
    } else {
        return;
    }
    if (!gslDragList.isEmpty()) {
        other->gotDrop(action, other->currentPath);
    }
}

void MPanel::widenTree()
{
    moveSplitter(1);
}

void MPanel::narrowTree()
{
    moveSplitter(-1);
}

void MPanel::moveSplitter(int steps)
{
    const QList<int> before = splitter->sizes();
    const int all = before.at(0) + before.at(1);
    const int treeWidth = qBound(1, before.at(0) + steps * all / splitterSteps, all - 1);
    splitter->setSizes({treeWidth, all - treeWidth});
}

void MPanel::widenColumn()
{
    resizeColumn(columnStepPixels);
}

void MPanel::narrowColumn()
{
    resizeColumn(-columnStepPixels);
}

void MPanel::resizeColumn(int pixels)
{
    const int column = qMax(0, list->currentIndex().column());
    const int width = list->columnWidth(column) + pixels;
    list->setColumnWidth(column, qMax(list->horizontalHeader()->minimumSectionSize(), width));
}
