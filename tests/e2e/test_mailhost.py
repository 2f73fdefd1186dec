"""The embedded mail host: what the other tests believe it of. Were one of its faults no fault, or a
conversation that goes astray not noticed, they would pass for nothing.

Run it with python3; MAILHOST names the program, otherwise it is build/native/mailhost.
"""

import os
import pathlib
import re
import signal
import socket
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
MAILHOST = os.environ.get("MAILHOST", str(ROOT / "build/native/mailhost"))
PATIENCE = 20  # seconds until a peer that does not answer fails a test


class Peer:
    """A client that says exactly the bytes it is told to."""

    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=PATIENCE)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.received = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.socket.close()

    def send(self, data):
        self.socket.sendall(data)

    def read(self):
        """The next bytes, or b"" when the host has closed the connection."""
        try:
            return self.socket.recv(1 << 16)
        except ConnectionResetError:
            return b""

    def until(self, mark):
        while mark not in self.received:
            data = self.read()
            if not data:
                raise EOFError(self.received)
            self.received += data
        found, self.received = self.received.split(mark, 1)
        return found + mark

    def line(self):
        return self.until(b"\r\n")[:-2]

    def reply(self):
        """A whole SMTP reply: all of its lines."""
        lines = [self.line()]
        while lines[-1][3:4] == b"-":
            lines.append(self.line())
        return b"\n".join(lines)

    def rest(self):
        """Everything up to the end of the connection."""
        pieces = [self.received]
        while data := self.read():
            pieces.append(data)
        return b"".join(pieces)

    def ask(self, command):
        self.send(command + b"\r\n")
        return self.reply()

    def data(self, command):
        """The lines of a positive POP3 reply with data, as they came."""
        self.send(command + b"\r\n")
        head = self.line()
        assert head.startswith(b"+OK"), head
        if self.received.startswith(b".\r\n") or not self.received and self.peek(3) == b".\r\n":
            self.until(b".\r\n")
            return b""
        return self.until(b"\r\n.\r\n")[:-3]

    def peek(self, count):
        while len(self.received) < count:
            self.received += self.read()
        return self.received[:count]

    def login(self):
        self.line()
        self.ask(b"USER u")
        return self.ask(b"PASS p")

    def start_message(self):
        self.reply()
        return [self.ask(c) for c in (b"HELO me", b"MAIL FROM:<a@b>", b"RCPT TO:<c@d>", b"DATA")]


class HostTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="mailhost-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.store = self.folder / "mail"
        self.host = None

    def start(self, *options, faults=None):
        """Starts the host, with `faults` as the text of its fault file."""
        command = [MAILHOST, "--smtp-port", "0", "--pop-port", "0", "--store", str(self.store),
            *options]
        if faults is not None:
            file = self.folder / "faults"
            file.write_text(faults)
            command += ["--faults", str(file)]
        self.host = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                     text=True)
        self.addCleanup(self.stop)
        lines = [line.split() for line in iter(self.host.stdout.readline, "ready\n") if line]
        self.ports = {name: int(port) for name, port in lines}
        self.smtp_port, self.pop_port = self.ports["smtp"], self.ports["pop"]

    def stop(self):
        """Ends the host; its exit status and what it complained of."""
        if self.host is None:
            return None
        self.host.send_signal(signal.SIGTERM)
        _, errors = self.host.communicate(timeout=PATIENCE)
        status, self.host = self.host.returncode, None
        complaint = r"(mailhost: \S+:\d+: expected [^\n]+\n)+" if status == 1 else ""
        self.assertIn(status, (0, 1), errors)
        self.assertRegex(errors, rf"\A{complaint}\Z")
        return status, errors

    def restart(self, *options, faults=None):
        self.stop()
        self.start(*options, faults=faults)

    def smtp(self):
        return Peer(self.smtp_port)

    def pop(self):
        return Peer(self.pop_port)

    def stored(self):
        """The contents of all messages, in the order in which POP3 shows them."""
        files = [*self.store.glob("new/*"), *self.store.glob("cur/*")]
        return [file.read_bytes() for file in sorted(files, key=lambda file: file.name)]

    def put(self, name, content):
        file = self.store / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(content)


