#include "panel/FileIcons.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QPointer>

namespace {

/// Some dozens of screenfuls; an icon is a few words of memory, since the pictures behind it are shared.
constexpr int rememberedIcons = 2048;

} // namespace

FileIcons& FileIcons::instance()
{
    static QPointer<FileIcons> icons;
    if (icons.isNull()) {
        icons = new FileIcons(QCoreApplication::instance());
    }
    return *icons;
}

FileIcons::FileIcons(QObject* parent)
    : QObject(parent)
    , m_icons(rememberedIcons)
{
}

QIcon FileIcons::icon(const QFileInfo& info)
{
    const QString key = info.filePath() + (info.isDir() ? QLatin1Char('/') : QLatin1Char('\0'))
        + QString::number(info.lastModified().toMSecsSinceEpoch());
    const QIcon* known = m_icons.object(key);
    if (known != nullptr) {
        return *known;
    }
    const QIcon found = lookUp(info);
    m_icons.insert(key, new QIcon(found));
    return found;
}

/// The provider has no icon for what is neither file nor folder: pipes, sockets and devices. The file system
/// model gives them the generic one.
QIcon FileIcons::lookUp(const QFileInfo& info) const
{
    const QIcon found = m_provider.icon(info);
    if (!found.isNull()) {
        return found;
    }
    return m_provider.icon(info.isDir() ? QFileIconProvider::Folder : QFileIconProvider::File);
}
