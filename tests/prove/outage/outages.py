"""Power cuts of machines with two file systems, in turn."""

import os
import random

from machine import Lost, Machine

KINDS = ("ext4", "ext2")
FEWEST = 6  # cuts


class Outages:
    def __init__(self, build, context, environment=None):
        """REQUIRES: mounts are private."""
        self.context = context
        self.machines = [Machine(build, kind, os.path.join(context.scratch, "outage", kind),
                                 random.Random(context.random.random()), environment or {})
                         for kind in KINDS]
        self.cuts = 0
        self.lost = []

    def go_on(self, cuts, seconds=0):
        """So many, and fewer if that takes longer, but not fewer than some. Each is looked at by the
        next one, the last ones by one more. Returns self."""
        end = self.context.left() - seconds
        while self.cuts < cuts and (self.cuts < FEWEST or self.context.left() > end):
            self.cut(self.machines[self.cuts % len(self.machines)])
            self.cuts += 1
            self.context.say_some(f"{self.cuts} of {cuts} power cuts, {self.saves()} saves")
        for machine in self.machines:
            self.cut(machine)
        return self

    def cut(self, machine):
        try:
            machine.live()
        except Lost as loss:
            self.lost.append(f"{machine.kind}: {loss}{self.keep(machine)}")
            machine.renew()

    def keep(self, machine):
        """The disk as it was cut, for whoever looks at what was lost."""
        path = os.path.join(self.context.keep, f"lost-{len(self.lost) % 10}.{machine.kind}")
        os.makedirs(self.context.keep, exist_ok=True)
        with open(path, "wb") as file:
            file.write(machine.found)
        return f" ({path})"

    def saves(self):
        return sum(machine.saves for machine in self.machines)
