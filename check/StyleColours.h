#pragma once

#include <QString>
#include <QStringList>

/// Looks for colours in the values of colour properties, borders, outlines and backgrounds.
/// @param sheet a style sheet without comments and quoted texts
/// @return names and functions that are no colours, in their order
QStringList unknownColours(const QString& sheet);
