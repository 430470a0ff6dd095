#include "panel/BarButtons.h"

#include <QFontMetrics>
#include <QKeySequence>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QStylePainter>

#include <memory>

namespace {

/// A push button whose text is a name and shown as it is: an "&" marks no shortcut. It has no meta-object of
/// its own, so that style sheets see a plain QPushButton.
class NameButton : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QStylePainter painter(this);
        QStyleOptionButton option;
        initStyleOption(&option);
        option.text.replace(QLatin1Char('&'), QLatin1String("&&"));
        painter.drawControl(QStyle::CE_PushButton, option);
    }
};

} // namespace

QPushButton* makeBarButton(QWidget* bar, const QString& objectName, const QString& text, bool flat)
{
    auto* button = new NameButton(bar);
    button->setFlat(flat);
    button->setObjectName(objectName);
    button->setText(text);
    button->setShortcut(QKeySequence()); // the one that the text has set
    button->setAccessibleName(text);
    button->setAutoFillBackground(true);
    return button;
}

float averageDigitWidth(QWidget* bar, const QString& objectName, bool flat)
{
    constexpr float digits = 20.0F;
    const std::unique_ptr<QPushButton> sample(makeBarButton(bar, objectName, QStringLiteral("NavBar"), flat));
    sample->setGeometry(0, 0, 50, bar->height() - 2);
    sample->show();
    const QFontMetrics metrics(sample->font());
    return static_cast<float>(metrics.horizontalAdvance(QStringLiteral("01234567890123456789"))) / digits;
}
