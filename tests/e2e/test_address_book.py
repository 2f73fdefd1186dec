"""The AddressBook: one script walks the desk's book on each mail system that has one."""

import pathlib
import shutil
import unittest

from scripting import ENDINGS, ScriptTest, install_desk, prefix_with_server, run_script
import winetest

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"
SESSION = (SCRIPTS / "session.vbs").read_text()
PRELUDE = (SCRIPTS.parent / "scripts" / "check.vbs").read_text() + SESSION
SAMPLE = winetest.WINDOWS_BUILD / "examples" / "sample_provider.dll"

BOOK = ["Carl Carpenter <SMTP:carl@outside.example>", "The Team <SMTP:team@desk.example> group",
        "Zoe <FAX:5551234>"]
ENTRIES = [("Ann Archer", "ann@desk.example", 0), ("Bob Baker", "bob@desk.example", 0),
           ("Carl Carpenter", "carl@outside.example", 0), ("The Team", "team@desk.example", 1),
           ("Zoe", "FAX:5551234", 0)]


class Walk(ScriptTest):
    def walk(self, system, *arguments):
        """The entries, with names and addresses as all mail systems have them."""
        script = PRELUDE + (SCRIPTS / "address_book.vbs").read_text() + ENDINGS["vbs"]
        ended, lines = run_script(self.wine, script, str(system), *arguments)
        self.assertTrue(ended, lines)
        return [(name.removesuffix("/Desk"), address.removeprefix("SMTP:"), int(kind))
                for name, address, kind in (line.split("|") for line in lines)]


class Books(Walk):
    """`systems`: the mail system, whether it knows groups, and how its entries are to be had. Notes
    names its own users with their organisation; not all have the kind of an address."""

    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.store = install_desk(cls.wine, cls.faces)

    def setUp(self):
        self.put_book(BOOK)
        self.addCleanup(self.store.dialog)

    def put_book(self, lines):
        (self.store.place / "addressbook.txt").write_text("\n".join(lines) + "\n")

    def test_the_same_entries_there_and_back(self):
        self.store.dialog("add all")
        for system, groups, how in self.systems:
            with self.subTest(system=system):
                self.assertEqual(
                    [(name, address, kind if groups else 0) for name, address, kind in ENTRIES],
                    self.walk(system, how))


class OnMapi(Books, unittest.TestCase):
    faces = ("deskmapi", "vbamap32", "olemsg32", "desknotes")
    systems = ((1, False, "choose"), (9, True, "list"), (11, True, "list"))

    def test_what_is_refused(self):
        self.run_checks(self.wine, SESSION + (SCRIPTS / "address_books.vbs").read_text())

    def test_a_choice_goes_to_the_recipients(self):
        self.store.dialog("add all")
        for system in ("1", "9"):
            self.run_checks(self.wine, SESSION + """
Dim book
NewServer WScript.Arguments(0)
mail.AddRecipientCc "Dora <SMTP:dora@outside.example>"
Set book = CreateObject("QuillonInterface.AddressBook")
Set book.MailObject = mail
book.ShowAddressBook
Same "to", "Ann Archer <SMTP:ann@desk.example>", mail.GetMessageItem(1, 0)
Same "cc", "Dora <SMTP:dora@outside.example>", mail.GetMessageItem(2, 0)
Same "all", CLng(5), CLng(mail.GetMessageItemCount(1))
""", system)
        self.assertEqual("left=0", [call for call in self.store.calls()
                                    if call.startswith("MAPIFreeBuffer")][-1].split()[-1])

    def test_twenty_thousand_entries(self):
        self.put_book(f"Person {number:05} <SMTP:p{number}@x.example>" for number in range(20000))
        self.run_checks(self.wine, SESSION + """
Dim book, names, count
NewServer 9
Set book = CreateObject("QuillonInterface.AddressBook")
Set book.MailObject = mail
book.OpenAddressBook
Same "first", "Ann Archer", book.Name
Same "found", CInt(-1), book.Find("person 19999")
Same "address", "SMTP:p19999@x.example", book.Address
Same "count", CLng(20002), book.Count
book.GetAddressBookItems 1, names, count
Same "items", CLng(20001), UBound(names)
""")


