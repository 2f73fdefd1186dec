"""The conversations of the unit tests, for a script and the mail host.

A Conversation is what the host plays, and the statements that carry out its `set`, `call` and
`expect` lines with the helpers of mail/conversation.vbs.
"""

import pathlib
import re

from scripting import literal
from winetest import windows_path

FOLDER = pathlib.Path(__file__).resolve().parents[1] / "conversations"

# What only the network and the disk of the unit tests can do.
ONLY_THERE = re.compile(
    r"^(set (refuse|abortafter|appetite|perturn|hearsanything|readable|writable|lose|"
    r"attachmentdirectory|timeoutprotocol)\b|wait\b|expect 2[78]\b|expect .*\bobliging\b)", re.M)

# Here the server itself refuses, or a further connection would hear the conversation again.
OTHERWISE_HERE = {"smtp-nobody", "smtp-hangs-up-when-idle", "smtp-greeting-on-demand-then-lost"}

# Statements for a value, which is an expression, and the value from before when the next message
# would have this one.
SETTINGS = {
    "from": ("mail.from = {}", None), "body": ("mail.Message = {}", None),
    "subject": ("mail.subject = {}", "Hello"), "replyto": ("mail.replyTo = {}", ""),
    "charset": ("mail.Charset = {}", ""), "modern": ("mail.ModernHeaders = CBool({})", 0),
    "html": ("mail.HTMLMessage = {}", ""), "bodysize": ('mail.Message = String(CLng({}), "x")', None),
    "cc": ("mail.AddRecipientCc {}", None), "bcc": ("mail.AddRecipientBcc {}", None),
    "to": ("mail.ClearMessageItems 1 : mail.AddRecipientTo {}", None),
    "index": ("mail.messageIndex = {}", None), "encoding": ("mail.attachmentEncoding = {}", 2),
    "loginname": ("mail.loginName = {}", "joe"), "password": ("mail.Password = {}", "secret"),
    "maximum": ("mail.MaximumHeaders = {}", 1000), "unreadonly": ("mail.unreadOnly = CBool({})", 0),
    "headersinmessage": ("mail.HeadersInMessage = CBool({})", 0),
    "peekonly": ("mail.peekOnly = CBool({})", 0),
    "trackunread": ("mail.TrackUnread = CBool({})", 0),
    "rawheaders": ("mail.RawHeaders = CBool({})", 0),
    "suppressattachments": ("mail.suppressAttachments = CBool({})", 0),
    "override": ('mail.undocumented1 = "|ONLY_RECIP|" & {}', ""),
    "greetwithhelo": ('mail.undocumented1 = "|HELO|" & -{}', 1),
    "bodylines": ('mail.undocumented1 = "|MSG_LINES|" & {}', 0),
}

CALLS = {
    "send": "mail.Send", "logout": "mail.Logout", "headers": "mail.LoadMessageHeaders",
    "identifiers": "mail.LoadMessageIdentifiers", "load": "mail.LoadMessage",
    "delete": "mail.DeleteMessage", "unread": "answer = mail.UnreadCount",
    "resolve": "answer = mail.ResolveName({})",
}

# What an expectation reads; `data` and `elapsed` are the unit tests' own.
READERS = {
    "thrown": "CStr(outcome)", "error": "said", "unread": "CStr(answer)", "resolved": "answer",
    "refused": 'Replace(mail.GetMessageItemString(11), ", ", " ")', "subject": "mail.subject",
    "from": "mail.from", "body": "mail.Message", "bodysize": "CStr(Len(mail.Message))",
    "tocount": "CStr(mail.GetMessageItemCount(1))", "numbers": "Headers(20)",
    "recipients": 'Replace(mail.GetMessageItemString(1), ">, ", ">|")', "originators": "Headers(9)",
    "identifiers": "Headers(22)", "subjects": "Headers(4)", "attachments": "Attachments()",
    "html": "mail.GetMessageItemString(15)", "labels": "Labels()",
}


def unescaped(text):
    names = {b"r": b"\r", b"n": b"\n", b"t": b"\t", b"0": b"\0", b"\\": b"\\"}
    return re.sub(rb"\\(x(..)|.)", lambda m: bytes([int(m[2], 16)]) if m[2] else names[m[1]],
                  text.encode())


