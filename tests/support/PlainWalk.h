#pragma once

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStorageInfo>
#include <QVector>

#include <sys/stat.h>
#include <utility>

/// Totals of a folder tree.
struct TreeTotals
{
    qint64 folders = 0;
    qint64 files = 0;
    qint64 bytes = 0;
    bool operator==(const TreeTotals& other) const
    {
        return folders == other.folders && files == other.files && bytes == other.bytes;
    }
};

/// The disk-usage count written the plain way: an expression, a volume look-up and a QDir list for each
/// folder. The measure of the real one, in its results and in its speed.
class PlainWalk
{
public:
    PlainWalk(const QString& path, const QString& noRecurse)
        : m_noRecurse(noRecurse)
        , m_device(QString::fromLocal8Bit(QStorageInfo(path).device()))
    {
        const QFileInfo info(path);
        if (info.exists() && info.isFile()) {
            m_totals.files += 1;
            m_totals.bytes += info.size();
        } else {
            walk(path);
        }
    }
    const TreeTotals& totals() const { return m_totals; }

private:
    void walk(const QString& folder)
    {
        const QRegularExpression noRecurse(m_noRecurse, QRegularExpression::CaseInsensitiveOption);
        if (noRecurse.isValid() && noRecurse.match(folder).hasMatch()) {
            return;
        }
        if (QString::fromLocal8Bit(QStorageInfo(folder).device()) != m_device) {
            return;
        }
        struct stat info
        {
        };
        ::stat(QFile::encodeName(folder).constData(), &info);
        const std::pair<dev_t, ino_t> place(info.st_dev, info.st_ino);
        if (m_ancestors.contains(place)) {
            return; // a link back up
        }
        m_ancestors.append(place);
        const QFileInfoList entries = QDir(folder).entryInfoList(
            QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::NoSort);
        for (const QFileInfo& entry : entries) {
            m_totals.bytes += entry.size();
            if (entry.isDir()) {
                m_totals.folders += 1;
                walk(entry.absoluteFilePath());
            } else {
                m_totals.files += 1;
            }
        }
        m_ancestors.removeLast();
    }

    QString m_noRecurse;
    QString m_device;
    QVector<std::pair<dev_t, ino_t>> m_ancestors;
    TreeTotals m_totals;
};
