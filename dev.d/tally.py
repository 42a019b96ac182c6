#!/usr/bin/env python3
"""Counts what the linters and the tests have come to.

Usage: tally.py failures PRESET REPORT  what the failed tests of a report have said
       tally.py again REPORT            a regular expression of those to be run again; status 1 if
                                        there are none
       tally.py summary RESULTS         what is not plain success, a line each, and the counts;
                                        status 1 if something failed

REPORT is what ctest writes with --output-junit. The lines of RESULTS, fields between tabs:
       passed WHAT, failed WHAT, skipped WHAT REASON, note WORDS
       report PRESET REPORT STATUS      STATUS is ctest's
       again PRESET REPORT              of those that were run again"""

import collections
import os
import re
import sys
import xml.etree.ElementTree as ElementTree

SHOWN = 10  # failed tests of a preset whose output is shown
AGAIN = 10  # failed tests of a preset that are run again; more are no accident
LINES = 60  # of the output of a failed test

Case = collections.namedtuple("Case", "name outcome reason output")


def skip_reason(output):
    """What GTEST_SKIP() was told, or the last line of another program."""
    found = re.search(r": Skipped\n(.+)", output)
    lines = output.strip().splitlines()
    return found[1].strip() if found else lines[-1] if lines else "without a word"


def read_case(element):
    output = element.findtext("system-out") or ""
    skipped = element.find("skipped")
    if skipped is not None:
        message = skipped.get("message") or ""
        if message.startswith("SKIP_"):
            return Case(element.get("name"), "skipped", skip_reason(output), output)
        return Case(element.get("name"), "failed", "did not run: " + message, output)
    if element.get("status") == "run" and element.find("failure") is None:
        return Case(element.get("name"), "passed", "", output)
    return Case(element.get("name"), "failed", "", output)


def read_report(path):
    """The cases of a report; none if there is no report, or half of one."""
    try:
        return [read_case(case) for case in ElementTree.parse(path).iter("testcase")]
    except (OSError, ElementTree.ParseError):
        return []


def failed_cases(path):
    return [case for case in read_report(path) if case.outcome == "failed"]


def is_finding(case):
    """What a sanitizer has found stays found, also if it is not found a second time."""
    return re.search(r"Sanitizer: |: runtime error: ", case.output) is not None


def show_failures(preset, path):
    failed = failed_cases(path)
    for case in failed[:SHOWN]:
        print(f"-- {preset}: {case.name} failed {case.reason}".rstrip())
        print("\n".join(case.output.splitlines()[-LINES:]))
    if len(failed) > SHOWN:
        print(f"-- {preset}: {len(failed) - SHOWN} more failed")


def show_again(path):
    failed = [case for case in failed_cases(path) if not is_finding(case)]
    if not 0 < len(failed) <= AGAIN:
        return 1
    print("^(" + "|".join(re.sub(r"([^\w/ -])", r"[\1]", case.name) for case in failed) + ")$")
    return 0


class Tally:
    def __init__(self):
        self.passed = 0
        self.failed = []
        self.skipped = collections.Counter()
        self.again = []
        self.notes = []

    def add_report(self, preset, path, status, passed_again):
        failed = 0
        cases = read_report(path)
        for case in cases:
            name = f"{preset} {case.name}"
            if case.outcome == "passed":
                self.passed += 1
            elif case.outcome == "skipped":
                self.skipped[case.reason] += 1
            elif name in passed_again:
                self.passed += 1
                self.again.append(name)
                failed += 1
            else:
                self.failed.append(f"{name} {case.reason}".rstrip())
                failed += 1
        if not cases or (status != "0" and failed == 0):
            self.failed.append(f"{preset}: ctest ended with {status}")

    def lines(self):
        yield from self.notes
        for reason, number in self.skipped.items():
            yield f"{number} skipped: {reason}"
        for name in self.failed:
            yield f"failed: {name}"
        if self.again:
            yield f"{len(self.again)} passed only when run again: {', '.join(self.again)}"
        skipped = sum(self.skipped.values())
        yield f"{self.passed} passed, {len(self.failed)} failed, {skipped} skipped"


def tally(rows):
    counts = Tally()
    passed_again = set()
    for kind, *fields in rows:
        if kind == "again":
            cases = read_report(fields[1])
            passed_again |= {f"{fields[0]} {case.name}" for case in cases
                             if case.outcome == "passed"}
    for kind, *fields in rows:
        if kind == "passed":
            counts.passed += 1
        elif kind == "failed":
            counts.failed.append(fields[0])
        elif kind == "skipped":
            counts.skipped[f"{fields[0]}: {fields[1]}"] += 1
        elif kind == "note":
            counts.notes.append(fields[0])
        elif kind == "report":
            counts.add_report(*fields, passed_again)
    return counts


def summary(path):
    with open(path, encoding="utf-8") as file:
        counts = tally([line.rstrip("\n").split("\t") for line in file])
    print("\n".join(counts.lines()))
    return 1 if counts.failed or not counts.passed else 0


def main(arguments):
    match arguments:
        case ["failures", preset, report]:
            return show_failures(preset, report)
        case ["again", report]:
            return show_again(report)
        case ["summary", results] if os.path.exists(results):
            return summary(results)
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
