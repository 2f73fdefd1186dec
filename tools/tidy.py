"""Runs clang-tidy over the sources of the native and the windows build that have changed, or use
something that has, since they were last found clean.

Most of its time goes into the headers of the system and the library, so sources that are compiled
alike are read together, as one file with the text of all. Those whose names clash are read apart.
Checks that concern the main file alone (unused names) see each source as that.
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
STATE = TOP / "build" / "tidy"
CLEAN = STATE / "clean"
CROSS_COMPILER = "i686-w64-mingw32-g++-posix"
CORES = os.cpu_count() or 1
TOGETHER = 12  # more would save little, and leave a processor idle at the end
ENTRY = re.compile(r"(?m)^\S.*\b(w?main|wWinMain|LLVMFuzzerTestOneInput)\(")


class Source:
    def __init__(self, preset, command, made_from):
        words = shlex.split(command["command"])
        # Older CMakes name the object in the command line only.
        made = words[words.index("-o") + 1]
        self.preset = preset
        self.path = pathlib.Path(command["file"])
        self.flags = words[1:words.index("-o")]
        self.standard = "".join(word for word in self.flags if word.startswith("-std="))
        self.files = {file for file in made_from.get(made, []) if file.is_relative_to(TOP)}
        self.files.add(self.path)
        found = ENTRY.search(self.path.read_text(encoding="utf-8"))
        self.entry = found and found[1]

    def text(self):
        """Its text for another folder: what it includes from its own is named in full."""
        def in_full(match):
            beside = self.path.parent / match[2]
            return f'{match[1]}"{beside}"' if beside.exists() else match[0]
        return re.sub(r'(?m)^(#include )"([^"]+)"', in_full, self.path.read_text(encoding="utf-8"))

    def configuration(self):
        """The .clang-tidy files that hold for it, the nearest first."""
        return [file for file in (d / ".clang-tidy" for d in self.path.parents)
                if file.is_relative_to(TOP) and file.exists()]


def sources_of(preset):
    """Those of a build, without other people's code; what each is made from is known from the last
    build."""
    build = TOP / "build" / preset
    deps = subprocess.run(["ninja", "-C", str(build), "-t", "deps"], capture_output=True, text=True,
                          check=True).stdout
    made_from = {}
    for block in deps.split("\n\n"):
        head, *files = block.splitlines() or [""]
        made_from[head.split(":")[0]] = [pathlib.Path(os.path.normpath(build / f.strip()))
                                         for f in files]
    commands = json.loads((build / "compile_commands.json").read_text())
    ours = [c for c in commands if c["file"].endswith(".cpp")  # resources are compiled too
            and pathlib.Path(c["file"]).is_relative_to(TOP)
            and not pathlib.Path(c["file"]).is_relative_to(TOP / "build")]
    return {source.path: source for source in (Source(preset, c, made_from) for c in ours)}


def cross_flags():
    """What makes clang see a Windows source as the cross compiler does: its system's headers, with
    clang's own for what belongs to the compiler."""
    said = subprocess.run([CROSS_COMPILER, "-E", "-v", "-x", "c++", os.devnull], text=True,
                          capture_output=True, check=True).stderr
    searched = said.split("search starts here:")[-1].split("End of search list")[0].split()
    own = subprocess.run(["clang++-14", "-print-resource-dir"], text=True, capture_output=True,
                         check=True).stdout.strip()
    theirs = re.compile(r"/lib/gcc/[^/]+/[^/]+/include(-fixed)?$")
    folders = [f"{own}/include" if theirs.search(d) else d for d in searched]
    return ["--target=i686-w64-mingw32", "-nostdinc", "-nostdinc++",
            *(word for d in dict.fromkeys(folders) for word in ("-isystem", d))]


def fingerprints(sources, version):
    """{source: hash of all that decides what clang-tidy says of it}."""
    hashes = {}

    def of(file):
        if file not in hashes:
            hashes[file] = hashlib.sha256(file.read_bytes()).hexdigest() if file.exists() else ""
        return hashes[file]

    return {source: hashlib.sha256("\n".join(
        [version, *source.flags, *(f"{file} {of(file)}" for file in
                                   [*source.configuration(), *sorted(source.files)])]
    ).encode()).hexdigest() for source in sources}


