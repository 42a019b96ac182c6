"""Gateways on this machine: agents with state directories and sockets of their own."""

import json
import os
import signal
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "../crash"))

from agent_process import read_until  # noqa: E402
from bridge_client import BridgeClient  # noqa: E402

SETTINGS = "localsettings.ini"
LIMIT = 60  # seconds; only to end a hung client


class Gateway:
    """An agent, until close()."""

    def __init__(self, name, directory, programs, client, settings=None):
        """`settings`: a settings file to start with."""
        self.name = name
        self.client = client
        self.state = os.path.join(directory, "state")
        self.socket = os.path.join(directory, "a")
        os.mkdir(directory, 0o700)
        os.mkdir(self.state, 0o700)
        if settings is not None:
            with open(os.path.join(self.state, SETTINGS), "wb",
                      opener=lambda path, flags: os.open(path, flags, 0o600)) as file:
                file.write(settings)
        self.process = subprocess.Popen(
            [os.path.join(programs, "lparams_agent"), "--state-dir", self.state, "--socket",
             self.socket, "--module", os.path.join(programs, "lparams_server.so")],
            stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, bufsize=0)

    def wait_until_it_listens(self):
        said = bytearray()
        listens = read_until(self.process.stderr, b": listening ", said)
        if not listens:
            raise RuntimeError(f"{self.name} has ended: {said.decode(errors='replace')}")

    def close(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.communicate()

    def ctl(self, *words, document=None):
        """What the client prints."""
        return subprocess.run([self.client, "--socket", self.socket, *words], input=document,
                              stdout=subprocess.PIPE, text=True, timeout=LIMIT, check=True).stdout

    def get(self, name):
        return self.ctl("get", name).rstrip("\n")

    def status(self):
        return json.loads(self.ctl("status", "--json"))

    def traces(self):
        """What differs as soon as somebody has written or saved anything."""
        bridge = BridgeClient(self.socket)
        revisions = bridge.revisions()
        bridge.close()
        file = os.stat(os.path.join(self.state, SETTINGS))
        status = self.status()
        return (revisions, (file.st_ino, file.st_mtime_ns),
                [status[name] for name in ("writes", "history", "changed")])


def with_another_catalogue(programs, directory, name, other):
    """Copies of agent and module in which a parameter has another name, which is as long: that of the
    one text of the programs that has it."""
    os.mkdir(directory, 0o700)
    assert len(name) == len(other)
    for program in ("lparams_agent", "lparams_server.so"):
        with open(os.path.join(programs, program), "rb") as file:
            code = file.read()
        text = b"\0" + name.encode() + b"\0"
        if code.count(text) != 1:
            raise RuntimeError(f"{program} has {code.count(text)} texts {name}")
        path = os.path.join(directory, program)
        with open(path, "wb") as file:
            file.write(code.replace(text, b"\0" + other.encode() + b"\0"))
        os.chmod(path, 0o700)
    return directory
