"""What the benchmark `mapi` needs in the prefix that WINEPREFIX names: the desk, behind Wine's own
mapi32.dll alone, with a full Inbox."""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))
import desk

HEADERS = 5000  # as mapi.cpp expects

store = desk.installed_in_wine(("deskmapi",))
for number in range(1, HEADERS + 1):
    store.add_message("ann", subject=f"Message {number} of those in the Inbox",
                      text="A line of ordinary text.\r\n" * 40,
                      recipients=[("to", "Ann Archer", "SMTP:ann@desk.example")])
