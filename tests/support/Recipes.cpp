#include "tests/support/Recipes.h"

#include <QFile>
#include <QStandardPaths>
#include <QTest>

namespace {

void addNeed(Recipe& recipe, const QString& text)
{
    const QString between = QStringLiteral(" from ");
    recipe.programs.append(text.section(between, 0, 0));
    recipe.packages.append(text.section(between, 1));
}

void addLine(QList<Recipe>& recipes, const QString& line)
{
    const auto after = [&line](const char* mark) { return line.mid(static_cast<int>(qstrlen(mark))); };
    if (line.startsWith(QLatin1String("#: recipe "))) {
        recipes.append(Recipe());
        recipes.last().name = after("#: recipe ");
    } else if (line.startsWith(QLatin1String("#: gives "))) {
        recipes.last().gives = after("#: gives ");
    } else if (line.startsWith(QLatin1String("#: needs "))) {
        addNeed(recipes.last(), after("#: needs "));
    } else if (!line.isEmpty() && !line.startsWith(QLatin1Char('#'))) {
        recipes.last().lines.append(line);
    }
}

} // namespace

QString projectFile(const QString& relative)
{
    return QFINDTESTDATA(QStringLiteral("../../") + relative);
}

QList<Recipe> allRecipes()
{
    QFile file(projectFile(QStringLiteral("examples/recipes")));
    QList<Recipe> recipes;
    if (file.open(QIODevice::ReadOnly)) {
        const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        for (const QString& line : lines) {
            addLine(recipes, line);
        }
    }
    return recipes;
}

Recipe recipeNamed(const QString& name, const QString& marker)
{
    const QList<Recipe> recipes = allRecipes();
    for (const Recipe& recipe : recipes) {
        if (recipe.name == name && recipe.lines.join(QLatin1Char('\n')).contains(marker)) {
            return recipe;
        }
    }
    return Recipe();
}

QStringList missingPrograms(const Recipe& recipe)
{
    QStringList missing;
    for (const QString& program : recipe.programs) {
        if (QStandardPaths::findExecutable(program).isEmpty()) {
            missing.append(program);
        }
    }
    return missing;
}
