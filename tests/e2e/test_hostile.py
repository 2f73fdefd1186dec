"""Servers that mean harm, and the registered server: each call ends with its number, the next one
works, and the process takes neither much memory nor much of the processor's time."""

import contextlib
import pathlib
import tempfile
import unittest

from scripting import (MAIL_SCRIPTS, MailHost, ScriptTest, literal, prefix_with_server,
                       register_sleeper, server_running)
import winetest

MIB = 1 << 20
MOST_MEMORY = 400 * MIB
MOST_SECONDS = 20  # of the processor, for all calls of a test

ENDLESS = 1_000_000_000
OVERFLOW = 6030, "Data overflow occurred during POP transaction."
TOO_SLOW = 6027, "Communications with the POP server timed out."
HEADERS, IDENTIFIERS = "mail.LoadMessageHeaders", "mail.LoadMessageIdentifiers"
LOAD = "mail.LoadMessageHeaders : mail.messageIndex = 0 : mail.LoadMessage"
LOGIN = "mail.mailSystem = 6 : mail.Login : mail.mailSystem = 10"
SMTP_LOGIN = "mail.mailSystem = 7 : mail.Login : mail.mailSystem = 10"
MAILBOX = [b"From: ann@example.org\r\nSubject: one\r\n\r\n" + b"A line of text.\r\n" * 300]


def setUpModule():
    Hostile.wine = prefix_with_server()
    register_sleeper(Hostile.wine)


class Hostile(ScriptTest, unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="scratch-", dir=self.wine.drive_c)
        self.scratch = pathlib.Path(self.enterContext(scratch))
        self.received = self.scratch / "received"
        self.received.mkdir()
        self.beside = self.wine.drive_c / "Quillon"

    def meet(self, cases):
        """Makes each call with a host of its faults, and after it one with a good host."""
        lines = ["NewServer WScript.Arguments(0), WScript.Arguments(1)",
                 "mail.MaximumHeaders = 2147483647", "mail.InternetLogging = -1",
                 f"mail.AttachmentDirectory = {literal(winetest.windows_path(self.received))}"]
        with contextlib.ExitStack() as stack:
            good = stack.enter_context(MailHost(MAILBOX))
            for faults, call, number, text in cases:
                host = stack.enter_context(MailHost(MAILBOX, faults=faults))
                lines += [f"mail.SMTPPort = {host.smtp}", f"mail.POPPort = {host.pop}",
                          "On Error Resume Next", call,
                          f"Ended {literal(faults[:60])}, {number}, {literal(text)}",
                          "On Error GoTo 0", "mail.mailSystem = 10",
                          f"mail.SMTPPort = {good.smtp}", f"mail.POPPort = {good.pop}", LOAD,
                          f'Same {literal(faults[:60])}, "one", mail.subject']
            process = stack.enter_context(server_running(self.wine, self.scratch))
            session = (MAIL_SCRIPTS / "session.vbs").read_text()
            self.run_checks(self.wine, session + "\n".join(lines), good.smtp, good.pop, timeout=300)
            self.assertLess(process.peak(), MOST_MEMORY)
            self.assertLess(process.seconds(), MOST_SECONDS)
        self.assertEqual([], list(self.received.iterdir()))

    def test_floods_and_drips(self):
        (self.beside / "quillon.ini").write_text("[Internet]\nMaximumMessageSize=20\n")
        attachment = "\\r\\nContent-Type: a/b; name=c\\r\\n"
        self.meet([
            (f"pop at UIDL flood {ENDLESS} # id#", IDENTIFIERS, *OVERFLOW),
            ("pop at STAT reply +OK 4000000000 1\n"
             f"pop at TOP reply +OK\\r\\nFrom: {'x' * 60000}\\r\\n.", HEADERS, *OVERFLOW),
            (f"pop at TOP flood {ENDLESS} {'x' * 1000}", HEADERS, *OVERFLOW),
            (f"pop at RETR flood {ENDLESS} {'x' * 70}", LOAD, *OVERFLOW),
            (f"pop at RETR reply +OK{attachment}\npop at RETR flood {ENDLESS} {'x' * 70}", LOAD,
             *OVERFLOW),
            ("pop at TOP split byte 300", HEADERS, *TOO_SLOW),
            ("pop at UIDL split byte 500", IDENTIFIERS, *TOO_SLOW),
            ("pop at RETR split byte 300", LOAD, *TOO_SLOW),
        ])

    def test_talk_without_end(self):
        unasked = f"flood {ENDLESS} +OK I am still here"
        cleaned = "wrong password: ****, ****" + " [2J" + "w" * 400
        self.meet([
            (f"pop at PASS {unasked}", LOGIN, 0, ""),
            (f"smtp at RSET {unasked}", SMTP_LOGIN, 0, ""),
            (f"smtp at RSET flood {ENDLESS} 220 me again", SMTP_LOGIN, 0, ""),
            (f"smtp at greeting flood {ENDLESS} 220 me again", SMTP_LOGIN, 6003,
             "An invalid response was received from the SMTP server."),
            (f"smtp at HELO reply 250-x\nsmtp at HELO flood {ENDLESS} 250-more", SMTP_LOGIN, 6003,
             "An invalid response was received from the SMTP server."),
            ("pop at PASS reply -ERR wrong password: secret, secret\\x1b\\0[2J" + "w" * 400, LOGIN,
             6015, cleaned),
        ])
        log = (self.beside / "POPDUMP.TXT").read_bytes()
        self.assertNotIn(b"secret", log)
        self.assertLess(len(log), 5 * MIB)


if __name__ == "__main__":
    unittest.main()
