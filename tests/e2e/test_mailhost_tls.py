"""The embedded mail host where it asks for more: TLS, logins, and the extensions of today's servers.

Run it as test_mailhost.py.
"""

import base64
import contextlib
import hashlib
import poplib
import re
import smtplib
import socket
import ssl
import unittest

import test_mailhost
from certificates import Issued
from scram import Scram
from test_mailhost import PATIENCE, Peer

HOST = "127.0.0.1"
USER, PASSWORD, TOKEN = "jo=e,x", "a Secret", "TokenText"
LOGIN = ("--user", USER, "--password", PASSWORD, "--token", TOKEN)
ALL = ("PLAIN,LOGIN,CRAM-MD5,SCRAM-SHA-1,SCRAM-SHA-256,SCRAM-SHA-1-PLUS,SCRAM-SHA-256-PLUS,"
       "XOAUTH2,OAUTHBEARER")


def encoded(data):
    return base64.b64encode(data)


class TlsPeer(Peer):
    """A Peer within TLS from the start, or from `secure` on."""

    def __init__(self, port, context, name=HOST, at_once=True):
        super().__init__(port)
        self.context, self.name = context, name
        if at_once:
            self.secure()

    def secure(self):
        self.socket = self.context.wrap_socket(self.socket, server_hostname=self.name,
                                               suppress_ragged_eofs=False)


class TlsTest(test_mailhost.HostTest):
    def start(self, *options, faults=None):
        self.root = self.folder / "root.pem"
        options = ("--smtps-port", "0", "--pops-port", "0", "--starttls", *options)
        if "--certificate" not in options:
            options += ("--write-root", str(self.root))
        self.log = self.folder / "log"
        super().start(*options, "--log", str(self.log), faults=faults)
        self.context = ssl.create_default_context(cafile=self.root)

    def smtps(self, **how):
        return TlsPeer(self.ports["smtps"], self.context, **how)

    def check_log(self, *wanted):
        self.stop()
        log = self.log.read_text()
        for text in (PASSWORD, TOKEN, "AUTH PLAIN A", encoded(PASSWORD.encode()).decode()):
            self.assertNotIn(text, log)
        for text in wanted:
            self.assertRegex(log, text)


