"""Scripts that send and receive through servers which demand encryption and a login, and what
becomes of it where the server is not the one it says it is."""

import base64
import contextlib
import ipaddress
import pathlib
import re
import ssl
import tempfile
import unittest

from cryptography.hazmat.primitives.asymmetric import rsa

import realservers
from certificates import Issued, issuer, trust
from ntlm import GssapiHost
from scripting import (ENDINGS, MAIL_SCRIPTS, SCRIPTS, MailHost, literal, prefix_with_server,
                       run_script)

PASSWORD = "Tr0ub4dor"
AT_REAL_SERVERS = "secret"


def in_base64(text):
    return base64.b64encode(text.encode()).decode()


PLAIN = in_base64(f"\0joe\0{PASSWORD}")
ADDRESSES = tuple(map(ipaddress.ip_address, ("127.0.0.1", "127.0.0.2")))
SCRAM = ["SCRAM-SHA-1", "SCRAM-SHA-256"]
TOKEN = "ya29.Token"
STARTTLS, TLS = 2, 3
CAME_THROUGH = (0, "")
REFUSED = 40
# What no host may hear from a client that does not trust it.
A_LOGIN = r" C: (MAIL|AUTH|USER|PASS|APOP)\b"


def setUpModule():
    Secured.wine = prefix_with_server()
    Secured.root = issuer(name="Test Root")
    trust(Secured.wine, Secured.root)


