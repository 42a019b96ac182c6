"""The client, of which a call is disturbed."""

import os
import re
import subprocess

import disturbance
import errnos
from agent_process import ENVIRONMENT
from life import PATIENCE, Wrong

NAME = "IKE.EXCHANGE_TIMEOUT"
STATUSES = (65, 69, 70, 74, 75, 77, 78)
COMMANDS = {
    "set": ("set", NAME + "={value}"),
    "apply": ("apply", "{document}"),
    "save": ("save",),
    "get": ("get", NAME),
    "backup": ("backup",),
    "history": ("history",),
    "check": ("check", "{settings}"),
    "fmt": ("fmt", "{settings}"),
}


class Peer:
    """Of one agent, in a directory of its own."""

    def __init__(self, build, agent, directory, settings, more=None):
        self.build, self.agent, self.directory = build, agent, directory
        self.settings, self.more = settings, more
        self.number = 0
        self.wanted = {}  # what a command prints if nothing disturbs it

    def run(self, what, point=None, traced=False):
        """Returns how it ended, and the calls that were traced."""
        self.number += 1
        value = 10 + self.number % 500
        document = os.path.join(self.directory, "document")
        with open(document, "w", encoding="ascii") as file:
            file.write(f"{NAME}={value}\n")
        trace = os.path.join(self.directory, "trace")
        if os.path.exists(trace):
            os.unlink(trace)
        command = disturbance.strace(trace, point) if point or traced else []
        command += [os.path.join(self.build, "lparamsctl"), "--socket", self.agent.socket]
        command += [part.format(value=value, document=document, settings=self.settings)
                    for part in COMMANDS[what]]
        ended = subprocess.run(
            command, env=dict(ENVIRONMENT, **disturbance.environment(self.build, point, self.more)),
            stdin=subprocess.DEVNULL, capture_output=True, timeout=PATIENCE, check=False)
        return ended, disturbance.seen_in(trace), value

    def reference(self, what):
        """The calls of the command. Learns what it prints."""
        ended, seen, _ = self.run(what, traced=True)
        if ended.returncode != 0:
            raise RuntimeError(f"{what}: {ended}")
        self.wanted[what] = ended.stdout
        return seen

    def disturb(self, point):
        """Raises Wrong. Returns the calls that were disturbed."""
        what = point.part.split()[1]
        try:
            if what == "save":
                self.run("set")
            ended, seen, value = self.run(what, point)
        except subprocess.TimeoutExpired:
            raise Wrong("the client does not end") from None
        seen = [call for call in seen if call.disturbed]
        told_nothing = any(call.arguments.startswith("2") for call in seen)
        said = ended.stderr.decode(errors="replace")
        if ended.returncode == 0:
            self.check_done(what, ended, value)
        elif errnos.is_gentle(point.name, point.effect):
            raise Wrong(f"the client ended with {ended.returncode}: {said}")
        elif ended.returncode not in STATUSES or not (said or told_nothing):
            raise Wrong(f"the client ended with {ended.returncode}: {said}")
        return seen

    def check_done(self, what, ended, value):
        if what in ("get", "backup", "check", "fmt"):
            after, _, _ = self.run(what)
            if after.stdout != ended.stdout:
                raise Wrong(f"it succeeded, and printed {ended.stdout[-200:]!r}")
        elif what in ("set", "apply"):
            after, _, _ = self.run("get")
            if not re.search(rf"\b{value}\b", after.stdout.decode()):
                raise Wrong(f"it succeeded, and {after.stdout.decode()!r} is served, not {value}")
        elif what == "save":
            with open(os.path.join(os.path.dirname(self.agent.socket), "..", "state",
                                   "localsettings.ini"), encoding="latin-1") as file:
                held = re.search(r"\bEXCHANGE_TIMEOUT=(\d+)", file.read())[1]
            after, _, _ = self.run("get")
            if not re.search(rf"\b{held}\b", after.stdout.decode()):
                raise Wrong(f"it saved, and the file holds {held}")
