"""Windows, on a display: the progress of a long operation with the button that ends it, and the boxes
that show errors."""

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
HOST = r"127\.0\.0\.1"
TIME = r"0:\d\d so far(, \d+ \w+ left)?"

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
LIST = """
mail.TimeoutProtocol = 30000;
WScript.Echo(codeOf(function () { mail.LoadMessageHeaders(); }));
"""
# Sending stands still in the middle of the message; receiving takes a minute; the third header does
# not come.
SLOW = "smtp at body stall\npop at RETR split line 100\npop at TOP 3 silent\n"
WAITING = [b"Subject: long\r\n\r\n" + (b"x" * 900 + b"\r\n") * 600]
WAITING += [b"Subject: short\r\n\r\ntext\r\n"] * 3


# Each failure, with what a box shows of it and the error that is raised all the same.
FAILURES = """
mail.ErrorDisplay = true;
WScript.Echo(codeOf(function () { mail.Send(); }));
mail.AddRecipientTo("bob@example.com");
WScript.Echo(codeOf(function () { mail.Send(); }));
mail.SMTPPort = 1;
WScript.Echo(codeOf(function () { mail.Send(); }));
WScript.Echo(codeOf(function () { mail.LoadMessageHeaders(); }));
mail.POPPort = 1;
WScript.Echo(codeOf(function () { mail.Login(); }));
mail.SMTPPort = WScript.Arguments(0);
var result = 0;
mail.AsynchObjectRegister({AsynchNotification: function (a, kind, c, d, e, f) { result = f; }}, 0, 0, 0);
mail.Send();
while (!result) mail.subject;  // the object hears of it when the box has been answered
WScript.Echo(result);
mail.AsynchObjectUnregister(mail, 0);
mail.ErrorDisplay = false;
WScript.Echo(codeOf(function () { mail.LoadMessageHeaders(); }));
"""
BOXES = [
    ("516", "Mail Error", "No addressees were specified.: {516}"),
    ("6550", "SMTP Mail Error",
     "Failed to send the message.: {550} SMTP mailbox doesn't exist."),
    ("6002", "SMTP Mail Error", "Failed to Logon to SMTP server.: {2}"),
    ("6015", "POP Mail Error", "Failed to load the message headers.: {15} not you"),
    ("6002", "POP Mail Error",
     "Failed to Logon to POP server: {2} Could not connect to POP server."),
    ("550", "SMTP Mail Error",
     "Failed to send the message.: {550} SMTP mailbox doesn't exist."),
    ("6002", None, None),
]
REFUSING = "smtp at MAIL reply 550 no\npop at PASS reply -ERR not you\n"


def setUpModule():
    Windows.wine = unittest.enterModuleContext(winetest.WinePrefix(display=True))
    Windows.wine.register()


class Windows(unittest.TestCase):
    def during(self, look, action, bar, threshold=0, faults=SLOW):
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
            with MailHost(WAITING, faults=faults) as host:
                running = self.wine.start("cscript", "//nologo", script, host.smtp, host.pop)
                look(host)
            return running.wait(PATIENCE).output.splitlines()


class ErrorBoxes(Windows):
    def test_failures_are_shown_and_raised(self):
        shown = []

        def answer(_):
            captions = [caption for _, caption, _ in BOXES if caption]
            done = self.wine.run(winetest.CLIENTS / "AnswerBoxes.exe", *captions, timeout=PATIENCE)
            shown.extend(done.output.splitlines())

        written = self.during(answer, FAILURES, bar=0, faults=REFUSING)
        self.assertEqual([f"{caption}: {text}" for _, caption, text in BOXES if caption], shown)
        self.assertEqual([code for code, _, _ in BOXES] + [ENDED], written)


class ProgressWindow(Windows):
    def find(self, *arguments):
        done = self.wine.run(FIND, *arguments, timeout=PATIENCE)
        lines = done.output.splitlines()
        self.assertEqual(0, done.returncode, lines)
        return lines

    def check_cancelled(self, action, bar, caption, *texts):
        """The window holds the texts, which are patterns, and its button ends the operation."""
        seen = []
        written = self.during(lambda _: seen.extend(self.find(caption, "press")), action, bar)
        self.assertEqual([ABORTED, ENDED], written)
        expected = [f"text: {text}" for text in texts] + [
            r"bar: [1-9]\d{0,2}", "button: Cancel", "active: 0", "gone"]
        self.assertEqual(len(expected), len(seen), seen)
        for pattern, line in zip(expected, seen):
            self.assertRegex(line, f"^{pattern}$")

    def test_sending_is_cancelled(self):
        self.check_cancelled(SEND, 7, "Sending Mail", r"Sending message\.\.\.", HOST,
                             r"[\d.]+ [KM]B of [\d.]+ MB \(\d+ %\)", TIME)

    def test_receiving_is_cancelled(self):
        self.check_cancelled(RECEIVE, 7, "Internet Mail", r"Receiving message\.\.\.", HOST,
                             r"[\d.]+ \w+ of [\d.]+ KB \(\d+ %\)", TIME)

    def test_listing_is_cancelled(self):
        self.check_cancelled(LIST, 7, "Internet Mail", r"Loading message headers\.\.\.", HOST,
                             r"2 of 4 messages \(50 %\)", TIME)

    def test_only_the_parts_that_are_wanted(self):
        self.check_cancelled(SEND, 5, "Sending Mail")

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
