"""VIM with the desk's vim32.dll, as scripts see it."""

import pathlib
import random
import shutil
import tempfile
import unittest

from scripting import ScriptTest, install_desk, prefix_with_server
import desk
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"
ALL_CLOSED = "VIMTerminate sessions=0 containers=0 messages=0 drafts=0 books=0"

TEXTS = {
    1: "Undetermined", 2: "Undetermined", 3: "Missing login parameters", 4: "Attachment not found",
    5: "Bad parameter", 6: "Buffer is too small", 7: "Conversion not supported",
    8: "Insufficient memory", 9: "Invalid VIM configuration", 10: "Invalid object",
    11: "Login failed", 12: "Invalid selector", 13: "Invalid signature", 14: "Undetermined",
    15: "Name not found", 16: "VIM operation not supported", 17: "No common certificates",
    18: "No default", 19: "No match", 20: "No signature", 21: "No such attribute",
    22: "Open failure", 23: "Password required", 24: "Read failure",
    25: "Unsupported message type", 26: "Unsupported VIM version", 27: "VIM write failure",
    28: "Undetermined", 256: "No recipients", 257: "Recipient not found",
    258: "Recipient not unique", 259: "Message container is corrupted", 260: "Invalid message",
    261: "User cancelled", 500: "Not supported in 32-bit version of Quillon",
    522: "The user aborted the operation."}

# What a script does, the call that fails then, and what the script hears.
LOGON = "Failed to Logon to mail system (VIMOpenSession)"
LIST = "Cannot get message headers (VIMEnumerateMessages)"
FAILURES = [
    ("Login", "VIMInitialize", "Error initializing VIM (VIMInitialize)"),
    ("Login", "VIMGetDefaultSessionInfo", LOGON),
    ("Login", "VIMQueryCapability", LOGON),
    ("Login", "VIMOpenSession", LOGON),
    ("List", "VIMOpenMessageContainer",
     "Failed to open message container (VIMOpenMessageContainer)"),
    ("List", "VIMEnumerateMessages", LIST),
    ("List", "VIMOpenMessage", LIST),
    ("List", "VIMEnumerateMessageItems", LIST),
    ("List", "VIMGetMessageHeader", LIST),
    ("List", "VIMCloseMessage", LIST),
    ("Load", "VIMOpenMessage", "Cannot open message (VIMOpenMessages)"),
    ("Load", "VIMEnumerateMessageItems:62",
     "Cannot enumerate note part message items (VIMEnumerateMessageItems)"),
    ("Load", "VIMGetMessageItem:62", "Cannot get note part message item (VIMGetMessageItem)"),
    ("Load", "VIMEnumerateMessageItems:6",
     "Cannot enumerate attachments (VIMEnumerateMessageItems)"),
    ("Load", "VIMGetMessageItem:6", "Cannot get file attachhment (VIMGetMessageItem)"),
    *(("Load", f"VIMEnumerateMessageRecipients:{kind}",
       f"Cannot enumerate message recipients {name} (VIMEnumerateMessageRecipients)")
      for kind, name in ((97, "TO"), (10, "CC"), (9, "BCC"))),
    ("Load", "VIMMarkMessageAsRead", "Failure marking message as read (VIMMarkMessageAsRead)"),
    ("Load", "VIMCloseMessage", "Failure closing message (VIMCloseMessage)"),
    ("Delete", "VIMRemoveMessage", "Cannot delete message (VIMRemoveMessage)"),
    ("Move", "VIMSetMessageCategory", "Cannot move message (VIMSetMessageCategory)"),
    ("Move", "VIMRemoveMessage", "Cannot move message (VIMSetMessageCategory)"),
    ("Send", "VIMCreateMessage", "Error creating message (VIMCreateMessage)"),
    ("Send", "VIMSetMessageRecipient", "Bad address=bob (VIMSetMessageRecipient)"),
    ("Send", "VIMSetMessageHeader:91", "Error sending mail (VIMSetMessageHeader - Subject)"),
    *(("Send", f"VIMSetMessageHeader:{selector}",
       "Error sending mail (VIMSetMessageHeader - Certify)") for selector in (81, 21, 60, 79)),
    ("Send", "VIMSetMessageItem:62", "Error sending mail (VIMSetMessageItem - Message)"),
    ("Send", "VIMSetMessageItem:6", "Error sending mail (VIMSetMessageItem - Attachment one.bin)"),
    ("Send", "VIMSendMessage", "Error sending mail (VIMSendMail)"),
    *(("Name", call, TEXTS[27]) for call in
      ("VIMEnumerateAddressBooks", "VIMOpenAddressBook", "VIMMatchAddressBook",
       "VIMGetABEntryAttributes")),
    ("Logout", "VIMCloseMessageContainer", TEXTS[27]),
    ("Logout", "VIMCloseSession", TEXTS[27]),
]


