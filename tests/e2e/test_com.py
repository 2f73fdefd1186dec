"""The registered server as other processes use it: calls, lifetime, several clients, the registry."""

import pathlib
import shutil
import subprocess
import time
import unittest

from scripting import ENDINGS, SCRIPTS, MailHost, run_script
import winetest

COM = pathlib.Path(__file__).resolve().parent / "com"
SERVER = "quillon.exe"
MESSAGE = b"From: ann@example.com\r\nSubject: One\r\n\r\ntext\r\n"


def complete(text, engine):
    return (SCRIPTS / f"check.{engine}").read_text() + text + ENDINGS[engine]


class RegisteredServer(unittest.TestCase):
    def setUp(self):
        self.wine = self.enterContext(winetest.WinePrefix())
        self.wine.register(winetest.SERVER)

    def run_file(self, name, *arguments):
        engine = name.rsplit(".")[1]
        text = complete((COM / name).read_text(), engine)
        ended, failures = run_script(self.wine, text, *arguments, engine=engine, timeout=300)
        self.assertEqual([], failures)
        self.assertTrue(ended, "the script did not run to its end")

    def server_ends(self):
        self.assertTrue(self.wine.wait_until_gone(SERVER), "the server is still there")

    def run_early(self, *arguments, **how):
        done = self.wine.run(winetest.client("EarlyBound"), *arguments, **how)
        self.assertEqual(["early: ok"], done.output.splitlines()[-1:], done.output)
        self.assertEqual(0, done.returncode)

    def await_true(self, condition, trouble):
        deadline = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), deadline, trouble)
            time.sleep(0.05)


class Calls(RegisteredServer):
    def test_script_calls(self):
        for script in ("calls.vbs", "calls.js"):
            with self.subTest(script):
                self.run_file(script)


class Lifetime(RegisteredServer):
    def test_objects_come_and_go(self):
        self.run_file("lifetime.vbs")
        self.server_ends()

    def test_the_last_object_takes_leave_of_the_mailbox(self):
        with MailHost([MESSAGE, MESSAGE.replace(b"One", b"Two")]) as host:
            self.run_file("leaving.vbs", host.pop)
            self.server_ends()
            self.assertEqual([MESSAGE], host.received())

    def test_objects_leave_no_handles(self):
        self.run_early("rounds")
        self.server_ends()

    def test_the_server_comes_back_after_its_end(self):
        for _ in range(3):
            self.run_early()
            self.server_ends()

    def test_a_start_without_a_client_ends(self):
        done = self.wine.run(winetest.SERVER, "/EMBEDDING", timeout=60)
        self.assertEqual(0, done.returncode, done.output)


    def test_the_next_start_removes_what_a_killed_one_left(self):
        attached = self.wine.drive_c / "attached.bin"
        attached.write_bytes(bytes(1000))
        with MailHost(faults="smtp at RCPT silent\n") as host:
            client = self.wine.start("cscript", "//nologo", COM / "hanging.vbs", host.smtp, attached)
            self.await_true(lambda: "RCPT TO" in host.log.read_text(), "Send has not begun")
            self.assertEqual(["1.UUE"], self.temporary_files())
            self.wine.kill(SERVER)
            client.kill()
        self.wine.reset_com()
        self.assertEqual(["1.UUE"], self.temporary_files())
        self.addCleanup(self.wine.start(winetest.SERVER, "/Embedding").kill)
        self.await_true(lambda: not self.temporary_files(), "the files are still there")

    def test_a_pipe_behind_dev_wine_ends_with_the_program(self):
        """Not with the server, which the script leaves alive."""
        script = self.wine.drive_c / "leaving.vbs"
        script.write_text('Set mail = CreateObject("QuillonInterface.Server")\n'
                          'WScript.Echo "done"\nWScript.Quit 7\n')
        command = [winetest.TOP / "dev", "wine", "cscript", "//nologo", script]
        with subprocess.Popen(command, env=self.wine.environment(), stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT) as process:
            self.addCleanup(process.kill)
            self.assertEqual(b"done\r\n", process.communicate(timeout=60)[0])
        self.assertEqual(7, process.returncode)
        self.assertTrue(self.wine.processes(SERVER))

    def temporary_files(self):
        """The names of the encoded files of all messages."""
        return [file.name for file in self.wine.drive_c.glob("users/**/QUILLON.*/*.UUE")]


