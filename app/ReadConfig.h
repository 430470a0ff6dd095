#pragma once

#include <QString>

#include <functional>

/// Reads the settings file and fills the settings of aGlobal. Called once, on the GUI thread, before any
/// window exists; it needs an application object, since a file that cannot be opened is told in a message
/// box. Malformed lines never stop the reading: unknown keys are passed over, missing fields are read as
/// empty.
/// @param path full path of the file
void ReadConfig(QString path);

/// One line of the settings file, as the reader took it.
struct ConfigLine
{
    int number = 0; ///< from 1
    QString text; ///< the whole line, trimmed; of one that means nothing no more than some 600,000 characters
    QString key; ///< lower case; empty for a comment and for a line that has none
    QString value; ///< what follows the first "=", trimmed
    bool known = false; ///< whether the key is one of the program's
};

/// What ReadConfig() does, without a box.
/// @param taken told of every line, comments too, once the settings hold what the line says; may be empty
/// @return false where the file cannot be opened; the settings are as before then
bool ReadConfigLines(const QString& path, const std::function<void(const ConfigLine&)>& taken);
