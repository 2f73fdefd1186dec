"""Checks the documents: every public member of the IDL has its entry with an example in
docs/reference/, no entry describes a member that is not there, every relative link leads
somewhere, and what is named as a path of this tree is one."""

import collections
import pathlib
import re
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
IDL = TOP / "src" / "automation" / "quillon.idl"
REFERENCE = TOP / "docs" / "reference"

INTERFACE = re.compile(r"\b(?:interface|dispinterface)\s+(\w+)\s*(?::\s*\w+\s*)?\{(.*?)\n\s*\}", re.S)
MEMBER = re.compile(r"\[([^\[\]]*\bid\([^)]*\)[^\[\]]*)\]\s*[\w* ]+?\s+\**(\w+)\s*\(", re.S)
ENTRY = re.compile(r"^### `(\w+)`")
HEADING = re.compile(r"^(#{1,6})\s+(.*?)\s*#*\s*$")
LINK = re.compile(r"!?\[[^\]]*\]\(([^()\s]+(?:\([^()]*\))?)[^()]*\)")
PATH = re.compile(r"`((?:bench|cmake|docs|examples|fuzz|src|tests|tools)/[\w./-]*)`")


def idl_members(path):
    """{member: [interfaces that have it]}; hidden and restricted members need no entry."""
    text = subprocess.run(["g++", "-E", "-P", "-x", "c", str(path)], capture_output=True, text=True,
                          check=True).stdout
    members = collections.defaultdict(set)
    for interface, body in INTERFACE.findall(text):
        for attributes, name in MEMBER.findall(body):
            if not re.search(r"\b(hidden|restricted)\b", attributes):
                members[name].add(interface)
    return members


def lines_outside_code(text):
    """(line number, line, whether a code block begins there); the insides of blocks left out."""
    inside = False
    for number, line in enumerate(text.splitlines(), 1):
        fence = line.lstrip().startswith("```")
        if fence:
            inside = not inside
            if inside:
                yield number, line, True
        elif not inside:
            yield number, line, False


def entries(text):
    """(line number, member, has an example) for each entry of a reference page."""
    current = None
    for number, line, code in lines_outside_code(text):
        heading = HEADING.match(line)
        if heading and len(heading[1]) <= 3:
            if current:
                yield tuple(current)
            found = ENTRY.match(line)
            current = [number, found[1], False] if found else None
        elif code and current:
            current[2] = True
    if current:
        yield tuple(current)


def check_reference():
    if not IDL.exists():
        return
    members = idl_members(IDL)
    if not members:
        yield f"{IDL.relative_to(TOP)}: no member found"
    known = {name.lower() for name in members}  # automation names have no case
    seen = collections.Counter()
    for page in sorted(REFERENCE.glob("*.md")):
        for number, name, example in entries(page.read_text(encoding="utf-8")):
            where = f"{page.relative_to(TOP)}:{number}"
            seen[name.lower()] += 1
            if name.lower() not in known:
                yield f"{where}: `{name}` is not a member of any interface"
            elif not example:
                yield f"{where}: `{name}` has no example"
    for name, interfaces in members.items():
        if seen[name.lower()] < len(interfaces):
            yield (f"docs/reference: `{name}` of {', '.join(sorted(interfaces))} has "
                   f"{seen[name.lower()]} of {len(interfaces)} entries")


def anchor(heading):
    """The fragment a heading is reached by."""
    text = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading).lower()
    return re.sub(r"[^\w\- ]", "", text).replace(" ", "-")


def anchors(page):
    seen = collections.Counter()
    result = set()
    for _, line, code in lines_outside_code(page.read_text(encoding="utf-8")):
        heading = HEADING.match(line) if not code else None
        if heading:
            name = anchor(heading[2])
            result.add(f"{name}-{seen[name]}" if seen[name] else name)
            seen[name] += 1
    return result


def check_links():
    for page in sorted(TOP.rglob("*.md")):
        if page.relative_to(TOP).parts[0] == "build":
            continue
        for number, line, code in lines_outside_code(page.read_text(encoding="utf-8")):
            for target in [] if code else LINK.findall(re.sub(r"`[^`]*`", "", line)):
                if re.match(r"[a-z][a-z0-9+.-]*:", target):
                    continue
                name, _, fragment = target.partition("#")
                goal = (page.parent / name) if name else page
                where = f"{page.relative_to(TOP)}:{number}"
                if not goal.exists():
                    yield f"{where}: {target} leads nowhere"
                elif fragment and goal.suffix == ".md" and fragment not in anchors(goal):
                    yield f"{where}: there is no heading for {target}"


def check_paths():
    """What a document names as a path of this tree is there."""
    for page in sorted(TOP.rglob("*.md")):
        if page.relative_to(TOP).parts[0] == "build":
            continue
        for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
            for name in PATH.findall(line):
                if not (TOP / name).exists():
                    yield f"{page.relative_to(TOP)}:{number}: there is no {name}"


def main():
    problems = [*check_reference(), *check_links(), *check_paths()]
    for problem in problems:
        print(problem)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
