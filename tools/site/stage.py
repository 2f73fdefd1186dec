"""stage.py DIRECTORY: lays out the pages of the site for Sphinx, under the names that they have
there: the documents with the navigation below them, the page of members, and a page for each file
of the tree that a document leads to."""

import pathlib
import posixpath
import re
import shutil
import sys

import members
import navigation
import pages

LANGUAGES = {".vbs": "vbs", ".js": "js", ".bas": "text", ".hta": "html",
             ".ps1": "powershell", ".psm1": "powershell",
             ".py": "python", ".cs": "csharp", ".pas": "delphi", ".cpp": "c++", ".h": "c++"}
# Programs to learn from are found by the search; the sources of this one are not.
SEARCHED = ("examples/", "samples/", "sdk/")
# The documents cannot lead to a page that only the site has.
MEMBERS_TOO = "All of them stand in [one list from A to Z](members.md), too.\n\n"
TERMS = """
The look of these pages is by others: <a href="_static/licenses.txt">their terms</a>.
"""


class StageError(Exception):
    """Why there is no site."""


def contents(home, caption, items, places):
    """A directive that lists pages below another one."""
    base = posixpath.dirname(places[home])
    lines = ["", "```{toctree}", ":hidden:"] + ([f":caption: {caption}"] if caption else []) + [""]
    for item in items:
        file = item[0] if isinstance(item, tuple) else item
        way = posixpath.relpath(places[file], base or ".")
        lines.append(f"{navigation.TITLES[file]} <{way}>" if file in navigation.TITLES else way)
    return "\n".join([*lines, "```", ""])


def navigation_of(places):
    """{file: what is added to its page}."""
    added = {navigation.HOME: ""}
    for caption, items in navigation.NAVIGATION:
        added[navigation.HOME] += contents(navigation.HOME, caption, items, places)
        for item in items:
            if isinstance(item, tuple):
                added[item[0]] = contents(item[0], "", item[1], places)
    return added


def check_navigation(places):
    listed = [navigation.HOME]
    for _, items in navigation.NAVIGATION:
        listed += navigation.documents(items)
    wanted = {file for file in places if file.endswith(".md")}
    for file in sorted(wanted - set(listed)):
        raise StageError(f"{file} stands nowhere in tools/site/navigation.py")
    for file in listed:
        if file not in places or listed.count(file) > 1:
            raise StageError(f"tools/site/navigation.py has {file}, which is not there, or twice")


def source_page(file, listed):
    """A page that shows a file."""
    content = (pages.TOP / file).read_bytes()
    try:
        text = content.decode()
    except UnicodeDecodeError:
        text = content.decode("cp1252")  # as the script hosts read it
    fence = "`" * (2 + max(map(len, re.findall("`+", text)), default=1))
    hidden = "" if file.startswith(SEARCHED) else "nosearch: true\n"
    title = "License" if file == "LICENSE" else f"`{file}`"
    language = LANGUAGES.get(pathlib.Path(file).suffix, "text")
    return (f"---\n{'' if listed else 'orphan: true'}\n{hidden}---\n\n# {title}\n\n"
            f"{fence}{language}\n{text.rstrip()}\n{fence}\n{TERMS if file == 'LICENSE' else ''}")


def pictures(target):
    for file in filter(pages.is_picture, pages.linked_files(pages.documents())):
        copy = target / file.removeprefix("docs/")
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(pages.TOP / file, copy)


def stage(target):
    places = pages.places()
    check_navigation(places)
    added = navigation_of(places)
    for file, place in places.items():
        if file == navigation.MEMBERS:
            text = "---\nnosearch: true\n---\n\n" + members.page()
        elif file.endswith(".md"):
            text = (pages.TOP / file).read_text(encoding="utf-8")
        else:
            text = source_page(file, file == "LICENSE")
        if file == posixpath.dirname(navigation.MEMBERS) + "/README.md":
            text = text.replace("\n\n|", "\n\n" + MEMBERS_TOO + "|", 1)  # before the table
        page = target / (place + ".md")
        page.parent.mkdir(parents=True, exist_ok=True)
        page.write_text(text + added.get(file, ""), encoding="utf-8")
    pictures(target)


if __name__ == "__main__":
    try:
        stage(pathlib.Path(sys.argv[1]))
    except StageError as error:
        sys.exit(f"docs: {error}")
