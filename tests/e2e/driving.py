"""A user at the windows of the server: what the tests of dialogs press, type and read."""

import json
import subprocess
import time

import winetest

PATIENCE = 60


class Refused(AssertionError):
    """What the user wanted to do could not be done; the text says why."""


class User:
    """Works the windows of a prefix with a display, through clients/DriveDialogs.cpp, where the
    commands are. `user.keys("Tab", "Alt+S")` is the command `keys`; each gives back a text."""

    def __init__(self, wine):
        self._wine = wine

    def __enter__(self):
        # Commands go in through a pipe, answers come out in a file, as of every program here.
        self._running = self._wine.start(winetest.CLIENTS / "DriveDialogs.exe",
                                         stdin=subprocess.PIPE)
        self._input = self._running.stdin()
        self._answered = 0
        return self

    def __exit__(self, *_):
        self._input.close()
        self._running.wait(PATIENCE)

    def __getattr__(self, command):
        return lambda *words: self._do(command, *words)

    def expect(self, answer, command, *words):
        """Waits until a command gives this answer: what was pressed takes its time."""
        deadline = time.monotonic() + PATIENCE
        while (found := self._do(command, *words)) != answer:
            if time.monotonic() > deadline:
                raise Refused(f"{command} {words}: {found!r} instead of {answer!r}")
            time.sleep(0.05)

    def _do(self, *words):
        line = "\t".join(str(word).replace("\\", "\\\\").replace("\t", "\\t").replace("\n", "\\n")
                         for word in words)
        self._input.write(line.encode("utf-8") + b"\n")
        self._input.flush()
        deadline = time.monotonic() + PATIENCE
        while True:
            lines = self._running.output().split("\n")
            if len(lines) > self._answered + 1:
                break
            if self._running.poll() is not None or time.monotonic() > deadline:
                raise Refused(f"no answer to {line[:200]!r}")
            time.sleep(0.01)
        result, text = lines[self._answered].split(" ", 1)
        self._answered += 1
        text = json.loads(text)
        if result != "ok":
            raise Refused(f"{line[:200]!r}: {text[:1000]}")
        return text
