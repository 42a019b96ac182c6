"""A client that speaks of single settings, and hears what happens to them."""

import struct
from typing import NamedTuple, Optional

from bridge_client import NOTICE, BridgeClient, assignment, block

CONFLICT = 9  # a reason
RUNNING, SAVED_VALUE, DEFAULT, BEFORE = 1, 2, 4, 16
PARAMETER = 1


class Refused(Exception):
    """The agent has said no; says why."""


class Unchanged(Exception):
    """The value was there already."""


class Value(NamedTuple):
    running: Optional[str] = None
    saved: Optional[str] = None
    default: Optional[str] = None
    before: Optional[str] = None


class Notice(NamedTuple):
    what: int
    revision: int
    group: str
    text: str
    changes: dict  # name to Value


class Parts:
    """What a message is made of, from its front."""

    def __init__(self, data):
        self.data, self.place = data, 0

    def number(self, form):
        (value,) = struct.unpack_from("<" + form, self.data, self.place)
        self.place += struct.calcsize("<" + form)
        return value

    def string(self):
        size = self.number("I")
        self.place += size
        return self.data[self.place - size:self.place].decode()

    def value(self, present=(RUNNING, SAVED_VALUE, DEFAULT, BEFORE)):
        flags = self.number("B")
        made = [self.string() if flags & flag else None for flag in present]
        return Value(*made) if len(made) == 4 else Value(running=made[0], before=made[1])

    def at_end(self):
        return self.place >= len(self.data)


class Store:
    """Raises OSError as soon as the agent is gone, and Refused."""

    def __init__(self, path):
        self.client = BridgeClient(path)

    def close(self):
        self.client.close()

    def ask(self, name, data=b""):
        reply = self.client.ask(name, data)
        if reply.result != 1 and reply.reason != CONFLICT:
            raise Refused(f"{name}: {reply.text}")
        return reply

    def get(self, name):
        """The value, and the revision of its group."""
        parts = Parts(self.ask("get", block(name.encode())).output)
        revisions = {parts.string(): parts.number("Q") for _ in range(parts.number("I"))}
        parts.string()
        return parts.value().running, revisions[name.partition(".")[0].partition("[")[0]]

    def set(self, name, value, revision=None):
        """The new revision of the group. None: somebody else was there before. Raises Unchanged."""
        reply = self.ask("set", assignment(name, value, revision))
        return None if reply.result != 1 else revision_in(reply)

    def apply(self, name, value, seconds):
        """False: others have written meanwhile, or other changes wait."""
        return self.ask("apply", struct.pack("<IB", seconds, 0) + block(b"") +
                        assignment(name, value)).result == 1

    def confirm(self):
        """False: nothing waits any more."""
        return self.ask("confirm").result == 1

    def save(self, message):
        self.ask("save", b"\0" + block(message.encode()))

    def watch(self):
        self.ask("watch")

    def notice(self):
        """The next one."""
        frame = self.client.receive_frame()
        parts = Parts(frame)
        if parts.number("B") != NOTICE:
            raise Refused(f"no notice: {frame!r}")
        what, _when, _user, _process, revision = (parts.number(form) for form in "BQIiQ")
        parts.number("Q")  # the reason, and how much is left out
        parts.string()
        group, text, changes = parts.string(), parts.string(), {}
        while not parts.at_end():
            kind, name = parts.number("B"), parts.string()
            value = parts.value((RUNNING, BEFORE))
            if kind == PARAMETER:
                changes[name] = value
        return Notice(what, revision, group, text, changes)


def revision_in(reply):
    parts = Parts(reply.output)
    groups = parts.number("I")
    if groups == 0:
        raise Unchanged
    if groups != 1:
        raise Refused(f"a write of one group made others: {reply.output!r}")
    parts.string()
    return parts.number("Q")
