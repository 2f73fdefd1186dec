"""MHS through the registered server, with a reader, a writer and a mover of messages that share no
code with it."""

import datetime
import pathlib
import random
import tempfile
import unittest

from scripting import ScriptTest, literal, prefix_with_server, run_script, ENDINGS
import smf
import winetest

COUNT = 200
WORDS = "figures report of and the to for-all lunch? a b c 1993 100% x=y naive".split()
ACCENTED = "\xe4\xf6\xfc\xdf\xe9\xe8\xe0\xe7\xf1\xa3\xa5\xbd\xb0\xb5\xf7\xbf"  # of both code pages


def setUpModule():
    global wine
    wine = prefix_with_server()


class Maker:
    """Messages that differ in everything that there is."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def words(self, most):
        words = self.random.choices(WORDS, k=self.random.randint(1, most))
        if self.random.random() < 0.3:
            words.append("".join(self.random.choices(ACCENTED, k=4)))
        return " ".join(words)

    def address(self):
        number = self.random.randint(1, 99)
        address = self.random.choice([
            f"user{number}@acme", f"user{number}", f"gate{number}@host {{SMTP/a{number}@example.com}}",
            f"u{number}@host {{NET/P,O/USER{number}}}"])
        name = self.random.choice(["", f"User {number}", f"Number {number}, User"])
        return smf.Address(address, name)

    def addresses(self, most):
        return [self.address() for _ in range(self.random.randint(0, most))]

    def text(self):
        lines = [self.words(30) if self.random.random() < 0.8 else self.random.choice([
            "", " ", "To: nobody", "SMF-70", ".", "x" * 200, " indented", "a\ttab"])
            for _ in range(self.random.randint(0, 12))]
        return "".join(line + "\r\n" for line in lines)

    def message(self):
        return smf.Message(
            sender=self.address(), to=[self.address(), *self.addresses(12)], cc=self.addresses(3),
            subject=self.words(25), text=self.text(),
            date=datetime.datetime(self.random.randint(1980, 2079), self.random.randint(1, 12),
                                   self.random.randint(1, 28), self.random.randint(0, 23),
                                   self.random.randint(0, 59), self.random.randint(0, 59)),
            importance=self.random.choice(["Low", "Normal", "High"]))


def as_client(address):
    """An address as clients write it."""
    if not address.name:
        return f"<{address.address}>" if "," in address.address else address.address
    name = f'"{address.name}"' if "," in address.name else address.name
    return f"{name} <{address.address}>"


def as_shown(address):
    """An address as the server shows it."""
    return f"{address.name} <{address.address}>" if address.name else address.address


class MhsTest(ScriptTest, unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="mhs-")))
        self.office = smf.PostOffice(self.folder / "volume", ("ann", "bob"))
        self.files = self.folder / "files"
        self.received = self.folder / "received"
        self.files.mkdir()
        self.received.mkdir()
        self.begin = f"""
Sub NewServer(user)
  Set mail = CreateObject("QuillonInterface.Server")
  mail.mailSystem = 3
  mail.postOffice = "{winetest.windows_path(self.office.volume)}"
  mail.loginName = user
  mail.AttachmentDirectory = "{winetest.windows_path(self.received)}"
  mail.NewMessage
