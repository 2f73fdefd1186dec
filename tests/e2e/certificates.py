"""Certificates for servers under test, good and bad ones, and the trust of a prefix in their
root."""

import datetime
import hashlib
import struct

from cryptography import x509
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec, utils
from cryptography.x509.oid import NameOID

HOST = "mail.example.com"
NOW = datetime.datetime.utcnow()
DAY = datetime.timedelta(days=1)


class Issued:
    """A certificate with its key: of `issuer`, or signed by itself, good for `names`, from `first`
    to `last` days from now."""

    def __init__(self, issuer=None, name=HOST, names=(HOST,), key=None, first=-1, last=30,
                 extensions=()):
        self.key = key or ec.generate_private_key(ec.SECP256R1())
        self.name = x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, name)])
        above = issuer or self
        builder = (x509.CertificateBuilder().subject_name(self.name).issuer_name(above.name)
                   .public_key(self.key.public_key()).serial_number(x509.random_serial_number())
                   .not_valid_before(NOW + first * DAY).not_valid_after(NOW + last * DAY))
        if names:
            builder = builder.add_extension(x509.SubjectAlternativeName(list(map(general, names))),
                                            False)
        for extension, critical in extensions:
            builder = builder.add_extension(extension, critical)
        self.certificate = signed(builder, above.key)

    def der(self):
        return self.certificate.public_bytes(serialization.Encoding.DER)

    def pem(self):
        return self.certificate.public_bytes(serialization.Encoding.PEM)

    def key_pem(self):
        return self.key.private_bytes(serialization.Encoding.PEM, serialization.PrivateFormat.PKCS8,
                                      serialization.NoEncryption())

    def fingerprint(self):
        return hashlib.sha256(self.der()).hexdigest()


def signed(builder, key):
    """The certificate, with a signature that Wine can check: of ECDSA's two numbers it loses the
    leading zeros, which one in 128 has."""
    while True:
        made = builder.sign(key, hashes.SHA256())
        if not isinstance(key, ec.EllipticCurvePrivateKey):
            return made
        if min(utils.decode_dss_signature(made.signature)) >= 1 << (key.key_size - 8):
            return made


def general(name):
    if isinstance(name, str):
        return x509.DNSName(name)
    return x509.IPAddress(name)


def issuer(above=None, name="Test Issuer", path_length=None, extensions=(), **how):
    ca = (x509.BasicConstraints(True, path_length), True)
    return Issued(above, name, (), extensions=(ca, *extensions), **how)


def trust(wine, root):
    """Makes a root one that the programs of the prefix trust: the user's, because Wine keeps the
    machine's as those of the system below it, and a later one takes all others out."""
    der = root.der()
    blob = struct.pack("<3I", 32, 1, len(der)) + der
    key = (r"HKCU\Software\Microsoft\SystemCertificates\Root\Certificates" "\\"
           + hashlib.sha1(der).hexdigest().upper())
    done = wine.run("reg", "add", key, "/v", "Blob", "/t", "REG_BINARY", "/d", blob.hex(), "/f")
    if done.returncode != 0:
        raise RuntimeError(f"the root cannot be trusted: {done.output}")
