#pragma once

#include "tests/support/TestDir.h"

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <memory>

/// How a run of vantrel-setup ended.
struct SetupRun
{
    int status = -1; ///< exit status; -1 where a signal ended it, or it did not start or not end in a minute
    QString output;
    QString errors; ///< with a line of its own where the run did not end by itself
};

/// vantrel-setup and a folder around it: "home" is the user's, "bin" takes stand-ins for other programs, and
/// "mounts" is the list of the mounted volumes, empty at first.
class SetupHome
{
public:
    void open();
    void close() { dir.reset(); }

    /// Runs the set-up with the folder as its working directory.
    /// @param shell what runs instead; "$0" is the program there, and "$@" its arguments
    SetupRun run(const QStringList& arguments = QStringList(), const QString& shell = QString()) const;

    /// Reads the settings that were written, as the program does.
    void readSettings() const;

    /// Makes sure that "bin" has links to what the set-up itself needs.
    void ownTools() const;
    /// Adds a program to "bin", in the place of one that is there.
    void tool(const QString& name, const QByteArray& script = "#!/bin/sh\n") const;
    /// From now on programs are only looked for in "bin".
    void onlyTools();

    std::unique_ptr<TestDir> dir;
    QString program;
    QProcessEnvironment environment;
};
