"""Every request that a client can make of the agent."""

import struct

from bridge_client import READ, SAVE, WRITE, agent_command, assignment, block, module_command

NAME = "IKE.EXCHANGE_TIMEOUT"
STATUS = b"\x02"
SUBSCRIBE = b"\x03"
SAVES = ("module's save", "save", "apply, saved")


def some_value(number):
    """Of the parameter that the requests change."""
    return str(10 + number % 500)


def requests(record, number):
    """Every request that there is. `number`: makes some of them change something each time."""
    step = assignment(NAME, some_value(number))
    return {
        "read": module_command(READ, block(b"IKE")),
        "write": module_command(WRITE, block(b"ADMIN") + struct.pack("<I", number % 80000) + record[4:]),
        "module's save": module_command(SAVE),
        "status": STATUS,
        "subscribe": SUBSCRIBE,
        "schema": agent_command("schema"),
        "get": agent_command("get"),
        "set": agent_command("set", step),
        "try": agent_command("try", step),
        "watch": agent_command("watch"),
        "apply": agent_command("apply", struct.pack("<IB", 600, 0) + block(b"") + step),
        "apply, saved": agent_command("apply", struct.pack("<IB", 0, 1) + block(b"x") + step),
        "confirm": agent_command("confirm"),
        "save": agent_command("save", b"\0" + block(b"a note")),
        "history": agent_command("history"),
        "revision": agent_command("revision", struct.pack("<Q", 1)),
    }
