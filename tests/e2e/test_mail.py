"""The mail road: scripts that send and read through the registered server, against the embedded
host, with all that can go wrong."""

import contextlib
import email
import email.policy
import json
import os
import pathlib
import re
import socket
import tempfile
import time
import unittest
from email.utils import getaddresses

from scripting import (ENDED, ENDINGS, MAIL_SCRIPTS, SCRIPTS, MailHost, MailTest,
                       prefix_with_server)
import winetest


def body(message):
    return message.split(b"\r\n\r\n", 1)[1]


def setUpModule():
    MailRoad.wine = prefix_with_server()


class MailRoad(MailTest, unittest.TestCase):
    pass


# Servers that speak when nobody listens.
TALKATIVE_SMTP = """protocol smtp
S: 220 ready
C: HELO *
S: 250 hello
C: RSET
S: 250 ok
S: 421 idle too long
C: QUIT
S: 221 bye
"""
TALKATIVE_POP = """protocol pop
S: +OK ready
C: USER joe
S: +OK
C: PASS secret
S: +OK
S: -ERR idle too long
C: QUIT
S: +OK bye
"""
# What log_events.vbs leads to: "%" stands for any text, TIME for date and time, "|" for nothing.
LOG = """--- Quillon %
TIME Attempting to connect... |
SMTP socket exception: 10061 %
TIME Attempting to connect... |
POP socket exception: 10061 %
TIME Attempting to connect... |
SMTP Rx: 220 ready
SMTP Tx: HELO %
SMTP Rx: 250 hello
SMTP Tx: RSET
SMTP Rx: 250 ok
SMTP Bogus RX: 421 idle too long
SMTP Tx: QUIT
SMTP socket closed.
TIME Attempting to connect... |
+OK ready
POP Tx: USER joe
+OK
POP Tx: PASS ****
+OK
POP Bogus RX: -ERR idle too long
POP Tx: QUIT
+OK bye
POP socket closed.
--- Starting SMTP Send Method TIME ---
TIME Encoding alternatives... |
TIME Encoding attachments... |
TIME Attempting to connect... |
SMTP Rx: 220 localhost SMTP mailhost
SMTP Tx: HELO %
SMTP Rx: 250 %
SMTP Tx: RSET
SMTP Rx: 250 %
SMTP Tx: MAIL FROM: <ann@example.com>
SMTP Rx: 250 %
SMTP Tx: RCPT TO: <bob@example.com>
SMTP Rx: 250 %
SMTP Tx: DATA
SMTP Rx: 354 %
TIME Sending message... |
TIME Sending alternatives... |
TIME Sending attachments... |
TIME Sending terminator... |
SMTP Rx: 250 message accepted
TIME Message sent successfully! |
"""


