"""A machine with an agent, whose power is cut again and again."""

import os
import subprocess
import threading
import time

from agent_process import Agent, Hung
from bridge_client import BridgeClient
from disk import Disk, command
from store import Refused, Store

SETTINGS = ("LOG.MAX_LOG_SIZE", "POLICY.PMP_TIMEOUT", "UPDATE.CHECK_UPDATE_INTERVAL")
LEAST, MOST = 1000, 80000  # values that all of them take
LONGEST = 0.3  # seconds that an agent works
PATIENCE = 120  # seconds for a client to hear that its agent is gone


class Lost(Exception):
    """Says what is not as it was acknowledged."""


class Life:
    """Of one agent: what a client has made of the settings, and saved. Each entry of `states` is what
    was in all settings when a save was asked for; `acknowledged` counts those that were saved."""

    def __init__(self, socket, found, random):
        self.socket, self.random = socket, random
        self.states = [found]
        self.acknowledged = 1
        self.dark = threading.Event()  # the power is cut: saves may fail
        self.trouble = ""
        self.thread = threading.Thread(target=self.write_and_save, daemon=True)
        self.thread.start()

    def write_and_save(self):
        try:
            store = Store(self.socket)
            while True:
                values = dict(zip(SETTINGS, self.states[-1]))
                for name in self.random.sample(SETTINGS, self.random.randint(1, len(SETTINGS))):
                    values[name] = self.other_than(values[name])
                    store.set(name, values[name])
                self.states.append(tuple(values.values()))
                store.save("power")
                self.acknowledged = len(self.states)
        except (OSError, Refused) as error:
            if not self.dark.is_set():
                self.trouble = f"before the power was cut: {error}"

    def other_than(self, value):
        """A write of the same value would be none."""
        step = self.random.randint(1, MOST - LEAST)
        return str(LEAST + (int(value) - LEAST + step) % (MOST - LEAST + 1))

    def end(self):
        """REQUIRES: the agent is gone."""
        self.thread.join(PATIENCE)
        if self.thread.is_alive():
            raise Lost("a client got neither an answer nor the end of its session")


class Machine:
    def __init__(self, build, kind, directory, random, environment):
        """`kind`: of the file system. `directory`: is made."""
        self.build, self.kind, self.random, self.environment = build, kind, random, environment
        self.place = os.path.join(directory, "disk")
        self.directory = directory
        os.makedirs(directory, 0o700)
        os.mkdir(self.place)
        self.disk = None
        self.found = b""  # what was on the disk when the power came back
        self.saves = 0
        self.allowed = None  # what may be served; the first is what was acknowledged

    def renew(self):
        """Begins with an empty disk."""
        if self.disk:
            self.disk.close()
        self.disk = Disk()
        self.disk.format(self.kind)
        self.disk.mount(self.kind, self.place)
        os.mkdir(os.path.join(self.place, "state"), 0o700)
        command(["umount", self.place])
        self.allowed = None

    def live(self):
        """Starts, serves, and loses its power at some moment. Raises Lost."""
        if not self.disk:
            self.renew()
        self.found = self.disk.content()
        try:
            self.disk.mount(self.kind, self.place)
        except RuntimeError as error:
            raise Lost(f"the file system does not come back: {error}") from None
        syncing = agent = None
        try:
            agent = Agent(self.build, os.path.join(self.place, "state"), self.directory,
                          environment=self.environment)
            life = Life(agent.socket, self.look(agent), self.random)
            time.sleep(self.random.uniform(0, LONGEST))
            if self.random.random() < 0.5:  # the kernel writes now and then what nobody has asked for
                syncing = subprocess.Popen(["sync", "-f", self.place], stderr=subprocess.DEVNULL)
                time.sleep(self.random.uniform(0, 0.02))
            acknowledged = life.acknowledged
            life.dark.set()
            self.disk.cut()
            self.allowed = None
        finally:
            if agent:
                agent.kill()
            if syncing:
                syncing.wait()
            command(["umount", self.place])
        life.end()
        if life.trouble:
            raise Lost(life.trouble)
        self.allowed = life.states[acknowledged - 1:]
        self.saves += life.acknowledged
        self.restore_power()

    def look(self, agent):
        """The settings that the agent serves. Raises Lost unless they are what was saved."""
        try:
            if not agent.listening():
                raise Lost(f"no start, exit {agent.wait()}: {agent.said()}")
            store = Store(agent.socket)
            found = tuple(store.get(name)[0] for name in SETTINGS)
            store.close()
            client = BridgeClient(agent.socket)
            degraded = client.status()["degraded"]
            client.close()
        except (OSError, Hung, Refused) as error:
            raise Lost(f"no service: {error}; {agent.said()}") from None
        if degraded:
            raise Lost(f"degraded: {degraded}")
        if self.allowed and found not in self.allowed:
            raise Lost(f"{found} is served, and {self.allowed[0]} was acknowledged: {agent.said()}")
        return found

    def restore_power(self):
        """A cut disk takes no writes for ever: goes on with one of the same content."""
        kept = self.disk
        self.disk = Disk(kept.content())
        kept.close()
