#pragma once

#include <QFrame>
#include <QList>

class QPushButton;
class QSignalMapper;

/// The drive bar of a panel: one button for each configured drive, built once. A press roots the tree at the
/// drive.
class MDriveBar : public QFrame
{
    Q_OBJECT

public:
    /// @param parent the owning panel
    explicit MDriveBar(QFrame* parent);

    /// Appends one button.
    void MakeOneButton(const QString& text);

    QFrame* panel; ///< the owning MPanel
    QList<QPushButton*> buttons; ///< left to right, owned by the bar
    QSignalMapper* mapper; ///< a button's press to its index, child of the bar
    float charWidth; ///< average character width of the button font, in pixels
    int buttonCount = 0; ///< index of the next button
    int nextX = 0; ///< x of the next button

public slots:
    void buttonPressed(int index);
};
