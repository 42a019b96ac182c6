"""Agents that live one after the other on the same settings, and sixteen clients of theirs."""

import os
import random
import shutil
import threading
import time
from typing import NamedTuple

import clients
from agent_process import Agent
from footprint import footprint
from ledger import APPLIED, COUNTERS, Ledger, Witness
from store import Refused, Store

WRITERS, WATCHERS = 11, 3  # and a visitor, and an applier
SHORTEST, LONGEST = 1.0, 6.0  # life of an agent that is killed, in seconds
GRACEFUL = 0.2  # part of the ends
MOST_GROWTH = 2048  # KiB
SAMPLES_PER_SECOND = 4


class Plan(NamedTuple):
    """What goes wrong in a control."""
    careless: bool = False  # writers write without a condition
    forgets: int = 0  # a watcher forgets a notice of so many
    forgetful_disk: bool = False  # what was written in the last moment is lost with a kill
    environment: dict = {}  # of the agent


class Era:
    """The life of one agent."""

    def __init__(self, socket, ledger, applied, careless):
        self.socket, self.ledger, self.applied, self.careless = socket, ledger, applied, careless
        self.stop = threading.Event()
        self.over = threading.Event()  # the agent is being ended
        self.threads = []

    def begin(self, task, *arguments):
        thread = threading.Thread(target=self.work, args=(task, *arguments), daemon=True)
        self.threads.append(thread)
        thread.start()

    def work(self, task, *arguments):
        try:
            task(self, *arguments)
        except OSError as error:
            if not self.over.is_set():
                self.ledger.complain(f"{task.__name__}: the agent closed a session: {error!r}")
        except Refused as refusal:
            if not self.over.is_set():
                self.ledger.complain(f"{task.__name__}: {refusal}")
        except Exception as error:  # of the test itself: no result is no good result
            self.ledger.complain(f"{task.__name__}: {error!r}")

    def join(self, threads):
        for thread in threads:
            thread.join(60)
            if thread.is_alive():
                self.ledger.complain("a client got neither an answer nor the end of its session")


class Soak:
    def __init__(self, build, context, plan=Plan()):
        self.build, self.context, self.plan = build, context, plan
        self.random = random.Random(context.random.random())
        directory = os.path.join(context.scratch, "soak")
        shutil.rmtree(directory, ignore_errors=True)
        self.state, self.run = (os.path.join(directory, part) for part in ("state", "run"))
        self.older = os.path.join(directory, "older")
        os.makedirs(self.state, 0o700)
        os.makedirs(self.run, 0o700)
        self.floor = {}  # of each counter, what was saved
        self.applied = None
        self.before = None  # the last ledger
        self.lives = 0
        self.totals = {"writes": 0, "conflicts": 0, "saves": 0, "notices": 0}
        self.growth = None
        self.wrong = []

    def prepare(self):
        agent = self.start()
        store = Store(agent.socket)
        store.ask("set", bytes(4) + b"\2" + b"\7\0\0\0counter")
        for name in COUNTERS:
            store.set(name, "1000")
        store.save("begin")
        store.close()
        agent.kill()
        self.floor = {name: 1000 for name in COUNTERS}

    def start(self):
        agent = Agent(self.build, self.state, self.run, environment=self.plan.environment)
        if not agent.listening():
            agent.kill()
            raise RuntimeError(f"no start: {agent.said()}")
        return agent

    def live(self, seconds, ending):
        """One agent's life. `ending`: "kill", "terminate", or "rest", after which the clients end
        first."""
        agent = self.start()
        try:
            era = self.open(agent)
            if ending == "rest":
                self.rest(agent, era, seconds)
            else:
                self.wait(seconds)
                era.over.set()
                (agent.process.kill if ending == "kill" else agent.process.terminate)()
                status = agent.process.wait(60)
                if ending == "terminate" and status != 0:
                    era.ledger.complain(f"the agent ended with {status}: {agent.said()[-500:]}")
                era.stop.set()
            era.join(era.threads)
            self.settle(era.ledger)
        finally:
            agent.kill()
        if self.plan.forgetful_disk and ending == "kill":
            shutil.rmtree(self.state)
            os.rename(self.older, self.state)

    def open(self, agent):
        store = Store(agent.socket)
        begin = {}
        for name in COUNTERS:
            value, revision = store.get(name)
            begin[name] = (int(value), revision)
        if self.before:
            self.before.kept({name: value for name, (value, _) in begin.items()}, self.floor)
            self.wrong += self.before.wrong
            self.before.wrong = []
        clients.wait_back(store)
        value = store.get(APPLIED)[0]
        ledger = Ledger(begin)
        if self.applied is None:
            self.applied = clients.Applied(value)
        self.applied.settle(value, ledger)
        store.close()
        era = Era(agent.socket, ledger, self.applied, self.plan.careless)
        for number in range(WATCHERS):
            era.begin(clients.watcher, Witness(ledger), self.plan.forgets if number == 0 else 0)
        for _ in range(WRITERS):
            era.begin(clients.writer, random.Random(self.random.random()))
        era.begin(clients.applier, random.Random(self.random.random()))
        era.begin(clients.visitor)
        return era

    def wait(self, seconds):
        """On a forgetful disk, the state of half a second before is kept meanwhile."""
        if not self.plan.forgetful_disk:
            return time.sleep(seconds)
        time.sleep(seconds / 2)
        shutil.rmtree(self.older, ignore_errors=True)
        while not os.path.exists(self.older):
            try:
                shutil.copytree(self.state, self.older)
            except shutil.Error:  # a file went away meanwhile
                shutil.rmtree(self.older, ignore_errors=True)
        return time.sleep(seconds / 2)

    def rest(self, agent, era, seconds):
        """Looks at the memory meanwhile. At the end the watchers hear of all that was done."""
        sizes = []
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            time.sleep(1 / SAMPLES_PER_SECOND)
            sizes.append(footprint(agent.process.pid).resident)
        era.stop.set()
        era.join(era.threads[WATCHERS:])
        era.over.set()
        agent.process.terminate()
        if agent.wait() != 0:
            era.ledger.complain(f"the agent ended with {agent.process.returncode}: {agent.said()}")
        quarter = len(sizes) // 4
        self.growth = max(sizes[-quarter:]) - max(sizes[quarter:2 * quarter])
        if self.growth > MOST_GROWTH:
            era.ledger.complain(f"memory grows: {self.growth} KiB in {seconds / 2:.0f} s")

    def settle(self, ledger):
        self.wrong += ledger.close()
        ledger.wrong = []
        for name, value in ledger.saved.items():
            self.floor[name] = max(self.floor[name], value)
        for what in self.totals:
            self.totals[what] += getattr(ledger, what)
        self.before = ledger
        self.lives += 1

    def go_on(self, seconds):
        """Half of the time agents are killed, then one lives on."""
        self.prepare()
        end = time.monotonic() + seconds / 2
        while time.monotonic() < end and not self.wrong:
            life = self.random.uniform(SHORTEST, LONGEST)
            ending = "terminate" if self.random.random() < GRACEFUL else "kill"
            self.live(min(life, seconds / 4), ending)
            self.context.say_some(f"{self.lives} agents, {self.totals['writes']} writes")
        if not self.wrong:
            self.live(seconds / 2, "rest")
            self.live(0.1, "kill")  # what the last one has saved is there
        self.wrong += self.before.wrong
