#pragma once

#include <QtGlobal>

/// Makes Qt think that assistive technology listens, or that it has stopped, which no public interface of Qt
/// does.
/// @return whether it worked: without Qt's private headers it cannot
bool setListening(bool on);

/// Skips the test function where setListening() cannot work.
#define VANTREL_NEEDS_LISTENING()                                                                            \
    if (!setListening(true)) {                                                                               \
        QSKIP("Qt's private headers (Debian: qtbase5-private-dev) were not there when this was built");      \
    }
