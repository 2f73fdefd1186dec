"""Dial-up with a rasapi32.dll that has no line, as scripts see it."""

import struct
import time
import unittest

from scripting import ENDINGS, SCRIPTS, ScriptTest, install_desk, prefix_with_server
import winetest

SERVER = "quillon.exe"
SETTINGS = r"HKCU\Software\Wine\AppDefaults\quillon.exe"
NEW = 'Dim dialer\nSet dialer = CreateObject("QuillonInterface.Dialer")\n'
GONE = "\nSet dialer = Nothing\n"
BUSY = "The line is busy."

# Fields of the dial parameters in their order, with their sizes.
FIELDS = ("entry", "phone", "callback", "user", "password", "domain")
LAYOUTS = {736: (21, 129, 49, 257, 257, 16), 1052: (257, 129, 129, 257, 257, 16)}

PARAMETERS = """
Same "entry", "", dialer.EntryName
Dim long
long = String(300, "e")
dialer.EntryName = long
dialer.PhoneNumber = "0," & String(300, "1")
dialer.username = "J" & Chr(252) & "rgen"
dialer.Password = "secret"
dialer.Domain = "HEADQUARTERS-OF-ALL"
Same "kept", long, dialer.EntryName
dialer.Password = String(100000, "p")
Same "long", 100000, CLng(Len(dialer.Password))
dialer.Password = "secret"
dialer.Dial
Same "active", Left(long, WScript.Arguments(1)), dialer.ActiveEntryName
dialer.HangUp
dialer.HangUp
Same "none", "", dialer.ActiveEntryName
Same "kind", CInt(WScript.Arguments(0)), dialer.OSType
Same "available", CInt(-1), dialer.DialerAvailable
If UBound(Split(dialer.WindowsVersion, ".")) <> 2 Then WScript.Echo dialer.WindowsVersion
"""

# Faults, the statement that fails, the number behind 7000, and the text behind "RAS Error: "; one
# without a number of the service is the whole text.
FAILURES = [
    ("RasDialA 676", "dialer.Dial", 676, BUSY),
    ("RasDialA 691", "dialer.Dial", 691, "The name or the password is wrong."),
    ("RasDialA 632", "dialer.Dial", 632, "The record has the wrong size."),
    ("RasDialA crash", "dialer.Dial", None, "Undetermined error in Dialer object Dial method."),
    ("RasHangUpA 676", "dialer.Dial : dialer.HangUp", 676, BUSY),
]


def setUpModule():
    global wine, store
    wine = prefix_with_server(display=True)  # for a box, and to close the server
    store = install_desk(wine, ("deskmapi", "rasapi32"))


def fields(record):
    """The texts in a record of dial parameters, by its own account of its size."""
    [size] = struct.unpack_from("<I", record)
    assert size == len(record), (size, len(record))
    place, texts = 4, {}
    for name, length in zip(FIELDS, LAYOUTS[size]):
        field = record[place:place + length]
        assert b"\0" in field, f"{name} has no end"
        texts[name] = field[:field.index(b"\0")].decode("cp1252")
        place += length
    return size, texts


def setting(key, name, value):
    wine.run("reg", "add", SETTINGS + key, "/v", name, "/d", value, "/f")