class ThereAndBack(MailRoad):
    def test_recipients_and_mailbox(self):
        waiting = [b"From: x@example.com\r\nSubject: First\r\n\r\n1\r\n",
                   b"From: x@example.com\r\nSubject: Dots\r\n\r\n.\r\n..two\r\n\r\n"]
        with MailHost(waiting) as host:
            self.run_mail("send.vbs", host.smtp, host.pop)
            public, hidden, trial = host.received()[2:]
            self.check_envelope(host, 2, ["bob@example.com", "jane@example.com",
                                          "plain@example.com", "carl@example.com",
                                          "hidden@example.com", "hidden2@example.com"])
            self.check_envelope(host, 3, ["hidden@example.com"])
            self.check_envelope(host, 4, ["trial@example.com"])
            self.assertIn(b"\r\nTo: bob@example.com\r\n", trial)
            self.check_header(public)
            for message in (public, hidden):
                self.assertNotIn(b"hidden", message)
                self.assertNotIn(b"bcc", message.lower())
            self.assertEqual(1, host.log.read_text().count("SMTP -- connected"))
            for file in sorted((host.store / "new").iterdir())[3:]:
                file.unlink()
            self.run_mail("receive.vbs", host.smtp, host.pop)
            self.assertEqual(waiting[1:], host.received())

    def check_envelope(self, host, number, recipients):
        name = sorted((host.store / "new").iterdir())[number].name
        envelope = (host.store / "envelopes" / (name + ".envelope")).read_text()
        self.assertEqual(["MAIL FROM:<ann@example.com>"] +
                         [f"RCPT TO:<{address}>" for address in recipients], envelope.splitlines())

    def check_header(self, message):
        parsed = email.message_from_bytes(message, policy=email.policy.default)
        self.assertEqual([], parsed.defects)
        self.assertEqual([("Bob", "bob@example.com"), ("Doe, Jane", "jane@example.com"),
                          ("", "plain@example.com")], getaddresses([parsed["To"]]))
        self.assertEqual([("Carl", "carl@example.com")], getaddresses([parsed["Cc"]]))
        self.assertEqual([("Ann Example", "ann@example.com")], getaddresses([parsed["From"]]))
        self.assertEqual("Minutes", parsed["Subject"])
        self.assertEqual("office@example.com", parsed["Reply-To"])
        self.assertEqual(("1", "High"), (parsed["X-Priority"], parsed["X-MSMail-Priority"]))
        self.assertEqual("Sales", parsed["X-Department"])
        self.assertEqual("+0530", str(parsed["Date"])[-5:])
        self.assertEqual("Dear all,\n\nthe minutes are done.\n",
                         parsed.get_content().replace("\r\n", "\n"))

    # The text that is put, and what stands in the message; read back it is what stands there. A
    # line that is nothing but a dot leaves as a dot and a blank, and the server takes the dot away.
    BODIES = [
        ("", b"\r\n"),
        ("no end", b"no end\r\n"),
        ("an end\r\n", b"an end\r\n\r\n"),
        ("cr\rlf\ncrlf\r\n\n\rend", b"cr\r\nlf\r\ncrlf\r\n\r\n\r\nend\r\n"),
        (".", b" \r\n"),
        (".\r\nafter", b" .\r\nafter\r\n"),
        ("before\r\n.\r\nafter\n.\nlast\r\n.", b"before\r\n \r\nafter\r\n \r\nlast\r\n \r\n"),
        (".one\r\n..two\n...three\r.", b".one\r\n..two\r\n...three\r\n \r\n"),
        ("Gr\u00fc\u00dfe \u20ac \u00ff\u00a0.", b"Gr\xfc\xdfe \x80 \xff\xa0.\r\n"),
        ("\u4e2d\u6587", b"??\r\n"),
        ("a\0b\tc\x1ad\x7f", b"a\0b\tc\x1ad\x7f\r\n"),
        ("long " * 2000, b"long " * 2000 + b"\r\n"),
        (".x\r\n" * 50000, b".x\r\n" * 50000 + b"\r\n"),
    ]

    # What is put, and what stands in the message.
    SUBJECTS = [
        ("", b""),
        ("plain", b"plain"),
        ("one\r\nBcc: eve@example.com", b"one Bcc: eve@example.com"),
        ("a\rb\n\nc\0d", b"a b c d"),
        ("Gr\u00fc\u00dfe \u20ac", b"Gr\xfc\xdfe \x80"),
    ]

    def test_texts(self):
        texts, expected = [], []
        for number, (text, wire) in enumerate(self.BODIES):
            subject, field = self.SUBJECTS[number % len(self.SUBJECTS)]
            texts.append([subject, text, field.decode("cp1252"), wire.decode("cp1252")])
            expected.append((field, wire))
        with MailHost() as host:
            self.run_mail("texts.js", host.smtp, host.pop,
                          before=f"var texts = {json.dumps(texts)};\n")
            sent = [(re.search(rb"^Subject: (.*)\r$", message, re.M)[1], body(message))
                    for message in host.received()]
        for got, wanted in zip(sent, expected, strict=True):
            self.assertEqual(wanted, got)

    def test_login_data(self):
        with MailHost() as host, MailHost(faults="smtp at MAIL reply 550 no") as refusing:
            self.run_mail("login_data.vbs", host.smtp, host.pop, refusing.smtp)
            self.assertEqual(1, len(host.received()))

    def test_no_field_can_start_another(self):
        with MailHost() as host:
            self.run_mail("fields.js", host.smtp, host.pop)
            message, = host.received()
        self.assertEqual(b"text\r\n", body(message))
        self.assertNotRegex(message, rb"(?m)^X-Evil")
        inside = re.findall(rb"\S X-Evil: (\d)", message)
        self.assertEqual([b"%d" % n for n in range(1, 5)], sorted(inside))

    def test_no_command_can_carry_another(self):
        with MailHost() as host:
            self.run_mail("refused.js", host.smtp, host.pop)
            self.assertEqual("", host.log.read_text())

    def test_protocol_log(self):
        with MailHost() as host:
            self.run_mail("logging.vbs", host.smtp, host.pop)
            self.assertEqual(2, len(host.received()))
        log = (self.wine.drive_c / "Quillon" / "POPDUMP.TXT").read_bytes()
        self.assertRegex(log, rb"\A--- Quillon \d+\.\d+\.\d+ \([0-9a-f]{12}")
        self.assertTrue(log.endswith(b"\r\n"))
        self.assertNotIn(b"secret", log)
        lines = log.decode("ascii").split("\r\n")
        self.assertEqual(1, lines.count("POP Tx: PASS ****"))
        for step in ("SMTP Tx: MAIL FROM: <ann@example.com>", "SMTP Tx: RCPT TO: <bob@example.com>",
                     "SMTP Tx: DATA", "SMTP Rx: 250 message accepted", "POP Tx: TOP 1 0",
                     "Subject: Logged"):
            self.assertEqual(1, lines.count(step), step)
        self.assertRegex(lines[1], r"^--- Starting SMTP Send Method \S.* ---$")

    def test_protocol_log_of_events(self):
        (self.wine.drive_c / "page.htm").write_bytes(b"<p>")
        with MailHost() as host, MailHost(faults=TALKATIVE_SMTP) as smtp, \
                MailHost(faults=TALKATIVE_POP) as pop, socket.socket() as nobody:
            nobody.bind(("127.0.0.1", 0))
            self.run_mail("log_events.vbs", host.smtp, host.pop, smtp.smtp, pop.pop,
                          nobody.getsockname()[1])
            self.assertEqual([], smtp.complaints() + pop.complaints())
        log = (self.wine.drive_c / "Quillon" / "POPDUMP.TXT").read_bytes().decode("ascii")
        expected = re.escape(LOG.replace("|", "")).replace("%", ".+")
        expected = expected.replace("TIME", r"\d{4}(?:-\d\d){2} \d\d(?::\d\d){2}").split("\\\n")
        lines = log.split("\r\n")
        self.assertEqual(len(expected), len(lines), log)
        for pattern, line in zip(expected, lines):
            self.assertRegex(line, f"^{pattern}$")


