#include "info/StatisticsBox.h"

#include <QGroupBox>

void styleStatisticsBox(QGroupBox* box)
{
    box->setStyleSheet(
        QStringLiteral("QGroupBox {border: 2px solid gray;  border-radius: 9px; margin-top: 0.5em; }\n"
                       "QGroupBox::title {subcontrol-origin: margin; left: 30px; padding: 0 3px 0 3px; }"));
}
