#pragma once

#include <QString>

class QFileInfo;

/// Text and path helpers without state. Each may be called from any thread.

/// Peels the first field off a line.
/// @param line the line; becomes what follows the separator, trimmed, or empty where there is no separator
/// @param sep the separator, compared case-sensitively
/// @return the text before the separator, trimmed; where there is none, the whole line as it was, not trimmed
///         (callers pass lines that are trimmed already)
QString xs_tok(QString& line, const QString& sep);

/// Writes a byte count the short way, in binary units: "512 Bytes", "1KB", "1.50KB", "10.5KB", "1EB".
/// @param bytes the count in bytes; 0 and less give "0 Bytes"
/// @return the number followed at once by its unit. An exact multiple has no decimals, a number below 10 two,
///         below 100 one. The division is done in single precision, which decides the digits of large counts.
QString FormatBytes(const qint64& bytes);

/// @param path a path with "/" separators
/// @return the text before its last "/"; "/" if that is empty; the path itself if it has no "/"
QString xs_UpOneLevel(const QString& path);

/// @param path a path, spelt anyhow; a relative one starts at the process's working folder
/// @return the same place as an absolute path without doubled slashes, "." and "..", and without a slash at
/// its
///         end. Links stay as they are: nothing is looked up. An empty path stays empty
QString cleanAbsolutePath(const QString& path);

/// @param info the file
/// @return its permission bits as octal digits, at least three: "755", "004"; no set-id or sticky bits
QString xs_formatPermisions(const QFileInfo& info);