def subjects(messages):
    return [re.search(rb"^Subject: (.*)\r$", message, re.M)[1] for message in messages]


class Notification(MailRoad):
    @classmethod
    def setUpClass(cls):
        sleeper = winetest.CLIENTS / "Sleeper.exe"
        if cls.wine.run(sleeper, "/register").returncode != 0:
            raise RuntimeError("Sleeper.exe cannot be registered")

    def run_listening(self, name, *arguments):
        listener = (MAIL_SCRIPTS / "listener.js").read_text()
        self.run_mail(name, *arguments, before=listener, timeout=180)

    def test_operations_that_go_on_by_themselves(self):
        large = self.wine.drive_c / "large"
        with open(large, "wb") as file:
            for _ in range(200):
                file.write(os.urandom(1 << 20))
        temporary = self.wine.drive_c / "Temporary"
        temporary.mkdir()
        with MailHost(faults="smtp at body 2 stall\npop at TOP 1 delay 1000\n") as host:
            self.run_listening("asynch.js", host.smtp, host.pop, "C:\\large")
            self.assertEqual([], list(temporary.iterdir()))
            self.assertEqual([b"Short", b"Long", b"Last", b"Last", b"Last"],
                             subjects(host.received()))
            self.assertGreater(len(host.received()[1]), 20 << 20)

    def test_objects_good_and_bad(self):
        waiting = (b"From: x@example.com\r\nSubject: Notes\r\n"
                   b"Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nText.\r\n"
                   b"--b\r\nContent-Type: text/csv; name=t.csv\r\n\r\na;b\r\n--b--\r\n")
        page = self.wine.drive_c / "page.htm"
        page.write_bytes(b"<p>")
        with MailHost([waiting], faults="smtp at RCPT 4 reply 550 no") as host:
            self.run_listening("callbacks.js", host.smtp, host.pop, "C:\\page.htm")
            self.assertEqual([b"blocks", b"reads", b"last", b"to some"], subjects(host.received()))

    def test_an_object_with_declared_arguments(self):
        with MailHost() as host:
            done = self.wine.run(winetest.client("TypedListener"), host.smtp, "Typed")
            steps = ("Sending headers...", "Connected to server...", "Sending HELO...",
                     "Logged in successfully.", "Mail from...", "Sending recipients...",
                     "Sending message...", "Message Sent Successfully")
            self.assertEqual([f"1 1 -1 {step}" for step in steps] + [f"1 2 -1 {steps[-1]}"],
                             done.output.splitlines())
            self.assertEqual(0, done.returncode)
            self.assertEqual([b"Typed"], subjects(host.received()))

    def start_listening(self, folder, name, *arguments):
        parts = [SCRIPTS / "check.js", *(MAIL_SCRIPTS / part
                                         for part in ("session.js", "listener.js", name))]
        script = folder / name
        script.write_text("".join(part.read_text() for part in parts) + ENDINGS["js"])
        return self.wine.start("cscript", "//nologo", script, *arguments)

    def wait_for(self, condition, what):
        deadline = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), deadline, what)
            time.sleep(0.02)

    def test_an_object_that_blocks_costs_other_programs_mail_only(self):
        with MailHost() as host, tempfile.TemporaryDirectory(prefix="scripts-") as scratch:
            folder = pathlib.Path(scratch)
            other = self.start_listening(folder, "meanwhile.js", host.smtp, host.pop, folder)
            self.wait_for(lambda: "held" in other.output(), "the other program")
            blocking = self.start_listening(folder, "blocking.js", host.smtp, host.pop, folder)
            self.assertEqual(["held", ENDED], other.wait().output.splitlines())
            self.assertEqual([ENDED], blocking.wait().output.splitlines())
            self.assertEqual([b"Blocked"], subjects(host.received()))

    def test_an_object_whose_program_is_gone(self):
        """The operation goes on, and afterwards nobody is registered any more."""
        with MailHost(faults="smtp at DATA delay 1500\n") as host, \
                tempfile.TemporaryDirectory(prefix="scripts-") as scratch:
            folder = pathlib.Path(scratch)
            ports = host.smtp, host.pop
            survivor = self.start_listening(folder, "survivor.js", *ports, folder / "go on")
            self.wait_for(lambda: "held" in survivor.output(), "the first program")
            victim = self.start_listening(folder, "abandoned.js", *ports)
            self.wait_for(lambda: "SMTP C: DATA" in host.log.read_text(), "the message")
            victim.kill()
            victim.wait()
            self.wait_for(host.received, "the message of the program that is gone")
            (folder / "go on").touch()
            self.assertEqual(["held", ENDED], survivor.wait().output.splitlines())
            self.assertEqual([b"Abandoned", b"Afterwards"], subjects(host.received()))


