"""Notes with the desk's "Notes.NotesSession", as scripts see it."""

import pathlib
import random
import tempfile
import unittest

from scripting import ScriptTest, install_desk, prefix_with_server
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"


def setUpModule():
    NotesTest.wine = NoClient.wine = prefix_with_server()


class NoClient(ScriptTest, unittest.TestCase):
    """Runs before the other class, which installs one."""

    def test_no_client(self):
        self.run_checks(self.wine, """
Set mail = CreateObject("QuillonInterface.Server")
Same "present", True, mail.QueryMailSystem(11) = 0
mail.mailSystem = 11
On Error Resume Next
mail.Login
Raised "login", 2003
mail.LoadMessageHeaders
Raised "headers", 2003
mail.ResolveName "ann"
Raised "a name", 2003
""")


class NotesTest(ScriptTest, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.store = install_desk(cls.wine)

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

    def run_desk(self, name, *arguments):
        text = (SCRIPTS / "session.vbs").read_text() + (SCRIPTS / name).read_text()
        self.run_checks(self.wine, text, *map(winetest.windows_path, arguments))

    def files_of(self, message):
        return {attachment.name: attachment.content for attachment in message.attachments}

    def test_what_a_script_sees(self):
        for folder in ("Old", "Orders", "Orders/2024"):
            self.store.add_folder("ann", folder)
        for number, day in enumerate((6, 8, 7), 1):
            files = [("notes.txt", b"\r\n\x00\xff"), ("notes.txt", b"two")] if number == 3 else []
            self.store.add_message(
                "ann", subject=f"subject {number}", text=f"text {number}",
                date=f"2024/05/0{day} 07:08", attachments=files,
                recipients=[("to", "Ann Archer", "SMTP:ann@desk.example"),
                            ("cc", "Sam Smith", "SMTP:sam.smith@elsewhere.example")])
        sources, received = self.folder / "sources", self.folder / "received"
        sources.mkdir()
        received.mkdir()
        sent = {"one.bin": random.Random(1).randbytes(100000), "two.txt": b"a\r\n.\r\n\x1a\0b"}
        for name, content in sent.items():
            (sources / name).write_bytes(content)
        self.run_desk("notes.vbs", sources, received)
        self.assertEqual([b"\r\n\x00\xff", b"two"],
                         sorted(file.read_bytes() for file in received.iterdir()))
        [mail] = self.store.messages("bob")
        self.assertEqual(sent, self.files_of(mail))
        self.assertEqual("one\r\n\r\nthree\r\n", mail.text)
        self.assertEqual([("to", "Bob Baker", "SMTP:bob@desk.example"),
                          ("cc", "Carl", "SMTP:carl@elsewhere.example")], mail.recipients)
        self.assertTrue(mail.receipt)
        asked = {"Form": "Memo", "Sign": "1", "Encrypt": "1", "Importance": "1", "ReturnReceipt": "1",
                 "DeliveryPriority": "L", "DeliveryReport": "C", "ReplyTo": "bob@desk.example"}
        self.assertEqual(asked, {name: mail.fields.get(name) for name in asked})
        [kept] = self.store.messages("ann", "Sent Items")
        self.assertIn(("bcc", "Ann Archer", "SMTP:ann@desk.example"), kept.recipients)
        self.assertEqual([sent] * 3, [self.files_of(message) for message in (
            kept, self.store.messages("ann")[-1], self.store.messages("Outside", "")[-1])])

    def test_calls_that_fail(self):
        self.store.add_message("ann", subject="subject", attachments=[("a", b"1"), ("b", b"2")])
        attached = self.folder / "one.bin"
        attached.write_bytes(b"1")
        self.run_desk("notes_faults.vbs", attached)
        self.assertEqual([], self.store.messages("bob"))
        self.assertEqual([], self.store.messages("ann", "Sent Items"))
        self.assertEqual([], self.store.messages("ann", ""))
        self.assertEqual([], list(self.store.place.glob("making/*")))


if __name__ == "__main__":
    unittest.main()