def stuffed(content):
    return re.sub(rb"(\A|\r\n)\.", rb"\1..", content) + b".\r\n"


def unstuffed(lines):
    return re.sub(rb"(\A|\r\n)\.\.", rb"\1.", lines)


class Content(HostTest):
    """What is sent is what is stored is what is retrieved, byte for byte."""

    CASES = [
        b"",
        b"\r\n",
        b".\r\n",
        b"..\r\n.\r\n...\r\n",
        b"Subject: x\r\n\r\n.first\r\nlast.\r\n",
        b"bare\nline\n.\nfeeds\r\n",
        b"a\r.\r\nb\r\r\n.\r\r\n",
        b".\r.\r\n.\n\r\n",
        b"\x00\xff\x1a\r\n.\x00\r\n",
        # A CR LF across the places where reading a file may stop, and a dot after it.
        b"x" * 16383 + b"\r\n.a\r\n",
        b"a\r\n" + b"x" * (65535 - 3) + b"\r\n.a\r\n" + b"x" * (16384 - 6) + b"\r\n.a\r\n",
        b"x" * 65535 + b"\r\n",
        b"long" * 60000 + b"\r\n." + b"." * 70000 + b"\r\n",
    ]

    def transfer(self, contents, cuts):
        with self.smtp() as peer:
            peer.reply()
            peer.ask(b"HELO me")
            for content in contents:
                peer.ask(b"MAIL FROM:<a@b>")
                peer.ask(b"RCPT TO:<c@d>")
                self.assertEqual(peer.ask(b"DATA")[:3], b"354")
                wire = stuffed(content)
                edges = [0, *cuts(len(wire)), len(wire)]
                for start, end in zip(edges, edges[1:]):
                    peer.send(wire[start:end])
                self.assertEqual(peer.reply()[:3], b"250", content[:80])
        self.assertEqual(self.stored(), contents)
        with self.pop() as peer:
            peer.login()
            sizes = peer.data(b"LIST").split()[1::2]
            for index, content in enumerate(contents):
                wire = peer.data(b"RETR %d" % (index + 1))
                # A message whose first line ends in a bare LF is served with its line ends mended.
                if re.match(rb"[^\n]*(?<!\r)\n", content):
                    content = re.sub(rb"(?<!\r)\n", b"\r\n", content)
                self.assertEqual(unstuffed(wire), content)
                self.assertEqual(int(sizes[index]), len(content), content[:80])

    def test_whole(self):
        self.start()
        self.transfer(self.CASES, lambda size: [])

    def test_cut_anywhere(self):
        self.start()
        self.transfer([case for case in self.CASES if len(case) < 99], lambda size: range(1, size))

    def test_top(self):
        header = b"Subject: x\r\nTo: y\r\n\r\n"
        self.put("new/1", header + b"one\r\n.two\r\n\r\nfour\r\n")
        self.put("new/2", b"Long: " + b"x" * 70000 + b"\r\n\r\nbody\r\n")
        self.put("new/3", b"Only: header")
        self.put("new/4", b"\nbody\n")
        self.start()
        with self.pop() as peer:
            peer.login()
            for command, expected in {
                b"TOP 1 0": header,
                b"TOP 1 1": header + b"one\r\n",
                b"TOP 1 2": header + b"one\r\n..two\r\n",
                b"TOP 1 99": header + b"one\r\n..two\r\n\r\nfour\r\n",
                b"TOP 2 0": b"Long: " + b"x" * 70000 + b"\r\n\r\n",
                b"top 2 1": b"Long: " + b"x" * 70000 + b"\r\n\r\nbody\r\n",
                b"TOP 3 5": b"Only: header\r\n",
                b"TOP 4 0": b"\r\n",
            }.items():
                self.assertEqual(peer.data(command), expected, command)