# Texts of failures.
SMTP_INVALID = (6003, "An invalid response was received from the SMTP server.")
SMTP_SILENT = (6027, "Network communications timed out.")
SMTP_STALLED = (6028, "Network communications timed out.")
SMTP_LOST = (6029, "Unknown network error on send.")
SMTP_NO_CONNECTION = (6002, "Failed to Logon to SMTP server.")
SMTP_TEXT_LOST = (6011, "Unknown error occurred while sending message text.")
SMTP_END_LOST = (6013, "Error occurred while sending message terminator.")
SMTP_SOME_REFUSED = (6020, "One or more bad recipients, but message was sent to good recipients.")
SMTP_COMMAND = "SMTP command error.  Is this really an SMTP server?"
SMTP_SERVER = "SMTP server error ."
NO_DATA = "Data needed for this operation was not provided."
NO_MAILBOX = "SMTP mailbox doesn't exist."
TOO_MUCH = "Exceeded SMTP storage allocation."
POP_NO_CONNECTION = (6002, "Could not connect to POP server.")
POP_SILENT = (6027, "Communications with the POP server timed out.")
POP_LOST = (6029, "Unknown network error.")
POP_OVERFLOW = (6030, "Data overflow occurred during POP transaction.")
QUIT_FAILED = (6020, "The POP QUIT command failed.")
NOT_POP = "The server port is not a POP server.  Server response: "
FINE = (0, "")

