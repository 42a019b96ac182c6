"""A copy of the sources with a build of its own, where slips are made, built and tested."""

import dataclasses
import filecmp
import os
import re
import shutil
import subprocess

import slips

KILLED = "killed"
SURVIVED = "survived"
NO_SLIP = "does not compile"
ANALYSIS = "the analysis of locks"

# Compiles and links quickly. A slip may leave something unused behind.
SETTINGS = ["-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-m32 -w",
            "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld",
            "-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld"]
# Wait for many seconds whatever the product does, or take long and are told by others too.
SLOW = (r"Prove\.|Packaging\.|Fleet\.|ASilentClientIsClosed|ThatStopHalfWay|AClientThatTakesNoReply|"
        r"DoesNotWaitForEverForACommand|NeverLacksWhenTheAgentIsKilled")
LONG = "Agreement"  # tells much, but not soon
NEAR_LIMIT = 120  # seconds; a slip may well wait for ever
ALL_LIMIT = 600
LOCK_CALL = re.compile(r"\.(?:un)?lock\(\);$")
FAILED = re.compile(r"Test +#\d+: (\S+).*\*\*\*(?:Failed|Timeout|Exception|Not Run)")


@dataclasses.dataclass
class Verdict:
    outcome: str
    by: str = ""  # the test that noticed


class Workbench:
    """`run(argv, limit)` runs a command and returns (exit status, output), or (None, output) when it
    had to be ended."""

    def __init__(self, source, place, run):
        self.source = source
        self.tree = os.path.join(place, "tree")
        self.build_directory = os.path.join(place, "build")
        self.run = run

    def refresh(self):
        """Makes the copy like the sources; what has not changed keeps its time."""
        listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others",
                                 "--exclude-standard"], cwd=self.source, check=True,
                                stdout=subprocess.PIPE).stdout.decode().split("\0")
        wanted = {name for name in listed
                  if name and os.path.isfile(os.path.join(self.source, name))}
        for directory, _, names in os.walk(self.tree):
            for name in names:
                path = os.path.join(directory, name)
                if os.path.relpath(path, self.tree) not in wanted:
                    os.remove(path)
        for name in wanted:
            path, copy = os.path.join(self.source, name), os.path.join(self.tree, name)
            if not os.path.exists(copy) or not filecmp.cmp(path, copy, shallow=False):
                os.makedirs(os.path.dirname(copy), exist_ok=True)
                shutil.copy(path, copy)

    def prepare(self):
        """Builds all, and tests it: a test that fails without a slip would find each of them."""
        self.refresh()
        status, output = self.run(["cmake", "-S", self.tree, "-B", self.build_directory, *SETTINGS],
                                  None)
        if status == 0:
            status, output = self.build("all")
        if status != 0:
            raise RuntimeError("the sources do not build:\n" + output[-4000:])
        verdict = self.test("", SLOW, ALL_LIMIT)
        if verdict.outcome != SURVIVED:
            raise RuntimeError("a test fails without a slip: " + verdict.by)

    def build(self, target):
        return self.run(["cmake", "--build", self.build_directory, "--target", target], None)

    def test(self, directory, left_out, limit):
        status, output = self.run(
            ["ctest", "--test-dir", os.path.join(self.build_directory, directory), "-j6",
             "--stop-on-failure", "--timeout", "60", "-E", left_out], limit)
        if status == 0:
            return Verdict(SURVIVED)
        failed = FAILED.search(output)
        by = failed.group(1) if failed else "the limit of time" if status is None else "ctest"
        return Verdict(KILLED, by)

    def breaks_lock_rules(self, slip):
        """Whether the analysis of locks, a part of the lint, notices."""
        if slip.kind != slips.DROPPED_LOCK and not LOCK_CALL.search(slip.before):
            return False
        status, output = self.run(
            ["clang++", "-fsyntax-only", "-x", "c++", "-std=c++20", "-Wno-everything", "-I", self.tree,
             "-Werror=thread-safety", os.path.join(self.tree, slip.path)], None)
        return status != 0 and "-Werror,-Wthread-safety" in output

    def near(self, path):
        """Where the tests of a source are."""
        folder = os.path.dirname(path.removeprefix("lparams/"))
        while folder:
            tests = os.path.join("tests", folder)
            if os.path.exists(os.path.join(self.tree, tests, "CMakeLists.txt")):
                return tests
            folder = os.path.dirname(folder)
        return "tests/module"

    def try_slip(self, slip):
        """Its file is as before afterwards."""
        path = os.path.join(self.tree, slip.path)
        with open(path, encoding="utf-8") as file:
            text = file.read()
        try:
            with open(path, "w", encoding="utf-8") as file:
                file.write(slip.applied(text))
            if self.breaks_lock_rules(slip):
                return Verdict(KILLED, ANALYSIS)
            near = self.near(slip.path)
            # Where its own tests are is known at once; the others are built only if they let it pass.
            for target, directory, left_out, limit in (
                    (near + "/all", near, f"{SLOW}|{LONG}", NEAR_LIMIT),
                    ("all", "", SLOW, ALL_LIMIT)):
                status, _ = self.build(target)
                if status != 0:
                    return Verdict(NO_SLIP)
                verdict = self.test(directory, left_out, limit)
                if verdict.outcome == KILLED:
                    return verdict
            return Verdict(SURVIVED)
        finally:
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
