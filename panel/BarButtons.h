#pragma once

#include <QString>

class QPushButton;
class QWidget;

/// What the navigation bar and the drive bar have in common: buttons placed by hand, from an average
/// character width.

/// Pixels between a bar's left edge and its first button.
constexpr int barLeftMargin = 10;

/// Makes a shown sample button on a bar, measures its font and deletes it again.
/// @param bar the bar; its height is the button's plus 2 pixels
/// @param objectName name that style sheets address the bar's buttons by
/// @param flat whether the bar's buttons are flat
/// @return average width of a digit in pixels, used for every character
float averageDigitWidth(QWidget* bar, const QString& objectName, bool flat);

/// Makes a button on a bar, not placed and not shown yet. Its text is shown as it is, "&" included.
/// @return the button, owned by the bar
QPushButton* makeBarButton(QWidget* bar, const QString& objectName, const QString& text, bool flat);
