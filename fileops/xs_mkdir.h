#pragma once

#include <QString>

/// Makes the missing folders on the way to the last "/" of a path; what follows that "/" is not made.
/// Any thread.
/// @param path taken as absolute, whatever it starts with; empty parts are passed over. Without a "/" there
///        is nothing to make
/// @return 0, or a negative number as soon as a folder cannot be made, with errno telling why. What exists on
///         the way is passed over, even where it is no folder
int xs_mkdir(const QString& path);
