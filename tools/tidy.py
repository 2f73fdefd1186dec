"""Runs clang-tidy over the native build's sources that have changed, or use something that has,
since they were last found clean."""

import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
BUILD = TOP / "build" / "native"
STAMPS = BUILD / "tidy"


def object_of(command):
    """Older CMakes name the object in the command line only."""
    return command.get("output") or command["command"].split(" -o ")[1].split(" ")[0]


def our_sources():
    """{source: object} of the compile database, without other people's code."""
    commands = json.loads((BUILD / "compile_commands.json").read_text())
    return {pathlib.Path(c["file"]): object_of(c) for c in commands
            if pathlib.Path(c["file"]).is_relative_to(TOP)
            and not pathlib.Path(c["file"]).is_relative_to(TOP / "build")}


def dependencies():
    """{object: files it was made from}, as ninja recorded them when it compiled."""
    text = subprocess.run(["ninja", "-C", str(BUILD), "-t", "deps"], capture_output=True, text=True,
                          check=True).stdout
    result = {}
    for block in text.split("\n\n"):
        head, *files = block.splitlines() or [""]
        result[head.split(":")[0]] = [BUILD / f.strip() for f in files]
    return result


def stamp(source):
    return STAMPS / (str(source.relative_to(TOP)).replace("/", "+") + ".clean")


def is_clean(source, files):
    mark = stamp(source)
    if not mark.exists():
        return False
    since = mark.stat().st_mtime
    return all(f.exists() and f.stat().st_mtime < since
               for f in [source, TOP / ".clang-tidy", *files] if f.is_relative_to(TOP))


def tidy(source):
    done = subprocess.run(
        ["clang-tidy-14", "-p", str(BUILD), "--quiet", "--warnings-as-errors=*", str(source)],
        capture_output=True, text=True)
    if done.returncode == 0:
        stamp(source).touch()
    return done.returncode == 0, done.stdout


def main():
    STAMPS.mkdir(exist_ok=True)
    made_from = dependencies()
    stale = [s for s, o in our_sources().items() if not is_clean(s, made_from.get(o, []))]
    print(f"{len(stale)} sources to read")
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for clean, output in pool.map(tidy, stale):
            if not clean:
                print(output, flush=True)
                failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