class Tls(TlsTest):
    MESSAGE = "Subject: x\r\n\r\n.text\r\n" + "y" * 70 + "\r\n"

    def test_other_clients(self):
        self.start()
        text = self.MESSAGE + "z\r\n" * 50000
        with smtplib.SMTP_SSL(HOST, self.ports["smtps"], context=self.context,
                              timeout=PATIENCE) as smtp:
            smtp.sendmail("a@b", "c@d", text)
        with smtplib.SMTP("localhost", self.smtp_port, timeout=PATIENCE) as smtp:
            smtp.ehlo()
            self.assertTrue(smtp.has_extn("STARTTLS"))
            smtp.starttls(context=self.context)
            smtp.ehlo()
            self.assertFalse(smtp.has_extn("STARTTLS"))
            smtp.sendmail("a@b", "c@d", self.MESSAGE)
        self.assertEqual([text.encode(), self.MESSAGE.encode()], self.stored())
        pop = poplib.POP3_SSL(HOST, self.ports["pops"], context=self.context, timeout=PATIENCE)
        pop.user("u"), pop.pass_("p")
        self.assertEqual(text.encode().splitlines(), pop.retr(1)[1])
        pop.quit()
        pop = poplib.POP3(HOST, self.pop_port, timeout=PATIENCE)
        self.assertIn("STLS", pop.capa())
        pop.stls(self.context)
        self.assertNotIn("STLS", pop.capa())
        pop.user("u"), pop.pass_("p")
        self.assertEqual(2, len(pop.list()[1]))
        pop.quit()
        self.check_log("SMTP -- TLSv1.3 ", " for localhost\n", "POP -- TLSv1.3 ")

    def test_versions_and_names(self):
        for versions, name, found in [("1.2", "mail.example.com", "TLSv1.2"),
                                      ("1.3", "localhost", "TLSv1.3"),
                                      ("1.2-1.3", HOST, "TLSv1.3"), ("1.1", HOST, None)]:
            with self.subTest(versions):
                self.restart("--tls-version", versions)
                if found is None:
                    self.assertRaises(ssl.SSLError, self.smtps, name=name)
                    continue
                with self.smtps(name=name) as peer:
                    self.assertEqual(found, peer.socket.version())
                    self.assertEqual(b"220", peer.reply()[:3])

    def test_a_certificate_that_is_given(self):
        self.start()
        with self.smtps() as peer:
            root = self.root.read_bytes()
            own = ssl.DER_cert_to_PEM_cert(peer.socket.getpeercert(True))
        self.assertNotIn(own.encode(), root)
        file = self.folder / "given.pem"
        given = Issued(names=("given.example",))
        file.write_bytes(given.key_pem() + given.pem())
        self.restart("--certificate", str(file), "--key", str(file))
        self.assertRaises(ssl.SSLCertVerificationError, self.smtps)
        self.root.write_bytes(given.pem())
        self.context.load_verify_locations(self.root)
        with self.smtps(name="given.example") as peer:
            self.assertEqual(b"220", peer.reply()[:3])

    def test_what_is_said_in_clear_is_forgotten(self):
        self.start()
        with TlsPeer(self.smtp_port, self.context, at_once=False) as peer:
            peer.start_message()
            peer.ask(b".")
            self.assertEqual(b"220", peer.ask(b"STARTTLS")[:3])
            peer.secure()
            self.assertEqual(b"503", peer.ask(b"MAIL FROM:<a@b>")[:3])
            self.assertEqual(b"500", peer.ask(b"STARTTLS")[:3])
        with self.smtp() as peer:  # more in clear behind the command ends it
            peer.reply()
            peer.send(b"STARTTLS\r\nEHLO me\r\n")
            self.assertEqual(b"220", peer.reply()[:3])
            self.assertEqual(b"", peer.rest())

    def test_tls_is_required(self):
        self.start("--require-tls", "--auth", "PLAIN")
        with self.smtp() as peer:
            peer.reply()
            self.assertNotIn(b"AUTH", peer.ask(b"EHLO me"))
            for command in (b"MAIL FROM:<a@b>", b"AUTH PLAIN AGEAYg=="):
                self.assertEqual(b"530", peer.ask(command)[:3])
        with self.pop() as peer:
            peer.line()
            self.assertNotRegex(peer.data(b"CAPA"), b"USER|SASL")
            for command in (b"USER joe", b"AUTH PLAIN AGEAYg=="):
                self.assertEqual(b"-ERR", peer.ask(command)[:4])
        with self.smtps() as peer:
            peer.reply()
            self.assertIn(b"250 AUTH PLAIN", peer.ask(b"EHLO me"))
            self.assertEqual(b"235", peer.ask(b"AUTH PLAIN AGEAYg==")[:3])
            self.assertEqual(b"250", peer.ask(b"MAIL FROM:<a@b>")[:3])


class Faults(TlsTest):
    """They are seen through TLS as they are without it."""

    def test_rules(self):
        greeting = rb"220 [^\n]*\r\n"
        for rule, hears, ended in [
            ("smtp at greeting split byte", greeting + rb"221 bye\r\n", True),
            ("smtp at handshake split 7\nsmtp at handshake delay 20", greeting + rb"221 bye\r\n",
                True),
            ("smtp at QUIT drop after", greeting + rb"221 bye\r\n", False),
            ("smtp at greeting drop mid", rb"220 localhost ", False),
            ("smtp at NOOP drop", greeting, False),
        ]:
            with self.subTest(rule):
                self.restart(faults=rule)
                with self.smtps() as peer:
                    peer.send(b"NOOP\r\nQUIT\r\n" if "NOOP" in rule else b"QUIT\r\n")
                    heard, told = b"", True
                    try:
                        while data := peer.read():
                            heard += data
                    except ssl.SSLEOFError:
                        told = False
                self.assertRegex(heard, re.compile(rb"\A" + hears + rb"\Z"))
                self.assertEqual(ended, told)

    def test_handshakes(self):
        for rule, hears in [
            ("at handshake truncate 0", rb""), ("at handshake truncate 1", rb"\x16"),
            ("at handshake truncate 300", rb"\x16\x03.{298}"), ("at handshake drop", rb""),
            ("at handshake reply 220 clear\nat handshake split byte", rb"220 clear\r\n"),
            ("at handshake garbage 9", rb".{9}"), ("at handshake silent", rb""),
        ]:
            with self.subTest(rule):
                self.restart(faults=rule)
                sent = ssl.MemoryBIO()
                tls = self.context.wrap_bio(ssl.MemoryBIO(), sent, server_hostname=HOST)
                self.assertRaises(ssl.SSLWantReadError, tls.do_handshake)
                with Peer(self.ports["smtps"]) as peer:
                    peer.send(sent.read())
                    with contextlib.suppress(OSError):  # the host may be gone already
                        peer.socket.shutdown(socket.SHUT_WR)
                    self.assertRegex(peer.rest(), re.compile(rb"\A" + hears + rb"\Z", re.S))

    def test_starttls(self):
        for rule, hears in [("smtp at STARTTLS reply 454 no", b"454 no\r\n250 ok\r\n221 bye\r\n"),
                            ("smtp at STARTTLS multiline", b"220-more follows\r\n220 begin TLS\r\n"),
                            ("smtp at STARTTLS flood 1 220 again",
                             b"220 begin TLS\r\n220 again\r\n")]:
            with self.subTest(rule):
                self.restart(faults=rule)
                with TlsPeer(self.smtp_port, self.context, at_once=False) as peer:
                    peer.reply()
                    peer.send(b"STARTTLS\r\n")
                    if "reply" in rule:
                        peer.send(b"NOOP\r\nQUIT\r\n")
                        self.assertEqual(hears, peer.rest())
                    else:
                        self.assertEqual(hears, b"".join(peer.line() + b"\r\n" for _ in range(2)))
                        peer.secure()
                        self.assertEqual(b"250 ok", peer.ask(b"NOOP"))

    def test_a_conversation(self):
        self.start(faults="protocol smtp\nS: 220 hi\nC: AUTH LOGIN\nS: 334 Vxx=\nC: a\nS: 235 ok\n"
                          "C: QUIT\nclose\n")
        with self.smtps() as peer:
            self.assertEqual([b"220 hi", b"334 Vxx=", b"235 ok"],
                             [peer.reply(), peer.ask(b"AUTH LOGIN"), peer.ask(b"a")])
            peer.send(b"QUIT\r\n")
            self.assertEqual(b"", peer.rest())
        with self.smtps() as peer:
            peer.reply()
            peer.ask(b"AUTH LOGIN")
            self.assertRaises(EOFError, peer.ask, b"wrong " + PASSWORD.encode())
        status, complaint = self.stop()
        self.assertEqual(1, status)
        self.assertRegex(complaint, r':5: expected "a", received "\*\*\*\*"\n')
        self.check_log("SMTP C: AUTH LOGIN\n")


