#include "panel/MDriveBar.h"

#include "app/aGlobal.h"
#include "panel/BarButtons.h"
#include "panel/MPanel.h"

#include <QCommonStyle>
#include <QPushButton>
#include <QSignalMapper>

namespace {

const QString& driveBarName()
{
    static const QString name = QStringLiteral("DriveBar");
    return name;
}

constexpr int gap = 16;
constexpr int iconPixels = 16;

} // namespace

MDriveBar::MDriveBar(QFrame* parent)
    : QFrame(parent)
    , panel(parent)
    , mapper(new QSignalMapper(this))
    , charWidth(averageDigitWidth(this, driveBarName(), false))
{
    connect(mapper, SIGNAL(mapped(int)), this, SLOT(buttonPressed(int)));
    nextX = barLeftMargin;
    setFrameShadow(QFrame::Sunken);
    setFrameShape(QFrame::StyledPanel);
    setAccessibleName(QStringLiteral("Drive bar"));
    for (const LSDRIVE& drive : qAsConst(gstDrives)) {
        MakeOneButton(drive.label);
    }
}

void MDriveBar::MakeOneButton(const QString& text)
{
    QPushButton* button = makeBarButton(this, driveBarName(), text, false);
    buttons.append(button);
    // The 30 pixels leave room for the icon.
    const int w = static_cast<int>(static_cast<double>(static_cast<float>(text.length()) * charWidth) + 30.0);
    button->setIcon(QCommonStyle().standardIcon(QStyle::SP_DriveHDIcon));
    button->setIconSize(QSize(iconPixels, iconPixels));
    button->setGeometry(nextX, 4, w, height() - 8);
    button->show();
    connect(button, SIGNAL(pressed()), mapper, SLOT(map()));
    mapper->setMapping(button, buttonCount);
    ++buttonCount;
    nextX += w + gap;
}

void MDriveBar::buttonPressed(int index)
{
    static_cast<MPanel*>(panel)->setTreeRoot(gstDrives.at(index).path);
}
