#pragma once

class QWindow;

/// Lets Qt hear from the window system that the keyboard is given to a window, now.
/// @param window null where it is given to no window of the program
void giveKeyboard(QWindow* window);
