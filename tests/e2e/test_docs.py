"""The examples of the documents do what the documents say, and errors have their texts.

Every ```vbs block of README.md and docs/ is run against the registered server, on the object that
the reference's first page describes, with a mailbox behind it on every mail system: a mail host,
and the desk for the systems of other makers. A block fails when it raises an error, or when a line
with a comment `' -> text` does not print that text."""

import email
import email.policy
import re
import unittest

import realservers
from scripting import ENDED, ENDINGS, MailHost, install_desk, run_script
import winetest

PAGES = [winetest.TOP / "README.md", *sorted((winetest.TOP / "docs").rglob("*.md"))]
# A workstation with VIM has it found before the others, so its page is the last one.
VIM = winetest.TOP / "docs" / "mail-systems" / "vim.md"
PREAMBLE = winetest.TOP / "docs" / "reference" / "README.md"
BLOCK = re.compile(r"^```vbs\n(.*?)^```$", re.M | re.S)
EXPECTED = re.compile(r"'\s*-> (.*)$", re.M)
CREATION = re.compile(r'^(\s*Set (\w+) = CreateObject\("QuillonInterface\.Server"\).*)$', re.M)

FILES = {"letter.txt": b"The letter.", "report.pdf": b"%PDF-1.4\r\n", "page.htm": b"<p>Hello.</p>",
         "logo.png": b"\x89PNG\r\n"}
MESSAGES = [
    b"From: Ann <ann@example.com>\r\n"
    b"To: Joe Smith <joe@example.com>, bob@example.com\r\n"
    b"Subject: Lunch\r\n"
    b"Date: Fri, 06 Mar 2026 14:30:00 +0000\r\n"
    b"Message-ID: <lunch.1@example.com>\r\n"
    b"Content-Type: multipart/mixed; boundary=part\r\n"
    b"\r\n"
    b"--part\r\n"
    b"\r\n"
    b"Shall we meet at noon?\r\n"
    b"--part\r\n"
    b"Content-Disposition: attachment; filename=menu.txt\r\n"
    b"\r\n"
    b"Soup.\r\n"
    b"--part--\r\n",
] + [b"From: robot@example.com\r\nSubject: Report\r\n\r\nAll well.\r\n"] * 6

# The same in the inbox of joe, who is the user of the desk in these tests.
DESK_MESSAGES = [
    dict(subject="Lunch", text="Shall we meet at noon?", sender=("Ann", "SMTP:ann@example.com"),
         date="2026/03/06 14:30", attachments=[("menu.txt", b"Soup.\r\n")],
         recipients=[("to", "Joe Smith", "SMTP:joe@example.com"),
                     ("to", "Bob Baker", "SMTP:bob@desk.example")]),
] + [dict(subject="Report", text="All well.", sender=("robot", "SMTP:robot@example.com"),
          date="2026/03/07 08:00")] * 6


class Block:
    """One example: its place in the documents, the text to run, the lines it says it prints."""

    def __init__(self, page, text, host):
        number = page.read_text().count("\n", 0, page.read_text().index(text)) + 1
        self.place = f"{page.relative_to(winetest.TOP)}:{number}"
        text = text.replace("mail.example.com", "127.0.0.1")
        self.expected = [line.strip() for line in EXPECTED.findall(text)]
        self.swallows_errors = "On Error Resume Next" in text
        # A post office would be a server of Active Messaging itself, and a mail file of Notes.
        own = re.search(r"mailSystem = (9|11)\b", text)
        self.before = 'mail.postOffice = ""' if own else ""
        ports = rf"\1\n\2.SMTPPort = {host.smtp} : \2.POPPort = {host.pop}"
        self.text = CREATION.sub(ports, text)


def blocks_of(page, host):
    return [Block(page, text, host) for text in BLOCK.findall(page.read_text())]


def script_of(blocks, preamble):
    """A script that runs each block in a Sub of its own, and tells how each ended."""
    lines = ["Dim mail, keeper, came",
             'Set keeper = CreateObject("QuillonInterface.Server")  \' keeps the process']
    for number, block in enumerate(blocks):
        lines += [f"Sub Block{number}()", block.text, "came = True", "End Sub",
                  f'WScript.Echo "@begin {number}"',
                  "came = False",
                  preamble,
                  block.before,
                  "mail.NewMessage",
                  'mail.replyTo = ""',
                  "On Error Resume Next",
                  f"Block{number}",
                  'If Not came Then WScript.Echo "@raised " & Err.Number & " " & Err.Description',
                  *(f"mail.mailSystem = {system} : mail.Logout" for system in (1, 9, 11, 10)),
                  "Set mail = Nothing",
                  "On Error GoTo 0"]
    return "\n".join(lines + ["Set keeper = Nothing"]) + ENDINGS["vbs"]