# The faults of the host, how Send ends, and how long the text is if that matters.
SEND_CASES = [
    ("at * split byte", FINE),
    ("at * multiline", FINE),
    ("at * delay 100", FINE),
    ("at terminator drop after", FINE),
    ("at HELO 1 reply 502 say it otherwise", FINE),
    ("at HELO reply 550 go away", (6550, NO_MAILBOX)),
    ("at RSET 1 reply 220 me again", FINE),
    ("at MAIL 1 reply 503 say HELO first", FINE),
    ("at RCPT 1 reply 251 forwarded", FINE),
    ("at RCPT 2 reply 551 user not local; please try <other@example.com>", FINE),
    ("at RCPT 2 reply 551 user not local", SMTP_SOME_REFUSED),
    ("at RCPT 2 reply 550 no such user", SMTP_SOME_REFUSED),
    ("at RCPT 1 reply 550 no such user\nat RCPT 3 reply 550-no\\r\\n550 such user",
     SMTP_SOME_REFUSED),
    ("at RCPT reply 550 no such user", (6503, SMTP_COMMAND)),
    ("at RCPT reply 551 try <other@example.com>", (6503, SMTP_COMMAND)),
    ("at RCPT 2 reply 501 what", (6556, "Recipient not local, mail refused by SMTP server.")),
    ("at RCPT 2 reply 553 what", (6553, "SMTP mailbox syntax error.")),
    ("at RCPT 2 reply 552 too much", (6552, TOO_MUCH)),
    ("at RCPT 2 reply 450 later", (6450, "SMTP mailbox busy.")),
    ("at RCPT 2 reply 452 full", (6452, "SMTP server disk full.")),
    ("at RCPT 2 reply 555 what", (6555, "SMTP invalid sender address (From property).")),
    # Texts of the server itself come first; a code without any has that of what has failed.
    ("at RCPT 2 reply 530 log in first", (6530, "Operation not supported by this mail system.")),
    ("at RCPT 2 reply 432 later", (6432, "Failed to send the message.")),
    ("at greeting reply 421 closing", (6421, "SMTP service unavailable.")),
    ("at greeting reply 554 no", (6554, SMTP_SERVER)),
    ("at MAIL reply 421 closing", (6421, "SMTP service unavailable.")),
    ("at HELO reply 502 what", (6502, SMTP_COMMAND)),
    ("at MAIL reply 500 what", (6500, SMTP_COMMAND)),
    ("at MAIL reply 552 too much", (6552, TOO_MUCH)),
    ("at MAIL reply 354 go on", SMTP_INVALID),
    ("at MAIL reply 199 what", SMTP_INVALID),
    ("at MAIL reply \\x20", SMTP_INVALID),
    ("at DATA reply 451 later", (6451, SMTP_SERVER)),
    ("at DATA reply 501 what", (6501, SMTP_COMMAND)),
    ("at DATA reply 250 fine", SMTP_INVALID),
    ("at terminator reply 504 what", (6504, SMTP_COMMAND)),
    ("at terminator reply 550 no", (6550, NO_MAILBOX)),
    ("at terminator reply 552 too much", (6552, TOO_MUCH)),
    ("at terminator reply 554 no", (6554, SMTP_SERVER)),
    ("at body reply 552 too much", (6552, TOO_MUCH), 12_000_000),
    ("at greeting garbage 5000 lines", SMTP_INVALID),
    ("at RCPT 2 garbage 5000 lines", SMTP_INVALID),
    ("at terminator garbage 5000 lines", SMTP_INVALID),
    ("at greeting garbage 5000", SMTP_SILENT),
    *((f"at {step} drop", SMTP_LOST) for step in ("greeting", "HELO", "RSET", "MAIL", "DATA")),
    *((f"at {step} drop mid", SMTP_LOST) for step in ("greeting", "MAIL", "RCPT 2", "DATA")),
    ("at terminator drop", SMTP_END_LOST),
    ("at terminator drop mid", SMTP_END_LOST),
    ("at body drop", SMTP_TEXT_LOST, 12_000_000),
    *((f"at {step} silent", SMTP_SILENT)
      for step in ("greeting", "HELO", "MAIL", "RCPT 2", "DATA", "terminator")),
    # Each reply comes in time, the login as a whole does not.
    ("at * delay 900", SMTP_SILENT),
    ("at body stall", SMTP_STALLED, 6_000_000),
]

