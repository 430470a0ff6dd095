#pragma once

#include <QMainWindow>

#include <memory>

class KeyboardWatch;

namespace Ui {
class aVantrel;
}

/// The main window: a menu bar and the two panels, which it places by hand below the menu bar in the
/// arrangement that giWindowArrange names. Made once, on the GUI thread, after the settings were read. It
/// registers itself and its panels in gwMainframe, gwPanel1 and gwPanel2; the panels are its children, and
/// none of the three pointers is cleared when the window goes.
class aVantrel : public QMainWindow
{
    Q_OBJECT

public:
    /// Builds the window with both panels and shows it maximized.
    explicit aVantrel(QWidget* parent = nullptr);
    ~aVantrel() override;

protected:
    /// Places the panels for giWindowArrange; a value that is no arrangement leaves them where they are.
    /// @param event not looked at; the menu slots hand over null
    void resizeEvent(QResizeEvent* event) override;
    /// Goes through the panels in the order in which they are seen, and over what cannot be seen: the second
    /// of two panels in an arrangement without it, path buttons beyond the edge.
    bool focusNextPrevChild(bool next) override;
    /// Takes the keyboard once the last dialog is gone, unless another program has it.
    bool event(QEvent* event) override;

private slots:
    void takeKeyboard();
    void fillScreen();
    void on_actionExit_triggered();
    void on_actionTile_Vertically_triggered();
    void on_actionSingle_Panel_triggered();
    void on_actionTile_Horizontally_triggered();
    void on_actionAbout_triggered();
    void showAbout();

private:
    void arrange(int arrangement);

    std::unique_ptr<Ui::aVantrel> ui;
    std::unique_ptr<KeyboardWatch> keyboard;
};
