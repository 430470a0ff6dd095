#include "panel/LoadingIconProvider.h"

#include <QFileInfo>
#include <QIcon>

#include <utility>

QIcon LoadingIconProvider::icon(IconType /*type*/) const
{
    return QIcon();
}

QIcon LoadingIconProvider::icon(const QFileInfo& /*info*/) const
{
    return QIcon();
}

QString LoadingIconProvider::type(const QFileInfo& info) const
{
    constexpr int digits
        = 8; // more than a folder has entries, and the same for all, so that texts compare like numbers
    if (m_ranks.isEmpty()) {
        return m_type;
    }
    const int rank = m_ranks.value(info.fileName(), m_ranks.size());
    return QStringLiteral("%1").arg(rank, digits, 10, QLatin1Char('0'));
}

void LoadingIconProvider::setRanks(QHash<QString, int> ranks)
{
    m_ranks = std::move(ranks);
}

void LoadingIconProvider::nextRound()
{
    m_type = QString::number(++m_round);
}