class Smtp(HostTest):
    def test_envelope(self):
        self.start()
        paths = {
            b"MAIL FROM: <a@b>": b"a@b", b"mail from:<@x,@y:a@b>": b"a@b",
            b'MAIL FROM:<"a b>\\" c"@d>': b'"a b>\\" c"@d',
            b"MAIL FROM:<> BODY=7BIT": b"",
        }
        with self.smtp() as peer:
            peer.reply()
            peer.ask(b"EHLO me")
            for command in paths:
                replies = [peer.ask(c) for c in (command, b"RCPT TO: <c@d>", b"RCPT TO:<root>",
                        b"DATA", b"text\r\n.")]
                self.assertEqual([reply[:3] for reply in replies],
                    [b"250", b"250", b"250", b"354", b"250"], command)
        messages = sorted(file.name for file in self.store.glob("new/*"))
        folder = self.store / "envelopes"
        envelopes = [(folder / (name + ".envelope")).read_bytes() for name in messages]
        self.assertEqual(envelopes,
            [b"MAIL FROM:<%s>\nRCPT TO:<c@d>\nRCPT TO:<root>\n" % a for a in paths.values()])


class Pop(HostTest):
    def setUp(self):
        super().setUp()
        for number in (1, 2, 3):
            self.put(f"new/{number}", b"x" * number + b"\r\n")

    def test_login(self):
        self.start("--user", "joe", "--password", "a b", "--log", str(self.folder / "log"))
        with self.pop() as peer:
            self.assertEqual(peer.line()[:3], b"+OK")
            for command in (b"STAT", b"PASS a b", b"USER", b"WHAT"):
                self.assertEqual(peer.ask(command)[:4], b"-ERR", command)
            for user, password in ((b"joe", b"a"), (b"Joe", b"a b"), (b"joe", b"a b ")):
                self.assertEqual(peer.ask(b"USER " + user)[:3], b"+OK")
                self.assertEqual(peer.ask(b"PASS " + password)[:4], b"-ERR")
            self.assertEqual(peer.ask(b"PASS a b")[:4], b"-ERR")
            self.assertIn(b"UIDL\r\n", peer.data(b"CAPA"))
            peer.ask(b"user joe")
            self.assertEqual(peer.ask(b"pass a b"), b"+OK 3 messages (12 octets)")
            self.assertEqual(peer.ask(b"USER joe")[:4], b"-ERR")
        self.stop()
        log = (self.folder / "log").read_text()
        self.assertIn("POP C: PASS ****\nPOP S: +OK 3 messages", log)
        self.assertNotIn("a b", log)

    def test_deletion_at_quit_only(self):
        self.put("envelopes/2.envelope", b"")
        self.start()
        with self.pop() as peer:
            peer.login()
            self.assertEqual(peer.ask(b"DELE 2")[:3], b"+OK")
            for command in (b"DELE 2", b"RETR 2", b"LIST 2", b"UIDL 2", b"TOP 2 0", b"DELE 4",
                b"DELE 0"):
                self.assertEqual(peer.ask(command)[:4], b"-ERR", command)
            self.assertEqual(peer.ask(b"STAT"), b"+OK 2 8")
            self.assertEqual(peer.data(b"UIDL"), b"1 1\r\n3 3\r\n")
            peer.ask(b"RSET")
            self.assertEqual(peer.ask(b"STAT"), b"+OK 3 12")
            peer.ask(b"DELE 1")
        with self.pop() as peer:  # the connection above ended without QUIT
            self.assertIn(b"3 messages", peer.login())
            peer.ask(b"DELE 2")
            self.assertEqual(peer.ask(b"QUIT")[:3], b"+OK")
        self.assertEqual(self.stored(), [b"x\r\n", b"xxx\r\n"])
        self.assertEqual([*self.store.glob("envelopes/*")], [])


