"""The progress window, on a display: what a user sees of a long operation, and the button that ends
it."""

import pathlib
import tempfile
import time
import unittest

from scripting import ENDED, ENDINGS, MailHost, SCRIPTS
import winetest

MAIL = pathlib.Path(__file__).resolve().parent / "mail"
FIND = winetest.CLIENTS / "FindProgress.exe"
ABORTED = "522"
PATIENCE = 60

SEND = """
mail.TimeoutProtocol = 30000;
mail.AddRecipientTo("bob@example.com");
var big = "A line of a long message, which takes a while.\\r\\n";
while (big.length < 6000000) big += big;
mail.Message = big;
WScript.Echo(codeOf(function () { mail.Send(); }));
mail.Message = "";
"""
RECEIVE = """
mail.TimeoutProtocol = 30000;
mail.LoadMessageIdentifiers();
mail.messageIndex = 0;
WScript.Echo(codeOf(function () { mail.LoadMessage(); }));
"""
# Sending stands still in the middle of the message; receiving takes a minute.
SLOW = "smtp at body stall\npop at RETR split line 100\n"
WAITING = [b"Subject: long\r\n\r\n" + (b"x" * 900 + b"\r\n") * 600]


def setUpModule():
    ProgressWindow.wine = unittest.enterModuleContext(winetest.WinePrefix(display=True))
    ProgressWindow.wine.register()


class ProgressWindow(unittest.TestCase):
    def during(self, look, action, bar, threshold=0):
        """Calls `look` with the host while a script carries out `action` with it; gives what the
        script wrote. An operation that still goes on after that fails, for want of a host."""
        text = "".join([
            (SCRIPTS / "check.js").read_text(), (MAIL / "session.js").read_text(),
            "newServer(WScript.Arguments(0), WScript.Arguments(1));\n",
            f"mail.ProgressBar = {bar};\nmail.ProgressBarThreshold = {threshold};\n",
            action, ENDINGS["js"]])
        with tempfile.TemporaryDirectory(prefix="script-") as folder:
            script = pathlib.Path(folder) / "script.js"
            script.write_text(text, newline="\r\n")
            with MailHost(WAITING, faults=SLOW) as host:
                running = self.wine.start("cscript", "//nologo", script, host.smtp, host.pop)
                look(host)
            return running.wait(PATIENCE).output.splitlines()

    def find(self, *arguments):
        done = self.wine.run(FIND, *arguments, timeout=PATIENCE)
        lines = done.output.splitlines()
        self.assertEqual(0, done.returncode, lines)
        return lines

    def check_cancelled(self, action, bar, caption, expected):
        """The window holds `expected`, apart from the bar's position, and its button ends the
        operation."""
        seen = []
        written = self.during(lambda _: seen.extend(self.find(caption, "press")), action, bar)
        self.assertEqual([ABORTED, ENDED], written)
        for line in seen:
            if line.startswith("bar: "):
                self.assertTrue(0 < int(line[5:]) < 1000, line)
        self.assertEqual(expected + ["active: 0", "gone"],
                         [line.split(" ")[0] if line.startswith("bar: ") else line
                          for line in seen])

    def test_sending_is_cancelled(self):
        self.check_cancelled(SEND, 7, "Sending Mail",
                             ["text: Sending message...", "bar:", "button: Cancel"])

    def test_receiving_is_cancelled(self):
        self.check_cancelled(RECEIVE, 7, "Internet Mail",
                             ["text: Receiving message...", "bar:", "button: Cancel"])

    def test_only_the_parts_that_are_wanted(self):
        self.check_cancelled(SEND, 5, "Sending Mail", ["bar:", "button: Cancel"])

    def check_unseen(self, **settings):
        def look(host):
            deadline = time.monotonic() + PATIENCE
            while "fault: smtp at body" not in host.log.read_text():
                self.assertLess(time.monotonic(), deadline)
                time.sleep(0.05)
            self.assertEqual([], self.find())

        result, ended = self.during(look, SEND, **settings)
        self.assertNotIn(result, ("0", ABORTED))  # it was at work all the time
        self.assertEqual(ENDED, ended)

    def test_none_is_wanted(self):
        self.check_unseen(bar=0)

    def test_the_message_is_too_short(self):
        self.check_unseen(bar=7, threshold=50_000_000)


if __name__ == "__main__":
    unittest.main()
