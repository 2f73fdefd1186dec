"""Sent messages: what a script composes, Python's email package and our own reader take apart to the
same texts, names and bytes."""

import binascii
import datetime
import email
import email.policy
import email.utils
import io
import pathlib
import random
import re
import shutil
import tempfile
import time
import unittest
import urllib.parse
import zipfile

from scripting import ENDINGS, MailHost, ScriptTest, literal, run_script, told_by_load_all
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "mail"
CHECK = pathlib.Path(__file__).resolve().parent / "scripts" / "check.vbs"

PREAMBLE = ("> THIS IS A MESSAGE IN 'MIME' FORMAT.  Your mail reader does not support MIME.\r\n"
            "> Please read the first section, which is plain text, and ignore the rest.\r\n")
TEXT = "Good morning,\r\n.\r\n..all is well."
PAGE = b"<html><body>Good <b>morning</b></body></html>\r\n"
RICH = b"{\\rtf1 Good morning}"


def setUpModule():
    ComposedTest.wine = unittest.enterModuleContext(
        winetest.WinePrefix(environment={"TZ": "TEST-05:30"}))
    directory = ComposedTest.wine.drive_c / "Quillon"
    directory.mkdir()
    ComposedTest.wine.register(shutil.copy(winetest.SERVER, directory))


def files():
    """Name and content of each file that is attached; C:\\Files holds them."""
    source = random.Random(20261121)
    for size in (0, 1, 14, 57, 1800, 1 << 20, 20 << 20):
        yield f"size{size}.bin", source.randbytes(size)
    yield "two words, (1); it's.txt", b"with blanks\r\n"
    yield "no_extension", b"."
    yield "UPPER.TXT", b"in capitals"
    yield "Gr\u00fc\u00dfe.txt", b"ANSI"
    yield "\u65e5\u672c \u00fc.txt", b"not ANSI"


FILES = dict(files())
SIZES = [name for name in FILES if name.startswith("size")]
ODD = ["two words, (1); it's.txt", "no_extension", "UPPER.TXT"]


class Shape:
    """The statements that compose a message, and what must come of it: the type of the whole, the
    files in their order."""

    def __init__(self, what, whole, attached=(), pages=(), encoding=2, extra=(), text=TEXT):
        self.what, self.whole, self.encoding, self.text = what, whole, encoding, text
        self.attached, self.pages = list(attached), list(pages)
        self.lines = ["mail.NewMessage", 'mail.AddRecipientTo "bob@example.com"',
                      f"mail.subject = {literal(what)}", f"mail.Message = {literal(text)}",
                      f"mail.attachmentEncoding = {encoding}"]
        self.lines += [f'mail.AddAlternative "C:\\Files\\{name}", "{kind}", 0'
                       for name, kind, _ in self.pages]
        self.lines += [f'mail.AddAttachment {literal("C:" + chr(92) + "Files" + chr(92) + name)}'
                       for name in self.attached]
        self.lines += [*extra, "mail.Send"]


HTML, RTF = ("page.htm", "text/html", PAGE), ("page.rtf", "text/richtext", RICH)
BOUNDARY = "-Quillon-Next-Part-7c15e9a80b42"
SHAPES = [
    Shape("text", "text/plain"),
    Shape("no text", "text/plain", text=""),
    Shape("alternatives", "multipart/alternative", pages=[HTML, RTF]),
    Shape("MIME", "multipart/mixed", SIZES + ODD),
    Shape("MIME without text", "multipart/mixed", ["size1.bin"], text=""),
    Shape("uuencoded", "text/plain", SIZES + ODD, encoding=1),
    Shape("uuencoded without text", "text/plain", ["size14.bin"], encoding=0, text=""),
    Shape("all of it", "multipart/mixed", ["size57.bin", "size0.bin"], [HTML, RTF]),
    Shape("all of it, UU wanted", "multipart/mixed", ["size57.bin"], [HTML], encoding=1),
    Shape("the boundary in the text", "multipart/mixed", ["size1.bin"],
          text="".join(f"--{letter}{BOUNDARY}\r\n" for letter in "ABCE")),
    Shape("all fields", "multipart/mixed", ["size1.bin"], extra=[
        "mail.Certify = True", "mail.Importance = 1", 'mail.AddXHeader "Department", "Sales"',
        'mail.AddRecipientCc "cid@example.com"']),
    Shape("an ANSI name", "multipart/mixed", ["Gr\u00fc\u00dfe.txt"],
          extra=["mail.Certify = False", "mail.Importance = 3"]),
]