class Rules(HostTest):
    """Each action of a fault rule, and where it may stand."""

    def test_replies(self):
        # rule, what the client says, all that it hears (a pattern), how many messages are stored
        greeting = rb"220 [^\n]*\r\n"
        helo = rb"250 localhost\r\n"
        message = (b"HELO x\r\nMAIL FROM:<a@b>\r\nRCPT TO:<c@d>\r\nRCPT TO:<e@f>\r\n"
                   b"DATA\r\nhello\r\n.\r\nQUIT\r\n")
        done = rb"250 message accepted\r\n221 bye\r\n"
        accepted = rb"250 sender ok\r\n250 recipient ok\r\n250 recipient ok\r\n354 [^\n]*\r\n"
        for rule, says, hears, stored in [
            ("smtp at greeting reply 554-go\\r\\n554 away", b"QUIT\r\n",
                rb"554-go\r\n554 away\r\n221 bye\r\n", 0),
            ("at greeting drop", b"", b"", 0),
            ("smtp at HELO 2 reply 421 no", b"HELO x\r\nHELO x\r\nHELO x\r\nQUIT\r\n",
                greeting + helo + rb"421 no\r\n" + helo + rb"221 bye\r\n", 0),
            ("smtp at rcpt 2 reply 550 no", message,
                greeting + helo + rb"250 sender ok\r\n250 recipient ok\r\n550 no\r\n354 [^\n]*\r\n"
                + done, 1),
            ("smtp at RCPT reply 550 no", message,
                greeting + helo + rb"250 sender ok\r\n(550 no\r\n){2}503 [^\n]*\r\n"
                + rb"(500 [^\n]*\r\n){2}221 bye\r\n", 0),
            ("smtp at terminator reply 554 no", message,
                greeting + helo + accepted + rb"554 no\r\n221 bye\r\n", 0),
            ("smtp at terminator silent", message, greeting + helo + accepted + rb"221 bye\r\n", 0),
            ("smtp at terminator drop", message, greeting + helo + accepted, 0),
            ("smtp at terminator drop mid", message, greeting + helo + accepted + rb"250 message",
                1),
            ("smtp at terminator drop after", message,
                greeting + helo + accepted + rb"250 message accepted\r\n", 1),
            ("smtp at body drop", message, greeting + helo + accepted, 0),
            ("smtp at body stall", message, greeting + helo + accepted, 0),
            ("smtp at body reply 552 no", message,
                greeting + helo + accepted + rb"552 no\r\n221 bye\r\n", 0),
            ("smtp at MAIL multiline", message,
                greeting + helo + rb"250-more follows\r\n" + accepted + done, 1),
            ("smtp at * 3 silent", message,
                greeting + helo + rb"(503 [^\n]*\r\n){3}(500 [^\n]*\r\n){2}221 bye\r\n", 0),
            ("smtp at NOOP garbage 1000", b"NOOP\r\nQUIT\r\n",
                greeting + rb"(?=.{0,10}\x00)[^\r\n]{1000}221 bye\r\n", 0),
            ("smtp at NOOP garbage 1000 lines", b"NOOP\r\nQUIT\r\n",
                greeting + rb"(?:[^\r\n]{38}\r\n){25}221 bye\r\n", 0),
            ("smtp at AUTH reply 535 no\nsmtp at AUTH drop after", b"AUTH x\r\nQUIT\r\n",
                greeting + rb"535 no\r\n", 0),
            ("smtp at QUIT silent", b"QUIT\r\nNOOP\r\nRSET\r\n",
                greeting + rb"250 ok\r\n250 reset\r\n", 0),
        ]:
            with self.subTest(rule):
                self.restart(faults="# a comment\n\n" + rule + "\n")
                with self.smtp() as peer:
                    peer.send(says)
                    peer.socket.shutdown(socket.SHUT_WR)
                    self.assertRegex(peer.rest(), re.compile(rb"\A" + hears + rb"\Z", re.S))
                kept = [*self.store.glob("new/*")]
                for file in kept:
                    file.unlink()
                self.assertEqual(len(kept), stored)

    def test_pop_replies(self):
        content = b"Subject: x\r\n\r\n" + b"y" * 40000 + b"\r\n"
        self.put("new/1", content)
        data = rb"\+OK [^\n]*\r\n"
        for rule, says, hears in [
            ("pop at RETR truncate 20", b"RETR 1", data + re.escape(content[:20])),
            ("pop at RETR truncate 0", b"RETR 1", data),
            ("pop at TOP truncate 30000", b"TOP 1 9", data + re.escape(content[:30000])),
            ("pop at UIDL truncate 3", b"UIDL", data + rb"1 1"),
            ("pop at UIDL flood 3 # id#", b"UIDL\r\nQUIT", data + rb"1 id1\r\n2 id2\r\n3 id3\r\n" + data),
            ("pop at RETR flood 2 a\\0", b"RETR 1\r\nQUIT", data + rb"a\0\r\na\0\r\n" + data),
            ("pop at STAT flood 20000 x", b"STAT\r\nQUIT", data + rb"(x\r\n){20000}" + data),
            ("pop at TOP drop mid", b"TOP 1 0", data + rb"Subject"),
            ("pop at RETR drop after", b"RETR 1", data + re.escape(content) + rb"\.\r\n"),
            ("pop at STAT multiline", b"STAT\r\nQUIT", rb"\+OK 1 40016\r\nmore\r\n\.\r\n" + data),
            ("at RETR 2 silent", b"RETR 1\r\nRETR 1\r\nQUIT",
                data + re.escape(content) + rb"\.\r\n" + data),
            ("pop at DELE drop after\npop at QUIT reply +OK never", b"DELE 1", data),
        ]:
            with self.subTest(rule):
                self.restart(faults=rule)
                with self.pop() as peer:
                    self.assertIn(b"1 messages", peer.login())
                    peer.send(says + b"\r\n")
                    self.assertRegex(peer.rest(), re.compile(rb"\A" + hears + rb"\Z", re.S))
                self.assertEqual(self.stored(), [content])
        self.restart(faults="pop at PASS reply -ERR the maildrop is BUSY")
        with self.pop() as peer:
            self.assertEqual(peer.login(), b"-ERR the maildrop is BUSY")

    def test_split(self):
        for size, least in (("byte 5", 10), ("line 20", 4), ("3 5", 5)):
            with self.subTest(size):
                self.restart(faults=f"smtp at EHLO split {size}\nsmtp at EHLO delay 50")
                with self.smtp() as peer:
                    peer.reply()
                    peer.send(b"EHLO x\r\nQUIT\r\n")
                    pieces = []
                    while data := peer.read():
                        pieces.append(data)
                # What the system has joined again is counted once, so the number is a lower bound.
                self.assertGreaterEqual(len(pieces), least)
                self.assertRegex(b"".join(pieces),
                    rb"\A250-localhost\r\n(250-.*\r\n)+250 .*\r\n221 bye\r\n\Z")

    def test_stall_blocks_the_client(self):
        self.start(faults="smtp at body stall")
        with self.smtp() as peer:
            self.assertEqual(peer.start_message()[-1][:3], b"354")
            peer.socket.settimeout(0.5)
            with self.assertRaises(TimeoutError):
                peer.send(b"x" * 32 * 1024 * 1024)
        with self.smtp() as peer:  # others are not held up
            self.assertEqual(peer.reply()[:3], b"220")


