#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Parts a script of a shell into its simple commands. It may be anything, a script or not.
/// @return words of every command, in their order, without their quotes; a word that the shell expands is
/// empty. Left out are keywords and assignments at the start of a command, redirections, and commands behind
/// "||", which are there for what fails. Empty where the script looks for programs itself, or holds what is
/// not followed: case, functions, here-documents, backquotes, a path of its own, or a great length.
QList<QStringList> commandsOfScript(const QString& script);