def header(to=(), content='Content-Type: text/plain; charset="us-ascii"', receipts=(),
           reply="<ann@example.com>", priority=("X-MSMail-Priority: Normal",), own=(),
           mailer=("X-Mailer: Quillon v1.0",)):
    """The lines between the date and the empty line."""
    return ["From: Ann Example <ann@example.com>", "To: bob@example.com", *to, "Subject: Fields",
            "MIME-version: 1.0", content, *receipts, "Reply-To: " + reply, *priority, *own,
            "X-Interface: Quillon OLE Server v1.0 (32)", *mailer]


def priority(number, word):
    return [f"X-Priority: {number}", f"X-MSMail-Priority: {word}"]


def receipts(address):
    return [f"Return-Receipt-To: {address}", f"Disposition-Notification-To: {address}"]


OFFICE = "Office <office@example.com>"
ATTACH = 'mail.AddAttachment "C:\\Files\\size1.bin"'
ADD_PAGE = 'mail.AddAlternative "C:\\Files\\page.htm", "text/html", 0'
# What is put, the offset from UTC that the date then has ("": the workstation's), the lines below.
HEADERS = [
    ([], "", header()),
    (["mail.Certify = True", "mail.Importance = 1", "mail.UTCOffset = 5.75"], "+0545",
     header(receipts=receipts("ann@example.com"), priority=priority(1, "High"))),
    (["mail.Certify = True", f'mail.replyTo = "{OFFICE}"', "mail.Importance = 2",
      "mail.UTCOffset = -3.5"], "-0330",
     header(receipts=receipts(OFFICE), reply=OFFICE, priority=priority(2, "High"))),
    (["mail.Importance = 4", 'mail.undocumented1 = "|CHARSET|iso-8859-1"', "mail.UTCOffset = 0"],
     "+0000", header(content='Content-Type: text/plain; charset="iso-8859-1"',
                     priority=priority(4, "Low"))),
    (["mail.Importance = 5", 'mail.AddRecipientCc "Carl <carl@example.com>,d@example.com"',
      'mail.AddRecipientBcc "hidden@example.com"', 'mail.XMailer = ""',
      'mail.AddXHeader " Loop ", "no"', 'mail.AddXHeader "Two", "b"', "mail.UTCOffset = 24"],
     "+2400", header(to=["Cc: Carl <carl@example.com>, d@example.com"], priority=priority(5, "Low"),
                     own=["X-Loop: no", "X-Two: b"], mailer=[])),
    ([ATTACH, f'mail.Message = "A{BOUNDARY} and B{BOUNDARY}"'], "",
     header(content=f"Content-Type: multipart/mixed; boundary=C{BOUNDARY}")),
    ([ATTACH, ADD_PAGE, "mail.attachmentEncoding = 1"], "",
     header(content=f"Content-Type: multipart/mixed; boundary=A{BOUNDARY}")),
    ([ADD_PAGE], "", header(content=f"Content-Type: multipart/alternative; boundary=A{BOUNDARY}")),
    (["mail.attachmentEncoding = 2 + 64"], "", header()),  # nothing to pack
    ([ATTACH, "mail.attachmentEncoding = 1"], "",
     header(content="Content-Transfer-Encoding: 7bit")),
]
DATE = re.compile(r"Date:  ((?:Sun|Mon|Tue|Wed|Thu|Fri|Sat), \d\d [A-Z][a-z]{2} \d\d "
                  r"\d\d:\d\d:\d\d) ([-+]\d{4})")


def bodies(message):
    """What Python finds in the leaves: type, name and bytes of each."""
    return [(part.get_content_type(), part.get_filename(), part.get_payload(decode=True))
            for part in message.walk() if not part.is_multipart()]


