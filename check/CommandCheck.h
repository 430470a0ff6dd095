#pragma once

#include "check/Finding.h"

/// Looks at the command of a menu entry or an association.
/// @param line number of its line
/// @param command the command as the reader took it, not empty
/// @return programs that are not found, words that the launcher hands on other than they seem to be meant
Findings checkCommand(int line, const QString& command);
