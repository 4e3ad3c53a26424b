#!/usr/bin/env python3
"""Writes the seed corpus of PicReaderFuzz into the folder given as argument (default: corpus/pic/ beside this file).

Seeds are assembled field by field from the layout in docs/pic-format.md, independently of the C++ writer.
Files named ok-* must be read, files named bad-* must be refused; the replay test checks both.
The build runs it into the build folder for the replay test; for a fuzzing session run it by hand:
python3 Testing/Fuzz/corpus/make-pic-seeds.py <folder>
"""
import gzip
import os
import struct
import sys

MAGIC = b"\x89LPIC\r\n\x1a"
UINT, INT, FLOAT, ASCII = 4, 3, 5, 2


def header(kind, bpe, sizes, tags=b"", tag_count=0, data_bytes=None):
    elements = 1
    for n in sizes:
        elements *= n
    if data_bytes is None:
        data_bytes = elements * (bpe // 8)
    fixed = MAGIC + struct.pack("<HHIII", 1, 0, kind, bpe, len(sizes))
    fixed += struct.pack("<%dI" % len(sizes), *sizes)
    return fixed + struct.pack("<IIQ", tag_count, len(tags), data_bytes) + tags


def tag(name, kind, bpe, value):
    return struct.pack("<B", len(name)) + name + struct.pack("<III", kind, bpe, len(value)) + value


def floats(*values):
    return struct.pack("<%dd" % len(values), *values)


def gz(data):
    return gzip.compress(data, compresslevel=9, mtime=0)


tiny = header(UINT, 8, [2, 1, 1], tag(b"ID", ASCII, 8, b"ab"), 1) + b"\x07\xff"
geometry_tags = (tag(b"SPACING", FLOAT, 64, floats(0.5, 0.5, 2.0))
                 + tag(b"ORIGIN", FLOAT, 64, floats(-10.0, 20.0, 30.0))
                 + tag(b"DIRECTION", FLOAT, 64, floats(0, 1, 0, 1, 0, 0, 0, 0, 1)))
geometry = header(INT, 16, [2, 2, 2], geometry_tags, 3) + struct.pack("<8h", -3, -2, -1, 0, 1, 2, 3, 32767)
MOST = 0xFFFFFFFF

seeds = {
    "ok-tiny.pic": tiny,
    "ok-tiny.pic.gz": gz(tiny),
    "ok-geometry.pic": geometry,
    "ok-float-1d.pic": header(FLOAT, 32, [4]) + struct.pack("<4f", 0.0, -1.5, 1e30, float("nan")),
    "ok-eight-axes.pic": header(UINT, 8, [1] * 8) + b"\x2a",
    "ok-two-members.pic.gz": gz(tiny[:30]) + gz(tiny[30:]),
    "bad-empty.pic": b"",
    "bad-magic-only.pic": MAGIC,
    "bad-version.pic": tiny[:8] + b"\x02" + tiny[9:],
    "bad-dim200.pic": MAGIC + struct.pack("<HHIII", 1, 0, UINT, 8, 200),
    "bad-overflow.pic": header(UINT, 8, [MOST, MOST, MOST], data_bytes=0),
    "bad-size-larger.pic": header(UINT, 8, [1000, 1000, 1000]) + b"\x01\x02",
    "bad-truncated-voxels.pic": tiny[:-1],
    "bad-tag-past-end.pic": header(UINT, 8, [1], struct.pack("<B", 2) + b"ID" + struct.pack("<III", ASCII, 8, 1000)
                                   + b"ab", 1) + b"\x00",
    "bad-tag-name.pic": header(UINT, 8, [1], struct.pack("<B", 40) + b"A" * 59, 1) + b"\x00",
    "bad-spacing.pic": header(UINT, 8, [1], tag(b"SPACING", FLOAT, 64, floats(1.0, -1.0, 1.0)), 1) + b"\x00",
    "bad-cut.pic.gz": gz(geometry)[:-12],
    "bad-bomb.pic.gz": gz(header(UINT, 8, [1000, 1000, 1000])),
    "bad-no-trailer.pic.gz": gz(tiny)[:-8],
}

folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "pic")
os.makedirs(folder, exist_ok=True)
for name, data in sorted(seeds.items()):
    with open(os.path.join(folder, name), "wb") as out:
        out.write(data)
    if len(sys.argv) <= 1:
        print("%-28s %4d bytes" % (name, len(data)))
