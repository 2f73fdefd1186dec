"""e2e_module.py MODULE REPORT: runs one module of tests/e2e and writes how many of its tests passed,
failed and were skipped to the file REPORT. Without that file, it did not come to its end."""

import pathlib
import sys
import unittest

DIRECTORY = pathlib.Path(__file__).resolve().parent.parent / "tests" / "e2e"


def counted(result):
    """A test fails once however many of its subtests do; a module or class that could not be set up
    counts as one failure, though no test ran."""
    unhappy = [getattr(test, "test_case", test) for test in
               [*(test for test, _ in result.failures + result.errors), *result.unexpectedSuccesses]]
    failed = {test.id() for test in unhappy}
    ran_and_failed = {test.id() for test in unhappy if isinstance(test, unittest.TestCase)}
    skipped = len(result.skipped)
    return result.testsRun - len(ran_and_failed) - skipped, len(failed), skipped


def main(module, report):
    sys.path.insert(0, str(DIRECTORY))
    suite = unittest.defaultTestLoader.loadTestsFromName(module)
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    pathlib.Path(report).write_text("%d %d %d" % counted(result))


if __name__ == "__main__":
    main(*sys.argv[1:])
