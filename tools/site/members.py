"""The page of all members from A to Z, read out of the entries of docs/reference."""

import itertools
import re
import sys

from pages import TOP

sys.path.insert(0, str(TOP / "tools"))
import check_docs  # noqa: E402

CLASSES = {"address-book.md": "AddressBook", "dialer.md": "Dialer"}
OWNERS = {"Server": "", "AddressBook": " of `AddressBook`", "Dialer": " of `Dialer`",
          "collection": " of a collection"}
# What an entry begins with before it says what the member is for.
TECHNICAL = re.compile(r"(Method|Property|Default|Shared|Nothing at first|Internet mail only"
                       r"|The number of the)\b|`\|")
SENTENCE = re.compile(r"(?<=[.:])\s+(?=[A-Z`\[0-9])")


def plain(text):
    """Without the links: they lead from another page."""
    return re.sub(r"\[((?:[^\[\]]|`[^`]*`)*)\]\([^)]*\)", r"\1", text)


def purpose(paragraph):
    """The first sentence that is no technicality."""
    sentences = SENTENCE.split(plain(" ".join(paragraph)))
    for sentence in sentences[1:]:
        if not TECHNICAL.match(sentence):
            return sentence.rstrip(".:,") + "."
    return sentences[0]


def entries():
    """(name, page, class, kind, purpose) of each entry."""
    for page in sorted(check_docs.REFERENCE.glob("*.md")):
        lines = page.read_text(encoding="utf-8").splitlines()
        for number, name, _ in check_docs.entries("\n".join(lines)):
            paragraph = list(itertools.takewhile(str.strip, lines[number + 1:]))
            kind = "property" if paragraph[0].startswith("Property") else "method"
            owner = CLASSES.get(page.name, "Server")
            if ", of a collection" in paragraph[0]:
                owner = "collection"
            yield name, page.name, owner, kind, purpose(paragraph)


def page():
    """The page, as Markdown."""
    found = sorted(entries(), key=lambda entry: (entry[0].lower(), entry[2]))
    letters = itertools.groupby(found, key=lambda entry: entry[0][0].upper())
    sections = {letter: list(members) for letter, members in letters}
    lines = ["# Members from A to Z", "",
             f"All {len(found)} members, of `Server` where nothing else is said.", "",
             " ".join(f"[{letter}](#{letter.lower()})" for letter in sections), ""]
    for letter, members in sections.items():
        lines += [f"## {letter}", "", "| member | kind | what it is for |", "|---|---|---|"]
        for name, file, owner, kind, text in members:
            text = text.replace("|", "\\|")
            lines.append(f"| [`{name}`]({file}#{name.lower()}){OWNERS[owner]} | {kind} | {text} |")
        lines.append("")
    return "\n".join(lines)
