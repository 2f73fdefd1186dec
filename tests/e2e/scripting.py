"""What the tests with scripts share: a mail host with a mailbox, and scripts that must say that
they came to their end."""

import collections
import contextlib
import itertools
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
import desk
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "scripts"
MAIL_SCRIPTS = SCRIPTS.parent / "mail"
ENDED = "@ended"  # the last line of a script that was not cut short


class MailHost:
    """The embedded host on free ports; `messages` (bytes each, in mailbox order) are in its store
    from the beginning. `faults` is the text of its fault file; `log` the file with all
    conversations; `options` are more of its own. Its ports are smtp, pop, and those for TLS that
    the options ask for."""

    def __init__(self, messages=(), login=("joe", "secret"), faults="", options=()):
        self._messages = messages
        self._login = login
        self._faults = faults
        self._options = list(map(str, options))

    def __enter__(self):
        self._scratch = tempfile.TemporaryDirectory(prefix="mailhost-")
        self.store = pathlib.Path(self._scratch.name) / "store"
        (self.store / "new").mkdir(parents=True)
        for number, message in enumerate(self._messages, 1):
            (self.store / "new" / f"0000.{number:04}").write_bytes(message)
        folder = pathlib.Path(self._scratch.name)
        (folder / "faults").write_text(self._faults)
        self.log = folder / "log"
        self._errors = folder / "errors"
        with open(self._errors, "wb") as errors:
            self._process = subprocess.Popen(
                [str(winetest.MAILHOST), "--smtp-port", "0", "--pop-port", "0", "--store",
                 str(self.store), "--user", self._login[0], "--password", self._login[1],
                 "--no-lock", "--faults", str(folder / "faults"), "--log", str(self.log),
                 *self._options],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=errors, text=True)
        try:
            lines = iter(self._process.stdout.readline, "")
            ports = dict(line.split() for line in itertools.takewhile("ready\n".__ne__, lines))
            if "pop" not in ports:
                raise RuntimeError(f"mailhost did not start: {self._errors.read_text()}")
            self.smtp, self.pop = int(ports["smtp"]), int(ports["pop"])
            self.smtps, self.pops = int(ports.get("smtps", 0)), int(ports.get("pops", 0))
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait()
        self._process.stdout.close()
        self._scratch.cleanup()

    def complaints(self):
        """Where the client has left the conversation."""
        return self._errors.read_text().splitlines()

    def received(self):
        """The messages in the store, in mailbox order."""
        return [file.read_bytes() for file in sorted((self.store / "new").iterdir())]


def run_script(wine, text, *arguments, engine="vbs", timeout=60):
    """Runs a script from a file of its own. Returns whether it came to its end, which it tells by
    ENDED and exit status 0, and the lines it wrote before."""
    with tempfile.TemporaryDirectory(prefix="script-") as folder:
        script = pathlib.Path(folder) / ("script." + engine)
        script.write_bytes(text.replace("\n", "\r\n").encode("ascii"))
        done = wine.run("cscript", "//nologo", script, *arguments, timeout=timeout)
    lines = done.output.splitlines()
    if done.returncode == 0 and lines[-1:] == [ENDED]:
        return True, lines[:-1]
    print(f"{engine} ended with status {done.returncode:#x} behind {len(lines)} lines")
    return False, lines


def told_by_load_all(root):
    """What mail/load_all.vbs has found, message by message: the lines of each kind."""
    found = []
    told = (pathlib.Path(root) / "found").read_bytes().decode("utf-16")
    for line in told.split("\r\n")[:-1]:
        kind, value = line.split(" ", 1)
        value = re.sub(r"\\(.)", lambda m: {"r": "\r", "n": "\n"}.get(m[1], m[1]), value)
        if kind == "message":
            found.append(collections.defaultdict(list))
        else:
            found[-1][kind].append(value)
    return found


