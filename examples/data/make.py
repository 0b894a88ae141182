#!/usr/bin/python3
"""Draws the sample pictures, has other programs write them as BMP files, and keeps beside the tests what those
programs read back. Needs python3-pil, netpbm, imagemagick and ffmpeg. Run it in this folder to make the data anew."""

import math
import pathlib
import subprocess

from PIL import Image, ImageDraw, ImageFilter

HERE = pathlib.Path(__file__).resolve().parent
EXPECTED = HERE.parent.parent / "tests" / "data"
WIDTH, HEIGHT, SCALE = 144, 96, 4


def landscape():
    """A lake between hills, drawn four times as large and averaged down."""
    width, height = WIDTH * SCALE, HEIGHT * SCALE
    picture = Image.new("RGB", (width, height))
    draw = ImageDraw.Draw(picture)
    for y in range(height):
        t = y / height
        draw.line([(0, y), (width, y)], (int(70 + 170 * t), int(130 + 90 * t), int(215 - 30 * t)))
    draw.ellipse([width * 0.70, height * 0.10, width * 0.80, height * 0.25], (255, 240, 170))
    for base, swing, step, colour in ((0.52, 0.13, 0.9, (120, 140, 165)), (0.60, 0.10, 1.7, (84, 118, 104)),
                                      (0.70, 0.06, 2.6, (56, 96, 60))):
        line = [(x, height * (base - swing * math.sin(step * 2 * math.pi * x / width + 5 * base)
                              - 0.03 * math.sin(19 * x / width))) for x in range(width + 1)]
        draw.polygon(line + [(width, height), (0, height)], colour)
    draw.ellipse([width * 0.08, height * 0.78, width * 0.74, height * 1.10], (62, 108, 160))
    for i in range(9):
        y = height * (0.82 + 0.018 * i)
        draw.line([(width * (0.20 + 0.02 * i), y), (width * (0.56 + 0.01 * i), y)], (110, 160, 205), 3)
    for x in range(int(width * 0.78), width, 26):
        y = height * (0.80 + 0.05 * math.sin(x))
        draw.polygon([(x, y - 70), (x - 22, y), (x + 22, y)], (24, 66, 40))
        draw.rectangle([x - 4, y, x + 4, y + 14], (72, 50, 34))
    return picture.resize((WIDTH, HEIGHT), Image.LANCZOS)


def compass():
    """A compass rose on nothing, with a soft shadow: alpha takes every value."""
    size = 64 * SCALE
    centre = size / 2
    shadow = Image.new("L", (size, size))
    ImageDraw.Draw(shadow).ellipse([size * 0.08, size * 0.10, size * 0.94, size * 0.96], 150)
    picture = Image.new("RGBA", (size, size), (0, 0, 0, 0))
    picture.putalpha(shadow.filter(ImageFilter.GaussianBlur(size / 40)))
    rose = Image.new("RGBA", (size, size), (0, 0, 0, 0))
    draw = ImageDraw.Draw(rose)
    draw.ellipse([size * 0.06, size * 0.06, size * 0.90, size * 0.90], (250, 246, 232, 215), (120, 84, 40, 255), 10)
    centre = size * 0.48
    for i in range(8):
        angle, long = i * math.pi / 4, size * (0.38 if i % 2 == 0 else 0.24)
        tip = (centre + long * math.sin(angle), centre - long * math.cos(angle))
        for side, colour in ((-1, (196, 52, 44, 255)), (1, (126, 26, 30, 255))):
            foot = (centre + size * 0.07 * math.sin(angle + side * 0.8), centre - size * 0.07 * math.cos(angle + side * 0.8))
            draw.polygon([(centre, centre), foot, tip], colour)
    picture.alpha_composite(rose)
    return picture.resize((64, 64), Image.LANCZOS)


def relief():
    """Grey light on slopes: brighter to the north-west."""
    picture = Image.new("L", (WIDTH, HEIGHT))
    for y in range(HEIGHT):
        for x in range(WIDTH):
            slope = math.cos(x / 9 + math.sin(y / 13) * 2) + math.cos(y / 7 - x / 31)
            edge = max(0.0, math.hypot(x / WIDTH - 0.5, y / HEIGHT - 0.5) - 0.25)
            picture.putpixel((x, y), max(0, min(255, int(218 + 18 * slope - 330 * edge))))
    return picture


def run(*command, data=None):
    return subprocess.run(command, input=data, check=True, capture_output=True).stdout


def pnm(picture):
    kind = b"P5" if picture.mode == "L" else b"P6"
    return b"%s\n%d %d\n255\n" % (kind, *picture.size) + picture.tobytes()


def keep(name, writer):
    """Decodes a file by two programs and keeps the pixels, in whose colours they must agree."""
    file = str(HERE / name)
    picture = Image.open(file).convert("RGB")
    samples = run("/usr/bin/convert-im6.q16", file, "-depth", "8", "rgb:-")
    kind, depth = "RGB", 3
    if name.endswith("-32.bmp"):  # of these readers only ffmpeg takes the fourth byte for alpha
        samples = run("ffmpeg", "-i", file, "-f", "rawvideo", "-pix_fmt", "rgba", "-")
        kind, depth = "RGB_ALPHA", 4
    colours = b"".join(samples[i:i + 3] for i in range(0, len(samples), depth))
    if not name.endswith("-16.bmp"):  # Pillow widens five bits another way
        assert colours == picture.tobytes(), name
    header = "P7\nWIDTH %d\nHEIGHT %d\nDEPTH %d\nMAXVAL 255\nTUPLTYPE %s\nENDHDR\n" % (*picture.size, depth, kind)
    (EXPECTED / name.replace(".bmp", ".pam")).write_bytes(header.encode() + samples)
    print(f"{name:20} {writer}")


def main():
    picture = landscape()
    colour = pnm(picture)
    (HERE / "landscape-24.bmp").write_bytes(run("ppmtobmp", "-bpp=24", data=colour))
    keep("landscape-24.bmp", "netpbm")
    for bits, colours in ((8, 200), (4, 16)):
        few = run("pnmquant", str(colours), data=colour)
        (HERE / f"landscape-{bits}.bmp").write_bytes(run("ppmtobmp", f"-bpp={bits}", data=few))
        keep(f"landscape-{bits}.bmp", "netpbm")
    picture.convert("1").save(HERE / "landscape-1.bmp")
    keep("landscape-1.bmp", "Pillow")
    run("ffmpeg", "-y", "-f", "ppm_pipe", "-i", "-", "-pix_fmt", "rgb555le", "-sws_dither", "none",
        str(HERE / "landscape-16.bmp"), data=colour)
    keep("landscape-16.bmp", "ffmpeg")
    compass().save(HERE / "compass-32.bmp")
    keep("compass-32.bmp", "Pillow")
    relief().save(HERE / "relief-8.bmp")
    keep("relief-8.bmp", "Pillow")


main()
