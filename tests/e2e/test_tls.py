"""Secured connections of a Windows program with the system's TLS, to servers of another maker: the text
that passes, and the verdict on each kind of certificate."""

import hashlib
import ipaddress
import pathlib
import socket
import ssl
import tempfile
import threading
import unittest

from cryptography import x509
from cryptography.hazmat.primitives.asymmetric import rsa
from cryptography.x509.oid import ExtendedKeyUsageOID

from certificates import HOST, Issued, issuer
from winetest import CLIENTS, WinePrefix

ECHOED = 300_000
# CertificateFault of src/ports/Tls.h.
(NONE, MISSING, UNREADABLE, WRONG_PIN, SELF_SIGNED, UNKNOWN_ISSUER, INCOMPLETE, EXPIRED, NOT_YET_VALID,
 WRONG_HOST, WRONG_USAGE, WRONG_ISSUER, BAD_SIGNATURE, WEAK_KEY, WEAK_SIGNATURE, REVOKED,
 REVOCATION_UNKNOWN, REFUSED) = range(18)
SECURED = "secured 0303 strong bound same, "


class Server:
    """Listens on 127.0.0.1, takes one connection and plays `play` with it on a thread."""

    def __init__(self, play):
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._thread = threading.Thread(target=self._run, args=(play,), daemon=True)
        self._thread.start()

    def _run(self, play):
        with self._listener:
            connection, _ = self._listener.accept()
        with connection:
            try:
                play(connection)
            except OSError:
                pass  # the client has refused the server


def secured(folder, own, others=(), end=True, version=ssl.TLSVersion.TLSv1_2, der=None,
            clients=None):
    """Echoes over TLS, and says the end of it or just goes. `clients` is the certificate, as DER,
    that every client has to show."""
    name = pathlib.Path(folder) / f"{id(own)}-{len(others)}-{end}.pem"
    first = ssl.DER_cert_to_PEM_cert(der).encode() if der else own.pem()
    name.write_bytes(own.key_pem() + first + b"".join(other.pem() for other in others))
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.set_ciphers("DEFAULT@SECLEVEL=0")  # weak certificates are among the cases
    context.minimum_version = context.maximum_version = version
    context.load_cert_chain(name)
    if clients:
        context.verify_mode = ssl.CERT_REQUIRED
        context.load_verify_locations(cadata=clients)

    def play(connection):
        with context.wrap_socket(connection, server_side=True) as stream:
            left = ECHOED
            while left > 0:
                data = stream.recv(50_000)
                if not data:
                    return
                stream.sendall(data)
                left -= len(data)
            if end:
                stream.unwrap()
    return Server(play)


def clear_text(connection):
    connection.sendall(b"220 mail.example.com ESMTP ready\r\n")
    connection.recv(1000)


