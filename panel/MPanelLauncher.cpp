// Starting external programs.

#include "panel/MPanel.h"

#include "app/MessageBoxes.h"
#include "panel/CommandWords.h"

#include <QDir>
#include <QProcess>

namespace {

/// The environment for launched programs: the user's own. The time zone file that start-up names to save
/// looking it up each time is left out again.
QProcessEnvironment userEnvironment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (environment.value(QStringLiteral("TZ")) == QLatin1String(":/etc/localtime")) {
        environment.remove(QStringLiteral("TZ"));
    }
    return environment;
}

bool startProgram(const QString& program, const QStringList& arguments, const QString& folder)
{
    const QFileInfo info(folder);
    if (!info.isDir() || !info.isExecutable()) {
        return false; // the program would be started in some other folder
    }
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setWorkingDirectory(folder);
    process.setProcessEnvironment(userEnvironment());
    return process.startDetached();
}

} // namespace

void MPanel::Launcher(
    const QString& command, const QString& arg1, const QString& arg2, const QString& workdir)
{
    QStringList arguments = commandWords(command);
    const QString program = arguments.takeFirst();
    for (const QString& extra : {arg1, arg2}) {
        if (!extra.isEmpty()) {
            arguments.append(extra);
        }
    }
    if (!startProgram(program, arguments, workdir.isEmpty() ? QDir::homePath() : workdir)) {
        criticalBox(this, QStringLiteral("Error"), QStringLiteral("Failed to start program:\n") + program);
    }
}
