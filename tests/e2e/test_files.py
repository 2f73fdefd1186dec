"""The codecs on files, against other people's: what is encoded by the program is decoded by
uudecode, base64 and munpack, and the other way round."""

import binascii
import pathlib
import quopri
import random
import shutil
import subprocess
import tempfile
import unittest

from scripting import ScriptTest
import winetest

SCRIPT = pathlib.Path(__file__).resolve().parent / "mail" / "code_files.vbs"
SIZES = (1, 2, 3, 44, 45, 46, 56, 57, 58, 1799, 1800, 1801, 100000)


class Codecs(ScriptTest, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(winetest.WinePrefix())
        directory = cls.wine.drive_c / "Quillon"
        directory.mkdir()
        cls.wine.register(shutil.copy(winetest.SERVER, directory))

    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="files-")))
        source = random.Random(7)
        self.contents = {f"File{size}.bin": source.randbytes(size) for size in (0, *SIZES)}
        for name, content in self.contents.items():
            (self.folder / name).write_bytes(content)

    def commands(self, *commands):
        """Carries out commands: tuples of a word and paths (or texts)."""
        lines = ["|" + word + "".join("|" + (winetest.windows_path(argument)
                                             if isinstance(argument, pathlib.Path) else argument)
                                      for argument in arguments)
                 for word, *arguments in commands]
        (self.folder / "commands").write_text("".join(line + "\r\n" for line in lines))
        self.run_checks(self.wine, SCRIPT.read_text(), self.folder / "commands")

    def run_tool(self, *command, text=b""):
        return subprocess.run([str(word) for word in command], input=text, check=True,
                              cwd=self.folder, capture_output=True).stdout

    def test_what_is_encoded_here_is_read_elsewhere(self):
        self.commands(*((word, self.folder / name, self.folder / (name + extension))
                        for name in self.contents
                        for word, extension in (("UU_ENCODE_FILE", ".uu"),
                                                ("BASE64_ENCODE_FILE", ".b64"))))
        for name, content in self.contents.items():
            with self.subTest(name):
                uuencoded = (self.folder / (name + ".uu")).read_bytes()
                base64 = (self.folder / (name + ".b64")).read_bytes()
                self.assertEqual(content, self.run_tool("uudecode", "-o", "/dev/stdout",
                                                        text=uuencoded))
                # Coreutils takes no CR for a line end.
                self.assertEqual(content, self.run_tool("base64", "-d",
                                                        text=base64.replace(b"\r", b"")))
                self.check_munpack(name, content, uuencoded, base64)

    def check_munpack(self, name, content, uuencoded, base64):
        """It reads mail as it lies in a mailbox: with LF line ends."""
        messages = {"b64": b"MIME-Version: 1.0\r\nContent-Transfer-Encoding: base64\r\n"
                           b"Content-Type: application/octet-stream; name=b64\r\n\r\n" + base64}
        if content:  # of nothing it makes no file
            messages[name.lower()] = b"Subject: x\r\n\r\n" + uuencoded
        for file, message in messages.items():
            with tempfile.TemporaryDirectory(prefix="munpack-") as folder:
                source = pathlib.Path(folder) / "message"
                source.write_bytes(message.replace(b"\r\n", b"\n"))
                self.run_tool("env", "TMPDIR=" + folder, "munpack", "-q", "-C", folder, source)
                self.assertEqual(content, (pathlib.Path(folder) / file).read_bytes())

    def test_what_is_encoded_elsewhere_is_read_here(self):
        commands = []
        for name, content in self.contents.items():
            encoded = {
                "uu": ("UU_DECODE_FILE", self.run_tool("uuencode", name, "a b.bin")),
                "uum": ("UU_DECODE_FILE", self.run_tool("uuencode", "-m", name, "x.bin")),
                "uus": ("UU_DECODE_FILE", self.with_stripped_blanks(content)),
                "b64": ("BASE64_DECODE_FILE", self.run_tool("base64", name)),
                "b64w": ("BASE64_DECODE_FILE", self.run_tool("base64", "-w0", name)),
                "qp": ("QP_DECODE_FILE", quopri.encodestring(
                    content.replace(b"\n", b"").replace(b"\r", b""), quotetabs=True)),
            }
            for extension, (word, text) in encoded.items():
                source = self.folder / f"{name}.{extension}"
                source.write_bytes(text)
                commands.append((word, source, self.folder / f"{source.name}.out"))
        self.commands(*commands)
        for _, source, output in commands:
            with self.subTest(source.name):
                content = self.contents[source.name.rsplit(".", 1)[0]]
                if source.suffix == ".qp":
                    content = content.replace(b"\n", b"").replace(b"\r", b"")
                self.assertEqual(content, output.read_bytes())

    @staticmethod
    def with_stripped_blanks(content):
        """Blanks for zeros, of which a mail system has cut off those at line ends; bare CRs."""
        lines = [binascii.b2a_uu(content[at:at + 45]).rstrip() for at in range(0, len(content), 45)]
        return b"begin 0644 x\r" + b"\r".join(lines) + b"\r\r`\rend\r"

    def test_parts(self):
        name = "File100000.bin"
        joined = self.folder / "joined"
        joined.mkdir()
        self.commands(("UU_ENCODE_FILE", self.folder / name, self.folder, "12000"))
        parts = sorted(self.folder.glob("File100000*.UUE"))
        self.assertEqual([f"File100000{n:02}.UUE" for n in range(1, 13)],
                         [part.name for part in parts])
        whole = b"".join(part.read_bytes().split(b"\r\n", 1)[1] for part in parts)
        self.assertEqual(self.contents[name],
                         self.run_tool("uudecode", "-o", "/dev/stdout", text=whole))
        random.Random(3).shuffle(parts)
        self.commands(("UU_DECODE_FILE", *parts, joined))
        self.assertEqual(self.contents[name], (joined / "file100000.bin").read_bytes())
        with self.assertRaisesRegex(AssertionError, ": 75"):
            self.commands(("UU_DECODE_FILE", *parts[1:], self.folder / "incomplete"))
        self.assertFalse((self.folder / "incomplete").exists())


if __name__ == "__main__":
    unittest.main()
