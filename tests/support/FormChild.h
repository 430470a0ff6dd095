#pragma once

#include <QWidget>

/// @return the one child of that class and object name; ends the test where there is none
template <typename Child>
Child& formChild(const QWidget& form, const char* name)
{
    const QList<Child*> found = form.findChildren<Child*>(QLatin1String(name));
    if (found.size() != 1) {
        qFatal("%d children named %s", found.size(), name);
    }
    return *found.constFirst();
}
