"""The order in which locks are taken, over a whole run of the tests."""

import os
import sys

from line import CannotRun, Control, Line, Outcome

LOCKS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "locks")
sys.path.insert(0, LOCKS)

import graph  # noqa: E402
import order  # noqa: E402

PRESET = "asan-32"  # is built without optimisation, so each frame is there
# Not of the agent and the module, or long and of nothing new.
LEFT_OUT = r"Prove\.|Packaging\.|RowMistakes|Agreement"
FLAGS = ["-std=c++20", "-O1", "-fno-omit-frame-pointer", "-shared", "-fPIC"]
# What the loader puts in the place of $LIB, in either width.
WIDTHS = {"lib32": ["-m32"], "lib/i386-linux-gnu": ["-m32"], "lib/x86_64-linux-gnu": []}


def build_recorder(context):
    for place, width in WIDTHS.items():
        folder = os.path.join(context.scratch, place)
        os.makedirs(folder)
        done = context.run(["g++", *FLAGS, *width, "-o", os.path.join(folder, "recorder.so"),
                            os.path.join(LOCKS, "lock_recorder.cc")])
        if done.returncode != 0:
            raise CannotRun(done.stdout)


def record(context, command):
    """Runs a command, and returns the graph of the locks below it and what failed."""
    records = os.path.join(context.scratch, "records")
    os.mkdir(records)
    # Some tests are other users.
    os.chmod(records, 0o1777)
    for folder in (context.scratch, os.path.dirname(context.scratch)):
        os.chmod(folder, 0o711)
    environment = dict(os.environ, LOCK_RECORDS=records,
                       LD_PRELOAD=os.path.join(context.scratch, "$LIB", "recorder.so"),
                       ASAN_OPTIONS="verify_asan_link_order=0")
    done = context.run(command, env=environment, on_line=context.say_some)
    found = graph.Graph()
    found.read(records)
    return found, [] if done.returncode == 0 else [done.stdout[-2000:]]


class Locks(Line):
    NAME = "locks"
    TRIED = "which lock is taken while another one is held, over all tests"
    WANTED = "no circle, no lock and no pair that the documented order does not have"
    MINUTES = 8
    BUILDS = {PRESET: ["all"]}

    def run(self, context):
        build = context.build(PRESET, "all")
        build_recorder(context)
        found, failed = record(
            context, ["ctest", "--test-dir", build, "-j3", "-E", LEFT_OUT])
        wrong = order.faults(found)
        return Outcome(
            not wrong and not failed,
            f"{len(found.locks)} locks, {len(found.edges)} pairs, {len(wrong)} against the order",
            {"locks": sorted(found.locks), "pairs": [" -> ".join(edge) for edge in
                                                     sorted(found.edges)]},
            tuple(wrong + failed))

    def controls(self, context):
        build_recorder(context)
        source = os.path.join(LOCKS, "planted.cc")
        program = os.path.join(context.scratch, "planted")
        done = context.run(["g++", "-m32", "-std=c++20", "-g", "-o", program, source])
        if done.returncode != 0:
            raise CannotRun(done.stdout)
        found, _ = record(context, [program])
        told = order.faults(found, [("Planted: first_", 1), ("Planted: second_", 2)])
        unknown = order.faults(found, [("Planted: first_", 1)])
        return [
            Control("two locks both ways round", len(told) == 3, "; ".join(told)),
            Control("a lock that is not written down",
                    any("Planted: second_ has no place" in one for one in unknown),
                    "; ".join(unknown)),
        ]
