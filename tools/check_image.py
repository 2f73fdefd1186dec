"""check_image.py PROGRAM: reads from a Windows program, and the map that was linked with it, that
its protections are in it (cmake/Hardening.cmake). Says what is missing."""

import pathlib
import struct
import sys

# Bits of the PE headers: the file's characteristics and those that are called the DLL's.
RELOCATIONS_STRIPPED, LARGE_ADDRESS_AWARE = 0x0001, 0x0020
DYNAMIC_BASE, NX_COMPATIBLE, NO_SEH = 0x0040, 0x0100, 0x0400


def characteristics(image):
    """Both sets of bits."""
    start, = struct.unpack_from("<I", image, 0x3C)
    if image[:2] != b"MZ" or image[start:start + 4] != b"PE\0\0":
        raise ValueError("not a Windows program")
    file_header = start + 4
    optional_header = file_header + 20
    return (struct.unpack_from("<H", image, file_header + 18)[0],
            struct.unpack_from("<H", image, optional_header + 70)[0])


def missing(image, link_map):
    of_file, of_dll = characteristics(image)
    moves = of_dll & DYNAMIC_BASE and not of_file & RELOCATIONS_STRIPPED
    found = {
        "address space layout randomisation": moves,
        "data execution prevention": of_dll & NX_COMPATIBLE,
        "the word that it has no exception handlers": of_dll & NO_SEH,
        "addresses beyond 2 GiB": of_file & LARGE_ADDRESS_AWARE,
        # Each of these is in the file only if something calls it.
        "the stack protector": b"*** stack smashing detected ***" in image,
        "the library's assertions": b"__n < this->size()\0" in image,
        "checked memory functions": "memcpy_chk" in link_map,
    }
    return [what for what, there in found.items() if not there]


def main():
    program = pathlib.Path(sys.argv[1])
    link_map = program.with_suffix(".map").read_text(errors="replace")
    lacking = missing(program.read_bytes(), link_map)
    for what in lacking:
        print(f"{program.name} is built without {what}")
    return 1 if lacking else 0


if __name__ == "__main__":
    sys.exit(main())
