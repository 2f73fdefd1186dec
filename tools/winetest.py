"""Windows programs in a throw-away copy of the private Wine's prefix, for the end-to-end tests.

    with WinePrefix() as wine:
        wine.register(SERVER)
        done = wine.run("cscript", "//nologo", script, timeout=30)
        # done.returncode, done.output

A prefix is a machine of its own: registry, C: drive, processes. Everything in it is ended when the
`with` block is left. Output goes through files, never through pipes, so a server that a client
started cannot hold a test open.
"""

import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
WINDOWS_BUILD = TOP / "build" / "windows"
SERVER = WINDOWS_BUILD / "quillon.exe"
MAILHOST = TOP / "build" / "native" / "mailhost"
CLIENTS = WINDOWS_BUILD / "clients"
DOUBLES = WINDOWS_BUILD / "doubles"
# The later Wine has programs of both kinds; there tests take script hosts and clients of so many
# bits. The server and its libraries have 32 anywhere.
WINE = os.environ.get("QUILLON_WINE", "")
CLIENT_BITS = int(os.environ.get("QUILLON_CLIENT_BITS") or (64 if WINE else 32))
_ENV = TOP / "tools" / "wine" / "env.sh"


def windows_path(path):
    """The name a Windows program knows a Linux path by."""
    return "Z:" + str(pathlib.Path(path).resolve()).replace("/", "\\")


def client(name):
    """A program of tests/e2e/clients that is built for 64 bit as well."""
    return WINDOWS_BUILD / ("clients64" if CLIENT_BITS == 64 else "clients") / f"{name}.exe"


class Done:
    """A program that has ended: its exit status and what it wrote to stdout and stderr together,
    decoded from the OEM code page, with line ends as \\n."""

    def __init__(self, returncode, output):
        self.returncode = returncode
        self.output = output.decode("cp437").replace("\r\n", "\n")


class WineTimeout(Exception):
    """The program did not end in time and was killed; the text holds what it had written."""


class Running:
    """A Windows program that was started and not waited for."""

    def __init__(self, process, output):
        self._process = process
        self._output = output

    def poll(self):
        """The exit status, or None while it runs."""
        return self._process.poll()

    def stdin(self):
        """Where it reads from, when it was started with a pipe."""
        return self._process.stdin

    def output(self):
        """What it has written so far."""
        # Without moving the place in the file, which is also the one where the program writes.
        file = self._output.fileno()
        return os.pread(file, os.fstat(file).st_size, 0).decode("cp437").replace("\r\n", "\n")

    def wait(self, timeout=60):
        try:
            self._process.wait(timeout)
        except subprocess.TimeoutExpired:
            self.kill()
            raise WineTimeout(f"still running after {timeout} s; output: {self.output()}") from None
        self._output.seek(0)
        with self._output:
            return Done(self._process.returncode, self._output.read())

    def kill(self):
        """Ends it at once, as a crash would."""
        self._process.kill()
        self._process.wait()


