"""Received messages: whatever Python's email package or Email::MIME composes is taken apart to the same texts and
files by a script that reads it over POP3."""

import base64
import binascii
import email.encoders
import email.header
import email.headerregistry
import email.mime.base
import email.mime.message
import email.mime.multipart
import email.mime.text
import email.policy
import email.utils
import os
import pathlib
import random
import shutil
import tempfile
import unittest
import urllib.parse
from email.message import EmailMessage

import emailmime
import tnef
from scripting import ENDINGS, MailHost, ScriptTest, run_script, told_by_load_all
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "mail"
CHECK = pathlib.Path(__file__).resolve().parent / "scripts" / "check.vbs"
SMTP = email.policy.SMTP


def setUpModule():
    ReceivedTest.wine = unittest.enterModuleContext(winetest.WinePrefix())
    directory = ReceivedTest.wine.drive_c / "Quillon"
    directory.mkdir()
    ReceivedTest.wine.register(shutil.copy(winetest.SERVER, directory))


class Shape:
    """A message, and what must come of it: the text, (shown name, bytes) for each file, and the
    sender's name, which is the subject and a recipient's name too."""

    def __init__(self, what, message, body, files=(), policy=SMTP, name=None, html=None):
        self.what = what
        self.wire = message if isinstance(message, bytes) else message.as_bytes(policy=policy)
        self.body = body if isinstance(body, str) else body.decode("ascii")
        self.files = list(files)
        self.name = name
        self.html = html


def crlf(text):
    return text.replace("\n", "\r\n")


def new_message(text=None, **how):
    message = EmailMessage(policy=SMTP)
    message["From"] = "Ann <ann@example.com>"
    message["To"] = "bob@example.com"
    message["Subject"] = "Shape"
    if text is not None:
        message.set_content(text, **how)
    return message


