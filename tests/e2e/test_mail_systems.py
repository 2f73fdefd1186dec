"""The same scripts through all mail systems: Internet mail with a mail host behind it, MHS with its
directory, VINES with the sample provider, and the others with the desk."""

import contextlib
import pathlib
import random
import re
import shutil
import tempfile
import threading
import unittest

import smf
from scripting import (ENDINGS, MailHost, ScriptTest, SCRIPTS, install_desk, prefix_with_server,
                       register_sleeper, run_script)
import desk
import winetest

DESK_SCRIPTS = pathlib.Path(__file__).resolve().parent / "desk"
SAMPLE_PROVIDER = winetest.TOP / "build" / "windows" / "examples" / "sample_provider.dll"
TABLE = winetest.TOP / "docs" / "mail-systems" / "README.md"

SIMPLE_MAPI, VIM, MHS, ACTIVE_MESSAGING, INTERNET, NOTES, VINES = 1, 2, 3, 9, 10, 11, 20
ALL = (SIMPLE_MAPI, VIM, MHS, ACTIVE_MESSAGING, INTERNET, NOTES, VINES)

FACES = ("deskmapi", "olemsg32", "mapirtf", "vim32", "desknotes")
FOLDER, NEW_FOLDER, BOARD = "Projects", "Made", "News"
PROVIDER = "[VINES]\nProvider=C:\\Quillon\\sample_provider.dll\n"
MAIL_ROOM = "[MHS]\nPostOffice=C:\\MailRoom\n"


def setUpModule():
    global WINE, STORE
    WINE = prefix_with_server()
    STORE = install_desk(WINE, FACES)
    register_sleeper(WINE)
    shutil.copy(SAMPLE_PROVIDER, WINE.drive_c / "Quillon")
    STORE.add_folder("Public Folders", BOARD)
    smf.PostOffice(WINE.drive_c / "MailRoom", ["ann", "bob"])


def configure(text=""):
    (WINE.drive_c / "Quillon" / "quillon.ini").write_text(text, newline="\r\n")


@contextlib.contextmanager
def mail_carried(office):
    """Somebody carries the mail of an MHS post office all the time."""
    done = threading.Event()

    def carry():
        while not done.wait(0.05):
            office.move()

    carrier = threading.Thread(target=carry)
    carrier.start()
    try:
        yield
    finally:
        done.set()
        carrier.join()


@contextlib.contextmanager
def behind(system):
    """What a script is told of the system, beside its number: post office and ports."""
    place = {INTERNET: "127.0.0.1", MHS: "C:\\MailRoom", VINES: "C:\\SampleMail"}.get(system, "")
    if FOLDER not in dict(STORE.folders("ann")):
        STORE.add_folder("ann", FOLDER)
    for user in ("ann", "bob"):
        (WINE.drive_c / "SampleMail" / user / FOLDER).mkdir(parents=True, exist_ok=True)
    room = smf.PostOffice(WINE.drive_c / "MailRoom", ["ann", "bob"])
    with MailHost(login=("ann", "secret")) as host, mail_carried(room):
        yield place, host.smtp, host.pop


def script_of(name):
    return (DESK_SCRIPTS / "anywhere.vbs").read_text() + (DESK_SCRIPTS / name).read_text()


class OneScript(ScriptTest, unittest.TestCase):
    maxDiff = None

    def setUp(self):
        configure(PROVIDER)

    def test_there_and_back(self):
        """The mail system is all that the runs differ in; the files are the same, byte for byte."""
        source = random.Random(1)
        contents = {"one.bin": source.randbytes(100000), "two.txt": b"a\r\n.\r\n\x1a\0b"}
        for system in ALL:
            with (self.subTest(system=system), tempfile.TemporaryDirectory() as scratch,
                  behind(system) as place):
                sent = pathlib.Path(scratch, "sent")
                received = pathlib.Path(scratch, "received")
                sent.mkdir()
                received.mkdir()
                for name, content in contents.items():
                    (sent / name).write_bytes(content)
                self.run_checks(WINE, script_of("round.vbs"), system, *place,
                                winetest.windows_path(sent), winetest.windows_path(received))
                self.assertEqual(contents, {file.name: file.read_bytes()
                                            for file in received.iterdir()})
                self.assertEqual([], STORE.messages("ann"))

    def test_which_member_works_where(self):
        """The table of the documents, member for member."""
        told = table()
        self.assertEqual(set(ALL), set(told))
        for system in ALL:
            with self.subTest(system=system), behind(system) as place:
                ended, lines = run_script(
                    WINE, (SCRIPTS / "check.vbs").read_text() + script_of("members.vbs")
                    + ENDINGS["vbs"], system, *place, FOLDER, NEW_FOLDER, f"Public Folders/{BOARD}")
                self.assertTrue(ended, lines)
                self.assertEqual(told[system], dict(line.split("=", 1) for line in lines))


def table():
    """{mail system: {member: "yes" or "-"}} as the documents have it."""
    rows = [[cell.strip() for cell in line.strip("|\n").split(" | ")]
            for line in TABLE.read_text().splitlines() if line.startswith("| ")]
    systems = [int(cell.rstrip(" |").rpartition(" ")[2]) for cell in rows[0][1:]]
    return {system: {member: row[column].rstrip(" |")
                     for row in rows[1:] for member in re.findall(r"`(\w+)`", row[0])}
            for column, system in enumerate(systems, 1)}


class Detection(ScriptTest, unittest.TestCase):
    """What is found, as one mail system after the other is taken away."""

    def found(self):
        lines = run_script(WINE, """
Dim mail
Set mail = CreateObject("QuillonInterface.Server")
mail.SetNativeSystem
WScript.Echo mail.mailSystem & " " & mail.GetInterfaceString(40)
""" + ENDINGS["vbs"])[1]
        WINE.wait_until_gone("quillon.exe")
        return lines

    def test_the_order(self):
        configure(PROVIDER + MAIL_ROOM)
        self.addCleanup(configure)
        self.assertEqual(["20 VINES"], self.found())
        configure(MAIL_ROOM)
        self.assertEqual(["2 VIM"], self.found())
        library = desk.system_directory(WINE.drive_c) / "vim32.dll"
        library.rename(library.with_suffix(".away"))
        self.addCleanup(library.with_suffix(".away").rename, library)
        self.assertEqual(["3 MHS"], self.found())
        configure()
        self.assertEqual(["5 CSERVE"], self.found())
        configure("[Server]\nMailSystem=ACTIVEMESSAGING\n")
        self.assertEqual(["9 ACTIVEMESSAGING"], self.found())


if __name__ == "__main__":
    unittest.main()
