#!/usr/bin/env python3
"""Prints the figures of a benchmark run as tables, and draws cost against users.

Usage: report.py PLOT DIRECTORY...

Each DIRECTORY holds store-WIDTH.json and bridge-WIDTH.json of one run. The ratios are those of every
run, the other figures and the plot those of the last.
"""
import json
import math
import sys
from pathlib import Path

# What the store is to reach with 100 users: subject, against, the limit of the ratio in 64 and in
# 32 bit. "<" bounds subject / against, ">" bounds against / subject. All times come from one run.
RATIOS = [
    ("load/lparams/100", "load/memchr/100", "<", 12, 16),
    ("load/lparams/100", "load/GLib key file/100", ">", 2.0, None),
    ("load/lparams/100", "load/nlohmann-json/100", ">", 2.5, None),
    ("load/lparams/100", "load/libyang/100", ">", 8, None),
    ("load/lparams/100", "load/pugixml/100", "<", 2.2, None),
    ("text/lparams/100", "text/inserters without locks/100", "<", 0.32, 0.32),
    ("check/lparams/100", "text/inserters without locks/100", "<", 0.32, 0.32),
    ("text/lparams/100", "text/GLib key file/100", ">", 3.3, None),
    ("text/lparams/100", "text/pugixml/100", ">", 1.4, None),
    ("save/lparams/100", "save/system calls/100", "<", 1.4, 1.4),
    ("read IKE/lparams/0", "read IKE/locks/0", "<", 1.35, 1.5),
    ("write USERS/lparams/100", "write USERS/assignment/100", "<", 1.5, 1.5),
    ("bridge/p50/lparams", "bridge/p50/echo", "<", 1.5, 1.5),
    ("bridge/p50/lparams", "bridge/p50/D-Bus", ">", 4, None),
    ("load/lparams/10000", "load/lparams/100", "<", 150, 150),
    ("resident per user, written", "strings and parameters per user", "<", 2.0, 2.0),
]
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
COLOURS = ["#0060a8", "#c03000", "#208020", "#806000", "#8030a0", "#606060"]


def read_figures(directory, width):
    """All figures of one width by name; times in nanoseconds."""
    figures = {}
    store = json.loads((directory / f"store-{width}.json").read_text())
    for timing in store["benchmarks"]:
        if timing.get("aggregate_name") == "median":
            name = timing["run_name"].removesuffix("/manual_time")
            figures[name] = timing["real_time"] * NANOSECONDS[timing["time_unit"]]
    for name, value in store["context"].items():
        if name.endswith(" per user") or name.startswith("resident"):
            figures[name] = float(value)
    bridge = json.loads((directory / f"bridge-{width}.json").read_text())
    figures.update({"bridge/" + name: value for name, value in bridge.items()})
    return figures


def readable(name, value):
    if "per user" in name or name.startswith("resident"):
        return f"{value:.0f} B"
    if "requests per second" in name:
        return f"{value:,.0f} /s"
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if value >= size:
            return f"{value / size:.3g} {unit}" if value < 100 * size else f"{value / size:,.0f} {unit}"
    return f"{value:.3g} ns"


def ratio_of(subject, against, sense, figures):
    ratio = figures[subject] / figures[against]
    return ratio if sense == "<" else 1 / ratio


def print_ratios(runs):
    print("| subject | against | bits | subject takes | against takes | ratio | reach | |")
    print("|---|---|---|---|---|---|---|---|")
    for subject, against, sense, *limits in RATIOS:
        for (width, last), limit in zip(runs[-1].items(), limits):
            if limit is None or subject not in last or against not in last:
                continue
            ratios = [ratio_of(subject, against, sense, run[width]) for run in runs]
            met = all(ratio <= limit if sense == "<" else ratio >= limit for ratio in ratios)
            bound = f"at most {limit}" if sense == "<" else f"at least {limit}"
            print(f"| {subject} | {against} | {width} | {readable(subject, last[subject])} "
                  f"| {readable(against, last[against])} "
                  f"| {', '.join(f'{ratio:.2f}' for ratio in ratios)} | {bound} "
                  f"| {'met' if met else '**missed**'} |")


def print_figures(widths):
    print("\n| figure |" + "".join(f" {width} bit |" for width in widths))
    print("|---|" + "---|" * len(widths))
    for name in sorted(set().union(*widths.values())):
        cells = (readable(name, f[name]) if name in f else "" for f in widths.values())
        print(f"| {name} | " + " | ".join(cells) + " |")


def draw(figures, path):
    """Load time against users, both axes logarithmic; no users stand at 1."""
    lines = {}
    for name, value in figures.items():
        operation, _, rest = name.partition("/")
        who, _, users = rest.rpartition("/")
        if operation == "load" and who != "memcpy":
            lines.setdefault(who, []).append((int(users), value / 1e3))
    left, top, width, height, decades = 70, 20, 480, 330, 6

    def x(users):
        return left + width * math.log10(max(users, 1)) / 4

    def y(microseconds):
        return top + height * (1 - math.log10(microseconds) / decades)

    svg = ['<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 720 400" font-size="12" '
           'font-family="sans-serif">', '<rect width="720" height="400" fill="white"/>']
    for decade in range(decades + 1):
        at = y(10 ** decade)
        svg.append(f'<path d="M{left} {at:.0f}h{width}" stroke="#ddd"/>'
                   f'<text x="{left - 8}" y="{at + 4:.0f}" text-anchor="end">{10 ** decade:,}</text>')
    for users in (0, 100, 10000):
        svg.append(f'<text x="{x(users):.0f}" y="{top + height + 18}" text-anchor="middle">'
                   f'{users:,}</text>')
    svg.append(f'<text x="{left + width / 2:.0f}" y="{top + height + 38}" text-anchor="middle">'
               'users</text>')
    svg.append(f'<text transform="translate(16 {top + height / 2:.0f}) rotate(-90)" '
               'text-anchor="middle">load, µs</text>')
    label_at = 0
    for (who, points), colour in zip(sorted(lines.items(), key=lambda line: -max(line[1])[1]),
                                     COLOURS * 2):
        points.sort()
        path_of = " ".join(f"{x(users):.0f},{y(time):.0f}" for users, time in points)
        label_at = max(y(points[-1][1]) + 4, label_at + 14)
        svg.append(f'<polyline points="{path_of}" fill="none" stroke="{colour}" stroke-width="2"/>'
                   f'<text x="{x(points[-1][0]) + 8:.0f}" y="{label_at:.0f}" fill="{colour}">'
                   f'{who}</text>')
    path.write_text("\n".join(svg + ["</svg>"]) + "\n")


def main():
    plot, *directories = map(Path, sys.argv[1:])
    runs = [{width: read_figures(directory, width) for width in (64, 32)}
            for directory in directories]
    print_ratios(runs)
    print_figures(runs[-1])
    draw(runs[-1][64], plot)


main()
