"""A disturbance of one call of a process: with strace, or by a library for what is short."""

import os
import signal
import subprocess
import time
from typing import NamedTuple

from agent_process import ENVIRONMENT, Hung
from errnos import SHORT, effects
from trace import LINE, complete_lines

LIBRARY = "tests/short_calls.so"
PATIENCE = 60  # seconds


class Point(NamedTuple):
    """The nth call of the name in a part of a life, of each thread; of a short one in the process,
    0: each."""
    part: str
    name: str
    nth: int
    effect: str  # as strace(1) has it, or SHORT

    def __str__(self):
        return f"{self.part}, {self.name} #{self.nth}, {self.effect}"


# Functions of the C library, and their calls in 64 bit.
SHORTENED = {"read": "read", "write": "write", "writev": "writev", "recv": "recvfrom",
             "send": "sendto", "recvmsg": "recvmsg", "sendmsg": "sendmsg"}


class Seen(NamedTuple):
    name: str
    arguments: str
    nth: int
    disturbed: bool


def parse(text):
    counts = {}
    for line in complete_lines(text):
        match = LINE.match(line)
        if match and match[2] != "execve":
            key = match[1], match[2]
            counts[key] = counts.get(key, 0) + 1
            yield Seen(match[2], match[3], counts[key], "INJECTED" in line or "DELAYED" in line)


def of_the_program(seen):
    """The calls without those of the dynamic loader, which ends with unmapping its cache: an error of
    its own ends a process in the loader's way, before the program begins."""
    names = [call.name for call in seen]
    return seen[names.index("munmap"):]


def points_of(part, seen):
    """All that can be done to the calls that were seen, by call and effect."""
    found = {}
    totals = {}
    for call in seen:
        totals[call.name] = totals.get(call.name, 0) + 1
        for effect in effects(call.name, call.arguments):
            found.setdefault((part, call.name, effect), set()).add(
                Point(part, call.name, call.nth, effect))
    for name, in_64_bit in SHORTENED.items():
        if count := totals.get(name, 0) or totals.get(in_64_bit, 0):
            found[part, name, SHORT] = {Point(part, name, nth, SHORT) for nth in range(count + 1)}
    return {key: sorted(points) for key, points in found.items()}


def environment(build, point, more=None):
    variables = dict(more or {})
    if point and point.effect == SHORT:
        libraries = [variables.get("LD_PRELOAD", ""), os.path.join(build, LIBRARY)]
        variables["LD_PRELOAD"] = " ".join(libraries).strip()
        variables["SHORT_CALLS"] = f"{point.name} {point.nth}"
    return variables


def strace(output, point, *more):
    """The command of a tracer. Without a point it writes down all calls."""
    command = ["strace", "-I", "waiting", "-f", "-y", "-q", "-s", "64", "-o", output, *more]
    if point is None:
        return command
    if point.effect == SHORT:
        return []
    return command + ["-e", f"trace={point.name}", "-e",
                      f"inject={point.name}:{point.effect}:when={point.nth}"]


def tracer_of(pid):
    try:
        with open(f"/proc/{pid}/status", encoding="ascii", errors="replace") as file:
            return int(next(line for line in file if line.startswith("TracerPid")).split()[1])
    except (FileNotFoundError, ProcessLookupError):
        return 0


def attach(pid, output, point):
    """The tracer, if there is to be one; it is there then."""
    command = strace(output, point, "-p", str(pid))
    if not command:
        return None
    command.remove("-q")
    tracer = subprocess.Popen(command, stderr=subprocess.PIPE, bufsize=0, env=ENVIRONMENT)
    said = tracer.stderr.readline()
    if b" attached" not in said:
        tracer.wait()
        raise RuntimeError(said.decode(errors="replace"))
    return tracer


def detach(pid):
    """Takes the tracer off the process."""
    end = time.monotonic() + PATIENCE
    told = False
    while tracer := tracer_of(pid):
        if not told:
            try:
                os.kill(tracer, signal.SIGINT)
            except ProcessLookupError:
                pass
            told = True
        if time.monotonic() > end:
            raise Hung("the tracer stays")
        time.sleep(0.005)


def seen_in(output):
    try:
        with open(output, encoding="latin-1") as file:
            return list(parse(file.read()))
    except FileNotFoundError:
        return []