class WinePrefix:
    """A copy of the prefix template with its own wineserver. `display` starts an Xvfb for it;
    without one a message box returns at once. `environment` is added to every program's."""

    def __init__(self, display=False, environment=None):
        self._wants_display = display
        self._extra = dict(environment or {})
        self._xvfb = None
        self._keeper = None
        self.path = None

    def __enter__(self):
        self._scratch = pathlib.Path(tempfile.mkdtemp(prefix="quillon-"))
        self.path = self._scratch / "prefix"
        self._environment = {k: v for k, v in os.environ.items() if k != "DISPLAY"}
        self._environment.update(self._extra, WINEPREFIX=str(self.path))
        try:
            if self._wants_display:
                self._start_display()
            self._shell('wine_copy_prefix "$WINEPREFIX"')
            if self._wants_display:
                # Wine does not find its own fonts where it lies.
                self._shell('cp "$wine_root"/usr/share/wine/fonts/*.ttf '
                            '"$WINEPREFIX/drive_c/windows/Fonts"')
            self._shell("wine_start")
            if self._wants_display:
                # There is no window manager, and Wine would wait 2 s for its word on each window.
                self.run("reg", "add", r"HKCU\Software\Wine\X11 Driver", "/v", "Managed", "/d", "N")
            self._keep_desktop()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self.path.is_dir():
            self._shell("wine_stop")
        if self._keeper:
            self._keeper.wait()
        if self._xvfb:
            self._xvfb.terminate()
            self._xvfb.wait()
        shutil.rmtree(self._scratch, ignore_errors=True)

    @property
    def drive_c(self):
        return self.path / "drive_c"

    def environment(self):
        """What run.sh needs in its environment to run a program here."""
        return {**self._environment, "QUILLON_WINE_STARTED": "1"}

    def start(self, program, *arguments, stdin=None, cwd=None, environment=None):
        """Starts a program: a name Wine knows, a Windows path, or a pathlib.Path of this machine.
        Arguments that are pathlib.Path reach it as Z:\\ paths."""
        if WINE and CLIENT_BITS == 32 and program == "cscript":
            program = r"C:\windows\syswow64\cscript.exe"
        words = [str(program)]
        words += [windows_path(a) if isinstance(a, pathlib.Path) else str(a) for a in arguments]
        output = tempfile.TemporaryFile()
        process = subprocess.Popen(
            [str(TOP / "tools" / "wine" / "run.sh"), *words],
            stdin=stdin or subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
            cwd=cwd, env={**self.environment(), **(environment or {})})
        return Running(process, output)

    def run(self, program, *arguments, timeout=60, **how):
        """Runs a program to its end and returns Done; raises WineTimeout when it takes longer."""
        return self.start(program, *arguments, **how).wait(timeout)

    def register(self, server=SERVER):
        """Registers an automation server in this prefix; a failure raises."""
        done = self.run(pathlib.Path(server), "/RegServer")
        if done.returncode != 0:
            raise RuntimeError(f"/RegServer: exit status {done.returncode}: {done.output}")

    def unregister(self, server=SERVER):
        done = self.run(pathlib.Path(server), "/UnregServer")
        if done.returncode != 0:
            raise RuntimeError(f"/UnregServer: exit status {done.returncode}: {done.output}")

    def reset_com(self):
        """Makes COM forget a server that died: its class could never be activated again here."""
        self.run("net", "stop", "rpcss")

    def processes(self, name=None):
        """The Windows programs running in this prefix, as {pid: file name}; only those called
        `name` (any case) when given."""
        mark = b"WINEPREFIX=" + str(self.path).encode() + b"\0"
        found = {}
        for entry in pathlib.Path("/proc").iterdir():
            if not entry.name.isdigit():
                continue
            try:
                if mark not in (entry / "environ").read_bytes() + b"\0":
                    continue
                program = (entry / "cmdline").read_bytes().split(b"\0")[0].decode(errors="replace")
            except OSError:
                continue  # it has ended meanwhile, or is another user's
            program = program.replace("\\", "/").rsplit("/", 1)[-1].lower()
            if program.endswith(".exe") and name in (None, program):
                found[int(entry.name)] = program
        return found

    def wait_until_gone(self, name, timeout=15):
        """Waits for the last program called `name` to end; False when one is left."""
        deadline = time.monotonic() + timeout
        while self.processes(name):
            if time.monotonic() > deadline:
                return False
            time.sleep(0.05)
        return True

    def kill(self, name):
        """Ends every program called `name`, as a crash would; see reset_com."""
        for pid in self.processes(name):
            os.kill(pid, signal.SIGKILL)

    def _shell(self, commands):
        subprocess.run(
            ["bash", "-euc", f'. "{_ENV}"; {commands}'], env=self._environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, check=True)

    def _keep_desktop(self):
        """See the program; without a build there is none, and nothing to test either."""
        program = CLIENTS / "KeepDesktop.exe"
        while program.exists():
            keeper = self.start(program)
            while keeper.poll() is None:
                if "kept" in keeper.output():
                    self._keeper = keeper
                    return
                time.sleep(0.01)
            keeper.wait()

    def _start_display(self):
        read, write = os.pipe()
        self._xvfb = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1024x768x24", "-nolisten", "tcp"],
            pass_fds=[write], stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as numbers:
            number = numbers.readline().strip()
        if not number:
            raise RuntimeError("Xvfb did not start")
        self._environment["DISPLAY"] = ":" + number
