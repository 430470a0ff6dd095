#include "app/aVantrel.h"

#include "app/KeyboardWatch.h"
#include "app/WindowSystem.h"
#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "ui_aVantrel.h"

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QScreen>
#include <QTimer>

namespace {

/// How long a window manager may take to give the window the size of the screen, in milliseconds.
constexpr int patienceMs = 500;

/// @return a shown panel owned by @p window, at a place that holds until the window is first resized
MPanel* makePanel(aVantrel* window, int x, const QString& accessibleName)
{
    auto* panel = new MPanel(window);
    panel->show();
    panel->setGeometry(x, 100, 500, 500);
    panel->setFrameShadow(QFrame::Sunken);
    panel->setFrameShape(QFrame::Panel);
    panel->setAccessibleName(accessibleName); // which of the two a view or a bar belongs to
    return panel;
}

} // namespace

aVantrel::aVantrel(QWidget* parent)
    : QMainWindow(parent)
    , ui(std::make_unique<Ui::aVantrel>())
    , keyboard(std::make_unique<KeyboardWatch>())
{
    ui->setupUi(this);
    gwMainframe = this;
    setWindowTitle(gsProduct);
    // The second panel comes first. That is wanted: while it is built there is no gwPanel1 yet.
    gwPanel2 = makePanel(this, 700, QStringLiteral("Panel 2"));
    gwPanel1 = makePanel(this, 100, QStringLiteral("Panel 1"));
    showMaximized();
    QTimer::singleShot(patienceMs, this, SLOT(fillScreen()));
}

aVantrel::~aVantrel() = default;

void aVantrel::resizeEvent(QResizeEvent* /*event*/)
{
    const int top = ui->menuBar->height();
    const int below = height() - top;
    switch (giWindowArrange) {
    case ArrangeSideBySide:
        // An odd width leaves its last column uncovered, as an odd height does its last row below. Both
        // wanted.
        gwPanel1->setGeometry(0, top, width() / 2, below);
        gwPanel2->setGeometry(width() / 2, top, width() / 2, below);
        break;
    case ArrangeSinglePanel:
        gwPanel1->setGeometry(0, top, width(), below);
        // Not hidden, only without area: it keeps its state until the arrangement changes.
        gwPanel2->setGeometry(0, 0, 0, 0);
        break;
    case ArrangeStacked:
        gwPanel1->setGeometry(0, top, width(), below / 2);
        gwPanel2->setGeometry(0, top + below / 2, width(), below / 2);
        break;
    default:
        break;
    }
}

bool aVantrel::focusNextPrevChild(bool next)
{
    const QList<QWidget*> stops = gwPanel1->tabStops() + gwPanel2->tabStops();
    const int count = stops.size();
    const int before = stops.indexOf(focusWidget());
    for (int step = 1; step <= count; ++step) {
        // From nowhere, the first one is next, and the last one before that.
        const int from = before < 0 && !next ? 0 : before;
        QWidget* stop = stops.at((from + (next ? step : count - step)) % count);
        if (stop->isEnabled() && !stop->visibleRegion().isEmpty()) {
            stop->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    return false;
}

bool aVantrel::event(QEvent* event)
{
    if (event->type() == QEvent::WindowUnblocked) {
        QMetaObject::invokeMethod(this, "takeKeyboard", Qt::QueuedConnection);
    }
    return QMainWindow::event(event);
}

/// A dialog can be gone before the window manager gives it the keyboard, as with a copy that takes no time.
/// This window has got it then and is not told: Qt holds that news back while a dialog is open, for the
/// dialog. Its lists would not know that they have the keyboard, and commands would find nothing to act on.
/// Where the user has gone to another program meanwhile, it stays there: letters are commands here.
void aVantrel::takeKeyboard()
{
    if (!keyboard->isOurs() || QApplication::activeModalWidget() != nullptr) {
        return;
    }
    askForKeyboard(this);
    noteKeyboard(this);
}

/// Without a window manager nobody makes the window as large as it was asked for.
void aVantrel::fillScreen()
{
    const QRect room = screen()->availableGeometry();
    if (isMaximized() && width() < room.width() / 2) {
        setGeometry(room);
    }
}

void aVantrel::arrange(int arrangement)
{
    giWindowArrange = arrangement;
    resizeEvent(nullptr);
    // Keys must not go to a panel that is not to be seen.
    if (gwPanel2->size().isEmpty() && gwPanel2->isAncestorOf(focusWidget())) {
        gwPanel1->list->setFocus(Qt::OtherFocusReason);
    }
}

void aVantrel::on_actionExit_triggered()
{
    close();
}

void aVantrel::on_actionTile_Vertically_triggered()
{
    arrange(ArrangeSideBySide);
}

void aVantrel::on_actionSingle_Panel_triggered()
{
    arrange(ArrangeSinglePanel);
}

void aVantrel::on_actionTile_Horizontally_triggered()
{
    arrange(ArrangeStacked);
}

void aVantrel::on_actionAbout_triggered()
{
    if (QAccessible::isActive()) {
        // A screen reader that chooses this waits for the return, and could not read the box meanwhile.
        QMetaObject::invokeMethod(this, "showAbout", Qt::QueuedConnection);
    } else {
        showAbout();
    }
}

void aVantrel::showAbout()
{
    QMessageBox::about(this, QStringLiteral("About Vantrel"),
        QLatin1Char('\n') + gsProduct + QLatin1Char(' ') + gsVersion + QStringLiteral("\n\n") + gsCopywrite);
}
