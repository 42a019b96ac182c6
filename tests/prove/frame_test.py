#!/usr/bin/env python3
"""Tries the frame of the proof with lines of its own."""

import json
import os
import signal
import subprocess
import sys
import tempfile
import textwrap
import time
import unittest

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import processes  # noqa: E402

DEADLINE = 60  # seconds; only to end a hung run
HEAD = "import os, subprocess, sys, time\nfrom line import CannotRun, Control, Line, Outcome\n"
GOOD = """
class Good(Line):
    NAME, TRIED, WANTED, SHORT = "good", "nothing", "nothing", True
    def run(self, context):
        return Outcome(True, f"{context.seconds:.0f} seconds, {context.random.random()}")
    def controls(self, context):
        return [Control("first", True, "seen"), Control("second", True, "seen")]
"""
BAD = """
class Bad(Line):
    NAME, TRIED, WANTED, MINUTES = "bad", "nothing", "nothing", 3
    def run(self, context):
        return Outcome(False, "2 lost", {"lost": 2}, ("this one", "that one"))
    def controls(self, context):
        return [Control("first", True, "seen"), Control("second", False, "nobody noticed")]
"""
RAISES = """
class Raises(Line):
    NAME, TRIED, WANTED = "raises", "nothing", "nothing"
    def run(self, context):
        raise RuntimeError("fell over")
"""
DIES = """
class Dies(Line):
    NAME, TRIED, WANTED = "dies", "nothing", "nothing"
    def run(self, context):
        os.kill(os.getpid(), 9)
"""
CANNOT = """
class Cannot(Line):
    NAME, TRIED, WANTED, SHORT = "cannot", "nothing", "nothing", True
    def run(self, context):
        raise CannotRun("no disks here")
"""
# Leaves processes of other sessions and groups, and files; MARK is the name of one of the processes.
LITTERS = """
class Litters(Line):
    NAME, TRIED, WANTED = "litters", "nothing", "nothing"
    def run(self, context):
        with open(os.path.join(context.scratch, "file"), "w") as file:
            file.write("x")
        subprocess.Popen(["setsid", "sh", "-c", "(setsid sleep MARK) & setsid sleep MARK & sleep MARK"])
        subprocess.Popen(["sleep", "MARK"], process_group=0)
        while len([p for p in os.listdir("/proc") if p.isdigit() and named(p)]) < 4:
            time.sleep(0.01)
        print("littered", context.scratch, flush=True)
        END
def named(process):
    try:
        with open(f"/proc/{process}/cmdline", "rb") as file:
            return file.read().split(bytes(1))[:2] == [b"sleep", b"MARK"]
    except OSError:
        return False
"""


def sleepers(mark):
    found = []
    for process in processes.parents():
        try:
            with open(f"/proc/{process}/cmdline", "rb") as file:
                if file.read().split(bytes(1))[:2] == [b"sleep", mark.encode()]:
                    found.append(process)
        except OSError:
            pass
    return found


class Frame(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="frame-")
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.json = os.path.join(self.folder, "results.json")
        self.mark = f"{1000000 + os.getpid()}"

    def command(self, *lines, options=()):
        folder = os.path.join(self.folder, "lines")
        os.makedirs(folder, exist_ok=True)
        for number, line in enumerate(lines):
            with open(os.path.join(folder, f"line_{number}.py"), "w", encoding="utf-8") as file:
                file.write(HEAD + textwrap.dedent(line))
        return [os.path.join(HERE, "run"), "--lines", folder, "--json", self.json, *options]

    def run_lines(self, *lines, options=()):
        return subprocess.run(self.command(*lines, options=options), text=True, timeout=DEADLINE,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)

    def results(self):
        with open(self.json, encoding="utf-8") as file:
            return json.load(file)["lines"]

    def test_all_met(self):
        done = self.run_lines(GOOD)
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertIn("| good | met", done.stdout)
        self.assertEqual(self.results()["good"]["state"], "met")

    def test_a_line_is_not_met(self):
        done = self.run_lines(GOOD, BAD)
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertRegex(done.stdout, r"\| bad +\| not met +\|.*\| 2 lost \|")
        self.assertIn("bad found: that one", done.stdout)
        self.assertEqual(self.results()["bad"]["figures"], {"lost": 2})

    def test_a_line_that_breaks_is_not_met(self):
        for line, words in ((RAISES, "RuntimeError: fell over"), (DIES, "ended without a result")):
            done = self.run_lines(line)
            self.assertEqual(done.returncode, 1, done.stdout)
            self.assertIn(words, done.stdout)

    def test_no_line_is_not_met(self):
        self.assertEqual(self.run_lines().returncode, 1)

    def test_controls(self):
        done = self.run_lines(GOOD, options=["--controls"])
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertRegex(done.stdout, r"\| good \| found +\|.*\| second: seen \|")
        done = self.run_lines(GOOD, BAD, options=["--controls"])
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertRegex(done.stdout, r"\| bad +\| not found +\|.*\| second: nobody noticed \|")

    def test_the_minutes_are_shared(self):
        done = self.run_lines(GOOD, BAD, options=["--minutes", "2"])
        self.assertIn("bad 1.5", done.stdout)
        self.assertTrue(self.results()["good"]["result"].startswith("30 seconds"))

    def test_a_seed_repeats_the_choices(self):
        made = []
        for seed in ("7", "7", "8"):
            self.run_lines(GOOD, options=["--seed", seed])
            made.append(self.results()["good"]["result"])
        self.assertEqual(made[0], made[1])
        self.assertNotEqual(made[0], made[2])

    def test_only_some(self):
        done = self.run_lines(GOOD, BAD, options=["--only", "good"])
        self.assertEqual(done.returncode, 0, done.stdout)
        done = self.run_lines(GOOD, options=["--only", "goood"])
        self.assertEqual(done.returncode, 1)
        self.assertIn("there is no line goood; there are bad, good", done.stdout)

    def test_the_short_form(self):
        done = self.run_lines(GOOD, BAD, options=["--short", self.folder])
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertNotIn("bad", done.stdout)
        done = self.run_lines(CANNOT, options=["--short", self.folder])
        self.assertEqual(done.returncode, 77, done.stdout)
        self.assertIn("no disks here", done.stdout)
        self.assertEqual(self.run_lines(CANNOT).returncode, 1)

    def test_nothing_is_left_behind(self):
        line = LITTERS.replace("MARK", self.mark).replace("END", 'return Outcome(True, "done")')
        done = self.run_lines(line)
        self.assertEqual(done.returncode, 0, done.stdout)
        scratch = done.stdout.split("littered ")[1].split()[0]
        self.assertFalse(os.path.exists(os.path.dirname(scratch)))
        self.assertEqual(sleepers(self.mark), [])

    def test_nothing_is_left_behind_when_it_is_interrupted(self):
        line = LITTERS.replace("MARK", self.mark).replace("END", "time.sleep(MARK)".replace(
            "MARK", self.mark))
        for end in (signal.SIGINT, signal.SIGTERM):
            with subprocess.Popen(self.command(GOOD, line), text=True, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT) as process:
                scratch = ""
                for said in process.stdout:
                    if said.startswith("littered "):
                        scratch = said.split()[1]
                        break
                process.send_signal(end)
                rest = process.stdout.read()
            self.assertEqual(process.returncode, 130, rest)
            self.assertIn("| good | met", rest)
            self.assertNotIn("Traceback", rest)
            self.assertNotEqual(scratch, "")
            self.assertFalse(os.path.exists(os.path.dirname(scratch)))
            self.assertEqual(sleepers(self.mark), [])


if __name__ == "__main__":
    unittest.main()
