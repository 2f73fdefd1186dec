"""The command that tries a server, and scripts of before that go through one which demands encryption
and a login."""

import ipaddress
import pathlib
import subprocess
import tempfile
import unittest

from certificates import Issued, issuer, trust
from scripting import MailHost, prefix_with_server
import winetest

PASSWORD = "open-sesame"
NAME = "127.0.0.1"  # as examples/demo.vbs has it


class Check(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.program = cls.wine.drive_c / "Quillon" / "quillon.exe"
        cls.root = issuer()
        trust(cls.wine, cls.root)
        cls.folder = cls.enterClassContext(tempfile.TemporaryDirectory())
        own = Issued(cls.root, names=(ipaddress.ip_address("127.0.0.1"),))
        cls.certificate = pathlib.Path(cls.folder, "certificate.pem")
        cls.certificate.write_bytes(own.pem() + own.key_pem())
        cls.pin = own.fingerprint()

    def tearDown(self):
        (self.program.parent / "quillon.ini").unlink(missing_ok=True)

    def host(self, login=("demo", PASSWORD)):
        options = ("--starttls", "--require-tls", "--require-login", "--auth", "SCRAM-SHA-256",
                   "--smtps-port", 0, "--pops-port", 0, "--certificate", self.certificate, "--key",
                   self.certificate)
        return MailHost(login=login, options=options)

    def command(self, *arguments, secret=None):
        with tempfile.TemporaryFile() as given:
            given.write((secret or "").encode())
            given.seek(0)
            done = self.wine.run(self.program, *arguments,
                                 stdin=given if secret else subprocess.DEVNULL)
        self.assertNotIn(PASSWORD, done.output)
        return done.returncode, done.output

    def configure(self, *arguments, secret=None):
        status, said = self.command("/Configure", NAME, *arguments, secret=secret)
        self.assertEqual(0, status, said)

    def configure_all(self, host):
        for protocol, port in (("SMTP", host.smtps), ("POP", host.pops)):
            self.configure(protocol + "Port", port)
            self.configure(protocol + "Security", "tls")
            self.configure(protocol + "User", "demo")
            self.configure(protocol + "Password", secret=PASSWORD)

    def test_the_demo_of_before_needs_nothing_but_a_section(self):
        with self.host() as host:
            self.configure_all(host)
            status, said = self.command("/Check", NAME)
            self.assertEqual(0, status, said)
            for word in ("connected to 127.0.0.1", "TLS 1.2 ", self.pin, "greeting: 220 ",
                         "greeting: +OK ", "logged in by SCRAM-SHA-256", "All is well."):
                self.assertIn(word, said)
            demo = self.wine.run("cscript", "//nologo", winetest.TOP / "examples" / "demo.vbs",
                                 host.smtp, host.pop)
            self.assertEqual("demo: ok", demo.output.splitlines()[-1], demo.output)

    def test_what_is_wrong_is_told(self):
        with self.host(login=("demo", "other")) as host:
            self.configure_all(host)
            status, said = self.command("/Check", NAME)
            self.assertEqual(1, status, said)
            self.assertIn("FAILED (43): The server refused the login.", said)
            self.assertIn("Look at user and password.", said)
            self.configure("SMTPSecurity", "starttls")
            self.assertIn("FAILED (", self.command("/Check", NAME)[1])
        self.configure("POPSecurity", "none")
        status, said = self.command("/Check", NAME)
        self.assertEqual(1, status, said)
        self.assertIn("FAILED (2)", said)
        self.assertIn("Look whether host and port are right", said)


if __name__ == "__main__":
    unittest.main()
