"""An agent among peers that mean no good, and one that means well. Beside it stands an agent that is
left in peace, so that what else the machine does disturbs the quiet figure, too."""

import contextlib
import json
import os
import resource
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from typing import NamedTuple

import misbehaviour
from agent_process import Agent
from bridge_client import GROUPS
from footprint import footprint, settled
from recording import record

BYSTANDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "bystander.py")
CROWD = 300
FEWEST = 2000  # mutated sessions, however little time there is
OTHERS = 30  # seconds that the other peers take
SOME = 40
MOST_TIMES = 10  # the quiet 99th percentile
NOISE = 500  # microseconds; a quiet 99th percentile below is that of a lucky moment
MOST_GROWTH = 4096  # KiB that a memory allocator may keep for the next time
USER = 60000 + os.getpid() % 5000  # of an agent with a limit of threads; nobody else's
FEW_DESCRIPTORS, FEW_THREADS = 48, 24


class Siege(NamedTuple):
    sessions: int
    worst: float  # 99th percentile, in times of the quiet one
    figures: dict
    finds: list


class Bystander:
    """The one that means well, in a process of its own."""

    def __init__(self, socket):
        self.process = subprocess.Popen([sys.executable, BYSTANDER, socket], text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.process.stdout.readline()

    def measured(self):
        """Of the time since it was asked last. None: it was not served."""
        try:
            self.process.stdin.write("\n")
            self.process.stdin.flush()
            return json.loads(self.process.stdout.readline())
        except (OSError, json.JSONDecodeError):
            return None

    def close(self):
        """May be repeated."""
        self.process.communicate()


def at_low_priority(task, *arguments):
    """Calls it in a thread that leaves the processors to the others."""
    def lower():
        os.setpriority(os.PRIO_PROCESS, 0, 19)  # of the thread alone

    with ThreadPoolExecutor(1, initializer=lower) as pool:
        return pool.submit(task, *arguments).result()


def places(context, name):
    """Directories of the agent's own: state and run."""
    directory = os.path.join(context.scratch, name)
    shutil.rmtree(directory, ignore_errors=True)
    made = [os.path.join(directory, part) for part in ("state", "run")]
    for path in made:
        os.makedirs(path, 0o700)
    return made


def besiege(build, context, sessions, patience, environment=None):
    """`patience`: seconds of each misbehaviour that lasts. `environment`: of the agent."""
    with contextlib.ExitStack() as stack:
        agents = []
        for name, variables in (("quiet", None), ("siege", environment)):
            state, run = places(context, name)
            agents.append(Agent(build, state, run, environment=variables))
            stack.callback(agents[-1].kill)
            if not agents[-1].listening():
                raise RuntimeError(agents[-1].said())
        recorded = record(build, agents[-1].socket, run)
        bystanders = [Bystander(agent.socket) for agent in agents]
        for bystander in bystanders:
            stack.callback(bystander.close)
        ordeal = Ordeal(agents[-1], bystanders, context, recorded)
        ordeal.go_through(sessions, patience)
        bystanders[-1].close()
        ordeal.finds += restarted(build, agents[-1], ordeal.client, state, run)
        return Siege(ordeal.sessions, ordeal.worst, ordeal.figures, ordeal.finds)


class Ordeal:
    """One agent's."""

    def __init__(self, agent, bystanders, context, recorded):
        """`bystanders`: of an agent in peace, and of this one."""
        self.agent, self.context, self.recorded = agent, context, recorded
        self.bystanders = bystanders
        self.client = agent.connect()
        self.records = {group: self.client.read(group) for group in GROUPS}
        self.figures, self.finds = {}, []
        self.sessions, self.worst = 0, 0.0

    def go_through(self, sessions, patience):
        path = self.agent.socket
        # What the allocator keeps after the first crowd is not a leak.
        misbehaviour.crowd(path, CROWD, 0)
        self.mutations(min(sessions // 5, 2000))
        begin = self.rested(None)
        for bystander in self.bystanders:
            bystander.measured()
        self.stretch("mutated sessions", self.mutations, sessions)
        for name, task, size in (("crowd", misbehaviour.crowd, CROWD),
                                 ("slow bytes", misbehaviour.slow_bytes, SOME),
                                 ("no reads", misbehaviour.no_reads, SOME),
                                 ("half closes", misbehaviour.half_closes, 10 * SOME),
                                 ("connects", misbehaviour.connects, 0),
                                 ("stopped", misbehaviour.stopped, SOME // 4)):
            self.stretch(name, task, path, size, patience)
        self.compare(begin, self.rested(begin))

    def mutations(self, count):
        wrong, self.sessions = misbehaviour.mutations(
            self.agent.socket, self.context.random, self.recorded, count, self.may_go_on)
        return wrong

    def may_go_on(self, number):
        self.context.say_some(f"{number} mutated sessions")
        return (number < FEWEST or number % 100 != 0 or self.context.short
                or self.context.left() > OTHERS)

    def stretch(self, name, task, *arguments):
        self.finds += [f"{name}: {wrong}" for wrong in at_low_priority(task, *arguments)]
        quiet, measured = (bystander.measured() for bystander in self.bystanders)
        if not quiet:
            raise RuntimeError("the agent that was left in peace serves no longer")
        if not measured:
            self.finds.append(f"{name}: a well-behaved client was served no longer: "
                              + self.agent.said()[-1000:])
            return
        self.figures[name] = dict(measured, quiet=quiet["p99"])
        times = measured["p99"] / max(quiet["p99"], NOISE)
        self.worst = max(self.worst, times)
        # The short form has too few reads to speak of one in a hundred.
        if times > MOST_TIMES and not self.context.short:
            self.finds.append(f"{name}: the 99th percentile of a well-behaved client is "
                              f"{measured['p99']} us, and in peace {quiet['p99']} us")

    def rested(self, begin):
        """The footprint when the peers have gone and the settings are what they were."""
        self.client.exchange(misbehaviour.CONFIRM)
        for group, values in self.records.items():
            reply = self.client.write(group, values)
            if reply.result != 1:
                self.finds.append(f"{group} cannot be written as it was: {reply.text}")
        pid = self.agent.process.pid
        return settled(pid, begin.descriptors, begin.threads) if begin else settled_down(pid)

    def compare(self, begin, end):
        self.figures["begin"], self.figures["end"] = begin._asdict(), end._asdict()
        for what, most in (("descriptors", 0), ("threads", 0), ("resident", MOST_GROWTH)):
            grown = getattr(end, what) - getattr(begin, what)
            if grown > most:
                self.finds.append(f"{what}: {grown} more than at the begin ({begin}, {end})")


def settled_down(pid):
    """The least that it comes to within a while."""
    least = footprint(pid)
    return settled(pid, min(least.descriptors, 20), min(least.threads, 5))


def restarted(build, agent, client, state, run):
    """That what is in memory after all this can be saved, and is what a new agent serves."""
    values = client.read_all()
    reply = client.save(force=True)
    client.close()
    agent.process.terminate()
    if agent.wait() != 0:
        return [f"the agent ended with {agent.process.returncode}: {agent.said()[-1000:]}"]
    if reply.result != 1:
        return [f"the settings cannot be saved: {reply.text}"]
    again = Agent(build, state, run)
    try:
        if not again.listening():
            return [f"no agent starts on what was saved: {again.said()}"]
        second = again.connect()
        same = second.read_all() == values
        second.close()
        return [] if same else ["a new agent serves other settings than were saved"]
    finally:
        again.kill()


def exhaust(build, context):
    """An agent that may have few descriptors, or few threads, and more clients than that."""
    finds = []
    limits = ["descriptors", "threads"]
    if context.short and os.geteuid() != 0:
        context.say("without another user, other tests would use up the threads: not tried")
        limits.remove("threads")
    for what in limits:
        state, run = places(context, what)
        agent = Agent(build, state, run,
                      prefix=with_few_threads(state, run) if what == "threads" else ())
        try:
            if not agent.listening():
                raise RuntimeError(agent.said())
            finds += [f"without {what}: {find}" for find in use_up(agent, what)]
        finally:
            agent.kill()
    return finds


def with_few_threads(state, run):
    """What starts an agent whose user may have few more threads. Root's have no limit: it becomes
    another user's, who has no other processes."""
    user, prefix = os.geteuid(), []
    if user == 0:
        user, prefix = USER, ["setpriv", f"--reuid={USER}", f"--regid={USER}", "--clear-groups"]
        for path in (state, run):
            os.chown(path, USER, USER)
        place = os.path.dirname(state)
        for path in (place, os.path.dirname(place), os.path.dirname(os.path.dirname(place))):
            os.chmod(path, 0o711)  # that the user gets there
    return [*prefix, "prlimit", f"--nproc={tasks_of(user) + FEW_THREADS}"]


def tasks_of(user):
    count = 0
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            if os.stat(f"/proc/{name}").st_uid == user:
                count += len(os.listdir(f"/proc/{name}/task"))
        except FileNotFoundError:
            pass  # has ended
    return count


def use_up(agent, what):
    pid, wrong = agent.process.pid, []
    client = agent.connect()
    begin = settled_down(pid)
    if what == "descriptors":
        resource.prlimit(pid, resource.RLIMIT_NOFILE, (FEW_DESCRIPTORS, FEW_DESCRIPTORS))
    peers = misbehaviour.greeters(agent.socket, CROWD)
    for _ in range(20):
        client.read("IKE")  # raises unless it is served
    if what == "threads" and all(misbehaviour.is_greeted(peer) for peer in peers[:100]):
        wrong.append("the limit was not reached")
    for peer in peers:
        peer.close()
    end = settled(pid, begin.descriptors, begin.threads)
    if end.descriptors > begin.descriptors or end.threads > begin.threads:
        wrong.append(f"not all was given back: {begin}, {end}")
    newcomer = agent.connect()
    newcomer.read("IKE")
    newcomer.close()
    if client.save().result != 1:
        wrong.append("no save afterwards")
    client.close()
    return wrong
