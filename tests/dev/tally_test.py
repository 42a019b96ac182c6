"""Reports as ctest writes them, and what they are counted as."""

import io
import os
import sys
import tempfile
import unittest
from contextlib import redirect_stdout

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../dev.d"))

import tally  # noqa: E402

PASSED = '<testcase name="A.Passes" status="run"><system-out>fine</system-out></testcase>'
FAILED = ('<testcase name="A.Fails" status="fail"><failure message=""/>'
          "<system-out>expected 1</system-out></testcase>")
ALSO_FAILED = FAILED.replace("A.Fails", "By/B.Fails/Mount")
NOW_PASSED = PASSED.replace("A.Passes", "A.Fails")
RACE = FAILED.replace("expected 1", "WARNING: ThreadSanitizer: data race (pid=1)")
SKIPPED = ('<testcase name="A.Skips" status="notrun">'
           '<skipped message="SKIP_REGULAR_EXPRESSION_MATCHED"/>'
           "<system-out>[ RUN      ] A.Skips\na.cc:1: Skipped\nno right to it\n\n"
           "[  SKIPPED ] A.Skips (0 ms)\n</system-out></testcase>")
SKIPPED_BY_STATUS = ('<testcase name="B" status="notrun"><skipped message="SKIP_RETURN_CODE=77"/>'
                     "<system-out>looking\nno tracing here\n</system-out></testcase>")
NOT_RUN = ('<testcase name="A.Absent" status="notrun"><skipped message="Unable to find executable"/>'
           "</testcase>")
DISABLED = ('<testcase name="A.Off" status="disabled"><skipped message="Disabled"/></testcase>')


class TallyTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = directory.name

    def report(self, *cases):
        path = os.path.join(self.directory, f"{len(os.listdir(self.directory))}.xml")
        with open(path, "w", encoding="utf-8") as file:
            file.write("<testsuite>" + "".join(cases) + "</testsuite>")
        return path

    def lines(self, *rows):
        return list(tally.tally(rows).lines())

    def test_outcomes(self):
        rows = [
            ([PASSED, PASSED], "0", ["2 passed, 0 failed, 0 skipped"]),
            ([PASSED, FAILED], "8", ["failed: p A.Fails", "1 passed, 1 failed, 0 skipped"]),
            ([SKIPPED, SKIPPED], "0",
             ["2 skipped: no right to it", "0 passed, 0 failed, 2 skipped"]),
            ([SKIPPED_BY_STATUS], "0",
             ["1 skipped: no tracing here", "0 passed, 0 failed, 1 skipped"]),
            ([NOT_RUN], "8", ["failed: p A.Absent did not run: Unable to find executable",
                              "0 passed, 1 failed, 0 skipped"]),
            ([DISABLED], "0",
             ["failed: p A.Off did not run: Disabled", "0 passed, 1 failed, 0 skipped"]),
            ([], "8", ["failed: p: ctest ended with 8", "0 passed, 1 failed, 0 skipped"]),
            ([PASSED], "1", ["failed: p: ctest ended with 1", "1 passed, 1 failed, 0 skipped"]),
        ]
        for cases, status, expected in rows:
            with self.subTest(expected[0]):
                row = ("report", "p", self.report(*cases), status)
                self.assertEqual(self.lines(row), expected)

    def test_reports_that_are_missing_or_cut_short_are_failures(self):
        path = self.report(PASSED)
        with open(path, "w", encoding="utf-8") as file:
            file.write("<testsuite><testcase")
        for report, status in ((path, "143"), ("absent.xml", "8"), ("absent.xml", "0")):
            self.assertEqual(
                self.lines(("report", "p", report, status)),
                [f"failed: p: ctest ended with {status}", "0 passed, 1 failed, 0 skipped"])

    def test_other_steps(self):
        self.assertEqual(
            self.lines(("passed", "lint a"), ("failed", "lint b"), ("skipped", "tsan", "no way")),
            ["1 skipped: tsan: no way", "failed: lint b", "1 passed, 1 failed, 1 skipped"])

    def test_a_note_is_shown_and_counts_as_nothing(self):
        self.assertEqual(self.lines(("passed", "lint a"), ("note", "no mounts here")),
                         ["no mounts here", "1 passed, 0 failed, 0 skipped"])

    def test_what_passes_when_run_again_is_counted_and_named(self):
        rows = [("report", "p", self.report(PASSED, FAILED, ALSO_FAILED), "8"),
                ("report", "q", self.report(FAILED), "8"),
                ("again", "p", self.report(NOW_PASSED, ALSO_FAILED))]
        self.assertEqual(self.lines(*rows),
                         ["failed: p By/B.Fails/Mount", "failed: q A.Fails",
                          "1 passed only when run again: p A.Fails",
                          "2 passed, 2 failed, 0 skipped"])

    def again(self, *cases):
        output = io.StringIO()
        with redirect_stdout(output):
            status = tally.show_again(self.report(*cases))
        return status, output.getvalue()

    def test_what_is_run_again(self):
        self.assertEqual(self.again(PASSED, FAILED, ALSO_FAILED),
                         (0, "^(A[.]Fails|By/B[.]Fails/Mount)$\n"))
        self.assertEqual(self.again(PASSED, SKIPPED), (1, ""))
        self.assertEqual(self.again(RACE), (1, ""))
        self.assertEqual(self.again(*[FAILED] * (tally.AGAIN + 1)), (1, ""))

    def test_a_run_that_counts_nothing_has_failed(self):
        path = os.path.join(self.directory, "results")
        for text, status in (("", 1), ("skipped\tp\tr\n", 1), ("passed\ta\n", 0),
                             ("passed\ta\nfailed\tb\n", 1)):
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
            with redirect_stdout(io.StringIO()):
                self.assertEqual(tally.summary(path), status)


if __name__ == "__main__":
    unittest.main()