# The faults of the host, the operation and how it ends; "*" stands for any text.
READ_CASES = [
    ("at * split byte", "headers", FINE),
    ("at * split byte", "message", FINE),
    ("at * delay 100", "delete", FINE),
    ("at greeting reply -ERR come back later", "login", (6008, NOT_POP + "come back later")),
    ("at greeting reply 220 ready", "headers", (6008, NOT_POP + "220 ready")),
    ("at greeting garbage 5000 lines", "headers", (6008, "*")),
    ("at USER reply -ERR who is joe?", "login", (6014, "who is joe?")),
    ("at PASS reply -ERR [AUTH] no", "headers", (6015, "[AUTH] no")),
    ("at PASS reply -ERR [IN-USE] maildrop Busy", "login",
     (6016, "The maildrop is busy (another client logged in?).")),
    ("at STAT reply -ERR no", "headers", (6023, "The POP STAT command failed.")),
    ("at STAT reply +OK what", "headers",
     (6004, "An invalid response was received from the POP server.")),
    ("at TOP 2 reply -ERR no", "headers", (6024, "The POP TOP command failed.")),
    ("at TOP 2 garbage 5000 lines", "headers", (6024, "The POP TOP command failed.")),
    ("at UIDL reply -ERR no", "identifiers", (6025, "The POP UIDL command failed.")),
    ("at RETR reply -ERR no", "message", (6021, "The POP RETRIEVE command failed.")),
    ("at DELE reply -ERR no", "delete", (6017, "The POP message deletion failed.")),
    ("at QUIT reply -ERR no", "logout", QUIT_FAILED),
    ("at QUIT drop", "logout", FINE),
    ("at QUIT reply -ERR no", "deletion", QUIT_FAILED),
    ("at QUIT drop", "deletion", QUIT_FAILED),
    *((f"at {step} drop", "headers", POP_LOST)
      for step in ("greeting", "USER", "PASS", "STAT", "TOP 2")),
    ("at UIDL drop mid", "identifiers", POP_LOST),
    ("at TOP 2 drop mid", "headers", POP_LOST),
    ("at RETR drop", "message", POP_LOST),
    ("at RETR truncate 30", "message", POP_LOST),
    ("at DELE drop mid", "delete", POP_LOST),
    *((f"at {step} silent", "headers", POP_SILENT) for step in ("greeting", "PASS", "STAT", "TOP")),
    ("at * delay 900", "login", POP_SILENT),
    ("at UIDL silent", "identifiers", POP_SILENT),
    ("at VRFY reply 421 closing", "resolve", FINE),
    ("at VRFY drop mid", "resolve", SMTP_LOST),
    ("at VRFY silent", "resolve", SMTP_SILENT),
    ("at RETR silent", "message", POP_SILENT),
    ("at DELE silent", "delete", POP_SILENT),
]

MAILBOX = [b"From: x@example.com\r\nSubject: %d\r\n\r\ntext\r\n" % n for n in range(3)]


def quoted(text):
    """A VBScript text."""
    return '"' + text.replace('"', '""') + '"'