class Table:
    """A table of errors.md, the one with that second column: {code: text} as DecodeError has it."""

    # What is said of an error that has its words from elsewhere.
    VARIABLE = re.compile("what it said|own words|Failed to Logon")

    def __init__(self, second, base=0):
        text = (PREAMBLE.parent / "errors.md").read_text()
        table = re.search(rf"^\| \w+ \| {second} \|.*?\n\n", text, re.M | re.S)[0].rstrip()
        self.texts, self.numbers = {}, {}
        for row in table.splitlines()[2:]:
            cells = [cell.strip() for cell in row.strip("|").split(" | ")]
            for code in self.codes(cells[0]):
                shown = cells[2] if base == 0 else cells[1]
                if not self.VARIABLE.search(shown):
                    self.texts[base + code] = shown
                    self.numbers[base + code] = cells[1]

    @staticmethod
    def codes(cell):
        first, to, last = cell.partition(" to ")
        return range(int(first), int(last) + 1) if to else [int(code) for code in cell.split(", ")]


class Examples(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(winetest.WinePrefix())
        cls.wine.register(winetest.SERVER)
        cls.host = cls.enterClassContext(MailHost(MESSAGES))
        store = install_desk(cls.wine)
        store.add_account("joe", "Joe Smith", "SMTP:joe@example.com")
        for message in DESK_MESSAGES:
            store.add_message("joe", **message)
        store.faults("NotesUser joe\nNoDefaultSession")
        folder = cls.wine.drive_c / "Mail"
        folder.mkdir()
        for name, content in FILES.items():
            (folder / name).write_bytes(content)
        cls.preamble = blocks_of(PREAMBLE, cls.host)[0].text

    def outputs(self, blocks):
        """What each block wrote, or None for one that a syntax error keeps from running."""
        _, lines = run_script(self.wine, script_of(blocks, self.preamble), timeout=120)
        if not lines and len(blocks) == 1:
            return [None]
        if not lines:  # a syntax error hides all that is in the same file
            half = len(blocks) // 2
            return self.outputs(blocks[:half]) + self.outputs(blocks[half:])
        written = [[] for _ in blocks]
        current = None
        for line in lines:
            if line.startswith("@begin "):
                current = written[int(line.split()[1])]
            elif current is not None and line != ENDED:
                current.append(line)
        return written

    def check(self, block, output):
        self.assertIsNotNone(output, "does not run: a syntax error?")
        raised = [line for line in output if line.startswith("@raised ")]
        self.assertEqual([], raised)
        rest = iter(output)
        for text in block.expected:
            self.assertTrue(text in rest, f"[{text}] is not printed, but {output}")
        if block.swallows_errors:
            self.assertTrue(block.expected, "ignores errors and does not say what it prints")

    def decoded(self, before, codes):
        """{code: text} of DecodeError, after some statements."""
        lines = [self.preamble, "Dim system, a, b, text", before]
        for code in codes:
            lines += [f"mail.DecodeError vbObjectError + {code}, system, a, b, text",
                      f'WScript.Echo "{code} " & text']
        ended, written = run_script(self.wine, "\n".join([*lines, "mail.Logout"]) + ENDINGS["vbs"])
        self.assertTrue(ended, written)
        return {int(code): text for code, text in (line.split(" ", 1) for line in written)}

    def test_the_tables_of_errors(self):
        own = Table("number")
        self.assertEqual({code: f"0x{0x80040000 + code:08X}" for code in own.numbers}, own.numbers)
        for before, last, table in (
                ("", 551, own), ("mail.mailSystem = 7 : mail.Login", 6556, Table("SMTP", 6000)),
                ("mail.mailSystem = 6 : mail.Login", 6030, Table("POP3", 6000)),
                ("", 2050, Table("Simple MAPI", 2000)),
                ("", 4500, Table("VIM", 4000)), ("", 5612, Table("MHS", 5000)),
                ("", 8171, Table("Active Messaging", 8000))):
            self.assertIn(last, table.texts)
            self.assertEqual(table.texts, self.decoded(before, table.texts))

    def test_every_example(self):
        for page in sorted(PAGES, key=lambda page: page == VIM):
            blocks = blocks_of(page, self.host)
            if not blocks:
                continue
            if page == VIM:
                install_desk(self.wine, ("vim32",))
            for block, output in zip(blocks, self.outputs(blocks)):
                with self.subTest(block.place):
                    self.check(block, output)


class OtherLanguages(unittest.TestCase):
    """The programs of one page, in each of its languages: what they send is what they say, and the
    second one of each reads it back. A macro runs as VBScript, which has all that it is made of but
    the window of Debug.Print."""

    PAGE = winetest.TOP / "docs" / "languages.md"
    SUBJECTS = "Gr\u00fc\u00dfe aus K\u00f6ln", "Gr\u00fc\u00dfe, \u65e5\u672c"
    MACRO = ('Class Window\nSub Print(text)\nWScript.Echo text\nEnd Sub\nEnd Class\n'
             'Set Debug = New Window\n')

    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(winetest.WinePrefix())
        cls.wine.register(winetest.SERVER)
        folder = cls.wine.drive_c / "Mail"
        folder.mkdir()
        for name, content in FILES.items():
            (folder / name).write_bytes(content)

    def programs(self, language, host):
        blocks = re.findall(rf"^```{language}\n(.*?)^```$", self.PAGE.read_text(), re.M | re.S)
        self.assertEqual(2, len(blocks), language)
        end = ";" if language == "js" else ""
        for block in blocks:
            text = block.replace("mail.example.com", "127.0.0.1")
            text = text.replace("ann@example.com", "joe@quillon.test").replace(
                f"mail.mailSystem = 10{end}\n", f"mail.mailSystem = 10{end}\n"
                f"mail.SMTPPort = {host.smtp}{end}\nmail.POPPort = {host.pop}{end}\n")
            self.assertIn(str(host.pop), text)
            if language == "vba":
                text = self.MACRO + text + re.search(r"Sub (\w+)", text)[1]
            yield text, re.findall(r"(?:'|//) -> (.*)$", block, re.M)

    def run_programs(self, language, host, delivered):
        engine = "js" if language == "js" else "vbs"
        for text, expected in self.programs(language, host):
            ended, lines = run_script(self.wine, text + ENDINGS[engine], engine=engine)
            self.assertTrue(ended, lines)
            self.assertEqual(expected, [line.strip() for line in lines])
            wire = delivered()
        self.check_page(email.message_from_bytes(wire, policy=email.policy.default),
                        self.SUBJECTS[language == "js"])

    def test_each_sends_and_reads_the_same(self):
        for language in ("vbs", "js", "vba"):
            with self.subTest(language), MailHost() as host:
                self.run_programs(language, host, lambda host=host: host.received()[0])

    @unittest.skipIf(realservers.missing(), f"{realservers.missing()} is not installed")
    def test_the_same_by_way_of_exim_and_dovecot(self):
        def delivered(servers):
            servers.wait_for(1)
            return servers.messages()[0]
        for language in ("vbs", "js", "vba"):
            with self.subTest(language), realservers.RealServers() as servers:
                self.run_programs(language, servers, lambda servers=servers: delivered(servers))

    def check_page(self, message, subject):
        self.assertEqual(subject, message["Subject"])
        self.assertEqual("J\u00f6rg Schmidt <joe@example.com>", str(message["From"]))
        plain, page = (message.get_body((kind,)).get_content() for kind in ("plain", "html"))
        self.assertEqual("Sch\u00f6ne Gr\u00fc\u00dfe!\n\nOur logo", plain.replace("\r", "").rstrip("\n"))
        self.assertIn("<b>Gr\u00fc\u00dfe</b>", page)
        picture = [part for part in message.walk() if part["Content-ID"] == "<logo>"]
        self.assertEqual([FILES["logo.png"]], [part.get_content() for part in picture])
        report, = message.iter_attachments()
        self.assertEqual(("\u00dcbersicht.pdf", "application/pdf", FILES["report.pdf"]),
                         (report.get_filename(), report.get_content_type(), report.get_content()))


if __name__ == "__main__":
    unittest.main()
