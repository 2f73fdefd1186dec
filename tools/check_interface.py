"""Checks that the public interface is still what clients were promised: every interface, class and
enumeration of src/automation/quillon.promised has its identifier, and every member its place, its
dispid or value, its direction and its types, its parameters their names. New members go behind the
others; `--promise` adds them to the file, once they are released. The error codes that clients are
told are those that the server raises."""

import pathlib
import re
import subprocess
import sys

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "src" / "automation"
IDL = FOLDER / "quillon.idl"
PROMISED = FOLDER / "quillon.promised"
BLOCK = re.compile(r"\[([^\[\]]*)\]\s*(library|interface|coclass)\s+(\w+)(?:\s*:\s*(\w+))?\s*\{")
MEMBER = re.compile(r"\[([^\[\]]*\bid\([^)]*\)[^\[\]]*)\]\s*([^;]*);")
DEFAULT = re.compile(r"\[default\]\s*interface\s+\w+")
ENUM = re.compile(r"\btypedef\s*\[([^\[\]]*)\]\s*enum\s+(\w+)\s*\{([^{}]*)\}")
TEXT = re.compile(r",?\s*helpstring\(\s*\"[^\"]*\"\s*\)")
ERROR_CODES = FOLDER.parent / "core" / "ErrorCode.h"
ERROR_CODE = re.compile(r"constexpr std::int32_t k(\w+) = (\d+);")
# A failure of the system's own, one of a system that is gone, and where other numbers begin.
NO_SERVER_ERRORS = {"FileAccess", "Windows16", "Dialer"}


def plain(text):
    return re.sub(r"\s+", " ", TEXT.sub("", text)).strip().strip(",").strip()


def described(idl):
    """{'interface IServer : IDispatch': [line, ...]}, the identifier first."""
    text = subprocess.run(["g++", "-E", "-P", "-x", "c", "-"], input=idl, capture_output=True,
                          text=True, check=True).stdout
    found = {}
    for block in BLOCK.finditer(text):
        attributes, kind, name, base = block.groups()
        lines = [plain(attributes)]
        if kind != "library":
            body = text[block.end():text.index("}", block.end())]
            lines += [f"[{plain(a)}] {plain(d)}" for a, d in MEMBER.findall(body)]
            lines += [plain(line) for line in DEFAULT.findall(body)]
        found[f"{kind} {name}" + (f" : {base}" if base else "")] = lines
    for attributes, name, body in ENUM.findall(text):
        values = re.sub(r"\[[^\[\]]*\]", "", body).split(",")
        found[f"enum {name}"] = [plain(attributes), *(plain(value) for value in values)]
    return found


def promised():
    found, lines = {}, []
    for line in PROMISED.read_text(encoding="utf-8").splitlines():
        if not line.startswith(" "):
            lines = found.setdefault(line, [])
        else:
            lines.append(line.strip())
    return found


def problems(now, before):
    for name, lines in before.items():
        if name not in now:
            yield f"{name} is no longer there"
            continue
        for place, line in enumerate(lines):
            there = now[name][place] if place < len(now[name]) else "nothing"
            if there != line:
                yield f"{name}, line {place + 1}: promised was\n    {line}\nand there is\n    {there}"


def other_error_codes(now):
    """Those of which the type library and the code do not say the same."""
    raised = {f"Error{name} = {number}"
              for name, number in ERROR_CODE.findall(ERROR_CODES.read_text(encoding="utf-8"))
              if name not in NO_SERVER_ERRORS}
    for line in sorted(raised ^ set(now["enum ServerErrorCode"][1:])):
        yield f"{line} is not in both of {IDL.name} and {ERROR_CODES.name}"


def main():
    now = described(IDL.read_text(encoding="utf-8"))
    found = [*problems(now, promised()), *other_error_codes(now)]
    for problem in found:
        print(problem)
    if not found and sys.argv[1:] == ["--promise"]:
        PROMISED.write_text("".join(f"{name}\n" + "".join(f"  {line}\n" for line in lines)
                                    for name, lines in now.items()), encoding="utf-8")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
