"""Sphinx extension: what Debian's package of the theme needs before its pages work from disk, and
what pages of today need no longer.

Debian leaves furo.js as the module that the theme's own build would pack, which a browser takes
from a server alone; has normalize.css where only Debian's web servers find it; and its style sheet
has lost the rule by which a page is dark when the system is."""

import pathlib
import re

OLD_SCRIPTS = ("jquery.js", "underscore.js", "_sphinx_javascript_frameworks_compat.js")
UNUSED = (*OLD_SCRIPTS, "file.png", "minus.png", "plus.png", "styles/furo-extensions.css.map",
          "debug.css", "skeleton.css", "scripts/gumshoe-patched.js")
JAVASCRIPT = pathlib.Path("/usr/share/javascript")
COPYRIGHTS = pathlib.Path("/usr/share/doc")
PACKAGES = ("furo", "node-normalize.css", "python3-pygments", "sphinx-basic-ng", "sphinx-common")


def leave_old_scripts(app):
    scripts = app.builder.script_files
    scripts[:] = [script for script in scripts
                  if not (script.filename or "").endswith(OLD_SCRIPTS)]


def pack_script(scripts):
    main = scripts / "furo.js"
    text = main.read_text()
    imported = re.match(r'import Gumshoe from "\./(gumshoe-patched\.js)";\n', text)
    if imported:
        main.write_text((scripts / imported[1]).read_text() + text[imported.end():])


def mend_styles(styles):
    main = styles / "furo.css"
    text = re.sub(r"@import url\(/javascript/([^)]*)\);",
                  lambda imported: (JAVASCRIPT / imported[1]).read_text(), main.read_text())
    if "prefers-color-scheme" not in text:
        dark = re.search(r'body\[data-theme="dark"\] (\{[^}]*\})', text)[1]
        text += ("\n@media screen and (prefers-color-scheme: dark) {\n"
                 f'  body:not([data-theme="light"]) {dark} }}\n')
    main.write_text(text)


def terms():
    """Of whose work is in the pages beside our own."""
    line = "=" * 78
    return "".join(f"{line}\n{package}\n{line}\n\n"
                   f"{(COPYRIGHTS / package / 'copyright').read_text()}\n" for package in PACKAGES)


def finish(app, exception):
    if exception:
        return
    static = pathlib.Path(app.outdir, "_static")
    pack_script(static / "scripts")
    mend_styles(static / "styles")
    for name in UNUSED:
        (static / name).unlink(missing_ok=True)
    (static / "licenses.txt").write_text(terms())


def setup(app):
    app.connect("builder-inited", leave_old_scripts)
    app.connect("build-finished", finish, priority=900)
    return {"parallel_read_safe": True}
