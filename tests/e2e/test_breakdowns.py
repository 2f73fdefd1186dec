"""What breaks down in the middle: the conversations of the unit tests, whole and cut off,
connections lost in attachments, disks that are full. Nothing may be left behind, and the next call
works."""

import contextlib
import email.policy
import pathlib
import random
import subprocess
import tempfile
import unittest
from email.message import EmailMessage

import conversations
from scripting import MailHost, MailTest, prefix_with_server
import winetest


MIB = 1 << 20


def setUpModule():
    Breakdown.wine = prefix_with_server()


class Breakdown(MailTest, unittest.TestCase):
    maxDiff = None

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="scratch-", dir=self.wine.drive_c)
        self.scratch = pathlib.Path(self.enterContext(scratch))
        for name in ("temporary", "received", "files"):
            (self.scratch / name).mkdir()

    def run_script(self, smtp, pop, lines, timeout=120):
        self.run_mail("conversation.vbs", smtp, pop, self.scratch,
                      after="Dim answer, filesBefore\n" + "\n".join(lines) + "\n", timeout=timeout)


class Conversations(Breakdown):
    def play(self, played):
        """Plays them one by one, each with its own host; the good host takes a message after each.
        What the hosts complain of."""
        lines, hosts = [], []
        with contextlib.ExitStack() as stack:
            good = stack.enter_context(MailHost())
            for conversation in played:
                host = stack.enter_context(MailHost(faults=conversation.host))
                hosts.append(host)
                smtp, pop = (good.smtp, host.pop) if conversation.is_pop else (host.smtp, good.pop)
                lines += [f"Begin {smtp}, {pop}", *conversation.statements,
                          f"GoesOn {conversations.literal(conversation.name)}"]
            self.run_script(good.smtp, good.pop, lines)
            self.assertEqual(len(hosts), len(good.received()))
            return [line for host in hosts for line in host.complaints()]

    def test_whole(self):
        played = list(conversations.whole(self.scratch / "files"))
        self.assertGreater(len(played), 40)
        # The call after it says goodbye, which is in no conversation.
        self.assertEqual([], [line for line in self.play(played)
                              if not line.endswith('received "QUIT"')])

    def test_cut_off(self):
        """A call that hears nothing from an open connection tries a new one, which plays the
        conversation from its beginning; so what the hosts complain of does not count."""
        for name, every in (("smtp-attachments", 1), ("pop-attachments", 3)):
            with self.subTest(name):
                self.play(list(conversations.cut_off(name, self.scratch / "files", every)))


def message(subject, sizes, text="text"):
    """A message with an attachment of each of the sizes."""
    composed = EmailMessage(policy=email.policy.SMTP)
    composed["From"], composed["Subject"] = "ann@example.org", subject
    composed.set_content(text)
    for number, size in enumerate(sizes):
        composed.add_attachment(bytes(size), "application", "octet-stream",
                                filename=f"file{number}.bin")
    return composed.as_bytes()


