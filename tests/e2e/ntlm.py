"""The server's side of NTLM ([MS-NLMP], version 2 with signing), and a mail server that takes it under
the name GSSAPI with what RFC 4752 has behind a login."""

import base64
import hashlib
import hmac
import secrets
import socketserver
import struct
import threading

from cryptography.hazmat.primitives.ciphers import Cipher, algorithms

SIGN, EXCHANGES_KEY = 0x10, 0x40000000
# Unicode, target, NTLM, always signed, a server, extended security, target information, 128 bits
FLAGS = 0x1 | 0x4 | SIGN | 0x200 | 0x8000 | 0x20000 | 0x80000 | 0x800000 | 0x20000000 | EXCHANGES_KEY


def md4(data):
    """RFC 1320, which OpenSSL has no more."""
    def turned(value, by):
        value &= 0xFFFFFFFF
        return (value << by | value >> 32 - by) & 0xFFFFFFFF

    rounds = (
        (lambda x, y, z: x & y | ~x & z, 0, (3, 7, 11, 19), range(16)),
        (lambda x, y, z: x & y | x & z | y & z, 0x5A827999, (3, 5, 9, 13),
         [column + row for column in range(4) for row in range(0, 16, 4)]),
        (lambda x, y, z: x ^ y ^ z, 0x6ED9EBA1, (3, 9, 11, 15),
         (0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15)))
    state = [0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476]
    padded = data + b"\x80" + bytes(-(len(data) + 9) % 64) + struct.pack("<Q", 8 * len(data))
    for at in range(0, len(padded), 64):
        words = struct.unpack_from("<16I", padded, at)
        a, b, c, d = state
        for mix, constant, shifts, order in rounds:
            for step, word in enumerate(order):
                a, b, c, d = d, turned(a + mix(b, c, d) + words[word] + constant,
                                       shifts[step % 4]), b, c
        state = [(old + new) & 0xFFFFFFFF for old, new in zip(state, (a, b, c, d))]
    return struct.pack("<4I", *state)


class Ntlm:
    """One login, of one account."""

    def __init__(self, user, password):
        self._user = user
        self._hash = md4(password.encode("utf-16-le"))
        self._nonce = secrets.token_bytes(8)

    def challenge(self):
        name = "QUILLON".encode("utf-16-le")
        target = b"".join(struct.pack("<HH", kind, len(name)) + name for kind in (2, 1)) + bytes(4)
        return (b"NTLMSSP\0" + struct.pack("<IHHII", 2, len(name), len(name), 56, FLAGS)
                + self._nonce + bytes(8) + struct.pack("<HHI", len(target), len(target),
                                                       56 + len(name))
                + bytes(8) + name + target)

    def proves(self, message):
        """Whether the client's last message shows that it knows the password."""
        def field(at):
            size, _, start = struct.unpack_from("<HHI", message, at)
            return message[start:start + size]

        response, domain, user, key = map(field, (20, 28, 36, 52))
        if message[:12] != b"NTLMSSP\0\x03\0\0\0" or user.decode("utf-16-le") != self._user:
            return False
        owner = hmac.digest(self._hash, self._user.upper().encode("utf-16-le") + domain, "md5")
        if hmac.digest(owner, self._nonce + response[16:], "md5") != response[:16]:
            return False
        base = hmac.digest(owner, response[:16], "md5")
        self._key = Cipher(algorithms.ARC4(base), None).encryptor().update(key)
        return True

    def signature(self, message, way):
        """Of the first message on its way, "server-to-client" or the other one."""
        def key_for(what):
            words = f"session key to {way} {what} key magic constant\0"
            return hashlib.md5(self._key + words.encode()).digest()

        number = bytes(4)
        checksum = hmac.digest(key_for("signing"), number + message, "md5")[:8]
        sealed = Cipher(algorithms.ARC4(key_for("sealing")), None).encryptor().update(checksum)
        return b"\1\0\0\0" + sealed + number


class GssapiHost(socketserver.ThreadingTCPServer):
    """Takes the login of joe over TLS, and everything behind it. What it offers then is `layers`, or
    signed wrongly with `forged`. `chosen` is what clients have answered to the offer."""

    def __init__(self, context, password, layers=b"\7\1\0\0", forged=False):
        super().__init__(("127.0.0.1", 0), Conversation)
        self.daemon_threads = True
        self.context, self.password = context, password
        self.layers, self.forged = layers, forged
        self.chosen = []
        self.port = self.server_address[1]

    def __enter__(self):
        threading.Thread(target=self.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.shutdown()
        self.server_close()


class Conversation(socketserver.StreamRequestHandler):
    timeout = 20

    def setup(self):
        self.request = self.server.context.wrap_socket(self.request, server_side=True)
        super().setup()

    def say(self, line):
        self.wfile.write(line.encode() + b"\r\n")

    def ask(self, token):
        self.say("334 " + base64.b64encode(token).decode())
        return base64.b64decode(self.rfile.readline())

    def logs_in(self, first):
        ntlm = Ntlm("joe", self.server.password)
        if not first.startswith(b"NTLMSSP\0\1"):
            return False
        if not ntlm.proves(self.ask(ntlm.challenge())):
            return False
        layers = self.server.layers
        signature = ntlm.signature(layers + b"!" * self.server.forged, "server-to-client")
        answer = self.ask(signature + layers)
        self.server.chosen.append(answer[16:])
        return answer[:16] == ntlm.signature(answer[16:], "client-to-server")

    def handle(self):
        self.say("220 ready")
        for line in self.rfile:
            verb, *rest = line.decode().split()
            if verb == "EHLO":
                self.say("250-hello\r\n250 AUTH GSSAPI")
            elif verb == "AUTH":
                first = base64.b64decode(rest[1]) if rest[1:] else self.ask(b"")
                self.say("235 welcome" if self.logs_in(first) else "535 no")
            elif verb == "DATA":
                self.say("354 go on")
                while self.rfile.readline() not in (b".\r\n", b""):
                    pass
                self.say("250 taken")
            else:
                self.say("250 ok")
