#pragma once

#include <QStringList>

class MPanel;

/// Selects the rows of the listing that have these names, one after the other, and no others. Neither the
/// focus nor the current row changes.
void selectRows(const MPanel* panel, const QStringList& names);