class DialerTest(ScriptTest, unittest.TestCase):
    def setUp(self):
        store.forget_calls()
        store.faults()
        self.addCleanup(store.faults)

    def check(self, body, *arguments):
        self.run_checks(wine, NEW + body + GONE, *arguments)

    def failure(self, statement, number, text):
        code, text = (7000, text) if number is None else (7000 + number, "RAS Error: " + text)
        self.check(f'Dim x\nOn Error Resume Next\n{statement}\n'
                   f'Same "source", "QuillonInterface.Server", Err.Source\n'
                   f'Same "text", "{text}", Err.Description\nRaised "number", CLng({code})')

    def calls(self, name):
        return [call.split(" ", 1)[1] for call in store.calls() if call.startswith(name + " ")]

    def dialled(self, kind, kept):
        self.check(PARAMETERS, kind, kept)
        [record] = self.calls("RasDialA")
        size, texts = fields(bytes.fromhex(record))
        self.assertEqual(dict(entry="e" * kept, phone="0," + "1" * 126, callback="",
                              user="J\u00fcrgen", password="secret", domain="HEADQUARTERS-OF"),
                         texts)
        self.assertEqual(1, len(self.calls("RasHangUpA")))
        return size

    def test_the_records_of_each_kind_of_system(self):
        self.assertEqual(736, self.dialled(5, 20))
        store.forget_calls()
        self.addCleanup(wine.run, "reg", "delete", SETTINGS, "/v", "Version", "/f")
        setting("", "Version", "win98")
        self.assertTrue(wine.wait_until_gone(SERVER))
        self.assertEqual(1052, self.dialled(95, 256))
        setting("", "Version", "win31")
        self.assertTrue(wine.wait_until_gone(SERVER))
        done = wine.run(winetest.client("EarlyBound"), "dialer")
        self.assertEqual("no object: 80040226\n", done.output)
        self.assertTrue(wine.wait_until_gone(SERVER))

    def test_failures_keep_their_numbers_and_leave_no_connection(self):
        for faults, statement, number, text in FAILURES:
            with self.subTest(faults=faults):
                store.forget_calls()
                store.faults(faults)
                self.failure(statement, number, text)
                if statement == "dialer.Dial":
                    self.assertEqual(1, len(self.calls("RasHangUpA")))
        store.faults()
        self.check('dialer.Dial\ndialer.HangUp\nSame "active", "", dialer.ActiveEntryName')

    def test_the_list_of_connections_is_not_trusted(self):
        others = store.place / "connections.txt"
        self.addCleanup(others.unlink)
        others.write_text("x" * 300 + "\nsecond\n")
        store.faults("RasConnectionCount 100000")
        self.check('Same "cut", String(21, "x"), dialer.ActiveEntryName')
        store.faults()
        others.write_text("one too many\n" * 257)
        self.failure("x = dialer.ActiveEntryName", 603,
                     "Undetermined error, RAS could not provide further information.")

    def test_early_bound(self):
        done = wine.run(winetest.client("EarlyBound"), "dialer")
        self.assertEqual("early: ok\n", done.output)

    def start(self, name, body):
        script = wine.drive_c / name
        text = (SCRIPTS / "check.vbs").read_text() + NEW + body + GONE + ENDINGS["vbs"]
        script.write_text(text.replace("\n", "\r\n"))
        running = wine.start("cscript", "//nologo", script)
        self.addCleanup(lambda: running.poll() is None and running.kill())
        return running

    def await_true(self, condition, what):
        deadline = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), deadline, what)
            time.sleep(0.05)

    def test_others_are_served_during_a_dial_and_the_process_ends_in_one(self):
        store.faults("RasDialA#1 stop 60000")
        dialling = self.start("dialling.vbs", "On Error Resume Next\ndialer.Dial")
        self.await_true(lambda: self.calls("RasDialA"), "it does not dial")
        self.check('Set mail = CreateObject("QuillonInterface.Server")\nmail.subject = "now"\n'
                   'Same "subject", "now", mail.subject\ndialer.Dial\ndialer.HangUp')
        self.assertIsNone(dialling.poll(), "the dial has ended before the others were served")
        self.assertEqual(2, len(self.calls("RasDialA")))
        self.assertEqual(1, len(self.calls("RasHangUpA")))
        wine.run("taskkill", "/im", SERVER)
        self.assertTrue(wine.wait_until_gone(SERVER))
        self.assertEqual(2, len(self.calls("RasHangUpA")))
        dialling.wait()

    def test_the_process_lives_as_long_as_a_dialer(self):
        # The wait is longer than a process without objects has patience.
        self.check('Set mail = CreateObject("QuillonInterface.Server")\nSet mail = Nothing\n'
                   'dialer.EntryName = "kept"\nDim begun\nbegun = Timer\n'
                   'Do While Timer - begun < 3\nLoop\nSame "entry", "kept", dialer.EntryName')
        self.assertTrue(wine.wait_until_gone(SERVER))

    def take_library(self, which):
        self.addCleanup(setting, r"\DllOverrides", "rasapi32", "native,builtin")
        setting(r"\DllOverrides", "rasapi32", which)
        self.assertTrue(wine.wait_until_gone(SERVER))

    def test_without_the_library(self):
        self.take_library("")
        self.check('Same "available", CInt(0), dialer.DialerAvailable')
        for statement in ("dialer.Dial", "dialer.HangUp", "x = dialer.ActiveEntryName"):
            self.failure(statement, None, "RASAPI32.DLL could not be loaded.  "
                                          "Remote Access Service may not be installed.")
        self.assertTrue(wine.wait_until_gone(SERVER))

    def test_the_library_that_wine_has_and_the_box(self):
        self.take_library("builtin")
        text = "Function Is Not Supported On This Version of Windows."
        answering = wine.start(winetest.CLIENTS / "AnswerBoxes.exe", "Dialer Error")
        self.check(f"""
Same "active", "", dialer.ActiveEntryName
Set mail = CreateObject("QuillonInterface.Server")
mail.ErrorDisplay = True
On Error Resume Next
dialer.Dial
Same "text", "RAS Error: {text}", Err.Description
Raised "number", CLng(7001)
mail.ErrorDisplay = False
dialer.Dial
Raised "number", CLng(7001)
dialer.HangUp
Raised "hung up", CLng(0)""")
        self.assertEqual(f"Dialer Error: {text}\n", answering.wait().output)
        self.assertTrue(wine.wait_until_gone(SERVER))


if __name__ == "__main__":
    unittest.main()
