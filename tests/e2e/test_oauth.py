"""A permission asked for with a code, and scripts of before that send with the tokens it gives, against
a provider and a mail host on this machine."""

import ipaddress
import pathlib
import tempfile
import unittest

import certificates
from scripting import ENDINGS, MailHost, prefix_with_server, run_script
from token_provider import TokenProvider

SECTION = "Server mail.example.com"
CLIENT_SECRET = "S3cr3t-of-the-client"
SEND = """
Set mail = CreateObject("QuillonInterface.Server")
mail.MailSystem = 10
mail.LoginDialog = False
mail.SMTPServer = "mail.example.com"
mail.InternetLogging = True
mail.NewMessage
mail.From = "joe@quillon.test"
mail.Subject = "A script of 1998"
mail.AddRecipientTo "joe@quillon.test"
On Error Resume Next
mail.Send
WScript.Echo Err.Number & " " & Err.Description
"""
REFUSED = -2147221504 + 6045  # vbObjectError, Internet mail's 45


def setUpModule():
    OAuth.wine = prefix_with_server()


class OAuth(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.provider = self.enterContext(TokenProvider())
        certificates.trust(self.wine, self.provider.root)
        folder = self.enterContext(tempfile.TemporaryDirectory())
        own = certificates.Issued(self.provider.root,
                                  names=(ipaddress.ip_address("127.0.0.1"),))
        pem = pathlib.Path(folder) / "host.pem"
        pem.write_bytes(own.key_pem() + own.pem())
        self.host = self.enterContext(MailHost(options=[
            "--smtps-port", 0, "--certificate", pem, "--key", pem, "--auth", "XOAUTH2",
            "--token", "access-2", "--require-login"]))
        self.server = self.wine.drive_c / "Quillon" / "quillon.exe"
        self.folder = self.server.parent
        self.ini = self.folder / "quillon.ini"

    def tearDown(self):
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))

    def configure(self, **more):
        keys = {"SMTPHost": "127.0.0.1", "SMTPPort": self.host.smtps, "SMTPSecurity": "tls",
                "SMTPUser": "joe", "TokenURL": self.provider.url("/token"), "Scope": "mail",
                "DeviceURL": self.provider.url("/device"), "ClientId": "quillon",
                "ClientSecret": CLIENT_SECRET, **more}
        lines = [f"[{SECTION}]", *(f"{key}={value}" for key, value in keys.items()), ""]
        self.ini.write_bytes("\r\n".join(lines).encode())

    def authorize(self):
        return self.wine.run(self.server, "/Authorize", "mail.example.com", timeout=60)

    def send(self):
        """What the script says, after the process of the one before has ended."""
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
        ended, lines = run_script(self.wine, SEND + ENDINGS["vbs"])
        self.assertTrue(ended, lines)
        return [line for line in lines if not line.startswith("GnuTLS error")]

    def refreshes(self):
        return [form["refresh_token"] for _, form in self.provider.forms
                if form.get("grant_type") == "refresh_token"]

    def test_permission_once_then_scripts_send(self):
        self.configure()
        done = self.authorize()
        said = done.output
        self.assertEqual(0, done.returncode, said)
        self.assertIn(self.provider.url("/enter"), said)
        self.assertIn("ABCD-EFGH", said)
        self.assertIn("The permission has been given and is stored.", said)
        self.assertEqual({"client_id": "quillon", "client_secret": CLIENT_SECRET, "scope": "mail"},
                         self.provider.forms[0][1])
        self.assertEqual(["0 "], self.send())
        self.assertEqual(1, len(self.host.received()))
        # Another process, another token: the host knows only the one before.
        self.provider.rules.append({"path": "/token", "body": {"access_token": "access-x"}})
        [refused] = self.send()
        self.assertIn("refused the login", refused)
        self.provider.rules.append({"path": "/token", "body": {
            "access_token": "access-2", "refresh_token": "refresh-2", "expires_in": 3600}})
        self.provider.refresh_token = "refresh-2"
        self.assertEqual(["0 "], self.send())
        self.provider.rules.append({"path": "/token", "body": {"access_token": "access-2"}})
        self.assertEqual(["0 "], self.send())
        self.assertEqual(["refresh-1"] * 3 + ["refresh-2"], self.refreshes())
        said += refused + "".join(file.read_text(errors="replace")
                                  for file in self.folder.iterdir() if file.suffix == ".TXT")
        for secret in ("refresh-1", "refresh-2", "access-", "device-code-1", CLIENT_SECRET):
            self.assertNotIn(secret, said)
        self.assertNotIn("refresh-", self.ini.read_text())

    def test_a_refusal_has_the_words_of_the_provider(self):
        self.configure(RefreshToken="refresh-of-old")
        [said] = self.send()
        self.assertEqual(f"{REFUSED} The access token could not be had. (The token server "
                         f"localhost:{self.provider.port} refused: invalid_grant: This refresh "
                         "token is not known (any more). quillon.exe /Authorize asks the provider "
                         "for its permission anew.)", said)
        self.provider.rules.append({"path": "/token", "status": 400, "body": {
            "error": "access_denied", "error_description": f"Not for {CLIENT_SECRET}"}})
        done = self.authorize()
        self.assertEqual(1, done.returncode)
        self.assertIn("The permission was refused.", done.output)
        self.assertNotIn(CLIENT_SECRET, done.output)
        self.assertIn("RefreshToken=refresh-of-old", self.ini.read_text())

    def test_a_provider_that_nobody_vouches_for_hears_nothing(self):
        stranger = self.enterContext(TokenProvider())
        self.configure(TokenURL=stranger.url("/token"), RefreshToken="refresh-1")
        [said] = self.send()
        self.assertIn("its certificate is not trusted", said)
        self.assertEqual([], stranger.forms)


if __name__ == "__main__":
    unittest.main()