class Secured(unittest.TestCase):
    """Statements of a script are gathered, and run with `run_all`."""

    maxDiff = None

    def setUp(self):
        self.statements = []
        self.assign(host="127.0.0.1", mechanism="", login="joe", password=PASSWORD, pin="",
                    token="", security=0)

    def assign(self, **values):
        self.statements += [f"{name} = {value if isinstance(value, int) else literal(value)}"
                            for name, value in values.items()]

    def call(self, name, port, what, ending):
        number, words = ending
        self.statements.append(f"{name} {port}, {literal(what)}, {number}, {literal(words)}")

    def run_all(self, *secrets):
        self.assign(secrets=" ".join(secrets))
        self.statements.insert(0, self.statements.pop())
        text = "".join(file.read_text() for file in (
            SCRIPTS / "check.vbs", MAIL_SCRIPTS / "session.vbs", MAIL_SCRIPTS / "secured.vbs"))
        ended, lines = run_script(self.wine, text + "\n".join(self.statements) + ENDINGS["vbs"],
                                  timeout=180)
        # Wine's TLS says what it thinks of a server wherever there is room.
        self.assertEqual([], [line for line in lines if not line.startswith("GnuTLS error: ")])
        self.assertTrue(ended)

    @contextlib.contextmanager
    def real_servers(self):
        if realservers.missing():
            self.skipTest(f"{realservers.missing()} is not installed")
        self.assign(password=AT_REAL_SERVERS)
        with realservers.RealServers(tls=Issued(self.root, names=ADDRESSES)) as servers:
            yield servers

    def test_exim_takes_each_login(self):
        mechanisms = ["PLAIN", "LOGIN", "CRAM-MD5", *(SCRAM if realservers.has_scram() else [])]
        with self.real_servers() as servers:
            self.call("SendTo", servers.smtp, "clear text", (44, "offers no login"))
            for security, port in ((STARTTLS, servers.smtp), (TLS, servers.smtps)):
                self.assign(security=security)
                for mechanism in (*mechanisms, ""):
                    self.assign(mechanism=mechanism)
                    self.call("SendTo", port, f"{mechanism} {security}", CAME_THROUGH)
            self.assign(password="wrong")
            self.call("SendTo", servers.smtps, "a wrong password", (43, "535"))
            self.run_all(AT_REAL_SERVERS)
            sent = 2 * (len(mechanisms) + 1)
            servers.wait_for(sent)
            self.assertEqual(sent, len(servers.files()))
            names = {"CRAM-MD5": "cram"}
            self.check_methods(servers.log("exim-mainlog"), r" A=(\w+)", [
                names.get(name, name.lower().replace("-", "_")) for name in mechanisms])

    def test_dovecot_takes_each_login(self):
        with self.real_servers() as servers:
            self.assign(host=servers.pop_host)
            self.call("FetchFrom", servers.pop, "clear text", (14, "disallowed"))
            for security, port in ((STARTTLS, servers.pop), (TLS, servers.pops)):
                self.assign(security=security)
                for mechanism in ("USER", "APOP", "PLAIN", "LOGIN", "CRAM-MD5", *SCRAM, ""):
                    # APOP's challenge came in clear, and is forgotten when TLS begins.
                    if mechanism != "APOP" or security == TLS:
                        self.assign(mechanism=mechanism)
                        self.call("FetchFrom", port, f"{mechanism} {security}", CAME_THROUGH)
            self.assign(password="wrong")
            self.call("FetchFrom", servers.pops, "a wrong password", (43, ""))
            self.run_all(AT_REAL_SERVERS)
            self.check_methods(servers.log("dovecot.log"), r"Login: user=<joe>, method=([\w-]+),",
                               ["PLAIN", "APOP", "LOGIN", "CRAM-MD5", *SCRAM])

    def test_each_takes_ntlm(self):
        """The system's own login, which Wine has from Samba, where the account of this process has
        nothing to log in with."""
        if not realservers.has_ntlm():
            self.skipTest(f"{realservers.NTLM_AUTH} is not installed")
        with self.real_servers() as servers:
            self.assign(mechanism="NTLM", security=TLS)
            for login, password, ending in (
                    ("joe", AT_REAL_SERVERS, CAME_THROUGH), ("joe", "wrong", (43, "")),
                    (r"QUILLON\joe", AT_REAL_SERVERS, CAME_THROUGH),
                    ("", "", (43, "The login that Windows makes"))):
                self.assign(login=login, password=password, host=servers.pop_host)
                self.call("FetchFrom", servers.pops, f"{login} {password}", ending)
                self.assign(host="127.0.0.1")
                if realservers.has_scram():
                    self.call("SendTo", servers.smtps, f"{login} {password}", ending)
            self.run_all(AT_REAL_SERVERS)
            self.check_methods(servers.log("dovecot.log"), r"Login: user=.*, method=([\w-]+),",
                               ["NTLM"])
            if realservers.has_scram():
                servers.wait_for(2)
                self.check_methods(servers.log("exim-mainlog"), r" A=(\w+)", ["ntlm"])

    def test_gssapi_chooses_no_layer(self):
        """With NTLM, which is what Wine negotiates."""
        if not realservers.has_ntlm():
            self.skipTest(f"{realservers.NTLM_AUTH} is not installed")
        own = Issued(self.root, names=ADDRESSES)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        with tempfile.NamedTemporaryFile() as file:
            file.write(own.key_pem() + own.pem())
            file.flush()
            context.load_cert_chain(file.name)
        self.assign(mechanism="GSSAPI", security=TLS)
        with GssapiHost(context, PASSWORD) as good, \
                GssapiHost(context, PASSWORD, layers=b"\6\1\0\0") as insisting, \
                GssapiHost(context, PASSWORD, forged=True) as forged:
            self.call("SendTo", good.port, "no layer", CAME_THROUGH)
            self.call("SendTo", insisting.port, "a layer", (43, "insists on a security layer"))
            self.call("SendTo", forged.port, "a forged offer", (43, "offer at the end"))
            self.assign(password="wrong")
            self.call("SendTo", good.port, "a wrong password", (43, "535"))
            self.run_all(PASSWORD)
            self.assertEqual([b"\1\0\0\0"], good.chosen)
            self.assertEqual([b"", b""], insisting.chosen + forged.chosen)

    def check_methods(self, log, pattern, methods):
        self.assertEqual(set(methods), set(re.findall(pattern, log)), log)

    @contextlib.contextmanager
    def host(self, *options, certificate=None, faults=""):
        """A mail host that shows `certificate`, with the others of its chain behind it."""
        chain = certificate or [Issued(self.root, names=ADDRESSES)]
        with tempfile.NamedTemporaryFile(suffix=".pem") as file:
            file.write(chain[0].key_pem() + b"".join(one.pem() for one in chain))
            file.flush()
            always = ["--smtps-port", 0, "--pops-port", 0, "--starttls", "--certificate", file.name,
                      "--key", file.name]
            always += options or ["--auth", "PLAIN", "--require-tls"]
            with MailHost(login=("joe", PASSWORD), faults=faults, options=always) as host:
                yield host

    def everywhere(self, host, what, ending):
        for security, smtp, pop in ((STARTTLS, host.smtp, host.pop), (TLS, host.smtps, host.pops)):
            self.assign(security=security)
            self.call("SendTo", smtp, f"{what}, SMTP {security}", ending)
            self.call("FetchFrom", pop, f"{what}, POP {security}", ending)

    def certificates(self):
        """(what is wrong, the chain, a pin, how the calls end)"""
        root, between = self.root, issuer(self.root)
        stranger = issuer(name="Foreign Root")
        itself = Issued(names=ADDRESSES)

        short = rsa.generate_private_key(65537, 1024)

        def own(above=root, **how):
            return [Issued(above, **{"names": ADDRESSES, **how})]
        return [
            ("nothing", [*own(between), between], "", CAME_THROUGH),
            ("self-signed, but pinned", [itself], itself.fingerprint(), CAME_THROUGH),
            ("another is pinned", own(), itself.fingerprint(), (REFUSED, "pin")),
            ("self-signed", [itself], "", (REFUSED, "itself")),
            ("a strange issuer", [*own(stranger), stranger], "", (REFUSED, "Foreign Root")),
            ("no issuer", own(between), "", (REFUSED, "")),
            ("expired", own(first=-30, last=-1), "", (REFUSED, "expired")),
            ("not yet valid", own(first=5), "", (REFUSED, "not valid yet")),
            ("another host", own(names=("mail.example.com",)), "", (REFUSED, "127.0.0.1")),
            ("a weak key", own(key=short), "", (REFUSED, "too short")),
        ]

    def test_no_login_leaves_for_a_wrong_certificate(self):
        with contextlib.ExitStack() as stack:
            hosts = []
            for what, chain, pin, ending in self.certificates():
                host = stack.enter_context(self.host(certificate=chain))
                self.assign(pin=pin)
                self.everywhere(host, what, ending)
                hosts.append((what, host, ending))
            self.run_all(PASSWORD, PLAIN)
            for what, host, ending in hosts:
                said = host.log.read_text()
                with self.subTest(what):
                    if ending == CAME_THROUGH:
                        self.assertEqual(2, said.count("SMTP C: AUTH PLAIN ****"), said)
                    else:
                        self.assertNotRegex(said, A_LOGIN)

    def test_nothing_falls_back_to_clear_text(self):
        with contextlib.ExitStack() as stack:
            def host(*options, faults=""):
                return stack.enter_context(self.host(*options, faults=faults))
            clear = stack.enter_context(MailHost(login=("joe", PASSWORD)))
            hosts = [clear]
            self.assign(security=STARTTLS)
            self.call("SendTo", clear.smtp, "no STARTTLS", (41, ""))
            self.call("FetchFrom", clear.pop, "no STLS", (41, ""))
            self.assign(security=TLS)
            self.call("SendTo", clear.smtp, "clear text", (42, ""))
            self.call("FetchFrom", clear.pop, "POP3 in clear text", (42, ""))
            for faults in ("smtp at STARTTLS reply 454 not now\npop at STLS reply -ERR not now\n"
                           "at handshake drop",
                           "smtp at STARTTLS flood 1 220 more\npop at STLS flood 1 +OK more\n"
                           "at handshake truncate 90",
                           "at handshake reply 220 clear", "at handshake garbage 3000"):
                hosts.append(host(faults=faults))
                self.assign(security=STARTTLS)
                words = "not now" if "not now" in faults else ""
                self.call("SendTo", hosts[-1].smtp, faults, (42, words))
                self.call("FetchFrom", hosts[-1].pop, faults, (42, words))
                self.assign(security=TLS)
                self.call("SendTo", hosts[-1].smtps, faults, (42, ""))
                self.call("FetchFrom", hosts[-1].pops, faults, (42, ""))
            old = host("--tls-version", "1.1")
            self.everywhere(old, "old TLS", (42, ""))
            self.run_all(PASSWORD, PLAIN)
            for one in (*hosts, old):
                self.assertNotRegex(one.log.read_text(), A_LOGIN)

    def test_other_logins(self):
        told = f"AUTH PLAIN {PLAIN} is not the password {PASSWORD}"
        with self.host("--auth", "CRAM-MD5", "--require-login") as weak, \
                self.host("--auth", "SCRAM-SHA-256-PLUS") as bound, \
                self.host("--auth", "XOAUTH2,OAUTHBEARER", "--token", TOKEN) as token, \
                self.host(faults=f"smtp at AUTH reply 535 {told}\n"
                          f"pop at AUTH reply -ERR {told}\n") as echoing:
            self.everywhere(weak, "CRAM-MD5", CAME_THROUGH)
            self.everywhere(bound, "bound to the connection", CAME_THROUGH)
            self.assign(mechanism="PLAIN")
            self.everywhere(weak, "no common login", (44, "CRAM-MD5"))
            self.everywhere(echoing, "told back", (43, "**** is not the password ****"))
            for mechanism in ("XOAUTH2", "OAUTHBEARER"):
                self.assign(mechanism=mechanism, token=TOKEN)
                self.everywhere(token, mechanism, CAME_THROUGH)
                self.assign(token="expired")
                self.everywhere(token, f"another token, {mechanism}", (43, ""))
            self.run_all(PASSWORD, PLAIN, TOKEN)

    def tearDown(self):
        """No secret, and nothing that a login makes of it, in what the server writes."""
        hidden = [form.encode() for secret in (PASSWORD, AT_REAL_SERVERS, TOKEN)
                  for form in (secret, in_base64(secret), in_base64(f"\0joe\0{secret}"))]
        folder = pathlib.Path(self.wine.drive_c, "Quillon")
        self.assertIn(b"secured", (folder / "POPDUMP.TXT").read_bytes())
        for file in folder.iterdir():
            content = file.read_bytes()
            for form in hidden if file.suffix.lower() != ".exe" else ():
                self.assertNotIn(form, content, file.name)


if __name__ == "__main__":
    unittest.main()
