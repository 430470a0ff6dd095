#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// One recipe of examples/recipes.
struct Recipe
{
    QString name;
    QString gives;
    QStringList programs; ///< what it needs
    QStringList packages; ///< the Debian package of each program
    QStringList lines; ///< settings lines
};

/// @return path of a file below the project's folder
QString projectFile(const QString& relative);

/// @return all recipes, in the order of the file; alternatives have the same name
QList<Recipe> allRecipes();

/// @param marker a text of its line, to choose among alternatives
/// @return the first recipe of that name whose line has the marker; one without a name where there is none
Recipe recipeNamed(const QString& name, const QString& marker = QString());

/// @return those of its programs that are not on this machine
QStringList missingPrograms(const Recipe& recipe);
