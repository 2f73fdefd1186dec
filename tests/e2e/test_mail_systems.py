"""The same scripts through different mail systems: Internet mail, and Simple MAPI and Active Messaging
with the desk behind them."""

import pathlib
import random
import tempfile
import unittest

from scripting import MailHost, ScriptTest, install_desk, prefix_with_server
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"
INTERNET, SIMPLE_MAPI, ACTIVE_MESSAGING = 10, 1, 9


class OneScript(ScriptTest, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.store = install_desk(cls.wine)

    def test_there_and_back(self):
        """The mail system is all that the runs differ in; the files are the same, byte for byte."""
        source = random.Random(1)
        contents = {"one.bin": source.randbytes(100000), "two.txt": b"a\r\n.\r\n\x1a\0b"}
        script = (SCRIPTS / "round.vbs").read_text()
        for system in (INTERNET, SIMPLE_MAPI, ACTIVE_MESSAGING):
            with (self.subTest(system=system), tempfile.TemporaryDirectory() as scratch,
                  MailHost(login=("ann", "secret")) as host):
                sent = pathlib.Path(scratch, "sent")
                received = pathlib.Path(scratch, "received")
                sent.mkdir()
                received.mkdir()
                for name, content in contents.items():
                    (sent / name).write_bytes(content)
                office = "127.0.0.1" if system == INTERNET else ""
                self.run_checks(self.wine, script, system, winetest.windows_path(sent),
                                winetest.windows_path(received), office, host.smtp, host.pop)
                self.assertEqual(contents, {file.name: file.read_bytes()
                                            for file in received.iterdir()})
                self.assertEqual([], self.store.messages("ann"))


if __name__ == "__main__":
    unittest.main()
