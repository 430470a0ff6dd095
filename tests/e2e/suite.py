"""The test process that tests/e2e/run starts: makes the session, runs the tests, counts them."""

import os
import signal
import sys
import time
import traceback
import unittest

import a11y
import desktop

#: No single test takes longer, however slow the machine.
SECONDS_A_TEST = 90


class Result(unittest.TestResult):
    """Says what became of each test when it ends, and keeps a screenshot of one that failed."""

    def __init__(self):
        super().__init__()
        self.passed = 0
        self.began = 0.0
        self.failed_tests = []
        self.bad = set()

    def startTest(self, test):
        super().startTest(test)
        self.began = time.monotonic()

    def say(self, word, test, more=""):
        print(f"{word:7} {time.monotonic() - self.began:5.1f} s  {name_of(test)}{more}")

    def stopTest(self, test):
        super().stopTest(test)
        print("\f", flush=True)

    def addSuccess(self, test):
        if test.id() not in self.bad:
            self.passed += 1
            self.say("ok", test)

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        self.say("skipped", test, f" ({reason})")

    def addFailure(self, test, err):
        self.fail(test, err)

    def addError(self, test, err):
        self.fail(test, err)

    def addSubTest(self, test, subtest, err):
        if err is not None:
            self.fail(subtest, err, count_as=test)

    def fail(self, test, err, count_as=None):
        counted = (count_as or test).id()
        if counted not in self.bad:
            self.bad.add(counted)
            self.failed_tests.append(counted)
        self.say("FAILED", test)
        traceback.print_exception(*err, file=sys.stdout)
        picture = "".join(c if c.isalnum() or c in "._-" else "_" for c in name_of(test))[:120] + ".png"
        if desktop.screenshot(os.path.join(desktop.WORK, "failures", picture)):
            print(f"screenshot: {os.path.join(os.environ['VANTREL_E2E_KEPT'], picture)}")


def name_of(test):
    return test.id().replace("setUpClass (", "").rstrip(")")


def each_test(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from each_test(test)
        else:
            yield test


def out_of_time(*_):
    raise TimeoutError("the test took too long")


def with_limit(test):
    def run(result):
        signal.signal(signal.SIGALRM, out_of_time)
        signal.alarm(SECONDS_A_TEST)
        try:
            return type(test).run(test, result)
        finally:
            signal.alarm(0)

    test.run = run
    return test


def ended(*_):
    sys.exit(143)


def main(share, patterns):
    """Runs every so manieth of the tests with one of the patterns in its name."""
    signal.signal(signal.SIGTERM, ended)
    here = os.path.dirname(os.path.realpath(__file__))
    found = each_test(unittest.defaultTestLoader.discover(here, pattern="test_*.py"))
    wanted = [test for test in found if not patterns or any(pattern in test.id() for pattern in patterns)]
    number, shares = map(int, share.removeprefix("--share=").split("/"))
    result = Result()
    try:
        desktop.begin()
        a11y.begin()
        unittest.TestSuite(map(with_limit, wanted[number::shares])).run(result)
    finally:
        desktop.end()
    for name in result.failed_tests:
        print(f"failed: {name}")
    print(f"counts: {result.passed} {len(result.failed_tests)} {len(result.skipped)}")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
