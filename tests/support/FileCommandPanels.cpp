#include "tests/support/FileCommandPanels.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "tests/support/ListSelection.h"

#include <QTest>

void FileCommandPanels::open()
{
    make();
    dir->file(QStringLiteral("root/from/a.txt"), "aaa");
    dir->file(QStringLiteral("root/from/b.txt"), "bbb");
    dir->file(QStringLiteral("root/from/sub/inner.txt"), "inner");
    dir->file(QStringLiteral("root/to/kept.txt"), "kept");
    from = dir->path(QStringLiteral("root/from"));
    to = dir->path(QStringLiteral("root/to"));
    show(QSize(780, 500));
    panel->setGeometry(0, 0, 390, 500);
    other = std::make_unique<MPanel>(&window->window);
    other->setGeometry(390, 0, 390, 500);
    other->show();
    gwPanel1 = panel;
    gwPanel2 = other.get();
    panel->setTreePath(from);
    other->setTreePath(to);
    QVERIFY(waitForList(panel));
    QVERIFY(waitForList(other.get()));
    QCOMPARE(panel->currentPath, from);
    gsDragBase = QStringLiteral("base before");
}

void FileCommandPanels::close()
{
    other.reset();
    OnePanel::close();
}

void FileCommandPanels::select(const MPanel* panel, const QStringList& names)
{
    panel->list->setFocus();
    selectRows(panel, names);
}
