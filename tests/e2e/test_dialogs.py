"""Windows, on a display: the dialogs, worked by keys and mouse alone, each way in and out."""

import contextlib
import pathlib
import tempfile
import unittest

from driving import User
from scripting import ENDED, ENDINGS, MailHost, SCRIPTS, install_desk
import winetest

MAIL = pathlib.Path(__file__).resolve().parent / "mail"
PATIENCE = 60
BUSY = "266 "  # the system's "try again later"
PASSWORD_STYLE = 0x20

# What a script tells of a call that shows a window; the window of its own that it works for is its
# third argument.
CLIENT = """
function tell(action) {
  try {
    action();
    WScript.Echo("done");
  } catch (e) {
    WScript.Echo((e.number & 0xFFFF) + " " + e.description);
  }
}
newServer(WScript.Arguments(0), WScript.Arguments(1));
mail.hWND = WScript.Arguments(2);
"""


def setUpModule():
    Dialogs.wine = unittest.enterModuleContext(winetest.WinePrefix(display=True))
    directory = Dialogs.wine.drive_c / "Quillon"
    directory.mkdir()
    server = directory / "quillon.exe"
    server.write_bytes(winetest.SERVER.read_bytes())
    Dialogs.wine.register(server)
    Dialogs.store = install_desk(Dialogs.wine)


class Client:
    """A script that runs while the user works."""

    def __init__(self, test, running):
        self._test = test
        self.running = running

    def said(self):
        """What it has written, when it has ended."""
        done = self.running.wait(PATIENCE)
        lines = done.output.splitlines()
        self._test.assertEqual(ENDED, lines[-1:] and lines[-1], lines)
        return lines[:-1]


class Dialogs(unittest.TestCase):
    wine = None
    store = None

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="dialog-")))
        self.clients = 0
        self.addCleanup(self.end_what_is_left)
        self.user = self.enterContext(User(self.wine))
        self.configuration = self.wine.drive_c / "Quillon" / "quillon.ini"
        self.configuration.unlink(missing_ok=True)

    def end_what_is_left(self):
        """A failed test leaves its windows."""
        if self.wine.processes("cscript.exe"):
            self.wine.kill("cscript.exe")
            self.wine.kill("quillon.exe")
            self.wine.reset_com()

    def client(self, text, smtp=1, pop=1, owner=0):
        self.clients += 1
        script = self.folder / f"client{self.clients}.js"
        parts = [(SCRIPTS / "check.js").read_text(), (MAIL / "session.js").read_text(), CLIENT,
                 text, ENDINGS["js"]]
        script.write_text("".join(parts), newline="\r\n")
        return Client(self, self.wine.start("cscript", "//nologo", script, smtp, pop, owner))


SELECT = """
tell(function () { mail.ShowMailSystemDialog(); });
WScript.Echo(mail.mailSystem);
"""
SYSTEMS = "Select Mail System"
ABORTED = ["522 User aborted.", "10"]


