"""The programs of examples/ against a mail host, and what they send as another program reads it."""

import email
import email.policy
import re
import unittest

from scripting import MailHost, install_desk
import winetest

EXAMPLES = winetest.TOP / "examples"
LUNCH = (b"From: Ann <ann@example.com>\r\nTo: joe@example.com\r\nSubject: Lunch\r\n"
         b"Date: Fri, 06 Mar 2026 14:30:00 +0000\r\n\r\nAt noon?\r\n..\r\n")
REPORT = (b"From: robot@example.com\r\nSubject: Report\r\n"
          b"Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nAll well.\r\n"
          b"--b\r\nContent-Type: text/csv; name=t.csv\r\n\r\na;b\r\n--b--\r\n")


class ExamplePrograms(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(winetest.WinePrefix())
        cls.wine.register(winetest.SERVER)

    def run_example(self, name, *arguments, status=0):
        done = self.wine.run("cscript", "//nologo", EXAMPLES / name, *arguments)
        self.assertEqual(status, done.returncode, done.output)
        return done.output.splitlines()

    def test_demo(self):
        with MailHost(login=("demo", "demo")) as host:
            lines = self.run_example("demo.vbs", host.smtp, host.pop)
            self.assertEqual("demo: ok", lines[-1])
            self.assertEqual([], host.received())

    def test_demo_fails_when_the_host_is_not_there(self):
        with MailHost(login=("demo", "other")) as host:
            lines = self.run_example("demo.vbs", host.smtp, host.pop, status=1)
        self.assertRegex(lines[-1], "^demo: failed: loading the headers: error 6015, ")

    def test_what_is_sent_is_read_by_another_program(self):
        with MailHost() as host:
            self.run_example("send.vbs", "127.0.0.1", "Joe <joe@example.com>",
                             "Ann <ann@example.com>,bob@example.com", "Greetings", "Good morning.",
                             host.smtp)
            [received] = host.received()
            [envelope] = (host.store / "envelopes").iterdir()
            self.assertEqual(["MAIL FROM:<joe@example.com>", "RCPT TO:<ann@example.com>",
                              "RCPT TO:<bob@example.com>"], envelope.read_text().splitlines())
        message = email.message_from_bytes(received, policy=email.policy.default)
        self.assertEqual([], message.defects)
        self.assertEqual("Joe <joe@example.com>", str(message["From"]))
        self.assertEqual(["ann@example.com", "bob@example.com"],
                         [address.addr_spec for address in message["To"].addresses])
        self.assertEqual("Greetings", message["Subject"])
        self.assertEqual("joe@example.com", message["Reply-To"])
        self.assertIsNotNone(message["Date"].datetime)
        self.assertEqual("Good morning.", message.get_content().rstrip())

    def test_many(self):
        with MailHost() as host:
            lines = self.run_example("many.vbs", "127.0.0.1", "joe@example.com", "ann@example.com",
                                     3, host.smtp)
            self.assertEqual(3, len(host.received()))
        self.assertRegex(lines[-1], r"^3 messages in \d.* s: \d+ in an hour$")

    def test_reading(self):
        with MailHost([LUNCH, REPORT]) as host:
            login = ["127.0.0.1", "joe", "secret"]
            self.assertEqual(["1  2026-03-06 14:30  Ann <ann@example.com>  Lunch",
                              "2    robot@example.com  Report"],
                             self.run_example("read.vbs", *login, 0, host.pop))
            lines = self.run_example("read.vbs", *login, 1, host.pop)
            self.assertEqual(["Subject: Lunch", "", "At noon?", ".."], lines[2:6])
            lines = self.run_example("read.vbs", *login, 2, host.pop)
            saved = re.fullmatch(r"Saved:   C:\\(.*\\t\.csv)", lines[-1])[1]
            self.assertEqual(b"a;b", (self.wine.drive_c / saved.replace("\\", "/")).read_bytes())
            self.run_example("read.vbs", *login, 3, host.pop, status=1)

            seen = "C:\\seen.txt"
            self.assertEqual(["new: Ann <ann@example.com>: Lunch", "new: robot@example.com: Report",
                              "2 new message(s)"],
                             self.run_example("new_mail.js", *login, seen, host.pop))
            self.assertEqual(["0 new message(s)"],
                             self.run_example("new_mail.js", *login, seen, host.pop))

    def test_the_mail_program_of_the_workstation(self):
        store = install_desk(self.wine)
        file = EXAMPLES / "README.md"
        for system, refused in (1, 2003), (9, 8003):
            with self.subTest(system=system):
                subject = f"Lunch {system}"
                self.assertEqual(["Sent."], self.run_example(
                    "office.vbs", system, "ann", "secret", "Bob Baker,Joe <joe@example.com>",
                    subject, "At noon?", winetest.windows_path(file)))
                received = store.messages("bob")[-1]
                self.assertEqual((subject, "At noon?"), (received.subject, received.text))
                self.assertEqual([file.read_bytes()],
                                 [each.content for each in received.attachments])
                outside = store.messages("Outside", "")[-1].recipients[1]
                self.assertEqual("joe@example.com", outside[2].removeprefix("SMTP:"))
                line = self.run_example("office.vbs", system, "bob", "secret")[-1]
                self.assertRegex(line, "  Ann Archer.*  " + subject)
                [line] = self.run_example("office.vbs", system, "bob", "wrong", status=1)
                self.assertEqual(f"Failed: Login failed ({refused - 0x7FFC0000})", line)


if __name__ == "__main__":
    unittest.main()
