"""Lines that the tests do not run, and why. They are known by their file and their text, so that
other lines can come and go; as many of the same text as there are entries are explained."""

import collections
import os

FILE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "explained.txt")
BY_CHANCE = "By chance: "  # begins the reason of a line that some runs do reach
COMPILED = "Only the compiler runs it"  # begins that of a line which is not counted
PUNCTUATION = set("{}()[];,: ")  # goes with the line before


def key(path, text):
    return f"{path}: {text.strip()}"


def read(text):
    """Entry to reason: entries begin lines, and the reason of those before follows indented."""
    found, waiting, reason = [], [], []

    def finish():
        if bool(waiting) != bool(reason):
            raise ValueError(f"neither lines without a reason nor the reverse: {waiting + reason}")
        found.extend((entry, " ".join(reason)) for entry in waiting)
        waiting.clear()
        reason.clear()

    for line in text.splitlines():
        if not line.strip() or line.startswith("#"):
            continue
        if line.startswith(" "):
            reason.append(line.strip())
            continue
        if reason:
            finish()
        waiting.append(line.strip())
    finish()
    return found


def read_own():
    with open(FILE, encoding="utf-8") as file:
        return read(file.read())


def compare(uncovered, entries):
    """`uncovered`: (path, number, text) of each line. Returns what is wrong, in words, and how many
    lines are explained."""
    left = collections.Counter(entry for entry, _ in entries)
    wrong, explained = [], 0
    for path, number, text in uncovered:
        if left[key(path, text)] > 0:
            left[key(path, text)] -= 1
            explained += 1
        else:
            wrong.append(f"{path}:{number}: never run: {text.strip()}")
    for entry, reason in dict(entries).items():
        if left[entry] > 0 and not reason.startswith((BY_CHANCE, COMPILED)):
            wrong.append(f"explained.txt: does run, or is not there any more: {entry}")
    return wrong, explained