class Tls(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(WinePrefix())
        cls.folder = cls.enterClassContext(tempfile.TemporaryDirectory())
        cls.root = issuer(name="Test Root")
        cls.issuer = issuer(cls.root, path_length=0)
        cls.root_file = pathlib.Path(cls.folder) / "root.der"
        cls.root_file.write_bytes(cls.root.der())

    def results(self, servers):
        """What the client says of each (server, host)."""
        words = [word for server, host in servers for word in (server.port, host)]
        done = self.wine.run(CLIENTS / "TlsClient.exe", self.root_file, *words, timeout=120)
        self.assertEqual(0, done.returncode, done.output)
        said = dict(line.split(" ", 1) for line in done.output.splitlines())
        return [said[str(server.port)] for server, _ in servers]

    def test_text_passes_until_the_end_is_told(self):
        good = Issued(self.issuer)
        chain = [self.issuer]
        servers = [
            (secured(self.folder, good, chain), "closed"),
            (secured(self.folder, good, chain, end=False), "cut off"),
        ]
        for (_, end), said in zip(servers, self.results([(server, HOST) for server, _ in servers])):
            self.assertEqual(SECURED + end, said)

    def test_a_certificate_of_the_user_is_shown(self):
        own = pathlib.Path(self.folder) / "own.der"
        made = self.wine.run(CLIENTS / "TlsClient.exe", "own", own, "Joe Client")
        self.assertEqual(0, made.returncode, made.output)
        der = own.read_bytes()
        servers = [secured(self.folder, Issued(self.issuer), [self.issuer], clients=der)
                   for _ in range(4)]
        shown = hashlib.sha1(der).hexdigest()
        said = self.results(list(zip(servers, [
            f"{HOST}/Joe Client", f"{HOST}/{shown}", f"{HOST}/Ann Client", HOST])))
        self.assertEqual([SECURED + "closed"] * 2, said[:2])
        self.assertEqual('failed: the user\'s store of certificates has none with a key for '
                         '"Ann Client"', said[2])
        self.assertRegex(said[3], "^failed: ")

    def test_a_server_without_todays_tls_is_refused(self):
        good = Issued(self.issuer)
        old = secured(self.folder, good, [self.issuer], version=ssl.TLSVersion.TLSv1_1)
        said = self.results([(old, HOST), (Server(clear_text), HOST),
                             (Server(lambda connection: None), HOST)])
        self.assertRegex(said[0], "^failed: ")
        self.assertEqual("failed: the server does not answer in TLS", said[1])
        self.assertRegex(said[2], "^failed: the (server hung up|connection broke)")

    def cases(self):
        """(verdict, host, own certificate, the others)"""
        root, above = self.root, self.issuer
        usage = lambda *kinds: ((x509.ExtendedKeyUsage(list(kinds)), False),)
        permitted = (x509.NameConstraints([x509.DNSName("allowed.example")], None), True)
        unknown = (x509.UnrecognizedExtension(x509.ObjectIdentifier("1.3.6.1.4.1.99999.1"),
                                              b"\5\0"), True)
        foreign, same_name = issuer(name="Foreign Root"), issuer(name="Test Root")
        constrained = issuer(root, extensions=(permitted,))
        expired = issuer(root, first=-30, last=-1)
        deep = issuer(above, "Deep Issuer")
        no_issuer = Issued(above, "leaf", ("leaf.example.com",))
        address = ipaddress.ip_address("127.0.0.1")

        def own(**how):
            return Issued(above, **how), [above]
        return [
            (NONE, HOST, *own(names=("*.example.com",))),
            (NONE, HOST, *own(key=rsa.generate_private_key(65537, 2048),
                              extensions=usage(ExtendedKeyUsageOID.SERVER_AUTH))),
            (NONE, "127.0.0.1", *own(names=(address,))),
            (NONE, HOST, Issued(above), [foreign, root, above]),
            (WRONG_HOST, "127.0.0.1", *own(names=("127.0.0.1",))),
            (WRONG_HOST, HOST, *own(names=())),
            (WRONG_HOST, HOST, *own(names=("other.example.com",))),
            (EXPIRED, HOST, *own(first=-30, last=-1)),
            (NOT_YET_VALID, HOST, *own(first=5)),
            (WRONG_USAGE, HOST, *own(extensions=usage(ExtendedKeyUsageOID.CLIENT_AUTH))),
            (WEAK_KEY, HOST, *own(key=rsa.generate_private_key(65537, 1024))),
            (INCOMPLETE, HOST, Issued(above), []),
            (SELF_SIGNED, HOST, Issued(), []),
            (UNKNOWN_ISSUER, HOST, Issued(foreign), [foreign]),
            (UNKNOWN_ISSUER, HOST, Issued(same_name), [same_name]),
            (EXPIRED, HOST, Issued(expired), [expired]),
            (WRONG_ISSUER, HOST, Issued(no_issuer), [no_issuer, above]),
            (WRONG_ISSUER, HOST, Issued(deep), [deep, above]),
            (WRONG_ISSUER, HOST, Issued(constrained), [constrained]),
            (REFUSED, HOST, *own(extensions=(unknown,))),
        ]

    def test_each_certificate_gets_its_verdict(self):
        cases = self.cases()
        servers = [(secured(self.folder, own, others), host) for _, host, own, others in cases]
        good = Issued(self.issuer)
        forged = bytearray(good.der())
        forged[-1] ^= 1
        cases.append((BAD_SIGNATURE, HOST, good, [self.issuer]))
        servers.append((secured(self.folder, good, [self.issuer], der=bytes(forged)), HOST))
        for number, (case, said) in enumerate(zip(cases, self.results(servers))):
            with self.subTest(number=number, said=said):
                if case[0] == NONE:
                    self.assertEqual(SECURED + "closed", said)
                else:
                    self.assertRegex(said, f"^refused {case[0]}: ")


if __name__ == "__main__":
    unittest.main()
