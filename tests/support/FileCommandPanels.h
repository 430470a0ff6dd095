#pragma once

#include "panel/MPanel.h"
#include "tests/support/OnePanel.h"

/// Two panels beside each other, for the commands that copy, move and delete. The first shows the folder
/// "from" with the files "a.txt" and "b.txt" and the folder "sub" with "inner.txt"; the other shows "to" with
/// "kept.txt". Both folders are in "root".
class FileCommandPanels : public OnePanel
{
public:
    /// Makes both, waits for their listings, and sets gsDragBase to "base before".
    void open();
    void close();

    /// Gives the listing the focus, and selects these of its rows.
    static void select(const MPanel* panel, const QStringList& names);

    std::unique_ptr<MPanel> other; ///< shows the folder "to"
    QString from; ///< full path; what the first panel shows
    QString to; ///< full path

    // What the questions of these commands say.
    const QString yes = QStringLiteral("Yes");
    const QString no = QStringLiteral("No");
    const QString intoFolder = QStringLiteral("Copy selected files to folder: \n\n");
    const QString toFile = QStringLiteral("Copy selected file to: \n\n");
    const QString moveInto = QStringLiteral("Move selected files to folder: \n\n");
    const QString deleteIn = QStringLiteral("Delete selected files in folder: \n\n");
    const QString refusal = QStringLiteral(
        "I'm sorry Dave, I'm afraid I can't do that.\nThe destination is a child of the source");
};
