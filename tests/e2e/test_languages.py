"""Messages in other languages: what a script sends in a character set, Python's email package and
Email::MIME read as the same text, subject, names, addresses and file names."""

import email
import email.policy
import pathlib
import re
import shutil
import unittest

import emailmime
from scripting import MailHost, ScriptTest, literal
import winetest

SESSION = pathlib.Path(__file__).resolve().parent / "mail" / "session.vbs"

LOGO = b"\x89PNG\r\n" + bytes(range(256))

# Language, character set asked for and the one that comes of it, name, subject, text, file name.
LANGUAGES = [
    ("English", "auto", "us-ascii", "O'Brien, Pat", "Nothing =? but ASCII",
     "One line of " + "words " * 300 + "\n.\nand another\n", "notes (1).txt"),
    ("German", "auto", "utf-8", "J\u00f6rg \"der Gro\u00dfe\" M\u00fcller",
     "Gr\u00fc\u00dfe aus K\u00f6ln, " * 12, "Sch\u00f6ne Gr\u00fc\u00dfe \u2026\n\n.\n..\nFrom hier \n",
     "\u00dcbersicht 2026.txt"),
    ("French", "ISO-8859-15", "iso-8859-15", "C\u0153ur, Ana\u00efs", "O\u00f9 est le c\u0153ur\u00a0?",
     "Cela co\u00fbte 5 \u20ac.\n" * 20, "re\u00e7u.txt"),
    ("Polish", "iso-8859-2", "iso-8859-2", "\u0141ukasz \u017b\u00f3\u0142w", "Za\u017c\u00f3\u0142\u0107",
     "g\u0119\u015bl\u0105 ja\u017a\u0144\n", "\u017c\u00f3\u0142w.txt"),
    ("Russian", "koi8-r", "koi8-r", "\u0418\u0432\u0430\u043d \u041f\u0435\u0442\u0440\u043e\u0432",
     "\u041f\u0440\u0438\u0432\u0435\u0442 \u0438\u0437 \u041c\u043e\u0441\u043a\u0432\u044b " * 8,
     "\u041a\u0430\u043a \u0434\u0435\u043b\u0430?\n" * 30, "\u043e\u0442\u0447\u0451\u0442.txt"),
    ("Ukrainian", "windows-1251", "windows-1251", "\u0404\u0432\u0433\u0435\u043d", "\u0407\u0436\u0430\u043a",
     "\u0490\u0430\u043d\u043e\u043a\n", "\u0454.txt"),
    ("Greek", "iso-8859-7", "iso-8859-7", "\u03a3\u03c9\u03ba\u03c1\u03ac\u03c4\u03b7\u03c2", "\u0393\u03b5\u03b9\u03b1 \u03c3\u03bf\u03c5",
     "\u039a\u03b1\u03bb\u03b7\u03bc\u03ad\u03c1\u03b1\n", "\u03b1\u03b2\u03b3.txt"),
    ("Turkish", "windows-1254", "windows-1254", "\u0130smet \u015eahin", "\u011f\u00fc\u015f\u0131\u00f6\u00e7",
     "I\u015f\u0131k\n", "\u0131\u015f\u0131k.txt"),
    ("Hebrew", "utf-8", "utf-8", "\u05d3\u05d5\u05d3", "\u05e9\u05dc\u05d5\u05dd \u05e2\u05d5\u05dc\u05dd",
     "\u05d1\u05d5\u05e7\u05e8 \u05d8\u05d5\u05d1\n", "\u05d0.txt"),
    ("Japanese", "auto", "utf-8", "\u5c71\u7530\u592a\u90ce", "\u65e5\u672c\u8a9e\u306e\u9577\u3044\u4ef6\u540d" * 10,
     "\u3053\u3093\u306b\u3061\u306f\u3001\u4e16\u754c\u3002\n" * 50, "\u5831\u544a\u66f8" * 20 + ".txt"),
    ("Japanese for mail", "ISO-2022-JP", "iso-2022-jp", "\u5c71\u7530\u592a\u90ce",
     "\u65e5\u672c\u8a9e\u306e\u9577\u3044\u4ef6\u540d" * 10, "\u3053\u3093\u306b\u3061\u306f\n", "\u5831\u544a\u66f8.txt"),
    ("Chinese", "gb2312", "gb2312", "\u738b\u5c0f\u660e", "\u4f60\u597d\uff0c\u4e16\u754c",
     "\u8fd9\u662f\u4e00\u5c01\u4fe1\u3002\n", "\u62a5\u544a.txt"),
    ("Emoji", "utf-8", "utf-8", "\U0001f600", "\U0001f600" * 40, "\U0001f680\n", "x.txt"),
]


