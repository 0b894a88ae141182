#!/usr/bin/python3
# Lets other programs write BMP files of every kind that they know, and compares what the library reads from each with
# what the program itself reads. The library has to refuse exactly the files whose headers say that it should.
#
#     independent.py DUMP...
#
# DUMP is the program of support/DumpBmp.cpp, after its emulator if it needs one. The files go to the current folder.
# PIL draws the pictures and compares them.
import collections
import random
import struct
import subprocess
import sys

from PIL import Image, ImageChops

# Of each program: the commands that find it, write a.bmp and read it, and what the second is given: a picture, named
# by its number of colours, and the kind of file.
PIL = sys.executable + " -c 'import sys, PIL.Image as I; _, a, mode, b = sys.argv; I.open(a).convert(mode).save(b)'"
PROGRAMS = [
    ("ppmtobmp -version", "ppmtobmp {} >a.bmp", "bmptopnm a.bmp >other.ppm",
     [f"-{system} -bpp={kind}" for system in ["windows", "os2"]
      for kind in ["1 2.ppm", "4 16.ppm", "8 256.ppm", "24 5000.ppm"]]),
    ("true", PIL + " {} a.bmp", PIL + " a.bmp RGB other.ppm",
     ["2.ppm 1", "256.ppm L", "256.ppm P", "5000.ppm RGB", "5000.ppm RGBA"]),
    ("convert -version | grep ^Version", "convert {}:a.bmp",
     "convert a.bmp -alpha off -depth 8 -type truecolor other.ppm",
     [f"{kind} {form}" for form in ["BMP2", "BMP3", "BMP"] for kind in [
         "2.ppm -type bilevel", "16.ppm -type palette -colors 16", "256.ppm -type palette -colors 256 -compress none",
         "256.ppm -type palette -compress RLE", "5000.ppm -type truecolor", "5000.ppm -alpha set",
         "5000.ppm -define bmp:subtype=RGB555", "5000.ppm -define bmp:subtype=RGB565"]]),
    ("ffmpeg -version", "ffmpeg -y -i 5000.ppm -pix_fmt {} a.bmp", "ffmpeg -y -i a.bmp -pix_fmt rgb24 other.ppm",
     ["bgra", "bgr24", "rgb565le", "rgb555le", "rgb444le", "rgb8", "bgr8", "rgb4_byte", "bgr4_byte", "gray", "pal8",
      "monob"])]


def run(command):
    return subprocess.run(command, shell=True, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode


def draw(size):
    for count in [2, 16, 256, 5000]:
        colors = [b"\0\0\0", b"\xFF\xFF\xFF"] if count == 2 else [random.randbytes(3) for _ in range(count)]
        samples = b"".join(random.choices(colors, k=size[0] * size[1]))
        Image.frombytes("RGB", size, samples).save(f"{count}.ppm")


random.seed(1)
results = collections.Counter()
for size in [(7, 5), (33, 17)]:
    draw(size)
    for find, write, read, kinds in PROGRAMS:
        for command in map(write.format, kinds if run(find) == 0 else []):
            assert run(command) == 0, command
            with open("a.bmp", "rb") as file:
                length, width, height, _, bits, compression = struct.unpack_from("<IiiHHI", file.read(), 14)
            loads = length == 40 and min(width, height) > 0 and compression == 0 and bits in [1, 4, 8, 16, 24, 32]
            results[f"{bits} bits" if loads else "refused"] += 1
            code = run(f"{' '.join(sys.argv[1:])} a.bmp >ours.ppm")
            assert code == (0 if loads else 1), f"{code} from {command} {size}"
            if loads:
                assert run(read) == 0, read
                ours, other = Image.open("ours.ppm"), Image.open("other.ppm").convert("RGB")
                assert ours.size == other.size, f"size by {command} {size}"
                extrema = ImageChops.difference(ours, other).getextrema()
                most = 1 if bits == 16 else 0 # 5 bits are widened in more ways than one
                assert max(high for _, high in extrema) <= most, f"{extrema} by {command} {size}"
print(dict(results))
