#pragma once

#include <QStringList>

/// Splits a command line of the settings at blanks. Nothing is quoted, expanded or left out, and several
/// blanks are one. May be called from any thread.
/// @return the program and its arguments; at least one word, empty where the line is
QStringList commandWords(QString command);
