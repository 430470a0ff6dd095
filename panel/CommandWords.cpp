#include "panel/CommandWords.h"

#include "app/TextHelpers.h"

QStringList commandWords(QString command)
{
    static const QString blank = QStringLiteral(" ");
    QStringList words{xs_tok(command, blank)};
    while (!command.isEmpty()) {
        words.append(xs_tok(command, blank));
    }
    return words;
}
