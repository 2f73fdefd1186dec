"""Checks the samples: every member that one names on an object of the server, and every constant that
it defines under a name of the type library, is there, with that spelling and that value."""

import pathlib
import re
import sys

import check_docs

TOP = pathlib.Path(__file__).resolve().parent.parent
SAMPLES = TOP / "samples"

# The names that the samples have for objects, and what languages write around the member's own.
MEMBER = re.compile(r"\b(mail|book|Result|Sending|NewMail)(?:\.|->)@?(?:get_|putref_|put_)?(?!example\b)(\w+)")
BY_NAME = re.compile(r'setattr\(mail, "(\w+)"')
VALUE = re.compile(r"\b([A-Z]\w+) = (\d+)\b")
CONSTANT = re.compile(r"^\s*([A-Z]\w+) = (-?\d+),?", re.M)
OTHERS = {"Get"}  # of Reference, which the C++ sample holds objects by


def used(text):
    for line, content in enumerate(text.splitlines(), 1):
        for owner, name in MEMBER.findall(content):
            yield line, name
        for name in BY_NAME.findall(content):
            yield line, name


def problems(file, members, constants):
    text = file.read_text(encoding="utf-8")
    for line, name in used(text):
        if name not in members and name not in OTHERS:
            yield f"{file.relative_to(TOP)}:{line}: there is no member {name}"
    for name, value in VALUE.findall(text):
        if name in constants and constants[name] != value:
            yield f"{file.relative_to(TOP)}: {name} is {constants[name]}, not {value}"


def main():
    members = set(check_docs.idl_members(check_docs.IDL))
    constants = dict(CONSTANT.findall(check_docs.IDL.read_text(encoding="utf-8")))
    files = [file for file in sorted(SAMPLES.rglob("*")) if file.is_file()]
    found = [problem for file in files for problem in problems(file, members, constants)]
    if not files or not any(True for file in files for _ in used(file.read_text(encoding="utf-8"))):
        found.append("there are no samples")
    for problem in found:
        print(problem)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
