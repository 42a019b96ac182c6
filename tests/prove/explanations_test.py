#!/usr/bin/env python3
"""What is explained to the lines is there: a source that changes takes its explanations along."""

import collections
import os
import sys
import unittest

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path[:0] = [HERE, *(os.path.join(HERE, name) for name in ("lines", "coverage", "mutants"))]

import explained  # noqa: E402
import mutants  # noqa: E402
import slips  # noqa: E402


class Explanations(unittest.TestCase):
    def test_of_coverage_are_of_lines_that_are_there(self):
        entries = collections.Counter(entry for entry, _ in explained.read_own())
        for path in {entry.partition(": ")[0] for entry in entries}:
            with open(os.path.join(ROOT, path), encoding="utf-8") as file:
                entries.subtract(explained.key(path, line) for line in file)
        self.assertEqual([entry for entry, missing in entries.items() if missing > 0], [])

    def test_of_mutants_are_of_slips_that_can_be_made(self):
        same, unseen = mutants.read_explained()
        made = {slip.key for slip in slips.stock(ROOT, of_a_file=None)}
        self.assertEqual([key for key in {**same, **unseen} if key not in made], [])


if __name__ == "__main__":
    unittest.main()
