"""Active Messaging with the desk's "MAPI.Session", as scripts see it."""

import pathlib
import tempfile
import unittest

from scripting import ScriptTest, install_desk, prefix_with_server
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"


def setUpModule():
    ActiveMessaging.wine = prefix_with_server()
    ActiveMessaging.store = install_desk(ActiveMessaging.wine)


class ActiveMessaging(ScriptTest, unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="am-")))
        self.store.forget_calls()
        self.addCleanup(self.store.faults)
        for message in self.store.messages("ann"):
            self.store.remove(message)

    def run_desk(self, name, *arguments):
        text = (SCRIPTS / "session.vbs").read_text() + (SCRIPTS / name).read_text()
        self.run_checks(self.wine, text, *arguments)

    def test_what_a_script_sees(self):
        for number in range(1, 6):
            files = [("notes.txt", b"\r\n\x00\xff")] if number == 1 else []
            self.store.add_message("ann", subject=f"subject {number}", text=f"text {number}",
                                   recipients=[("to", "Ann Archer", "SMTP:ann@desk.example")],
                                   attachments=files)
        sources, received = self.folder / "sources", self.folder / "received"
        sources.mkdir()
        received.mkdir()
        (sources / "one.bin").write_bytes(bytes(range(256)))
        self.run_desk("active_messaging.vbs", winetest.windows_path(sources),
                      winetest.windows_path(received), "5")
        self.assertTrue(all(file.read_bytes() == b"\r\n\x00\xff" for file in received.iterdir()))
        [mail] = [m for m in self.store.messages("bob") if m.subject == "options"]
        self.assertEqual([("to", "Bob Baker"), ("cc", "Carl")], [r[:2] for r in mail.recipients])
        self.assertEqual("{\\rtf1 rich}", mail.rich_text)
        self.assertEqual([("one.bin", bytes(range(256)))],
                         [(a.name, a.content) for a in mail.attachments])
        self.assertTrue(mail.receipt)
        self.assertEqual([], self.store.messages("ann", "Outbox"))
        self.assertEqual(["subject 1"], [m.subject for m in self.store.messages("ann", "Archive")])
        self.assertNotIn("secret", "\n".join(self.store.calls()))


if __name__ == "__main__":
    unittest.main()
