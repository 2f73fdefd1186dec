"""Checks that includes in src/ follow the layers, and that only platform code knows the system."""

import pathlib
import re
import sys

# What each layer may include besides itself. core/ has functions over a port, and implements none.
_LOWER = {"ports", "core", "codec", "mail"}
_PARTS = ["backends", "dialer", "dialogs"]
_SERVER = _LOWER | {"net", "sasl", "oauth", "internet", *_PARTS}
ALLOWED = {
    "ports": set(),
    "core": {"ports"},
    "codec": {"ports", "core"},
    "sasl": {"ports", "core", "codec"},
    "mail": {"ports", "core", "codec"},
    "net": {"ports", "core"},
    "oauth": {"ports", "core", "codec"},
    "internet": _LOWER | {"net", "sasl", "oauth"},
    **{part: set(_LOWER) for part in _PARTS},
    "server": _SERVER,
    "addressbook": _SERVER | {"server"},
    "administration": _SERVER | {"server"},
    "automation": _SERVER | {"server", "addressbook", "administration"},
    "platform": {"ports", "core"},
}
# The program entries, which alone make what a system implements.
ENTRIES = {"automation/main.cpp"}
INCLUDE = re.compile(r'\s*#\s*include\s+(["<])([^">]+)[">]')
SYSTEM_TEST = re.compile(r"\s*#\s*(if|ifdef|ifndef|elif)\b.*\b(_WIN32|WIN32|__linux__|__MINGW32__)\b")
SYSTEM_HEADER = re.compile(r"(windows|winsock2|ole2|oleauto|objbase|unistd|sys/\w+|poll|dlfcn)\.h")


def knows_the_system(name):
    """Code of one operating system alone, which may use that system's handles and wrappers."""
    return (name.startswith(("platform/", "automation/")) or "/win32/" in name
            or "/posix/" in name)


def may_include(name, target):
    """Whether the file may include this header of ours."""
    layer, other = name.split("/")[0], target.split("/")[0]
    if other == layer:
        return True
    if target.startswith(("platform/win32/", "platform/posix/")):
        return knows_the_system(name)
    if other == "platform":
        return name in ENTRIES
    return other not in ALLOWED or other in ALLOWED[layer]


def problems(root):
    for path in sorted(root.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        name = path.relative_to(root).as_posix()
        layer = name.split("/")[0]
        if layer not in ALLOWED:
            yield name, 1, f"{layer}/ is not a known layer"
            continue
        if layer == "ports" and path.suffix != ".h":
            yield name, 1, "ports/ holds headers only"
        for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
            if SYSTEM_TEST.match(line) and not knows_the_system(name):
                yield name, number, "tests for an operating system outside platform/"
            found = INCLUDE.match(line)
            if not found:
                continue
            quote, target = found.groups()
            if quote == "<":
                if SYSTEM_HEADER.fullmatch(target) and not knows_the_system(name):
                    yield name, number, f"includes <{target}> outside platform/"
            elif not may_include(name, target):
                yield name, number, f"includes {target}: not from {layer}/"


def main():
    root = pathlib.Path(__file__).resolve().parent.parent / "src"
    count = 0
    for name, number, text in problems(root):
        print(f"src/{name}:{number}: {text}")
        count += 1
    return 1 if count else 0


if __name__ == "__main__":
    sys.exit(main())
