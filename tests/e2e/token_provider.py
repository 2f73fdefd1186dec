#!/usr/bin/env python3
"""A provider of access tokens over HTTPS on 127.0.0.1 (RFC 6749, RFC 8628), which can be told to
misbehave.

    with TokenProvider(rules) as provider:
        provider.url("/token"), provider.root (its root, Issued)
        provider.forms   # what was posted: (path, {name: value})

    token_provider.py ROOT-FILE [RULES]    writes the root, prints the port and serves until its
                                           standard input ends

Left alone it asks for one more poll before it gives out `refresh-1`, and each request with a refresh
token that is still good gets another access token. `rules` is a list of objects, or their JSON; the
first whose `path` fits answers the request, once unless it has `keep`:

    path, status (200), body (an object) or text, delay (seconds), size (bytes of the text), drip
    (seconds between the bytes), location, hang_up, and rotate: the next refresh token, given out
    by a refresh, after which the old one is refused
"""

import http.server
import ipaddress
import json
import pathlib
import ssl
import sys
import tempfile
import threading
import time
import urllib.parse

from certificates import Issued, issuer


class TokenProvider:
    def __init__(self, rules=()):
        self.rules = list(rules)
        self.forms = []
        self.refresh_token = "refresh-1"
        self._polls = 0
        self._tokens = 0
        self.root = issuer(name="Root of the token provider")
        own = Issued(self.root, names=("localhost", ipaddress.ip_address("127.0.0.1")))
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        with tempfile.NamedTemporaryFile() as file:
            pathlib.Path(file.name).write_bytes(own.key_pem() + own.pem())
            context.load_cert_chain(file.name)
        provider = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def setup(self):
                # The handshake is made here, on the thread of the connection.
                self.request = context.wrap_socket(self.request, server_side=True)
                super().setup()

            def do_POST(self):
                length = int(self.headers.get("Content-Length", 0))
                form = dict(urllib.parse.parse_qsl(self.rfile.read(length).decode(),
                                                   keep_blank_values=True))
                provider.forms.append((self.path, form))
                provider._answer(self, form)

            do_GET = do_POST  # a redirection that is followed would arrive as one

            def log_message(self, *_):
                pass

        class Server(http.server.ThreadingHTTPServer):
            daemon_threads = True

            def handle_error(self, *_):
                pass  # the client has refused the certificate, or lost its patience

        self._server = Server(("127.0.0.1", 0), Handler)
        self.port = self._server.server_address[1]

    def __enter__(self):
        threading.Thread(target=self._server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._server.server_close()

    def url(self, path, host="localhost"):
        return f"https://{host}:{self.port}{path}"

    def _answer(self, request, form):
        rule = next((rule for rule in self.rules if rule["path"] == request.path), None)
        if rule is None:
            status, body = self._well_behaved(request.path, form)
            return _write(request, status, json.dumps(body).encode())
        if not rule.get("keep"):
            self.rules.remove(rule)
        time.sleep(rule.get("delay", 0))
        if rule.get("hang_up"):
            return None
        status = rule.get("status", 200)
        text = rule.get("text", "") + "x" * rule.get("size", 0)
        if "rotate" in rule:
            status, body = self._well_behaved(request.path, form)
            self.refresh_token = rule["rotate"]
            text = json.dumps({**body, "refresh_token": self.refresh_token})
        elif "body" in rule:
            text = json.dumps(rule["body"])
        return _write(request, status, text.encode(), rule.get("location"), rule.get("drip"))

    def _well_behaved(self, path, form):
        if path == "/device":
            return 200, {"device_code": "device-code-1", "user_code": "ABCD-EFGH", "interval": 1,
                         "verification_uri": self.url("/enter"), "expires_in": 600}
        if form.get("grant_type") == "urn:ietf:params:oauth:grant-type:device_code":
            self._polls += 1
            if form.get("device_code") != "device-code-1":
                return 400, {"error": "invalid_grant"}
            if self._polls == 1:
                return 400, {"error": "authorization_pending"}
            return 200, self._token(refresh_token=self.refresh_token)
        if form.get("refresh_token") != self.refresh_token:
            return 400, {"error": "invalid_grant",
                         "error_description": "This refresh token is not known (any more)."}
        return 200, self._token()

    def _token(self, **more):
        self._tokens += 1
        return {"access_token": f"access-{self._tokens}", "token_type": "Bearer",
                "expires_in": 3600, **more}


def _write(request, status, body, location=None, drip=None):
    request.send_response(status)
    request.send_header("Content-Type", "application/json")
    request.send_header("Content-Length", str(len(body)))
    if location:
        request.send_header("Location", location)
    request.end_headers()
    pieces = [body] if drip is None else [body[i:i + 1] for i in range(len(body))]
    for piece in pieces:
        request.wfile.write(piece)
        time.sleep(drip or 0)


def main():
    rules = json.loads(sys.argv[2]) if len(sys.argv) > 2 else []
    with TokenProvider(rules) as provider:
        pathlib.Path(sys.argv[1]).write_bytes(provider.root.pem())
        print(provider.port, flush=True)
        sys.stdin.read()


if __name__ == "__main__":
    main()