def uudecoded(text):
    """The text in front, then name and bytes of each block."""
    front, *blocks = re.split(rb"^begin 644 ", text, flags=re.M)
    found = []
    for block in blocks:
        name, *lines = block.split(b"\r\n")
        end = lines.index(b"`")
        assert lines[end + 1] == b"end"
        # The filling of the last group is not zero, which Python's decoder takes for garbage.
        data = [binascii.a2b_uu(line[:(((line[0] - 32) & 63) * 4 + 5) // 3])
                for line in lines[:end]]
        found.append((name.decode("cp1252"), b"".join(data)))
    return front, found


class ComposedTest(ScriptTest, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = cls.wine.drive_c / "Files"
        folder.mkdir()
        for name, content in [*FILES.items(), ("page.htm", PAGE), ("page.rtf", RICH)]:
            (folder / name).write_bytes(content)
        cls.temporary = cls.wine.drive_c / "Temporary"
        cls.temporary.mkdir()

    def session(self):
        return (SCRIPTS / "session.vbs").read_text()

    def test_what_a_script_composes_is_read_by_python_and_by_itself(self):
        begin = ["NewServer WScript.Arguments(0), WScript.Arguments(1)",
                 "mail.TimeoutProtocol = 20000", 'mail.undocumented1 = "|TEMPDIR|C:\\Temporary"']
        with MailHost() as host, tempfile.TemporaryDirectory(prefix="composed-") as root:
            lines = begin + [line for shape in SHAPES for line in shape.lines]
            self.run_checks(self.wine, self.session() + "\n".join(lines), host.smtp, host.pop,
                            timeout=300)
            self.assertEqual([], list(self.temporary.iterdir()))
            received = host.received()
            self.assertEqual(len(SHAPES), len(received))
            for shape, wire in zip(SHAPES, received):
                with self.subTest(shape.what):
                    self.check_python(shape, wire)
            self.check_fields(received[SHAPES.index(next(
                shape for shape in SHAPES if shape.what == "all fields"))])
            self.check_own_reader(host, pathlib.Path(root))

    def check_python(self, shape, wire):
        message = email.message_from_bytes(wire, policy=email.policy.SMTP)
        for part in message.walk():
            self.assertEqual([], part.defects)
        self.assertEqual(shape.whole, message.get_content_type())
        text = shape.text.replace("\r\n.\r\n", "\r\n \r\n").encode()  # the host took the dot off
        if shape.whole == "text/plain":
            self.assertNotIn(b"multipart", wire)
            front, blocks = uudecoded(message.get_payload(decode=True))
            self.assertEqual(text.rstrip(), front.rstrip(b"\r\n"))
            self.assertEqual([(name.lower(), FILES[name]) for name in shape.attached], blocks)
            return
        self.assertEqual(PREAMBLE.strip(), message.preamble.strip())
        expected = [("text/plain", None, text)]
        expected += [(kind, None, content) for _, kind, content in shape.pages]
        found = bodies(message)
        self.assertEqual(expected, found[:len(expected)])
        if all(name.isascii() for name in shape.attached):
            expected += [("application/octet-stream", name, FILES[name])
                         for name in shape.attached]
            self.assertTrue(expected == found)
        else:
            self.check_name(shape.attached[0], wire)
        if shape.pages and shape.attached:
            forms = message.get_payload(0)
            self.assertEqual("multipart/alternative", forms.get_content_type())
            self.assertEqual(1 + len(shape.pages), len(forms.get_payload()))
            self.assertNotEqual(message.get_boundary(), forms.get_boundary())

    def check_name(self, name, wire):
        """A name beyond ASCII: in ANSI bytes, and as RFC 2231 has it."""
        ansi = name.encode("cp1252", "replace")
        self.assertIn(b'; name="' + ansi + b'"\r\n', wire)
        self.assertIn(b'; filename="' + ansi + b'";\r\n', wire)
        extended = wire.split(b" filename*=", 1)[1].split(b"\r\n", 1)[0].decode("ascii")
        charset, _, value = email.utils.decode_rfc2231(extended)
        self.assertEqual(("utf-8", name), (charset, urllib.parse.unquote(value)))

    def check_fields(self, wire):
        message = email.message_from_bytes(wire, policy=email.policy.default)
        self.assertEqual("ann@example.com", message["Disposition-Notification-To"])
        self.assertEqual("ann@example.com", message["Return-Receipt-To"])
        self.assertEqual("1", message["X-Priority"])
        self.assertEqual("Sales", message["X-Department"])
        self.assertEqual("cid@example.com", message["Cc"])

    def check_own_reader(self, host, root):
        """LoadMessage gives the same texts, names and files."""
        for number in range(len(SHAPES)):
            (root / str(number)).mkdir()
        script = CHECK.read_text() + self.session() + (SCRIPTS / "load_all.vbs").read_text()
        ended, lines = run_script(self.wine, script + ENDINGS["vbs"], host.pop, root, timeout=300)
        self.assertTrue(ended, lines[-3:])
        self.assertEqual([], lines)
        found = told_by_load_all(root)
        for number, (shape, got) in enumerate(zip(SHAPES, found, strict=True)):
            with self.subTest("read back: " + shape.what):
                text = shape.text.replace("\r\n.\r\n", "\r\n \r\n")
                self.assertEqual(text.rstrip(), got["body"][0].rstrip())
                names = ["ALTERNAT." + ("HTM" if kind.endswith("html") else "RTF")
                         for _, kind, _ in shape.pages]
                uu = shape.whole == "text/plain"
                names += [name.lower() if uu else name for name in shape.attached]
                self.assertEqual(names, got["name"])
                contents = [content for _, _, content in shape.pages]
                contents += [FILES[name] for name in shape.attached]
                for file, content in zip(got["file"], contents, strict=True):
                    path = root / str(number) / file.rsplit("\\", 1)[1]
                    self.assertTrue(content == path.read_bytes(), file)

    def test_header_fields(self):
        """Everything above the empty line, in its order, as the properties have it."""
        lines = []
        for statements, _, _ in HEADERS:
            lines += ["NewServer WScript.Arguments(0), WScript.Arguments(1)",
                      "mail.Certify = False", 'mail.AddRecipientTo "bob@example.com"',
                      'mail.subject = "Fields"', *statements, "mail.Send"]
        with MailHost() as host:
            self.run_checks(self.wine, self.session() + "\n".join(lines + ["mail.Certify = False"]),
                            host.smtp, host.pop)
            received = host.received()
        for (_, offset, expected), wire in zip(HEADERS, received, strict=True):
            date, *fields = wire.split(b"\r\n\r\n", 1)[0].decode("ascii").split("\r\n")
            self.assertEqual(expected, fields)
            self.assertRegex(date, DATE)
            moment, found = DATE.fullmatch(date).groups()
            self.assertEqual(offset or "+0530", found)
            # The time is that of the workstation, whatever the offset says.
            sent = datetime.datetime.strptime(moment + " +0530", "%a, %d %b %y %H:%M:%S %z")
            self.assertLess(abs(sent.timestamp() - time.time()), 600)

    def test_packed_attachments(self):
        """One archive for all, and one for each, with and without a password."""
        names = ["size1800.bin", "two words, (1); it's.txt", "size0.bin", "size1048576.bin"]
        base = [name.rsplit(".", 1)[0] for name in names]
        cases = [(2 + 64, "", [base[0]]), (2 + 128, "", base), (64, "secret", [base[0]]),
                 (2 + 64 + 128, "secret", [base[0]])]
        lines = ["NewServer WScript.Arguments(0), WScript.Arguments(1)",
                 'mail.undocumented1 = "|TEMPDIR|C:\\Temporary"']
        for encoding, password, _ in cases:
            shape = Shape("packed", "", names, encoding=encoding)
            lines += [f'mail.ZipPassword = "{password}"', *shape.lines]
        with MailHost() as host:
            self.run_checks(self.wine, self.session() + "\n".join(lines), host.smtp, host.pop)
            self.assertEqual([], list(self.temporary.iterdir()))
            received = host.received()
        for (encoding, password, archives), wire in zip(cases, received, strict=True):
            with self.subTest(encoding=encoding, password=password):
                message = email.message_from_bytes(wire)
                if encoding & 2:
                    found = [(name, content) for _, name, content in bodies(message)[1:]]
                else:
                    found = uudecoded(message.get_payload(decode=True))[1]
                self.assertEqual([name + ".zip" for name in archives], [name for name, _ in found])
                self.check_archives(names, [content for _, content in found], password)

    def check_archives(self, names, archives, password):
        unpacked = []
        for archive in archives:
            with zipfile.ZipFile(io.BytesIO(archive)) as files:
                for entry in files.infolist():
                    self.assertEqual(bool(password), bool(entry.flag_bits & 1))
                    unpacked.append((entry.filename, files.read(entry, password.encode())))
        self.assertEqual(names, [name for name, _ in unpacked])
        for name, content in unpacked:
            self.assertTrue(FILES[name] == content, name)

    def test_names_beyond_the_code_page(self):
        name = "\u65e5\u672c \u00fc.txt"
        script = (SCRIPTS / "session.js").read_text() + (SCRIPTS / "compose.js").read_text()
        with MailHost() as host:
            self.run_checks(self.wine, script, host.smtp, host.pop, engine="js")
            [wire] = host.received()
            self.check_name(name, wire)
            [_, (_, _, content)] = bodies(email.message_from_bytes(wire))
            self.assertEqual(FILES[name], content)

    def test_failures_and_kept_files(self):
        gone = self.wine.drive_c / "Files" / "gone.txt"
        gone.write_bytes(b"soon gone")
        with MailHost() as host:
            self.run_checks(self.wine, self.session() + (SCRIPTS / "compose_fails.vbs").read_text(),
                            host.smtp, host.pop)
            [kept] = self.temporary.iterdir()
            self.assertEqual(["1.UUE"], [file.name for file in kept.iterdir()])
            self.assertEqual(FILES["size14.bin"],
                             binascii.a2b_base64((kept / "1.UUE").read_bytes()))
            shutil.rmtree(kept)
            self.assertEqual(1, len(host.received()))


if __name__ == "__main__":
    unittest.main()
