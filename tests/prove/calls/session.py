"""What a client does with the agent while calls are disturbed, and what it was told."""

import struct

from bridge_client import NOTHING_TO_SAVE, NOTICE, SAVED, assignment, block

NAME = "IKE.EXCHANGE_TIMEOUT"


class Told:
    """What was acknowledged. None of the values may be lost; `maybe`: those that were sent."""

    def __init__(self, value):
        self.running = self.saved = value
        self.maybe = {value}  # what may run
        self.maybe_saved = {value}  # what the files may hold
        self.saves = 0  # acknowledged
        self.wordless = []
        self.refused = []  # with the words

    def good(self, what, reply):
        if reply.result != 1:
            self.refused.append(f"{what} ({reply.text})")
        if reply.result != 1 and not reply.text:
            self.wordless.append(what)
        return reply.result == 1


def change(client, told, value):
    told.maybe.add(value)
    if told.good("set", client.ask("set", assignment(NAME, str(value)))):
        told.running = value
        told.maybe = {value}


def save(client, told, note=b"a note"):
    told.maybe_saved |= told.maybe
    if told.good("save", client.ask("save", b"\0" + block(note))):
        told.saved = told.running
        told.maybe_saved = set(told.maybe)
        told.saves += 1


def hear_of_saves(watcher, count):
    """Waits until the watcher has been told of so many."""
    while count > 0:
        frame = watcher.receive_frame()
        count -= frame[0] == NOTICE and frame[1] in (SAVED, NOTHING_TO_SAVE)


def converse(connect, told):
    """Every kind of request. Raises OSError when the agent ends the session."""
    watcher = client = None
    try:
        watcher = connect()
        watcher.ask("watch")
        client = connect()
        told.good("status", client.exchange(b"\x02"))
        told.good("read", client.command(1, block(b"IKE")))
        client.write("LOG", client.read("LOG"))
        told.good("subscribe", client.exchange(b"\x03"))
        client.close()
        client = connect()
        change(client, told, 101)
        save(client, told)
        told.maybe |= {102}
        if told.good("apply", client.ask(
                "apply", struct.pack("<IB", 600, 0) + block(b"") + assignment(NAME, "102"))):
            told.running, told.maybe = 102, {101, 102}
        if told.good("confirm", client.ask("confirm")):
            told.maybe = {102}
        for command in ("schema", "get", "history"):
            told.good(command, client.ask(command))
        told.good("revision", client.ask("revision", struct.pack("<Q", 1)))
        change(client, told, 103)
        told.maybe_saved |= told.maybe
        if told.good("module's save", client.save()):
            told.saved, told.maybe_saved = told.running, set(told.maybe)
            told.saves += 1
        hear_of_saves(watcher, told.saves)
    finally:
        for one in (client, watcher):
            if one:
                one.close()
