"""Sphinx extension: the search finds errors by their numbers, and shows what stands where it leads.

Sphinx takes the texts of results from the pages, which a page from disk may not read, so they are
in a file of their own, _static/texts.js, for results.js."""

import json
import pathlib

from docutils import nodes
from sphinx import addnodes

ERRORS = "reference/errors"
# What is added to the numbers of a table, by the heading of its second column.
BASES = {"number": 0, "VINES": 0, "Simple MAPI": 2000, "VIM": 4000, "MHS": 5000, "SMTP": 6000,
         "POP3": 6000, "Active Messaging": 8000}


def numbers(cell):
    """Of a cell as "500 to 504" or "2, 4"."""
    first, to, last = cell.partition(" to ")
    if to:
        return range(int(first), int(last) + 1)
    return [int(number) for number in cell.split(", ")]


def code(number, column):
    if column == "Notes":
        return number + (5000 if number >= 4000 else 2000)
    return number + BASES[column]


def spellings(number, column):
    """As programs show the number of an error, or the code in it."""
    if column == "what happened":  # automation's own, which are shown as they are
        return [str(number)]
    whole = 0x80040000 + code(number, column)
    return [str(code(number, column)), f"0x{whole:08X}", str(whole - (1 << 32))]


def index_errors(app, document):
    if app.env.docname != ERRORS:
        return
    for table in document.findall(nodes.table):
        head, *rows = table.findall(nodes.row)
        column = head[1].astext()
        if not (column in BASES or column in ("Notes", "what happened")):
            continue
        for row in rows:
            found = list(numbers(row[0].astext()))
            name = f"error-{column.lower().replace(' ', '-')}-{found[0]}"
            row["ids"].append(name)
            SYSTEMS[name] = "" if column in ("number", "what happened") else column + " "
            entries = [("single", text, name, "", None) for number in found
                       for text in spellings(number, column)]
            row[0][0].insert(0, addnodes.index(entries=entries))


def keep_texts(app, page, _template, _context, document):
    """Of each part of a page, by its name; the first one has the page's."""
    if page == "search":
        for script in ("texts.js", "results.js"):
            app.add_js_file(script, priority=900)
    if not document or "nosearch" in app.env.metadata[page]:
        return
    parts = []
    for section in document.findall(nodes.section):
        text = " ".join(child.astext() for child in section.children[1:]
                        if not isinstance(child, nodes.section))
        parts.append([section["ids"][0] if parts else "", " ".join(text.split())])
    for row in document.findall(nodes.row):
        if row["ids"]:
            text = " \u00b7 ".join(cell.astext() for cell in row)
            parts.append([row["ids"][0], SYSTEMS[row["ids"][0]] + " ".join(text.split())])
    TEXTS[page + ".html"] = parts


def write_texts(app, exception):
    if not exception:
        said = json.dumps(TEXTS, sort_keys=True, ensure_ascii=False, separators=(",", ":"))
        pathlib.Path(app.outdir, "_static", "texts.js").write_text(f"const PAGE_TEXTS = {said};\n",
                                                                   encoding="utf-8")


def setup(app):
    app.connect("doctree-read", index_errors)
    app.connect("html-page-context", keep_texts)
    app.connect("build-finished", write_texts)


TEXTS = {}
SYSTEMS = {}  # {name of a row: what its number is a number of}
