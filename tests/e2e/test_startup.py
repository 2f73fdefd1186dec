"""The program started with a command line of its own, on a display: what it does, the boxes it
shows, its exit status, and what other programs find while it keeps running."""

import pathlib
import shutil
import unittest

from scripting import ENDINGS, install_desk, run_script
import winetest

PATIENCE = 60
TITLE = "Quillon OLE Server"
NO_SYSTEM = "No mail system was detected on workstation."
NO_MESSAGING = ("You must install Active Messaging to be able to send mail via your Microsoft mail "
                "system.")
TOO_MANY = "The command line has more than 20 items. Those behind the twentieth are ignored."
INVALID = "Invalid property value."

# Command line, text of the box, exit status, and the calls that reach mail libraries.
RUNS = [
    ("MS=1, LN=ann, PW=secret, LI=Y", None, 0, "MAPILogon"),
    ("ms=2,Ln=ann,pw=secret,PO=C:\\QuillonDesk,li=-1", None, 0, "VIMOpenSession"),
    ("-Embedding MS=1, =x, PO=, nonsense, LN=ann, PW=secret, LI=yes", None, 0, "MAPILogon"),
    ("MS=1, LN=ann, PW=secret, LI=no", None, 0, ""),
    ("MS=1, LN=ann, PW=wrong, LI=Y, KR=Y", "Login failed", 1, "MAPILogon"),
    ("MS=77, LI=Y, KR=Y", INVALID, 1, ""),
    ("MS=abc, LI=Y", NO_SYSTEM, 1, ""),
    ("MS=1," + "x=1," * 19 + "MS=77", TOO_MANY, 0, ""),
    ("MS=1, LN=" + "n" * 30000, None, 0, ""),
]

SHARE = """
Dim mail
Set mail = CreateObject("QuillonInterface.Server")
WScript.Echo mail.subject & "."
mail.subject = WScript.Arguments(0)
"""


def setUpModule():
    wine = StartUp.wine = unittest.enterModuleContext(winetest.WinePrefix(display=True))
    (wine.drive_c / "Quillon").mkdir()
    StartUp.server = pathlib.Path(shutil.copy(winetest.SERVER, wine.drive_c / "Quillon"))
    wine.register(StartUp.server)


class StartUp(unittest.TestCase):
    def start(self, line, box):
        """Starts the program, and answers the box if one is expected."""
        running = self.wine.start(self.server, *line.split())
        if box is not None:
            answered = self.wine.run(winetest.CLIENTS / "AnswerBoxes.exe", TITLE, timeout=PATIENCE)
            self.assertEqual(f"{TITLE}: {box}\n", answered.output)
        return running

    def status_of(self, line, box=None):
        return self.start(line, box).wait(PATIENCE).returncode

    def test_items(self):
        store = install_desk(self.wine, ("deskmapi", "vim32"))
        for line, box, status, called in RUNS:
            with self.subTest(line[:60]):
                store.forget_calls()
                self.assertEqual(status, self.status_of(line, box))
                names = {call.split(" ")[0] for call in store.calls()}
                opened = names & {"MAPILogon", "VIMOpenSession"}
                self.assertEqual({called} - {""}, opened)

    def test_detection_and_a_kept_process(self):
        text = "[Server]\r\nMailSystem=MAPI\r\n"
        (self.server.parent / "quillon.ini").write_text(text, newline="")
        line = "LN=ann, PW=secret, LI=Y"
        store = install_desk(self.wine, ("deskmapi",))
        self.assertEqual(0, self.status_of(line, NO_MESSAGING))
        self.assertIn("MAPILogon", " ".join(store.calls()))
        self.check_kept(self.start("KR=T", NO_MESSAGING))
        store = install_desk(self.wine, ("deskmapi", "olemsg32"))
        store.forget_calls()
        self.assertEqual(0, self.status_of(line))
        self.assertNotIn("MAPILogon", " ".join(store.calls()))
        self.assertIn("Logon", " ".join(store.calls()))

    def test_the_dialog(self):
        store = install_desk(self.wine, ("deskmapi",))
        store.forget_calls()
        running = self.start("MS=1, LN=ann, PW=secret, LI=Y, SD=Y", None)
        closed = self.wine.run(winetest.CLIENTS / "AnswerBoxes.exe", "/close", "Send Mail Message",
                               timeout=PATIENCE)
        self.assertEqual("", closed.output)
        self.assertEqual(0, running.wait(PATIENCE).returncode)  # to cancel is no failure
        self.assertIn("MAPILogon", " ".join(store.calls()))

    def test_a_box_says_what_it_is_and_programs_are_served_behind_it(self):
        opening = self.wine.drive_c / "opening.vbs"
        opening.write_text('CreateObject("WScript.Shell").Run '
                           f'"{winetest.windows_path(self.server)}", 1, False\n')
        self.wine.run("cscript", "//nologo", opening)
        self.assertEqual((True, ["."]), run_script(self.wine, SHARE + ENDINGS["vbs"], "one"))
        answered = self.wine.run(winetest.CLIENTS / "AnswerBoxes.exe", "Quillon", timeout=PATIENCE)
        self.assertIn("QuillonInterface.Server", answered.output)
        self.assertEqual(0, answered.returncode, answered.output)

    def check_kept(self, kept):
        """Other programs share what it has until it is told to end."""
        scripts = [run_script(self.wine, SHARE + ENDINGS["vbs"], word) for word in ("one", "two")]
        self.assertEqual([(True, ["."]), (True, ["one."])], scripts)
        self.assertIsNone(kept.poll())
        self.assertEqual(1, len(self.wine.processes("quillon.exe")))
        self.assertEqual(0, self.wine.run("taskkill", "/im", "quillon.exe").returncode)
        self.assertEqual(0, kept.wait(PATIENCE).returncode)


if __name__ == "__main__":
    unittest.main()
