"""Three programs at once that make an object for each message, and servers that close what is idle:
every message arrives once, with its own recipients and text, and only its own program deletes it.
QUILLON_PROGRAMS_MESSAGES says how many there are in all."""

import collections
import os
import pathlib
import random
import re
import select
import socket
import threading
import unittest

from scripting import ENDED, ENDINGS, MailHost, prefix_with_server, run_script
import winetest

PROGRAM = pathlib.Path(__file__).resolve().parent / "programs" / "program.js"
NAMES = ("ann", "bob", "eve")
MESSAGES = int(os.environ.get("QUILLON_PROGRAMS_MESSAGES", 90))
SEED = int(os.environ.get("QUILLON_PROGRAMS_SEED", random.SystemRandom().randrange(1, 1 << 30)))
SHORTEST_IDLE, LONGEST_IDLE = 0.1, 0.4  # seconds


def setUpModule():
    Programs.wine = prefix_with_server()
    if Programs.wine.run(winetest.CLIENTS / "Sleeper.exe", "/register").returncode != 0:
        raise RuntimeError("Sleeper.exe cannot be registered")


class Impatient:
    """Passes connections on to a server, and closes them when nothing has been said for a while
    between two exchanges."""

    def __init__(self, port, is_idle):
        self._target = port
        self._is_idle = is_idle
        self._random = random.Random(SEED)
        self.closed = 0

    def __enter__(self):
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()
        return self

    def __exit__(self, *_):
        self._listener.close()

    def _accept(self):
        while True:
            try:
                client, _ = self._listener.accept()
            except OSError:
                return
            threading.Thread(target=self._pass_on, args=(client,), daemon=True).start()

    def _pass_on(self, client):
        with client, socket.create_connection(("127.0.0.1", self._target)) as server:
            said = b""  # by the client, last
            answered = False
            while True:
                patience = self._random.uniform(SHORTEST_IDLE, LONGEST_IDLE)
                ready, _, _ = select.select([client, server], [], [], patience)
                if not ready and answered and self._is_idle(said):
                    self.closed += 1
                    return
                for source in ready:
                    try:
                        data = source.recv(1 << 16)
                        (server if source is client else client).sendall(data)
                    except OSError:
                        return
                    if not data:
                        return
                    answered = source is server
                    if source is client:
                        said = (said + data)[-64:]


# An object for each customer, without NewMessage.
CUSTOMERS = """
Dim number
For number = 1 To 3
  Set mail = CreateObject("QuillonInterface.Server")
  mail.mailSystem = 7
  mail.SMTPServer = "127.0.0.1"
  mail.SMTPPort = WScript.Arguments(0)
  mail.from = "ann@example.com"
  mail.AddRecipientTo "customer" & number & "@example.com"
  mail.AddRecipientBcc "secret" & number & "@example.com"
  mail.AddAttachment WScript.ScriptFullName
  mail.subject = "bill " & number
  mail.Message = "The bill of customer " & number
  mail.AddXHeader "Customer", number
  mail.undocumented1 = "|ONLY_RECIP|"
  mail.Send
  mail.undocumented1 = "|ONLY_RECIP|boss@example.com"
  Set mail = Nothing
Next
"""
STRANGER = """
Dim mail
Set mail = CreateObject("QuillonInterface.Server")
WScript.Echo mail.subject & mail.Message & mail.GetMessageItemString(1) & mail.GetMessageItemString(3) & "."
mail.mailSystem = 7
mail.SMTPServer = "127.0.0.1"
mail.SMTPPort = WScript.Arguments(0)
mail.from = "bob@example.com"
mail.AddRecipientTo "eve@example.com"
mail.Send
"""


class Programs(unittest.TestCase):
    def test_a_new_client_finds_nothing_of_the_last_one(self):
        with MailHost() as host:
            for script, lines in ((CUSTOMERS, []), (STRANGER, ["."])):
                self.assertEqual((True, lines), run_script(self.wine, script + ENDINGS["vbs"],
                                                           host.smtp))
            # The first one's process served the second one too.
            self.assertEqual(1, len(self.wine.processes("quillon.exe")))
            messages = host.received()
            log = host.log.read_text()
        self.assertEqual([f"{kind}{number}" for number in (1, 2, 3)
                          for kind in ("customer", "secret")] + ["eve"],
                         re.findall(r"RCPT TO: ?<(\w+)@", log))
        self.assertEqual([1, 1, 1, 0], [message.count(b"filename=") for message in messages])
        self.assertEqual([1, 1, 1, 0], [message.count(b"X-Customer: ") for message in messages])

    def test_every_message_arrives_once(self):
        # A file for each: Wine's cscript reads its script alone, and is silent when it cannot.
        text = (PROGRAM.read_text() + ENDINGS["js"]).replace("\n", "\r\n").encode("ascii")
        scripts = [self.wine.drive_c / f"{name}.js" for name in NAMES]
        for script in scripts:
            script.write_bytes(text)
        with (MailHost() as host,
              Impatient(host.smtp, lambda said: said.endswith(b"\r\n.\r\n")) as smtp,
              Impatient(host.pop, lambda said: True) as pop):
            running = [self.wine.start("cscript", "//nologo", script, smtp.port, pop.port, name,
                                       MESSAGES // len(NAMES), SEED + place)
                       for place, (script, name) in enumerate(zip(scripts, NAMES))]
            lines = []
            for program in running:
                done = program.wait(120 + MESSAGES)
                written = done.output.splitlines()
                self.assertEqual((0, [ENDED]), (done.returncode, written[-1:]), written[-3:])
                lines += written[:-1]
            left = host.received()
            envelopes = host.log.read_text()
        print(f"seed {SEED}, {smtp.closed} and {pop.closed} idle connections closed",
              collections.Counter(re.match(r"[a-z]+", line)[0] for line in lines))
        everything = {f"{name} {number}" for name in NAMES
                      for number in range(1, MESSAGES // len(NAMES) + 1)}
        for said in ("sent", "received"):
            told = collections.Counter(line[len(said) + 1:] for line in lines
                                       if line.startswith(said + " "))
            self.assertEqual(collections.Counter(everything), told, said)
        kinds = {line.split(" ")[0] for line in lines}
        self.assertLessEqual(kinds, {"sent", "received", "again"}, lines)
        self.assertEqual([], left)
        for name in NAMES:
            recipients = re.findall(rf"RCPT TO: ?<({name}\.\d+|boss\.{name})@", envelopes)
            self.assertEqual(2 * (MESSAGES // len(NAMES)), len(recipients))


if __name__ == "__main__":
    unittest.main()
