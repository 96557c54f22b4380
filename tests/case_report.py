"""Runs Python test cases and reports them as the other test programs do, so that one reader counts them all."""
import time
import unittest


class Reporter(unittest.TestResult):
    """Writes the lines of a test program."""

    def startTest(self, test):
        super().startTest(test)
        self.began = time.monotonic()
        self.mark = "[       OK ]"
        print(f"[ RUN      ] {self.name(test)}", flush=True)

    @staticmethod
    def name(test):
        return f"{type(test).__name__}.{test.id().split('.')[-1]}"

    def addError(self, test, error):
        super().addError(test, error)
        self.note(self.errors[-1][1])

    def addFailure(self, test, error):
        super().addFailure(test, error)
        self.note(self.failures[-1][1])

    def addSubTest(self, test, subtest, error):
        super().addSubTest(test, subtest, error)
        if error is not None:
            self.note(f"{subtest}\n{self._exc_info_to_string(error, test)}")

    def addSkip(self, test, reason):
        super().addSkip(test, reason)
        self.mark = "[  SKIPPED ]"
        print(reason, flush=True)

    def note(self, text):
        self.mark = "[  FAILED  ]"
        print(text, flush=True)

    def stopTest(self, test):
        super().stopTest(test)
        print(f"{self.mark} {self.name(test)} ({(time.monotonic() - self.began) * 1000:.0f} ms)", flush=True)


def run_cases(classes, names):
    """Runs the tests of the classes, or those whose name holds one of the given; the exit code."""
    suite = unittest.TestSuite(test for case in classes
                               for test in unittest.defaultTestLoader.loadTestsFromTestCase(case)
                               if not names or any(name in test.id() for name in names))
    result = Reporter()
    suite.run(result)
    print(f"[==========] {result.testsRun} tests ran.")
    return 0 if result.wasSuccessful() else 1
