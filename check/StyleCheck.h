#pragma once

#include "check/Finding.h"

#include <QPair>

/// Looks at a style sheet. Needs a QApplication, whose own style sheet it empties.
/// @param lines number and value of every "style" line, in their order
/// @return what does not parse, with the first line of the rule; properties that no style sheet has
Findings checkStyle(const QList<QPair<int, QString>>& lines);
