#pragma once

#include <QApplication>
#include <QObject>
#include <QTest>

/// Prepares the process of a test before any Qt object exists: a home folder of its own in a temporary place,
/// the C.UTF-8 locale and UTC, so that no test depends on, or touches, the user's own. Called by
/// VANTREL_TEST_MAIN.
void prepareTestProcess();

/// Makes the entry point of a test program that holds one test class.
#define VANTREL_TEST_MAIN(TestClass)                                                                         \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        prepareTestProcess();                                                                                \
        QApplication app(argc, argv);                                                                        \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