class SeveralClients(RegisteredServer):
    def test_clients_at_once_share_one_server(self):
        keeper = self.wine.start("cscript", "//nologo", self.keep())
        self.await_true(lambda: "kept" in keeper.output(), "no server")
        text = complete((COM / "client.vbs").read_text(), "vbs")
        clients = []
        for name in ("anna", "bert"):
            script = self.wine.drive_c / f"{name}.vbs"
            script.write_text(text)
            clients.append(self.wine.start("cscript", "//nologo", script, name))
        for client in clients:
            done = client.wait(120)
            self.assertEqual(["@ended"], done.output.splitlines())
        self.assertEqual(1, len(self.wine.processes(SERVER)))
        keeper.kill()

    def test_a_client_killed_in_a_call_costs_the_others_nothing(self):
        with MailHost([MESSAGE], faults="smtp at RCPT silent\n") as host:
            victim = self.wine.start("cscript", "//nologo", COM / "hanging.vbs", host.smtp)
            deadline = time.monotonic() + 60
            while "RCPT TO" not in host.log.read_text():
                self.assertIsNone(victim.poll(), victim.output())
                self.assertLess(time.monotonic(), deadline, "Send has not got as far as RCPT")
                time.sleep(0.02)
            self.run_file("bystander.vbs", host.pop, "busy")
            victim.kill()
            self.run_file("bystander.vbs", host.pop, "afterwards")
        self.assertEqual(1, len(self.wine.processes(SERVER)))

    def keep(self):
        """A script that keeps the server there until it is killed."""
        script = self.wine.drive_c / "keep.vbs"
        script.write_text('Set mail = CreateObject("QuillonInterface.Server")\n'
                          'Set shell = CreateObject("WScript.Shell")\n'
                          'WScript.Echo "kept"\n'
                          'shell.Run "cmd /c ping -n 100 127.0.0.1", 0, True\n')
        return script


PER_CLIENT = "[Server]\r\nProcessPerClient=TRUE\r\n"

SHOW_SUBJECT = """
Dim mail
Set mail = CreateObject("QuillonInterface.Server")
WScript.Echo mail.subject & "."
"""


class ProcessPerClient(unittest.TestCase):
    """Nobody is where somebody else is, not even for another class or with a command line."""

    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(winetest.WinePrefix())
        folder = cls.wine.drive_c / "Quillon"
        folder.mkdir()
        (folder / "quillon.ini").write_text(PER_CLIENT, newline="")
        cls.server = pathlib.Path(shutil.copy(winetest.SERVER, folder))
        cls.wine.register(cls.server)

    def started(self, name, lines):
        """A script that has said that it is ready, and keeps its objects until it is killed."""
        script = self.wine.drive_c / name
        script.write_text(lines + 'WScript.Echo "ready"\n'
                          'CreateObject("WScript.Shell").Run "cmd /c ping -n 100 127.0.0.1", 0, True\n')
        client = self.wine.start("cscript", "//nologo", script)
        self.addCleanup(client.kill)
        deadline = time.monotonic() + 60
        while "ready" not in client.output():
            self.assertIsNone(client.poll(), client.output())
            self.assertLess(time.monotonic(), deadline, client.output())
            time.sleep(0.05)

    def test_strangers_have_nothing_in_common(self):
        self.started("one.vbs", SHOW_SUBJECT + 'mail.subject = "secret"\n')
        self.started("two.vbs", SHOW_SUBJECT)
        self.assertEqual((True, ["."]), run_script(self.wine, SHOW_SUBJECT + ENDINGS["vbs"]))
        self.assertEqual(2, self.servers_left())
        self.started("book.vbs", 'Set book = CreateObject("QuillonInterface.AddressBook")\n')
        self.assertEqual((True, ["."]), run_script(self.wine, SHOW_SUBJECT + ENDINGS["vbs"]))
        self.assertEqual(3, self.servers_left())

    def test_a_command_line_is_a_client_too(self):
        kept = self.wine.start(self.server, "MS=10,", "KR=T")
        self.addCleanup(kept.kill)
        before = self.servers_left()
        self.assertEqual((True, ["."]), run_script(self.wine, SHOW_SUBJECT + ENDINGS["vbs"]))
        self.assertEqual(before, self.servers_left())
        self.assertIsNone(kept.poll())

    def servers_left(self):
        """How many processes there are when those without a client have ended."""
        time.sleep(4)
        return len(self.wine.processes(SERVER))


