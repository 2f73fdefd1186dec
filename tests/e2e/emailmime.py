"""Messages as Email::MIME, a library of another language, writes and reads them."""

import base64
import json
import pathlib
import subprocess

PROGRAM = pathlib.Path(__file__).resolve().parent / "mail" / "email_mime.pl"


def _run(work, items):
    done = subprocess.run(["perl", str(PROGRAM), work], input=json.dumps(items).encode(),
                          capture_output=True, check=False, timeout=60)
    if done.returncode != 0 or done.stderr:
        raise RuntimeError(done.stderr.decode(errors="replace"))
    return json.loads(done.stdout)


def composed(messages):
    """The bytes of each: charset, encoding, subject, from and to (pairs of name and address), text,
    html, file (its name) and content."""
    items = [{**one, "content": base64.b64encode(one["content"]).decode()} for one in messages]
    return [base64.b64decode(wire) for wire in _run("compose", items)]


def read(wires):
    """What it finds in each: subject, from, to, the texts by their type, and files (name, bytes,
    type, content id)."""
    found = _run("read", [base64.b64encode(wire).decode() for wire in wires])
    for one in found:
        one["files"] = [(name, base64.b64decode(content), kind, content_id)
                        for name, content, kind, content_id in one["files"]]
    return found
