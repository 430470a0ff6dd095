#include "tests/support/ListSelection.h"

#include "panel/MList.h"
#include "panel/MPanel.h"
#include "tests/support/PanelWindow.h"

#include <QItemSelectionModel>
#include <QTest>

void selectRows(const MPanel* panel, const QStringList& names)
{
    panel->list->clearSelection();
    for (const QString& name : names) {
        QVERIFY2(listIndex(panel, name).isValid(), qPrintable(name));
        panel->list->selectionModel()->select(
            listIndex(panel, name), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}
