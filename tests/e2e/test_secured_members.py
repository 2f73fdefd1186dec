"""What a script says itself of encryption and logins, against a host that demands both, and what it
then hears: numbers, the texts behind them, and what came of the connection."""

import ipaddress
import re
import tempfile
import unittest

from certificates import Issued, issuer
from scripting import ENDINGS, MailHost, prefix_with_server, run_script

PASSWORD = "open-sesame"
REFUSED = "6530 Operation not supported by this mail system."
DISTRUSTED = '6040 The server\'s certificate was refused. (The certificate of "127.0.0.1"'
# A statement, and how the text begins and ends that it comes to: of the error, or else of `said`.
STEPS = """
mail.Send | {refused} |
mail.DetailedErrors = True : mail.Send | {refused} ({smtp} answered MAIL FROM with: 530 | )
mail.SMTPSecurity = 2 : mail.Send | {distrusted} has an issuer | {pin}.)
mail.PinnedCertificate = String(64, "0") : mail.Send | {distrusted} is not the one that | {pin}.)
mail.DetailedErrors = False : mail.Send | {distrusted} is not the one that is | {pin}.)
mail.PinnedCertificate = "{pin}" : mail.Send | {refused} |
mail.SMTPLoginName = "joe" : mail.SMTPPassword = "mistaken" | done |
mail.Send | 6043 The server refused the login. ({smtp} answered AUTH SCRAM-SHA-256 with: 535 | )
mail.Authentication = "CRAM-MD5, login" | done |
mail.Send | 6044 There is no common login method. (The server offers PLAIN SCRAM-SHA-256. | )
mail.Authentication = "CRAM-MD5, plain" : mail.SMTPPassword = "{password}" : mail.Send | done |
said = mail.TLSVersion | TLS 1. |
said = mail.LastServerReply | {smtp} answered the end of the message with: | 250 message accepted
said = mail.ServerCertificate | It is for mail.example.com, 127.0.0.1 ("mail.example.com"), |
mail.SMTPSecurity = 3 : mail.Send | 6042 The secure connection could not be made. ({smtp}: | )
mail.SMTPPort = {smtps} : mail.SMTPSecurity = 2 : mail.Send | 6027 Network communications timed |
mail.SMTPSecurity = 3 : mail.Send | done |
mail.Authentication = "" : mail.mailSystem = 6 : mail.Login | 6014 |
mail.POPSecurity = 1 : mail.Login : said = mail.TLSVersion | TLS 1. |
mail.Logout : mail.POPSecurity = 3 : mail.POPPort = {pops} : mail.Login | done |
said = mail.LastServerReply | 127.0.0.1:{pops} answered AUTH SCRAM-SHA-256 with: +OK |
"""
STEP = """
said = "done" : {}
If Err.Number <> 0 Then said = (Err.Number - vbObjectError) & " " & Err.Description
Err.Clear
WScript.Echo Replace(said, vbCrLf, " ")
"""

SCRIPT = """
Dim mail, said
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = 10
mail.SMTPServer = "127.0.0.1" : mail.postOffice = "127.0.0.1"
mail.SMTPPort = {smtp} : mail.POPPort = {pop}
mail.loginName = "joe" : mail.Password = "{password}"
mail.TimeoutProtocol = 3000
mail.AddRecipientTo "ann@example.com"
mail.from = "joe@example.com"
On Error Resume Next
"""


class SecuredMembers(unittest.TestCase):
    def test_each_says_what_it_does(self):
        wine = prefix_with_server()
        own = Issued(issuer(), names=("mail.example.com", ipaddress.ip_address("127.0.0.1")))
        with tempfile.NamedTemporaryFile() as certificate, tempfile.NamedTemporaryFile() as key:
            certificate.write(own.pem())
            key.write(own.key_pem())
            certificate.flush()
            key.flush()
            options = ("--starttls", "--require-tls", "--require-login", "--auth",
                       "PLAIN,SCRAM-SHA-256", "--smtps-port", 0, "--pops-port", 0,
                       "--certificate", certificate.name, "--key", key.name)
            with MailHost(login=("joe", PASSWORD), options=options) as host:
                self.play(wine, host, own.fingerprint())
                self.assertEqual(2, len(host.received()))

    def play(self, wine, host, pin):
        facts = dict(smtp=f"127.0.0.1:{host.smtp}", smtps=host.smtps, pops=host.pops, pin=pin,
                     password=PASSWORD, refused=REFUSED, distrusted=DISTRUSTED)
        steps = [[cell.strip() for cell in line.format_map(facts).split("|")]
                 for line in STEPS.strip().splitlines()]
        text = SCRIPT.format(smtp=host.smtp, pop=host.pop, password=PASSWORD)
        text += "".join(STEP.format(statement) for statement, *_ in steps)
        ended, said = run_script(wine, text + ENDINGS["vbs"], timeout=120)
        self.assertTrue(ended, said)
        for (statement, first, last), line in zip(steps, said, strict=True):
            with self.subTest(statement):
                self.assertRegex(line, f"^{re.escape(first)}.*{re.escape(last)}$")


if __name__ == "__main__":
    unittest.main()
