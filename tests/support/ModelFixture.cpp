#include "tests/support/ModelFixture.h"

#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"

#include <QAbstractItemModelTester>
#include <QFileInfo>
#include <QSignalSpy>

void ModelFixture::start()
{
    dir = std::make_unique<TestDir>();
    makePanel(dir->path());
    panel->rootPath = QStringLiteral("/");
}

void ModelFixture::end()
{
    root = QPersistentModelIndex();
    model = nullptr;
    PanelFixture::end();
}

myFileSystemModel* ModelFixture::load(const QString& path, QDir::Filters filter, int columns)
{
    model = new myFileSystemModel(panel);
    model->setFilter(filter);
    model->setColumns(columns);
    QSignalSpy loaded(model, &QFileSystemModel::directoryLoaded);
    root = model->setRootPath(path);
    if (QFileInfo(path).isDir() && loaded.isEmpty()) {
        loaded.wait();
    }
    return model;
}

void ModelFixture::checkRules()
{
    new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest, model);
}

QModelIndex ModelFixture::row(const QString& name, int column) const
{
    return rowOf(*model, root, name, column);
}

QStringList ModelFixture::rowNames(const QFileSystemModel& of, const QModelIndex& parent)
{
    QStringList names;
    for (int row = 0; row < of.rowCount(parent); ++row) {
        names.append(of.fileName(of.index(row, 0, parent)));
    }
    return names;
}

QModelIndex ModelFixture::rowOf(
    const QFileSystemModel& of, const QModelIndex& parent, const QString& name, int column)
{
    const int row = rowNames(of, parent).indexOf(name);
    return row < 0 ? QModelIndex() : of.index(row, column, parent);
}

QStringList ModelFixture::stockOrder(const QString& path, int column, Qt::SortOrder order)
{
    QFileSystemModel stock;
    stock.setFilter(listFilter);
    QSignalSpy loaded(&stock, &QFileSystemModel::directoryLoaded);
    const QModelIndex top = stock.setRootPath(path);
    if (!loaded.wait()) {
        return QStringList();
    }
    stock.sort(column, order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder);
    stock.sort(column, order);
    return rowNames(stock, top);
}