class Logins(TlsTest):
    def test_other_clients(self):
        self.start("--auth", ALL, "--apop", *LOGIN)
        for mechanism in ("PLAIN", "LOGIN", "CRAM-MD5"):
            with self.subTest(mechanism), smtplib.SMTP(HOST, self.smtp_port) as smtp:
                smtp.ehlo()
                offered = smtp.esmtp_features["auth"].split()
                self.assertEqual([name for name in ALL.split(",") if "PLUS" not in name], offered)
                smtp.esmtp_features["auth"] = mechanism
                with self.assertRaises(smtplib.SMTPAuthenticationError) as refused:
                    smtp.login(USER, "wrong")
                self.assertEqual(535, refused.exception.smtp_code)
                smtp.login(USER, PASSWORD)
        for log_in in (lambda pop: (pop.user(USER), pop.pass_(PASSWORD)),
                       lambda pop: pop.apop(USER, PASSWORD)):
            pop = poplib.POP3(HOST, self.pop_port, timeout=PATIENCE)
            self.assertRaises(poplib.error_proto, pop.apop, USER, "wrong")
            log_in(pop)
            pop.quit()
        self.check_log("SMTP C: AUTH PLAIN \\*\\*\\*\\*\n", "POP C: APOP jo=e,x \\*\\*\\*\\*\n")

    def converse(self, peer, pop, mechanism, responses):
        """The last answer to a login whose responses these are, or make of the challenge."""
        question, lines = (b"+ ", peer.line) if pop else (b"334 ", peer.reply)
        peer.send(b"AUTH " + mechanism.encode() + b"\r\n")
        for response in responses:
            challenge = lines()
            if not challenge.startswith(question):
                return challenge
            text = base64.b64decode(challenge[len(question):])
            peer.send(encoded(response(text) if callable(response) else response) + b"\r\n")
        return lines()

    def cases(self, peer):
        """(mechanism, responses, whether they are good)"""
        oauth, bearer = (f"user={USER}\1auth=Bearer {{}}\1\1", "n,a=jo=3De=2Cx,\1auth=Bearer {}\1\1")
        for token in (TOKEN, TOKEN + "x"):
            again = [] if token == TOKEN else [b"\1"]
            yield "XOAUTH2", [oauth.format(token).encode(), *again], token == TOKEN
            yield "OAUTHBEARER", [bearer.format(token).encode(), *again], token == TOKEN
        digest = hashlib.sha256(peer.socket.getpeercert(True)).digest()
        end_point = ("tls-server-end-point", digest)
        unique = ("tls-unique", peer.socket.get_channel_binding())
        for algorithm in ("sha1", "sha256"):
            name = f"SCRAM-SHA-{algorithm[3:]}"
            for mechanism, binding, flag, password, good in [
                    (name, None, "n", PASSWORD, True), (name, None, "y", PASSWORD, False),
                    (name, None, "n", "wrong", False), (name, end_point, "n", PASSWORD, False),
                    (name + "-PLUS", end_point, "n", PASSWORD, True),
                    (name + "-PLUS", unique, "n", PASSWORD, True),
                    (name + "-PLUS", (unique[0], digest), "n", PASSWORD, False),
                    (name + "-PLUS", None, "n", PASSWORD, False)]:
                scram = Scram(algorithm, USER, password, binding, flag)
                proves = lambda text, scram=scram: b"" if text == scram.verdict else b"liar"
                yield mechanism, [scram.first(), scram.last, proves], good

    def test_tokens_and_scram(self):
        self.start("--auth", ALL, *LOGIN, "--tls-version", "1.2", "--no-lock")
        for port, pop in ((self.ports["smtps"], False), (self.ports["pops"], True)):
            with TlsPeer(port, self.context) as peer:
                cases = list(self.cases(peer))
            for number in range(len(cases)):
                with TlsPeer(port, self.context) as peer:
                    peer.line() if pop else (peer.reply(), peer.ask(b"EHLO me"))
                    mechanism, responses, good = list(self.cases(peer))[number]
                    with self.subTest(number=number, mechanism=mechanism, pop=pop):
                        answer = self.converse(peer, pop, mechanism, responses)
                        wanted = (b"+OK" if good else b"-ERR") if pop else (
                            b"235" if good else b"535")
                        self.assertTrue(answer.startswith(wanted), answer)
        self.check_log("SMTP C: \\*\\*\\*\\*\n", "POP C: \\*\\*\\*\\*\n")

    def test_dialogue(self):
        self.start("--auth", "PLAIN,LOGIN,CRAM-MD5", "--require-login", *LOGIN)
        plain = encoded(f"\0{USER}\0{PASSWORD}".encode())
        with self.smtp() as peer:
            peer.reply()
            self.assertEqual(b"503", peer.ask(b"AUTH PLAIN " + plain)[:3])
            peer.ask(b"EHLO me")
            for line, reply in [
                    (b"MAIL FROM:<a@b>", b"530"), (b"AUTH PLAIN", b"334 "), (b"*", b"501"),
                    (b"AUTH PLAIN", b"334 "), (b"no base64", b"501"), (b"AUTH NTLM", b"504"),
                    (b"AUTH", b"504"), (b"AUTH PLAIN =", b"535"), (b"AUTH CRAM-MD5 AA==", b"535"),
                    (b"AUTH LOGIN " + encoded(USER.encode()), b"334 UGFzc3dvcmQ6"),
                    (encoded(b"x" * 9000), b"535"), (b"auth plain " + plain, b"235"),
                    (b"AUTH PLAIN " + plain, b"503"), (b"MAIL FROM:<a@b> AUTH=<>", b"250")]:
                self.assertEqual(reply, peer.ask(line)[:len(reply)], line)
        with self.smtp() as peer:
            peer.reply()
            peer.ask(b"EHLO me")
            peer.ask(b"AUTH LOGIN")
            peer.send(PASSWORD.encode() + b"\n*\r\n")
            self.assertEqual([b"500", b"501"], [peer.reply()[:3], peer.reply()[:3]])
            replies = [peer.ask(b"AUTH PLAIN =")[:3] for _ in range(10)]
            self.assertEqual([b"535"] * 9 + [b"421"], replies)
            self.assertEqual(b"", peer.rest())
        with self.pop() as peer:
            peer.line()
            self.assertIn(b"SASL PLAIN LOGIN CRAM-MD5\r\n", peer.data(b"CAPA"))
            for line, reply in [(b"AUTH PLAIN", b"+ "), (b"*", b"-ERR"), (b"AUTH XOAUTH2", b"-ERR"),
                                (b"AUTH PLAIN " + plain, b"+OK 0 messages"),
                                (b"AUTH PLAIN " + plain, b"-ERR")]:
                self.assertEqual(reply, peer.ask(line)[:len(reply)], line)
        self.check_log()

    def test_faults(self):
        self.start("--auth", "PLAIN,LOGIN", *LOGIN, faults="smtp at AUTH 2 reply 334 AAAA\n"
                   "smtp at RESPONSE 1 reply 535 no\nsmtp at RESPONSE 3 reply 334 BBBB\n")
        with self.smtp() as peer:
            peer.reply()
            peer.ask(b"EHLO me")
            secret = encoded(PASSWORD.encode())
            replies = [peer.ask(line)[:8] for line in (
                b"AUTH PLAIN", secret, b"NOOP", b"AUTH PLAIN", secret, b"NOOP", b"AUTH LOGIN",
                secret, secret, b"NOOP")]
            self.assertEqual([b"334 ", b"535 no", b"250 ok", b"334 AAAA", b"535 wron", b"250 ok",
                              b"334 VXNl", b"334 BBBB", b"535 wron", b"250 ok"], replies)
        self.check_log()


