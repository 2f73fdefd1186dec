"""Simple MAPI through Wine's own mapi32.dll: without a mail program behind it, with the desk, and
through vbamap32.dll."""

import pathlib
import tempfile
import time
import unittest

from scripting import ENDED, ENDINGS, ScriptTest, install_desk, prefix_with_server
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"
WITHOUT_VBAMAP = ("deskmapi",)


class NoMailProgram(ScriptTest, unittest.TestCase):
    wine = None

    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()

    def test_a_workstation_without_a_mail_program(self):
        # Whoever answers for it logs everybody on, and supports little else.
        self.run_checks(self.wine, """
Set mail = CreateObject("QuillonInterface.Server")
Same "present", True, mail.QueryMailSystem(1) = -1
mail.mailSystem = 1
mail.loginName = "joe"
mail.Password = "secret"
mail.Login
Same "handle", True, mail.sessionHandle <> 0
On Error Resume Next
mail.LoadMessageHeaders
Raised "headers", 2026
mail.LoadMessageHeaders
RaisedText "headers", "Undetermined"
mail.UnreadCount
Raised "unread", 2026
mail.MoveMessage "Inbox"
Raised "move", 530
mail.MoveMessage "Inbox"
RaisedText "move", "Cannot move message with MAPI 0 (MAPIMoveMessage)"
mail.CopyMessage "Inbox"
RaisedText "copy", "Cannot copy message with MAPI 0"
mail.CreateFolder "Inbox"
Raised "folder", 530
Same "name", "ann <SMTP:ann>", mail.ResolveNameEx("ann")
mail.AddRecipientTo "ann@example.com"
mail.Send
Raised "send", 0
mail.Logout
Raised "logout", 0
Same "no handle", True, mail.sessionHandle = 0
""")



class MapiTest(ScriptTest, unittest.TestCase):
    faces = ("deskmapi",)

    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.store = install_desk(cls.wine, cls.faces)

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="mapi-")))
        self.store.forget_calls()
        self.addCleanup(self.store.faults)
        for message in self.store.messages("ann"):
            self.store.remove(message)

    def run_desk(self, name, *arguments):
        text = (SCRIPTS / "session.vbs").read_text() + (SCRIPTS / name).read_text()
        self.run_checks(self.wine, text, *arguments)

    def called(self, name):
        return [call for call in self.store.calls() if call.split(" ")[0] == name]

    def test_what_a_script_sees(self):
        for number in range(1, 11):
            files = [("notes.txt", b"first"), ("notes.txt", b"second")] if number == 1 else []
            self.store.add_message("ann", subject=f"subject {number}", text=f"text {number}",
                                   recipients=[("to", "Ann Archer", "SMTP:ann@desk.example")],
                                   attachments=files)
        self.store.dialog("cancel")
        self.addCleanup(self.store.dialog)
        self.run_desk("simple_mapi.vbs", winetest.windows_path(self.folder))
        received = {file.name: file.read_bytes() for file in self.folder.iterdir()}
        self.assertEqual([b"first", b"first", b"second", b"second"], sorted(received.values()))
        self.assertIn("notes.txt", received)
        sent = self.store.messages("ann", "Sent Items")[-1]
        self.assertEqual([("to", "Carl Example", "SMTP:carl@elsewhere.example"),
                          ("bcc", "Bob Baker", "SMTP:bob@desk.example")], sent.recipients)
        self.assertTrue(sent.receipt)
        self.assertEqual(1, sum("flags=9" in call.split() for call in self.called("MAPISendMail")))
        # One session, which was ended, and two that were refused.
        self.assertEqual(3, len(self.called("MAPILogon")))
        self.assertEqual(1, len(self.called("MAPILogoff")))
        # The files that the mail program has made are gone.
        left = [file for file in self.wine.drive_c.glob("users/*/Temp/**/*") if file.is_file()]
        self.assertEqual([], left)
        self.assertNotIn("secret", "\n".join(self.store.calls()))

    def test_no_more_than_a_thousand_are_counted(self):
        for number in range(1500):
            self.store.add_message("ann", subject=f"subject {number}")
        self.run_checks(self.wine, (SCRIPTS / "session.vbs").read_text() + """
NewServer 1
Same "unread", CLng(1000), mail.UnreadCount
Same "headers", CLng(0), mail.messageCount
""", timeout=180)

    def test_a_library_that_fails_badly(self):
        for trouble in ("crash", "raise"):
            self.store.faults(f"MAPIFindNext {trouble}")
            self.run_desk("broken.vbs")

    def test_other_clients_wait_their_turn(self):
        self.store.faults("MAPIResolveName pump 3000")
        script = self.folder / "meanwhile.vbs"
        text = "".join((place / name).read_text() for place, name in (
            (SCRIPTS.parent / "scripts", "check.vbs"), (SCRIPTS, "session.vbs"),
            (SCRIPTS, "meanwhile.vbs"))) + ENDINGS["vbs"]
        script.write_bytes(text.replace("\n", "\r\n").encode("ascii"))
        begun = self.folder / "begun"
        other = self.wine.start("cscript", "//nologo", script, winetest.windows_path(begun))
        while other.poll() is None and not begun.exists():
            time.sleep(0.01)
        self.run_desk("waiting.vbs")
        done = other.wait(90)
        self.assertEqual((0, [ENDED]), (done.returncode, done.output.splitlines()))


class VbaMapiTest(MapiTest):
    faces = ("deskmapi", "vbamap32")
    test_no_more_than_a_thousand_are_counted = None  # that is the back end's, and takes its time

    def test_what_a_script_sees(self):
        super().test_what_a_script_sees()
        made = {call.split(" ")[0] for call in self.store.calls()}
        self.assertLessEqual({"BMAPILogon", "BMAPIFindNext", "BMAPIReadMail", "BMAPIGetReadMail",
                              "BMAPIDeleteMail", "BMAPIResolveName", "BMAPISendMail",
                              "BMAPILogoff", "MAPISendMail", "MAPIReadMail", "MAPIFreeBuffer"}, made)


if __name__ == "__main__":
    unittest.main()