End Sub
"""

    def check(self, text, **how):
        self.run_checks(wine, self.begin + text, **how)

    def test_what_we_write_is_read_by_another(self):
        maker = Maker(1)
        content = {name: maker.random.randbytes(3000) for name in ("one.bin", "two words.text")}
        for name, data in content.items():
            (self.files / name).write_bytes(data)
        script, expected = ['NewServer "ann"'], {}
        for number in range(COUNT):
            message = maker.message()
            message.subject = f"{number} {message.subject}"
            attached = maker.random.sample(sorted(content), maker.random.randint(0, 2))
            expected[number] = (message, attached)
            level = {"High": 1, "Normal": 3, "Low": 5}[message.importance]
            lines = [literal(line) for line in message.text.split("\r\n")]
            text = "body = " + "\nbody = body & vbCrLf & ".join(lines)
            script += ["mail.NewMessage", text, "mail.Message = body",
                       f"mail.subject = {literal(message.subject)}", f"mail.Importance = {level}",
                       *(f"mail.AddRecipientTo {literal(as_client(one))}" for one in message.to),
                       *(f"mail.AddRecipientCc {literal(as_client(one))}" for one in message.cc),
                       *(f'mail.AddAttachment "{winetest.windows_path(self.files / name)}"'
                         for name in attached),
                       "mail.Send"]
        earliest = datetime.datetime.now() - datetime.timedelta(seconds=2)
        self.check("Dim body\n" + "\n".join(script), timeout=300)
        latest = datetime.datetime.now() + datetime.timedelta(seconds=2)
        sent = [smf.read(file.read_bytes()) for file in self.office.outgoing.iterdir()]
        self.assertEqual(COUNT, len(sent))
        for message in sent:
            wanted, attached = expected.pop(int(message.subject.split(" ")[0]))
            wanted.sender = smf.Address("ann")
            self.assertTrue(earliest <= message.date <= latest, message.date)
            wanted.date = message.date
            for (parcel, _), name in zip(message.attachments, attached):
                self.assertRegex(parcel, "^[A-Z0-9]{8}$")
                self.assertEqual(content[name], (self.office.parcels / parcel).read_bytes())
            wanted.attachments = [(parcel, name) for (parcel, _), name
                                  in zip(message.attachments, attached, strict=True)]
            self.assertEqual(wanted, message)
        self.assertEqual({}, expected)

    def test_what_another_writes_is_read_by_us(self):
        maker = Maker(2)
        expected = {}
        for number in range(COUNT):
            message = maker.message()
            message.subject = f"{number} {message.subject}"
            files = [(f"file {number}-{i}.bin", maker.random.randbytes(50))
                     for i in range(maker.random.randint(0, 2))]
            line_end = maker.random.choice(["\r\n", "\n"])
            self.office.deliver(
                "ann", message, files, version=maker.random.choice([70, 71]), line_end=line_end,
                prefixes=maker.random.choice([None, ["", "20", "200"]]),
                fold=maker.random.choice([0, 40, 76]))
            text = message.text.replace("\r\n", line_end)
            expected[number] = "|".join([
                message.subject, as_shown(message.sender), ", ".join(map(as_shown, message.to)),
                ", ".join(map(as_shown, message.cc)), f"{message.date:%Y-%m-%d %H:%M:%S}",
                {"High": "1", "Normal": "3", "Low": "5"}[message.importance],
                ", ".join(name for name, _ in files),
                text.replace("\r", "\\r").replace("\n", "\\n")])
        ended, lines = run_script(wine, self.begin.join(["Dim mail, i, text\n", """
NewServer "ann"
mail.dateFormat = "yyyy-mm-dd hh:nn:ss"
mail.LoadMessageHeaders
For i = 0 To mail.messageCount - 1
  mail.messageIndex = i
  mail.LoadMessage
  text = Replace(Replace(mail.Message, vbCr, "\\r"), vbLf, "\\n")
  WScript.Echo mail.subject & "|" & mail.from & "|" & mail.GetMessageItemString(1) & "|" & _
    mail.GetMessageItemString(2) & "|" & mail.DateSent & "|" & _
    mail.GetHeaderItemString(25) & "|" & mail.GetMessageItemString(7) & "|" & text
  mail.DeleteMessage
  If Err.Number <> 0 Then WScript.Echo i & " " & Err.Description
  Err.Clear
Next
"""]) + ENDINGS["vbs"], timeout=300)
        self.assertTrue(ended, lines)
        got = {int(line.split(" ")[0]): line for line in lines}
        self.maxDiff = None
        self.assertEqual(expected, got)
        self.assertEqual([], list(self.office.parcels.iterdir()))

    def test_two_users(self):
        """A message with files there and back, which the mail directory knows nothing of after it."""
        source = random.Random(3)
        content = {"one.bin": source.randbytes(100000), "a long name.text": b"a\r\n.\r\n\x1a\0b"}
        for name, data in content.items():
            (self.files / name).write_bytes(data)
        self.check(f"""
