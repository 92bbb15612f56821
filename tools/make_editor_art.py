#!/usr/bin/env python3
"""Draws the editor's toolbar bitmaps and cursors into res/.

    python3 tools/make_editor_art.py        # rewrites res/*.bmp and res/*.cur

The output is committed; run this only after changing a picture below. Pure standard
library, so it runs anywhere Python 3 does.

Image strips hold 16 x 15 pictures side by side. Each strip has a colour bitmap (24-bit)
and a monochrome mask bitmap in which a set bit marks a transparent pixel, as
ImageList_Add expects. The indices below are the ones the toolbars ask for:

  edit strip (123, mask 112): 0 move xy, 1 move x, 2 move y, 3 insert Bezier (the Add
      Point button and its fly-off's second entry), 4 delete, 19 reset, 20 scale,
      25 insert corner (the fly-off's first entry)
  view strip (114, mask 113): 0 zoom horizontal extents, 2 zoom vertically, 3 zoom region,
      4 pan, 5 zoom vertical extents, 6 zoom horizontally, 7 zoom, 10 and 11 the disabled
      zoom vertically / horizontally, 12 zoom extents
  curve strip (128, mask 122): picture i is the display button of curve i

Cursors (32 x 32, monochrome): 101 point, 102 move, 105 pan, 191 zoom, 193 zoom region.
"""

import os
import struct

W, H = 16, 15
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "res")

# Palette of the ASCII pictures: '.' is transparent.
PALETTE = {
    "k": (0, 0, 0),
    "w": (255, 255, 255),
    "g": (128, 128, 128),
    "l": (192, 192, 192),
    "r": (200, 30, 30),
    "b": (30, 60, 200),
    "G": (20, 140, 40),
    "y": (230, 190, 20),
    "o": (230, 120, 20),
}


def pic(rows):
    """A 16 x 15 picture from 15 strings of up to 16 characters."""
    assert len(rows) == H, rows
    return [r.ljust(W, ".") for r in rows]


EMPTY = pic(["" for _ in range(H)])

ARROW_XY = pic([
    ".......k........",
    "......kkk.......",
    ".....k.k.k......",
    ".......k........",
    ".......k........",
    "..k....k....k...",
    ".k.....k.....k..",
    "kkkkkkkkkkkkkkk.",
    ".k.....k.....k..",
    "..k....k....k...",
    ".......k........",
    ".......k........",
    ".....k.k.k......",
    "......kkk.......",
    ".......k........",
])
ARROW_X = pic([
    "", "", "", "", "",
    "..k.........k...",
    ".k...........k..",
    "kkkkkkkkkkkkkkk.",
    ".k...........k..",
    "..k.........k...",
    "", "", "", "", "",
])
ARROW_Y = pic([
    ".......k........",
    "......kkk.......",
    ".....k.k.k......",
    ".......k........",
    ".......k........",
    ".......k........",
    ".......k........",
    ".......k........",
    ".......k........",
    ".......k........",
    ".......k........",
    ".......k........",
    ".....k.k.k......",
    "......kkk.......",
    ".......k........",
])
INSERT_CORNER = pic([
    "",
    "............rr..",
    "..........rr....",
    "........kk......",
    ".......kkkk.....",
    "......kkkkk.....",
    "....rr.kkk......",
    "..rr............",
    "rr..............",
    "",
    "...kkk..........",
    "...k.k..........",
    ".kkk.kkk........",
    ".k.....k........",
    ".kkk.kkk........",
])
INSERT_BEZIER = pic([
    "",
    "..........bbbb..",
    "........bb......",
    ".......kkk......",
    "......kkkkk.....",
    ".....bkkkkk.....",
    "....b..kkk......",
    "...b............",
    "bbb.............",
    "",
    "...kkk..........",
    "...k.k..........",
    ".kkk.kkk........",
    ".k.....k........",
    ".kkk.kkk........",
])
DELETE = pic([
    "",
    ".rr.......rr....",
    "..rr.....rr.....",
    "...rr...rr......",
    "....rr.rr.......",
    ".....rrr........",
    "....rr.rr.......",
    "...rr...rr......",
    "..rr.....rr.....",
    ".rr.......rr....",
    "",
    "......kkk.......",
    "......kkk.......",
    "......kkk.......",
    "",
])
RESET = pic([
    "",
    "....kkkkk.......",
    "..kk.....kk.....",
    ".k.........k....",
    ".k..........k...",
    "k...........k...",
    "k.........kkkkk.",
    "k..........kkk..",
    "k...........k...",
    ".k..............",
    ".k..............",
    "..kk.....kk.....",
    "....kkkkk.......",
    "",
    "",
])
SCALE = pic([
    "",
    ".......k........",
    "......kkk.......",
    ".....k.k.k......",
    ".......k........",
    "..gg...k........",
    "..gg...k...kk...",
    "..gg...k...kk...",
    "..gg...k...kk...",
    "..gg...k...kk...",
    "..gg...k...kk...",
    ".....k.k.k..kk..",
    "......kkk...kk..",
    ".......k........",
    "kkkkkkkkkkkkkkk.",
])


