#include "app/FileNames.h"
#include "app/aGlobal.h"
#include "check/SettingsCheck.h"

#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextCodec>

#include <cstdio>

namespace {

enum ExitStatus { NothingFound = 0, SomethingFound = 1, Trouble = 2 };

const char* const usage
    = "Usage: vantrel-check [--json] [FILE]\n"
      "\n"
      "Reads a settings file of Vantrel, ~/.Vantrel where none is named, and tells what the program\n"
      "would pass over without a word. It never writes.\n"
      "\n"
      "  --json      tell it as JSON\n"
      "  --          what follows is a file\n"
      "  --help      show this text\n"
      "  --version   show the version\n"
      "\n"
      "The exit status is 0 where nothing was found, 1 where something was, and 2 where the file\n"
      "cannot be read.\n";

struct Options
{
    bool json = false;
    QByteArray file; ///< as it is named; null where none is
    QString text; ///< to show, and nothing else
    QString error;
};

void takeFile(const QByteArray& argument, Options* options)
{
    if (argument.isEmpty() || !options->file.isNull()) {
        options->error
            = QStringLiteral("\"%1\" is not understood; try --help").arg(QFile::decodeName(argument));
    } else {
        options->file = argument;
    }
}

Options optionsOf(const QList<QByteArray>& arguments)
{
    Options options;
    bool isFile = false;
    for (const QByteArray& argument : arguments) {
        if (isFile || !argument.startsWith('-')) {
            takeFile(argument, &options);
        } else if (argument == "--") {
            isFile = true;
        } else if (argument == "--json") {
            options.json = true;
        } else if (argument == "--help" || argument == "-h") {
            options.text = QString::fromLatin1(usage);
        } else if (argument == "--version") {
            options.text = QStringLiteral("vantrel-check, %1\n").arg(gsVersion);
        } else {
            options.error
                = QStringLiteral("\"%1\" is not understood; try --help").arg(QFile::decodeName(argument));
        }
    }
    return options;
}

/// @return the user's settings; empty where there is no home folder
QByteArray usersFile()
{
    const QByteArray home = qgetenv("HOME");
    return home.isEmpty() ? QByteArray() : home + (home.endsWith('/') ? ".Vantrel" : "/.Vantrel");
}

QByteArray forTerminal(const QString& text)
{
    return localeCodec()->fromUnicode(text);
}

int fail(const QString& text)
{
    const QByteArray bytes = forTerminal(QStringLiteral("vantrel-check: %1\n").arg(text));
    static_cast<void>(std::fputs(bytes.constData(), stderr));
    return Trouble;
}

/// @return the status, or that of trouble where the standard output takes no more
int put(const QByteArray& bytes, int status)
{
    const bool written = std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout)
        == static_cast<size_t>(bytes.size());
    return written && std::fflush(stdout) == 0
        ? status
        : fail(QStringLiteral("the standard output cannot be written"));
}

QByteArray asText(const QString& file, const Findings& findings)
{
    QString text;
    for (const Finding& finding : findings) {
        const QString place = finding.line > 0 ? QStringLiteral("%1:%2").arg(file).arg(finding.line) : file;
        text += place + QStringLiteral(": ") + finding.text + QStringLiteral(" [") + finding.kind
            + QStringLiteral("]\n");
    }
    return forTerminal(text);
}

QByteArray asJson(const QString& file, const Findings& findings)
{
    QJsonArray all;
    for (const Finding& finding : findings) {
        all.append(QJsonObject{{"line", finding.line}, {"kind", finding.kind}, {"text", finding.text}});
    }
    return QJsonDocument(QJsonObject{{"file", file}, {"findings", all}}).toJson();
}

/// @param name of the settings file; empty where none is named and there is no home folder
/// @return the exit status
int checkFile(const QByteArray& name, bool json)
{
    const QString file = QFile::decodeName(name);
    if (name.isEmpty()) {
        return fail(QStringLiteral("HOME is not set, so that there is no ~/.Vantrel: name a file"));
    }
    if (QFile::encodeName(file) != name) {
        return fail(QStringLiteral("%1 cannot be read: its name is not UTF-8").arg(file));
    }
    SettingsCheck check;
    if (!check.read(file)) {
        return fail(QStringLiteral("%1 cannot be read").arg(file));
    }
    const Findings findings = check.findings();
    const int status = findings.isEmpty() ? NothingFound : SomethingFound;
    return put(json ? asJson(file, findings) : asText(file, findings), status);
}

} // namespace

int main(int argc, char** argv)
{
    // Style sheets need the widgets' library, which needs a display, or what stands for one. That would make
    // the folder for run-time files where it is missing, or one among the temporary files. Where neither can
    // be, it only complains.
    qInstallMessageHandler(
        [](QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& /*text*/) {});
    qputenv("QT_QPA_PLATFORM", "minimal");
    qputenv("XDG_RUNTIME_DIR", "/dev/null");
    qputenv("TMPDIR", "/dev/null");
    useUtf8FileNames();
    QList<QByteArray> arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QByteArray(argv[i]));
    }
    int one = 1; // Qt's own options are not for this program
    const QApplication application(one, argv);
    const Options options = optionsOf(arguments);
    if (!options.error.isEmpty()) {
        return fail(options.error);
    }
    if (!options.text.isEmpty()) {
        return put(forTerminal(options.text), NothingFound);
    }
    return checkFile(options.file.isNull() ? usersFile() : options.file, options.json);
}
