#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

/// What lies below a folder, byte for byte: relative paths to "folder", "file " and the content, or "link "
/// and the target.
using FileTree = QMap<QString, QByteArray>;

/// @return everything below @p folder
FileTree fileTreeOf(const QString& folder);

/// @return how two trees differ, one line each, in words for a failed test; empty where they do not
QStringList differencesOf(const FileTree& found, const FileTree& expected);
