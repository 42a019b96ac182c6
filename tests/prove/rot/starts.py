"""Starts of the agent: many in a short time, or by the real one."""

import os
import re
import subprocess
from typing import NamedTuple

from agent_process import Agent
from recovery_check import read_files
from scenarios import SHADOW_COPY

PROGRAM = "tests/rot_starts"
SERVED, DEGRADED = 0, 1
TIME = re.compile(r"-20\d{6}T\d{6}Z(-\d+)?")
OF_THE_SERVICE = (": listening ", "the administrators' group cannot reach the socket")
HISTORY = "history."


class Start(NamedTuple):
    """What was made of a state directory."""
    status: int
    log: str  # without what differs from start to start
    served: bytes  # the settings, as a save would write them
    files: dict


def without_places(text, state):
    return TIME.sub("-TIME", text.replace(state, ""))


class Starts:
    """Not thread-safe."""

    def __init__(self, build, environment=None):
        self.process = subprocess.Popen([os.path.join(build, PROGRAM)], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True, bufsize=1,
                                        env=dict(os.environ, **(environment or {})))

    def start(self, state):
        self.process.stdin.write(state + "\n")
        status = self.process.stdout.readline()
        if not status:
            raise RuntimeError(f"{PROGRAM} ended with {self.process.wait()}")
        with open(state + ".log", encoding="utf-8", errors="replace") as file:
            log = without_places(file.read(), state)
        served = b""
        if int(status) in (SERVED, DEGRADED):
            with open(state + ".served", "rb") as file:
                served = file.read()
        return Start(int(status), log, served, read_files(state))

    def close(self):
        self.process.stdin.close()
        self.process.wait()
        self.process.stdout.close()


def start_really(build, state, run):
    """By the agent itself, which is killed as soon as it serves. Says what the quick start says, but
    for what is served."""
    agent = Agent(build, state, run)
    try:
        status = 2
        if agent.listening():
            client = agent.connect()
            status = SERVED if client.status()["degraded"] is None else DEGRADED
            client.close()
    finally:
        agent.kill()
    lines = [line for line in agent.said().splitlines(True)
             if not any(words in line for words in OF_THE_SERVICE)]
    files = {name: content for name, content in read_files(state).items()
             if not name.startswith(HISTORY)}
    return Start(status, without_places("".join(lines), state), b"", files)


def comparable(start):
    files = {TIME.sub("-TIME", name): content for name, content in start.files.items()}
    return start.status, start.log, files, files.get(SHADOW_COPY)
