#pragma once

#include "tests/support/PanelWindow.h"
#include "tests/support/Recipes.h"
#include "tests/support/TestDir.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

/// Starts recipes as the program's own commands do, in a panel that shows the folder "w" of a test folder. A
/// stand-in for the terminal runs what it is given, types the answers, and keeps what is shown. Relative
/// paths are relative to "w".
class RecipeRun
{
public:
    /// Neither the user's editor nor the user's git settings are used by this process from now on. Once,
    /// before open().
    void prepare();
    void open();
    void close();

    /// Adds the column "hard" and rows with names that are hard to hand on.
    static void hardNames();
    /// @return the name of the running row
    static QString name();
    /// A name with all that is hard in one.
    static const char* const allInOne;

    /// @return whether there is such a recipe and all that it needs is on this machine
    static bool has(const Recipe& recipe);

    /// Starts the recipe as the context menu does, and waits for the terminal if it opens one.
    /// @param path full path of the item
    /// @param answers what the user types in the terminal
    /// @param second full path of the other panel's item
    /// @return what the terminal showed
    QString run(const Recipe& recipe, const QString& path, const QByteArray& answers = QByteArray(),
        const QString& second = QString());
    /// The same for the first recipe of that name.
    QString run(const char* recipe, const QString& path, const QByteArray& answers = QByteArray(),
        const QString& second = QString());

    QString file(const QString& relative, const QByteArray& content = "content\n");
    QByteArray read(const QString& relative) const { return dir->read(QStringLiteral("w/") + relative); }
    QString path(const QString& relative = QString()) const
    {
        return dir->path(QStringLiteral("w/") + relative);
    }
    QStringList tree(const QString& relative = QString()) const
    {
        return dir->tree(relative.isEmpty() ? QStringLiteral("w") : QStringLiteral("w/") + relative);
    }

    std::unique_ptr<TestDir> dir; ///< programs in "tools" are found before those of the machine
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    QByteArray pathBefore; ///< PATH as it was
};

/// Skips the running test function where a recipe cannot run.
#define VANTREL_NEEDS_RECIPE(recipe)                                                                         \
    if (!RecipeRun::has(recipe)) {                                                                           \
        QSKIP(qPrintable(                                                                                    \
            QStringLiteral("not on this machine: ") + missingPrograms(recipe).join(QStringLiteral(", "))));  \
    }