class VimTest(ScriptTest, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.store = install_desk(cls.wine, ("deskmapi", "vim32"))

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="vim-")))
        (self.folder / "received").mkdir()
        self.store.forget_calls()
        self.addCleanup(self.store.faults)
        for folder in ("Inbox", "Sent Items"):
            for message in self.store.messages("ann", folder) + self.store.messages("bob", folder):
                self.store.remove(message)
        self.addCleanup(lambda: [self.store.remove(message) for message in self.archived()])

    def run_vim(self, text, *arguments):
        self.run_checks(self.wine, (SCRIPTS / "session.vbs").read_text() + text, *arguments)

    def archived(self):
        """What is in the folder that some scripts move messages to."""
        folders = dict(self.store.folders("ann"))
        return self.store.messages("ann", "Archive") if "Archive" in folders else []

    def assert_all_closed(self, end=ALL_CLOSED):
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
        ends = [call for call in self.store.calls() if call.startswith("VIMTerminate")]
        self.assertEqual({end}, set(ends))

    def test_what_a_script_sees(self):
        source = random.Random(7)
        sent = {"one.bin": source.randbytes(100000), "two.txt": b"a\r\n.\r\n\x1a\0b"}
        for name, content in sent.items():
            (self.folder / name).write_bytes(content)
        text = "".join(f"line {number} \u00e9\u20ac\r\n" for number in range(4000))
        files = [(f"file {number}.dat", source.randbytes(number * 1000)) for number in range(10)]
        self.store.add_message("ann", subject="subject 1 " + "x" * 300, text=text, attachments=files,
                               recipients=[("to", "Ann Archer", "SMTP:ann@desk.example"),
                                           ("cc", "Bob Baker", "SMTP:bob@desk.example"),
                                           ("bcc", "Carl Example", "SMTP:carl@elsewhere.example")])
        for number in range(2, 11):
            self.store.add_message("ann", subject=f"subject {number}", unread=number < 10)
        received = self.folder / "received"
        self.run_vim((SCRIPTS / "vim.vbs").read_text(), winetest.windows_path(self.folder),
                     winetest.windows_path(received), len(text))
        contents = {file.name: file.read_bytes() for file in received.iterdir()}
        self.assertEqual({**dict(files), **sent},
                         {name: contents.get(name) for name in (*dict(files), *sent)})
        [log] = self.store.messages("ann", "Sent Items")[:1]
        self.assertEqual(("there and back \u20ac", text), (log.subject, log.text))
        self.assertEqual([("to", "Ann Archer"), ("cc", "Bob Baker"), ("bcc", "Carl Example")],
                         [recipient[:2] for recipient in log.recipients])
        # A copy is saved, delivery is not reported, failure is, a receipt is asked for; urgent.
        self.assertEqual([":91 ", ":81 1", ":21 0", ":60 1", ":79 1", ":71 2"],
                         [call.partition(" ")[2] for call in self.store.calls()
                          if call.startswith("VIMSetMessageHeader")][:6])
        self.assertTrue(log.receipt)
        self.assertEqual(["there and back \u20ac", "news"],
                         [message.subject for message in self.store.messages("bob")])
        self.assertEqual([], self.archived())
        self.assertNotIn("secret", "\n".join(self.store.calls()))
        self.assert_all_closed()

    def test_every_status(self):
        checks = "".join(f'Failing "VIMQueryUnreadMailCount {status}", "Count", {4000 + status}, '
                         f'"{text}"\n' for status, text in TEXTS.items())
        checks += "".join(f'Decoded {4000 + status}, "{text}"\n' for status, text in TEXTS.items()
                          if text != "Undetermined")
        # Out of range, and a text that is the step's own.
        checks += ('Failing "VIMQueryUnreadMailCount 200000", "Count", 4000, "Undetermined"\n'
                   f'Failing "VIMEnumerateMessages 200000", "List", 4000, "{LIST}"\n'
                   f'Failing "VIMEnumerateMessages 14", "List", 4014, "{LIST}"\n')
        self.run_failures(checks)

    def test_every_call_may_fail(self):
        self.run_failures("".join(
            f'Failing "{call} 27", "{action}", 4027, "{text}"\n' for action, call, text in FAILURES),
            # What was not closed when it was asked for.
            ALL_CLOSED.replace("containers=0 messages=0", "containers=1 messages=2"))

    def test_a_library_that_fails_badly(self):
        self.run_failures("".join(
            f'Failing "{call} {trouble}", "{action}", 4002, "{text}"\n'
            for trouble in ("crash", "raise") for action, call, text in FAILURES
            if call in ("VIMEnumerateMessages", "VIMRemoveMessage")))

    def test_the_maker_that_63_stands_for(self):
        self.store.faults("VimProduct 63\nVIMSendMessage 24")
        (self.folder / "one.bin").write_bytes(b"one")
        self.run_vim("""
NewServer 2
mail.AddRecipientTo "bob"
On Error Resume Next
mail.Send
Raised "send", 4024
mail.Send
RaisedText "send", "Error sending mail (SMIAddressAndSend)"
mail.AddAttachment WScript.Arguments(0)
mail.Send
RaisedText "send with a file", "Error sending mail (SMISendDocuments)"
""", winetest.windows_path(self.folder / "one.bin"))
        self.assertEqual([], self.store.messages("bob"))
        self.assert_all_closed()

    def test_who_is_logged_in(self):
        """With a session of the mail program to share, and without."""
        self.run_vim((SCRIPTS / "vim_failures.vbs").read_text() + f"""
LoggingIn "", "", "", "", "0"
LoggingIn "", "C:\\no such place", "ann", "secret", "546 Post office directory does not exist."
LoggingIn "NoDefaultSession", "C:\\windows", "bob", "secret", "0"
LoggingIn "NoDefaultSession", "C:\\windows", "bob", "wrong", "4011 {LOGON}"
LoggingIn "NoDefaultSession", "", "bob", "secret", "4003 {LOGON}"
LoggingIn "NoDefaultSession", "C:\\windows", "bob", "", "544 Insufficient login information."
""", winetest.windows_path(self.folder))
        self.assertEqual(["shared", "shared", "path=C:\\windows name=bob",
                          "shared", "path=C:\\windows name=bob", "shared", "path= name=bob",
                          "shared"],
                         [call.partition(" ")[2] for call in self.store.calls()
                          if call.startswith("VIMOpenSession")])
        self.assertNotIn("secret", "\n".join(self.store.calls()))
        self.assert_all_closed()

    def test_names_beyond_the_code_page(self):
        """The library gets other names of the same files."""
        sent, received = self.folder / "\u6587.bin", self.folder / "\u4e2d"
        sent.write_bytes(b"one")
        received.mkdir()
        self.run_checks(self.wine, r"""
var folder = WScript.Arguments(0) + "\\";
mail = new ActiveXObject("QuillonInterface.Server");
mail.mailSystem = 2;
mail.NewMessage();
mail.AddRecipientTo("Ann Archer");
mail.subject = "\u6587 caf\u00e9";
mail.AddAttachment(folder + "\u6587.bin");
mail.Send();
mail.AttachmentDirectory = folder + "\u4e2d";
mail.LoadMessageHeaders();
mail.LoadMessage();
same("subject", "? caf\u00e9", mail.subject);
same("name", "?.bin", mail.GetMessageItemString(7));
""", winetest.windows_path(self.folder), engine="js")
        self.assertEqual([b"one"], [file.read_bytes() for file in received.iterdir()])

    def test_a_session_of_another_server(self):
        self.store.add_message("ann", subject="one")
        self.run_vim("""
Dim other
NewServer 2
mail.Login
Set other = CreateObject("QuillonInterface.Server")
other.mailSystem = 2
other.SessionHandleEx = mail.sessionHandle
other.LoadMessageHeaders
Same "listed", CLng(1), other.messageCount
other.Logout
Same "forgotten", True, other.sessionHandle = 0
Set other = Nothing
mail.LoadMessageHeaders
Same "still good", CLng(1), mail.messageCount
mail.SessionHandleEx = 4711
On Error Resume Next
mail.LoadMessageHeaders
Raised "nobody's", 4010
""")
        calls = [call.split(" ")[0] for call in self.store.calls()]
        self.assertEqual(1, calls.count("VIMOpenSession"))
        self.assert_all_closed()

    def test_a_library_beside_the_mail_program(self):
        """Its directory is the current one while it starts, and not a moment longer."""
        library = desk.system_directory(self.wine.drive_c) / "vim32.dll"
        profile = self.wine.drive_c / "windows" / "win.ini"
        before = profile.read_bytes() if profile.exists() else b""
        place = self.wine.drive_c / "ccmail"
        place.mkdir()
        library.rename(place / library.name)
        self.addCleanup(shutil.rmtree, place)
        self.addCleanup((place / library.name).rename, library)
        self.addCleanup(profile.write_bytes, before)
        (place / "only here.txt").write_bytes(b"")
        for section, key, faults in (("LotusMail", "Program", ""),
                                     ("cc:Mail", "ProgramPath", "VIMInitialize 9")):
            profile.write_bytes(f"[{section}]\r\n{key}=C:\\ccmail\\mail.exe\r\n".encode())
            self.store.faults(faults)
            self.store.forget_calls()
            self.run_vim("""
NewServer 2
Same "present", True, mail.QueryMailSystem(2) = -1
On Error Resume Next
mail.Login
Raised "login", CLng(WScript.Arguments(0))
mail.AddAttachment "only here.txt"
Raised "not the current directory", 521
""", 4009 if faults else 0)
            self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
            self.assertEqual("VIMInitialize in=C:\\ccmail", self.store.calls()[0])

    def run_failures(self, checks, end=ALL_CLOSED):
        (self.folder / "one.bin").write_bytes(b"one")
        self.store.add_message("ann", subject="kept", text="text", attachments=[("file", b"1")])
        self.run_vim((SCRIPTS / "vim_failures.vbs").read_text() + checks,
                     winetest.windows_path(self.folder))
        self.assertEqual(["kept"], [message.subject for message in self.store.messages("ann")])
        self.assertEqual([], self.store.messages("bob") + self.archived())
        self.assert_all_closed(end)


if __name__ == "__main__":
    unittest.main()
