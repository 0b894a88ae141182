#!/usr/bin/env python3
"""Writes the first inputs of every fuzz target into the folder corpus beside this script.

What fuzzing found besides stands there under the names that the engine gave it, and stays.
"""

import pathlib
import struct

FOLDER = pathlib.Path(__file__).parent / "corpus"


def put(target, name, data):
    folder = FOLDER / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(data)


def noise(count, seed):
    out = bytearray()
    for _ in range(count):
        seed = (seed * 1103515245 + 12345) % 2**31
        out.append(seed >> 16 & 255)
    return bytes(out)


def bmp(width, height, bits, used=0, table=None, offset=None, missing=0, compression=0, size=40):
    """A BMP file; its table has `table` colours, its last `missing` bytes are left out."""
    if table is None:
        table = (used or 2**bits) if bits <= 8 else 0
    pixels = noise((width * bits + 31) // 32 * 4 * height, width + 7 * height + bits)
    header = struct.pack("<IiiHHIIiiII", size, width, height, 1, bits, compression, 0, 2835, 2835, used, 0)
    start = 54 + 4 * table if offset is None else offset
    data = struct.pack("<2sIII", b"BM", start + len(pixels), 0, start) + header
    data = (data + noise(4 * table, bits)).ljust(start, b"\x77") + pixels
    return data[: len(data) - missing]


def claim(width, height, bits, used=0):
    """A file that has 8 bytes of what its header claims."""
    header = struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, 0, 0, 0, 0, used, 0)
    return struct.pack("<2sIII", b"BM", 62, 0, 54) + header + bytes(8)


FILES = {f"{bits}-bits": bmp(width, 5, bits)
         for bits, width in ((1, 13), (4, 7), (8, 6), (16, 5), (24, 5), (32, 9))}
FILES |= {
    "counted-colors": bmp(5, 3, 8, used=7),
    "too-many-colors": bmp(4, 3, 8, used=257),
    "true-colors-with-table": bmp(4, 3, 24, used=2, table=2),
    "long-header": bmp(3, 3, 4, used=16, offset=54 + 64 + 9),
    "short-table": bmp(3, 3, 8, used=9, table=4),
    "truncated": bmp(6, 4, 24, missing=17),
    "no-pixel": bmp(2, 1, 24, missing=8),
    "compressed": bmp(2, 2, 8, used=1, compression=1),
    "old-header": bmp(2, 2, 24, size=12),
    "large": claim(0x7FFFFFFF, 0x7FFFFFFF, 32),
    "negative": claim(4, -4, 24),
    "no-columns": claim(0, 0x7FFFFFFF, 24),
    "no-rows": claim(3, 0, 1, 2),
    "many-colors": claim(1, 1, 8, 0xFFFFFFFF),
    "two-bits": claim(1, 1, 2),
    "cut": bmp(1, 1, 8)[:40],
}

REFUSED = ["short-table", "no-pixel", "compressed", "old-header", "large", "negative", "no-columns", "many-colors",
           "two-bits", "cut"]

INI = {
    "plain": b"[Roads]\r\nWidth = 12 \r\nwidth=99\r\n; k=no\r\n[Other]\nempty=\nlast=end",
    "blanks": b"  [a b ]x\n\t ab abc=1\n\x0b[c]\r\r\nab=\r\n =x\n",
    "malformed": b"[a]\nk=v\nno equals\n[open\nk=w\n",
    "ends": b"[a]\nk=1\x1a\n[b]\nk=2\n",
    "zero": b"[a]\nk=1\0\n[b\0]\nk=2\n[c]",
    "long": b"[a]\n" + b" " * 500 + b"[b]\n[" + b"s" * 255 + b"]\nk=" + b"v" * 520 + b"\n" + b"k" * 255 + b"=1\n",
    "twice": b"[a]\nk=1\n[A]\nK=2\nl=3\n \t",
    "before": b"k=0\n# any\n[a]\nk=\r\n\rc=1\n",
}

GDI = {
    # Contexts and bitmaps; then selected, drawn on, read.
    "draw": bytes([0, 1, 0, 2, 0, 9, 7, 3, 9, 6, 0, 6, 8, 5, 11, 8, 12, 12, 200, 100, 14, 8, 3, 4, 1, 0, 3,
                   0, 14, 14, 20, 20, 4, 4, 5, 6, 9, 17, 0, 6, 0, 9, 1]),
    "copy": bytes([0, 1, 0, 1, 0, 3, 9, 9, 1, 0, 3, 8, 8, 0, 0, 6, 8, 7, 6, 16, 8, 12, 8, 16, 14, 13, 9, 7, 2,
                   12, 12, 0, 16, 13, 12, 5, 6, 1, 12]),
    "capture": bytes([0, 1, 0, 2, 0, 8, 8, 6, 8, 5, 11, 8, 13, 13, 255, 255, 18, 8, 10, 10, 9, 20]),
    "end": bytes([1, 0, 4, 0, 3, 3, 3, 0, 2, 9, 6, 0, 4, 9, 0, 4, 1, 9, 0, 4, 1, 9, 0, 0, 0, 5, 3, 0, 7, 0, 5,
                  8, 0, 5, 10, 0, 3]),
    "stretch": bytes([1, 7, 3, 15, 15, 1, 0, 6, 0, 4] + sum(
        ([15, 0, 8, 6, depth, 0, depth * 9, 0, 12, 12, 40, 9 + depth, 4, 3, 7, 5, 0, 10, 0, depth % 4]
         for depth in range(6)), [])),
}

NAMES = {
    "extension": b".h?m*\0.html", "stars": b"*a*b*\0aabab", "search": b"*.?x<>\0a.bx", "drive": b"c:a.b\\d.e/f.g",
    "dots": b"*. .\0a..b", "quote": b"a\"*>>\0a.b", "ends": b"??.??\0A.B",
}

HEX = {
    "digits": b"\x0401abCD9f", "signs": b"\x03 f-1+af ", "wrong": b"\x020g1", "prefix": b"\x020x0X",
    "order": b"\x10" + bytes(range(32)), "last": b"\x00" + b"\xfe" + b"\xff" * 15 + bytes(16),
}

READS = {
    "every": bytes([0, 16] + list(range(10)) + [10, 3, 0, 10, 0xF6, 3]) + bytes(range(200, 255)),
    "end": bytes([1, 14, 8, 3, 1, 10, 9, 6, 10, 0x80, 10, 127, 11, 0, 11, 1]) + b"12345",
    "empty": bytes([0, 4, 8, 0, 5, 7]),
}


def main():
    for name, data in FILES.items():
        put("Bmp", name, data)
    for number, (name, data) in enumerate(FILES.items()):
        for way in range(2 if name not in REFUSED else 0):
            controls = bytes([way * 2 + number % 2]) + noise(31, number * 5 + way)
            put("Image", f"{name}-{way}", controls + data)
    for name, data in INI.items():
        put("Ini", name, b"\x01a\0k\0" + data)
    for target, inputs in (("SoftGdi", GDI), ("FileNames", NAMES), ("HexText", HEX), ("FileAccess", READS)):
        for name, data in inputs.items():
            put(target, name, data)


main()
