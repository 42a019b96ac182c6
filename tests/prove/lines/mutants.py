"""Slips of a programmer, made by a tool, that the tests have to notice."""

import dataclasses
import os
import subprocess
import sys

from line import Control, Line, Outcome

MUTANTS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "mutants")
sys.path.insert(0, MUTANTS)

import slips  # noqa: E402
import workbench  # noqa: E402

SAMPLE = 60
WANTED_SHARE = 0.95


def read_explained():
    """What is known of slips that no test notices: the keys of those that change nothing, and of the
    others, each with the reason."""
    known = {"same": {}, "unseen": {}}
    with open(os.path.join(MUTANTS, "explained.txt"), encoding="utf-8") as file:
        for line in file:
            if line.strip() and not line.startswith("#"):
                key, kind, why = line.strip().split(" ", 2)
                known[kind][key] = why
    return known["same"], known["unseen"]


def make_bench(context):
    def run(command, limit):
        try:
            done = context.run(command, limit)
        except subprocess.TimeoutExpired as late:
            return None, late.output
        return done.returncode, done.stdout

    bench = workbench.Workbench(context.root, context.keep, run)
    context.say("building a copy of the sources to make slips in, and testing it")
    bench.prepare()
    context.begin()
    return bench


class Mutants(Line):
    NAME = "mutants"
    TRIED = "slips in every product file, each built and tested"
    WANTED = f"the tests notice {WANTED_SHARE:.0%} at least; what they do not is explained"
    MINUTES = 50

    def run(self, context):
        bench = make_bench(context)
        same, unseen = read_explained()
        stock = [slip for slip in slips.stock(context.root) if slip.key not in same]
        waiting = slips.sample(stock, len(stock), context.random)
        wanted = len(stock) if context.all else SAMPLE
        killed, survivors, no_slips = 0, [], 0
        while waiting and killed + len(survivors) < wanted:
            if context.left() == 0 and not context.all:
                break
            slip = waiting.pop(0)
            verdict = bench.try_slip(slip)
            if verdict.outcome == workbench.NO_SLIP:
                no_slips += 1
                continue
            if verdict.outcome == workbench.SURVIVED:
                survivors.append(slip)
            else:
                killed += 1
            context.say(f"{killed + len(survivors)} of {wanted}: {slip}: {verdict.outcome} "
                        f"{verdict.by}".rstrip())
        unexplained = [slip for slip in survivors if slip.key not in unseen]
        tried = killed + len(survivors)
        share = killed / tried if tried else 0
        return Outcome(
            tried > 0 and share >= WANTED_SHARE and not unexplained,
            f"{killed} of {tried} noticed ({share:.0%}), of {len(stock)} that there are; "
            f"{len(survivors) - len(unexplained)} of the others explained",
            {"stock": len(stock), "tried": tried, "noticed": killed, "no slips": no_slips,
             "survivors": {slip.key: unseen.get(slip.key, "not explained")
                           for slip in survivors}},
            tuple(f"no test notices {slip}" for slip in unexplained))

    def controls(self, context):
        bench = make_bench(context)
        sync = self.first(bench, "agent/state/durable_file.cc", slips.DROPPED_SYNC)
        lock = self.first(bench, "agent/events/events.cc", slips.DROPPED_LOCK)
        comment = dataclasses.replace(sync, begin=0, end=0, before="", after="//\n")
        return [self.control(bench, *one) for one in (
            ("a comment more survives", comment, workbench.SURVIVED, ""),
            ("a sync that is left out is noticed", sync, workbench.KILLED, ""),
            ("a lock that is left out is noticed without a test", lock, workbench.KILLED,
             workbench.ANALYSIS))]

    @staticmethod
    def first(bench, path, kind):
        with open(os.path.join(bench.tree, path), encoding="utf-8") as file:
            return next(slip for slip in slips.slips_of(path, file.read()) if slip.kind == kind)

    @staticmethod
    def control(bench, name, slip, wanted, by):
        """`by`: who has to notice, if that matters."""
        verdict = bench.try_slip(slip)
        return Control(name, verdict.outcome == wanted and verdict.by.startswith(by),
                       f"{verdict.outcome} {verdict.by}".rstrip())
