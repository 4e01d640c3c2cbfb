#!/usr/bin/env python3
"""Draws the icons of the two window programs from the activity icons' signal
mark (a dot and three quarter arcs): a scalable SVG and PNGs of 16 to 256
pixels for each, from one description, so that both always show the same art.

varda-toolbox: the white mark on the activity blue.
glider-station: the white mark on sea green, with a yellow glider below it.

Usage: scripts/make-app-icons.py [DEST]   (default forms/icons)
"""
import math, struct, sys, zlib
from pathlib import Path

SIZES = (16, 32, 48, 64, 128, 256)
CANVAS = 256.0
WHITE, BLUE, SEA, YELLOW = "#ffffff", "#1e6fd9", "#0b7a75", "#f5b800"

# Shapes on a 256-unit canvas, painted in order:
#   ("tile", colour)                     rounded square behind everything
#   ("disc", colour, cx, cy, r)
#   ("arc", colour, cx, cy, r, width)    quarter ring from straight up to the right, flat ends
#   ("ellipse", colour, cx, cy, rx, ry)
#   ("rect", colour, x, y, w, h)
TILE = (8.0, 8.0, 240.0, 240.0, 44.0)  # x, y, w, h, corner radius


def signal_mark(colour, cx, cy, unit):
    """The activity icons' mark (dot r 1.8, arcs r 5, 8.5, 12, width 1.8 on a
    16-pixel grid), with its corner at cx, cy and `unit` canvas units a pixel."""
    return [("disc", colour, cx, cy, 1.8 * unit)] + [
        ("arc", colour, cx, cy, r * unit, 1.8 * unit) for r in (5.0, 8.5, 12.0)]


ICONS = {
    "varda-toolbox": [("tile", BLUE)] + signal_mark(WHITE, 62.0, 194.0, 12.0),
    "glider-station": [("tile", SEA)] + signal_mark(WHITE, 58.0, 148.0, 9.5) + [
        ("ellipse", YELLOW, 132.0, 202.0, 76.0, 15.0),  # hull
        ("rect", YELLOW, 112.0, 180.0, 26.0, 44.0),     # wings, seen end on
        ("rect", YELLOW, 196.0, 178.0, 8.0, 24.0),      # tail fin
    ],
}


def inside(shape, x, y):
    kind, _, *p = shape
    if kind == "tile":
        tx, ty, w, h, r = TILE
        qx = min(max(x, tx + r), tx + w - r)
        qy = min(max(y, ty + r), ty + h - r)
        return math.hypot(x - qx, y - qy) <= r
    if kind == "disc":
        cx, cy, r = p
        return math.hypot(x - cx, y - cy) <= r
    if kind == "arc":
        cx, cy, r, width = p
        return x >= cx and y <= cy and abs(math.hypot(x - cx, y - cy) - r) <= width / 2
    if kind == "ellipse":
        cx, cy, rx, ry = p
        return ((x - cx) / rx) ** 2 + ((y - cy) / ry) ** 2 <= 1.0
    if kind == "rect":
        rx, ry, w, h = p
        return rx <= x <= rx + w and ry <= y <= ry + h
    raise ValueError(kind)


def rgb(colour):
    return tuple(int(colour[i:i + 2], 16) for i in (1, 3, 5))


def raster(shapes, size, samples=4):
    """Premultiplied-free RGBA pixels, `samples` squared sub-samples a pixel."""
    scale = CANVAS / size
    pixels = []
    for py in range(size):
        for px in range(size):
            acc = [0.0, 0.0, 0.0, 0.0]
            for j in range(samples):
                for i in range(samples):
                    x = (px + (i + 0.5) / samples) * scale
                    y = (py + (j + 0.5) / samples) * scale
                    hit = None
                    for shape in shapes:
                        if inside(shape, x, y):
                            hit = shape[1]
                    if hit:
                        r, g, b = rgb(hit)
                        acc[0] += r; acc[1] += g; acc[2] += b; acc[3] += 1
            n = samples * samples
            a = acc[3]
            pixels.append((0, 0, 0, 0) if a == 0 else
                          (round(acc[0] / a), round(acc[1] / a), round(acc[2] / a), round(255 * a / n)))
    return pixels


def png(path, pixels, size):
    raw = b"".join(b"\0" + bytes(c for px in pixels[y * size:(y + 1) * size] for c in px)
                   for y in range(size))
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data
                + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF))
    Path(path).write_bytes(b"\x89PNG\r\n\x1a\n"
                           + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0))
                           + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def svg(shapes):
    out = ['<svg xmlns="http://www.w3.org/2000/svg" width="256" height="256" viewBox="0 0 256 256">']
    for kind, colour, *p in shapes:
        if kind == "tile":
            x, y, w, h, r = TILE
            out.append(f'  <rect x="{x:g}" y="{y:g}" width="{w:g}" height="{h:g}" rx="{r:g}" fill="{colour}"/>')
        elif kind == "disc":
            cx, cy, r = p
            out.append(f'  <circle cx="{cx:g}" cy="{cy:g}" r="{r:g}" fill="{colour}"/>')
        elif kind == "arc":
            cx, cy, r, width = p
            out.append(f'  <path d="M {cx:g} {cy - r:g} A {r:g} {r:g} 0 0 1 {cx + r:g} {cy:g}" fill="none" '
                       f'stroke="{colour}" stroke-width="{width:g}"/>')
        elif kind == "ellipse":
            cx, cy, rx, ry = p
            out.append(f'  <ellipse cx="{cx:g}" cy="{cy:g}" rx="{rx:g}" ry="{ry:g}" fill="{colour}"/>')
        elif kind == "rect":
            x, y, w, h = p
            out.append(f'  <rect x="{x:g}" y="{y:g}" width="{w:g}" height="{h:g}" fill="{colour}"/>')
    out.append("</svg>")
    return "\n".join(out) + "\n"


dest = Path(sys.argv[1] if len(sys.argv) > 1 else "forms/icons")
dest.mkdir(parents=True, exist_ok=True)
for name, shapes in ICONS.items():
    (dest / f"{name}.svg").write_text(svg(shapes))
    for size in SIZES:
        png(dest / f"{name}-{size}.png", raster(shapes, size), size)
