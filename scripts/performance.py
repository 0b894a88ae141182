#!/usr/bin/env python3
"""Replaces the table of a page, between its two marks, by the medians of benchmark results.

    performance.py PAGE RESULT.json...

A benchmark is named OPERATION/WHO, where WHO is "library", "definition" or the name of another library. The label of
OPERATION/library is the name of the memcpy benchmark to compare with.
"""

import json
import sys

BEGIN, END = "<!-- table -->", "<!-- /table -->"


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


def number(speed):
    if speed is None:
        return ""
    return f"{speed:.0f}" if speed >= 100 else f"{speed:.3g}"


def table(speeds, labels):
    yield "| Operation | Library | Definition | memcpy | Fastest peer | Ratio |"
    yield "|---|--:|--:|--:|--:|--:|"
    for name, speed in speeds.items():
        operation, _, who = name.rpartition("/")
        if who != "library":
            continue
        peers = [(value, other.rpartition("/")[2]) for other, value in speeds.items()
                 if other.rpartition("/")[0] == operation and not other.endswith(("/library", "/definition"))]
        best, peer = max(peers, default=(None, ""))
        cells = [operation, number(speed), number(speeds.get(operation + "/definition")),
                 number(speeds.get(labels[name])), f"{peer} {number(best)}".strip(),
                 f"{speed / best:.2f}" if best else ""]
        yield "| " + " | ".join(cells) + " |"


def main():
    page, *results = sys.argv[1:]
    with open(page, encoding="utf-8") as file:
        text = file.read()
    before, begin, rest = text.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"{page} has no table")
    rows = "\n".join(table(*read(results)))
    with open(page, "w", encoding="utf-8") as file:
        file.write(f"{before}{BEGIN}\n{rows}\n{END}{after}")


main()