class Attachments(Breakdown):
    def attaching(self, *sizes):
        """Statements that attach a file of each of the sizes."""
        for number, size in enumerate(sizes):
            file = self.scratch / "files" / f"file{number}-{size}.bin"
            file.write_bytes(random.Random(size).randbytes(size))  # which no packing makes smaller
            yield f'mail.AddAttachment "{winetest.windows_path(file)}"'

    @staticmethod
    def ends(what, call, number, text=""):
        """Statements for a call that ends with a number and its text, 0 when it goes well."""
        return ["filesBefore = FileCount(received)", "On Error Resume Next", call,
                f'Called "{what}", filesBefore', "On Error GoTo 0",
                f'Same "{what}", "{number} {text}", CStr(outcome) & " " & said']

    def test_connection_lost_while_sending(self):
        cases = [
            ("smtp at body drop", 6012, "Unknown error occurred while sending file attachments."),
            ("smtp at body reply 552 too much", 6552, "Exceeded SMTP storage allocation."),
            ("smtp at body stall", 6028, "Network communications timed out."),
            ("smtp at terminator drop", 6013, "Error occurred while sending message terminator."),
        ]
        with contextlib.ExitStack() as stack:
            good = stack.enter_context(MailHost())
            lines = []
            for faults, *ending in cases:
                host = stack.enter_context(MailHost(faults=faults))
                lines += [f"Begin {host.smtp}, {good.pop}", *self.attaching(100, MIB, 5 * MIB, 7),
                          "mail.TimeoutProtocol = 2000", *self.ends(faults, "mail.Send", *ending),
                          "mail.TimeoutProtocol = 5000", f'GoesOn "{faults}"']
            self.run_script(good.smtp, good.pop, lines)
            self.assertEqual(len(cases), len(good.received()))

    def test_connection_lost_while_loading(self):
        mailbox = [message("before", []), message("lost", [100, MIB, MIB, 7])]
        lost = 6029, "Unknown network error."
        cases = [(f"pop at RETR 2 truncate {size}", *lost)
                 for size in (300, 1000, MIB, 2 * MIB, len(mailbox[1]) - 40)]
        cases += [("pop at RETR 2 drop mid", *lost),
                  ("pop at RETR 2 silent", 6027, "Communications with the POP server timed out.")]
        with contextlib.ExitStack() as stack:
            good = stack.enter_context(MailHost())
            lines = ["mail.TimeoutProtocol = 2000"]
            for faults, *ending in cases:
                host = stack.enter_context(MailHost(mailbox, faults=faults))
                lines += [f"Begin {good.smtp}, {host.pop}", "mail.LoadMessageHeaders",
                          "mail.messageIndex = 0", "mail.LoadMessage", "mail.messageIndex = 1",
                          *self.ends(faults, "mail.LoadMessage", *ending),
                          'Same "the loaded message stays", "before", mail.subject',
                          f'GoesOn "{faults}"']
            self.run_script(good.smtp, good.pop, lines)
            self.assertEqual(len(cases), len(good.received()))

    @contextlib.contextmanager
    def small_disks(self, *names):
        """Directories that hold 1 MiB each."""
        with contextlib.ExitStack() as stack:
            for name in names:
                mounting = ["mount", "-t", "tmpfs", "-o", "size=1m", "tmpfs", self.scratch / name]
                if subprocess.run(mounting, stderr=subprocess.DEVNULL).returncode != 0:
                    self.skipTest("no file system can be mounted here")
                stack.callback(subprocess.run, ["umount", self.scratch / name], check=True)
            yield

    def test_disk_full(self):
        mailbox = [message("small", [1000, 100_000]), message("large", [1000, 500_000, 700_000]),
                   message("at once", [2 * MIB]), message("long", [], "A long text.\n" * 500_000)]
        no_room = 6026, "Error occurred trying to open the POP temporary file."
        not_encoded = 535, "Error while encoding files.  Is disk full?"
        not_packed = 534, "Error while zipping files.  Is disk full?"
        with MailHost(mailbox) as host, self.small_disks("temporary", "received"):
            lines = [f"Begin {host.smtp}, {host.pop}", "mail.LoadMessageHeaders",
                     "mail.messageIndex = 0", *self.ends("small", "mail.LoadMessage", 0)]
            for index in (1, 2, 3):
                lines += [f"mail.messageIndex = {index}",
                          *self.ends(f"large {index}", "mail.LoadMessage", *no_room),
                          f'Same "large {index}, the loaded message stays", "small", mail.subject']
            lines += ["mail.messageIndex = 0", *self.ends("small again", "mail.LoadMessage", 0),
                      'Same "files", 4, FileCount(received)']
            many, one = (1000, 500_000, 600_000), (2 * MIB,)
            for what, sizes, encoding, ending in (
                    ("many", many, 2, not_encoded), ("one", one, 0, not_encoded),
                    ("many in an archive", many, 64, not_packed),
                    ("one in an archive", one, 2 + 128, not_packed),
                    ("an archive encoded", (700_000,), 2 + 64, not_encoded)):
                lines += ["NewMessage", *self.attaching(*sizes),
                          f"mail.attachmentEncoding = {encoding}",
                          *self.ends(what, "mail.Send", *ending)]
            lines += ["mail.attachmentEncoding = 2", "NewMessage", *self.attaching(1000, 500_000),
                      *self.ends("what fits", "mail.Send", 0)]
            self.run_script(host.smtp, host.pop, lines)
            self.assertEqual(len(mailbox) + 1, len(host.received()))
            for file in (self.scratch / "received").iterdir():
                self.assertIn(file.stat().st_size, (1000, 100_000))


if __name__ == "__main__":
    unittest.main()