class CommandLine(unittest.TestCase):
    def test_a_curious_person_is_told_what_this_is(self):
        wine = self.enterContext(winetest.WinePrefix())
        for registered in (False, True):
            started = wine.start(winetest.SERVER)
            self.addCleanup(started.kill)
            deadline = time.monotonic() + 20
            while "/?" not in started.output():
                self.assertIsNone(started.poll(), started.output())
                self.assertLess(time.monotonic(), deadline, started.output())
                time.sleep(0.05)
            self.assertEqual(not registered, "/RegServer" in started.output())
            if not registered:
                wine.register()

    def test_a_switch_is_answered_or_refused_in_one_line(self):
        wine = self.enterContext(winetest.WinePrefix())
        for arguments, status, expected in (
                (["/RegSevrer"], 1, "^quillon: [^\n]*/RegSevrer[^\n]*\n$"),
                (["/RegServer", "-peruser"], 1, "^quillon: [^\n]*-peruser[^\n]*\n$"),
                (["/version"], 0, r"^Quillon \d+\.\d+\.\d+ \([0-9a-f]{12}(, changed)?\)\n$"),
                (["-?"], 0, "/UnregServerPerUser")):
            with self.subTest(arguments):
                done = wine.run(winetest.SERVER, *arguments, timeout=20)
                self.assertEqual(status, done.returncode, done.output)
                self.assertRegex(done.output, expected)
        self.assertNotIn("QuillonInterface",
                         wine.run("reg", "query", r"HKLM\Software\Classes").output)


class Registration(unittest.TestCase):
    def setUp(self):
        self.wine = self.enterContext(winetest.WinePrefix())

    def classes(self, root, bits):
        """The keys and values below the root's Software\\Classes, as programs of so many bits see
        them."""
        file = self.wine.drive_c / "classes.reg"
        file.unlink(missing_ok=True)
        self.wine.run("reg", "export", root + "\\Software\\Classes", "C:\\classes.reg", "/y",
                      f"/reg:{bits}")
        lines = file.read_text("utf-16").splitlines() if file.exists() else []
        # Without the file's own head; the key itself is there from the first user's class on.
        return {line for line in lines[1:] if line and not line.endswith("\\Classes]")}

    def both_kinds(self, root):
        return [self.classes(root, bits) for bits in (32, 64)]

    def test_registration_leaves_nothing_behind(self):
        for switch, root in (("Server", "HKLM"), ("ServerPerUser", "HKCU")):
            with self.subTest(root):
                before = self.both_kinds(root)
                for word in ("/REG", "-unreg"):
                    done = self.wine.run(winetest.SERVER, word + switch)
                    self.assertEqual(0, done.returncode, done.output)
                    if word == "/REG":
                        for there, old in zip(self.both_kinds(root), before):
                            added = "\n".join(there - old)
                            for entry in ("QuillonInterface.Server.1", "LocalServer32",
                                          "ProxyStubClsid32"):
                                self.assertIn(entry, added)
                self.assertEqual(before, self.both_kinds(root))


if __name__ == "__main__":
    unittest.main()
