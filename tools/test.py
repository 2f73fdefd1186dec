"""./dev test [SECTION...]: builds and runs the tests, section by section, and ends with one line
that counts them all. The exit status is 0 only when something ran and nothing failed."""

import os
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ElementTree

import winetest

TOP = winetest.TOP


class Count:
    def __init__(self, passed=0, failed=0, skipped=0):
        self.passed, self.failed, self.skipped = passed, failed, skipped

    def __iadd__(self, other):
        self.passed += other.passed
        self.failed += other.failed
        self.skipped += other.skipped
        return self

    def __str__(self):
        return f"{self.passed} passed, {self.failed} failed"


def build(preset, *targets):
    """Configures once and builds; quiet unless something goes wrong."""
    directory = TOP / "build" / preset
    directory.mkdir(parents=True, exist_ok=True)
    log = directory / "build.log"
    commands = [["cmake", "--build", str(directory)] + (["--target", *targets] if targets else [])]
    if not (directory / "build.ninja").exists():
        commands.insert(0, ["cmake", "--preset", preset])
    with open(log, "wb") as output:
        for command in commands:
            if subprocess.run(command, cwd=TOP, stdin=subprocess.DEVNULL, stdout=output,
                              stderr=subprocess.STDOUT).returncode != 0:
                print(log.read_text(errors="replace")[-20000:])
                print(f"build/{preset} does not build")
                return False
    return True


def ctest(preset, environment=None):
    """Runs the tests of a build; each failing one is shown in full."""
    if not build(preset):
        return Count(failed=1)
    directory = TOP / "build" / preset
    report = directory / "tests.xml"
    report.unlink(missing_ok=True)
    log = directory / "tests.log"
    with open(log, "wb") as output:
        subprocess.run(
            ["ctest", "--test-dir", str(directory), "-j", str(os.cpu_count() or 1),
             "--no-tests=ignore", "--output-junit", str(report)],
            env=environment or os.environ,
            stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)
    if not report.exists():
        print(log.read_text(errors="replace"))
        return Count(failed=1)
    count = Count()
    for case in ElementTree.parse(report).getroot().iter("testcase"):
        status = case.get("status")
        if status == "run":
            count.passed += 1
        elif status == "disabled" or case.find("skipped") is not None:
            count.skipped += 1
        else:
            count.failed += 1
            print(f"--- {case.get('name')} failed\n{case.findtext('system-out') or ''}")
    return count


def native():
    return ctest("native")


def asan():
    return ctest("native-asan", {
        **os.environ,
        "ASAN_OPTIONS": "detect_stack_use_after_return=1:strict_string_checks=1",
        "UBSAN_OPTIONS": "print_stacktrace=1"})


def windows():
    if not build("windows"):
        return Count(failed=1)
    with winetest.WinePrefix() as wine:
        return ctest("windows", wine.environment())


def end_to_end():
    if not build("native", "mailhost", "zipfiles") or not build("windows"):
        return Count(failed=1)
    directory = TOP / "tests" / "e2e"
    if not list(directory.glob("test_*.py")):
        return Count()
    suite = unittest.defaultTestLoader.discover(str(directory), top_level_dir=str(directory))
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    # A test fails once however many of its subtests do; a module or class that could not be set up
    # counts as one failure, though no test ran.
    unhappy = [getattr(test, "test_case", test) for test in
               [*(test for test, _ in result.failures + result.errors), *result.unexpectedSuccesses]]
    failed = {test.id() for test in unhappy}
    ran_and_failed = {test.id() for test in unhappy if isinstance(test, unittest.TestCase)}
    skipped = len(result.skipped)
    return Count(result.testsRun - len(ran_and_failed) - skipped, len(failed), skipped)


def fuzz():
    """Each target looks for new inputs for a minute."""
    if not build("fuzz"):
        return Count(failed=1)
    done = subprocess.run([str(TOP / "tools" / "fuzz.sh"), "60"], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    print(done.stdout, end="", flush=True)
    lines = done.stdout.splitlines()
    passed = sum(": nothing found, " in line for line in lines)
    failed = sum(": FAILED, " in line for line in lines)
    return Count(passed, max(failed, int(done.returncode != 0)))


SECTIONS = {
    "native": ("Unit tests, native", native),
    "asan": ("Unit tests, native with ASan and UBSan", asan),
    "windows": ("Unit tests as Windows programs, under Wine", windows),
    "e2e": ("End to end, under Wine", end_to_end),
    "fuzz": ("Fuzz targets, a minute each", fuzz),
}


def main(names):
    unknown = [name for name in names if name not in SECTIONS]
    if unknown:
        print(f"no such section: {' '.join(unknown)}; there are {', '.join(SECTIONS)}")
        return 2
    total = Count()
    for name in names or SECTIONS:
        title, section = SECTIONS[name]
        print(f"\n== {title}", flush=True)
        count = section()
        skipped = f", {count.skipped} skipped" if count.skipped else ""
        print(f"{count}{skipped}", flush=True)
        total += count
    print(f"\n{total}")
    return 0 if total.passed and not total.failed else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
