#pragma once

#include <QString>

/// Reads the settings file and fills the settings of aGlobal. Called once, on the GUI thread, before any
/// window exists; it needs an application object, since a file that cannot be opened is told in a message
/// box. Malformed lines never stop the reading: unknown keys are passed over, missing fields are read as
/// empty.
/// @param path full path of the file
void ReadConfig(QString path);
