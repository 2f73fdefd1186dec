"""Exim and Dovecot where they ask for TLS and a login: what the tests of secured mail believe of them."""

import base64
import ipaddress
import poplib
import smtplib
import ssl
import tempfile
import unittest

import realservers
from certificates import Issued, issuer
from scram import Scram

HOST = "127.0.0.1"
MESSAGE = "Subject: secured\r\n\r\ntext\r\n"


@unittest.skipIf(realservers.missing(), f"{realservers.missing()} is not installed")
class Secured(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        root = issuer(name="Test Root")
        own = Issued(root, names=tuple(map(ipaddress.ip_address, (HOST, "127.0.0.2"))))
        cls.servers = cls.enterClassContext(realservers.RealServers(tls=own))
        with tempfile.NamedTemporaryFile() as file:
            file.write(root.pem())
            file.flush()
            cls.context = ssl.create_default_context(cafile=file.name)

    def smtp(self):
        smtp = self.enterContext(smtplib.SMTP(HOST, self.servers.smtp, timeout=20))
        smtp.ehlo()
        return smtp

    def test_exim_takes_nothing_in_clear(self):
        smtp = self.smtp()
        self.assertFalse(smtp.has_extn("AUTH"))
        self.assertEqual(530, smtp.mail("a@b")[0])
        self.assertEqual(503, smtp.docmd("AUTH", "PLAIN AGpvZQBzZWNyZXQ=")[0])
        smtp.starttls(context=self.context)
        smtp.ehlo()
        self.assertEqual(530, smtp.mail("a@b")[0])

    def test_exim_takes_each_login(self):
        smtps = smtplib.SMTP_SSL(HOST, self.servers.smtps, context=self.context, timeout=20)
        smtps.ehlo()
        offered = smtps.esmtp_features["auth"].split()
        smtps.quit()
        scram = ["SCRAM-SHA-1", "SCRAM-SHA-256"] if realservers.has_scram() else []
        ntlm = ["NTLM"] if scram and realservers.has_ntlm() else []
        self.assertEqual(["PLAIN", "LOGIN", "CRAM-MD5", *scram, *ntlm], offered)
        for number, mechanism in enumerate(offered[:len(offered) - len(ntlm)], 1):
            for password in ("wrong", "secret"):
                with self.subTest(mechanism, password=password):
                    smtp = self.smtp()
                    smtp.starttls(context=self.context)
                    smtp.ehlo()
                    self.assertEqual(535 if password == "wrong" else 235,
                                     self.log_in(smtp, mechanism, password))
            smtp.sendmail("a@b", "joe@quillon.test", MESSAGE)
            self.servers.wait_for(number)

    def log_in(self, smtp, mechanism, password):
        if not mechanism.startswith("SCRAM"):
            smtp.esmtp_features["auth"] = mechanism
            try:
                return smtp.login("joe", password)[0]
            except smtplib.SMTPAuthenticationError as refused:
                return refused.smtp_code
        scram = Scram("sha" + mechanism[10:], "joe", password)
        code, text = smtp.docmd("AUTH", mechanism)
        for answer in (lambda _: scram.first(), scram.last, lambda text: text[len(scram.verdict):]):
            if code != 334:
                break
            code, text = smtp.docmd(base64.b64encode(answer(base64.b64decode(text))).decode())
        return code

    def test_dovecot(self):
        pop = poplib.POP3(self.servers.pop_host, self.servers.pop, timeout=20)
        with self.assertRaises(poplib.error_proto):
            pop.user("joe")
            pop.pass_("secret")
        pop.close()
        for number in range(3):
            if number == 2:
                pop = poplib.POP3_SSL(
                    self.servers.pop_host, self.servers.pops, context=self.context, timeout=20)
            else:
                pop = poplib.POP3(self.servers.pop_host, self.servers.pop, timeout=20)
                pop.stls(context=self.context)
            self.assertEqual({"PLAIN", "LOGIN", "CRAM-MD5", "SCRAM-SHA-1", "SCRAM-SHA-256",
                              *(["NTLM"] if realservers.has_ntlm() else [])},
                             set(pop.capa()["SASL"]))
            if number == 0:
                pop.apop("joe", "secret")
            else:
                pop.user("joe")
                pop.pass_("secret")
            pop.quit()


if __name__ == "__main__":
    unittest.main()
