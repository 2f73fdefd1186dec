"""Messages in the Standard Message Format, read and written after its published description and
without a line of the product: the other side in the tests of MHS. And a mover, who does what a
connectivity program does: takes what was sent to those it is for."""

import dataclasses
import datetime
import pathlib
import re
import textwrap

ENCODING = "cp437"
MONTHS = "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec".split()


@dataclasses.dataclass
class Address:
    address: str  # user@workgroup, or user@host {extended part}
    name: str = ""


@dataclasses.dataclass
class Message:
    sender: Address
    to: list
    subject: str = ""
    text: str = ""
    cc: list = dataclasses.field(default_factory=list)
    date: datetime.datetime | None = None
    importance: str = "Normal"
    attachments: list = dataclasses.field(default_factory=list)  # (parcel, original name)


def _show_address(address):
    return address.address + (f" ({address.name})" if address.name else "")


def _show_date(date):
    return f"{date.day:02}-{MONTHS[date.month - 1]}-{date.year % 100:02} {date:%H:%M:%S}"


def _read_date(text):
    found = re.fullmatch(r"(\d{1,2})-(\w{3})-(\d{2}) (\d{1,2}):(\d\d)(?::(\d\d))?", text)
    if not found:
        return None
    day, month, year, hour, minute, second = found.groups()
    century = 1900 if int(year) >= 80 else 2000
    return datetime.datetime(century + int(year), MONTHS.index(month.title()) + 1, int(day),
                             int(hour), int(minute), int(second or 0))


def _read_address(text):
    name = ""
    comment = re.search(r"\(([^()]*)\)", text)
    if comment:
        name = comment[1].strip()
        text = text[:comment.start()] + text[comment.end():]
    return Address(" ".join(text.split()), name)


def _read_addresses(text):
    pieces = re.findall(r"(?:\([^()]*\)|\{[^{}]*\}|[^,(){}])+", text)
    return [_read_address(piece) for piece in pieces if piece.strip()]


def write(message, version=70, prefixes=None, fold=0, line_end="\r\n"):
    """The bytes of a message. `prefixes` are digits that stand before the field names in turn; lines
    of addresses and of the subject longer than `fold` are folded."""
    fields = [("From", _show_address(message.sender)),
              ("To", ", ".join(map(_show_address, message.to)))]
    if message.cc:
        fields.append(("Cc", ", ".join(map(_show_address, message.cc))))
    fields.append(("Subject", message.subject))
    if message.date:
        fields.append(("Date", _show_date(message.date)))
    if message.importance != "Normal":
        fields.append(("Importance", message.importance))
    for parcel, name in message.attachments:
        fields += [("Attachment", parcel), ("Attachment-name", name)]
    fields.append(("Message-encoding", "IBM-437"))
    lines = [f"SMF-{version}"]
    for number, (name, value) in enumerate(fields):
        line = (prefixes[number % len(prefixes)] if prefixes else "") + f"{name}: {value}"
        if fold and len(line) > fold and name in ("To", "Cc", "Subject"):
            line = (line_end + "\t").join(textwrap.wrap(
                line, fold, break_long_words=False, break_on_hyphens=False))
        lines.append(line)
    return (line_end.join(lines) + line_end * 2
            + message.text.replace("\r\n", line_end)).encode(ENCODING)


def read(data):
    """The message in some bytes; ValueError when they are none."""
    head, _, text = data.decode(ENCODING).partition("\r\n\r\n")
    first, *lines = head.split("\r\n")
    if first not in ("SMF-70", "SMF-71"):
        raise ValueError(f"no message begins with {first!r}")
    fields = []
    for line in lines:
        if line[0] in " \t":
            fields[-1][1] += " " + line.strip()
        else:
            name, _, value = line.partition(":")
            fields.append([name.lstrip("0123456789").lower(), value.strip()])
    message = Message(Address(""), [], text=text)
    for name, value in fields:
        if name == "from":
            message.sender = _read_address(value)
        elif name == "to":
            message.to += _read_addresses(value)
        elif name == "cc":
            message.cc += _read_addresses(value)
        elif name == "subject":
            message.subject = value
        elif name == "date":
            message.date = _read_date(value)
        elif name == "importance":
            message.importance = value
        elif name == "attachment":
            message.attachments.append((value, value))
        elif name == "attachment-name":
            message.attachments[-1] = (message.attachments[-1][0], value)
    return message


class PostOffice:
    """A mail directory, MHS/MAIL below a master volume, and who moves the mail in it."""

    def __init__(self, volume, users):
        self.volume = pathlib.Path(volume)
        self.mail = self.volume / "MHS" / "MAIL"
        self.outgoing = self.mail / "SND"
        self.parcels = self.mail / "PARCEL"
        self._next = 0
        for folder in (self.outgoing, self.parcels, *map(self.inbox, users)):
            folder.mkdir(parents=True, exist_ok=True)

    def inbox(self, user, application="MHS"):
        return self.mail / "USERS" / user / application

    def loop_back(self, user):
        """What is sent is in the inbox of the user at once: the two are one directory."""
        self.inbox(user).rmdir()
        self.inbox(user).symlink_to(self.outgoing)

    def name(self):
        """A new name of eight characters."""
        self._next += 1
        return f"P{self._next:07}"

    def put(self, file, data):
        """Makes a file that nobody sees before it is whole."""
        whole = file.with_suffix(".TMP")
        whole.write_bytes(data)
        whole.rename(file)

    def deliver(self, user, message, files=(), application="MHS", **how):
        """Puts a message with files (name, content) into an inbox; returns its file."""
        message.attachments = []
        for name, content in files:
            parcel = self.name()
            (self.parcels / parcel).write_bytes(content)
            message.attachments.append((parcel, name))
        file = self.inbox(user, application) / self.name()
        self.put(file, write(message, **how))
        return file

    def move(self):
        """Gives each recipient of what was sent a message and parcels of his own. Returns how many
        messages there were."""
        sent = sorted(file for file in self.outgoing.iterdir() if not file.suffix)
        for file in sent:
            message = read(file.read_bytes())
            for recipient in message.to + message.cc:
                user = recipient.address.partition("@")[0]
                if self.inbox(user).is_dir():
                    self._give(user, file.read_bytes(), message)
            file.unlink()
            for parcel, _ in message.attachments:
                (self.parcels / parcel).unlink()
        return len(sent)

    def _give(self, user, data, message):
        for parcel, _ in message.attachments:
            copy = self.name()
            (self.parcels / copy).write_bytes((self.parcels / parcel).read_bytes())
            old, new = (f"Attachment: {name}\r\n".encode(ENCODING) for name in (parcel, copy))
            data = data.replace(old, new)
        self.put(self.inbox(user) / self.name(), data)
