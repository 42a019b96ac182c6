"""Bits of the settings file and of its twin that flip."""

import collections
import os
import shutil
import sys
import threading
from concurrent.futures import ThreadPoolExecutor

import crash_runs
from line import Control, Line, Outcome

FOLDER = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path[:0] = [os.path.join(FOLDER, "rot"), os.path.join(os.path.dirname(FOLDER), "crash")]

import flips  # noqa: E402
from recovery_check import Lost, write_files  # noqa: E402
from scenarios import SETTINGS, SHADOW_COPY, example  # noqa: E402
from starts import Starts, start_really  # noqa: E402

TARGETS = ("lparams_agent", "lparams_server", "rot_starts")
SHORT_BITS, CONTROL_BITS = 400, 400
FLIPS_PER_SECOND = 250
REAL_PART = 100  # one of so many is shown to the agent itself as well


class Session:
    """Flips of one agent's files, as many at once as there are processors."""

    def __init__(self, context, build, environment=None):
        self.context, self.build, self.environment = context, build, environment
        self.local = threading.local()
        self.opened = []
        self.counts = collections.Counter()
        self.lost = []
        state = os.path.join(context.scratch, "intact", "state")
        os.mkdir(os.path.dirname(state), 0o700)
        write_files(state, {SETTINGS: example(context.root, SETTINGS)})
        starts = Starts(build)
        first = starts.start(state)
        self.served, self.files = first.served, first.files
        starts.close()
        shutil.rmtree(os.path.dirname(state))

    def starts(self):
        if not hasattr(self.local, "starts"):
            self.local.starts = Starts(self.build, self.environment)
            self.opened.append(self.local.starts)
        return self.local.starts

    def bits(self, count):
        """Every one of both files; a sample of so many if there are more."""
        every = [(name, bit) for name in (SETTINGS, SHADOW_COPY)
                 for bit in range(len(self.files[name]) * 8)]
        chosen = every if count >= len(every) else self.context.random.sample(every, count)
        return [flips.Flip(self.files, *each) for each in sorted(chosen)]

    def play(self, number, flip):
        directory = os.path.join(self.context.scratch, str(number))
        try:
            kind = flip.play(self.starts(), self.served, directory)
            if number % REAL_PART == 0 and not self.environment:
                flip.compare(self.build, self.starts(), directory)
                self.counts["compared with the agent itself"] += 1
            self.counts[kind] += 1
        except Lost as loss:
            self.lost.append(f"{flip}: {loss}")

    def run(self, count):
        chosen = self.bits(count)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            jobs = [pool.submit(self.play, number, flip) for number, flip in enumerate(chosen)]
            for number, job in enumerate(jobs, 1):
                job.result()
                self.context.say_some(f"{number} of {len(chosen)} bits")
        for starts in self.opened:
            starts.close()
        return self


class Rot(Line):
    NAME = "rot"
    TRIED = "each bit of the settings file and of its twin is flipped, one at a time"
    WANTED = "healed from the twin, or visible as an edit; 0 silently wrong"
    MINUTES = 4
    BUILDS = {"release-32": TARGETS}
    SHORT = True

    def run(self, context):
        count = SHORT_BITS if context.short else int(context.seconds * FLIPS_PER_SECOND)
        session = Session(context, context.build("release-32", *TARGETS)).run(count)
        counts = session.counts
        words = ", ".join(f"{counts[kind]} {kind}" for kind in flips.CLASSES)
        met = not session.lost and all(counts[kind] for kind in (flips.HEALED, flips.REWRITTEN))
        return Outcome(met, f"{sum(counts[kind] for kind in flips.CLASSES)} flipped bits: {words}: "
                       f"{len(session.lost)} silently wrong or lost", dict(counts),
                       tuple(f"{loss} (seed {context.seed})" for loss in session.lost[:20]))

    def controls(self, context):
        build = context.build("release-32", *TARGETS, "slips")
        return [self.control(context, build, *fault) for fault in (
            ("no-copies", "what is found is not kept", "is gone"),
            ("no-twin", "the twin is not written anew", SHADOW_COPY))]

    def control(self, context, build, slip, name, word):
        slips = {"LD_PRELOAD": os.path.join(build, crash_runs.SLIPS), "SLIP": slip}
        lost = [loss for loss in Session(context, build, slips).run(CONTROL_BITS).lost
                if word in loss]
        return Control(name, bool(lost), f"{len(lost)} noticed, such as {lost[0][:120]!r}" if lost
                       else "nothing was noticed")