class Conversations(HostTest):
    SCRIPT = r"""# comment
protocol smtp
S> 22
S: 0 ready\r\n220 more\x21
set anything
C: HELO *
shape byte
S: 250 h\\i
C: MAIL FROM:<a@b>
C: RCPT TO:<*>*x\*?
shape whole
wait 10
S: 354 go
D:
expect something
shape line
S: 250-kept\r\n250 kept
C: QUIT
close
"""
    CLIENT = [b"HELO \\me*", b"MAIL FROM:<a@b>", b"RCPT TO:<c@d> x x*?", b"hello\r\n..\r\n.",
        b"QUIT"]

    def play(self, lines, ending=b"\r\n", script=SCRIPT):
        """Exit status, complaint and what the client heard, when it says these lines."""
        self.start(faults=script)
        with self.smtp() as peer:
            peer.send(b"\r\n".join(lines) + ending)
            peer.socket.shutdown(socket.SHUT_WR)
            heard = peer.rest()
        return *self.stop(), heard

    def test_played_to_the_end(self):
        status, errors, heard = self.play(self.CLIENT)
        self.assertEqual((status, errors), (0, ""))
        self.assertEqual(heard, b"220 ready\r\n220 more!\r\n250 h\\i\r\n354 go\r\n250-kept\r\n250 kept\r\n")
        self.assertEqual(self.stored(), [b"hello\r\n.\r\n"])
        envelope, = self.store.glob("envelopes/*")
        self.assertEqual(envelope.read_text(), "MAIL FROM:<a@b>\nRCPT TO:<c@d>\n")

    def test_mismatches(self):
        file = re.escape(str(self.folder / "faults"))
        for lines, ending, complaint in [
            ([b"EHLO me"], b"\r\n", rf'{file}:6: expected "HELO \*", received "EHLO me"'),
            ([b"HELO me", b"mail FROM:<a@b>"], b"\r\n",
                rf'{file}:9: expected "MAIL FROM:<a@b>", received "mail.*'),
            ([b"HELO me", *self.CLIENT[1:2], b"RCPT TO:<c@d> x*"], b"\r\n", rf"{file}:10: .*"),
            ([b"HELO me"], b"\n", rf'{file}:6: expected "HELO \*", received .*CR LF'),
            ([b"HELO me", b"MAIL FROM:<a@b>"], b"",
                rf'{file}:9: .* received the end of the connection'),
            (self.CLIENT[:3] + [b"half"], b"\r\n",
                rf'{file}:14: expected message content, received the end.*'),
        ]:
            with self.subTest(lines=lines):
                status, errors, _ = self.play(lines, ending)
                self.assertEqual(status, 1)
                self.assertRegex(errors, rf"\Amailhost: {complaint}\n\Z")

    def test_a_line_after_the_end(self):
        status, errors, _ = self.play([b"NOOP", b"MORE"], script="protocol smtp\nS: 220\nC: NOOP\n")
        self.assertEqual(status, 1)
        self.assertIn('expected nothing more, received "MORE"', errors)


