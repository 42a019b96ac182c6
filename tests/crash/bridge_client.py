"""A client of the agent's bridge: just what the tests in Python ask for."""

import json
import socket
import struct
from typing import NamedTuple

MODULE = 13
WRITE, READ, SAVE = 0, 1, 2
FORCE = 2
NOTICE = 131
# What a notice tells of.
WRITTEN, WRITTEN_IN_PART, SAVED, NOTHING_TO_SAVE, NOT_SAVED = 1, 2, 3, 4, 5
DEGRADED, AGENT_ENDS = 7, 9
GROUPS = ("IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS")
DEADLINE = 30  # seconds; only to end a hung agent


class Reply(NamedTuple):
    result: int
    text: str  # why it failed
    output: bytes
    revision: int  # of the group, where there is one
    reason: int  # of the failure, 0 if there is none


def block(data):
    return struct.pack("<I", len(data)) + data


def module_command(number, record=b"", flags=0):
    return struct.pack("<BBiiQ", 1, flags, MODULE, number, 0) + record


def agent_command(name, data=b""):
    return b"\x04" + block(name.encode()) + data


def assignment(name, value, revision=None):
    """What set, try and apply take. `revision`: the one that the group of the name has to have."""
    revisions = struct.pack("<I", 0)
    if revision is not None:
        group = name.partition(".")[0].partition("[")[0]
        revisions = struct.pack("<I", 1) + block(group.encode()) + struct.pack("<Q", revision)
    return revisions + b"\1" + block(name.encode()) + block(value.encode())


class BridgeClient:
    """Raises OSError as soon as the agent is gone."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(DEADLINE)
        self.socket.connect(path)
        hello = b"LPBR" + struct.pack("<I", 1)
        self.socket.sendall(hello)
        if self.receive(len(hello)) != hello:
            raise OSError("the agent speaks another protocol")

    def close(self):
        self.socket.close()

    def write(self, group, record):
        return self.command(WRITE, block(group.encode()) + record)

    def read(self, group):
        reply = self.command(READ, block(group.encode()))
        if reply.result != 1:
            raise OSError(f"{group} cannot be read: {reply.text}")
        return reply.output

    def read_all(self):
        """The records of all groups; equal values give equal bytes."""
        return tuple(self.read(group) for group in GROUPS)

    def revisions(self):
        """Of all groups; those of a group differ if it was written meanwhile."""
        return {group: self.command(READ, block(group.encode())).revision for group in GROUPS}

    def save(self, force=False):
        return self.command(SAVE, flags=FORCE if force else 0)

    def status(self):
        return json.loads(self.exchange(struct.pack("<B", 2)).output)

    def command(self, number, record=b"", flags=0):
        return self.exchange(module_command(number, record, flags))

    def ask(self, name, data=b""):
        return self.exchange(agent_command(name, data))

    def exchange(self, request):
        self.socket.sendall(block(request))
        frame = self.receive_frame()
        result, reason, revision, length = struct.unpack_from("<iIQI", frame, 1)
        text_begin = 1 + struct.calcsize("<iIQI")
        return Reply(result, frame[text_begin:text_begin + length].decode(),
                     frame[text_begin + length:], revision, reason)

    def receive_frame(self):
        return self.receive(struct.unpack("<I", self.receive(4))[0])

    def receive(self, size):
        data = b""
        while len(data) < size:
            part = self.socket.recv(size - len(data))
            if not part:
                raise OSError("the agent closed the connection")
            data += part
        return data
