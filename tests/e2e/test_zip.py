"""Packed attachments, opened by the programs their recipients have: Info-ZIP's unzip, 7-Zip and
Python's zipfile."""

import os
import pathlib
import random
import subprocess
import tempfile
import time
import unittest
import zipfile

import winetest

ZIPFILES = winetest.TOP / "build" / "native" / "zipfiles"
PASSWORD = "open sesame"
NAMES = ("report.txt", "a b  c.doc", "Grüße 日本 📎.bin", "UPPER.TXT", "no extension", "%s;&'.x")
ENVIRONMENT = {**os.environ, "LC_ALL": "C.UTF-8"}


def run(*command, folder):
    return subprocess.run([str(word) for word in command], cwd=folder, env=ENVIRONMENT,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT)


def unpack_with_unzip(archive, password, folder):
    return run("unzip", "-qq", "-P", password or "none", archive, folder=folder)


def unpack_with_7zip(archive, password, folder):
    return run("7z", "x", "-y", "-bd", "-p" + (password or "none"), archive, folder=folder)


def unpack_with_python(archive, password, folder):
    with zipfile.ZipFile(archive) as opened:
        opened.extractall(folder, pwd=password.encode() or None)
    return subprocess.CompletedProcess([], 0, b"")


UNPACKERS = (unpack_with_unzip, unpack_with_7zip, unpack_with_python)


def random_content(source):
    """Text, noise, and long repetitions, of any length and in any order."""
    pieces = []
    for _ in range(source.randrange(6)):
        size = int(2 ** source.uniform(0, 19))
        pieces.append(source.choice((
            lambda: source.randbytes(size),
            lambda: bytes([source.randrange(256)]) * size,
            lambda: " ".join(source.choices(NAMES, k=size // 10)).encode(),
            lambda: bytes(source.choices(b"abc\0", k=size)))))
    return b"".join(piece() for piece in pieces)


class ZipTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="zip-")))
        self.archive = self.folder / "packed.zip"

    def write(self, contents, folder="in"):
        (self.folder / folder).mkdir(exist_ok=True)
        paths = []
        for name, content in contents.items():
            paths.append(self.folder / folder / name)
            paths[-1].write_bytes(content)
        return paths

    def pack(self, paths, password=""):
        words = ["--password", password] if password else []
        done = run(ZIPFILES, *words, self.archive, *paths, folder=self.folder)
        self.assertEqual((0, b""), (done.returncode, done.stdout))

    def unpacked(self, unpack, password=""):
        """The files that come out, with their contents."""
        with tempfile.TemporaryDirectory(dir=self.folder) as out:
            done = unpack(self.archive, password, pathlib.Path(out))
            self.assertEqual(0, done.returncode, done.stdout.decode(errors="replace"))
            return {path.name: path.read_bytes() for path in pathlib.Path(out).iterdir()}

    def check(self, contents, password=""):
        for unpack in UNPACKERS:
            with self.subTest(unpack.__name__, password=password):
                unpacked = self.unpacked(unpack, password)
                self.assertEqual(sorted(contents), sorted(unpacked))
                for name, content in contents.items():
                    # Not assertEqual, which would compare megabytes line by line to show them.
                    self.assertTrue(content == unpacked[name], name)

    def test_random_contents(self):
        seed = random.randrange(1 << 32)
        source = random.Random(seed)
        with self.subTest(seed=seed):
            for password in ("", PASSWORD) * 3:
                contents = {name: random_content(source) for name in NAMES}
                self.pack(self.write(contents), password)
                self.check(contents, password)

    def test_nothing_but_an_empty_file(self):
        for password in ("", PASSWORD):
            self.pack(self.write({"empty": b""}), password)
            self.check({"empty": b""}, password)

    def test_files_of_one_name(self):
        paths = [path for folder in ("one", "two", "three")
                 for path in self.write({"report.txt": folder.encode()}, folder)]
        self.pack(paths)
        self.check({"report.txt": b"one", "report (2).txt": b"two", "report (3).txt": b"three"})

    def test_a_wrong_password_opens_nothing(self):
        # One wrong password in 256 passes the check in front of the data, and then fails on them.
        self.pack(self.write({"secret.txt": b"The secret of all secrets. " * 100}), PASSWORD)
        for unpack in UNPACKERS:
            with self.subTest(unpack.__name__), tempfile.TemporaryDirectory() as out:
                try:
                    self.assertNotEqual(
                        0, unpack(self.archive, "guess", pathlib.Path(out)).returncode)
                except (RuntimeError, zipfile.BadZipFile, zipfile.zlib.error):
                    pass  # the ways in which zipfile says so
        self.assertNotIn(b"secret of", self.archive.read_bytes())

    def test_times(self):
        path, = self.write({"old.txt": b"x"})
        moment = time.mktime((2001, 2, 3, 4, 5, 6, 0, 0, -1))
        os.utime(path, (moment, moment))
        self.pack([path])
        with zipfile.ZipFile(self.archive) as opened:
            self.assertEqual((2001, 2, 3, 4, 5, 6), opened.infolist()[0].date_time)

    def test_more_entries_than_the_plain_format_counts(self):
        folder = self.write({"a": b"x"})[0].parent
        count = 65535 + 5
        done = run(ZIPFILES, self.archive, *["a"] * count, folder=folder)
        self.assertEqual((0, b""), (done.returncode, done.stdout))
        with zipfile.ZipFile(self.archive) as opened:
            self.assertEqual(count, len(opened.infolist()))
            self.assertEqual(f"a ({count})", opened.infolist()[-1].filename)
        for tool in ("unzip", "-tqq"), ("7z", "t", "-bd"):
            done = run(*tool, self.archive, folder=self.folder)
            self.assertEqual(0, done.returncode, done.stdout.decode())

    def test_failures(self):
        present, = self.write({"a": b"x"})
        for words in ([present, self.folder / "missing"], [self.folder], ["/dev/full/x"],
                      [present, self.archive]):
            done = run(ZIPFILES, self.archive, *words, folder=self.folder)
            self.assertEqual(1, done.returncode, words)
            self.assertFalse(self.archive.exists())
        self.archive.symlink_to(present)
        done = run(ZIPFILES, self.archive, present, folder=self.folder)
        self.assertEqual((1, b"x"), (done.returncode, present.read_bytes()))


if __name__ == "__main__":
    unittest.main()
