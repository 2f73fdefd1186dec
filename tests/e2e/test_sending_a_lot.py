"""The configuration of Exim in docs/sending-a-lot.md takes a script's messages, keeps those that the
provider cannot take yet, and hands them on over TLS with the login."""

import grp
import ipaddress
import os
import pathlib
import pwd
import re
import shutil
import smtplib
import subprocess
import tempfile
import time
import unittest

import realservers
from certificates import Issued, issuer
from scripting import ENDINGS, MailHost, prefix_with_server, run_script
import winetest

PAGE = winetest.TOP / "docs" / "sending-a-lot.md"
CONFIGURATION = re.search(r"```exim\n(.*?)```", PAGE.read_text(), re.S)[1]
PATIENCE = 20
# What the place of the test needs: a spool, a user, and a provider on this machine.
PLACE = """
spool_directory = {folder}/spool
log_file_path = {folder}/%slog
pid_file_path = {folder}/pid
exim_user = {user}
exim_group = {group}
keep_environment =
"""
SCRIPT = """
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = 10
mail.SMTPServer = "127.0.0.1" : mail.SMTPPort = {port}
mail.from = "joe@example.com"
mail.AddRecipientTo "ann@example.com"
For number = 1 To 3
  mail.subject = "Message " & number
  mail.Send
Next
"""


@unittest.skipIf(realservers.missing(), f"{realservers.missing()} is not installed")
class Relay(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="relay-")))
        self.folder.chmod(0o755)
        (self.folder / "spool").mkdir()
        root = issuer()
        own = Issued(root, names=("localhost", ipaddress.ip_address("127.0.0.1")))
        for name, content in (("root", root.pem()), ("own", own.pem()), ("key", own.key_pem())):
            (self.folder / name).write_bytes(content)
        # Exim does not run as root, and cannot change its user without being root.
        owner = pwd.getpwnam("mail") if os.getuid() == 0 else pwd.getpwuid(os.getuid())
        self.user, self.group = owner.pw_name, grp.getgrgid(owner.pw_gid).gr_name
        for path in (self.folder, self.folder / "spool"):
            shutil.chown(path, self.user, self.group)

    def exim(self, *options):
        return ["/usr/sbin/exim4", "-C", str(self.folder / "conf"), *options]

    def start(self, provider):
        port = realservers.free_port()
        text = PLACE.format(folder=self.folder, user=self.user, group=self.group) + CONFIGURATION
        for documented, here in (("192.0.2.5", "127.0.0.1"), ("192.0.2.0/24", "127.0.0.1"),
                                 ("smtp_ports = 25", f"smtp_ports = {port}"),
                                 # Exim does not send to its own machine unless it is told to.
                                 ("smtp.provider.example::587",
                                  f"localhost::{provider}\n  self = send"),
                                 ("= system", f"= {self.folder}/root")):
            self.assertIn(documented, text)
            text = text.replace(documented, here)
        (self.folder / "conf").write_text(text)
        daemon = subprocess.Popen(self.exim("-bdf"), stderr=subprocess.DEVNULL)
        self.addCleanup(daemon.wait)
        self.addCleanup(daemon.terminate)
        self.wait(lambda: smtplib.SMTP("127.0.0.1", port, timeout=PATIENCE).quit())
        return port

    def wait(self, probe):
        deadline = time.monotonic() + PATIENCE
        while True:
            try:
                found = probe()
                if found:
                    return found
            except OSError:
                pass
            log = "\n".join(file.read_text() for file in self.folder.glob("*log"))
            self.assertLess(time.monotonic(), deadline, log)
            time.sleep(0.05)

    def test_messages_wait_for_the_provider(self):
        wine = prefix_with_server()
        provider = realservers.free_port()
        port = self.start(provider)
        ended, said = run_script(wine, SCRIPT.format(port=port) + ENDINGS["vbs"])
        self.assertTrue(ended, said)
        options = ("--starttls", "--require-tls", "--require-login", "--auth", "PLAIN",
                   "--smtp-port", provider, "--certificate", self.folder / "own",
                   "--key", self.folder / "key")
        with MailHost(login=("joe@example.com", "secret"), options=options) as host:
            self.assertEqual([], host.received())
            subprocess.run(self.exim("-qff"), check=True, stderr=subprocess.DEVNULL)
            self.wait(lambda: len(host.received()) == 3)


if __name__ == "__main__":
    unittest.main()
