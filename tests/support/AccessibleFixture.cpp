#include "tests/support/AccessibleFixture.h"

#include "tests/support/Listening.h"

#include <QtTest/qtestaccessible.h>

AccessibleFixture::AccessibleFixture()
{
    QTestAccessibility::initialize();
}

AccessibleFixture::~AccessibleFixture()
{
    QTestAccessibility::cleanup();
}

void AccessibleFixture::end()
{
    PanelFixture::end();
    setListening(false);
}

QList<QAccessibleEvent*> AccessibleFixture::events()
{
    return QTestAccessibility::events();
}

void AccessibleFixture::clearEvents()
{
    QTestAccessibility::clearEvents();
}
