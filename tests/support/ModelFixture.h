#pragma once

#include "tests/support/PanelFixture.h"

#include <QDir>
#include <QPersistentModelIndex>
#include <QVariant>

class QFileSystemModel;
class myFileSystemModel;

/// A PanelFixture with a model of its own over an empty temporary folder. The panel that the model asks is
/// there, but is not what is looked at; its root is "/", so that the model tells everything.
class ModelFixture : protected PanelFixture
{
protected:
    /// The filters of the panel's two models.
    static constexpr QDir::Filters listFilter = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDot;
    static constexpr QDir::Filters treeFilter
        = QDir::AllDirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot;

    void start();
    void end();

    /// Loads a folder into a new model, and waits until it is there.
    myFileSystemModel* load(const QString& path, QDir::Filters filter = listFilter, int columns = 4);
    /// Checks each change of the model from now on. Every folder below its root is loaded by that.
    void checkRules();
    /// @return index of a row of the loaded folder; invalid where there is none
    QModelIndex row(const QString& name, int column = 0) const;
    QVariant text(const QString& name, int column = 0) const { return row(name, column).data(); }

    /// @return names of the rows of a folder, from top to bottom
    static QStringList rowNames(const QFileSystemModel& of, const QModelIndex& parent);
    static QModelIndex rowOf(
        const QFileSystemModel& of, const QModelIndex& parent, const QString& name, int column = 0);
    /// @return row order of a model that nobody has changed anything of; nothing where it does not load
    static QStringList stockOrder(const QString& path, int column, Qt::SortOrder order);

    myFileSystemModel* model = nullptr; ///< child of the panel
    QPersistentModelIndex root; ///< the loaded folder in the model
};
