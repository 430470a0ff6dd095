#include "tests/support/TextWatch.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QCoreApplication>
#include <QEvent>
#include <QKeySequence>
#include <QLabel>

#include <utility>

namespace {

QString spoken(QWidget* widget)
{
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

} // namespace

TextWatch::TextWatch(QString name)
    : m_name(std::move(name))
{
    qApp->installEventFilter(this);
}

bool TextWatch::eventFilter(QObject* watched, QEvent* event)
{
    auto* widget = qobject_cast<QWidget*>(watched);
    if (event->type() == QEvent::Show && widget != nullptr && widget->isWindow()) {
        look(widget);
    }
    return false;
}

void TextWatch::look(QWidget* window)
{
    ++windows;
    const QList<QWidget*> widgets = window->findChildren<QWidget*>() << window;
    for (QWidget* widget : widgets) {
        lookAt(widget);
    }
}

void TextWatch::lookAt(QWidget* widget)
{
    for (const QString& text : {widget->toolTip(), widget->statusTip(), widget->whatsThis(),
             widget->windowTitle(), widget->accessibleDescription()}) {
        check(!text.contains(m_name), widget, "a text that may be rich");
    }
    if (auto* label = qobject_cast<QLabel*>(widget); label != nullptr && label->text().contains(m_name)) {
        ++texts;
        check(label->textFormat() == Qt::PlainText && label->buddy() == nullptr, widget, "rich text");
        check(spoken(label).contains(m_name), widget, "spoken otherwise");
    }
    auto* button = qobject_cast<QAbstractButton*>(widget);
    if (button != nullptr && button->text().contains(m_name)) {
        ++texts;
        check(spoken(button).contains(m_name), widget, "spoken otherwise");
        check(button->shortcut().isEmpty(), widget, "a shortcut");
    }
}

void TextWatch::check(bool isRight, const QWidget* widget, const char* fault)
{
    if (!isRight) {
        faults.append(QStringLiteral("%1 %2: ").arg(
                          QLatin1String(widget->metaObject()->className()), widget->objectName())
            + QLatin1String(fault));
    }
}