class SelectMailSystem(Dialogs):
    def selecting(self, **how):
        client = self.client(SELECT, **how)
        self.user.window(SYSTEMS)
        return client

    def test_the_keyboard_selects(self):
        client = self.selecting()
        self.user.expect("Mail systems", "focus")
        lines = [line.split("\t") for line in self.user.rows("Mail systems").splitlines()]
        self.assertEqual(["Internet mail (SMTP and POP3)", "Simple MAPI", "Active Messaging",
                          "Notes", "VIM", "MHS", "VINES"], [name for name, _ in lines])
        self.assertEqual([True] * 4 + [False] * 3, [reason == "" for _, reason in lines])
        self.assertEqual("The library vim32.dll is not installed.", lines[4][1])
        self.user.keys("Down", "Enter")
        self.assertEqual(["done", "1"], client.said())

    def test_a_missing_one_is_reached_and_not_taken(self):
        client = self.selecting()
        self.user.keys("End")
        self.user.expect("0", "enabled", "OK")
        self.user.keys("Enter")
        self.user.keys("Up", "Up", "Up")
        self.user.expect("1", "enabled", "OK")
        self.user.click("OK")
        self.assertEqual(["done", "11"], client.said())

    def test_ways_out(self):
        for leave in (lambda: self.user.keys("Escape"), lambda: self.user.click("Cancel"),
                      self.user.closebox, lambda: self.user.keys("Tab", "Tab", "Space")):
            client = self.selecting()
            leave()
            self.assertEqual(ABORTED, client.said())

    def test_the_owner_waits(self):
        owner = self.user.open("A client's window")
        client = self.selecting(owner=owner)
        place = [int(number) for number in self.user.place().split()]
        self.user.window("A client's window")
        self.user.expect("0", "enabled", "")
        around = [int(number) for number in self.user.place().split()]
        for low, high in ((0, 2), (1, 3)):  # over its middle
            self.assertAlmostEqual(sum(around[low:high + 1:2]), sum(place[low:high + 1:2]), delta=2)
        self.user.window(SYSTEMS)
        self.user.keys("Escape")
        self.assertEqual(ABORTED, client.said())
        self.user.window("A client's window")
        self.user.expect("1", "enabled", "")

    def test_the_owner_goes(self):
        client = self.selecting(owner=self.user.open("A client's window"))
        self.user.destroy()
        self.assertEqual(ABORTED, client.said())

    def test_others_are_served_and_a_second_one_is_told_to_wait(self):
        client = self.selecting()
        with MailHost([b"Subject: one\r\n\r\ntext\r\n"]) as host:
            other = self.client("mail.LoadMessageHeaders();\nWScript.Echo(mail.messageCount);\n" +
                                SELECT, host.smtp, host.pop)
            one, second, system = other.said()
        self.assertEqual(("1", "10"), (one, system))
        self.assertTrue(second.startswith(BUSY), second)
        self.user.keys("Escape")
        self.assertEqual(ABORTED, client.said())

    def test_the_client_goes(self):
        self.selecting().running.kill()
        self.user.keys("Escape")
        self.user.gone(SYSTEMS)
        client = self.selecting()
        self.user.keys("Escape")
        self.assertEqual(ABORTED, client.said())

    def test_the_process_is_told_to_end(self):
        client = self.selecting()
        self.wine.run("taskkill", "/im", "quillon.exe")
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
        client.running.wait(PATIENCE)
        client = self.selecting()
        self.user.keys("Escape")
        self.assertEqual(ABORTED, client.said())


