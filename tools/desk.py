"""The desk: the mail store behind the stand-ins for other mail systems' libraries (tests/doubles).
Tests read it and write to it with Store; ./dev desk shows it.

    ./dev desk [STORE]                  accounts, their folders, and how many messages are in each
    ./dev desk [STORE] ACCOUNT/FOLDER   the messages of a folder
    ./dev desk [STORE] MESSAGE          one message whole; the end of its identifier will do
    ./dev desk --install [FACE...]      puts the stand-ins into the Wine of ./dev wine, with a store
                                        in its C:\\QuillonDesk, which is STORE when none is named;
                                        vim32, which would be preferred to the others by programs
                                        that choose for themselves, only when it is named
"""

import os
import pathlib
import shutil
import subprocess
import sys
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
DOUBLES = TOP / "build" / "windows" / "doubles"
PLACE = "QuillonDesk"  # on drive C:

# Under Windows\system32 of 32-bit programs each; those that exist are installed.
FACES = ("deskmapi", "vbamap32", "olemsg32", "mapirtf", "desknotes", "rasapi32")
# Programs that look for a mail system would take one of these: installed only where asked for.
PREFERRED_FACES = ("vim32",)
SELF_REGISTERING = ("olemsg32", "desknotes")
KNOWN_FOLDERS = ("Inbox", "Outbox", "Sent Items", "Deleted Items")
# Wine has a rasapi32.dll of its own, which would be taken before that in system32.
# mapi32.dll hands Simple MAPI on to DLLPath; only a DLLPathEx gets MAPIFreeBuffer too.
REGISTRY = """REGEDIT4

[HKEY_LOCAL_MACHINE\\Software\\Clients\\Mail]
@="Quillon Desk"

[HKEY_LOCAL_MACHINE\\Software\\Clients\\Mail\\Quillon Desk]
@="Quillon Desk"
"DLLPath"="C:\\\\windows\\\\system32\\\\deskmapi.dll"
"DLLPathEx"="C:\\\\windows\\\\system32\\\\deskmapi.dll"

[HKEY_CURRENT_USER\\Software\\Wine\\AppDefaults\\quillon.exe\\DllOverrides]
"rasapi32"="native,builtin"
"""


def on_one_line(text):
    for plain, written in (("\\", "\\\\"), ("\n", "\\n"), ("\r", "\\r"), ("\t", "\\t")):
        text = text.replace(plain, written)
    return text


def from_one_line(value):
    text, letters = "", iter(value)
    for letter in letters:
        if letter == "\\":
            letter = next(letters, "\\")
            letter = {"n": "\n", "r": "\r", "t": "\t"}.get(letter, letter)
        text += letter
    return text


class Attachment:
    def __init__(self, directory, columns):
        self.name = columns[0]
        self.position = int(columns[2])
        self.content = (directory / columns[1]).read_bytes() if columns[1] else None


class Message:
    """`recipients` are (class, name, address); what is not said is empty or False."""

    def __init__(self, directory):
        self.id = directory.name
        head, _, self.body = (directory / "message.txt").read_bytes().partition(b"\n\n")
        self.text = self.body.decode(errors="replace")
        self.recipients, self.attachments, self.fields = [], [], {}
        self._values = {}
        for line in head.decode(errors="replace").split("\n"):
            key, _, value = line.partition(": ")
            columns = [from_one_line(column) for column in value.split("\t")]
            if key in ("to", "cc", "bcc"):
                self.recipients.append((key, *columns))
            elif key == "attachment":
                self.attachments.append(Attachment(directory, columns))
            elif key == "field":
                self.fields[columns[0]] = columns[2]
            else:
                self._values[key] = columns[0]
        self.subject, self.date = self.value("subject"), self.value("date")
        self.message_class = self.value("class")
        self.sender = (self.value("sender"), self.value("sender address"))
        self.unread, self.receipt = self.flag("unread"), self.flag("receipt")
        self.sent = self.flag("sent")
        rich = directory / "rich.txt"
        self.rich_text = rich.read_bytes().decode() if self.flag("rich") else ""

    def value(self, key):
        return self._values.get(key, "")

    def flag(self, key):
        return self.value(key) == "yes"


