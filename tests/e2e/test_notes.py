"""Notes with the desk's "Notes.NotesSession", as scripts see it."""

import pathlib
import tempfile
import unittest

from scripting import ScriptTest, install_desk, prefix_with_server
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"


def setUpModule():
    NotesTest.wine = prefix_with_server()
    NotesTest.store = install_desk(NotesTest.wine)


class NotesTest(ScriptTest, unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="notes-")))
        self.store.forget_calls()
        self.addCleanup(self.store.faults)
        for account in ("ann", "bob"):
            for path, _ in self.store.folders(account):
                for message in self.store.messages(account, path):
                    self.store.remove(message)

    def test_the_face_itself(self):
        sent, received = self.folder / "sent.bin", self.folder / "received.bin"
        sent.write_bytes(bytes(range(256)))
        self.run_checks(self.wine, (SCRIPTS / "notes_face.vbs").read_text(),
                        winetest.windows_path(sent), winetest.windows_path(received))
        self.assertEqual(sent.read_bytes(), received.read_bytes())
        [mail] = self.store.messages("bob")
        self.assertEqual(("by hand", "one\r\n\r\nthree"), (mail.subject, mail.text))
        self.assertEqual([("to", "Bob Baker", "SMTP:bob@desk.example"),
                          ("to", "Ann Archer", "SMTP:ann@desk.example"),
                          ("cc", "Carl", "SMTP:carl@elsewhere.example")], mail.recipients)
        self.assertEqual("Memo", mail.fields["Form"])
        self.assertEqual(1, len(self.store.messages("ann", "Sent Items")))


if __name__ == "__main__":
    unittest.main()
