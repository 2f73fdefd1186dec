"""e2e_module.py MODULE REPORT: runs one module of tests/e2e and writes how many of its tests passed,
failed and were skipped to the file REPORT. Without that file, it did not come to its end.

In another Wine than the first, which QUILLON_WINE names, tests/e2e/<that>.txt has the tests that
cannot be there, each with its reason, and they are skipped."""

import os
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


def reasons(module):
    """The tests of the module that cannot be in this Wine: identifier -> why."""
    table = os.environ.get("QUILLON_WINE")
    lines = (DIRECTORY / f"{table}.txt").read_text().splitlines() if table else []
    entries = [line.split(None, 1) for line in lines if line.strip() and not line.startswith("#")]
    return {name: why for name, why in entries if name.startswith(module + ".")}


def cases(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from cases(test)
        else:
            yield test


def leave_out(suite, why):
    """An entry that is no test's any more is an error."""
    found = {test.id(): test for test in cases(suite)}
    for name in why:
        test = found[name]
        method = name.rsplit(".", 1)[1]
        setattr(test, method, unittest.skip(why[name])(getattr(test, method)))


def main(module, report):
    sys.path.insert(0, str(DIRECTORY))
    suite = unittest.defaultTestLoader.loadTestsFromName(module)
    leave_out(suite, reasons(module))
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    pathlib.Path(report).write_text("%d %d %d" % counted(result))


if __name__ == "__main__":
    main(*sys.argv[1:])
