"""The client's side of SCRAM (RFC 5802), for tests that need a second one."""

import base64
import hashlib
import hmac
import secrets


class Scram:
    """`binding` is the type and the data of a channel binding; None does without."""

    def __init__(self, algorithm, name, password, binding=None, flag="n"):
        self._algorithm = algorithm
        self._password = password.encode()
        self._header = f"p={binding[0]},," if binding else f"{flag},,"
        self._binding = binding[1] if binding else b""
        name = name.replace("=", "=3D").replace(",", "=2C")
        self._bare = f"n={name},r={secrets.token_hex(12)}"

    def first(self):
        return (self._header + self._bare).encode()

    def _sign(self, key, text):
        return hmac.digest(key, text.encode(), self._algorithm)

    def last(self, challenge):
        """The answer to the server's first message; remembers what its second must be."""
        fields = dict(field.split("=", 1) for field in challenge.decode().split(","))
        assert fields["r"].startswith(self._bare.split("r=")[1]), challenge
        salted = hashlib.pbkdf2_hmac(self._algorithm, self._password,
                                     base64.b64decode(fields["s"]), int(fields["i"]))
        bound = base64.b64encode(self._header.encode() + self._binding).decode()
        unproved = f"c={bound},r={fields['r']}"
        transcript = f"{self._bare},{challenge.decode()},{unproved}"
        key = self._sign(salted, "Client Key")
        signature = self._sign(hashlib.new(self._algorithm, key).digest(), transcript)
        proof = bytes(x ^ y for x, y in zip(key, signature))
        self.verdict = b"v=" + base64.b64encode(
            self._sign(self._sign(salted, "Server Key"), transcript))
        return f"{unproved},p={base64.b64encode(proof).decode()}".encode()
