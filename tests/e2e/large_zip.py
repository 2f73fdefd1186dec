"""Archives beyond 4 GiB, which take minutes and 20 GB of disk: not part of ./dev test.

    PYTHONPATH=tools TMPDIR=/a/large/disk python3 tests/e2e/large_zip.py

Run it after changing how sizes and positions are written."""

import hashlib
import os
import pathlib
import tempfile
import unittest
import zipfile

from test_zip import PASSWORD, ZIPFILES, run

GIB = 1 << 30
BLOCK = 1 << 20
# Around the sizes from which on an entry has 64-bit fields, and from which on it needs them.
SIZES = {"beyond": 4 * GIB + GIB // 8, "below": 4 * GIB - 4096, "small": 4096}


def digest(file):
    total = hashlib.blake2b()
    while block := file.read(BLOCK):
        total.update(block)
    return total.digest()


class LargeZip(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="zip-")))
        self.archive = self.folder / "packed.zip"

    def pack(self, names, password=""):
        words = ["--password", password] if password else []
        done = run(ZIPFILES, *words, self.archive, *names, folder=self.folder)
        self.assertEqual((0, b""), (done.returncode, done.stdout))

    def check_with_tools(self, password=""):
        for tool in ("unzip", "-tqq", "-P", password or "none"), ("7z", "t", "-p" + password):
            done = run(*tool, self.archive, folder=self.folder)
            self.assertEqual(0, done.returncode, done.stdout.decode())

    def check_with_python(self, names, password=""):
        with zipfile.ZipFile(self.archive) as opened:
            self.assertEqual(list(names), opened.namelist())
            for name in names:
                with open(self.folder / name, "rb") as original, \
                        opened.open(name, pwd=password.encode() or None) as unpacked:
                    self.assertEqual(digest(original), digest(unpacked), name)

    def test_large_files(self):
        for name, size in SIZES.items():
            with open(self.folder / name, "wb") as file:
                file.write(os.urandom(1000))
                file.truncate(size)
        for password in ("", PASSWORD):
            with self.subTest(password=password):
                self.pack(SIZES, password)
                self.check_with_tools(password)
                self.check_with_python(SIZES, password)

    def test_large_archive(self):
        """The entries behind 4 GiB of noise, and the directory, are found."""
        names = ("noise", "more", "last")
        for name, size in zip(names, (3 * GIB, GIB + GIB // 8, 10000)):
            with open(self.folder / name, "wb") as file:
                for at in range(0, size, BLOCK):
                    file.write(os.urandom(min(BLOCK, size - at)))
        self.pack(names)
        self.assertGreater(self.archive.stat().st_size, 4 * GIB)
        self.check_with_tools()
        self.check_with_python(names)


if __name__ == "__main__":
    unittest.main()
