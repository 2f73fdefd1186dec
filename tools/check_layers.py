"""Checks that includes in src/ follow the layers, and that only platform code knows the system."""

import pathlib
import re
import sys

# What each layer may include besides itself and the ports of platform/.
_MIDDLE = {"core", "mail", "codec"}
_PARTS = ["internet", "backends", "addressbook", "dialer", "dialogs"]
ALLOWED = {
    "core": set(),
    "mail": {"core"},
    "codec": {"core", "mail"},
    "platform": set(_MIDDLE),
    **{part: set(_MIDDLE) for part in _PARTS},
    "server": _MIDDLE | set(_PARTS),
    "automation": _MIDDLE | set(_PARTS) | {"server"},
}
INCLUDE = re.compile(r'\s*#\s*include\s+(["<])([^">]+)[">]')
SYSTEM_TEST = re.compile(r"\s*#\s*(if|ifdef|ifndef|elif)\b.*\b(_WIN32|WIN32|__linux__|__MINGW32__)\b")
SYSTEM_HEADER = re.compile(r"(windows|winsock2|ole2|oleauto|objbase|unistd|sys/\w+|poll|dlfcn)\.h")


def knows_the_system(name):
    """Code of one operating system alone, which may use that system's handles and wrappers."""
    return (name.startswith(("platform/", "automation/")) or "/win32/" in name
            or "/posix/" in name)


def problems(root):
    for path in sorted(root.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        name = path.relative_to(root).as_posix()
        layer = name.split("/")[0]
        if layer not in ALLOWED:
            yield name, 1, f"{layer}/ is not a known layer"
            continue
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
                continue
            other = target.split("/")[0]
            if target.startswith(("platform/win32/", "platform/posix/")):
                if not knows_the_system(name):
                    yield name, number, f"includes {target}: only the port may be known here"
            elif other in ALLOWED and other not in ALLOWED[layer] | {layer, "platform"}:
                yield name, number, f"includes {target}: {layer}/ may not use {other}/"


def main():
    root = pathlib.Path(__file__).resolve().parent.parent / "src"
    count = 0
    for name, number, text in problems(root):
        print(f"src/{name}:{number}: {text}")
        count += 1
    return 1 if count else 0


if __name__ == "__main__":
    sys.exit(main())