def expression(value):
    return literal(unescaped(value).decode())


class Conversation:
    """`lines` of the file; the files it attaches are made in `folder`."""

    def __init__(self, name, lines, folder):
        self.name = name
        self.is_pop = "protocol pop" in lines
        # The name and the address of this machine are others.
        host = re.sub(r"(?m)^C: HELO workstation\.example$", "C: HELO *", "\n".join(lines)) + "\n"
        self.host = host.replace("[192.0.2.7]", "[127.0.0.1]")
        self._folder = folder / name
        self._undoing = {}
        self.statements = [statement for line in lines for statement in self._statements(line)]
        self.statements += self._undoing.values()

    def _statements(self, line):
        word, _, rest = line.partition(" ")
        if word == "set":
            yield self._set(*rest.partition(" ")[::2])
        elif word == "call":
            operation, _, argument = rest.partition(" ")
            if operation == "login":
                yield f"mail.mailSystem = {6 if self.is_pop else 7}"
            yield "filesBefore = FileCount(received)"
            yield "On Error Resume Next"
            yield ("mail.Login" if operation == "login" else
                   CALLS[operation].format(expression(argument)))
            yield f"Called {literal(self.name)}, filesBefore"
            yield "On Error GoTo 0"
            if operation == "login":
                yield "mail.mailSystem = 10"
            if operation in ("headers", "identifiers"):
                yield "If mail.messageCount > 0 Then mail.messageIndex = 0"
        elif word == "expect":
            what, _, value = rest.partition(" ")
            expected, actual = expression(value), READERS.get(what)
            if re.fullmatch(r"-?\d+", what):
                expected, actual = f'"{0 if what == "-1" else 6000 + int(what)}"', "CStr(outcome)"
            if actual:
                yield f"Same {literal(self.name + ': ' + line)}, {expected}, {actual}"

    def _set(self, name, value):
        if name == "header":
            name, _, value = value.partition(" ")
            return f"mail.AddHeader {literal(name)}, {expression(value)}"
        if name not in ("attachment", "alternative", "inline"):
            statement, before = SETTINGS[name]
            if before is not None:
                self._undoing[name] = statement.format(literal(str(before)))
            return statement.format(expression(value))
        setting = name
        kind, rest = value.split(" ", 1) if name != "attachment" else (None, value)
        name, _, content = rest.partition(" ")
        size = re.fullmatch(r"size (\d+)", content)
        data = (bytes(n * 7 % 256 for n in range(int(size[1]), 0, -1)) if size
                else unescaped(content))
        self._folder.mkdir(exist_ok=True)
        (self._folder / name).write_bytes(data)
        path = literal(windows_path(self._folder / name))
        if setting == "inline":
            return f"mail.AddInlineFile {path}, {literal(kind)}"
        if kind:
            return f'mail.AddAlternative {path}, {literal(kind)}, 0'
        return f"mail.AddAttachment {path}"


def lines_of(file):
    return [line for line in file.read_text().splitlines() if line and not line.startswith("#")]


def whole(folder):
    """Every conversation that can be played on a real network."""
    for file in sorted(FOLDER.glob("*.txt")):
        if file.stem not in OTHERWISE_HERE and not ONLY_THERE.search(file.read_text()):
            yield Conversation(file.stem, lines_of(file), folder)


def cut_off(name, folder, every=1):
    """A conversation that ends with the connection, before a line of the server or, in turn, in the
    middle of it; `every` says at how many of its lines. The call that waits for the line must end
    with the right number."""
    lines = lines_of(FOLDER / (name + ".txt"))
    places = [place for place, line in enumerate(lines) if line.startswith("S: ")][::every]
    for number, place in enumerate(places):
        heard = [one for one in lines[:place] if one[:2] in ("C:", "D:")]
        ending = 13 if heard and heard[-1] in ("D:", "C: .") else 29
        line = lines[place]
        said = ["S> " + line[3:(len(line) + 4) // 2]] if number % 2 else []
        expectation = f"expect {ending}"
        yield Conversation(f"{name}, line {place}", [*lines[:place], *said, "close", expectation],
                           folder)
