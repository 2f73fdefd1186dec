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
CLIENTS = {"js": """
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
""", "vbs": """
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.hWND = WScript.Arguments(2)
"""}


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
        # Wine's own words are none of the script's.
        lines = [line for line in done.output.splitlines() if not line.startswith("wine: ")]
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

    def client(self, text, smtp=1, pop=1, owner=0, engine="js"):
        self.clients += 1
        script = self.folder / f"client{self.clients}.{engine}"
        parts = [(SCRIPTS / f"check.{engine}").read_text(),
                 (MAIL / f"session.{engine}").read_text(), CLIENTS[engine], text, ENDINGS[engine]]
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
        said = client.running.wait(PATIENCE).output.splitlines()
        self.assertEqual(ABORTED[:1], said[:1])  # the answer that it waited for
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
            self.user.type("127.0.0.1")
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


SEND = """
mail.from = "ann@example.com";
mail.DialogErrorOnCancel = -1;
tell(function () { mail.ShowMailDialog(); });
"""
MAIL_WINDOW = "Send Mail Message"
FAILURE = "#1018"
LEFT = "522 User selected cancel in mail dialog."


class SendMail(Dialogs):
    def setUp(self):
        super().setUp()
        self.files = self.wine.drive_c / "Sent files"
        self.files.mkdir(exist_ok=True)
        for name in ("one.txt", "two.txt"):
            (self.files / name).write_text(f"text of {name}")

    def writing(self, text=SEND, **how):
        client = self.client(text, **how)
        self.user.window(MAIL_WINDOW)
        return client

    def add_files(self, *names):
        """From the send dialog through the attachments dialog, by keys."""
        self.user.keys("Alt+a")
        self.user.window("Attachments")
        self.user.keys("Alt+a")
        self.user.window("Add Attachments")
        self.user.type("C:\\Sent files")
        self.user.keys("Enter")
        self.user.type(" ".join(f'"{name}"' for name in names))
        self.user.keys("Enter")
        self.user.gone("Add Attachments")
        self.user.window("Attachments")
        self.assertEqual(list(names), [line.split("\t")[0]
                                       for line in self.user.rows("Files").splitlines()])
        self.user.keys("Tab", "Enter")
        self.user.gone("Attachments")
        self.user.window(MAIL_WINDOW)

    def write_message(self):
        """All by keys, in the order in which the window leads through it."""
        self.user.expect("To", "focus")
        self.user.type("bob@example.com, \"Baker, Carol\" <carol@example.com>")
        for label, text in (("Cc", "office@example.com"), ("Bcc", "archive@example.com")):
            self.user.keys("Tab")
            self.user.expect(label, "focus")
            self.user.type(text)
        self.user.keys("Alt+u")
        self.user.type("Figures")
        self.user.keys("Alt+m")
        self.user.type("First line\nsecond line")
        self.add_files("one.txt", "two.txt")

    def test_internet_mail_by_keys(self):
        with MailHost() as host:
            client = self.writing("""
mail.from = "ann@example.com"
mail.ShowMailDialog
WScript.Echo mail.subject
""", engine="vbs", smtp=host.smtp)
            self.write_message()
            self.user.keys("Alt+r", "Space")
            self.user.keys("Alt+s")
            self.assertEqual(["Figures"], client.said())
            [message] = host.received()
        for part in (b"Subject: Figures\r\n", b"First line\r\nsecond line", b"one.txt", b"two.txt",
                     b"office@example.com", b"carol@example.com"):
            self.assertIn(part, message)
        self.assertNotIn(b"archive@example.com", message.split(b"\r\n\r\n")[0])

    def test_simple_mapi_by_keys(self):
        client = self.writing("""
mail.mailSystem = 1
mail.loginName = "ann"
mail.Password = "secret"
mail.ShowMailDialog
WScript.Echo mail.subject
mail.Logout
""", engine="vbs")
        self.user.type("bob")
        self.user.keys("Alt+u")
        self.user.type("By MAPI")
        self.add_files("one.txt", "two.txt")
        self.user.keys("Alt+s")
        self.assertEqual(["By MAPI"], client.said())
        [message] = [m for m in self.store.messages("bob") if m.subject == "By MAPI"]
        self.assertEqual(["one.txt", "two.txt"], [file.name for file in message.attachments])

    def test_ways_out(self):
        leaving = SEND + """
WScript.Echo(mail.subject);
mail.DialogErrorOnCancel = 0;
tell(function () { mail.ShowMailDialog(); });
"""
        for leave in (lambda: self.user.keys("Escape"), lambda: self.user.click("Cancel"),
                      self.user.closebox):
            client = self.writing('mail.subject = "mine";' + leaving)
            self.user.keys("Alt+u")
            self.user.type("changed")
            leave()
            self.user.closed()
            self.user.window(MAIL_WINDOW)
            leave()
            self.assertEqual([LEFT, "mine", "done"], client.said())

    def test_what_fails_is_mended(self):
        with MailHost(faults="smtp at RCPT 2 reply 550 nobody\n") as host:
            client = self.writing('mail.AddAttachment("C:\\\\Sent files\\\\one.txt");' + SEND,
                                  smtp=host.smtp)
            self.user.keys("Alt+s")
            self.user.until(FAILURE, "No addressees were specified.")
            self.user.type("bob@example.com")
            self.user.keys("Alt+c")
            self.user.type("nobody@example.com")
            (self.files / "one.txt").unlink()
            self.user.keys("Alt+s")
            self.user.until(FAILURE, "Attachment does not exist.")
            (self.files / "one.txt").write_text("there again")
            self.user.keys("Alt+s")
            self.user.until(FAILURE, "bad recipients")
            self.user.expect("bob@example.com", "read", "To")
            self.user.keys("Alt+c", "Delete")
            self.user.click("Send")
            self.assertEqual(["done"], client.said())
            self.assertIn(b"one.txt", host.received()[-1])

    def test_others_are_served_and_a_second_one_is_told_to_wait(self):
        client = self.writing()
        with MailHost([b"Subject: one\r\n\r\ntext\r\n"]) as host:
            other = self.client("mail.LoadMessageHeaders();\nWScript.Echo(mail.messageCount);" +
                                SEND, host.smtp, host.pop)
            one, second = other.said()
        self.assertEqual("1", one)
        self.assertTrue(second.startswith(BUSY), second)
        self.user.keys("Escape")
        self.assertEqual([LEFT], client.said())

    def test_the_owner_goes(self):
        client = self.writing(owner=self.user.open("A client's window"))
        self.user.window("A client's window")
        self.user.expect("0", "enabled", "")
        self.user.destroy()
        self.assertEqual([LEFT], client.said())

    def test_the_client_goes(self):
        self.writing().running.kill()
        self.user.keys("Escape")
        self.user.gone(MAIL_WINDOW)
        client = self.writing()
        self.user.keys("Escape")
        self.assertEqual([LEFT], client.said())

    def test_attachments_are_changed(self):
        with MailHost() as host:
            client = self.writing('mail.AddRecipientTo("bob@example.com");' + SEND, smtp=host.smtp)
            self.user.click("Attachments")
            self.user.window("Attachments")
            self.user.drop("C:\\Sent files\\one.txt", "C:\\Sent files\\none.txt",
                           "C:\\Sent files\\two.txt")
            self.user.expect("one.txt\t15 bytes\ntwo.txt\t15 bytes\n", "rows", "Files")
            self.user.until("#1106", "Attachment does not exist.")
            self.user.keys("Alt+f", "Home", "Space", "F2")
            self.user.type("renamed.txt")
            self.user.keys("Enter", "End", "Delete")
            self.user.expect("renamed.txt\t15 bytes\n", "rows", "Files")
            self.user.click("OK")
            self.user.gone("Attachments")
            self.user.window(MAIL_WINDOW)
            # What is changed there and cancelled leaves the list as it was.
            self.user.keys("Alt+a")
            self.user.window("Attachments")
            self.user.keys("Alt+f", "Home", "Space", "Delete")
            self.user.expect("", "rows", "Files")
            self.user.keys("Escape")
            self.user.gone("Attachments")
            self.user.window(MAIL_WINDOW)
            self.user.keys("Alt+m")
            self.user.type("text")
            self.user.keys("Ctrl+Enter")
            self.assertEqual(["done"], client.said())
            [message] = host.received()
        self.assertIn(b"renamed.txt", message)
        self.assertNotIn(b"two.txt", message)

    def test_every_letter_survives(self):
        strange = "\u05e9\u05dc\u05d5\u05dd \U0001f4e7 \u00fc"
        with MailHost() as host:
            client = self.writing(SEND + "\nWScript.Echo(escape(mail.subject));\n", smtp=host.smtp)
            self.user.type("bob@example.com")
            self.user.keys("Alt+u")
            self.user.type(strange)
            self.user.expect(strange, "read", "Subject")
            self.user.keys("Alt+s")
            self.assertEqual(["done", "%u05E9%u05DC%u05D5%u05DD%20%uD83D%uDCE7%20%FC"],
                             client.said())


class Scaling(Dialogs):
    """Nothing is cut off when the display is set to larger letters."""

    PER_CENT = {100: 96, 150: 144, 200: 192}
    DESKTOP = r"HKCU\Control Panel\Desktop"

    def put(self, resolution):
        self.wine.run("reg", "add", self.DESKTOP, "/v", "LogPixels", "/t", "REG_DWORD",
                      "/d", resolution, "/f")

    def test_every_text_fits(self):
        self.addCleanup(self.wine.wait_until_gone, "quillon.exe")
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
