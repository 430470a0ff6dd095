#include "app/MessageBoxes.h"

QString boxText(const QString& text)
{
    constexpr int shown = 12;
    const QStringList lines = text.split(QLatin1Char('\n'));
    if (lines.size() <= 2 * shown + 1) {
        return text;
    }
    const QStringList parts
        = lines.mid(0, shown) + QStringList(QStringLiteral("...")) + lines.mid(lines.size() - shown);
    return parts.join(QLatin1Char('\n'));
}

void criticalBox(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox box(QMessageBox::Critical, title, boxText(text), QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::Ok);
    box.exec();
}

bool questionBox(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox box(QMessageBox::Question, title, boxText(text), QMessageBox::Yes | QMessageBox::No, parent);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::Yes);
    return box.exec() == QMessageBox::Yes;
}
