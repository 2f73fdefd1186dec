"""Mail system 20 with the sample of a provider library, and with libraries that do not fit."""

import pathlib
import random
import shutil
import tempfile
import unittest

from scripting import ScriptTest, prefix_with_server
import winetest

SCRIPT = pathlib.Path(__file__).resolve().parent / "desk" / "vines.vbs"
SAMPLE = winetest.WINDOWS_BUILD / "examples" / "sample_provider.dll"
BAD = winetest.DOUBLES / "badprovider.dll"

ABSENT = """
Set mail = CreateObject("QuillonInterface.Server")
Same "not present", True, mail.QueryMailSystem(20) = 0
mail.SetNativeSystem
Same "another one is found", True, mail.mailSystem <> 20
mail.mailSystem = 20
On Error Resume Next
mail.Login
Raised "login", {number}
mail.Login
RaisedText "login", "{text}"
"""

BROKEN = """
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = 20
mail.loginName = "ann"
mail.Password = "secret"
On Error Resume Next
mail.Login
Raised "login", {number}
mail.Login
Raised "and again", {number}
Same "still there", 20, mail.mailSystem
"""


class VinesTest(ScriptTest, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = prefix_with_server()
        cls.place = cls.wine.drive_c / "Provider"
        cls.place.mkdir()

    def configure(self, line):
        (self.wine.drive_c / "Quillon" / "quillon.ini").write_text(f"[VINES]\n{line}\n")
        # A library that has been loaded stays as long as the process.
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))

    def test_what_a_script_sees(self):
        shutil.copy(SAMPLE, self.place)
        self.configure("Provider=C:\\Provider\\sample_provider.dll")
        with tempfile.TemporaryDirectory(prefix="vines-") as scratch:
            mail, sent, received = (pathlib.Path(scratch, name)
                                    for name in ("mail", "sent", "received"))
            for directory in (mail / "ann" / "old", mail / "bob", sent, received):
                directory.mkdir(parents=True)
            (mail / "ann" / "password.txt").write_text("secret")
            contents = {"one.bin": random.Random(3).randbytes(100000),
                        "two.txt": b"a\r\n.\r\n\x1a\0b"}
            for name, content in contents.items():
                (sent / name).write_bytes(content)
            self.run_checks(self.wine, SCRIPT.read_text(),
                            *(winetest.windows_path(place) for place in (mail, sent, received)))
            self.assertEqual(contents, {file.name: file.read_bytes()
                                        for file in received.iterdir()})
            self.assertEqual(2, len(list((mail / "bob" / "inbox").iterdir())))

    def test_a_library_that_is_missing_or_does_not_fit(self):
        missing = (3990, "The provider library was not found, or cannot be loaded.")
        other = (3991, "The provider library does not fit this version.")
        shutil.copy(BAD, self.place / "other version.dll")
        for line, (number, text) in {
                "": missing,
                "Provider=C:\\Provider\\none.dll": missing,
                "Provider=kernel32.dll": other,
                "Provider=C:\\Provider\\other version.dll": other}.items():
            with self.subTest(line):
                self.configure(line)
                self.run_checks(self.wine, ABSENT.format(number=number, text=text))

    def test_a_library_that_fails_badly(self):
        for how, number in {"fault": 3992, "raise": 3992, "no session": 3993}.items():
            with self.subTest(how):
                shutil.copy(BAD, self.place / f"{how}.dll")
                self.configure(f"Provider=C:\\Provider\\{how}.dll")
                self.run_checks(self.wine, BROKEN.format(number=number))


if __name__ == "__main__":
    unittest.main()
