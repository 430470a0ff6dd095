#pragma once

#include <QString>

class ModalAnswers;

// Answers of the dialogs that ask for a name: a text is typed over what stands there, and OK clicked.

/// Answers the next dialog that asks where to copy to.
void typeDestination(ModalAnswers& answers, const QString& text);
/// Answers the next dialog that asks for the name of a new folder.
void typeNewFolder(ModalAnswers& answers, const QString& text);
/// Answers the next dialog that asks for another name.
void typeNewName(ModalAnswers& answers, const QString& text);
