"""./dev test [SECTION...]: builds and runs the tests, section by section, and ends with one line
that counts them all. The exit status is 0 only when something ran and nothing failed.

Without a section it is all of them but the checks, which `./dev check` runs, and the later Wine;
`all` has the checks too, and `--all` both."""

import concurrent.futures
import os
import signal
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as ElementTree

import winetest

TOP = winetest.TOP
MODULE_SECONDS = 1200  # until a module of tests/e2e is stopped
MODULES = [file.stem for file in (TOP / "tests" / "e2e").glob("test_*.py")]
ALONE = {"test_progress"}
LONG = {"test_com", "test_mail"}  # begun first, so that no processor waits at the end

# In the later Wine clients have 64 bit. What tests a client's view runs with both kinds, and scripts
# that load the stand-ins themselves, which are 32-bit libraries, with the one that can.
CLIENT_BITS = {"test_com": (64, 32), "test_members": (64, 32), "test_mail": (64, 32),
               "test_desk": (32,), "test_desk_automation": (32,), "test_active_messaging": (32,),
               "test_docs": (32,), "test_notes": (32,)}


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


def ctest(preset, environment=None, names="."):
    """Runs the tests of a build whose names match; each failing one is shown in full."""
    if not build(preset):
        return Count(failed=1)
    directory = TOP / "build" / preset
    report = directory / "tests.xml"
    report.unlink(missing_ok=True)
    log = directory / "tests.log"
    with open(log, "wb") as output:
        subprocess.run(
            ["ctest", "--test-dir", str(directory), "-j", str(os.cpu_count() or 1),
             "-R", names, "--no-tests=ignore", "--output-junit", str(report)],
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


def run_module(name, title=None, environment=None):
    """A module of tests/e2e in a process of its own; its output is printed whole when it has ended."""
    title = title or name
    report = TOP / "build" / "e2e" / title
    report.parent.mkdir(parents=True, exist_ok=True)
    report.unlink(missing_ok=True)
    begun = time.monotonic()
    with tempfile.TemporaryFile() as output:
        process = subprocess.Popen(
            [sys.executable, str(TOP / "tools" / "e2e_module.py"), name, str(report)],
            env={**os.environ, **(environment or {})},
            stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT)
        try:
            process.wait(MODULE_SECONDS)
            trouble = f"{name} ended early, with status {process.returncode}"
        except subprocess.TimeoutExpired:
            trouble = f"{name} was stopped after {MODULE_SECONDS} s"
            process.send_signal(signal.SIGINT)  # so that it ends what it has started
            try:
                process.wait(60)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        output.seek(0)
        text = output.read().decode(errors="replace")
    count = Count(failed=1)
    if report.exists():
        count = Count(*map(int, report.read_text().split()))
    else:
        text += trouble + "\n"
    print(f"--- {title}, {time.monotonic() - begun:.0f} s\n{text}", end="", flush=True)
    return count


def end_to_end():
    """The modules have prefixes and ports of their own, so they run side by side, but for the one
    that waits for windows to be drawn."""
    if not build("native", "mailhost", "zipfiles") or not build("windows"):
        return Count(failed=1)
    return run_modules([(name,) for name in MODULES])


def run_modules(runs):
    """`runs` are the arguments of run_module, in the order to begin them."""
    runs.sort(key=lambda run: (run[0] not in LONG, run[0]))
    total = Count()
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count() or 1) as pool:
        for count in pool.map(lambda run: run_module(*run), [r for r in runs if r[0] not in ALONE]):
            total += count
    for run in runs:
        if run[0] in ALONE:
            total += run_module(*run)
    return total


def wine10():
    """The same in the later Wine, where tests/e2e/wine10.txt leaves out what cannot be there; and the
    registration in the two views of a 64-bit system."""
    if (not build("native", "mailhost", "zipfiles") or not build("windows")
            or not build("windows", "clients64")):
        return Count(failed=1)
    os.environ["QUILLON_WINE"] = "wine10"
    try:
        with winetest.WinePrefix() as wine:
            total = ctest("windows", wine.environment(), "Registration")
        total += run_modules([
            (name, f"{name} with {bits}-bit clients", {"QUILLON_CLIENT_BITS": str(bits)})
            for name in MODULES for bits in CLIENT_BITS.get(name, (64,))])
    finally:
        del os.environ["QUILLON_WINE"]
    return total


def check():
    """Each of the checks counts as a test."""
    if not build("native") or not build("windows"):
        return Count(failed=1)
    done = subprocess.run([str(TOP / "tools" / "check.sh")], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    print(done.stdout, end="", flush=True)
    lines = done.stdout.splitlines()
    passed = sum(line.startswith("check passed: ") for line in lines)
    failed = sum(line.startswith("check FAILED: ") for line in lines)
    return Count(passed, max(failed, int(done.returncode != 0)))


def fuzz():
    """Each target looks for new inputs for a while."""
    if not build("fuzz"):
        return Count(failed=1)
    done = subprocess.run([str(TOP / "tools" / "fuzz.sh"), "20"], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    print(done.stdout, end="", flush=True)
    lines = done.stdout.splitlines()
    passed = sum(": nothing found, " in line for line in lines)
    failed = sum(": FAILED, " in line for line in lines)
    return Count(passed, max(failed, int(done.returncode != 0)))


SECTIONS = {
    "check": ("Formatting, layers, documents, clang-tidy", check),
    "native": ("Unit tests, native", native),
    "asan": ("Unit tests, native with ASan and UBSan", asan),
    "windows": ("Unit tests as Windows programs, under Wine", windows),
    "e2e": ("End to end, under Wine", end_to_end),
    "fuzz": ("Fuzz targets, 20 seconds each", fuzz),
    "wine10": ("End to end, under the later Wine with 64-bit clients", wine10),
}


def main(names):
    unknown = [name for name in names if name not in SECTIONS and name not in ("all", "--all")]
    if unknown:
        print(f"no such section: {' '.join(unknown)}; there are {', '.join(SECTIONS)} and all")
        return 2
    if "--all" in names:
        names = list(SECTIONS)
    elif "all" in names:
        names = [name for name in SECTIONS if name != "wine10" or name in names]
    total = Count()
    for name in names or [name for name in SECTIONS if name not in ("check", "wine10")]:
        title, section = SECTIONS[name]
        print(f"\n== {title}", flush=True)
        begun = time.monotonic()
        count = section()
        skipped = f", {count.skipped} skipped" if count.skipped else ""
        print(f"{count}{skipped}, in {time.monotonic() - begun:.0f} s", flush=True)
        total += count
    print(f"\n{total}")
    return 0 if total.passed and not total.failed else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