class CommandLine(HostTest):
    def complaint(self, *arguments):
        result = subprocess.run([MAILHOST, *arguments], capture_output=True, text=True,
            timeout=PATIENCE)
        self.assertEqual(result.returncode, 2, arguments)
        self.assertEqual(result.stdout, "")
        self.assertRegex(result.stderr, r"\Amailhost: [^\n]+\n\Z")
        return result.stderr

    def test_fault_files(self):
        file = self.folder / "wrong"
        for line in [
            "smtp RCPT drop", "smtp at", "smtp at RCTP drop", "pop at MAIL drop", "smtp at MAIL",
            "smtp at MAIL explode", "smtp at MAIL 0 drop",
            "smtp at MAIL drop x", "smtp at MAIL delay", "smtp at MAIL delay x",
            "smtp at MAIL reply", "smtp at MAIL reply \\q",
            "smtp at MAIL split", "smtp at MAIL split 0", "smtp at MAIL garbage 5 words",
            "smtp at MAIL flood", "smtp at MAIL flood 5", "smtp at MAIL flood x y",
            "smtp at MAIL truncate 5", "pop at STAT truncate 5",
            "smtp at MAIL silent now", "protocol ftp", "protocol smtp\nX: y",
            "protocol smtp\nS: \\x1", "protocol smtp\nC: \\xzz",
            "protocol smtp\nclose\nS: x", "protocol smtp\nshape square", "protocol smtp\nwait",
            "protocol pop\nD:", "protocol smtp\nprotocol smtp",
        ]:
            with self.subTest(line):
                file.write_text("# comment\n\n" + line + "\n")
                number = 3 + line.count("\n")
                says = self.complaint("--smtp-port", "0", "--pop-port", "0", "--store",
                    str(self.store), "--faults", str(file))
                self.assertIn(f"{file}:{number}: ", says)


if __name__ == "__main__":
    unittest.main()