def setUpModule():
    LanguageTest.wine = unittest.enterModuleContext(winetest.WinePrefix())
    directory = LanguageTest.wine.drive_c / "Quillon"
    directory.mkdir()
    LanguageTest.wine.register(shutil.copy(winetest.SERVER, directory))
    LanguageTest.configuration = directory / "quillon.ini"


# Wine's VBScript has no way to name characters beyond its code page, but reads them from files.
READ = r"""
Function Text(number)
  Dim file
  Set file = CreateObject("Scripting.FileSystemObject").OpenTextFile( _
    "C:\Texts\" & number, 1, False, -1)
  Text = file.ReadAll
  file.Close
End Function
"""


class LanguageTest(ScriptTest, unittest.TestCase):
    def setUp(self):
        self.addCleanup(self.configuration.unlink, missing_ok=True)

    def text(self, text):
        """An expression for it."""
        folder = self.wine.drive_c / "Texts"
        folder.mkdir(exist_ok=True)
        file = folder / str(len(list(folder.iterdir())))
        file.write_bytes(b"\xff\xfe" + text.encode("utf-16-le"))
        return f"Text({file.name})"

    def run_lines(self, host, lines):
        self.run_checks(self.wine, SESSION.read_text() + READ + "\n".join(
            ["NewServer WScript.Arguments(0), WScript.Arguments(1)",
             "mail.TimeoutProtocol = 20000", *lines]), host.smtp, host.pop, timeout=200)

    def statements(self, language, modern):
        what, charset, _, name, subject, text, file = language
        folder = self.wine.drive_c / "Files" / what
        folder.mkdir(parents=True)
        (folder / file).write_bytes(b"content\r\n")
        (folder / "page.html").write_bytes(f"<p>{text}</p>".encode())
        quoted = '"' + name.replace('"', '\\"') + '"'
        path = "C:\\Files\\" + what + "\\"
        page = [f"mail.AddAlternative {self.text(path + 'page.html')}, \"text/html\", 0"]
        if modern:
            (folder / "logo.png").write_bytes(LOGO)
            page = [f"mail.HTMLMessage = {self.text(f'<p>{text}</p>')}",
                    f"mail.AddInlineFile {self.text(path + 'logo.png')}, \"logo@example.com\""]
        return ["mail.NewMessage", f"mail.Charset = {literal(charset)}",
                f"mail.ModernHeaders = {modern}",
                f"mail.from = {self.text(quoted + ' <ann@example.com>')}",
                f"mail.AddRecipientTo {self.text(quoted + ' <bob@example.com>, cid@example.com')}",
                f"mail.subject = {self.text(subject)}", f"mail.Message = {self.text(text)}",
                *page, f"mail.AddAttachment {self.text(path + file)}", "mail.Send"]

    def test_python_reads_what_a_script_sends_in_every_language(self):
        with MailHost() as host:
            self.run_lines(host, [line for number, language in enumerate(LANGUAGES)
                                  for line in self.statements(language, number % 2 == 1)])
            received = host.received()
        self.assertEqual(len(LANGUAGES), len(received))
        for number, (language, wire) in enumerate(zip(LANGUAGES, received)):
            with self.subTest(language[0]):
                self.check(language, wire)
                self.assertEqual(number % 2 == 1, b"Message-ID: " in wire)
                self.assertEqual(number % 2 == 0, b"X-Interface: " in wire)
        # Of GB 2312 Email::MIME does not know the name that file names come with.
        known = [pair for pair in zip(LANGUAGES, received) if pair[0][2] != "gb2312"]
        for (language, _), found in zip(known, emailmime.read([wire for _, wire in known])):
            with self.subTest("Email::MIME, " + language[0]):
                self.check_found(language, found)

    def check_found(self, language, found):
        what, _, _, name, subject, text, file = language
        self.assertEqual(subject.strip(), found["subject"].strip())
        self.assertEqual([[name, "ann@example.com"]], found["from"])
        self.assertEqual([[name, "bob@example.com"], ["", "cid@example.com"]], found["to"])
        self.assertEqual(text, found["text/plain"].replace("\r\n", "\n"))
        self.assertEqual(f"<p>{text}</p>", found["text/html"].replace("\r\n", "\n").rstrip("\n"))
        attachment = (file, b"content\r\n", "application/octet-stream", "")
        if LANGUAGES.index(language) % 2 == 0:
            self.assertEqual([attachment], found["files"], what)
        else:
            logo = ("logo.png", LOGO, "image/png", "<logo@example.com>")
            self.assertEqual([logo, (file, b"content\r\n", "text/plain", "")], found["files"])

    def check(self, language, wire):
        _, _, charset, name, subject, text, file = language
        own = wire[wire.index(b"Date:"):]
        self.assertTrue(own.isascii())
        for line in own.partition(b"\r\n\r\n")[0].split(b"\r\n"):
            self.assertLessEqual(len(line), 76, line)
        message = email.message_from_bytes(wire, policy=email.policy.default)
        for field in ("From", "To", "Subject", "Date", "Content-Type"):
            self.assertEqual((), message[field].defects, field)
        self.assertEqual(subject.strip(), message["Subject"].strip())
        self.assertEqual([(name, "ann@example.com")],
                         [(one.display_name, one.addr_spec) for one in message["From"].addresses])
        self.assertEqual([(name, "bob@example.com"), ("", "cid@example.com")],
                         [(one.display_name, one.addr_spec) for one in message["To"].addresses])
        plain, page = (message.get_body((kind,)) for kind in ("plain", "html"))
        self.assertEqual(charset, plain.get_content_charset())
        self.assertEqual(text, plain.get_content().replace("\r\n", "\n"))
        self.assertEqual(f"<p>{text}</p>", page.get_content().replace("\r\n", "\n").rstrip("\n"))
        attachment, = message.iter_attachments()
        self.assertEqual(file, attachment.get_filename())
        self.assertEqual(file, attachment["Content-Type"].params["name"])
        self.assertEqual(b"content\r\n", attachment.get_payload(decode=True))

    def test_what_a_set_lacks_is_told_and_the_file_says_what_then(self):
        euro = "mail.subject = " + self.text("5 \u20ac")
        said = self.text("subject holds what the character set iso-8859-1 lacks: U+20AC (\u20ac).")
        with MailHost() as host:
            self.run_lines(host, [
                'mail.AddRecipientTo "bob@example.com"', 'mail.Charset = "iso-8859-1"', euro,
                "On Error Resume Next", "mail.Send",
                f'Ended "Send", 529, {said}'])
            self.assertEqual([], host.received())
            # A script that nobody changes.
            self.configuration.write_text("[Server 127.0.0.1]\nCharset=iso-8859-1\n"
                                          "ReplaceCharacters=TRUE\nModernHeaders=TRUE\n")
            self.run_lines(host, ['mail.AddRecipientTo "bob@example.com"', euro, "mail.Send",
                                  'mail.Charset = "" : mail.ModernHeaders = False : mail.Send'])
            first, second = host.received()
        self.assertIn(b"\r\nSubject: 5 ?\r\n", first)
        self.assertRegex(first, rb"\r\nMessage-ID: <[0-9a-f]{32}@example\.com>\r\n")
        self.assertIn(b"\r\nSubject: 5 \x80\r\n", second)
        self.assertRegex(second, rb"Date:  \w{3}, \d\d \w{3} \d\d ")

    def test_headers_of_ones_own_cannot_become_more_than_one(self):
        with MailHost() as host:
            self.run_lines(host, [
                'mail.AddRecipientBcc "bob@example.com"', "mail.ModernHeaders = True",
                'mail.AddHeader "Message-ID", "<1@example.com>"',
                'mail.AddHeader "References", "<2@example.com>" & vbCrLf & "Evil: yes"',
                "mail.Send"])
            wire, = host.received()
        message = email.message_from_bytes(wire, policy=email.policy.default)
        self.assertEqual("<1@example.com>", message["Message-ID"])
        self.assertEqual("<2@example.com> Evil: yes", message["References"])
        self.assertIsNone(message["Evil"])
        self.assertIsNotNone(re.search(rb"\r\nTo: undisclosed-recipients:;\r\n", wire))


if __name__ == "__main__":
    unittest.main()
