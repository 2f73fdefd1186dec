"""A headless Chromium, driven by its DevTools protocol over two pipes."""

import contextlib
import fcntl
import json
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import time

PROGRAM = "chromium-headless-shell"
SECONDS = 60  # for an answer


class BrowserError(Exception):
    """What the page or the browser complained of."""


class Browser(contextlib.AbstractContextManager):
    """One page. `requests` are the addresses that it has asked for, `complaints` the errors of its
    scripts."""

    def __init__(self):
        self.requests, self.complaints = [], []
        self._profile = tempfile.mkdtemp(prefix="browser-")
        self._number, self._session, self._rest, self._events = 0, None, b"", []
        to_read, self._out = os.pipe()
        self._in, to_write = os.pipe()
        # The browser has them as 3 and 4, so they must be elsewhere before.
        ends = [fcntl.fcntl(end, fcntl.F_DUPFD, 20) for end in (to_read, to_write)]
        self._process = subprocess.Popen(
            ["bash", "-c", f'exec "$@" 3<&{ends[0]} 4>&{ends[1]}', "bash", PROGRAM,
             "--remote-debugging-pipe", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--hide-scrollbars", f"--user-data-dir={self._profile}", "about:blank"],
            pass_fds=ends, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        for end in (to_read, to_write, *ends):
            os.close(end)
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target,
                                  flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(domain + ".enable")

    def __exit__(self, *_):
        os.close(self._out)  # ends it
        try:
            self._process.wait(20)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        os.close(self._in)
        shutil.rmtree(self._profile, ignore_errors=True)

    def call(self, method, **parameters):
        self._number += 1
        message = {"id": self._number, "method": method, "params": parameters}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._out, json.dumps(message).encode() + b"\0")
        answer = self._until(lambda said: said.get("id") == self._number)
        if "error" in answer:
            raise BrowserError(f"{method}: {answer['error']['message']}")
        return answer["result"]

    def open(self, file):
        """Shows a file, and returns when it is loaded."""
        with self.loading():
            self.call("Page.navigate", url=pathlib.Path(file).as_uri())

    @contextlib.contextmanager
    def loading(self):
        """What is done in it leads to another page, which is waited for."""
        self._events.clear()
        yield
        if "Page.loadEventFired" not in self._events:
            self._until(lambda said: said.get("method") == "Page.loadEventFired")

    def evaluate(self, expression):
        """The value of a piece of JavaScript, or what a promise comes to."""
        done = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                         awaitPromise=True)
        if "exceptionDetails" in done:
            raise BrowserError(done["exceptionDetails"])
        return done["result"].get("value")

    def _until(self, wanted):
        deadline = time.monotonic() + SECONDS
        while True:
            while b"\0" in self._rest:
                line, _, self._rest = self._rest.partition(b"\0")
                said = json.loads(line)
                self._note(said.get("method"), said.get("params", {}))
                if wanted(said):
                    return said
            left = deadline - time.monotonic()
            if left < 0 or not select.select([self._in], [], [], left)[0]:
                raise BrowserError("the browser does not answer")
            got = os.read(self._in, 1 << 20)
            if not got:
                raise BrowserError(f"{PROGRAM} has ended, with {self._process.wait()}")
            self._rest += got

    def _note(self, method, parameters):
        if not method:
            return
        self._events.append(method)
        if method == "Network.requestWillBeSent":
            self.requests.append(parameters["request"]["url"])
        elif method == "Runtime.exceptionThrown":
            self.complaints.append(parameters["exceptionDetails"])
        elif method == "Log.entryAdded" and parameters["entry"]["level"] == "error":
            self.complaints.append(parameters["entry"]["text"])