def in_pieces(message, count):
    """The bytes of a message, parted at line ends."""
    lines = message.splitlines(keepends=True)
    ends = [len(lines) * i // count for i in range(count + 1)]
    return [b"".join(lines[start:end]) for start, end in zip(ends, ends[1:])]


PLAIN = "Good morning,\n\nall is well.\n"
HTML = "<html><body>Good <b>morning</b></body></html>\n"
UMLAUTS = "Gr\u00fc\u00dfe an alle = jeden \n und ein sehr langer Absatz " + "wieder " * 40 + "\n"
LOGO = bytes(range(256)) * 3


def texts():
    """Messages that are one text, in every transfer encoding."""
    yield Shape("7bit", new_message(PLAIN, cte="7bit"), crlf(PLAIN).encode())
    for encoding in ("base64", "quoted-printable", "8bit"):
        yield Shape("UTF-8 in " + encoding, new_message(UMLAUTS, cte=encoding),
                    crlf(UMLAUTS))
        yield Shape("Latin-1 in " + encoding,
                    new_message(UMLAUTS, cte=encoding, charset="iso-8859-1"),
                    crlf(UMLAUTS))
    html = new_message()
    html.set_content(HTML, subtype="html")
    yield Shape("HTML alone", html, crlf(HTML).encode())
    yield Shape("nothing", new_message(""), b"\r\n")


def renderings():
    """Alternatives, with and without related parts and attachments."""
    alternative = new_message(PLAIN)
    alternative.add_alternative(HTML, subtype="html")
    text, page = crlf(PLAIN).encode(), ("ALTERNAT.HTM", crlf(HTML).encode())
    yield Shape("alternative", alternative, text, [page])

    many = new_message(PLAIN)
    many.add_alternative("rich\n", subtype="richtext")
    many.add_alternative("zipped\n", subtype="richtext-zipped")
    many.add_alternative("enriched\n", subtype="enriched")
    many.add_alternative("{\\rtf1}\n", subtype="rtf")
    many.add_alternative(b"BEGIN:VCALENDAR\r\n", maintype="text", subtype="calendar")
    many.add_alternative("odd\n", subtype="x-odd")
    yield Shape("renderings", many, text, [
        ("ALTERNAT.RTF", b"rich\r\n"), ("ALTERNAT.RTZ", b"zipped\r\n"),
        ("ALTERNAT.ENR", b"enriched\r\n"), ("ALTERNAT.RTF", b"{\\rtf1}\r\n"),
        ("ALTERNAT.ICS", b"BEGIN:VCALENDAR\r\n"), ("ALTERNAT.DAT", b"odd\r\n")])

    related = new_message(PLAIN)
    related.add_alternative(HTML, subtype="html")
    page_part = related.get_payload()[1]
    page_part.add_related(LOGO, "image", "png", cid="<logo>")
    page_part.add_related(LOGO[:57], "image", "gif", cid="<dot>", filename="dot.gif")
    logo, dot = ("NONAME.PNG", LOGO), ("dot.gif", LOGO[:57])
    yield Shape("alternative with related", related, text, [page, logo, dot])

    related.add_attachment(LOGO, "application", "pdf", filename="report.pdf")
    related.add_attachment("a,b\n1,2\n", subtype="csv", filename="table.csv")
    related.add_attachment("umlaut \u00e4\n", filename="notes.txt", cte="quoted-printable")
    yield Shape("all of it, mixed", related, text,
                [page, logo, dot, ("report.pdf", LOGO), ("table.csv", b"a,b\r\n1,2\r\n"),
                 ("notes.txt", "umlaut \u00e4\r\n".encode())])


def containers():
    """The other multiparts, and messages in messages."""
    inner = new_message(PLAIN)
    inner.replace_header("Subject", "Inner")
    inner.add_attachment(LOGO, "image", "png", filename="logo.png")
    text = crlf(PLAIN).encode()
    inner_bytes = inner.as_bytes(policy=SMTP)

    forwarded = new_message(PLAIN)
    forwarded.add_attachment(inner)
    forwarded.add_attachment(inner, filename="second.eml")
    yield Shape("forwarded", forwarded, text,
                [("NONAME.EML", inner_bytes), ("second.eml", inner_bytes)])

    digest = email.mime.multipart.MIMEMultipart("digest", policy=SMTP)
    for number in (1, 2):
        part = email.mime.message.MIMEMessage(new_message(f"Number {number}\n"), policy=SMTP)
        del part["Content-Type"]
        digest.attach(part)
    yield Shape("digest", digest, b"",
                [("NONAME.EML", new_message(f"Number {n}\n").as_bytes(policy=SMTP))
                 for n in (1, 2)])

    signed = email.mime.multipart.MIMEMultipart("signed", protocol="application/pgp-signature",
                                                policy=SMTP)
    signed.attach(email.mime.text.MIMEText(PLAIN, policy=SMTP))
    signature = email.mime.base.MIMEBase("application", "pgp-signature", policy=SMTP)
    signature.set_payload("-----BEGIN-----\n=abcd\n-----END-----\n")
    signed.attach(signature)
    yield Shape("signed", signed, text,
                [("NONAME.ASC", b"-----BEGIN-----\r\n=abcd\r\n-----END-----\r\n")])

    report = email.mime.multipart.MIMEMultipart("report", report_type="delivery-status",
                                                policy=SMTP)
    report.attach(email.mime.text.MIMEText("It failed.\n", policy=SMTP))
    status = email.mime.base.MIMEBase("message", "delivery-status", policy=SMTP)
    # The writer leaves out the line end of the last block.
    status.set_payload([email.message_from_string("Reporting-MTA: dns; x\n\n", policy=SMTP),
                        email.message_from_string("Action: failed\nStatus: 5.1.1\n\n",
                                                  policy=SMTP)])
    report.attach(status)
    report.attach(email.mime.message.MIMEMessage(inner, policy=SMTP))
    yield Shape("report", report, b"It failed.\r\n",
                [("NONAME.TXT", b"Reporting-MTA: dns; x\r\n\r\nAction: failed\r\n"
                                b"Status: 5.1.1\r\n"), ("NONAME.EML", inner_bytes)])

    deep = email.mime.text.MIMEText("At the bottom.\n", policy=SMTP)
    for level in range(20):
        around = email.mime.multipart.MIMEMultipart("mixed", policy=SMTP)
        part = email.mime.base.MIMEBase("application", "octet-stream", policy=SMTP)
        part.set_payload(LOGO[:level])
        email.encoders.encode_base64(part)
        part.add_header("Content-Disposition", "attachment", filename=f"level{level}.bin")
        around.attach(deep)
        around.attach(part)
        deep = around
    yield Shape("twenty levels", deep, b"At the bottom.\r\n",
                [(f"level{level}.bin", LOGO[:level]) for level in range(20)])


def boundaries():
    """Boundaries and line ends that are hard to tell apart."""
    for name, outer, inner in (("begins another", "b", "bb"), ("goes on after another", "bb", "b"),
                               ("quoted", "a b:c/d", "=_x"), ("long", "x" * 70, "x" * 69)):
        message = new_message("--b\n-- b\n--\nbetween\n--bbb\n")
        message.add_alternative(HTML, subtype="html")
        message.set_boundary(inner)
        message.add_attachment(LOGO, "application", "octet-stream", filename="x.bin")
        message.set_boundary(outer)
        if name == "quoted":
            body = b"--b\r\n-- b\r\n--\r\nbetween\r\n--bbb\r\n"
        else:
            body = None  # a boundary in the text: what must come of it is anyone's guess
            message.get_payload()[0].get_payload()[0].set_content("plain\n")
        wire = message.as_bytes(policy=SMTP)
        yield Shape("boundary that is " + name, wire, body or b"plain\r\n",
                    [("ALTERNAT.HTM", crlf(HTML).encode()), ("x.bin", LOGO)])
    message = new_message(PLAIN)
    message.add_attachment(LOGO, "application", "octet-stream", filename="x.bin")
    message.set_boundary("sep")
    wire = message.as_bytes(policy=SMTP)
    expected = crlf(PLAIN).encode(), [("x.bin", LOGO)]
    yield Shape("blanks behind boundaries",
                wire.replace(b"--sep\r\n", b"--sep \t\r\n").replace(b"--sep--", b"--sep-- "),
                *expected)
    yield Shape("never closed", wire.replace(b"--sep--\r\n", b""), *expected)
    yield Shape("preamble and epilogue",
                wire.replace(b"\r\n\r\n--sep", b"\r\n\r\nThis is MIME.\r\n--sepp\r\n--sep", 1) +
                b"after all\r\n--sep\r\n\r\nnot a part\r\n", *expected)
    yield Shape("folded with tabs", wire.replace(b'; boundary="sep"', b';\r\n\tboundary="sep"'),
                *expected)
    yield Shape("comments",
                wire.replace(b'; boundary="sep"', b' (a "(nested)" comment); boundary=sep (x)')
                .replace(b"Encoding: base64", b"Encoding: (why) base64"), *expected)
    long = b"X-Long: " + b"long " * 40000 + b"\r\n"
    yield Shape("a header line of 200 KB", long + wire, *expected)


# File names in the forms of RFC 2231, RFC 2047 and of those who read neither.
NAMES = ["plain.txt", "two words.txt", "semi;colon.txt", "quo\"te.txt", "equals=.txt", "no extension",
         "Gr\u00fc\u00dfe.txt", "\u00e4" * 60 + ".txt", "long " * 30 + ".txt", "%41.txt", "'.txt",
         "a.b.c"]


def file_names():
    for name in NAMES:
        message = new_message(PLAIN)
        message.add_attachment(b"x", "application", "octet-stream", filename=name)
        yield Shape("name " + name, message, crlf(PLAIN).encode(), [(name, b"x")])
        old = email.mime.multipart.MIMEMultipart(policy=email.policy.compat32)
        part = email.mime.base.MIMEBase("application", "octet-stream")
        part.set_payload("x")
        part.set_param("name", email.header.Header(name, None if name.isascii() else "utf-8",
                                                   maxlinelen=998).encode())
        old.attach(part)
        yield Shape("name in words " + name, old, b"", [(name, b"x")],
                    policy=email.policy.compat32.clone(linesep="\r\n", max_line_length=None))
    twice = new_message(PLAIN)
    for content in (b"one", b"two", b"three"):
        twice.add_attachment(content, "application", "octet-stream", filename="report.pdf")
    yield Shape("one name three times", twice, crlf(PLAIN).encode(),
                [("report.pdf", content) for content in (b"one", b"two", b"three")])


def encodings():
    """Files of every length around the sizes of lines and blocks, and of random bytes."""
    source = random.Random(20260306)
    files = [(f"size{size}.bin", source.randbytes(size)) for size in
             (0, 1, 2, 3, 44, 45, 46, 56, 57, 58, 1799, 1800, 1801, 65535, 300000)]
    message = new_message(PLAIN)
    for name, content in files:
        message.add_attachment(content, "application", "octet-stream", filename=name)
    yield Shape("base64 of many sizes", message, crlf(PLAIN).encode(), files)

    text = "Files follow.\n"
    for name, content in files[:13]:
        lines = [binascii.b2a_uu(content[at:at + 45], backtick=len(content) % 2 == 1).decode()
                 for at in range(0, len(content), 45)]
        text += f"begin 644 {name}\n" + "".join(lines) + "`\nend\nand so on\n"
    uu = new_message()
    uu.set_payload(text)
    rest = "Files follow.\n" + "and so on\n" * 13
    yield Shape("uuencoded in the text", uu.as_bytes(policy=SMTP), crlf(rest).encode(),
                files[:13])


# A set that is usual for a language, a text, and a name.
LANGUAGES = [
    ("iso-8859-1", "Grüße an alle, schönen Tag.", "Müller, Jürgen"),
    ("windows-1252", "L’été déjà – c’était «bien», 5 €.", "Hélène d’Été"),
    ("iso-8859-2", "Zażółć gęślą jaźń, proszę.", "Łukasz Wójcik"),
    ("koi8-r", "Привет всем, как дела?", "Иванов, Пётр"),
    ("windows-1251", "Съешь же ещё этих булок.", "Анна «Аня»"),
    ("koi8-u", "Їхав єнот через ґанок.", "Олексій Ґудзь"),
    ("iso-8859-7", "Καλημέρα σε όλους.", "Γιώργος Παπάς"),
    ("iso-8859-9", "İyi günler, şöyle ağır.", "Ayşe Gündoğdu"),
    ("iso-8859-8", "שלום לכולם.", "דוד כהן"),
    ("windows-1256", "مرحبا بالجميع", "محمد علي"),
    ("tis-620", "สวัสดีทุกคน", "สมชาย ใจดี"),
    ("gb2312", "大家好，今天怎么样？", "王小明"),
    ("gb18030", "大家好，朋友們。", "張偉"),
    ("big5", "大家好，朋友們。", "陳大文"),
    ("iso-2022-jp", "皆さん、お元気ですか。", "山田 太郎"),
    ("shift_jis", "皆さん、ﾃｽﾄです。", "山田, 花子"),
    ("euc-jp", "皆さん、テストです。", "鈴木 一郎"),
    ("euc-kr", "여러분 안녕하세요.", "김철수"),
    ("utf-7", "Tiếng Việt, được không?", "Nguyễn Văn \"An\""),
    ("utf-16", "Ünïcode 😀 𠀀", "名前 😀"),
]


def another_library():
    """The same languages, in their own sets, from a library that is not Python's."""
    messages = [{"charset": charset, "encoding": ("base64", "quoted-printable")[len(text) % 2],
                 "subject": name, "from": [(name, "ann@example.com")],
                 "to": [(name, "bob@example.com"), ("Eve", "eve@example.com")],
                 "text": text + "\r\n", "html": f"<p>{text}</p>", "file": name + ".txt",
                 "content": LOGO}
                for charset, text, name in LANGUAGES
                if charset not in ("utf-7", "utf-16", "gb18030")]
    for message, wire in zip(messages, emailmime.composed(messages), strict=True):
        page = message["html"].encode(message["charset"])
        yield Shape("Email::MIME, " + message["charset"], wire, message["text"],
                    [("ALTERNAT.HTM", page), (message["file"], LOGO)], name=message["subject"],
                    html=message["html"])


def languages():
    """Each in UTF-8, as Python writes it today, and in a set of its own, as programs used to."""
    long_lines = SMTP.clone(max_line_length=998)
    for charset, text, name in LANGUAGES:
        modern = EmailMessage(policy=long_lines)
        modern["From"] = email.headerregistry.Address(name, "ann", "example.com")
        modern["To"] = [email.headerregistry.Address(name, "bob", "example.com"),
                        email.headerregistry.Address("Eve", "eve", "example.com")]
        modern["Subject"] = name
        modern.set_content(text + "\n")
        modern.add_attachment(b"x", "application", "octet-stream", filename=name + ".txt")
        yield Shape("UTF-8 for " + charset, modern, text + "\r\n", [(name + ".txt", b"x")],
                    policy=long_lines, name=name)

        words = base64_words(name, charset)
        encoded = base64.encodebytes((text + "\r\n").encode(charset)).decode()
        file_name = urllib.parse.quote((name + ".txt").encode(charset))
        yield Shape(charset, f"""From: {words} <ann@example.com>
To: "{words}" <bob@example.com>, Eve <eve@example.com>
Subject: {words}
Content-Type: multipart/mixed; boundary=next

--next
Content-Type: text/plain; charset="{charset}"
Content-Transfer-Encoding: base64

{encoded}
--next
Content-Type: application/octet-stream
Content-Disposition: attachment; filename*={charset}''{file_name}

x
--next--
""".encode(), text + "\r\n", [(name + ".txt", b"x")], name=name)


def base64_words(name, charset):
    """The bytes of the name in two words, wherever that cuts them."""
    encoded = name.encode(charset)
    return " ".join(f"=?{charset}?B?{base64.b64encode(part).decode()}?="
                    for part in (encoded[:5], encoded[5:]))


SHAPES = [shape for group in (texts, renderings, containers, boundaries, file_names, encodings,
                              another_library, languages)
          for shape in group()]


class ReceivedTest(ScriptTest, unittest.TestCase):
    def script(self, name):
        return CHECK.read_text() + (SCRIPTS / "session.vbs").read_text() + \
            (SCRIPTS / name).read_text()

    def load_all(self, messages):
        """What comes of each, with its directory."""
        root = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="received-")))
        for number in range(len(messages)):
            (root / str(number)).mkdir()
        with MailHost(messages) as host:
            ended, lines = run_script(self.wine, self.script("load_all.vbs") + ENDINGS["vbs"],
                                      host.pop, root, timeout=180)
        self.assertTrue(ended, lines[-3:])
        self.assertEqual([], lines)
        found = told_by_load_all(root)
        self.assertEqual(len(messages), len(found))
        return [(got, root / str(number)) for number, got in enumerate(found)]

    def test_what_python_composes_is_split_to_the_same_bytes(self):
        found = self.load_all([shape.wire for shape in SHAPES])
        for shape, (got, directory) in zip(SHAPES, found, strict=True):
            with self.subTest(shape.what):
                self.check_shape(shape, got, directory)

    def check_shape(self, shape, got, directory):
        self.assertEqual([shape.body], got["body"])
        self.assertEqual([name for name, _ in shape.files], got["name"])
        if shape.name is not None:
            self.check_header(shape, got)
        if shape.html is not None:
            self.assertEqual([shape.html], got["html"])
        names = [file.rsplit("\\", 1)[1] for file in got["file"]]
        self.assertEqual(sorted(names), sorted(os.listdir(directory)))
        for name, (_, content) in zip(names, shape.files, strict=True):
            self.assertEqual(content, (directory / name).read_bytes(), name)

    def check_header(self, shape, got):
        sender = shape.name, "ann@example.com"
        subject, originator, reply = got["listed"]
        self.assertEqual([[shape.name], shape.name], [got["subject"], subject])
        for address in (*got["from"], originator, reply):
            self.assertEqual(sender, email.utils.parseaddr(address))
        self.assertEqual([(shape.name, "bob@example.com"), ("Eve", "eve@example.com")],
                         [email.utils.parseaddr(recipient) for recipient in got["to"]])

    def test_options_of_loading(self):
        message = new_message()
        message.replace_header("To", "Bob <bob@example.com>, jane@example.com")
        message.replace_header("Subject", "Report")
        message["X-About"] = "Tuesday's report"
        message.set_content("Good morning", cte="base64")
        message.add_alternative(b"zip", maintype="text", subtype="richtext-zipped")
        message.add_alternative(HTML, subtype="html")
        message.add_attachment(LOGO, "application", "octet-stream", filename="data.long.name")
        text = message.get_payload()[0].get_payload()[0]
        text.set_payload(binascii.b2a_base64(b"Good morning").decode())
        long = new_message()
        long.set_content("A line of a long text.\n" * 250000, cte="7bit")
        long.add_attachment(LOGO, "image", "gif", filename="page.gif")
        form = new_message("name=John+Smith&sum=a%2Bb&x")
        with tempfile.TemporaryDirectory(prefix="received-") as root, \
                MailHost([m.as_bytes(policy=SMTP) for m in (message, long, form)]) as host:
            for name in ("all", "plain", "bare", "gone", "long"):
                (pathlib.Path(root) / name).mkdir()
            (self.wine.drive_c / "short attachments").mkdir()
            text = (SCRIPTS / "session.vbs").read_text() + (SCRIPTS / "load_options.vbs").read_text()
            self.run_checks(self.wine, text, host.pop, pathlib.Path(root), timeout=120)
            self.assertEqual(b"A line of a long text.\r\n" * 250000,
                             (pathlib.Path(root) / "long" / "MESSAGE.TXT").read_bytes())
            self.assertEqual([], os.listdir(pathlib.Path(root) / "bare"))
            self.assertEqual(["data.longname"], os.listdir(pathlib.Path(root) / "plain"))

    def test_html_is_text_for_who_knows_of_it_and_is_sent_on_with_its_picture(self):
        page = new_message()
        page.set_content("<p>Gr&uuml;&szlig;e</p><img src='cid:logo' alt=Logo>", subtype="html")
        page.add_related(LOGO, "image", "png", cid="<logo>", filename="logo.png")
        page.add_attachment(LOGO, "image", "png", filename="other.png")
        page.get_payload()[1]["Content-ID"] = "<other>"
        script = (SCRIPTS / "session.vbs").read_text() + "\n".join([
            "NewServer WScript.Arguments(0), WScript.Arguments(1)",
            "mail.AttachmentDirectory = WScript.Arguments(2)",
            "mail.LoadMessageHeaders : mail.messageIndex = 0 : mail.LoadMessage",
            'Same "as ever", "1", CStr(InStr(mail.Message, "<p>Gr&uuml;"))',
            'Same "refers to", "logo", mail.GetMessageItemString(16)',
            'Same "ids", "logo, other", mail.GetMessageItemString(14)',
            'Same "page", "1", CStr(InStr(mail.HTMLMessage, "<p>Gr&uuml;"))',
            "mail.LoadMessage",
            'Dim text : text = "Gr" & Chr(252) & Chr(223) & "e" & vbCrLf & vbCrLf & "Logo"',
            'Same "text", text, mail.Message',
            "mail.HTMLMessage = mail.HTMLMessage",
            'mail.ClearMessageItems 1 : mail.AddRecipientTo "bob@example.com"',
            "mail.Send"])
        with tempfile.TemporaryDirectory(prefix="received-") as root, \
                MailHost([page.as_bytes(policy=SMTP)]) as host:
            self.run_checks(self.wine, script, host.smtp, host.pop, pathlib.Path(root))
            sent = email.message_from_bytes(host.received()[1], policy=SMTP)
        self.assertEqual(crlf(page.get_body(("html",)).get_content()),
                         crlf(sent.get_body(("html",)).get_content().replace("\r\n", "\n")))
        related, = [part for part in sent.walk()
                    if part.get_content_type() == "multipart/related"]
        self.assertEqual([("<logo>", LOGO)], [(part["Content-ID"], part.get_content())
                                              for part in related.iter_attachments()])
        self.assertEqual(["other.png"], [part.get_filename() for part in sent.iter_attachments()])

    def test_a_winmail_dat_is_opened(self):
        inner = tnef.message({tnef.BODY: "Inner"}, [("inner.txt", b"inner data")])
        rtf = b"{\\rtf1 Gr\\'fc\\'dfe}"
        note = tnef.message({tnef.BODY_UNICODE: "Gr\u00fc\u00dfe", tnef.HTML: HTML.encode(),
                             tnef.RICH_TEXT: tnef.rich_text(rtf)},
                            [("logo\u00e4.gif", LOGO * 100), ("Fwd", inner)])
        meeting = tnef.message({}, [("agenda.txt", b"1. Lunch")], "IPM.Microsoft Schedule.MtgReq")
        alone = new_message()
        alone.set_content(note, "application", "ms-tnef", filename="winmail.dat")
        with_text = new_message("See you at noon")
        with_text.add_attachment(meeting, "application", "octet-stream", filename="Winmail.dat")
        with_text.get_payload()[0].set_payload("See you at noon")
        with tempfile.TemporaryDirectory(prefix="received-") as root, \
                MailHost([m.as_bytes(policy=SMTP) for m in (alone, with_text)]) as host:
            root = pathlib.Path(root)
            for name in ("closed", "opened", "appointment"):
                (root / name).mkdir()
            script = (SCRIPTS / "session.vbs").read_text()
            script += (SCRIPTS / "expand_tnef.vbs").read_text()
            self.run_checks(self.wine, script, host.pop, root)
            files = {file.name: file.read_bytes() for file in (root / "opened").iterdir()}
            self.assertEqual({"ALTERNAT.HTM": HTML.encode(), "ALTERNAT.RTF": rtf,
                              "logo.gif": LOGO * 100, "Fwd.DAT": inner, "Fwd.TXT": b"Inner",
                              "inner.txt": b"inner data"}, files)
            self.assertEqual(note, (root / "closed" / "winmail.dat").read_bytes())
            self.assertEqual(["Winmail.dat", "agenda.txt"],
                             sorted(os.listdir(root / "appointment")))

    def test_a_message_in_parts_is_put_together(self):
        message = new_message(PLAIN)
        message.add_attachment(LOGO * 200, "image", "gif", filename="logo.gif")
        parts = [b"From: Ann <ann@example.com>\r\nTo: bob@example.com\r\nSubject: Part %d\r\n"
                 b"Content-Type: message/partial; id=\"logo@example.com\"; number=%d; total=5\r\n"
                 b"\r\n" % (number, number) + text
                 for number, text in enumerate(in_pieces(message.as_bytes(), 5), 1)]
        other = new_message("Another\n")
        parts[2:2] = [parts.pop(), other.as_bytes(policy=SMTP)]
        configuration = self.wine.drive_c / "Quillon" / "quillon.ini"
        configuration.write_text("[Server *]\nExpandTnef=TRUE\n")
        self.addCleanup(configuration.unlink)
        whole = Shape("whole", message, crlf(PLAIN), [("logo.gif", LOGO * 200)])
        found = self.load_all(parts)
        self.assertEqual(["Another\r\n"], found.pop(3)[0]["body"])
        for got, directory in found:
            self.assertEqual(["Shape"], got["subject"])
            self.check_shape(whole, got, directory)

    def test_what_was_loaded_before_is_not_unread(self):
        messages = []
        for subject in ("one", "two", "three"):
            messages.append(new_message("text"))
            messages[-1].replace_header("Subject", subject)
        script = (SCRIPTS / "session.vbs").read_text()
        script += (SCRIPTS / "track_unread.vbs").read_text()
        with MailHost([m.as_bytes(policy=SMTP) for m in messages]) as host:
            for unread in ("one,two,three", "two,three", "three"):
                self.run_checks(self.wine, script, host.pop, unread)
                self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
            users = self.wine.drive_c / "users"
            [file] = users.glob("*/AppData/Roaming/Quillon/Fetched/*.txt")
            self.assertEqual(4, len(file.read_text("ascii").split("\n")))
            self.assertNotIn("joe", str(file.relative_to(users)).split("Roaming")[1])
            file.write_bytes(b"\0" * 100)
            self.run_checks(self.wine, script, host.pop, "one,two,three")


if __name__ == "__main__":
    unittest.main()
