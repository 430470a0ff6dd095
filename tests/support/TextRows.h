#pragma once

#include <QString>
#include <QTest>

/// Makes the table of a test that takes a text and compares one with another.
/// @param given name of the first column
/// @param wanted name of the second column
/// @return what adds a row, named after the first text
inline auto textRows(const char* given, const char* wanted)
{
    QTest::addColumn<QString>(given);
    QTest::addColumn<QString>(wanted);
    return [](const char* text, const char* result) {
        QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(result);
    };
}
