#pragma once

class QPoint;
class QWidget;

/// What a program may ask of X and not of Wayland, where Qt writes a warning at each try. There these
/// functions do nothing. They may be called from the window thread only.

/// Moves the cursor.
/// @param offset by how much, in pixels
void moveCursor(const QPoint& offset);

/// Asks for the keyboard. Under Wayland the window that the user worked with has it back without being asked
/// for.
/// @param window the window
void askForKeyboard(QWidget* window);

/// Lets a window work as the one that has the keyboard, where Qt missed the news. Under Wayland that is where
/// the window has the keyboard; else Qt is still to be told, and would ask for it.
/// @param window the window
void noteKeyboard(QWidget* window);
