"""./dev screenshots: pictures of the program's windows for the documents, taken of the real program
on a display that nobody sees, into docs/images/."""

import pathlib
import sys
import tempfile
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "tests" / "e2e"))
import png
import winetest
from driving import User
from scripting import MailHost, install_desk

IMAGES = TOP / "docs" / "images"
LARGEST = 40_000  # bytes

BEGINNING = """
var mail = new ActiveXObject("QuillonInterface.Server");
mail.mailSystem = 10;
mail.SMTPPort = WScript.Arguments(0);
mail.SMTPServer = "127.0.0.1";
mail.from = "Ann Example <ann@example.com>";
"""
COMPOSED = """
mail.AddRecipientTo("Bob Baker <bob@example.com>, carol@example.com");
mail.AddRecipientCc("office@example.com");
mail.subject = "Figures of November";
mail.Message = "Dear Bob,\\r\\n\\r\\nhere are the figures you asked for, and the chart.\\r\\n\\r\\n" +
    "Best regards\\r\\nAnn\\r\\n";
mail.AddAttachment("C:\\\\figures.csv");
mail.AddAttachment("C:\\\\chart.png");
"""
SELECT = "try { mail.ShowMailSystemDialog(); } catch (e) {}\n"
LOGIN = "try { mail.LoadMessageHeaders(); } catch (e) {}\n"
SEND = "try { mail.ShowMailDialog(); } catch (e) {}\n"
LONG = """
mail.AddRecipientTo("bob@example.com");
mail.AddAttachment("C:\\\\film.bin");
mail.TimeoutProtocol = 60000;
try { mail.Send(); } catch (e) {}
"""


class Studio:
    def __init__(self, wine, user, scratch):
        self._wine = wine
        self._user = user
        self._scratch = scratch

    def client(self, text, port=25):
        script = self._scratch / "client.js"
        script.write_text(BEGINNING + text, newline="\r\n")
        return self._wine.start("cscript", "//nologo", script, port)

    def take(self, name):
        bitmap = self._scratch / "picture.bmp"
        self._user.picture(winetest.windows_path(bitmap))
        picture = png.from_bitmap(bitmap.read_bytes())
        if len(picture) > LARGEST:
            raise RuntimeError(f"{name}: {len(picture)} bytes are too many")
        file = IMAGES / f"{name}.png"
        file.write_bytes(picture)
        print(f"{file.relative_to(TOP)}: {len(picture)} bytes")

    def select_system(self):
        client = self.client(SELECT)
        self._user.window("Select Mail System")
        self.take("select-system")
        self._user.keys("Escape")
        client.wait()

    def login(self):
        client = self.client(LOGIN)
        self._user.window("POP Login")
        self._user.type("pop.example.com")
        self._user.keys("Tab")
        self._user.type("ann")
        self._user.keys("Tab")
        self._user.type("secret")
        self.take("login")
        self._user.keys("Escape")
        client.wait()

    def send(self):
        client = self.client(COMPOSED + SEND)
        self._user.window("Send Mail Message")
        self.take("send")
        self._user.keys("Alt+a")
        self._user.window("Attachments")
        self.take("attachments")
        self._user.keys("Escape")
        self._user.window("Send Mail Message")
        self._user.keys("Escape")
        client.wait()

    def progress(self):
        with MailHost(faults="smtp at body stall\n") as host:
            client = self.client(LONG, host.smtp)
            self._user.window("Sending Mail")
            while "fault: smtp at body" not in host.log.read_text():
                time.sleep(0.1)
            time.sleep(2)  # until what has been handed to the network is counted
            self.take("progress")
            self._user.click("Cancel")
            client.wait()


def main():
    IMAGES.mkdir(exist_ok=True)
    with winetest.WinePrefix(display=True) as wine, \
            tempfile.TemporaryDirectory(prefix="screenshots-") as scratch:
        wine.register()
        install_desk(wine)
        # The caret does not blink, so that a picture is the same each time.
        wine.run("reg", "add", r"HKCU\Control Panel\Desktop", "/v", "CursorBlinkRate", "/d", "-1",
                 "/f")
        for name, size in (("figures.csv", 18_432), ("chart.png", 94_208), ("film.bin", 9_000_000)):
            (wine.drive_c / name).write_bytes(bytes(size))
        with User(wine) as user:
            studio = Studio(wine, user, pathlib.Path(scratch))
            studio.select_system()
            studio.login()
            studio.send()
            studio.progress()


if __name__ == "__main__":
    main()
