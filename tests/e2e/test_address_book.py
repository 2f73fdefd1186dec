"""The AddressBook: one script walks the desk's book on each mail system that has one."""

import pathlib
import unittest

from scripting import ENDINGS, ScriptTest, install_desk, prefix_with_server, run_script

SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"
SESSION = (SCRIPTS / "session.vbs").read_text()
PRELUDE = (SCRIPTS.parent / "scripts" / "check.vbs").read_text() + SESSION

BOOK = ["Carl Carpenter <SMTP:carl@outside.example>", "The Team <SMTP:team@desk.example> group",
        "Zoe <FAX:5551234>"]
ENTRIES = [("Ann Archer", "ann@desk.example", 0), ("Bob Baker", "bob@desk.example", 0),
           ("Carl Carpenter", "carl@outside.example", 0), ("The Team", "team@desk.example", 1),
           ("Zoe", "FAX:5551234", 0)]


class Books(ScriptTest):
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
        script = PRELUDE + (SCRIPTS / "address_book.vbs").read_text() + ENDINGS["vbs"]
        self.store.dialog("add all")
        for system, groups, how in self.systems:
            with self.subTest(system=system):
                ended, lines = run_script(self.wine, script, str(system), how)
                self.assertTrue(ended, lines)
                found = [line.split("|") for line in lines]
                self.assertEqual(
                    [(name, address, kind if groups else 0) for name, address, kind in ENTRIES],
                    [(name.removesuffix("/Desk"), address.removeprefix("SMTP:"), int(kind))
                     for name, address, kind in found])


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


class OnVim(Books, unittest.TestCase):
    faces = ("deskmapi", "vim32")
    systems = ((2, True, "list"),)


class OnPlainMapi(Books, unittest.TestCase):
    faces = ("deskmapi",)
    systems = ((1, False, "choose"),)


if __name__ == "__main__":
    unittest.main()
