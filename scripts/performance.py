#!/usr/bin/env python3
"""Prints the medians of benchmark results as a table.

    performance.py [--write] RESULT.json...

With --write, also replaces the table of docs/performance.md, between its two marks, and draws docs/performance.svg.

A benchmark is named OPERATION/WHO, where WHO is "library", "definition" or the name of another library, with a star if
it does other work. The label of OPERATION/library is the name of the memcpy benchmark to compare with.
"""

import json
import math
import sys

BEGIN, END = "<!-- table -->", "<!-- /table -->"
HEADER = ["Operation", "Library", "Definition", "memcpy", "Fastest peer", "Ratio", "At other work", "Ratio"]


def read(paths):
    """Returns the medians (in millions per second) and the labels by benchmark name, in the order of the programs."""
    speeds, labels = {}, {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            results = json.load(file)["benchmarks"]
            # With random interleaving, the results are listed in the order in which they ended.
            for result in sorted(results, key=lambda result: result["family_index"]):
                name = result["run_name"]
                if result.get("error_occurred"):
                    sys.exit(f"{name}: {result['error_message']}")
                if result.get("aggregate_name") == "median" and "items_per_second" in result:
                    speeds[name] = result["items_per_second"] / 1e6
                    labels[name] = result.get("label", "")
    return speeds, labels


def rows(speeds, labels):
    """Yields per operation its name, the speeds of library, definition and memcpy, and two peers as pairs of speed and
    name: the fastest that does the same work, and the fastest that does other work."""
    for name, speed in speeds.items():
        operation, _, who = name.rpartition("/")
        if who != "library":
            continue
        peers = [(value, other.rpartition("/")[2]) for other, value in speeds.items()
                 if other.rpartition("/")[0] == operation and not other.endswith(("/library", "/definition"))]
        same, other = (max((peer for peer in peers if peer[1].endswith("*") == star), default=None)
                       for star in (False, True))
        yield operation, speed, speeds.get(operation + "/definition"), speeds.get(labels[name]), same, other


def number(speed):
    if speed is None:
        return ""
    return f"{speed:.0f}" if speed >= 100 else f"{speed:.3g}"


def cells(row):
    operation, *speeds, same, other = row
    result = [operation, *map(number, speeds)]
    for peer in (same, other):
        result += [f"{peer[1].rstrip('*')} {number(peer[0])}", f"{speeds[0] / peer[0]:.2f}"] if peer else ["", ""]
    return result


def print_table(table):
    widths = [max(map(len, column)) for column in zip(*table)]
    for row in table:
        print("  ".join(text.rjust(width) if i else text.ljust(width)
                        for i, (text, width) in enumerate(zip(row, widths))))


def write_table(page, table):
    with open(page, encoding="utf-8") as file:
        text = file.read()
    before, begin, rest = text.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"{page} has no table")
    lines = ["| " + " | ".join(row) + " |" for row in table]
    lines.insert(1, "|---|" + "--:|" * (len(HEADER) - 1))
    with open(page, "w", encoding="utf-8") as file:
        file.write("\n".join([before + begin, *lines, end + after]))


STYLE = """
svg { font: 11px sans-serif } .end { text-anchor: end } .middle { text-anchor: middle }
.page { fill: #fff } .memcpy { fill: #e4e4e4 } .library { fill: #1a66c2 } .peer { fill: #d9822b }
.other { fill: none; stroke: #d9822b } .line { stroke: #ccc } text { fill: #222 }
@media (prefers-color-scheme: dark) {
.page { fill: #16191d } .memcpy { fill: #343a42 } .library { fill: #5ea1f0 } .peer { fill: #e5a05c }
.other { stroke: #e5a05c } .line { stroke: #4a4f57 } text { fill: #ddd } }
"""


def write_picture(path, results):
    """Draws the bars of each operation: memcpy, and over it the library and the fastest peer. A peer that does other
    work is drawn only if none does the same."""
    results = [row for row in results if row[3]]  # the operations that have a memcpy are those in pixels
    left, decade, top, step = 270, 125, 56, 16
    width, height = 800, top + step * len(results) + 6

    def place(speed):
        return round(left + decade * math.log10(max(speed, 10) / 10), 1)

    def bar(kind, x, y, right, thick):
        return f'<rect class="{kind}" x="{x}" y="{y}" width="{right - x:.1f}" height="{thick}"/>'

    def text(kind, x, y, words):
        return f'<text class="{kind}" x="{x}" y="{y}">{words}</text>'

    legend = (("library", "library"), ("peer", "fastest peer"), ("other", "peer at other work"), ("memcpy", "memcpy"))
    marks, bars = [], []
    for i, (kind, words) in enumerate(legend):
        marks.append(bar(kind, left + 125 * i, 25, left + 125 * i + 9, 9) + text("", left + 125 * i + 13, 33, words))
    for speed in (10, 30, 100, 300, 1000, 3000, 10000):
        marks.append(f'<path class="line" d="M{place(speed)} {top - 4}V{height - 4}"/>' +
                     text("middle", place(speed), top - 8, speed))
    for i, (operation, library, _, memcpy, same, other) in enumerate(results):
        y = top + step * i
        marks.insert(0, bar("memcpy", left, y, place(memcpy), 14))
        bars += [text("end", left - 6, y + 11, operation), bar("library", left, y + 2, place(library), 5)]
        if peer := same or other:
            bars += [bar("peer" if same else "other", left, y + 8, place(peer[0]), 4),
                     text("", width - 112, y + 11, f"{library / peer[0]:.2f} x {peer[1].rstrip('*')}")]
    caption = "Millions of pixels per second, on a logarithmic scale; the ratio is library : peer"
    with open(path, "w", encoding="utf-8") as file:
        file.write("\n".join([
            f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" viewBox="0 0 {width} {height}">',
            f"<title>{caption}</title><style>{STYLE}</style>", bar("page", 0, 0, width, height),
            text("", 10, 16, caption), *marks, *bars, "</svg>\n"]))


def main():
    write = sys.argv[1] == "--write"
    results = list(rows(*read(sys.argv[2 if write else 1:])))
    table = [HEADER, *map(cells, results)]
    print_table(table)
    if write:
        write_table("docs/performance.md", table)
        write_picture("docs/performance.svg", results)


main()
