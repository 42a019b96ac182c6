"""What a client does with the agent while calls are disturbed, and what it was told."""

import struct

from bridge_client import block

NAME = "IKE.EXCHANGE_TIMEOUT"


def agent_command(name, data=b""):
    return b"\x04" + block(name.encode()) + data


def step(value):
    return bytes(4) + b"\1" + block(NAME.encode()) + block(str(value).encode())


class Told:
    """What was acknowledged. None of the values may be lost; `maybe`: those that were sent."""

    def __init__(self, value):
        self.running = self.saved = value
        self.maybe = {value}  # what may run
        self.maybe_saved = {value}  # what the files may hold
        self.wordless = []

    def good(self, what, reply):
        if reply.result != 1 and not reply.text:
            self.wordless.append(what)
        return reply.result == 1


def change(client, told, value):
    told.maybe.add(value)
    if told.good("set", client.exchange(agent_command("set", step(value)))):
        told.running = value
        told.maybe = {value}


def save(client, told, note=b"a note"):
    told.maybe_saved |= told.maybe
    if told.good("save", client.exchange(agent_command("save", b"\0" + block(note)))):
        told.saved = told.running
        told.maybe_saved = set(told.maybe)


def converse(connect, told):
    """Every kind of request. Raises OSError when the agent ends the session."""
    watcher = client = None
    try:
        watcher = connect()
        watcher.exchange(agent_command("watch"))
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
        if told.good("apply", client.exchange(
                agent_command("apply", struct.pack("<IB", 600, 0) + block(b"") + step(102)))):
            told.running, told.maybe = 102, {101, 102}
        if told.good("confirm", client.exchange(agent_command("confirm"))):
            told.maybe = {102}
        for command in ("schema", "get", "history"):
            told.good(command, client.exchange(agent_command(command)))
        told.good("revision", client.exchange(agent_command("revision", struct.pack("<Q", 1))))
        change(client, told, 103)
        told.maybe_saved |= told.maybe
        if told.good("module's save", client.save()):
            told.saved, told.maybe_saved = told.running, set(told.maybe)
    finally:
        for one in (client, watcher):
            if one:
                one.close()
