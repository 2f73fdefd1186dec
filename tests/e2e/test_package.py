"""The zip and the set-up program: installed for a machine and for a user, used, brought up to date,
taken out, and what is there when any of that fails.

Wine's COM looks for classes of the machine alone, so what is registered for a user is read here and
not used. Everybody is an administrator there: an installation without rights is not tried."""

import pathlib
import resource
import shutil
import subprocess
import tempfile
import unittest
import zipfile

from driving import User
from scripting import ENDINGS, MailHost, register_sleeper, run_script, server_running
import package
import winetest

OURS = package.version()
NEWER = "99.0.0"
FAULTY = "99.1.0"
IN_USE, NEWER_IS_THERE, NOT_THIS_DIRECTORY, WRONG_SWITCH = 3, 5, 6, 8
UNINSTALL = r"\Software\Microsoft\Windows\CurrentVersion\Uninstall\Quillon"
CLASS = r"\Software\Classes\CLSID\{8F355FF6-88F9-4F07-923E-F25ED31DE8B9}\LocalServer32"
LIBRARY = r"\Software\Classes\TypeLib"
MODERN = {"SMTPSecurity=starttls-if-offered", "POPSecurity=starttls-if-offered", "Charset=auto",
          "ModernHeaders=TRUE", "DetailedErrors=TRUE"}
SEND = """
Dim mail
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = 10
mail.SMTPServer = "127.0.0.1"
mail.SMTPPort = CLng(WScript.Arguments(0))
mail.NewMessage
mail.from = "Joe Smith <joe@example.com>"
mail.AddRecipientTo "ann@example.com"
mail.subject = "Report of March"
mail.Message = "The report is done."
mail.Send
"""
# A program that cannot be registered.
STUBBORN = """
OutFile "quillon.exe"
SilentInstall silent
VIProductVersion "{version}.0"
VIAddVersionKey "FileVersion" "{version}"
Section
  SetErrorLevel 9
SectionEnd
"""


def with_version(program, number):
    """The program as it will be one day: its version record says so."""
    major, minor, patch = map(int, number.split("."))
    at = program.index(b"\xbd\x04\xef\xfe") + 8
    words = (minor, major, 0, patch)
    return program[:at] + b"".join(n.to_bytes(2, "little") for n in words) + program[at + 8:]


def stubborn_program(folder):
    (folder / "stubborn.nsi").write_text(STUBBORN.format(version=FAULTY))
    subprocess.run(["makensis", "-V1", "-INPUTCHARSET", "UTF8", "stubborn.nsi"], cwd=folder,
                   stdin=subprocess.DEVNULL, check=True)
    return (folder / "quillon.exe").read_bytes()


def setUpModule():
    folder = pathlib.Path(unittest.enterModuleContext(tempfile.TemporaryDirectory()))
    site = folder / "site"
    (site / "reference").mkdir(parents=True)
    (site / "index.html").write_text("<title>Quillon</title>")
    (site / "reference" / "errors & more $0.html").write_text("<title>Errors</title>")
    files = Packages.files = package.payload(site=site)
    program = files["quillon.exe"]
    Packages.folder = folder
    for number, content in ((OURS, program), (NEWER, with_version(program, NEWER)),
                            (FAULTY, stubborn_program(folder))):
        package.write_setup({**files, "quillon.exe": content, "docs/version.html": number.encode()},
                            folder / f"{number}.exe", number, 1_000_000_000)
    Packages.wine = unittest.enterModuleContext(winetest.WinePrefix(display=True))
    register_sleeper(Packages.wine)