def magnifier(inner):
    """A magnifying glass; `inner` draws into rows 2..7 of the lens."""
    rows = [
        "...kkkk.........",
        "..k....k........",
        ".k......k.......",
        ".k......k.......",
        ".k......k.......",
        ".k......k.......",
        "..k....k........",
        "...kkkkkk.......",
        "........kk......",
        ".........kk.....",
        "..........kk....",
        "...........kk...",
        "",
        "",
        "",
    ]
    rows = [list(r.ljust(W, ".")) for r in rows]
    for (x, y, c) in inner:
        rows[y][x] = c
    return ["".join(r) for r in rows]


ZOOM = pic(magnifier([(4, 3, "b"), (5, 3, "b"), (4, 4, "b"), (5, 4, "b")]))
ZOOM_H = pic(magnifier([(2, 3, "b"), (3, 3, "b"), (4, 3, "b"), (5, 3, "b"), (6, 3, "b"),
                        (2, 4, "b"), (6, 4, "b")]))
ZOOM_V = pic(magnifier([(4, 1, "b"), (4, 2, "b"), (4, 3, "b"), (4, 4, "b"), (4, 5, "b"),
                        (3, 2, "b"), (5, 2, "b")]))
ZOOM_H_OFF = pic([r.replace("b", "g").replace("k", "g") for r in ZOOM_H])
ZOOM_V_OFF = pic([r.replace("b", "g").replace("k", "g") for r in ZOOM_V])
ZOOM_REGION = pic([
    "kk.kk.kk.kk.....",
    "k.........k.....",
    "................",
    "k...kkkk..k.....",
    "k..k....k.......",
    "..k......k......",
    "k.k......k......",
    "k.k......k......",
    "...k....k.......",
    "kk.kkkkkkk......",
    "..........kk....",
    "...........kk...",
    "............kk..",
    "",
    "",
])
PAN = pic([
    ".......k........",
    "......k.kk......",
    "....kkk.k.k.....",
    "...k..k.k.k.k...",
    "...k..k.k.k.kk..",
    "...k..k.k.k.k.k.",
    ".kkk..........k.",
    "k..k..........k.",
    "k.............k.",
    ".k...........k..",
    "..k..........k..",
    "...k........k...",
    "....k.......k...",
    ".....k.....k....",
    ".....kkkkkkk....",
])


def extents(horizontal, vertical):
    rows = [list(r) for r in pic([
        "kkkkkkkkkkkkkkk.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "k.............k.",
        "kkkkkkkkkkkkkkk.",
    ])]
    if horizontal:
        for x in range(2, 13):
            rows[7][x] = "b"
        for d in (1, 2):
            rows[7 - d][2 + d] = rows[7 + d][2 + d] = "b"
            rows[7 - d][12 - d] = rows[7 + d][12 - d] = "b"
    if vertical:
        for y in range(2, 13):
            rows[y][7] = "r"
        for d in (1, 2):
            rows[2 + d][7 - d] = rows[2 + d][7 + d] = "r"
            rows[12 - d][7 - d] = rows[12 - d][7 + d] = "r"
    return ["".join(r) for r in rows]


