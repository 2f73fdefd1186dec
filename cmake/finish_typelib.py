"""finish_typelib.py TYPELIB HEADER: what the IDL compiler cannot be told of the type library and the
header that it has written, in UTC. The member "signed" has its small initial, which the language
reserves, and the library no longer says when it was made, so that two builds make the same bytes."""

import calendar
import pathlib
import re
import struct
import sys
import time

STAMP = re.compile(rb"(Created by WIDL version \S+ at )(\w{3} \w{3} [ \d]\d \d\d:\d\d:\d\d \d{4})")
NEVER = time.asctime(time.gmtime(0)).encode()


def value(seconds):
    """As the library holds it: VT_UI4, the number, and what fills it up to eight bytes."""
    return struct.pack("<HI", 0x13, seconds) + b"WW"


def without_time(library):
    stamp = STAMP.search(library)
    made = calendar.timegm(time.strptime(stamp[2].decode()))
    library = STAMP.sub(rb"\g<1>" + NEVER, library)
    for seconds in (made, made - 1, made + 1):  # the text and the number are two looks at the clock
        if library.count(value(seconds)) == 1:
            return library.replace(value(seconds), value(0))
    raise ValueError("the type library does not hold its time as it used to")


def main():
    library, header = map(pathlib.Path, sys.argv[1:])
    library.write_bytes(without_time(library.read_bytes()).replace(b"Signed", b"signed"))
    header.write_bytes(header.read_bytes().replace(b"Signed", b"signed"))


if __name__ == "__main__":
    main()
