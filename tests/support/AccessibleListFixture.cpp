#include "tests/support/AccessibleListFixture.h"

#include "panel/AccessibleList.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "tests/support/Listening.h"

#include <QTest>

void AccessibleListFixture::start()
{
    VANTREL_NEEDS_LISTENING();
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("d"));
    dir->file(QStringLiteral("a"), "1234");
    dir->file(QStringLiteral("b"), "123456");
    show(dir->path());
    QCOMPARE(listNames(panel), QStringList({"..", "d", "a", "b"}));
    clearEvents();
}

MList* AccessibleListFixture::list() const
{
    return panel->list;
}

AccessibleList* AccessibleListFixture::accessible() const
{
    return dynamic_cast<AccessibleList*>(QAccessible::queryAccessibleInterface(list()));
}

QAccessibleTableInterface* AccessibleListFixture::tableOf(MList* list)
{
    return QAccessible::queryAccessibleInterface(list)->tableInterface();
}

QAccessibleInterface* AccessibleListFixture::cell(const char* name, int column) const
{
    const QModelIndex index = listIndex(panel, QLatin1String(name));
    return index.isValid() ? table()->cellAt(index.row(), column) : nullptr;
}
