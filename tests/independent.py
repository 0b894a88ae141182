#!/usr/bin/python3
"""Has other programs write BMP files of every kind that they know, and compares what the library reads from them
with what the program that wrote them reads.

    independent.py FOLDER DUMP...

FOLDER is for the files. DUMP is the program of support/DumpBmp.cpp, after an emulator where it needs one. The
headers of the files tell which the library has to refuse. Ends with 77 where there is none of these programs.
"""
import collections
import os
import shutil
import struct
import subprocess
import sys

try:
    from PIL import Image
except ImportError:
    Image = None

FOLDER, *DUMP = sys.argv[1:]
SOURCE, BMP, OTHER, OURS = (os.path.join(FOLDER, name) for name in ["source.ppm", "a.bmp", "other.ppm", "ours.ppm"])


def run(*command, to=subprocess.DEVNULL):
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=to, stderr=subprocess.DEVNULL)


def says(text, *command):
    """Whether there is such a program and it says so: others may have its name."""
    if shutil.which(command[0]) is None:
        return False
    return text in subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True).stdout


def run_to(path, *command):
    with open(path, "wb") as file:
        run(*command, to=file)


def draw(width, height, colors):
    """A picture of so many colours; two are black and white."""
    state, samples = width * 1000 + height + colors, bytearray()
    for _ in range(width * height):
        state = (state * 1103515245 + 12345) % 2**31
        i = (state >> 12) % colors
        samples += bytes([255 * i] * 3 if colors == 2 else [i * 53 % 256, i * 91 % 256, (i * 7 + i // 256) % 256])
    with open(SOURCE, "wb") as file:
        file.write(b"P6\n%d %d\n255\n" % (width, height) + samples)


def samples(path):
    """Width, height and samples of a PPM or PGM file of bytes, the latter as red, green and blue."""
    data = open(path, "rb").read()
    kind, width, height, most = data.split(maxsplit=4)[:4]
    body = data[-int(width) * int(height) * (3 if kind == b"P6" else 1):]
    assert (kind == b"P6" or kind == b"P5") and most == b"255", data[:20]
    return int(width), int(height), body if kind == b"P6" else bytes(c for gray in body for c in [gray] * 3)


# Of each program: the kinds of files, the number of colours each wants, and how it writes and reads them.
Program = collections.namedtuple("Program", "name there kinds write read")


def pil_write(mode):
    Image.open(SOURCE).convert(mode).save(BMP)


def netpbm_read():
    run_to(OTHER + ".pnm", "bmptopnm", BMP)
    run_to(OTHER + ".pgm", "pnmdepth", "255", OTHER + ".pnm") # bits become bytes
    run_to(OTHER, "pamtopnm", "-assume", OTHER + ".pgm")


PROGRAMS = [
    Program("netpbm", shutil.which("ppmtobmp"),
            {f"{system} -bpp={bits}": colors for system in ["-windows", "-os2"]
             for bits, colors in [(1, 2), (4, 16), (8, 256), (24, 5000)]},
            lambda kind: run_to(BMP, "ppmtobmp", *kind.split(), SOURCE),
            netpbm_read),
    Program("PIL", Image,
            {"1": 2, "L": 256, "P": 256, "RGB": 5000, "RGBA": 5000},
            pil_write,
            lambda: Image.open(BMP).convert("RGB").save(OTHER)),
    Program("ImageMagick", says("ImageMagick", "convert", "-version"),
            {f"{options} {form}": colors for form in ["BMP2:", "BMP3:", "BMP:"]
             for options, colors in [("-type bilevel", 2), ("-type palette -colors 16", 16),
                                     ("-type palette -colors 256 -compress none", 256),
                                     ("-type palette -compress RLE", 256),
                                     ("-type truecolor", 5000), ("-alpha set", 5000),
                                     ("-define bmp:subtype=RGB555", 5000), ("-define bmp:subtype=RGB565", 5000)]},
            lambda kind: run("convert", SOURCE, *kind.split()[:-1], kind.split()[-1] + BMP),
            lambda: run("convert", BMP, "-alpha", "off", "-depth", "8", "-type", "truecolor", "ppm:" + OTHER)),
    Program("ffmpeg", says("ffmpeg", "ffmpeg", "-version"),
            {kind: 5000 for kind in ["bgra", "bgr24", "rgb565le", "rgb555le", "rgb444le", "rgb8", "bgr8", "rgb4_byte",
                                     "bgr4_byte", "gray", "pal8", "monob"]},
            lambda kind: run("ffmpeg", "-y", "-i", SOURCE, "-pix_fmt", kind, BMP),
            lambda: run("ffmpeg", "-y", "-i", BMP, "-pix_fmt", "rgb24", OTHER)),
]


def is_supported(header):
    size, = struct.unpack_from("<I", header, 14)
    if size != 40:
        return False
    width, height, _, bits, compression = struct.unpack_from("<iiHHI", header, 18)
    return width > 0 and height > 0 and compression == 0 and bits in [1, 4, 8, 16, 24, 32]


def main():
    os.makedirs(FOLDER, exist_ok=True)
    counts, faults = collections.Counter(), 0
    for program in filter(lambda program: program.there, PROGRAMS):
        for kind, colors in program.kinds.items():
            for width, height in [(7, 5), (33, 17)]:
                draw(width, height, colors)
                program.write(kind)
                header = open(BMP, "rb").read(54)
                bits = struct.unpack_from("<H", header, 28)[0]
                taken = subprocess.run([*DUMP, BMP, OURS]).returncode == 0
                same = taken == is_supported(header)
                if taken:
                    program.read()
                    ours, other = samples(OURS), samples(OTHER)
                    most = 1 if bits == 16 else 0 # 5 bits are widened in more ways than one
                    same = same and ours[:2] == other[:2] and all(abs(a - b) <= most for a, b in zip(ours[2], other[2]))
                counts[f"{program.name}, {bits} bits" if taken else f"{program.name}, refused"] += 1
                if not same:
                    faults += 1
                    print(f"{program.name} {kind} {width} x {height}: {'other pixels' if taken else 'refused'}")
    print(", ".join(f"{name}: {count}" for name, count in sorted(counts.items())))
    return 1 if faults else 0 if counts else 77


sys.exit(main())
