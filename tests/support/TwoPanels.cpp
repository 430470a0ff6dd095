#include "tests/support/TwoPanels.h"

#include "app/aGlobal.h"
#include "app/aVantrel.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/Settings.h"

#include <QAction>
#include <QTest>

TwoPanels::TwoPanels()
{
    resetSettings();
    dir.folder(QStringLiteral("d"));
    const QString second = dir.folder(QStringLiteral("e"));
    dir.file(QStringLiteral("a"), "1234");
    dir.file(QStringLiteral("b"), "12");
    gstDrives = {LSDRIVE{dir.path(), QStringLiteral("One")}, LSDRIVE{second, QStringLiteral("Two")}};
    window = std::make_unique<aVantrel>();
    panel = gwPanel1;
    other = gwPanel2;
}

TwoPanels::~TwoPanels()
{
    window.reset();
    resetSettings();
}

bool TwoPanels::ready()
{
    window->activateWindow();
    const bool there = QTest::qWaitForWindowActive(window.get()) && waitForList(panel) && waitForList(other)
        && openFolder(other, dir.path(QStringLiteral("e")))
        && waitForTreeRow(panel, dir.path(QStringLiteral("d")));
    panel->list->setFocus();
    return there;
}

void TwoPanels::arrange(const char* action) const
{
    window->findChild<QAction*>(QLatin1String(action))->trigger();
}