class Unit:
    """Sources that are read together."""

    def __init__(self, number, sources, flags):
        first = sources[0]
        # The nearest configuration is looked for from where the file is.
        files = first.configuration()
        for file in files[:-1]:
            copy = STATE / "units" / file.relative_to(TOP)
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_bytes(file.read_bytes())
        folder = STATE / "units" / files[0].parent.relative_to(TOP)
        folder.mkdir(parents=True, exist_ok=True)
        self.file = folder / f"{first.preset}{first.standard}-{number}.cpp"
        self.flags = flags
        self._hold(sources)

    def _hold(self, sources):
        self.sources = sources
        self._lines = []  # where each line comes from
        texts = []
        for source in sources:
            # Where a macro is defined or undefined, an include is none that was there before.
            lines = ["#undef NEXT_SOURCE", *source.text().splitlines()]
            self._lines += [(source, max(number, 1)) for number in range(len(lines))]
            texts += lines
        self.file.write_text("\n".join(texts) + "\n", encoding="utf-8")

    def _at_home(self, match):
        source, number = self._lines[min(int(match[1]), len(self._lines)) - 1]
        return f"{source.path}:{number}:"

    def in_sources(self, said):
        """What was said of the unit, as said of its sources."""
        return re.sub(re.escape(str(self.file)) + r":(\d+):", self._at_home, said)

    def without_clashes(self):
        """Leaves out the sources that do not compile behind the others, and returns them."""
        if len(self.sources) == 1:
            return []
        said = subprocess.run(
            ["clang++-14", "-fsyntax-only", "-w", "-ferror-limit=0", *self.flags, str(self.file)],
            capture_output=True, text=True)
        if said.returncode == 0:
            return []
        wrong = set(re.findall(r"(?m)^(/[^:\n]+):\d+:\d+: (?:fatal )?error:",
                               self.in_sources(said.stderr)))
        out = [s for s in self.sources[1:] if str(s.path) in wrong] or self.sources[1:]
        self._hold([s for s in self.sources if s not in out])
        return out

    def tidy(self):
        done = subprocess.run(["clang-tidy-14", "--quiet", "--warnings-as-errors=*", str(self.file),
                               "--", *self.flags], capture_output=True, text=True)
        return done.returncode, self.in_sources(done.stdout or done.stderr)


def spread(sources):
    """Lists of sources to be read together; no two of them with the same entry."""
    entries = [source.entry for source in sources if source.entry]
    most = max(map(entries.count, entries), default=0)
    lists = [[] for _ in range(max(most, -(-len(sources) // TOGETHER)))]
    # Programs first, while there is a choice.
    for source in sorted(sources, key=lambda s: (not s.entry, s.path)):
        free = [one for one in lists
                if not source.entry or source.entry not in {s.entry for s in one}]
        min(free, key=len).append(source)
    return lists


def units_of(sources, pool, cross):
    """The stale sources of one build, standard and configuration, as units that compile."""
    # Pairs such as -isystem FOLDER stay together.
    words = [word for s in sources for word in re.findall(r"-isystem\0[^\0]+|[^\0]+",
                                                          "\0".join(s.flags))]
    flags = list(cross if sources[0].preset == "windows" else [])
    for word in dict.fromkeys(words):
        flags += word.split("\0")
    # The compiler looks for shadows in each source alone; here they would be those of its neighbours.
    flags += ["-Wno-unknown-warning-option", "-Wno-shadow"]
    units = []
    while sources:
        made = [Unit(len(units) + n, one, flags) for n, one in enumerate(spread(sources))]
        units += made
        sources = [s for out in pool.map(Unit.without_clashes, made) for s in out]
    return units


def unread_headers(sources):
    seen = {file for source in sources for file in source.files}
    for folder in ("src", "tests", "tools", "fuzz", "bench"):
        for header in sorted((TOP / folder).rglob("*.h")):
            if header not in seen:
                yield header.relative_to(TOP)


def main():
    CLEAN.mkdir(parents=True, exist_ok=True)
    shutil.rmtree(STATE / "units", ignore_errors=True)
    native, windows = sources_of("native"), sources_of("windows")
    sources = [*native.values(), *(s for p, s in windows.items() if p not in native)]
    failed = 0
    for header in unread_headers(sources):
        print(f"{header}: no source includes it")
        failed += 1
    cross = cross_flags()
    version = subprocess.run(["clang-tidy-14", "--version"], capture_output=True, text=True,
                             check=True).stdout
    marks = fingerprints(sources, version + " ".join(cross))
    stale = [s for s in sources if not (CLEAN / marks[s]).exists()]
    groups = {}
    for source in stale:
        texts = [file.read_text() for file in source.configuration()]
        groups.setdefault((source.preset, source.standard, *texts), []).append(source)
    with concurrent.futures.ThreadPoolExecutor(CORES) as pool:
        units = [unit for group in groups.values() for unit in units_of(group, pool, cross)]
        # Those of the tests take longest, and no processor shall wait for them at the end.
        units.sort(key=lambda unit: "tests" not in unit.file.relative_to(STATE).parts)
        print(f"{len(stale)} of {len(sources)} sources to read, in {len(units)} parts", flush=True)
        for unit, (status, output) in zip(units, pool.map(Unit.tidy, units)):
            if status == 0:
                for source in unit.sources:
                    (CLEAN / marks[source]).touch()
            else:
                print(output, flush=True)
                failed += 1
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
