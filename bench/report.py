#!/usr/bin/env python3
"""Prints the figures of a benchmark run as tables, and draws cost against users.

Usage: report.py PLOT DIRECTORY...

Each DIRECTORY holds store-WIDTH.json, bridge-WIDTH.json and client-WIDTH.json of one run. The ratios are those of every
run, the other figures and the plot those of the last. Times are medians of the rounds in which the
processor was quiet. "Disturbed" is the share of the others, of the subject or of what it is measured
against: the larger one.
"""
import json
import math
import re
import statistics
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
    ("client/get", "client/one line", "<", 2.0, 2.0),
    ("client/list", "client/bytes over the bridge", "<", 3.0, 3.0),
    ("load/lparams/10000", "load/lparams/100", "<", 150, 150),
    ("resident per user, written", "strings and parameters per user", "<", 2.0, 2.0),
]
WIDTHS = (64, 32)
QUIET_ROUNDS = 5  # as many make a median
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
COLOURS = ["#0060a8", "#c03000", "#208020", "#806000", "#8030a0", "#606060"]


def read_timings(store):
    """By subject the timings of all rounds: pairs of the nanoseconds and whether it was quiet."""
    timings = {}
    for timing in store["benchmarks"]:
        if timing["run_type"] == "iteration":
            name = re.sub("/iterations:.*", "", timing["run_name"])
            time = timing["real_time"] * NANOSECONDS[timing["time_unit"]]
            timings.setdefault(name, []).append((time, timing["quiet"] == 1))
    return timings


def enough_quiet(timings):
    return sum(was_quiet for _, was_quiet in timings) >= QUIET_ROUNDS


def median_of(timings, quiet):
    """The median of the rounds in which the processor was quiet, or of all."""
    return statistics.median(time for time, was_quiet in timings if was_quiet or not quiet)


class Run:
    """One run in one width: figures by name, times in nanoseconds, and the rounds behind them."""

    def __init__(self, directory, width):
        store = json.loads((directory / f"store-{width}.json").read_text())
        self.timings = read_timings(store)
        self.figures = {name: median_of(of_subject, enough_quiet(of_subject))
                        for name, of_subject in self.timings.items()}
        for name, value in store["context"].items():
            if name.endswith(" per user") or name.startswith("resident"):
                self.figures[name] = float(value)
        bridge = json.loads((directory / f"bridge-{width}.json").read_text())
        self.figures.update({"bridge/" + name: value for name, value in bridge.items()})
        client = json.loads((directory / f"client-{width}.json").read_text())
        self.figures.update({"client/" + name: value for name, value in client.items()})

    def pair(self, *names):
        """Two figures to compare: from quiet rounds, or if one has next to none, both from all."""
        if not all(name in self.timings for name in names):
            return [self.figures[name] for name in names]
        quiet = all(enough_quiet(self.timings[name]) for name in names)
        return [median_of(self.timings[name], quiet) for name in names]

    def disturbed(self, *names):
        """The share of the rounds in which a neighbour disturbed them, of the one that had more."""
        return max((sum(not was_quiet for _, was_quiet in self.timings[name])
                    / len(self.timings[name]) for name in names if name in self.timings), default=0)


def readable(name, value):
    if "per user" in name or name.startswith("resident"):
        return f"{value:.0f} B"
    if "requests per second" in name:
        return f"{value:,.0f} /s"
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if value >= size:
            return f"{value / size:.3g} {unit}" if value < 100 * size else f"{value / size:,.0f} {unit}"
    return f"{value:.3g} ns"


def print_ratios(runs):
    print("| subject | against | bits | subject takes | against takes | ratio | reach | | disturbed |")
    print("|---|---|---|---|---|---|---|---|---|")
    for subject, against, sense, *limits in RATIOS:
        for width, limit in zip(WIDTHS, limits):
            last = runs[-1][width].figures
            if limit is None or subject not in last or against not in last:
                continue
            pairs = [run[width].pair(subject, against) for run in runs]
            ratios = [one / other if sense == "<" else other / one for one, other in pairs]
            met = all(ratio <= limit if sense == "<" else ratio >= limit for ratio in ratios)
            bound = f"at most {limit}" if sense == "<" else f"at least {limit}"
            shares = [run[width].disturbed(subject, against) for run in runs]
            print(f"| {subject} | {against} | {width} | {readable(subject, pairs[-1][0])} "
                  f"| {readable(against, pairs[-1][1])} "
                  f"| {', '.join(f'{ratio:.2f}' for ratio in ratios)} | {bound} "
                  f"| {'met' if met else '**missed**'} "
                  f"| {', '.join(f'{share:.0%}' for share in shares) if any(shares) else ''} |")


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
    runs = [{width: Run(directory, width) for width in WIDTHS} for directory in directories]
    print_ratios(runs)
    print_figures({width: run.figures for width, run in runs[-1].items()})
    draw(runs[-1][64].figures, plot)


main()
