#pragma once

#include <QApplication>
#include <QObject>
#include <QTest>

/// Prepares the process of a test before any Qt object exists: a home folder of its own in a temporary place,
/// the C.UTF-8 locale and UTC, so that no test depends on, or touches, the user's own. Called by
/// VANTREL_TEST_MAIN.
void prepareTestProcess();

/// Looks for lost memory now, in a build with AddressSanitizer, and ends the process where there is some;
/// does nothing in other builds. Called by VANTREL_TEST_MAIN while the application object still lives,
/// because what the platform loses when that goes is not ours.
void lookForLeaks();

/// Makes the entry point of a test program that holds one test class.
#define VANTREL_TEST_MAIN(TestClass)                                                                         \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        prepareTestProcess();                                                                                \
        QApplication app(argc, argv);                                                                        \
        int failures = 0;                                                                                    \
        {                                                                                                    \
            TestClass test;                                                                                  \
            failures = QTest::qExec(&test, argc, argv);                                                      \
        }                                                                                                    \
        lookForLeaks();                                                                                      \
        return failures;                                                                                     \
    }
