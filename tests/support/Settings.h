#pragma once

#include <QString>

/// Sets every setting that the settings file fills, and the window pointers, to what a fresh process has.
void resetSettings();

/// @return the drives as "path>label,path>label", in their order
QString drivesAsText();
/// @return the associations as "suffix>command,suffix>command", sorted by suffix
QString associationsAsText();
