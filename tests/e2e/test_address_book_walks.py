"""The same address book through VIM, Notes, MHS and a provider library, as scripts walk it."""

import shutil
import unittest

from scripting import ScriptTest, install_desk, literal, prefix_with_server
import desk
import winetest

GROUP = ("Everybody", "SMTP:everybody@desk.example")
SAMPLE = winetest.WINDOWS_BUILD / "examples" / "sample_provider.dll"

WALK = """
Dim book, text, items, count
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = {system}
mail.postOffice = "{post_office}"
mail.loginName = "ann"
mail.Password = "secret"
Set book = CreateObject("QuillonInterface.AddressBook")
Set book.MailObject = mail
Same "books", "{names}", Names
book.OpenAddressBook
text = ""
book.MoveFirst
Do Until book.EOF
  text = text & book.Name & "|" & book.Address & "|" & book.EntryType & ";"
  book.MoveNext
Loop
Same "forwards", {forwards}, text
text = ""
book.MoveLast
Do Until book.BOF
  text = text & book.Name & "|" & book.Address & "|" & book.EntryType & ";"
  book.MovePrevious
Loop
Same "backwards", {backwards}, text
Same "count", CLng({count}), book.Count
Same "found", True, book.Find("sam smithe") <> 0
Same "its name", "Sam Smithers", book.Name
On Error Resume Next
book.OpenAddressBook "None"
Raised "no such book", 529
book.ShowAddressBook
Raised "no window", 754
mail.Logout
book.MoveFirst
Raised "the session has ended", 751
mail.Login
book.MoveFirst
Raised "another session", 751
book.OpenAddressBook "{last}"
Raised "the last book", 0
book.MoveFirst
Same "it has somebody", True, Len(book.Name) > 0
Set book = Nothing

Function Names
  Dim name
  Names = ""
  For Each name In book.BookNames
    Names = Names & name & ";"
  Next
End Function
"""


class AddressBookWalks(ScriptTest, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.store = install_desk(cls.wine, (*desk.FACES, "vim32"))
        file = cls.store.place / "addressbook.txt"
        file.write_text(file.read_text() + f"{GROUP[0]} <{GROUP[1]}> group\n")
        lines = file.read_text().splitlines()
        cls.entries = [(name, address, 0) for _, name, address in cls.store.accounts()]
        cls.entries += [(name, address, 0) for name, address in
                        (line[:line.index(">")].split(" <") for line in lines[:-1])]
        cls.entries.append((*GROUP, 1))

    def walk(self, system, entries, names, post_office="C:\\Mail"):
        (self.wine.drive_c / "Mail").mkdir(exist_ok=True)
        shown = ["%s|%s|%d;" % entry for entry in entries]
        self.run_checks(self.wine, WALK.format(
            system=system, post_office=post_office, names="".join(name + ";" for name in names),
            last=names[-1], forwards=literal("".join(shown)),
            backwards=literal("".join(reversed(shown))), count=len(shown)))

    def without_kind(self):
        return [(name, address.removeprefix("SMTP:"), kind) for name, address, kind in self.entries]

    def test_vim(self):
        self.walk(2, self.entries, ["Desk"])
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
        self.assertIn("books=0", [call for call in self.store.calls()
                                  if call.startswith("VIMTerminate")][-1])

    def test_notes(self):
        accounts = len(self.store.accounts())
        entries = [(name + "/Desk" * (place < accounts), address, kind)
                   for place, (name, address, kind) in enumerate(self.without_kind())]
        self.walk(11, entries, ["Address Book"], post_office="")

    def test_mhs(self):
        """What is no address of MHS is left out, and the users are in the table too."""
        mail = self.wine.drive_c / "Mail" / "MHS" / "MAIL"
        for directory in ("SND", "PARCEL", "PUBLIC", "USERS/ann/MHS", "USERS/bob/MHS"):
            (mail / directory).mkdir(parents=True)
        entries = [(name, address, 0) for name, address, _ in self.without_kind() if "@" in address]
        (mail / "PUBLIC" / "NETDIR.TAB").write_bytes(b"; names\r\n" + b"".join(
            f"{address} ({name})\r\n".encode() for name, address, _ in entries))
        self.configure("[MHS]\nWorkgroup=desk.example\n")
        self.walk(3, entries, ["MHS"])

    def test_a_provider_library(self):
        shutil.copy(SAMPLE, self.wine.drive_c)
        mail = self.wine.drive_c / "Mail"
        (mail / "ann").mkdir(parents=True, exist_ok=True)
        (mail / "book.txt").write_text("".join(
            f"{'*' * kind}{name}\t{address}\n" for name, address, kind in self.entries))
        self.configure("[VINES]\nProvider=C:\\sample_provider.dll\n")
        self.walk(20, self.entries, ["Book", "Users"])

    def configure(self, text):
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
        (self.wine.drive_c / "Quillon" / "quillon.ini").write_text(text)
