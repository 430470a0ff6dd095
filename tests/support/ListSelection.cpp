#include "tests/support/ListSelection.h"

#include "panel/MList.h"
#include "panel/MPanel.h"
#include "tests/support/PanelWindow.h"

#include <QItemSelectionModel>

void selectRows(const MPanel* panel, const QStringList& names)
{
    panel->list->clearSelection();
    for (const QString& name : names) {
        panel->list->selectionModel()->select(
            listIndex(panel, name), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}
