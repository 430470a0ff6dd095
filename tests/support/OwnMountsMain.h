#pragma once

#include "tests/support/MemoryMount.h"
#include "tests/support/TestMain.h"

/// Like VANTREL_TEST_MAIN, with mounts of its own from before main(), which end with the process.
#define VANTREL_OWN_MOUNTS_TEST_MAIN(TestClass)                                                              \
    [[maybe_unused]] static const bool mountsAreOwn = (useOwnMounts(), hasOwnMounts());                      \
    VANTREL_TEST_MAIN(TestClass)