class Failures(MailRoad):
    """How failures look to the client. A host for each case costs less than a script for each. The
    time limit of a script is what its cases may take together, with time-outs of 2 s; with those
    that a new object has it is passed."""

    def run_failures(self, lines, patience=0):
        """Runs failures.vbs with calls behind it; the messages that the good host got."""
        with MailHost() as smtp, MailHost(MAILBOX) as pop:
            self.run_mail("failures.vbs", smtp.smtp, pop.pop, after="\n".join(lines) + "\n",
                          timeout=60 + patience)
            return smtp.received()

    def run_cases(self, cases, call):
        """Each case at a host with its faults; `call` makes the line from a case and its host."""
        with contextlib.ExitStack() as stack:
            lines = [call(stack.enter_context(MailHost(MAILBOX, faults=case[0])), *case)
                     for case in cases]
            silent = sum(1 for case in cases if SMTP_SILENT in case or POP_SILENT in case)
            return self.run_failures(lines, patience=3 * silent)

    @staticmethod
    def send_ends(what, port, ending, size=10):
        number, text = ending
        return f"SendEnds {quoted(what)}, {port}, {size}, {number}, {quoted(text)}"

    @staticmethod
    def read_ends(what, port, operation, ending):
        number, text = ending
        return f"ReadEnds {quoted(what)}, {port}, {quoted(operation)}, {number}, {quoted(text)}"

    def test_sending(self):
        def call(host, faults, *rest):
            return self.send_ends(faults.replace("\n", "; "), host.smtp, *rest)

        received = self.run_cases(SEND_CASES, call)
        self.assertEqual([b"once more\r\n"] * len(SEND_CASES), [body(m) for m in received])

    def test_reading(self):
        def call(host, faults, *rest):
            return self.read_ends(faults, host.smtp if "VRFY" in faults else host.pop, *rest)

        self.run_cases(READ_CASES, call)

    def test_a_header_without_end(self):
        line = b"X-Endless: " + b"x" * 1000 + b"\r\n"
        with MailHost([line * (68_000_000 // len(line))]) as host:
            self.run_failures([self.read_ends("endless", host.pop, "headers", POP_OVERFLOW)])

    def test_a_refusal_leaves_the_session_open(self):
        faults = "".join(f"at {step} reply -ERR no\n" for step in ("TOP 2", "RETR 1", "DELE 1"))
        with MailHost(MAILBOX, faults=faults + "at RCPT 2 reply 550 no") as host:
            self.run_mail("sessions.vbs", host.smtp, host.pop)
            log = host.log.read_text()
            self.assertEqual(MAILBOX[:2], host.received()[:2])
            self.assertEqual(2 + 2, len(host.received()))
        self.assertEqual((1, 1), (log.count("POP -- connected"), log.count("SMTP -- connected")))

    def test_a_server_that_hangs_up_between_calls(self):
        with MailHost(MAILBOX[:1], faults="at terminator drop after\nat TOP 2 drop after") as host:
            self.run_mail("hanging_up.vbs", host.smtp, host.pop)

    def test_connecting(self):
        """Nobody listens; somebody listens and lets nobody in; the other protocol's port."""
        with contextlib.ExitStack() as stack:
            closed, full = (stack.enter_context(socket.socket()) for _ in range(2))
            closed.bind(("127.0.0.1", 0))
            full.bind(("127.0.0.1", 0))
            full.listen(0)
            for _ in range(8):
                waiting = stack.enter_context(socket.socket())
                waiting.setblocking(False)
                waiting.connect_ex(full.getsockname())
            host = stack.enter_context(MailHost(MAILBOX))
            lines = [
                self.send_ends("POP port", host.pop, SMTP_INVALID),
                self.read_ends("SMTP port", host.smtp, "headers",
                               (6008, NOT_POP + "220 localhost SMTP mailhost")),
            ]
            for name, nobody in (("closed", closed), ("full", full)):
                port = nobody.getsockname()[1]
                lines += [self.send_ends(name, port, SMTP_NO_CONNECTION),
                          self.read_ends(name, port, "headers", POP_NO_CONNECTION)]
            self.run_failures(lines)


if __name__ == "__main__":
    unittest.main()
