#pragma once

#include <QFileIconProvider>
#include <QHash>
#include <QString>

/// What the file system model asks for each entry that it loads: icon and type text. The standard provider
/// looks into files for both, although only a screenful of rows is ever drawn; this one gives nothing away,
/// and icons are looked up when a cell is drawn (FileIcons).
class LoadingIconProvider : public QFileIconProvider
{
public:
    QIcon icon(IconType type) const override;
    QIcon icon(const QFileInfo& info) const override;
    /// @return a text without meaning, never empty: an entry whose type is empty is taken for one without
    /// facts and never
    ///         shown
    QString type(const QFileInfo& info) const override;

    /// Makes the next facts of a known entry count as new. The model compares type, permissions and time of
    /// an entry, but neither size nor owner; a type that differs makes it take them as well.
    void nextRound();

    /// Sets places in an order, which the type of an entry tells from now on: sorted by type, the entries are
    /// in that order.
    /// @param ranks place of each name, from 0; empty for types without meaning
    void setRanks(QHash<QString, int> ranks);

private:
    QString m_type = QStringLiteral("0");
    int m_round = 0;
    QHash<QString, int> m_ranks;
};
