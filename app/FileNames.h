#pragma once

#include <cstddef>

class QTextCodec;

/// A name on disk is bytes. Here they are UTF-8 in every locale, as they are for all that writes names in a
/// file manager's time. A name that is not UTF-8 has no text, and is not listed.

/// Makes Qt take file names, and what the system tells of its errors, for UTF-8. To be called once, on the
/// only thread, before Qt has to do with either: before the application object is made.
void useUtf8FileNames();

/// @return the codec of the user's locale, in which text is read from files and written to the terminal
QTextCodec* localeCodec();

/// May be called from any thread.
/// @param name of an entry on disk
/// @param length of the name, in bytes
/// @return whether it is UTF-8, as all names are that QDir lists
bool isFileName(const char* name, std::size_t length);
