#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// A program that a command starts.
struct StartedProgram
{
    QString name;
    bool isInScript = false; ///< whether a shell starts it, which knows more than the launcher
};

/// @param words of a command
/// @return the program, and those that it is known to start in turn: behind a terminal, behind programs such
/// as sudo, and in the script that a shell is given; without what a shell does itself
QList<StartedProgram> startedPrograms(const QStringList& words);
