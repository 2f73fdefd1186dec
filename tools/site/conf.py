"""How Sphinx makes the site out of what stage.py has laid out."""

import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

VERSION = re.search(r"project\(\w+ VERSION (\d+\.\d+\.\d+)",
                    (HERE.parent.parent / "CMakeLists.txt").read_text())[1]

project = "Quillon"
release = VERSION
language = "en"
extensions = ["myst_parser", "links", "results", "theme"]
nitpicky = True
smartquotes = False  # what stands in a document may be typed
suppress_warnings = ["myst.header"]  # an entry of the reference is of the third level everywhere

myst_heading_anchors = 6
highlight_language = "none"
pygments_style = "default"
pygments_dark_style = "github-dark"

html_theme = "furo"
html_title = f"Quillon {VERSION}"
html_logo = html_favicon = "static/logo.svg"
html_static_path = ["static"]
html_css_files = ["site.css"]
html_use_index = False
html_copy_source = False
html_show_copyright = False
html_show_search_summary = False  # results.py has its own
