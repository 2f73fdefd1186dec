"""./dev package: build/package/quillon-VERSION.zip and quillon-VERSION-setup.exe, from the built
program, the documentation site, and what stands in packaging/. With --licences it makes nothing,
and fails when something is linked into the program whose terms are not told.

Two runs for one commit make the same bytes: files are in a fixed order and carry the commit's time."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import zipfile

TOP = pathlib.Path(__file__).resolve().parent.parent
PROGRAM = TOP / "build" / "windows" / "quillon.exe"
LINK_MAP = TOP / "build" / "windows" / "quillon.map"
SITE = TOP / "build" / "site"
OUTPUT = TOP / "build" / "package"
PACKAGING = TOP / "packaging"

# Where the terms are of what is linked into the program, by the archives that the link map names.
COPYRIGHTS = pathlib.Path("/usr/share/doc")
GCC = "gcc-mingw-w64-base"
MINGW = "mingw-w64-i686-dev"
ZLIB = "libz-mingw-w64-dev"
JSON = "nlohmann-json3-dev"  # headers alone: no archive
ARCHIVES = [(re.compile(pattern), package) for pattern, package in (
    (r"lib/gcc/.*/lib(stdc\+\+|gcc|gcc_eh|ssp)\.a$", GCC),
    (r"/libz\.a$", ZLIB),
    # the run-time library, winpthreads, and import libraries for the system's own
    (r"/i686-w64-mingw32/lib/(\.\./lib/)?lib(?!z\.)\w+\.a$", MINGW),
    (r"^libquillon_\w+\.a$", None))]


class PackageError(Exception):
    """Why there is no package."""


def version():
    text = (TOP / "CMakeLists.txt").read_text()
    return re.search(r"project\(\w+ VERSION (\d+\.\d+\.\d+)", text)[1]


def product_version(program):
    """Version and commit, as the program's version record has them."""
    key = "ProductVersion\0".encode("utf-16-le")
    value = program[program.index(key) + len(key):].decode("utf-16-le", "replace")
    return value.lstrip("\0").partition("\0")[0]


def commit_time():
    """In seconds since 1970."""
    given = os.environ.get("SOURCE_DATE_EPOCH")
    return int(given or git("log", "-1", "--format=%ct"))


def git(*arguments):
    return subprocess.run(["git", "-C", str(TOP), *arguments], check=True, capture_output=True,
                          text=True).stdout


def linked_packages(link_map):
    """The Debian packages that parts of the program are from."""
    archives = set(re.findall(r"^(\S+\.a)\(\S+\)$", link_map, re.M))
    found = {JSON}
    for archive in archives:
        packages = [package for pattern, package in ARCHIVES if pattern.search(archive)]
        if not packages:
            raise PackageError(f"{archive} is linked into the program: packaging/NOTICE.txt and "
                               "tools/package.py do not know its terms")
        found.update(packages[:1])
    return sorted(found - {None})


def notice(link_map):
    """What is linked in, by whom, and the terms in full."""
    parts = [(PACKAGING / "NOTICE.txt").read_text()]
    for package in linked_packages(link_map):
        if f"({package})" not in parts[0]:
            raise PackageError(f"packaging/NOTICE.txt does not name {package}")
        terms = (COPYRIGHTS / package / "copyright").read_text()
        parts.append(f"\n{'=' * 78}\n{package}\n{'=' * 78}\n\n{terms}")
    return "".join(parts)


def text_file(text):
    return text.replace("\r\n", "\n").replace("\n", "\r\n").encode()