class Extensions(TlsTest):
    def test_parameters(self):
        self.start("--capabilities", "SIZE 1000,8BITMIME,DSN,CHUNKING,ENHANCEDSTATUSCODES")
        with self.smtp() as peer:
            peer.reply()
            self.assertEqual(b"250-localhost\n250-SIZE 1000\n250-8BITMIME\n250-DSN\n250-CHUNKING\n"
                             b"250-ENHANCEDSTATUSCODES\n250 STARTTLS", peer.ask(b"EHLO me"))
            for line, reply in [
                    (b"RCPT TO:<c@d>", b"503 5.5.1 "), (b"MAIL FROM:<a@b> SIZE=1001", b"552 5.3.4 "),
                    (b"MAIL FROM:<a@b> AUTH=<>", b"555 5.5.4 "),
                    (b"MAIL FROM:<a@b> RET=ALL", b"501 5.5.4 "),
                    (b"MAIL FROM:<a@b> SIZE=9 RET=HDRS ENVID=x+2By", b"250 2.0.0 "),
                    (b"RCPT TO:<c@d> NOTIFY=NEVER,DELAY", b"501 5.5.4 "),
                    (b"RCPT TO:<c@d> NOTIFY=SUCCESS,DELAY ORCPT=rfc822;c@d", b"250 2.0.0 "),
                    (b"DATA", b"354 send"), (b"x" * 1000 + b"\r\n.", b"552 5.3.4 "),
                    (b"MAIL FROM:<a@b> RET=FULL", b"250 2.0.0 "),
                    (b"RCPT TO:<c@d> NOTIFY=NEVER", b"250 2.0.0 "),
                    (b"BDAT 3\r\n.\r\n", b"250 2.0.0 "), (b"DATA", b"503 5.5.1 "),
                    (b"BDAT 5 LAST\r\na\nb\r\n", None)]:
                peer.send(line if line.startswith(b"BDAT") else line + b"\r\n")
                if reply:
                    self.assertEqual(reply, peer.reply()[:len(reply)], line)
            self.assertEqual(b"250 2.0.0 message accepted", peer.reply())
            peer.send(b"BDAT 4 LAST\r\nab\r\nNOOP\r\n")
            self.assertEqual([b"503", b"250"], [peer.reply()[:3], peer.reply()[:3]])
        self.assertEqual([b".\r\na\nb\r\n"], self.stored())
        envelope, = self.store.glob("envelopes/*")
        self.assertEqual("MAIL FROM:<a@b> RET=FULL\nRCPT TO:<c@d> NOTIFY=NEVER\n",
                         envelope.read_text())

    def test_without_them(self):
        self.start("--capabilities", "", "--pop-capabilities", "UIDL")
        with self.smtp() as peer:
            peer.reply()
            self.assertEqual(b"250-localhost\n250 STARTTLS", peer.ask(b"EHLO me"))
            for parameter in (b"SIZE=1", b"BODY=8BITMIME", b"RET=FULL"):
                self.assertEqual(b"555", peer.ask(b"MAIL FROM:<a@b> " + parameter)[:3])
            self.assertEqual(b"500 command", peer.ask(b"BDAT 0 LAST")[:11])
        with self.pop() as peer:
            peer.line()
            self.assertEqual(b"UIDL\r\nSTLS\r\n", peer.data(b"CAPA"))


class CommandLine(unittest.TestCase):
    complaint = test_mailhost.CommandLine.complaint

    def test_options_that_do_not_go_together(self):
        for words in ["--require-tls", "--certificate x --starttls", "--starttls --tls-version 1.4",
                      "--starttls --tls-version 1.3-1.2", "--write-root /tmp/x", "--auth NTLM",
                      "--auth CRAM-MD5", "--auth XOAUTH2", "--apop", "--require-login",
                      "--auth SCRAM-SHA-1-PLUS --user u --password p",
                      "--starttls --certificate /nowhere --key /nowhere"]:
            with self.subTest(words):
                self.complaint("--smtp-port", "0", "--pop-port", "0", "--no-store", *words.split())


if __name__ == "__main__":
    unittest.main()
