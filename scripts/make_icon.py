#!/usr/bin/env python3
"""Draws the program icon, src/app/vardeko.ico, in every size that Windows asks for.

The drawing is made of rounded boxes and lines on a grid of 64 by 64; each size is drawn by itself, so that
small ones are sharp. Run it after a change to the drawing and commit the result.
"""

import math
import pathlib
import struct
import zlib

SIZES = (16, 20, 24, 32, 40, 48, 64, 96, 128, 256)
GRID = 64.0

GROUND_TOP, GROUND_BOTTOM = (0x2B, 0x7F, 0xE0), (0x13, 0x3A, 0x7C)
SHEET_BACK, SHEET_FRONT, MARK = (0x9C, 0xC9, 0xFF), (0xFF, 0xFF, 0xFF), (0x1C, 0x9E, 0x4B)


def box(x, y, left, top, right, bottom, radius):
    """Distance to a rounded box, negative inside."""
    dx = abs(x - (left + right) / 2) - (right - left) / 2 + radius
    dy = abs(y - (top + bottom) / 2) - (bottom - top) / 2 + radius
    return math.hypot(max(dx, 0), max(dy, 0)) + min(max(dx, dy), 0) - radius


def line(x, y, points, width):
    """Distance to a line with round ends."""
    nearest = 1e9
    for (ax, ay), (bx, by) in zip(points, points[1:]):
        px, py = bx - ax, by - ay
        along = max(0.0, min(1.0, ((x - ax) * px + (y - ay) * py) / (px * px + py * py)))
        nearest = min(nearest, math.hypot(x - ax - along * px, y - ay - along * py))
    return nearest - width / 2


def draw(size):
    """Rows of (red, green, blue, alpha) from the top."""
    scale = size / GRID

    def snap(value):
        return round(value * scale) / scale

    edge = snap(2)
    back = [snap(v) for v in (13, 11, 41, 43)]
    front = [snap(v) for v in (22, 20, 51, 54)]
    gap = max(2.5, 1 / scale)
    tick = [(29, 37), (35, 44), (45, 30)]
    tick_width = max(5.0, 1.6 / scale)
    rows = []
    for row in range(size):
        line_of_pixels = []
        for column in range(size):
            x, y = (column + 0.5) / scale, (row + 0.5) / scale
            share = y / GRID
            colour = [top + (bottom - top) * share for top, bottom in zip(GROUND_TOP, GROUND_BOTTOM)]
            ground = list(colour)

            def cover(distance):
                return max(0.0, min(1.0, 0.5 - distance * scale))

            def paint(over, coverage):
                for index in range(3):
                    colour[index] += (over[index] - colour[index]) * coverage

            paint(SHEET_BACK, cover(box(x, y, *back, 3)))
            front_distance = box(x, y, *front, 3)
            paint(ground, cover(front_distance - gap))
            paint(SHEET_FRONT, cover(front_distance))
            paint(MARK, cover(line(x, y, tick, tick_width)))
            alpha = cover(box(x, y, edge, edge, GRID - edge, GRID - edge, 12))
            line_of_pixels.append(tuple(round(c) for c in colour) + (round(alpha * 255),))
        rows.append(line_of_pixels)
    return rows


def png(rows):
    size = len(rows)
    raw = b"".join(b"\0" + b"".join(bytes(pixel) for pixel in row) for row in rows)

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b"")


def bitmap(rows):
    """A 32-bit bitmap as icons hold it: rows from the bottom, then an empty mask."""
    size = len(rows)
    header = struct.pack("<IiiHHIIiiII", 40, size, size * 2, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = b"".join(bytes((b, g, r, a)) for row in reversed(rows) for r, g, b, a in row)
    mask = b"\0" * (((size + 31) // 32) * 4 * size)
    return header + pixels + mask


def main():
    images = [png(draw(size)) if size >= 96 else bitmap(draw(size)) for size in SIZES]
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for size, image in zip(SIZES, images):
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    target = pathlib.Path(__file__).resolve().parent.parent / "src" / "app" / "vardeko.ico"
    target.write_bytes(directory + b"".join(images))
    print(f"{target}: {target.stat().st_size} bytes")


if __name__ == "__main__":
    main()
