"""The programs of samples/ at work, each against a mail host or the desk."""

import email
import email.policy
import html
import pathlib
import subprocess
import tempfile
import unittest

from scripting import MailHost, install_desk, register_sleeper
import winetest

PASCAL = pathlib.Path(__file__).resolve().parent / "pascal"
SAMPLES = winetest.TOP / "samples"
COMPILED = winetest.WINDOWS_BUILD / "samples" / "samples.exe"
PICTURE = b"\x89PNG\r\n\x1a\n" + bytes(range(256))
REPORT = (b"From: robot@example.com\r\nSubject: Report\r\n"
          b"Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nAll well.\r\n"
          b"--b\r\nContent-Type: text/csv; name=t.csv\r\n\r\na;b\r\n--b--\r\n")
ORDER = b"From: ann@example.com\r\nSubject: Order 17\r\n\r\nTwo, please.\r\n"
OTHER = b"From: ann@example.com\r\nSubject: Lunch\r\n\r\nAt noon?\r\n"
LOGIN = ["127.0.0.1", "joe", "secret"]


class Tasks:
    """`sample` runs the one that is called so."""

    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(winetest.WinePrefix())
        cls.wine.register(winetest.SERVER)

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="samples ", dir=self.wine.drive_c)
        self.folder = pathlib.Path(self.enterContext(folder))

    def sample(self, name, *arguments, status=0):
        done = self.wine.run(*self.command(name), *arguments)
        self.assertEqual(status, done.returncode, done.output)
        return done.output.splitlines()

    def received(self, host):
        [message] = host.received()
        return email.message_from_bytes(message, policy=email.policy.default)

    def file(self, name, content):
        (self.folder / name).write_bytes(content)
        return self.folder / name

    def test_send(self):
        file = self.file("a b.pdf", b"report")
        words = ["127.0.0.1", "Joe <joe@example.com>", "ann@example.com", "Report", "It is done.", file]
        with MailHost() as host:
            self.assertEqual(["Sent."], self.sample("send", *words, host.smtp))
            message = self.received(host)
        self.assertEqual("Report", message["Subject"])
        self.assertIn("It is done.", message.get_body().get_content())
        [attached] = message.iter_attachments()
        self.assertEqual(("a b.pdf", b"report"),
                         (attached.get_filename(), attached.get_payload(decode=True)))
        with MailHost(faults="smtp at MAIL reply 550 not you\n") as host:
            [line] = self.sample("send", *words, host.smtp, status=1)
        self.assertIn("(6550)", line)

    def test_send_html(self):
        picture = self.file("prices.png", PICTURE)
        with MailHost() as host:
            self.sample("send_html", "127.0.0.1", "joe@example.com", "ann@example.com", picture,
                        host.smtp)
            message = self.received(host)
        self.assertIn(message["Subject"], ("Prices in \u20ac", "Prices in EUR"))
        page = html.unescape(message.get_body(("html",)).get_content())
        self.assertIn("<h1>Prices in \u20ac</h1>", page)
        self.assertIn("in the picture", message.get_body(("plain",)).get_content())
        [shown] = [part for part in message.walk() if part["Content-ID"] == "<prices>"]
        self.assertEqual(PICTURE, shown.get_payload(decode=True))

    def test_save_attachments(self):
        with MailHost([OTHER, REPORT]) as host:
            [line] = self.sample("save_attachments", *LOGIN, self.folder, host.pop)
            self.assertEqual([OTHER, REPORT], host.received())
        self.assertTrue(line.lower().startswith("t.csv: "), line)
        self.assertEqual([b"a;b"], [file.read_bytes() for file in self.folder.iterdir()])

    def test_process(self):
        with MailHost([OTHER, ORDER]) as host:
            self.assertEqual(["1 order(s)"], self.sample("process", *LOGIN, self.folder, host.pop))
            self.assertEqual([OTHER], host.received())
        [order] = self.folder.iterdir()
        self.assertIn(b"Two, please.", order.read_bytes())

    def test_process_loses_nothing(self):
        with MailHost([ORDER]) as host:
            missing = self.folder / "missing"
            lines = self.sample("process", *LOGIN, missing, host.pop, status=1)
            self.assertIn("(75)", lines[-1])
            self.assertEqual([ORDER], host.received())
        with MailHost([ORDER], faults="pop at DELE drop\n") as host:
            self.sample("process", *LOGIN, self.folder, host.pop, status=1)
            self.assertEqual([ORDER], host.received())
        self.assertEqual(1, len(list(self.folder.iterdir())))

    def test_address_book(self):
        install_desk(self.wine)
        lines = self.sample("address_book", "9", "ann", "secret")
        self.assertIn("Bob Baker <SMTP:bob@desk.example>", lines)
        lines = self.sample("address_book", "10", status=1)
        self.assertIn("(753)", lines[-1])

    def test_asynchronous(self):
        file = self.file("large.bin", bytes(8_000_000))
        words = ["127.0.0.1", "joe@example.com", "ann@example.com", file]
        with MailHost() as host:
            lines = self.sample("asynchronous", *words, 60, host.smtp)
            self.assertEqual(1, len(host.received()))
        self.assertEqual("Sent.", lines[-1])
        self.assertIn("Sending message...", lines)
        with MailHost(faults="smtp at body stall\n") as host:
            lines = self.sample("asynchronous", *words, 1, host.smtp)
            self.assertEqual([], host.received())
        self.assertEqual("Not sent: Process aborted. (539)", lines[-1])


class VBScript(Tasks, unittest.TestCase):
    def command(self, name):
        return ["cscript", "//nologo", SAMPLES / "vbscript" / f"{name}.vbs"]

    def test_asynchronous(self):
        """Wine calls no class of VBScript from another process: what can be seen is that the call
        says so."""
        file = self.file("small.bin", b"small")
        with MailHost() as host:
            lines = self.sample("asynchronous", "127.0.0.1", "joe@example.com", "ann@example.com",
                                file, 5, host.smtp, status=1)
        self.assertIn("(542)", lines[-1])


class JScript(Tasks, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        register_sleeper(cls.wine)

    def command(self, name):
        """Wine's WScript.Sleep does not let calls through, another object's does."""
        text = (SAMPLES / "jscript" / f"{name}.js").read_text()
        script = self.wine.drive_c / f"{name}.js"
        script.write_text(text.replace("WScript.Sleep(",
                                       'new ActiveXObject("QuillonTest.Sleeper").Sleep('))
        return ["cscript", "//nologo", script]


class OtherLanguages(unittest.TestCase):
    """What no interpreter here runs is at least taken by a compiler."""

    def test_they_compile(self):
        with tempfile.TemporaryDirectory() as folder:
            for command in (
                    ["mcs", "-warnaserror", f"-out:{folder}/samples.exe",
                     "-r:Microsoft.CSharp.dll", SAMPLES / "csharp" / "Samples.cs"],
                    ["fpc", "-Mdelphi", "-vew", "-Sew", f"-Fu{PASCAL}", f"-FE{folder}",
                     SAMPLES / "delphi" / "QuillonSamples.dpr"]):
                with self.subTest(command[0]):
                    done = subprocess.run(command, capture_output=True, text=True)
                    self.assertEqual(0, done.returncode, done.stdout + done.stderr)
        for file in (SAMPLES / "python").glob("*.py"):
            compile(file.read_text(), file, "exec")


class CPlusPlus(Tasks, unittest.TestCase):
    def command(self, name):
        return [COMPILED, name]


if __name__ == "__main__":
    unittest.main()