# The last statements of a script; Wine's cscript ends without letting go of its objects.
ENDINGS = {
    "vbs": f'\nSet mail = Nothing\nWScript.Echo "{ENDED}"\nWScript.Quit 0\n',
    "js": f'\nmail = null;\nWScript.Echo("{ENDED}");\nWScript.Quit(0);\n',
}


class ScriptTest:
    """A mix-in of TestCase for scripts that check by themselves: scripts/check.vbs or check.js
    stands in front of each, and every line it writes is a failure."""

    def run_checks(self, wine, text, *arguments, engine="vbs", timeout=60):
        prelude = (SCRIPTS / ("check." + engine)).read_text()
        ended, failures = run_script(wine, prelude + text + ENDINGS[engine], *arguments,
                                     engine=engine, timeout=timeout)
        self.assertEqual([], failures)
        self.assertTrue(ended, "the script did not run to its end; is there a syntax error?")


def prefix_with_server(display=False):
    """A prefix for all tests of a module. The server stands in a directory of its own, because it
    writes files beside itself."""
    wine = unittest.enterModuleContext(winetest.WinePrefix(display))
    directory = wine.drive_c / "Quillon"
    directory.mkdir()
    wine.register(shutil.copy(winetest.SERVER, directory))
    return wine


def install_desk(wine, faces=desk.FACES):
    """Puts the stand-ins for other mail systems into the prefix; returns their store. Programs that
    are running keep the libraries they have."""
    return desk.install(wine.run, wine.drive_c, faces)


def register_sleeper(wine):
    """What server_running needs."""
    if wine.run(winetest.CLIENTS / "Sleeper.exe", "/register").returncode != 0:
        raise RuntimeError("Sleeper.exe cannot be registered")


class ServerProcess:
    """The running server, which is to have one process only, as the system sees it."""

    def __init__(self, wine):
        [pid] = wine.processes("quillon.exe")
        self._folder = pathlib.Path("/proc", str(pid))

    def peak(self):
        """The most bytes that were resident at once since `forget`."""
        [line] = [line for line in (self._folder / "status").read_text().splitlines()
                  if line.startswith("VmHWM:")]
        return int(line.split()[1]) * 1024

    def forget(self):
        (self._folder / "clear_refs").write_text("5")  # proc(5): resets the peak

    def seconds(self):
        """The processor's time that it has taken."""
        times = (self._folder / "stat").read_text().rpartition(")")[2].split()[11:13]
        return sum(map(int, times)) / os.sysconf("SC_CLK_TCK")


@contextlib.contextmanager
def server_running(wine, scratch):
    """The server runs from the beginning to the end."""
    enough = scratch / "enough"
    script = scratch / "hold.js"
    script.write_text("var mail;\n" + (MAIL_SCRIPTS / "hold.js").read_text() + ENDINGS["js"])
    holding = wine.start("cscript", "//nologo", script, enough)
    try:
        while holding.poll() is None and "held" not in holding.output():
            time.sleep(0.01)
        yield ServerProcess(wine)
    finally:
        enough.touch()
        holding.wait()


class MailTest(ScriptTest):
    """A mix-in of TestCase for scripts of mail/; `wine` is the prefix they run in."""

    def run_mail(self, name, *arguments, before="", after="", timeout=60):
        """Runs one, with lines of the caller's making around it."""
        engine = name.rsplit(".", 1)[1]
        text = (MAIL_SCRIPTS / ("session." + engine)).read_text() + before
        text += (MAIL_SCRIPTS / name).read_text() + after
        self.run_checks(self.wine, text, *arguments, engine=engine, timeout=timeout)


def literal(text):
    """A VBScript expression; Wine's VBScript knows Chr, but not ChrW."""
    pieces = [f'"{c}"' if " " <= c <= "~" and c != '"' else f"Chr({ord(c)})" for c in text]
    return " & ".join(pieces).replace('" & "', "") or '""'
