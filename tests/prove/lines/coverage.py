"""Which lines of the product the tests run, also in processes that are killed."""

import collections
import os
import shutil
import signal
import sys

from line import CannotRun, Control, Line, Outcome

COVERAGE = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "coverage")
sys.path.insert(0, COVERAGE)

import counts  # noqa: E402
import explained  # noqa: E402

PRESET = "coverage"
FOLDERS = ("lparams", "bridge", "agent", "client", "editing", "inspection", "documents", "checking",
           "markup", "schema", "text", "platform")
WHOLE = "lparams"  # all lines of it
REST = 0.97  # of the lines of all others together
# Break the product on purpose, or take long and reach nothing more; AnyAllocation fails those of
# the counting, too.
LEFT_OUT = r"Prove\.|Packaging\.|RowMistakes|Agreement|StartUpFailure.AnyAllocation"


def code_lines(path):
    """The text of each line of a file, by its number."""
    with open(path, encoding="utf-8") as file:
        return dict(enumerate(file.read().splitlines(), 1))


def product_sources(root, found, entries=()):
    """Those of the product, by their path from the root; lines that only close a block are none, nor
    are those that only a compiler runs."""
    compiled = {entry for entry, reason in entries if reason.startswith(explained.COMPILED)}
    sources = {}
    for path, source in found.items():
        path = os.path.relpath(path, root)
        if path.split("/")[0] in FOLDERS:
            texts = code_lines(os.path.join(root, path))
            sources[path] = source._replace(lines={
                number: count for number, count in source.lines.items()
                if not set(texts[number]) <= explained.PUNCTUATION
                and (count or explained.key(path, texts[number]) not in compiled)})
    return sources


def uncovered_lines(root, sources):
    """(path, number, text) of what never ran."""
    for path in sorted(sources):
        texts = code_lines(os.path.join(root, path))
        for number in sources[path].uncovered:
            yield path, number, texts[number]


def by_folder(sources):
    """Folder to [lines run, lines, branches taken, branches]."""
    found = {name: [0, 0, 0, 0] for name in FOLDERS}
    for path, source in sources.items():
        sums = found[path.split("/")[0]]
        ran = sum(count > 0 for count in source.lines.values())
        for place, number in enumerate((ran, len(source.lines), source.taken, source.branches)):
            sums[place] += number
    return {name: sums for name, sums in found.items() if sums[1]}


def percent(part, whole):
    """Rounded down: 100 only if nothing is missing."""
    return f"{part * 1000 // whole / 10 if whole else 100:.1f} %"


class Coverage(Line):
    NAME = "coverage"
    TRIED = "lines and branches that the tests run, also in processes that are killed"
    WANTED = f"every line of {WHOLE}, {REST:.0%} of the rest, and a reason for each that is missing"
    MINUTES = 6
    BUILDS = {PRESET: ["all"]}

    def run(self, context):
        build = context.build(PRESET, "all")
        folder = os.path.join(build, "counts")  # as the programs know by themselves
        shutil.rmtree(folder, ignore_errors=True)
        os.mkdir(folder)
        # Some tests are other users; see umask as well.
        os.chmod(folder, 0o777)
        for above in (context.scratch, os.path.dirname(context.scratch)):
            os.chmod(above, 0o711)
        done = context.run(["ctest", "--test-dir", build, "-j3", "-E", LEFT_OUT, "--timeout", "600"],
                           on_line=context.say_some, umask=0)
        failed = [] if done.returncode == 0 else [done.stdout[-2000:]]
        entries = explained.read_own()
        sources = product_sources(
            context.root, counts.read(context, folder, counts.programs(build)), entries)
        wrong, reasons = explained.compare(uncovered_lines(context.root, sources), entries)
        return self.outcome(by_folder(sources), reasons, wrong + failed)

    @staticmethod
    def outcome(folders, reasons, wrong):
        rest = collections.Counter()
        for name, sums in folders.items():
            if name != WHOLE:
                rest.update(dict(enumerate(sums)))
        whole = folders[WHOLE]
        met = whole[0] == whole[1] and rest[0] >= REST * rest[1] and not wrong
        return Outcome(
            met,
            f"lines: {WHOLE} {percent(*whole[:2])}, the rest {percent(rest[0], rest[1])}; "
            f"branches: {percent(*whole[2:])} and {percent(rest[2], rest[3])}; "
            f"{reasons} lines explained, {len(wrong)} finds",
            {name: f"lines {ran} of {lines} ({percent(ran, lines)}), "
                   f"branches {taken} of {branches} ({percent(taken, branches)})"
             for name, (ran, lines, taken, branches) in folders.items()},
            tuple(wrong))

    def controls(self, context):
        return [*self.killed_program(context), self.tests_left_out(context)]

    @staticmethod
    def killed_program(context):
        source = os.path.join(COVERAGE, "planted.cc")
        program = os.path.join(context.scratch, "planted")
        done = context.run(["clang++", *counts.FLAGS, "-o", program, source])
        if done.returncode != 0:
            raise CannotRun(done.stdout)
        folder = os.path.join(context.scratch, "planted-counts")
        done = context.run([program], env=dict(
            os.environ, LLVM_PROFILE_FILE=os.path.join(folder, counts.COUNTS)))
        found = counts.read(context, folder, [program])[source]
        texts = code_lines(source)
        ran = [texts[number] for number, count in found.lines.items() if count]
        never = {"planted.cc": found}
        wrong, _ = explained.compare(uncovered_lines(COVERAGE, never), [])
        again, _ = explained.compare(
            uncovered_lines(COVERAGE, never),
            [(explained.key("planted.cc", text), "a reason") for text in
             ("int tripled(int value) {", "return 3 * value;  // never run", "}", "gone")])
        return [
            Control("what ran before a SIGKILL counts, what never ran does not",
                    done.returncode == -signal.SIGKILL
                    and any("2 * value" in text for text in ran)
                    and any("never run" in one for one in wrong), "; ".join(wrong)),
            Control("an explained line that is not there",
                    len(again) == 1 and "gone" in again[0], "; ".join(again))]

    @staticmethod
    def tests_left_out(context):
        program = os.path.join(context.build(PRESET, "text_test"), "tests", "text", "text_test")
        folder = os.path.join(context.scratch, "some-counts")
        context.run([program, "--gtest_filter=-Hash*"], env=dict(
            os.environ, LLVM_PROFILE_FILE=os.path.join(folder, counts.COUNTS)))
        sources = product_sources(context.root, counts.read(context, folder, [program]))
        wrong, _ = explained.compare(uncovered_lines(context.root, sources), [])
        missed = [one for one in wrong if one.startswith("text/hash")]
        return Control("tests that are left out", bool(missed), "; ".join(missed[:2]))