class Store:
    def __init__(self, place):
        self.place = pathlib.Path(place)

    def accounts(self):
        """Profile, name and address of each."""
        found = []
        for file in sorted(self.place.glob("mailboxes/*/account.txt")):
            values = dict(line.split(": ", 1) for line in
                          file.read_text(encoding="utf-8").splitlines() if line)
            found.append((file.parent.name, values["name"], values["address"]))
        return found

    def add_folder(self, mailbox, path):
        """One more folder, in one that is there."""
        parent, _, name = path.rpartition("/")
        self._make_folder(dict(self.folders(mailbox))[parent] / "folders" / name, name)

    def add_account(self, profile, name, address, password="secret"):
        """One more account, with the folders that every account has."""
        mailbox = self.place / "mailboxes" / profile
        for path in ("", *KNOWN_FOLDERS):
            place = mailbox / "folders" / (pathlib.Path("folders", path) if path else "")
            self._make_folder(place, path or profile)
        (mailbox / "account.txt").write_text(
            f"name: {name}\naddress: {address}\npassword: {password}\n", encoding="utf-8")

    def folders(self, mailbox, place=None, path=""):
        """The path of each folder of a mailbox, "" its root, and the directory it is in."""
        place = place or self.place / "mailboxes" / mailbox / "folders"
        found = [(path, place)]
        for below in sorted((place / "folders").iterdir()):
            [name] = [from_one_line(line[6:]) for line in
                      (below / "folder.txt").read_text(encoding="utf-8").splitlines()
                      if line.startswith("name: ")]
            found += self.folders(mailbox, below, f"{path}/{name}" if path else name)
        return found

    def messages(self, mailbox, folder="Inbox"):
        """Oldest first. Mail for nobody here is in messages("Outside", "")."""
        place = dict(self.folders(mailbox))[folder]
        return [Message(directory) for directory in sorted((place / "messages").iterdir())]

    def remove(self, message):
        [place] = self.place.glob(f"mailboxes/**/messages/{message.id}")
        shutil.rmtree(place)

    def calls(self):
        """The calls of all faces so far, as "MAPILogoff session=4097 flags=0"."""
        log = self.place / "calls.txt"
        lines = log.read_text(encoding="utf-8").splitlines() if log.exists() else []
        return [from_one_line(line) for line in lines]

    def forget_calls(self):
        (self.place / "calls.txt").unlink(missing_ok=True)

    def faults(self, text=""):
        """What shall go wrong from now on, a line each: "MAPISendMail 3", "MAPIReadMail#2 19" for
        the second call in a process, "MAPIFindNext pump 500" (see desk/win32/Trouble.h).
        "Notes.NotesSession" takes a number of its own, "NotesDocument.Send 4060", and an HRESULT
        that the call itself fails with, "NotesView.Name 0x80020006"; 0x800706BA ends the client,
        for all objects that there are. "NotesUser bob" stands for no call: it tells whose client
        it is."""
        self._put("faults.txt", text)

    def dialog(self, word=None):
        """What the user does in dialogs: "send", "cancel", "change subject ...", "add NAME",
        "pick NUMBER", "add all" (of the address book); None: there is no display."""
        self._put("dialog.txt", word)

    def add_message(self, mailbox, folder="Inbox", subject="", text="", unread=True,
                    message_class="IPM.Note", sender=("Carl Example", "SMTP:carl@elsewhere.example"),
                    date="2024/05/06 07:08", recipients=(), attachments=()):
        """Puts a message into a folder, as if it had arrived; returns its identifier.
        `attachments` are (name, bytes)."""
        name = self._new_id()
        making = self.place / "making" / name
        making.mkdir()
        lines = ["subject: " + on_one_line(subject), "class: " + message_class]
        for key, value in (("sender", sender[0]), ("sender address", sender[1]), ("date", date)):
            lines += [f"{key}: {on_one_line(value)}"] if value else []
        lines += ["unread: yes"] if unread else []
        lines += ["sent: yes"]
        lines += ["\t".join((f"{kind}: {on_one_line(who)}", on_one_line(address)))
                  for kind, who, address in recipients]
        for number, (shown, content) in enumerate(attachments, 1):
            (making / f"{number}.file").write_bytes(content)
            lines.append(f"attachment: {on_one_line(shown)}\t{number}.file\t-1\t1\t")
        (making / "message.txt").write_text("\n".join(lines) + "\n\n" + text, encoding="utf-8",
                                            newline="")
        making.rename(dict(self.folders(mailbox))[folder] / "messages" / name)
        return name

    def _make_folder(self, place, name):
        for inner in ("messages", "folders"):
            (place / inner).mkdir(parents=True)
        (place / "folder.txt").write_text(f"name: {name}\nid: {self._new_id()}\n")

    def _new_id(self):
        self._last = max(time.time_ns() // 1000, getattr(self, "_last", 0) + 1)
        return f"{self._last:014X}FFF"

    def _put(self, name, text):
        if text:
            (self.place / name).write_text(text.rstrip("\n") + "\n", encoding="utf-8")
        else:
            (self.place / name).unlink(missing_ok=True)


def system_directory(drive_c):
    """Where 32-bit programs find the system's libraries."""
    beside_64_bit = drive_c / "windows" / "syswow64"
    return beside_64_bit if beside_64_bit.is_dir() else drive_c / "windows" / "system32"


def install(run, drive_c, faces=FACES):
    """Puts the stand-ins into a Wine prefix, registers them, and returns their store; `run` runs a
    Windows program there to its end. A library that is loaded already stays as it is."""
    system = system_directory(drive_c)
    tools = "" if system.name == "system32" else f"C:\\windows\\{system.name}\\"
    built = [face for face in faces if (DOUBLES / f"{face}.dll").exists()]
    for face in built:
        shutil.copy(DOUBLES / f"{face}.dll", system)
    place = drive_c / PLACE
    place.mkdir(exist_ok=True)
    entries = place / "install.reg"
    entries.write_text(REGISTRY, newline="\r\n")
    run(tools + "regedit.exe", "/S", f"C:\\{PLACE}\\install.reg")
    for face in built:
        if face in SELF_REGISTERING:
            run(tools + "regsvr32.exe", "/s", f"{face}.dll")
    # The first face that is asked for anything makes the store.
    if not (place / "addressbook.txt").exists():
        run(tools + "rundll32.exe", "deskmapi.dll,OpenDesk")
    return Store(place)


def show_store(store):
    accounts = {profile: f"{name} <{address}>" for profile, name, address in store.accounts()}
    for mailbox in sorted(path.name for path in (store.place / "mailboxes").iterdir()):
        print(f"{mailbox}  {accounts.get(mailbox, '')}".rstrip())
        for path, place in store.folders(mailbox):
            count = len(list((place / "messages").iterdir()))
            if path or count:
                print(f"  {path or '.'}  {count}")


def show_folder(store, mailbox, folder):
    for message in store.messages(mailbox, folder):
        marks = ("*" if message.unread else " ") + ("+" if message.attachments else " ")
        print(f"{message.id[-9:]} {marks} {message.date or '-':16}  {message.sender[0] or '-':16}"
              f"  {message.subject}")


def show_message(directory):
    message = Message(directory)
    print(f"{message.id}  {message.message_class}  in {directory.parent.parent}")
    print(f"From: {message.sender[0]} <{message.sender[1]}>")
    for kind, name, address in message.recipients:
        print(f"{kind.capitalize()}: {name}" + (f" <{address}>" if address else ""))
    print(f"Date: {message.date}\nSubject: {message.subject}")
    marks = [mark for mark in ("unread", "receipt", "delivery", "sent") if message.flag(mark)]
    print(f"Marks: {' '.join(marks)}")
    for attachment in message.attachments:
        size = "a link" if attachment.content is None else f"{len(attachment.content)} bytes"
        print(f"File: {attachment.name}, {size}")
    for name, value in message.fields.items():
        print(f"Field: {name} = {value}")
    print("\n" + message.text)
    if message.rich_text:
        print("\nRich text:\n" + message.rich_text)


def installed_in_wine(preferred):
    wine = str(TOP / "tools" / "wine" / "run.sh")
    prefix = _wine_prefix()

    def run(*words):
        subprocess.run([wine, *words], stdin=subprocess.DEVNULL, check=True,
                       env={**os.environ, "WINEPREFIX": str(prefix)})

    run("cmd", "/c", "exit")  # makes the prefix when there is none
    for face in set(PREFERRED_FACES) - set(preferred):
        (system_directory(prefix / "drive_c") / f"{face}.dll").unlink(missing_ok=True)
    return install(run, prefix / "drive_c", (*FACES, *preferred))


def _wine_prefix():
    named = os.environ.get("WINEPREFIX")
    return pathlib.Path(named or os.path.join(os.environ["QUILLON_CACHE"], "wine", "developer"))


def show(store, what):
    if what is None:
        show_store(store)
        return 0
    mailbox, _, folder = what.partition("/")
    if (store.place / "mailboxes" / mailbox).is_dir():
        if folder not in dict(store.folders(mailbox)):
            return f"{mailbox} has no folder {folder!r}"
        show_folder(store, mailbox, folder)
        return 0
    found = [path for path in (store.place / "mailboxes").glob("**/messages/*")
             if path.name.endswith(what.upper())]
    if len(found) != 1:
        return f"{len(found)} messages have an identifier that ends with {what!r}"
    show_message(found[0])
    return 0


def main(arguments):
    if arguments[:1] == ["--install"]:
        if not set(arguments[1:]) <= set(PREFERRED_FACES):
            return __doc__
        print(f"installed; its store is {installed_in_wine(arguments[1:]).place}")
        return 0
    place = _wine_prefix() / "drive_c" / PLACE
    if arguments and (pathlib.Path(arguments[0]) / "mailboxes").is_dir():
        place = pathlib.Path(arguments.pop(0))
    if len(arguments) > 1 or arguments[:1] in (["-h"], ["--help"]):
        return __doc__
    if not (place / "mailboxes").is_dir():
        return f"there is no store in {place}; ./dev desk --install makes one for ./dev wine"
    return show(Store(place), arguments[0] if arguments else None)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
