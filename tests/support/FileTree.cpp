#include "tests/support/FileTree.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <climits>
#include <unistd.h>

namespace {

QByteArray describe(const QFileInfo& info)
{
    const QString path = info.filePath();
    if (info.isSymLink()) {
        QByteArray target(PATH_MAX, '\0');
        target.truncate(static_cast<int>(::readlink(
            QFile::encodeName(path).constData(), target.data(), static_cast<std::size_t>(target.size()))));
        return "link " + target;
    }
    if (info.isDir()) {
        return "folder";
    }
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? "file " + file.readAll() : QByteArray("unreadable");
}

} // namespace

FileTree fileTreeOf(const QString& folder)
{
    FileTree tree;
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        tree.insert(entries.filePath().mid(folder.length() + 1), describe(entries.fileInfo()));
    }
    return tree;
}

QStringList differencesOf(const FileTree& found, const FileTree& expected)
{
    QStringList all;
    const QString absent = QStringLiteral("nothing");
    const auto text = [&](const FileTree& tree, const QString& path) {
        return tree.contains(path) ? QString::fromUtf8(tree.value(path).left(60)) : absent;
    };
    FileTree both = found;
    for (auto entry = expected.begin(); entry != expected.end(); ++entry) {
        both.insert(entry.key(), entry.value());
    }
    for (auto entry = both.begin(); entry != both.end(); ++entry) {
        const QString& path = entry.key();
        if (found.contains(path) != expected.contains(path) || found.value(path) != expected.value(path)) {
            all.append(QStringLiteral("%1: found %2, expected %3")
                           .arg(path, text(found, path), text(expected, path)));
        }
    }
    return all;
}
