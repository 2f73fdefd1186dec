"""Active Messaging with the desk's "MAPI.Session", as scripts see it."""

import pathlib
import tempfile
import unittest

from scripting import ScriptTest, install_desk, prefix_with_server
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"


class DeskTest(ScriptTest):
    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.store = install_desk(cls.wine)

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="am-")))
        self.store.forget_calls()
        self.addCleanup(self.store.faults)
        for message in self.store.messages("ann") + self.store.messages("bob"):
            self.store.remove(message)

    def run_text(self, text, *arguments):
        self.run_checks(self.wine, (SCRIPTS / "session.vbs").read_text() + text, *arguments)


class ActiveMessaging(DeskTest, unittest.TestCase):
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
        self.run_text((SCRIPTS / "active_messaging.vbs").read_text(),
                      winetest.windows_path(sources), winetest.windows_path(received), "5")
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

    def test_each_step_of_a_send_may_fail(self):
        script = """
NewServer 9
mail.AddRecipientTo "Bob Baker <SMTP:bob@desk.example>"
mail.AddRecipientCc "eve <SMTP:eve@outside.example>"
mail.AddAttachment WScript.ScriptFullName
mail.Message = "{\\rtf1 rich}"
On Error Resume Next
mail.Send
Raised "send", CLng(WScript.Arguments(0))
"""
        for fault, code in (("Session.Logon 0x80040111", 8003), ("Messages.Add 0x8007000E", 8005),
                            ("Recipients.Add nothing", 8025), ("Recipients.Add 0x80070005", 8025),
                            ("Attachments.Add nothing", 8013), ("Message.Update 0x80040107", None),
                            ("Message.Send 0x80040607", 8132), ("Message.Send crash", None)):
            with self.subTest(fault=fault):
                before = len(self.store.messages("bob"))
                self.store.faults(fault)
                if code is None:
                    self.run_text(script.replace('Raised "send", CLng(WScript.Arguments(0))',
                                                 'Same "failed", True, Err.Number <> 0'))
                else:
                    self.run_text(script, code)
                self.store.faults()
                self.assertEqual([], self.store.messages("ann", "Outbox"))
                self.assertEqual(before, len(self.store.messages("bob")))
        # What cannot be stored as rich text goes all the same.
        self.store.faults("writertf 5")
        self.run_text(script, 0)
        self.assertEqual("{\\rtf1 rich}", self.store.messages("bob")[-1].text)
        self.assertEqual("", self.store.messages("bob")[-1].rich_text)


class OldLibrary(DeskTest, unittest.TestCase):
    """In a prefix of its own, because a process finds out once what there is."""

    def test_an_old_library_is_none(self):
        self.store.faults("Version 1.0")
        self.store.add_message("ann", subject="one")
        self.run_text("""
Same "present", True, CreateObject("QuillonInterface.Server").QueryMailSystem(9) = 0
NewServer 9
mail.LoadMessageHeaders
Same "through Simple MAPI", CLng(1), mail.messageCount
On Error Resume Next
mail.CreateFolder "Orders"
Raised "folders", 530
mail.ResolveName "nobody at all"
Raised "its numbers are those of mail system 9", 8014
""")
        self.assertIn("MAPIFindNext", {call.split(" ")[0] for call in self.store.calls()})


if __name__ == "__main__":
    unittest.main()
