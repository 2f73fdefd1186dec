"""Settings of servers: the command that makes them, and a script of long ago that goes where they
say."""

import ipaddress
import pathlib
import subprocess
import tempfile
import unittest

from certificates import Issued, issuer, trust
from scripting import ENDINGS, MailHost, prefix_with_server, run_script

PASSWORD = "open-sesame"
OLD = """
On Error Resume Next
Dim mail
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = 10
mail.SMTPServer = "mail.example.com"
mail.SMTPPort = 25
mail.NewMessage
mail.from = "Joe Smith <joe@example.com>"
mail.AddRecipientTo "ann@example.com"
mail.subject = "Report of March"
mail.Message = "The report is done."
mail.Send
mail.postOffice = "MAIL.example.com"
mail.LoadMessageHeaders
mail.messageIndex = 0
mail.LoadMessage
WScript.Echo mail.subject & ", " & mail.TLSVersion
If Err.Number <> 0 Then WScript.Echo Err.Description
"""


def setUpModule():
    Configure.wine = prefix_with_server()
    Configure.program = Configure.wine.drive_c / "Quillon" / "quillon.exe"
    Configure.file = Configure.program.parent / "quillon.ini"


class Configure(unittest.TestCase):
    def tearDown(self):
        self.file.unlink(missing_ok=True)

    def run_command(self, command, *arguments, secret=None, status=0):
        with tempfile.TemporaryFile() as given:
            given.write((secret or "").encode())
            given.seek(0)
            done = self.wine.run(self.program, command, *arguments,
                                 stdin=given if secret else subprocess.DEVNULL)
        self.assertEqual(status, done.returncode, done.output)
        self.assertNotIn(PASSWORD, done.output)
        return done.output.replace("\r\n", "\n")

    def configure(self, *arguments, **how):
        return self.run_command("/Configure", *arguments, **how)

    def test_secrets(self):
        for scope in ((), ("/Machine",)):
            self.configure("m", "SMTPPassword", *scope, secret=PASSWORD + "\r\n")
            held = self.file.read_text()
            self.assertRegex(held, r"SMTPPassword=\{(account|machine)\}[A-Za-z0-9+/=]{40}")
            self.assertNotIn(PASSWORD, held)
            self.assertIn("SMTPPassword=(set, for ", self.configure("m"))
        self.file.write_text(held.replace("}", "}AAAA"))
        self.assertIn("is encrypted for another", self.configure("m", status=1))
        self.assertIn("No SMTPPassword was given", self.configure("m", "SMTPPassword", status=1))

    def test_refusals(self):
        for arguments in ((), ("m", "SMTPSecurity", "ssl"), ("m", "Nonsense", "1"), ("m",)):
            self.assertNotEqual("", self.configure(*arguments, status=1))
        self.assertFalse(self.file.exists())

    def test_an_old_script_goes_where_the_section_says(self):
        root = issuer()
        own = Issued(root, names=(ipaddress.ip_address("127.0.0.1"),))
        trust(self.wine, root)
        with tempfile.TemporaryDirectory() as folder:
            certificate = pathlib.Path(folder, "certificate.pem")
            certificate.write_bytes(own.pem() + own.key_pem())
            options = ("--require-tls", "--require-login", "--auth", "PLAIN,SCRAM-SHA-256",
                       "--smtps-port", 0, "--pops-port", 0, "--certificate", certificate, "--key",
                       certificate)
            with MailHost(login=("joe", PASSWORD), options=options) as host:
                self.send_and_read(host)

    def send_and_read(self, host):
        for protocol, port in (("SMTP", host.smtps), ("POP", host.pops)):
            for key, value in (("Host", "127.0.0.1"), ("Port", port), ("Security", "tls"),
                               ("User", "joe")):
                self.configure("Mail.Example.COM", protocol + key, value)
            self.configure("mail.example.com", protocol + "Password", secret=PASSWORD)
        ended, said = run_script(self.wine, OLD + ENDINGS["vbs"])
        self.assertEqual((True, ["Report of March, TLS 1.2"]), (ended, said))
        self.assertEqual(1, len(host.received()))
        said = self.run_command("/Check", "mail.example.com")
        self.assertEqual(2, said.count("All is well."), said)
        self.configure("mail.example.com", "SMTPPassword", secret="mistaken")
        self.assertIn("FAILED (43)", self.run_command("/Check", "mail.example.com", status=1))


if __name__ == "__main__":
    unittest.main()
