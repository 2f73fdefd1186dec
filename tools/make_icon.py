#!/usr/bin/env python3
"""Draws the program's icon, an envelope with a quill: src/automation/quillon.ico, and the same as the
logo of the documents, both kept in the tree. Run it after changing the drawing."""

import math
import pathlib
import struct
import zlib

TREE = pathlib.Path(__file__).resolve().parent.parent
ICON = TREE / "src" / "automation" / "quillon.ico"
LOGO = TREE / "tools" / "site" / "static" / "logo.svg"
BITMAPS = [16, 24, 32, 48, 64]
COMPRESSED = [256]
SAMPLES = 4  # in each direction, for smooth edges

PAPER = (0x2F, 0x6D, 0xB5)
FLAP = (0x5B, 0x97, 0xDB)
EDGE = (0x1B, 0x3F, 0x70)
FEATHER = (0xFF, 0xF7, 0xE0)
BARBS = (0xE9, 0xC9, 0x7A)
SHAFT = (0x8A, 0x5A, 0x1E)


def along(points, start, end):
    """Points given as (part of the way, distance to the left of it) from `start` to `end`."""
    way = end[0] - start[0], end[1] - start[1]
    length = math.hypot(*way)
    side = way[1] / length, -way[0] / length
    return [(start[0] + way[0] * t + side[0] * s, start[1] + way[1] * t + side[1] * s)
            for t, s in points]


TIP, TOP = (0.30, 0.82), (0.92, 0.05)
HALF = [(0.28, 0.03), (0.40, 0.10), (0.60, 0.145), (0.80, 0.13), (0.93, 0.08), (1.0, 0.0)]
# From back to front: colour and corners, in parts of the icon's side.
SHAPES = [
    (EDGE, [(0.04, 0.34), (0.96, 0.34), (0.96, 0.95), (0.04, 0.95)]),
    (PAPER, [(0.075, 0.375), (0.925, 0.375), (0.925, 0.915), (0.075, 0.915)]),
    (EDGE, [(0.04, 0.34), (0.96, 0.34), (0.5, 0.755)]),
    (FLAP, [(0.135, 0.375), (0.865, 0.375), (0.5, 0.705)]),
    (SHAFT, along([(0.22, 0.0)] + [(t, s + 0.025) for t, s in HALF] + [(1.04, 0.0)]
                  + [(t, -s - 0.025) for t, s in reversed(HALF)], TIP, TOP)),
    (FEATHER, along([(0.28, 0.0)] + HALF, TIP, TOP)),
    (BARBS, along([(0.28, 0.0)] + [(t, -s) for t, s in HALF], TIP, TOP)),
    (SHAFT, along([(0.0, 0.0), (0.12, 0.03), (0.95, 0.008), (0.95, -0.008), (0.12, -0.03)],
                  TIP, TOP)),
]


def crossings(corners, y):
    """Where the outline meets a horizontal line, from left to right."""
    found = []
    for (x1, y1), (x2, y2) in zip(corners, corners[1:] + corners[:1]):
        if (y1 <= y) != (y2 <= y):
            found.append(x1 + (y - y1) * (x2 - x1) / (y2 - y1))
    return sorted(found)


def draw(size):
    """Rows from the top of (red, green, blue, opacity)."""
    fine = size * SAMPLES
    sums = [[[0, 0, 0, 0] for _ in range(size)] for _ in range(size)]
    for row in range(fine):
        y = (row + 0.5) / fine
        colours = [None] * fine
        for colour, corners in SHAPES:
            edges = crossings(corners, y)
            for left, right in zip(edges[::2], edges[1::2]):
                first, end = (min(max(math.ceil(x * fine - 0.5), 0), fine) for x in (left, right))
                colours[first:end] = [colour] * (end - first)
        for column, colour in enumerate(colours):
            if colour:
                total = sums[row // SAMPLES][column // SAMPLES]
                for i, part in enumerate(colour):
                    total[i] += part
                total[3] += 1

    def pixel(total):
        hits = total[3] or 1
        return (*(part // hits for part in total[:3]), total[3] * 255 // SAMPLES ** 2)

    return [[pixel(total) for total in row] for row in sums]


def bitmap(rows):
    """32 bits with the mask that old programs look at, bottom row first."""
    size = len(rows)
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    colours = b"".join(bytes((b, g, r, a)) for row in reversed(rows) for r, g, b, a in row)
    mask = b""
    for row in reversed(rows):
        bits = "".join("0" if a >= 128 else "1" for *_, a in row)
        bits += "0" * (-size % 32)
        mask += int(bits, 2).to_bytes(len(bits) // 8, "big")
    return header + colours + mask


def png(rows):
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data)))

    size = len(rows)
    lines = b"".join(b"\0" + bytes(part for pixel in row for part in pixel) for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(lines, 9)) + chunk(b"IEND", b""))


def drawing():
    """The shapes themselves, for any size."""
    lines = ['<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 100 100">']
    for (red, green, blue), corners in SHAPES:
        points = " ".join(f"{100 * x:.1f},{100 * y:.1f}" for x, y in corners)
        lines.append(f'  <polygon fill="#{red:02x}{green:02x}{blue:02x}" points="{points}"/>')
    return "\n".join([*lines, "</svg>", ""])


def main():
    images = [(size, bitmap(draw(size))) for size in BITMAPS]
    images += [(size, png(draw(size))) for size in COMPRESSED]
    directory = struct.pack("<HHH", 0, 1, len(images))
    place = len(directory) + 16 * len(images)
    for size, data in images:
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(data), place)
        place += len(data)
    ICON.write_bytes(directory + b"".join(data for _, data in images))
    LOGO.write_text(drawing())


if __name__ == "__main__":
    main()
