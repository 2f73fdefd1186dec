"""Sphinx extension: links between files of the tree become links between pages of the site, and the
languages of examples are known."""

import posixpath

from docutils import nodes
from pygments.lexers import IniLexer, TextLexer, VBScriptLexer
from sphinx import addnodes

import pages

LEXERS = {"vbs": VBScriptLexer, "vb": VBScriptLexer, "vba": VBScriptLexer, "exim": TextLexer}


def lead_to_pages(app, document):
    """A link is written for the tree; the site has its pages elsewhere."""
    here = app.env.docname
    page = FILES[here]
    for node in document.findall(addnodes.pending_xref):
        if node["reftype"] == "myst":
            file, heading = pages.goal(page, node["reftarget"])
            if file in PLACES:
                way = posixpath.relpath(PLACES[file] + ".md", posixpath.dirname(here) or ".")
                node["reftarget"] = way + ("#" + heading if heading else "")


def setup(app):
    app.connect("doctree-read", lead_to_pages)
    for name, lexer in LEXERS.items():
        app.add_lexer(name, lexer)
    return {"parallel_read_safe": True}


PLACES = pages.places()
FILES = {place: file for file, place in PLACES.items()}
