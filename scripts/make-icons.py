#!/usr/bin/env python3
"""Draws the two 16x16 activity icons (a signal mark: a dot and three arcs)."""
import math, struct, sys, zlib
from pathlib import Path

def png(path, pixels, w=16, h=16):
    raw = b"".join(b"\0" + bytes(c for px in pixels[y*w:(y+1)*w] for c in px) for y in range(h))
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data) & 0xFFFFFFFF)
    Path(path).write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", w, h, 8, 6, 0, 0, 0))
                           + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))

def coverage(x, y):
    cx, cy = 3.0, 13.0
    d = math.hypot(x - cx, y - cy)
    if d <= 1.8:
        return 1.0
    if x < cx - 0.5 or y > cy + 0.5:
        return 0.0
    return 1.0 if any(abs(d - r) <= 0.9 for r in (5.0, 8.5, 12.0)) else 0.0

def icon(rgb):
    n = 4
    out = []
    for y in range(16):
        for x in range(16):
            a = sum(coverage(x + (i + .5) / n, y + (j + .5) / n) for i in range(n) for j in range(n)) / (n * n)
            out.append((*rgb, int(round(a * 255))))
    return out

dest = Path(sys.argv[1] if len(sys.argv) > 1 else "forms/img")
png(dest / "blue-rfid-signal-16.png", icon((0x1e, 0x6f, 0xd9)))
png(dest / "888888-rfid-signal-16.png", icon((0x88, 0x88, 0x88)))
