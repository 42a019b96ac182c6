"""The documented order of the locks, and what of a graph is against it."""

import fnmatch
import os
import re

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))))
DOCUMENT = os.path.join(ROOT, "docs", "locks.md")
ROW = re.compile(r"^\| (\d+) \| ([^|]*) \|", re.M)


def read(path=DOCUMENT):
    """Patterns of names, with the place in the order of each."""
    with open(path, encoding="utf-8") as file:
        rows = ROW.findall(file.read())
    return [(pattern, int(rank)) for rank, names in rows
            for pattern in re.findall(r"`([^`]*)`", names)]


def rank(lock, patterns):
    for pattern, place in patterns:
        if fnmatch.fnmatchcase(lock, pattern):
            return place
    return None


def circles(edges):
    """Locks that can be waited for in a circle."""
    after = {}
    for held, taken in edges:
        after.setdefault(held, set()).add(taken)
    for lock in sorted(after):
        reached, waiting = set(), list(after[lock])
        while waiting:
            one = waiting.pop()
            if one not in reached:
                reached.add(one)
                waiting += after.get(one, ())
        if lock in reached:
            yield lock


def faults(graph, patterns=None):
    patterns = patterns or read()
    wrong = [f"{lock} has no place in the order: {where}"
             for lock, where in sorted(graph.locks.items()) if rank(lock, patterns) is None]
    for (held, taken), (holder, taker) in sorted(graph.edges.items()):
        outer, inner = rank(held, patterns), rank(taken, patterns)
        if outer is not None and inner is not None and outer >= inner:
            wrong.append(f"{taken} is taken while {held} is held: {taker}, under {holder}")
    wrong += [f"{lock} is part of a circle" for lock in circles(graph.edges)]
    return wrong
