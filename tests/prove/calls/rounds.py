"""Chooses what is disturbed, and tries it: first each error of each call once, then more of them
while there is time."""

import os
import tempfile
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import disturbance
import life
from agent_process import Agent
from disturbance import Point
from life import Life, Wrong
from peer import COMMANDS, Peer
from recovery_check import write_files
from scenarios import SETTINGS, example

ENOUGH = 20  # finds; of a control one
# What was wrong once, with the product or with this test; is tried in any case.
FOUND = (Point("client set", "connect", 1, "error=EINTR"),
         Point("session", "rename", 6, "error=EPERM"),
         Point("session", "send", 1, "error=EPIPE"), Point("session", "send", 6, "error=ENOMEM"))


class Rounds:
    def __init__(self, build, context, more=None):
        """`more`: variables of agent and client, for the controls."""
        self.build, self.context, self.more = build, context, more
        self.enough = 1 if more else ENOUGH
        self.settings = example(context.root, SETTINGS)
        self.lock = threading.Lock()
        self.finds = []
        self.counts = {"points": 0, "tried": 0, "hit": 0}
        self.kinds = set()  # of call and effect
        self.local = threading.local()
        self.agents = []

    def directory(self):
        return tempfile.mkdtemp(prefix="", dir=self.context.scratch)

    def try_all(self, parts, seconds, only=None):
        """`parts`: of the agent's life, and "client COMMAND". `only`: calls and effects, as (name,
        effect)."""
        end = time.monotonic() + seconds
        points = [point for point in FOUND if point.part in parts and not only]
        points += self.points(parts, only)
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            def work(point):
                if time.monotonic() < end and len(self.finds) < self.enough:
                    self.attempt(point)
            list(pool.map(work, points))
        for agent in self.agents:
            agent.kill()

    def points(self, parts, only):
        """In the order in which they are tried."""
        found = {}
        for part in parts:
            seen = (self.peer().reference(part.split()[1]) if part.startswith("client") else
                    Life(self.build, self.settings, self.directory(), None, part).live())
            if part not in (life.SESSION, life.STOP):
                seen = disturbance.of_the_program(seen)
            found.update(disturbance.points_of(part, seen))
        groups = [points for (_, name, effect), points in found.items()
                  if not only or (name, effect) in only]
        self.counts["points"] += sum(map(len, groups))
        random = self.context.random
        for points in groups:
            random.shuffle(points)
        random.shuffle(groups)
        return [points[turn] for turn in range(max(map(len, groups))) for points in groups
                if turn < len(points)]

    def peer(self):
        """The client of this thread, with an agent that is left in peace."""
        if not hasattr(self.local, "peer"):
            directory = self.directory()
            state, run = os.path.join(directory, "state"), os.path.join(directory, "run")
            os.makedirs(run, 0o700)
            write_files(state, {SETTINGS: self.settings})
            with open(os.path.join(directory, "settings"), "wb") as file:
                file.write(self.settings)
            agent = Agent(self.build, state, run)
            if not agent.listening():
                raise RuntimeError(agent.said())
            with self.lock:
                self.agents.append(agent)
            self.local.peer = Peer(self.build, agent, directory,
                                   os.path.join(directory, "settings"), self.more)
        return self.local.peer

    def attempt(self, point):
        directory = self.directory()
        hit = []
        try:
            if point.part.startswith("client"):
                hit = self.peer().disturb(point)
            else:
                hit = Life(self.build, self.settings, directory, point, more=self.more).live()
        except Wrong as wrong:
            hit = [point]
            with self.lock:
                self.finds.append(f"{point}: {wrong}")
                self.context.say(self.finds[-1][:400])
        finally:
            life.remove(directory)
        with self.lock:
            self.counts["tried"] += 1
            if hit or point.effect == disturbance.SHORT:
                self.counts["hit"] += 1
                self.kinds.add((point.name, point.effect))
            self.context.say_some(f"{self.counts['tried']} of {self.counts['points']} calls")


def client_parts():
    return [f"client {what}" for what in COMMANDS]
