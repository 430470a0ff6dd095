#include "tests/support/OnePanel.h"

#include <QTest>

void OnePanel::make()
{
    dir = std::make_unique<TestDir>();
    root = dir->folder(QStringLiteral("root"));
}

void OnePanel::show(const QSize& size)
{
    window = std::make_unique<PanelWindow>(root, size);
    panel = window->panel;
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
}

void OnePanel::close()
{
    window.reset();
    dir.reset();
}
