"""Everything that the agent and its client do, with each of their allocations failing in turn."""

import os
import re
import shutil
import struct
import subprocess
import time

from agent_process import Agent, Hung
from bridge_client import GROUPS, block
from scarce_memory import Memory
from recovery_check import read_files, unsealed
from scenarios import SETTINGS, SHADOW_COPY, example

EXIT_STATUSES = (69, 74, 78)  # of a start that cannot be
CLIENT_STATUSES = (69, 70, 74, 75)
# The module's own start-up ends the process, in the words of the C++ library.
TERMINATED = re.compile(r"terminate called after throwing an instance of '.*bad_alloc'")
ABORTED = -6
MOST_GROWTH = 16384  # bytes of a command over all of its trials: the history may grow
ENOUGH = 20
START, RECOVERY = "start", "recovery"
FEW = 2  # allocations of each kind
PATIENCE = 10  # seconds
DYING = 2  # seconds
NAME = "IKE.EXCHANGE_TIMEOUT"
STATUS = b"\x02"
SUBSCRIBE = b"\x03"


def agent_command(name, data=b""):
    return b"\x04" + block(name.encode()) + data


def module_command(number, data=b""):
    return struct.pack("<BBiiQ", 1, 0, 13, number, 0) + data


def step(value):
    return bytes(4) + b"\1" + block(NAME.encode()) + block(value.encode())


def requests(record, number):
    """Every request that there is. `number`: makes some of them change something each time."""
    value = str(10 + number % 500)
    return {
        "read": module_command(1, block(b"IKE")),
        "write": module_command(0, block(b"ADMIN") + struct.pack("<I", number % 80000) + record[4:]),
        "module's save": module_command(2),
        "status": STATUS,
        "subscribe": SUBSCRIBE,
        "schema": agent_command("schema"),
        "get": agent_command("get"),
        "set": agent_command("set", step(value)),
        "try": agent_command("try", step(value)),
        "watch": agent_command("watch"),
        "apply": agent_command("apply", struct.pack("<IB", 600, 0) + block(b"") + step(value)),
        "apply, saved": agent_command("apply", struct.pack("<IB", 0, 1) + block(b"x") + step(value)),
        "confirm": agent_command("confirm"),
        "save": agent_command("save", b"\0" + block(b"a note")),
        "history": agent_command("history"),
        "revision": agent_command("revision", struct.pack("<Q", 1)),
    }