class InAnotherProcess(Books, unittest.TestCase):
    """The address book and its Server have a process each. Wine, unlike Windows, does not carry the
    texts of errors from one to the other."""
    faces = OnMapi.faces
    systems = OnMapi.systems

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        configuration = cls.wine.drive_c / "Quillon" / "quillon.ini"
        configuration.write_text("[Server]\r\nProcessPerClient=TRUE\r\n", newline="")

    def test_what_is_refused(self):
        self.run_checks(self.wine, SESSION + """
Dim book
NewServer 9
Set book = CreateObject("QuillonInterface.AddressBook")
On Error Resume Next
book.OpenAddressBook
Same "no Server", CLng(750), Err.Number - vbObjectError
Same "its text", "The Address Book MailObject property is not set or is nothing.", Err.Description
Err.Clear
Set book.MailObject = book
Same "no Server either", CLng(529), Err.Number - vbObjectError
Err.Clear
Set book.MailObject = mail
Same "taken", CLng(0), Err.Number
book.MoveFirst
Same "closed", CLng(751), Err.Number - vbObjectError
Err.Clear
mail.NewMessage
Set book.MailObject = Nothing
book.MoveFirst
Same "no Server any more", CLng(750), Err.Number - vbObjectError
""")


class OnVim(Books, unittest.TestCase):
    faces = ("deskmapi", "vim32")
    systems = ((2, True, "list"),)


class InFiles(Walk, unittest.TestCase):
    """Where the books are files that these tests write."""

    # What is refused, and what ends a book. Arguments: the mail system, the post office, the books.
    REFUSED = """
Dim book, names, name
NewServer WScript.Arguments(0)
mail.postOffice = WScript.Arguments(1)
Set book = CreateObject("QuillonInterface.AddressBook")
Set book.MailObject = mail
For Each name In book.BookNames
  names = names & name & ";"
Next
Same "books", WScript.Arguments(2), names
book.OpenAddressBook book.BookNames.Item(book.BookNames.Count)
Same "found", CInt(-1), book.Find("bob")
On Error Resume Next
book.OpenAddressBook "None"
Raised "no such book", 529
book.ShowAddressBook
Raised "no window", 754
Same "still open", "bob", LCase(Left(book.Name, 3))
mail.Logout
name = book.Name
Raised "the session has ended", 751
mail.Login
name = book.Name
Raised "another session", 751
Set book = Nothing
"""

    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.mail = cls.wine.drive_c / "Mail"

    def check(self, system, entries, books, configuration):
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
        (self.wine.drive_c / "Quillon" / "quillon.ini").write_text(configuration)
        self.assertEqual(entries, self.walk(system, "list", "C:\\Mail"))
        self.run_checks(self.wine, SESSION + self.REFUSED, str(system), "C:\\Mail", books)

    def test_mhs(self):
        """What is no address of MHS is left out, and users who are in the table come once."""
        mail = self.mail / "MHS" / "MAIL"
        for directory in ("SND", "PARCEL", "PUBLIC", "USERS/ann/MHS", "USERS/bob/MHS"):
            (mail / directory).mkdir(parents=True)
        (mail / "PUBLIC" / "NETDIR.TAB").write_text("; names\n" + "".join(
            f"{address} ({name})\n" for name, address, _ in ENTRIES))
        self.check(3, [(name, address, 0) for name, address, _ in ENTRIES if "@" in address],
                   "MHS;", "[MHS]\nWorkgroup=desk.example\n")

    def test_a_provider_library(self):
        shutil.copy(SAMPLE, self.wine.drive_c)
        for user in ("ann", "bob"):
            (self.mail / user).mkdir(parents=True)
        (self.mail / "book.txt").write_text("".join(
            f"{'*' * kind}{name}\t{address}\n" for name, address, kind in ENTRIES))
        self.check(20, ENTRIES, "Book;Users;", "[VINES]\nProvider=C:\\sample_provider.dll\n")


class OnPlainMapi(Books, unittest.TestCase):
    faces = ("deskmapi",)
    systems = ((1, False, "choose"),)


if __name__ == "__main__":
    unittest.main()
