#include "panel/myFileSystemModel.h"

#include "app/TextHelpers.h"
#include "panel/FileIcons.h"
#include "panel/MPanel.h"

#include <QCommonStyle>
#include <QDateTime>
#include <QFileInfo>
#include <QLocale>

#include <array>

myFileSystemModel::myFileSystemModel(MPanel* owner)
    : QFileSystemModel(owner)
    , panel(owner)
    , m_reader(new FolderReader(this))
{
    setIconProvider(&m_provider);
    m_feedTimer.setInterval(0);
    connect(&m_feedTimer, SIGNAL(timeout()), this, SLOT(feed()));
    connect(m_reader, SIGNAL(readingDone(FolderReading)), this, SLOT(takeReading(FolderReading)));
}

void myFileSystemModel::setColumns(int n)
{
    columns = n;
}

QVariant myFileSystemModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const std::array<QString, 4> names{
        QStringLiteral("Name"), QStringLiteral("Size"), QStringLiteral("Owner"), QStringLiteral("Modified")};
    if (section < 0 || section >= columns || orientation != Qt::Horizontal) {
        return QVariant();
    }
    if (role == Qt::DisplayRole) {
        const auto at = static_cast<std::size_t>(section);
        return at < names.size() ? QVariant(names.at(at)) : QVariant();
    }
    if (role == Qt::TextAlignmentRole) {
        return section == 0 ? Qt::AlignLeft : Qt::AlignRight;
    }
    return QVariant();
}

QVariant myFileSystemModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || isOutsideRoot(index)) {
        return QVariant(QString());
    }
    switch (role) {
    case Qt::TextAlignmentRole:
        return index.column() == 0 ? Qt::AlignLeft : Qt::AlignRight;
    case Qt::DecorationRole:
        return index.column() == 0 ? QVariant(icon(index)) : QFileSystemModel::data(index, role);
    case Qt::DisplayRole:
        return displayText(index);
    default:
        return QFileSystemModel::data(index, role);
    }
}

bool myFileSystemModel::isOutsideRoot(const QModelIndex& index) const
{
    return !filePath(index).contains(panel->rootPath);
}

QVariant myFileSystemModel::displayText(const QModelIndex& index) const
{
    static const QLocale english(QLocale::English, QLocale::AnyCountry);
    if (index.column() >= columns) {
        return QVariant();
    }
    switch (index.column()) {
    case 1:
        return english.toString(size(index));
    case 2:
        return ownerTextOf(fileInfo(index));
    case 3:
        return lastModified(index).toString(QStringLiteral("yyyy-MM-dd hh:mm"));
    default:
        return QFileSystemModel::data(index, Qt::DisplayRole);
    }
}

QString myFileSystemModel::ownerTextOf(const QFileInfo& info) const
{
    const uint id = info.ownerId();
    auto owner = m_owners.find(id);
    if (owner == m_owners.end()) {
        owner = m_owners.insert(id, info.owner());
    }
    return owner.value() + QLatin1Char(' ') + xs_formatPermisions(info);
}

QIcon myFileSystemModel::icon(const QModelIndex& index) const
{
    if (index == panel->currentTreeIndex) {
        return QIcon::fromTheme(QStringLiteral("folder-open"), QIcon());
    }
    const QFileInfo info = fileInfo(index);
    if (info.isSymLink()) {
        return QCommonStyle().standardIcon(QStyle::SP_CommandLink);
    }
    return FileIcons::instance().icon(info);
}

void myFileSystemModel::getFolderStats(QString path, qint64& dirs, qint64& files, qint64& bytes)
{
    if (!m_loaded.folder.isEmpty() && m_loaded.folder == path && m_feeds.isEmpty()) {
        dirs = m_loaded.dirs; // counted when the folder was read
        files = m_loaded.files;
        bytes = m_loaded.bytes;
        return;
    }
    dirs = 0;
    files = 0;
    bytes = 0;
    const QModelIndex parent = index(path);
    const int rows = parent.isValid() ? rowCount(parent) : 0; // else these would be the top's
    for (int row = 0; row < rows; ++row) {
        const QModelIndex child = index(row, 0, parent);
        if (entryName(child) == QLatin1String("..")) {
            continue;
        }
        if (isDir(child)) {
            ++dirs;
        } else {
            ++files;
        }
        bytes += fileInfo(child).size();
    }
}

QModelIndex myFileSystemModel::showFolder(const QString& path)
{
    const bool isFolder = path.startsWith(QLatin1Char('/')) && QFileInfo(path).isDir();
    const QModelIndex folder = isFolder ? setRootPath(path) : QModelIndex();
    // It may have gone between the two.
    m_showsNothing = !folder.isValid() || rootPath() != path;
    return m_showsNothing ? QModelIndex() : folder;
}

int myFileSystemModel::rowCount(const QModelIndex& parent) const
{
    return m_showsNothing ? 0 : QFileSystemModel::rowCount(parent);
}

bool myFileSystemModel::hasChildren(const QModelIndex& parent) const
{
    return !m_showsNothing && QFileSystemModel::hasChildren(parent);
}

QModelIndex myFileSystemModel::index(const QString& path, int column) const
{
    return m_showsNothing ? QModelIndex() : QFileSystemModel::index(path, column);
}

QString myFileSystemModel::entryName(const QModelIndex& index) const
{
    return index.isValid() ? QFileSystemModel::data(index, FileNameRole).toString() : QString();
}

void myFileSystemModel::refresh()
{
    m_reader->refresh();
}

void myFileSystemModel::refreshUnwatched()
{
    m_reader->refreshUnwatched();
}
