#include "tests/support/PanelFixture.h"

#include "panel/MPanel.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/ListSelection.h"

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
    selectRows(panel, names);
}

QModelIndex PanelFixture::treeAt(const QString& relative) const
{
    return panel->treeModel->index(dir->path(relative));
}