SAVES = ("module's save", "save", "apply, saved")


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
        """Of so many allocations those that are tried, all over the whole, until the time is over; a
        few in any case."""
        totals = self.counts.setdefault(what, [0, 0])
        totals[1] += count
        end = time.monotonic() + seconds
        for tried, number in enumerate(self.context.random.sample(range(1, count + 1), count)):
            if tried >= FEW and time.monotonic() > end:
                return
            totals[0] += 1
            yield number

    # Commands

    def commands(self, seconds):
        self.renew()
        agent = self.start()
        try:
            if not agent.listening():
                raise RuntimeError(agent.said())
            client = agent.connect()
            record = client.read("ADMIN")
            client.close()
            for what in requests(record, 0):
                if len(self.finds) >= self.enough:
                    return
                agent = self.command(agent, what, record, seconds / len(requests(record, 0)))
                self.context.say_some(f"{what}: {self.counts[what]} allocations")
        finally:
            agent.kill()

    def command(self, agent, what, record, seconds):
        """Returns the agent, or another one in its place."""
        for number in range(3):
            self.asked(agent, what, record, 1000 + number, None, False)
        self.memory.count()
        self.asked(agent, what, record, 2000, None, False)
        count = self.memory.counted()
        before = self.memory.live()
        for for_good in (False, True):
            for number in self.chosen(what, count, seconds / 2):
                said = self.asked(agent, what, record, number, number, for_good)
                wrong = self.judged(agent, what, said)
                if wrong:
                    self.find(what, number, for_good, wrong)
                    agent.kill()
                    agent = self.start()
                    agent.listening()
                    before = None
                    if len(self.finds) >= self.enough:
                        return agent
        self.asked(agent, what, record, 3000, None, False)
        grown = 0 if before is None else self.grown(before)
        if grown > MOST_GROWTH:
            self.find(what, 0, False, f"{grown} bytes are kept")
        return agent

    def grown(self, before):
        """Bytes, when the sessions that end have given back what was theirs."""
        end = time.monotonic() + PATIENCE
        while (grown := self.memory.live() - before) > MOST_GROWTH and time.monotonic() < end:
            time.sleep(0.05)
        return grown

    def asked(self, agent, what, record, value, number, for_good):
        """The reply, or why there is none. `number`: of the allocation that fails."""
        client = None
        try:
            client = agent.connect()
            if what == "confirm":
                client.exchange(requests(record, value)["apply"])
            elif what.startswith("apply"):
                client.exchange(agent_command("confirm"))
            elif what in SAVES:
                client.exchange(agent_command("set", step(str(10 + value % 500))))
            if number:
                self.memory.begin(number, for_good)
            return client.exchange(requests(record, value)[what])
        except TimeoutError:
            return "no answer"
        except OSError as error:
            return error
        finally:
            if number:
                self.memory.end()
            if client:
                client.close()

    def judged(self, agent, what, said):
        """What is wrong with the agent, or with its answer; empty if nothing is."""
        if isinstance(said, str):
            return said
        if not isinstance(said, OSError) and said.result != 1 and not said.text:
            return f"it failed without a word: {said}"
        if self.has_ended(agent, said):
            return f"the agent ended with {agent.process.returncode}: {agent.said()[-500:]}"
        try:
            client = agent.connect()
            client.read_all()  # no lock is held
            client.write("LOG", client.read("LOG"))
            if what in SAVES:
                files = read_files(self.state)
                acknowledged = not isinstance(said, OSError) and said.result == 1
                value = client.exchange(agent_command("get", block(NAME.encode()))).output
                running = re.search(rb"TIMEOUT.....(\d+)", value, re.S).group(1)
                held = re.search(rb"\bEXCHANGE_TIMEOUT=(\d+)", files[SETTINGS]).group(1)
                if acknowledged and held != running:
                    return "a save was acknowledged, and is not in the file"
                if acknowledged and unsealed(files[SHADOW_COPY]) != files[SETTINGS]:
                    return "a save was acknowledged, and is not in the shadow copy"
                if (again := client.save()).result != 1:
                    return f"no save afterwards: {again.text}"
            client.close()
            return ""
        except (OSError, Hung) as error:
            if self.has_ended(agent, error):
                return f"the agent ended with {agent.process.returncode}: {agent.said()[-500:]}"
            return f"not served afterwards: {error!r}; {agent.said()[-500:]}"

    def has_ended(self, agent, said):
        """Where a session ended without a reply, the agent may be about to end."""
        try:
            agent.process.wait(DYING if isinstance(said, ConnectionResetError) else 0)
            return True
        except subprocess.TimeoutExpired:
            return False

    # From the start to the end

    def starts(self, what, seconds):
        """`what`: START, or RECOVERY, from the shadow copy. Until the agent listens."""
        self.prepare(what)
        self.memory.count()
        agent = self.start()
        agent.listening()
        count = self.memory.counted()
        expected = self.values(agent)
        agent.kill()
        for for_good in (False, True):
            for number in self.chosen(what, count, seconds / 2):
                self.context.say_some(f"{what}: allocation {number} of {count}")
                self.started(what, number, for_good, expected)

    def prepare(self, what):
        self.renew()
        if what == RECOVERY:
            with open(os.path.join(self.state, SETTINGS), "wb") as file:
                file.write(self.settings[:len(self.settings) // 2])
            with open(os.path.join(self.state, SHADOW_COPY), "wb") as file:
                file.write(self.settings)

    def values(self, agent):
        client = agent.connect()
        try:
            return client.read_all(), client.status()["degraded"]
        finally:
            client.close()

    def values_or_end(self, agent):
        """None: it has ended just after it began to listen."""
        try:
            return self.values(agent)
        except OSError:
            agent.wait()
            return None

    def started(self, what, number, for_good, expected):
        self.prepare(what)
        self.memory.begin(number, for_good)
        agent = self.start()
        try:
            listens = agent.listening()
            self.memory.end()
            served = self.values_or_end(agent) if listens else None
            if served:
                values, degraded = served
                if values != expected[0] and not degraded:
                    self.find(what, number, for_good, "other settings, and not as degraded")
            else:
                status = agent.wait()
                said = agent.said()
                in_words = ": error: " in said and status in EXIT_STATUSES
                if not in_words and not (status == ABORTED and TERMINATED.search(said)):
                    self.find(what, number, for_good, f"it ended with {status}: {said}")
        except (OSError, Hung) as error:
            self.find(what, number, for_good, f"not served: {error!r} {agent.said()}")
        finally:
            self.memory.end()
            agent.kill()
        again = self.start(disturbed=False)
        try:
            if not again.listening() or self.values(again) != expected:
                self.find(what, number, for_good, f"lost afterwards: {again.said()}")
        finally:
            again.kill()

    def ends(self, seconds):
        """The end of an agent."""
        agent = self.start()
        agent.listening()
        self.memory.count()
        agent.process.terminate()
        agent.wait()
        count = self.memory.counted()
        agent.kill()
        for for_good in (False, True):
            for number in self.chosen("end", count, seconds / 2):
                agent = self.start()
                agent.listening()
                self.memory.begin(number, for_good)
                agent.process.terminate()
                try:
                    status = agent.wait()
                    if status != 0 and not (status in EXIT_STATUSES and ": error: " in agent.said()):
                        self.find("end", number, for_good, f"{status}: {agent.said()}")
                except Hung as error:
                    self.find("end", number, for_good, f"it does not end: {error}")
                finally:
                    self.memory.end()
                    agent.kill()

    # The client

    def client(self, seconds):
        """`lparamsctl apply` with the shortage at the client's."""
        self.renew()
        agent = self.start(disturbed=False)
        document = os.path.join(self.directory, "document")
        try:
            agent.listening()
            for for_good in (False, True):
                self.memory.count()
                self.applied(agent, document, 11)
                for number in self.chosen("lparamsctl apply", self.memory.counted(), seconds / 2):
                    self.context.say_some(f"lparamsctl apply: allocation {number}")
                    self.memory.begin(number, for_good)
                    ended = self.applied(agent, document, 12 + number % 500)
                    failed = self.memory.end()
                    wrong = self.judged_client(ended, failed)
                    if wrong:
                        self.find("lparamsctl apply", number, for_good, wrong)
                wrong = self.judged(agent, "apply", OSError())
                if wrong:
                    self.find("lparamsctl apply", 0, for_good, wrong)
        finally:
            agent.kill()

    def applied(self, agent, document, value):
        with open(document, "w", encoding="ascii") as file:
            file.write(f"{NAME}={value}\n")
        command = [os.path.join(self.build, "lparamsctl"), "--socket", agent.socket, "apply",
                   document]
        return subprocess.run(command, env=dict(os.environ, **self.memory.environment()),
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=60,
                              check=False)

    def judged_client(self, ended, failed):
        if ended.returncode == 0:
            return ""
        if not failed:
            return f"it ended with {ended.returncode} without a cause"
        if ended.returncode not in CLIENT_STATUSES or not ended.stderr:
            return f"it ended with {ended.returncode}: {ended.stderr.decode()}"
        return ""