ZOOM_EXT_H = pic(extents(True, False))
ZOOM_EXT_V = pic(extents(False, True))
ZOOM_EXT = pic(extents(True, True))

CURVE_COLOURS = ["r", "G", "b", "o", "y", "g", "k"]


def curve_button(i):
    """A small wave in the curve's colour with i's number as dots underneath."""
    c = CURVE_COLOURS[i % len(CURVE_COLOURS)]
    wave = [10, 9, 7, 5, 4, 3, 3, 4, 5, 7, 8, 9, 9, 8, 6, 5]
    rows = [["."] * W for _ in range(H)]
    for x, y in enumerate(wave):
        rows[y][x] = c
        rows[y + 1][x] = c
    n = i + 1
    for d in range(min(n, 7)):
        rows[13][1 + 2 * d] = "k"
    if n > 7:  # tens shown as a bar over the dots
        for x in range(1, 1 + min(n // 7, 14)):
            rows[12][x] = "k"
    return ["".join(r) for r in rows]


def strip(pictures):
    """(colour rows, mask rows): rows top to bottom, pixels as RGB tuples / 0-1 bits."""
    colour, mask = [], []
    for y in range(H):
        crow, mrow = [], []
        for p in pictures:
            for ch in p[y]:
                if ch == ".":
                    crow.append((192, 192, 192))
                    mrow.append(1)
                else:
                    crow.append(PALETTE[ch])
                    mrow.append(0)
        colour.append(crow)
        mask.append(mrow)
    return colour, mask


def bmp24(rows):
    width, height = len(rows[0]), len(rows)
    stride = (width * 3 + 3) & ~3
    data = bytearray()
    for row in reversed(rows):
        line = bytearray()
        for (r, g, b) in row:
            line += bytes((b, g, r))
        line += b"\0" * (stride - len(line))
        data += line
    header = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(data), 2835, 2835,
                         0, 0)
    file_header = struct.pack("<2sIHHI", b"BM", 14 + 40 + len(data), 0, 0, 14 + 40)
    return file_header + header + bytes(data)


def pack_bits(bits, width):
    stride = ((width + 31) // 32) * 4
    line = bytearray(stride)
    for x, bit in enumerate(bits):
        if bit:
            line[x // 8] |= 0x80 >> (x % 8)
    return bytes(line)


def bmp1(rows):
    width, height = len(rows[0]), len(rows)
    data = b"".join(pack_bits(r, width) for r in reversed(rows))
    palette = struct.pack("<II", 0x000000, 0xFFFFFF)
    header = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 1, 0, len(data), 2835, 2835,
                         2, 2)
    offset = 14 + 40 + len(palette)
    file_header = struct.pack("<2sIHHI", b"BM", offset + len(data), 0, 0, offset)
    return file_header + header + palette + data


def cursor(art, hot):
    """A 32 x 32 monochrome cursor: 'k' black, 'w' white, '.' transparent."""
    art = [r.ljust(32, ".") for r in art] + ["." * 32] * (32 - len(art))
    xor_rows = [[1 if ch == "w" else 0 for ch in r] for r in art]
    and_rows = [[1 if ch == "." else 0 for ch in r] for r in art]
    xor = b"".join(pack_bits(r, 32) for r in reversed(xor_rows))
    andm = b"".join(pack_bits(r, 32) for r in reversed(and_rows))
    palette = struct.pack("<II", 0x000000, 0xFFFFFF)
    header = struct.pack("<IiiHHIIiiII", 40, 32, 64, 1, 1, 0, len(xor) + len(andm), 0, 0, 2,
                         0)
    image = header + palette + xor + andm
    directory = struct.pack("<HHH", 0, 2, 1)
    entry = struct.pack("<BBBBHHII", 32, 32, 2, 0, hot[0], hot[1], len(image), 6 + 16)
    return directory + entry + image


def outline(shape):
    """Gives a black shape ('k') a white one-pixel rim so it shows on dark and light."""
    grid = [list(r.ljust(32, ".")) for r in shape]
    out = [row[:] for row in grid]
    for y, row in enumerate(grid):
        for x, ch in enumerate(row):
            if ch != ".":
                continue
            for dx, dy in ((1, 0), (-1, 0), (0, 1), (0, -1)):
                nx, ny = x + dx, y + dy
                if 0 <= ny < len(grid) and 0 <= nx < 32 and grid[ny][nx] == "k":
                    out[y][x] = "w"
                    break
    return ["".join(r) for r in out]


CURSOR_POINT = outline([
    "k",
    "kk",
    "kkk",
    "kkkk",
    "kkkkk",
    "kkkkkk",
    "kkkkkkk",
    "kkkkkkkk",
    "kkkkk",
    "kk.kk",
    "k...kk",
    ".....kk",
    "",
    "..........kkk",
    ".........kkkkk",
    ".........kkkkk",
    ".........kkkkk",
    "..........kkk",
])
CURSOR_MOVE = outline([
    "",
    "........k",
    ".......kkk",
    "......kkkkk",
    "........k",
    "........k",
    "...k....k....k",
    "..kk....k....kk",
    ".kkkkkkkkkkkkkkk",
    "..kk....k....kk",
    "...k....k....k",
    "........k",
    "........k",
    "......kkkkk",
    ".......kkk",
    "........k",
])
CURSOR_PAN = outline([
    "",
    "........kk",
    "......kk..kk",
    ".....k.k..k.kk",
    ".....k.k..k.k.k",
    ".....k.k..k.k.k.k",
    "...kkk.k..k.k.k.k",
    "..k..k........k.k",
    "..k..k..........k",
    "..k.............k",
    "...k............k",
    "....k..........k",
    ".....k.........k",
    "......k.......k",
    ".......kkkkkkkk",
])
CURSOR_ZOOM = outline([
    "",
    "....kkkkk",
    "...k.....k",
    "..k...k...k",
    "..k...k...k",
    "..k.kkkkk.k",
    "..k...k...k",
    "..k...k...k",
    "...k.....k",
    "....kkkkkkk",
    "..........kk",
    "...........kk",
    "............kk",
    ".............kk",
])
CURSOR_ZOOM_REGION = outline([
    "",
    ".kk.kk.kk.kk",
    ".k.........k",
    "............",
    ".k..kkkkk..k",
    ".k.k.....k.k",
    "...k.....k",
    ".k.k.....k.k",
    ".k.k.....k.k",
    "....kkkkkkk",
    ".kk.kk.kk.kkk",
    "............kk",
    ".............kk",
    "..............kk",
])


def write(name, data):
    path = os.path.join(ROOT, name)
    with open(path, "wb") as f:
        f.write(data)


def main():
    edit = [EMPTY] * 29
    edit[0], edit[1], edit[2] = ARROW_XY, ARROW_X, ARROW_Y
    edit[3], edit[4], edit[19] = INSERT_BEZIER, DELETE, RESET
    edit[20], edit[25] = SCALE, INSERT_CORNER
    view = [EMPTY] * 13
    view[0], view[2], view[3], view[4] = ZOOM_EXT_H, ZOOM_V, ZOOM_REGION, PAN
    view[5], view[6], view[7] = ZOOM_EXT_V, ZOOM_H, ZOOM
    view[10], view[11], view[12] = ZOOM_V_OFF, ZOOM_H_OFF, ZOOM_EXT
    curves = [curve_button(i) for i in range(29)]

    for (bitmap, mask, pictures) in ((123, 112, edit), (114, 113, view), (128, 122, curves)):
        colour, bits = strip(pictures)
        write("toolbar_%d.bmp" % bitmap, bmp24(colour))
        write("toolbar_%d.bmp" % mask, bmp1(bits))

    write("cursor_101.cur", cursor(CURSOR_POINT, (0, 0)))
    write("cursor_102.cur", cursor(CURSOR_MOVE, (8, 8)))
    write("cursor_105.cur", cursor(CURSOR_PAN, (9, 8)))
    write("cursor_191.cur", cursor(CURSOR_ZOOM, (6, 6)))
    write("cursor_193.cur", cursor(CURSOR_ZOOM_REGION, (1, 1)))


if __name__ == "__main__":
    main()