def payload(program=PROGRAM, link_map=LINK_MAP, site=SITE):
    """{path in the package: contents}, sorted."""
    if not (site / "index.html").exists():
        raise PackageError(f"{site} has no documents: run ./dev docs")
    files = {
        "quillon.exe": program.read_bytes(),
        "LICENSE.txt": text_file((TOP / "LICENSE").read_text()),
        "NOTICE.txt": text_file(notice(link_map.read_text())),
        "README.txt": text_file((PACKAGING / "README.txt").read_text()
                                .replace("@VERSION@", version())),
    }
    if (TOP / "CHANGELOG.md").exists():
        files["CHANGELOG.md"] = text_file((TOP / "CHANGELOG.md").read_text())
    for file in site.rglob("*"):
        if file.is_file():
            files["docs/" + file.relative_to(site).as_posix()] = file.read_bytes()
    for name in git("ls-files", "-z", "sdk", "samples", "examples").split("\0")[:-1]:
        files[name] = (TOP / name).read_bytes()
    return dict(sorted(files.items()))


def write_zip(files, target, name, when):
    """`name` is the directory that everything is in."""
    stamp = time.gmtime(when)[:6]
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for path, content in files.items():
            entry = zipfile.ZipInfo(f"{name}/{path}", stamp)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o100644 << 16
            archive.writestr(entry, content)


def installed(path):
    """What comes behind $INSTDIR in the installer's language."""
    return "" if path == "." else "\\" + path.replace("/", "\\").replace("$", "$$")


def payload_list(files, stage):
    """Two macros: PayloadExtract puts every file into ~new, PayloadDelete takes exactly these out."""
    directories = sorted({str(parent) for path in files
                          for parent in pathlib.PurePosixPath(path).parents})
    lines = ["!macro PayloadExtract"]
    for directory in directories:
        lines.append(f'  SetOutPath "$INSTDIR\\~new{installed(directory)}"')
        lines += [f'  File "{stage / path}"' for path in files
                  if str(pathlib.PurePosixPath(path).parent) == directory]
    lines += ["!macroend", "!macro PayloadDelete"]
    lines += [f'  Delete "$INSTDIR{installed(path)}"' for path in files if path != "quillon.exe"]
    lines += [f'  RMDir "$INSTDIR{installed(directory)}"' for directory in reversed(directories)
              if directory != "."]
    return "\n".join([*lines, "!macroend", ""])


def write_setup(files, target, number, when, product=None):
    """`number` is the version, of three parts, `product` that with the commit."""
    major, minor, patch = map(int, number.split("."))
    with tempfile.TemporaryDirectory(prefix="package-") as folder:
        stage = pathlib.Path(folder, "files")
        for path, content in files.items():
            (stage / path).parent.mkdir(parents=True, exist_ok=True)
            (stage / path).write_bytes(content)
            os.utime(stage / path, (when, when))
        listing = pathlib.Path(folder, "payload.nsh")
        listing.write_text(payload_list(files, stage))
        defined = {
            "VERSION": number, "PRODUCT_VERSION": product or number,
            "VERSION_HIGH": major << 16 | minor, "VERSION_LOW": patch << 16,
            "PAYLOAD": stage, "PAYLOAD_KB": sum(map(len, files.values())) // 1024 + 1,
            "PAYLOAD_LIST": listing, "OUTPUT": target}
        done = subprocess.run(
            ["makensis", "-NOCD", "-V2", "-WX", "-INPUTCHARSET", "UTF8",
             *(f"-D{name}={value}" for name, value in defined.items()), "quillon.nsi"],
            cwd=PACKAGING, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, env={**os.environ, "SOURCE_DATE_EPOCH": str(when)})
    if done.returncode != 0:
        raise PackageError("makensis failed:\n" + done.stdout)


def main():
    number, when = version(), commit_time()
    OUTPUT.mkdir(parents=True, exist_ok=True)
    name = f"quillon-{number}"
    files = payload()
    write_zip(files, OUTPUT / f"{name}.zip", name, when)
    write_setup(files, OUTPUT / f"{name}-setup.exe", number, when,
                product_version(files["quillon.exe"]))
    for made in (f"{name}.zip", f"{name}-setup.exe"):
        print(f"build/package/{made}: {(OUTPUT / made).stat().st_size / 1e6:.1f} MB")


if __name__ == "__main__":
    try:
        if sys.argv[1:] == ["--licences"]:
            notice(LINK_MAP.read_text())
        else:
            main()
    except PackageError as error:
        sys.exit(f"package: {error}")
