"""Which files of the tree are pages of the site, and under which names."""

import pathlib
import posixpath
import re
import subprocess

import navigation

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
LINK = re.compile(r"\]\(([^()\s]+(?:\([^()]*\))?)[^()]*\)")
ABSOLUTE = re.compile(r"[a-z][a-z0-9+.-]*:")
PICTURES = {".png", ".svg", ".gif", ".jpg"}


def documents():
    """The Markdown files of the tree, without what is built."""
    listed = subprocess.run(
        ["git", "-C", str(TOP), "ls-files", "-z", "--cached", "--others", "--exclude-standard",
         "*.md"], check=True, capture_output=True, text=True).stdout.split("\0")[:-1]
    return sorted({*listed, navigation.MEMBERS} - {name for name in listed
                                                   if not (TOP / name).exists()})


def goal(page, target):
    """What file a link of a page means, and at which heading: ("docs/zip.md", "limits")."""
    path, _, heading = target.partition("#")
    file = posixpath.normpath(posixpath.join(posixpath.dirname(page), path)) if path else page
    if (TOP / file).is_dir():
        file += "/README.md"
    return file, heading


def linked_files(pages):
    """What pages lead to or show and is no page: programs, settings, sources, pictures."""
    found = set()
    for page in pages:
        if page == navigation.MEMBERS:
            continue
        for target in LINK.findall((TOP / page).read_text(encoding="utf-8")):
            file = "" if ABSOLUTE.match(target) else goal(page, target)[0]
            if file and (TOP / file).is_file():
                found.add(file)
    return sorted(found - set(pages))


def is_picture(file):
    return pathlib.Path(file).suffix in PICTURES


def place(file):
    """A page's name in the site, without suffix."""
    if file == navigation.HOME:
        return "index"
    if not file.endswith(".md"):
        return "source/" + re.sub(r"(^|/)\.", r"\1", file) if "." in file else file.lower()
    name = file[:-len(".md")].removeprefix("docs/")
    if name.endswith("/README"):
        return name[:-len("README")] + "index"
    return name.lower()


def places():
    """{file of the tree: page's name} of everything that is a page."""
    pages = documents()
    shown = [file for file in linked_files(pages) if not is_picture(file)]
    result = {file: place(file) for file in [*pages, *shown]}
    assert len(set(result.values())) == len(result), "two files would be one page"
    return result
