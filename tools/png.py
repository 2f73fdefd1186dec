"""A picture that a Windows program has saved as a bitmap, as a PNG file."""

import struct
import zlib

_SIGNATURE = b"\x89PNG\r\n\x1a\n"


def _pixels(bitmap):
    """Width and rows from the top of a bitmap of 24 bits, each row bytes of red, green and blue."""
    offset, = struct.unpack_from("<I", bitmap, 10)
    width, height, _, bits = struct.unpack_from("<iiHH", bitmap, 18)
    if bitmap[:2] != b"BM" or bits != 24 or height <= 0:
        raise ValueError("no bitmap of 24 bits")
    stride = (width * 3 + 3) // 4 * 4
    rows = []
    for row in reversed(range(height)):
        line = bytearray(bitmap[offset + row * stride:offset + row * stride + width * 3])
        line[0::3], line[2::3] = line[2::3], line[0::3]
        rows.append(bytes(line))
    return width, rows


def _chunk(kind, data):
    return (struct.pack(">I", len(data)) + kind + data +
            struct.pack(">I", zlib.crc32(kind + data)))


def from_bitmap(bitmap):
    """The bytes of the PNG. Pictures of windows have few colours, so a palette makes them small."""
    width, rows = _pixels(bitmap)
    colours = sorted({row[i:i + 3] for row in rows for i in range(0, len(row), 3)})
    if len(colours) <= 256:
        place = {colour: number for number, colour in enumerate(colours)}
        rows = [bytes(place[row[i:i + 3]] for i in range(0, len(row), 3)) for row in rows]
        kind, palette = 3, _chunk(b"PLTE", b"".join(colours))
    else:
        kind, palette = 2, b""
    head = struct.pack(">IIBBBBB", width, len(rows), 8, kind, 0, 0, 0)
    data = zlib.compress(b"".join(b"\0" + row for row in rows), 9)
    return (_SIGNATURE + _chunk(b"IHDR", head) + palette + _chunk(b"IDAT", data) +
            _chunk(b"IEND", b""))
