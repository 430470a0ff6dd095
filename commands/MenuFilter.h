#pragma once

#include <QString>

struct LSMENU;

/// Which entries of the context menu an item gets. Both may be called from any thread.

/// @param path path or name of a file
/// @return "|suffix|" in lower case, empty for a path that ends in a dot. The search for the dot runs over
/// the whole
///         path on purpose, so one in a folder's name counts too.
QString suffixPattern(const QString& path);

/// @param entry an entry that is no separator
/// @param pattern suffix pattern of a file; the empty one is found in every entry's types on purpose
/// @return whether the entry is in the menu of such an item
bool isOffered(const LSMENU& entry, bool isFolder, const QString& pattern);
