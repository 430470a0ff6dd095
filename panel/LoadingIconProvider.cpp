#include "panel/LoadingIconProvider.h"

#include <QIcon>

QIcon LoadingIconProvider::icon(IconType /*type*/) const
{
    return QIcon();
}

QIcon LoadingIconProvider::icon(const QFileInfo& /*info*/) const
{
    return QIcon();
}

QString LoadingIconProvider::type(const QFileInfo& /*info*/) const
{
    return m_type;
}

void LoadingIconProvider::nextRound()
{
    m_type = QString::number(++m_round);
}
