"""What all trials share: an agent whose allocations fail in turn, and what was found."""

import os
import shutil
import time

from agent_process import Agent
from scarce_memory import Memory
from scenarios import SETTINGS, example

ENOUGH = 20
FEW = 2  # allocations of each kind


class Trials:
    def __init__(self, build, context, preload="", environment=None):
        """`preload`, `environment`: more of the agent's, for the controls."""
        self.build, self.context = build, context
        self.directory = os.path.join(context.scratch, "memory")
        self.state, self.run = (os.path.join(self.directory, part) for part in ("state", "run"))
        shutil.rmtree(self.directory, ignore_errors=True)
        os.makedirs(self.run, 0o700)
        self.settings = example(context.root, SETTINGS)
        self.renew()
        self.memory = Memory(build, self.directory)
        self.environment = dict(self.memory.environment(), **(environment or {}))
        self.environment["LD_PRELOAD"] += " " + preload
        self.enough = ENOUGH  # finds
        self.finds = []
        self.counts = {}

    def close(self):
        self.memory.close()

    def renew(self):
        shutil.rmtree(self.state, ignore_errors=True)
        os.mkdir(self.state, 0o700)
        with open(os.path.join(self.state, SETTINGS), "wb") as file:
            file.write(self.settings)

    def start(self, disturbed=True):
        return Agent(self.build, self.state, self.run,
                     environment=self.environment if disturbed else None)

    def find(self, what, number, for_good, text):
        how = "for good" if for_good else "once"
        self.finds.append(f"{what}, allocation {number} fails {how}: {text}")

    def chosen(self, what, count, seconds):
        """Of so many allocations those that are tried, the first one and then all over the whole,
        until the time is over; a few in any case."""
        totals = self.counts.setdefault(what, [0, 0])
        totals[1] += count
        end = time.monotonic() + seconds
        others = self.context.random.sample(range(2, count + 1), count - 1)
        for tried, number in enumerate([1, *others]):
            if tried >= FEW and time.monotonic() > end:
                return
            totals[0] += 1
            yield number