NewServer "ann"
mail.AddRecipientTo "Bob Baker <bob>"
mail.AddRecipientBcc "ann"
mail.subject = "Figures"
mail.AddAttachment "{winetest.windows_path(self.files)}\\one.bin"
mail.AddAttachment "{winetest.windows_path(self.files)}\\a long name.text"
mail.Send
Same "nothing yet", CLng(0), mail.UnreadCount
""")
        self.assertEqual(2, self.office.move())
        self.check("""
NewServer "bob"
Same "unread", CLng(1), mail.UnreadCount
mail.LoadMessageHeaders
mail.LoadMessage
Same "from", "ann", mail.from
Same "to", "Bob Baker <bob>", mail.GetMessageItemString(1)
Same "names", "one.bin, a long name.text", mail.GetMessageItemString(7)
Same "read", CLng(0), mail.UnreadCount
mail.DeleteMessage
mail.loginName = "ann"
On Error Resume Next
mail.LoadMessage
Raised "headers of another", 532
mail.LoadMessageHeaders
mail.LoadMessage
Raised "the blind copy", 0
Same "to", "ann", mail.GetMessageItemString(1)
mail.DeleteMessage
mail.DeleteMessage
Raised "deleted before", 5605
mail.DeleteMessage
RaisedText "deleted before", "Message not found"
""")
        received = sorted(file.read_bytes() for file in self.received.iterdir())
        self.assertEqual(sorted(2 * [*content.values()]), received)
        self.assertEqual([], list(self.office.parcels.iterdir()))
        self.assertEqual([], list(self.office.outgoing.iterdir()))

    def test_where_the_mail_is(self):
        """By the configuration file, for programs that choose nothing themselves."""
        settings = wine.drive_c / "Quillon" / "quillon.ini"
        self.addCleanup(settings.unlink)
        self.office.deliver("bob", smf.Message(smf.Address("ann@acme"), [smf.Address("bob@acme")]))
        script = """
Dim system, a, b, text
Set mail = CreateObject("QuillonInterface.Server")
Same "present", CInt(-1), mail.QueryMailSystem(3)
mail.SetNativeSystem
Same "found", CInt(3), mail.mailSystem
On Error Resume Next
Same "unread", CLng(1), mail.UnreadCount
Raised "unread", 0
mail.Login
Raised "login", 0
Same "keyword", "MHS", mail.GetInterfaceString(40)
mail.MoveMessage "Done"
Raised "move", 530
mail.AddRecipientTo "no, such <a(b>"
mail.Send
Raised "address", 5609
mail.DecodeError vbObjectError + 5609, system, a, b, text
Same "decoded", "3 Bad addressee", system & " " & text
mail.postOffice = "C:\\nowhere"
mail.LoadMessageHeaders
Raised "no such directory", 546
mail.LoadMessageHeaders
RaisedText "no such directory", "Post office directory does not exist."
mail.postOffice = ""
mail.applicationName = "FAX"
mail.LoadMessageHeaders
Same "another application", CLng(0), mail.messageCount
"""
        settings.write_text(f"""[MHS]
PostOffice={winetest.windows_path(self.office.volume)}
LoginName=bob
""")
        self.run_checks(wine, script)
        settings.write_text("[MHS]\n")
        self.run_checks(wine, """
Set mail = CreateObject("QuillonInterface.Server")
Same "present", CInt(0), mail.QueryMailSystem(3)
mail.mailSystem = 3
On Error Resume Next
mail.Login
Raised "no directory", 544
mail.postOffice = WScript.Arguments(0)
mail.Login
Raised "no name", 544
mail.loginName = "carl"
mail.LoadMessageHeaders
Raised "unknown", 5612
""", winetest.windows_path(self.office.volume))


if __name__ == "__main__":
    unittest.main()
