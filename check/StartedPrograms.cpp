#include "check/StartedPrograms.h"

#include "check/ScriptCommands.h"

#include <QMap>

namespace {

/// Programs that start the program that follows behind one of terminalOptions().
const QStringList& terminals()
{
    static const QStringList names{"x-terminal-emulator", "xterm", "lxterm", "uxterm", "urxvt", "rxvt",
        "konsole", "gnome-terminal", "xfce4-terminal", "mate-terminal", "lxterminal", "terminator",
        "alacritty", "st"};
    return names;
}

const QStringList& terminalOptions()
{
    static const QStringList names{"-e", "-x", "--"};
    return names;
}

const QStringList& shells()
{
    static const QStringList names{"sh", "bash", "dash", "ksh", "mksh", "zsh"};
    return names;
}

/// What a shell does itself.
const QStringList& shellBuiltins()
{
    static const QStringList names{":", "[", "[[", "bg", "break", "builtin", "cd", "continue", "declare",
        "dirs", "disown", "done", "echo", "enable", "esac", "exec", "exit", "export", "false", "fc", "fg",
        "fi", "for", "getopts", "help", "history", "in", "jobs", "kill", "let", "local", "logout", "mapfile",
        "popd", "print", "printf", "pushd", "pwd", "read", "readarray", "readonly", "return", "select", "set",
        "setopt", "shift", "shopt", "suspend", "test", "times", "trap", "true", "typeset", "ulimit", "umask",
        "unalias", "unset", "unsetopt", "wait", "whence", "}"};
    return names;
}

/// How a program is used that starts another.
struct Wrapper
{
    QStringList flags; ///< options that are one word
    QStringList takes; ///< options that take the next word
    int operands = 0; ///< before the program
    bool assigns = false; ///< whether words with "=" may stand before the program
};

const QMap<QString, Wrapper>& wrappers()
{
    static const QMap<QString, Wrapper> all{
        {"sudo",
            {{"-A", "-b", "-B", "-E", "-H", "-k", "-n", "-N", "-P", "-S", "--askpass", "--background",
                 "--preserve-env", "--set-home", "--non-interactive", "--preserve-groups", "--stdin"},
                {"-C", "-D", "-g", "-h", "-p", "-r", "-R", "-t", "-T", "-u", "--user", "--group", "--prompt",
                    "--chdir", "--host", "--chroot"},
                0, true}},
        {"pkexec", {{"--disable-internal-agent", "--keep-cwd"}, {"--user"}, 0, false}},
        {"env", {{"-", "-i", "-v", "--ignore-environment"}, {"-u", "-C", "--unset", "--chdir"}, 0, true}},
        {"nohup", {}},
        {"nice", {{}, {"-n", "--adjustment"}, 0, false}},
        {"ionice", {{"-t", "--ignore"}, {"-c", "-n", "--class", "--classdata"}, 0, false}},
        {"setsid", {{"-c", "-f", "-w", "--ctty", "--fork", "--wait"}, {}, 0, false}},
        {"timeout",
            {{"-v", "--foreground", "--preserve-status", "--verbose"},
                {"-k", "-s", "--kill-after", "--signal"}, 1, false}},
        {"stdbuf", {{}, {"-i", "-o", "-e", "--input", "--output", "--error"}, 0, false}},
        {"exec", {{"-c", "-l"}, {"-a"}, 0, false}},
    };
    return all;
}

QString baseName(const QString& program)
{
    return program.section(QLatin1Char('/'), -1);
}

/// @return place behind the option by which the terminal at @p at starts a program; 0 where there is none
int behindTerminalOption(const QStringList& words, int at)
{
    for (int i = at + 1; i < words.size(); ++i) {
        if (terminalOptions().contains(words.at(i))) {
            return i + 1;
        }
    }
    return 0;
}

/// @return number of words that the option takes up; 0 where it is not known
int lengthOfOption(const Wrapper& wrapper, const QString& word)
{
    if (wrapper.takes.contains(word)) {
        return 2;
    }
    const bool isLong = word.startsWith(QLatin1String("--"));
    const QString start = isLong ? word.section(QLatin1Char('='), 0, 0) : word.left(2);
    bool isNumber = false;
    word.toInt(&isNumber); // as in nice -10
    const bool isKnown = wrapper.flags.contains(word) || isNumber
        || (word != start && (wrapper.takes.contains(start) || (isLong && wrapper.flags.contains(start))));
    return isKnown ? 1 : 0;
}

/// @return place behind the options of the wrapper at @p at, and what else stands before the program; 0 where
/// an option is not known
int behindWrapper(const Wrapper& wrapper, const QStringList& words, int at)
{
    int next = at + 1;
    while (words.value(next).startsWith(QLatin1Char('-')) && words.at(next) != QLatin1String("--")) {
        const int length = lengthOfOption(wrapper, words.at(next));
        if (length == 0) {
            return 0;
        }
        next += length;
    }
    next += static_cast<int>(words.value(next) == QLatin1String("--"));
    while (wrapper.assigns && words.value(next).contains(QLatin1Char('='))) {
        ++next;
    }
    return next + wrapper.operands;
}

/// @return place of the program that the one at @p at starts in turn; -1 where none is known
int nextProgram(const QStringList& words, int at)
{
    const QString name = baseName(words.at(at));
    int next = 0;
    if (terminals().contains(name)) {
        next = behindTerminalOption(words, at);
    } else if (wrappers().contains(name)) {
        next = behindWrapper(wrappers().value(name), words, at);
    }
    const bool isProgram = next > at && next < words.size() && !words.at(next).isEmpty()
        && !words.at(next).startsWith(QLatin1Char('-'));
    return isProgram ? next : -1;
}

/// @return the script that the program at @p at gets, where it is a shell
QString scriptOfShell(const QStringList& words, int at)
{
    if (!shells().contains(baseName(words.at(at)))) {
        return QString();
    }
    bool isScript = false;
    int next = at + 1;
    while (words.value(next).startsWith(QLatin1Char('-'))) {
        const QString& option = words.at(next);
        isScript = isScript
            || (option.at(option.size() > 1 ? 1 : 0) != QLatin1Char('-')
                && option.contains(QLatin1Char('c')));
        ++next;
    }
    return isScript ? words.value(next) : QString();
}

void collectPrograms(const QStringList& words, bool isInScript, QList<StartedProgram>* found)
{
    int at = words.value(0).isEmpty() ? -1 : 0;
    while (at >= 0) {
        if (!isInScript || at > 0 || !shellBuiltins().contains(words.at(at))) {
            found->append({words.at(at), isInScript});
        }
        const QList<QStringList> commands = commandsOfScript(scriptOfShell(words, at));
        for (const QStringList& command : commands) {
            collectPrograms(command, true, found);
        }
        at = nextProgram(words, at);
    }
}

} // namespace

QList<StartedProgram> startedPrograms(const QStringList& words)
{
    QList<StartedProgram> found;
    collectPrograms(words, false, &found);
    return found;
}