class Packages(unittest.TestCase):
    def tearDown(self):
        for root in ("HKLM", "HKCU"):
            location = self.registered(root + UNINSTALL, "InstallLocation")
            if location:
                self.uninstall(self.on_disk(location), "/PURGE=1")

    def on_disk(self, path):
        return self.wine.drive_c.joinpath(*path.split("\\")[1:])

    def setup(self, number, *arguments, status=0, limit=None):
        self.silently(self.folder / f"{number}.exe", *arguments, status=status, limit=limit)

    def silently(self, program, *arguments, status=0, limit=None):
        """`limit` is the greatest size that a file may grow to."""
        words = " ".join(arguments).split(" ")  # so that blanks in a directory get no quotes
        # Beyond the limit a write fails, as on a full disk, when SIGXFSZ is ignored as it is here.
        done = subprocess.run(
            [str(winetest.TOP / "tools" / "wine" / "run.sh"), str(program), "/S", *words], env=self.wine.environment(), stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60, check=False,
            restore_signals=False, preexec_fn=limit and (
                lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))))
        self.assertEqual(status, done.returncode)

    def uninstall(self, directory, *arguments):
        """It returns before it is done, as such programs do."""
        self.wine.run(directory / "uninstall.exe", "/S", *arguments)
        self.assertTrue(self.wine.wait_until_gone("un_a.exe"))
        self.assertTrue(self.wine.wait_until_gone("un.exe"))

    def registered(self, key, name=None):
        """A text of the registry, None when it is not there."""
        done = self.wine.run("reg", "query", key, *(("/v", name) if name else ("/ve",)))
        found = [line.split("REG_SZ", 1)[1].strip() for line in done.output.splitlines()
                 if "REG_SZ" in line]
        return found[0] if found else None

    def state(self, root, directory):
        """All that an installation is."""
        files = {str(file.relative_to(directory)): file.read_bytes() if file.is_file() else None
                 for file in directory.rglob("*")}
        return files, self.registered(root + CLASS), self.registered(root + UNINSTALL,
                                                                     "DisplayVersion")

    def assert_whole(self, root, directory, number, path):
        files, server, version = self.state(root, directory)
        self.assertEqual(set(self.files) | {"docs/version.html", "uninstall.exe"},
                         {name for name, content in files.items() if content is not None}
                         - {"quillon.ini"})
        self.assertEqual(number.encode(), files["docs/version.html"])
        self.assertEqual((f'"{path}\\quillon.exe"', number), (server, version))

    def assert_gone(self, root, directory, *left):
        self.assertEqual(list(left), [file.name for file in directory.rglob("*")])
        self.assertEqual((None, None), (self.registered(root + CLASS), self.registered(
            root + UNINSTALL, "DisplayVersion")))
        self.assertNotIn("Quillon", self.wine.run("reg", "query", root + LIBRARY, "/s").output)
        self.assertEqual([], list(self.wine.drive_c.rglob("Quillon documents.lnk")))

    def test_a_machine(self):
        path = r"C:\Program Files\Quillon"
        directory = self.on_disk(path)
        self.setup(OURS, "/SCOPE=machine", "/MODERN=1", "/ERRORS=0")
        self.assert_whole("HKLM", directory, OURS, path)
        settings = directory / "quillon.ini"
        self.assertEqual(MODERN - {"DetailedErrors=TRUE"} | {"[Server *]"},
                         set(settings.read_text().splitlines()))
        self.assertEqual(1, len(list(self.wine.drive_c.rglob("Quillon documents.lnk"))))
        with MailHost() as host:
            self.assertEqual((True, []), run_script(self.wine, SEND + ENDINGS["vbs"], host.smtp))
            self.assertIn(b"Subject: Report of March", host.received()[0])
        self.assertTrue(self.wine.wait_until_gone("quillon.exe"))
        before = self.state("HKLM", directory)
        with tempfile.TemporaryDirectory() as scratch, server_running(self.wine,
                                                                      pathlib.Path(scratch)):
            self.setup(NEWER, "/WAIT=0", status=IN_USE)
            self.silently(directory / "uninstall.exe", "/WAIT=0", f"_?={path}", status=IN_USE)
            self.assertEqual(before, self.state("HKLM", directory))
        self.setup(NEWER)  # waits for the program to end
        self.assert_whole("HKLM", directory, NEWER, path)
        self.assertEqual(before[0]["quillon.ini"], settings.read_bytes())
        self.setup(OURS, status=NEWER_IS_THERE)
        self.assert_whole("HKLM", directory, NEWER, path)
        self.setup(OURS, "/DOWNGRADE=1")
        self.assert_whole("HKLM", directory, OURS, path)
        self.uninstall(directory)
        self.assert_gone("HKLM", directory, "quillon.ini")
        self.setup(OURS, "/SCOPE=machine")
        self.uninstall(directory, "/PURGE=1")
        self.assertFalse(directory.exists())
        self.assert_gone("HKLM", directory)

    def test_a_user(self):
        [folder] = self.wine.drive_c.glob("users/*/AppData/Local")
        path = f"C:\\users\\{folder.parts[-3]}\\AppData\\Local\\Programs\\Quillon"
        directory = folder / "Programs" / "Quillon"
        self.setup(OURS, "/SCOPE=user", "/TLS=1")
        self.assert_whole("HKCU", directory, OURS, path)
        self.assertEqual((None, None), (self.registered("HKLM" + CLASS), self.registered(
            "HKLM" + UNINSTALL, "DisplayVersion")))
        settings = [*directory.glob("quillon.ini"), *folder.parent.glob("Roaming/Quillon/*.ini")]
        self.assertEqual({"[Server *]", *[line for line in MODERN if "tls" in line]},
                         set(settings[0].read_text().splitlines()))
        self.setup(NEWER, "/SCOPE=user")
        self.assert_whole("HKCU", directory, NEWER, path)
        self.uninstall(directory, "/PURGE=1")
        self.assert_gone("HKCU", directory)
        self.assertFalse(settings[0].exists())

    def go_to(self, user, page):
        """From the first page of a set-up program to one that has this control."""
        user.window("Quillon Setup ")  # a box has no blank at its end
        user.keys("Alt+a")
        if page == "Install":
            user.read("Only me")
            user.keys("Alt+n")
        user.read(page)

    def test_pages(self):
        [folder] = self.wine.drive_c.glob("users/*/AppData/Local")
        directory = folder / "Programs" / "Quillon"
        with User(self.wine) as user:
            running = self.wine.start(self.folder / f"{OURS}.exe")
            self.go_to(user, "Only me")
            user.keys("Alt+o")
            user.keys("Alt+n")
            user.read("Browse")
            user.keys("Alt+n")
            user.read("Encrypt when the server offers it")
            user.keys("Alt+e")
            user.keys("Alt+i")
            user.expect("1", "enabled", "Close")
            user.keys("Alt+c")
            self.assertEqual(0, running.wait().returncode)
            self.assertIn("SMTPSecurity=starttls-if-offered",
                          (directory / "quillon.ini").read_text())
            before = self.state("HKCU", directory)
            server = self.wine.start(directory / "quillon.exe")
            running = self.wine.start(self.folder / f"{NEWER}.exe", "/SCOPE=user", "/WAIT=0")
            self.go_to(user, "Install")
            user.keys("Alt+i")
            user.window("Quillon Setup")
            user.keys("Alt+r")
            user.window("Quillon Setup")
            user.keys("Escape")
            user.window("Quillon Setup ")
            user.expect("1", "enabled", "Cancel")
            user.keys("Escape")
            self.assertEqual(IN_USE, running.wait().returncode)
            self.wine.run("taskkill", "/im", "quillon.exe")
            server.wait()
            self.assertEqual(before, self.state("HKCU", directory))

    def test_failures_leave_the_old_version_whole(self):
        path = r"C:\Meine Grüße\Quillon"
        directory = self.on_disk(path)
        self.setup(OURS, "/SCOPE=machine", f"/D={path}")
        self.assert_whole("HKLM", directory, OURS, path)
        before = self.state("HKLM", directory)
        size = len(self.files["quillon.exe"])
        for arguments, how in (((FAULTY,), {"status": 2}),
                               ((NEWER,), {"status": 2, "limit": size // 2}),
                               ((NEWER, r"/D=C:\Elsewhere"), {"status": NOT_THIS_DIRECTORY}),
                               ((NEWER, "/SCOPE=nobody"), {"status": WRONG_SWITCH}),
                               ((NEWER, "/TLS=yes"), {"status": WRONG_SWITCH})):
            with self.subTest(arguments):
                self.setup(*arguments, **how)
                self.assertEqual(before, self.state("HKLM", directory))
        # What an installer that was killed leaves: half a new version, and the old one moved away.
        (directory / "~new").mkdir()
        (directory / "~new" / "quillon.exe").write_bytes(b"half")
        (directory / "~old").mkdir()
        (directory / "docs").rename(directory / "~old" / "docs")
        self.setup(NEWER, status=2, limit=size // 2)
        self.assertEqual(before, self.state("HKLM", directory))

    def test_failures_leave_nothing_of_a_first_one(self):
        directory = self.wine.drive_c / "First"
        self.setup(FAULTY, "/SCOPE=machine", r"/D=C:\First", status=2)
        self.setup(OURS, "/SCOPE=machine", r"/D=C:\First", status=2, limit=1_000_000)
        self.assertFalse(directory.exists())
        self.assert_gone("HKLM", directory)
        (self.wine.drive_c / "blocked").write_bytes(b"a file")
        self.setup(OURS, "/SCOPE=machine", r"/D=C:\blocked\Quillon", status=NOT_THIS_DIRECTORY)
        directory.mkdir()
        (directory / "LICENSE.txt").write_text("somebody else's")
        self.setup(OURS, "/SCOPE=machine", r"/D=C:\First", status=NOT_THIS_DIRECTORY)
        self.assert_gone("HKLM", directory, "LICENSE.txt")

    def test_a_copy_that_somebody_deleted(self):
        self.setup(OURS, "/SCOPE=machine", r"/D=C:\Old place")
        shutil.rmtree(self.wine.drive_c / "Old place")
        self.setup(OURS, "/SCOPE=machine", r"/D=C:\New place")
        directory = self.wine.drive_c / "New place"
        self.assert_whole("HKLM", directory, OURS, r"C:\New place")
        self.uninstall(directory)
        self.assert_gone("HKLM", directory)

    def test_the_same_files_make_the_same_bytes(self):
        made = []
        for name in ("one", "two"):
            setup, archive = self.folder / f"{name}.exe", self.folder / f"{name}.zip"
            package.write_setup(self.files, setup, OURS, 1_000_000_000)
            package.write_zip(self.files, archive, "quillon", 1_000_000_000)
            made.append(setup.read_bytes() + archive.read_bytes())
        self.assertTrue(made[0] == made[1])
        with zipfile.ZipFile(self.folder / "one.zip") as archive:
            self.assertIsNone(archive.testzip())
            self.assertEqual(["quillon/" + name for name in self.files], archive.namelist())

    def test_unknown_libraries_are_not_packed(self):
        known = package.LINK_MAP.read_text()
        self.assertIn(package.ZLIB, package.linked_packages(known))
        with self.assertRaises(package.PackageError):
            package.linked_packages(known + "\n/usr/i686-w64-mingw32/contrib/libother.a(x.o)\n")


if __name__ == "__main__":
    unittest.main()
