"""Whole runs of the real program, in a window under Wine: made trees in, backups out.

usage: scripts/in_wine.sh python3 tests/whole_run/whole_run_test.py [NAME...]
Drive Q: holds the sources, drive N: the destinations. The cases are in the modules beside this one.
"""
import os
import sys
import time
import unittest

from fixture import build_onlooker
import copy_cases
import disturbance_cases
import unattended_cases
from program import PROGRAM


class Reporter(unittest.TestResult):
    """Reports as the other test programs do, so that one reader counts them all."""

    def startTest(self, test):
        super().startTest(test)
        self.began = time.monotonic()
        self.bad = False
        print(f"[ RUN      ] {self.name(test)}", flush=True)

    @staticmethod
    def name(test):
        return ".".join(test.id().split(".")[-2:])

    def addError(self, test, error):
        super().addError(test, error)
        self.note(self.errors[-1][1])

    def addFailure(self, test, error):
        super().addFailure(test, error)
        self.note(self.failures[-1][1])

    def addSubTest(self, test, subtest, error):
        super().addSubTest(test, subtest, error)
        if error is not None:
            self.note(f"{subtest}\n{(self.failures + self.errors)[-1][1]}")

    def note(self, text):
        self.bad = True
        print(text, flush=True)

    def stopTest(self, test):
        super().stopTest(test)
        mark = "[  FAILED  ]" if self.bad else "[       OK ]"
        print(f"{mark} {self.name(test)} ({(time.monotonic() - self.began) * 1000:.0f} ms)", flush=True)


def main(names):
    if not os.path.exists(PROGRAM):
        print(f"There is no {PROGRAM}.")
        return 1
    build_onlooker()
    suite = unittest.TestSuite()
    for module in (copy_cases, unattended_cases, disturbance_cases):
        for cases in unittest.defaultTestLoader.loadTestsFromModule(module):
            suite.addTests(test for test in cases if not names or any(name in test.id() for name in names))
    result = Reporter()
    suite.run(result)
    print(f"[==========] {result.testsRun} tests ran.")
    return 0 if result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
