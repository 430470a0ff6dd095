#pragma once

#include <QList>
#include <QString>

/// Something that the program passes over without a word.
struct Finding
{
    int line = 0; ///< from 1; 0 for the file as a whole
    QString kind; ///< one word for tools, such as "unknown-key"; see vantrel-check(1)
    QString text; ///< for people
};

using Findings = QList<Finding>;
