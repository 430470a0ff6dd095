#include "tests/support/PanelFixture.h"

#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"

#include <QTest>

void PanelFixture::start()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("a/b/c"));
    dir->folder(QStringLiteral("d"));
    dir->file(QStringLiteral("one"), "1");
    dir->file(QStringLiteral("two"), "22");
    show(dir->path());
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a"))));
}

void PanelFixture::end()
{
    window.reset();
    dir.reset();
}

void PanelFixture::makePanel(const QString& root)
{
    window = std::make_unique<PanelWindow>(root);
    panel = window->panel;
}

void PanelFixture::show(const QString& root)
{
    makePanel(root);
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
}

void PanelFixture::select(const QStringList& names) const
{
    panel->list->clearSelection();
    for (const QString& name : names) {
        QVERIFY(listIndex(panel, name).isValid());
        panel->list->selectionModel()->select(
            listIndex(panel, name), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
}

QModelIndex PanelFixture::treeAt(const QString& relative) const
{
    return panel->treeModel->index(dir->path(relative));
}