class Login(Dialogs):
    MESSAGE = b"From: bob@example.com\r\nSubject: one\r\n\r\ntext\r\n"
    LIST = """
mail.LoginDialog = -1;
mail.loginName = mail.Password = mail.postOffice = "";
mail.InternetLogging = -1;
tell(function () { mail.LoadMessageHeaders(); });
WScript.Echo(mail.messageCount + " " + mail.postOffice + " " + mail.loginName);
mail.InternetLogging = 0;
"""

    @contextlib.contextmanager
    def asked(self, text, caption):
        with MailHost([self.MESSAGE]) as host:
            client = self.client(text, host.smtp, host.pop)
            self.user.window(caption)
            yield client, host

    def test_pop(self):
        with self.asked(self.LIST, "POP Login") as (client, _):
            self.user.expect("POP3 server", "focus")
            self.user.type(" 127.0.0.1 ")
            self.user.keys("Tab")
            self.user.expect("User name", "focus")
            self.user.type("joe")
            self.user.keys("Alt+p")
            self.user.expect("Password", "focus")
            self.assertTrue(int(self.user.style("Password")) & PASSWORD_STYLE)
            self.user.type("secret")
            self.user.keys("Enter")
            self.assertEqual(["done", "1 127.0.0.1 joe"], client.said())
        log = (self.wine.drive_c / "Quillon" / "POPDUMP.TXT").read_bytes()
        self.assertIn(b"PASS ****", log)
        self.assertNotIn(b"secret", log + self.configuration.read_bytes())
        # The server that was used last is offered, and no password.
        with self.asked(self.LIST, "POP Login") as (client, _):
            self.user.expect("User name", "focus")
            self.user.expect("127.0.0.1", "read", "POP3 server")
            self.user.expect("", "read", "Password")
            self.user.keys("Enter")
            self.assertEqual("544 Insufficient login information.", client.said()[0])

    def test_smtp(self):
        send = """
mail.LoginDialog = -1;
mail.SMTPServer = mail.from = "";
mail.AddRecipientTo("bob@example.com");
tell(function () { mail.Send(); });
WScript.Echo(mail.SMTPServer + " " + mail.from);
"""
        with self.asked(send, "SMTP Login") as (client, host):
            self.user.paste("127.0.0.1")
            self.user.keys("Alt+a")
            self.user.type("ann@example.com")
            self.user.click("OK")
            self.assertEqual(["done", "127.0.0.1 ann@example.com"], client.said())
            self.assertIn(b"From: ann@example.com", host.received()[-1])

    def test_ways_out(self):
        for leave in (lambda: self.user.keys("Escape"), lambda: self.user.click("Cancel"),
                      self.user.closebox):
            with self.asked(self.LIST, "POP Login") as (client, _):
                self.user.type("127.0.0.1")
                leave()
                self.assertEqual(["522 User selected cancel in dialog.", "0  "], client.said())

    def test_simple_mapi(self):
        login = """
mail.mailSystem = 1;
mail.LoginDialog = -1;
mail.loginName = mail.Password = "";
tell(function () { mail.Login(); });
WScript.Echo(mail.loginName + " " + (mail.sessionHandle != 0));
"""
        with self.asked(login, "MAPI Login") as (client, host):
            # Other clients' Internet calls and properties are answered meanwhile.
            other = self.client("mail.LoadMessageHeaders();\nWScript.Echo(mail.messageCount);\n",
                                host.smtp, host.pop)
            self.assertEqual(["1"], other.said())
            self.user.expect("Profile name", "focus")
            self.user.type("ann")
            self.user.keys("Tab")
            self.user.type("secret")
            self.user.keys("Enter")
            self.assertEqual(["done", "ann true"], client.said())

    def test_very_long_texts(self):
        long = "x" * 100_000
        with self.asked(self.LIST, "POP Login") as (client, _):
            for _ in range(3):
                self.user.paste(long)
                self.user.keys("Tab")
            self.user.expect(long, "read", "User name")
            self.user.click("OK")
            self.assertNotIn("done", client.said())


class Scaling(Dialogs):
    """Nothing is cut off when the display is set to larger letters."""

    PER_CENT = {100: 96, 150: 144, 200: 192}
    DESKTOP = r"HKCU\Control Panel\Desktop"

    def put(self, resolution):
        self.wine.run("reg", "add", self.DESKTOP, "/v", "LogPixels", "/t", "REG_DWORD",
                      "/d", resolution, "/f")

    def test_every_text_fits(self):
        self.addCleanup(self.put, self.PER_CENT[100])
        widths = []
        for per_cent, resolution in self.PER_CENT.items():
            self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
            self.put(resolution)
            with self.subTest(per_cent):
                done = self.wine.run(winetest.WINDOWS_BUILD / "test_dialogs.exe",
                                     "--gtest_brief=1",
                                     "--gtest_filter=-DialogWindowTest.*", timeout=PATIENCE)
                self.assertEqual(0, done.returncode, done.output)
            client = self.client(SELECT)
            self.user.window(SYSTEMS)
            left, _, right, _ = map(int, self.user.place().split())
            widths.append(right - left)
            self.user.keys("Escape")
            client.said()
        # The setting did reach the program.
        self.assertGreater(widths[1], widths[0] * 1.3)
        self.assertGreater(widths[2], widths[0] * 1.7)


if __name__ == "__main__":
    unittest.main()
