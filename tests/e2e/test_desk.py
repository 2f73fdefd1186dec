"""The stand-ins for other mail systems, used by programs that owe them nothing: mapi32.dll hands on
to the desk, and what one face sends another reads. And ./dev desk, which shows all that."""

import pathlib
import random
import subprocess
import sys
import tempfile
import unittest

from scripting import install_desk
import desk
import winetest

CLIENT = winetest.CLIENTS / "MailFaces.exe"
WORDS = {"to": 1, "cc": 2, "bcc": 3}


class Desk(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(winetest.WinePrefix())

    def setUp(self):
        self.store = install_desk(self.wine)
        self.store.forget_calls()
        self.store.faults()
        self.addCleanup(self.store.faults)
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="desk-")))

    def client(self, *words, status=0, **how):
        done = self.wine.run(CLIENT, *words, **how)
        self.assertEqual(status, done.returncode, done.output)
        return done.output

    def number(self, call):
        return int(self.client("number", call))

    def files(self):
        source = random.Random(5)
        contents = {"one.bin": source.randbytes(70000), "empty.txt": b"", "two.txt": b"a\r\n\x1a\0b"}
        for name, content in contents.items():
            (self.folder / name).write_bytes(content)
        return contents

    def exchange(self, face):
        """ann sends three files to bob, who reads and deletes them; what is left of it."""
        contents = self.files()
        before = len(self.store.messages("ann", "Sent Items"))
        self.client(face, *(self.folder / name for name in contents))
        [kept] = self.store.messages("ann", "Sent Items")[before:]
        self.assertEqual("Price 5\u20ac", kept.subject)
        self.assertEqual("First line\r\n\r\nsecond \u00e9", kept.text)
        self.assertEqual(["shown.bin", "empty.txt", "two.txt"],
                         [file.name for file in kept.attachments])
        self.assertEqual(list(contents.values()), [file.content for file in kept.attachments])
        self.assertEqual([("to", "Bob Baker", "SMTP:bob@desk.example"),
                          ("cc", kept.recipients[1][1], "SMTP:stranger@outside.example")],
                         kept.recipients)
        self.assertTrue(kept.receipt)
        self.assertEqual([], self.store.messages("bob"))
        self.assertFalse(self.store.messages("bob", "Deleted Items")[-1].unread)
        self.assertEqual(kept.subject, self.store.messages("Outside", "")[-1].subject)
        [last] = [call for call in self.store.calls() if call.startswith("MAPIFreeBuffer")][-1:]
        self.assertEqual("MAPIFreeBuffer left=0", last)
        self.assertNotIn("secret", "\n".join(self.store.calls()))
        self.assertEqual([], list((self.store.place / "making").iterdir()))

    def test_a_program_of_mapi32(self):
        self.exchange("mapi")

    def test_a_program_of_vbamap32(self):
        self.exchange("vba")
        made = [call.split()[0] for call in self.store.calls()]
        for name in ("BMAPILogon", "BMAPISendMail", "BMAPIGetReadMail"):
            self.assertIn(name, made)

    def test_texts_beyond_the_code_page(self):
        self.client("wide", "plain")
        sent = self.store.messages("ann", "Sent Items")[-1]
        self.assertEqual("\u4e2d\u6587", sent.text)
        self.assertEqual(("bcc", "\u0141ukasz", "SMTP:l@out.example"), sent.recipients[1])
        received = self.store.messages("bob")[-1]
        self.assertEqual(["to"], [kind for kind, *_ in received.recipients])

    def test_every_call_refuses_in_its_way_and_fails_as_told(self):
        refusals = {"MAPILogon": 3, "MAPILogoff": 19, "MAPISendMail": 19, "MAPIFindNext": 19,
                    "MAPIReadMail": 19, "MAPISaveMail": 19, "MAPIDeleteMail": 19,
                    "MAPIResolveName": 19, "MAPIDetails": 26}
        self.assertEqual(refusals, {call: self.number(call) for call in refusals})
        self.store.faults("\n".join(f"{call} {1000 + index}"
                                    for index, call in enumerate(refusals)))
        self.assertEqual([1000 + index for index in range(len(refusals))],
                         [self.number(call) for call in refusals])

    def test_trouble_of_other_kinds(self):
        self.store.faults("MAPILogoff pump 200")
        self.assertEqual(19, self.number("MAPILogoff"))
        self.store.faults("MAPILogoff no such word")
        self.assertEqual(2, self.number("MAPILogoff"))
        self.store.faults("MAPILogoff crash")
        self.assertNotEqual(0, self.wine.run(CLIENT, "number", "MAPILogoff").returncode)

    def test_what_vim_refuses(self):
        install_desk(self.wine, ("vim32",))
        self.addCleanup((desk.system_directory(self.wine.drive_c) / "vim32.dll").unlink)
        for number in range(10):
            self.store.add_message("ann", subject=f"subject {number}")
        done = self.wine.run(winetest.CLIENTS / "VimFace.exe")
        self.assertEqual((0, ""), (done.returncode, done.output))
        self.assertEqual("VIMTerminate sessions=0 containers=1 messages=0 drafts=0 books=0",
                         [call for call in self.store.calls() if "VIMTerminate" in call][0])

    def test_what_is_put_into_the_store_is_shown(self):
        place = str(self.store.place)
        name = self.store.add_message(
            "bob", "Inbox", "a\tsubject", "body\n", recipients=[("to", "Bob Baker", "")],
            attachments=[("note.txt", b"12345")])

        def show(*words):
            done = subprocess.run([sys.executable, str(winetest.TOP / "tools" / "desk.py"), *words],
                                  stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                  env={"QUILLON_CACHE": "/nowhere", "PATH": ""})
            return done.returncode, done.stdout
        status, shown = show(place)
        self.assertEqual(0, status)
        self.assertRegex(shown, r"bob  Bob Baker <SMTP:bob@desk.example>\n  Deleted Items  \d+\n"
                                r"  Inbox  \d+\n")
        status, shown = show(place, "bob/Inbox")
        self.assertRegex(shown, r"\*\+ 2024/05/06 07:08  Carl Example +a\tsubject")
        status, shown = show(place, name[-8:])
        for line in ("Subject: a\tsubject", "To: Bob Baker", "File: note.txt, 5 bytes", "body"):
            self.assertIn(line + "\n", shown)
        self.assertEqual(1, show(place, "bob/Nowhere")[0])
        self.assertEqual(1, show("/nowhere")[0])


if __name__ == "__main__":
    unittest.main()
