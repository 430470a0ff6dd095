#pragma once

#include <QMessageBox>

/// Message boxes whose text is shown as it is. The names of files go into these texts, and QMessageBox's own
/// static functions would show a name that looks like HTML as rich text. GUI thread only; each runs its own
/// event loop and returns once the box is closed.

/// Leaves out the middle of a text that has so many lines, once long ones are wrapped, that the buttons of
/// its box would lie below the screen. The name of a file may hold a hundred line breaks, and a path
/// thousands of letters.
/// @param text lines parted by "\n"
/// @return the text; of one of more than 25 lines the first and the last twelve, parted by a line "..."; of
/// lines that
///         take more room than that when wrapped, the beginning and the end of each that is too long
QString boxText(const QString& text);

/// Shows an error box with one OK button.
/// @param parent window that the box is modal to; may be null
/// @param title window title
/// @param text plain text, lines parted by "\n"
void criticalBox(QWidget* parent, const QString& title, const QString& text);

/// Asks a question with the buttons Yes and No; Yes is the default button.
/// @param parent window that the box is modal to; may be null
/// @param title window title
/// @param text plain text, lines parted by "\n"
/// @return whether the answer is Yes; Escape and closing the window are a No
bool questionBox(QWidget* parent, const QString& title, const QString& text);
