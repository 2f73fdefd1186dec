"""Scripts that work with other people's servers, Exim and Dovecot, and how much memory the server
takes for a message that is much larger."""

import contextlib
import filecmp
import pathlib
import poplib
import random
import subprocess
import tempfile
import unittest

import realservers
from scripting import (ENDINGS, MAIL_SCRIPTS, SCRIPTS, MailTest, literal, prefix_with_server,
                       register_sleeper, run_script, server_running, told_by_load_all)
import winetest

MIB = 1 << 20


def setUpModule():
    RealServers.wine = prefix_with_server()
    register_sleeper(RealServers.wine)


@unittest.skipIf(realservers.missing(), f"{realservers.missing()} is not installed")
class RealServers(MailTest, unittest.TestCase):
    def setUp(self):
        """The files that are attached are in `files`, those received in `received`, with a
        directory for each message, the temporary ones in C:\\Temporary."""
        scratch = tempfile.TemporaryDirectory(prefix="scratch-", dir=self.wine.drive_c)
        self.scratch = pathlib.Path(self.enterContext(scratch))
        self.files, self.received, self.temporary = (
            self.scratch / name for name in ("files", "received", "temporary"))
        for folder in (self.files, self.received, self.temporary):
            folder.mkdir()

    def test_quillon_to_exim_to_dovecot_to_quillon(self):
        with realservers.RealServers() as servers:
            self.run_mail("through_exim.vbs", servers.smtp, servers.pop)
            servers.wait_for(2)
            message, = [m for m in servers.messages() if b"\nSubject: Through Exim\n" in m]
            self.assertNotIn(b"far@elsewhere.test", message)
            text = b"First\n\n.dots\n..more\n\xe4\n" + b"x" * 900 + b"\n"
            self.assertEqual(text, message.split(b"\n\n", 1)[1])
            self.assertEqual(sorted(servers.messages()), sorted(self.fetch_with_mpop(servers.pop)))
            self.run_mail("from_dovecot.vbs", servers.smtp, servers.pop)
            self.assertEqual([], servers.messages())

    def fetch_with_mpop(self, port):
        """What another mail program gets from the mailbox."""
        with tempfile.TemporaryDirectory(prefix="mpop-") as folder:
            maildir = pathlib.Path(folder, "Maildir")
            for name in ("new", "cur", "tmp"):
                (maildir / name).mkdir(parents=True)
            subprocess.run(
                ["mpop", "--host=127.0.0.1", f"--port={port}", "--user=joe", "--auth=user",
                 "--passwordeval=echo secret", "--tls=off", "--keep=on", "--received-header=off",
                 f"--uidls-file={folder}/uidls", f"--delivery=maildir,{maildir}"],
                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, check=True, timeout=30)
            return [file.read_bytes() for file in (maildir / "new").iterdir()]

    def test_five_thousand_messages(self):
        with realservers.RealServers() as servers:
            servers.put(b"From: x@example.com\nSubject: Message %d\n\ntext\n" % number
                        for number in range(5000))
            names = [file.name for file in servers.files()]
            self.run_mail("many.vbs", servers.smtp, servers.pop, 5000)
            left = [file.name.split(":")[0] for file in servers.files()]
            self.assertEqual(names[1:2500] + names[2501:-1], left)

    def test_a_mailbox_that_somebody_else_is_in(self):
        with realservers.RealServers(locking=True) as servers:
            other = poplib.POP3("127.0.0.1", servers.pop, timeout=realservers.PATIENCE)
            other.user("joe")
            other.pass_("secret")
            with contextlib.closing(other):
                self.run_mail("busy.vbs", servers.smtp, servers.pop)

    def send(self, servers, text):
        """Sends a message with all of `files`."""
        lines = ["NewServer WScript.Arguments(0), WScript.Arguments(1)",
                 "mail.TimeoutProtocol = 60000",
                 f'mail.undocumented1 = "|TEMPDIR|{winetest.windows_path(self.temporary)}"',
                 'mail.AddRecipientTo "joe@quillon.test"', "mail.attachmentEncoding = 2",
                 f"mail.Message = {literal(text)}"]
        lines += [f"mail.AddAttachment {literal(winetest.windows_path(file))}"
                  for file in sorted(self.files.iterdir())]
        session = (MAIL_SCRIPTS / "session.vbs").read_text()
        self.run_checks(self.wine, session + "\n".join([*lines, "mail.Send"]), servers.smtp,
                        servers.pop, timeout=120)
        self.assertEqual([], list(self.temporary.iterdir()))

    def check_loaded(self, servers, text):
        """Loads the one message of the mailbox, which is to have the text and all of `files`."""
        (self.received / "0").mkdir()
        script = "".join(file.read_text() for file in (
            SCRIPTS / "check.vbs", MAIL_SCRIPTS / "session.vbs", MAIL_SCRIPTS / "load_all.vbs"))
        ended, lines = run_script(self.wine, script + ENDINGS["vbs"], servers.pop, self.received,
                                  timeout=120)
        self.assertTrue(ended, lines[-3:])
        self.assertEqual([], lines)
        [found] = told_by_load_all(self.received)
        self.assertEqual([text], found["body"])
        files = sorted(self.files.iterdir())
        self.assertEqual([file.name for file in files], found["name"])
        got = [value.rsplit("\\", 1)[1] for value in found["file"]]
        for file, name in zip(files, got, strict=True):
            self.assertTrue(filecmp.cmp(file, self.received / "0" / name, shallow=False), name)

    def test_fifty_attachments(self):
        source = random.Random(50)
        for number in range(50):
            (self.files / f"file{number:02}.bin").write_bytes(source.randbytes(number * 997))
        text = "Gr\u00fc\u00dfe: f\u00fcnfzig\r\nzweite Zeile"
        with realservers.RealServers() as servers:
            self.send(servers, text)
            servers.wait_for(1)
            self.check_loaded(servers, text)

    def test_memory_does_not_grow_with_a_message_of_200_mib(self):
        source = random.Random(200)
        with open(self.files / "big.bin", "wb") as file:
            for _ in range(200):
                file.write(source.randbytes(MIB))
        with realservers.RealServers() as servers, server_running(self.wine, self.scratch) as memory:
            idle = memory.peak()
            peaks = {}
            self.send(servers, "A text.")
            peaks["sending"] = memory.peak()
            servers.wait_for(1)
            memory.forget()
            self.check_loaded(servers, "A text.")
            peaks["loading"] = memory.peak()
        for what, peak in peaks.items():
            self.assertLess(peak, idle + 100 * MIB, what)


if __name__ == "__main__":
    unittest.main()
