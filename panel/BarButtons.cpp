#include "panel/BarButtons.h"

#include <QFontMetrics>
#include <QPushButton>

#include <memory>

QPushButton* makeBarButton(QWidget* bar, const QString& objectName, const QString& text, bool flat)
{
    auto* button = new QPushButton(bar);
    button->setFlat(flat);
    button->setObjectName(objectName);
    button->setText(text);
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
