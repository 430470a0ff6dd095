#pragma once

#include <QList>
#include <QWidget>

class QPushButton;
class QSignalMapper;

/// The path bar of a panel: one flat button for each component of the folder shown, rebuilt on every change
/// of folder. A press takes the panel to the folder that ends with the component, never above the tree's
/// root.
class MNavBar : public QWidget
{
    Q_OBJECT

public:
    /// @param parent the owning panel
    explicit MNavBar(QWidget* parent);

    /// Rebuilds the buttons.
    /// @param path absolute path of the folder shown, with or without "/" at its end
    void SetNavBar(const QString& path);
    /// Appends one button.
    void MakeOneButton(const QString& text);

    QWidget* panel; ///< the owning MPanel
    QList<QPushButton*> buttons; ///< left to right, owned by the bar
    QSignalMapper* mapper; ///< a button's press to its index, child of the bar
    float charWidth; ///< average character width of the button font, in pixels
    int buttonCount = 0; ///< index of the next button
    int nextX = 0; ///< x of the next button

public slots:
    void buttonPressed(int index);

private slots:
    void forgetPress();

private:
    void deleteButtons();
    QString pathUpTo(int index) const;

    QString m_pressedPath; ///< folder that the press under way has opened
};
