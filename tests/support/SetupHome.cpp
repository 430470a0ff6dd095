#include "tests/support/SetupHome.h"

#include "app/ReadConfig.h"
#include "tests/support/Recipes.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>

void SetupHome::open()
{
    dir = std::make_unique<TestDir>();
    dir->folder(QStringLiteral("home"));
    dir->folder(QStringLiteral("bin"));
    program = projectFile(QStringLiteral("setup/vantrel-setup"));
    environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), dir->path(QStringLiteral("home")));
    environment.insert(QStringLiteral("VANTREL_MOUNTS"), dir->file(QStringLiteral("mounts")));
}

SetupRun SetupHome::run(const QStringList& arguments, const QString& shell) const
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(dir->path());
    const QString script = shell.isEmpty() ? QStringLiteral("exec \"$0\" \"$@\"") : shell;
    process.start(QStringLiteral("/bin/sh"), QStringList{"-c", script, program} + arguments);
    SetupRun result;
    const bool isOver = process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit;
    if (isOver) {
        result.status = process.exitCode();
    }
    result.output = QString::fromUtf8(process.readAllStandardOutput());
    result.errors = QString::fromUtf8(process.readAllStandardError());
    if (!isOver) {
        result.errors += QStringLiteral("the run did not end by itself: %1\n").arg(process.errorString());
    }
    return result;
}

void SetupHome::readSettings() const
{
    ReadConfig(dir->path(QStringLiteral("home/.Vantrel")));
}

void SetupHome::ownTools() const
{
    for (const char* own :
        {"awk", "cat", "cmp", "cp", "date", "ln", "mv", "readlink", "rm", "sed", "sh", "sort"}) {
        const QString link = QStringLiteral("bin/") + QLatin1String(own);
        if (!dir->exists(link)) {
            dir->link(link, QStandardPaths::findExecutable(QLatin1String(own)));
        }
    }
}

void SetupHome::tool(const QString& name, const QByteArray& script) const
{
    ownTools();
    QFile::remove(dir->path(QStringLiteral("bin/") + name));
    dir->file(QStringLiteral("bin/") + name, script, 0755);
}

void SetupHome::onlyTools()
{
    ownTools();
    environment.insert(QStringLiteral("PATH"), dir->path(QStringLiteral("bin")));
}
