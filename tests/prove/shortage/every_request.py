"""Every request that a client can make of the agent."""

import struct

from bridge_client import block

NAME = "IKE.EXCHANGE_TIMEOUT"
STATUS = b"\x02"
SUBSCRIBE = b"\x03"
SAVES = ("module's save", "save", "apply, saved")


def agent_command(name, data=b""):
    return b"\x04" + block(name.encode()) + data


def module_command(number, data=b""):
    return struct.pack("<BBiiQ", 1, 0, 13, number, 0) + data


def step(value):
    return bytes(4) + b"\1" + block(NAME.encode()) + block(value.encode())


def requests(record, number):
    """Every request that there is. `number`: makes some of them change something each time."""
    value = str(10 + number % 500)
    return {
        "read": module_command(1, block(b"IKE")),
        "write": module_command(0, block(b"ADMIN") + struct.pack("<I", number % 80000) + record[4:]),
        "module's save": module_command(2),
        "status": STATUS,
        "subscribe": SUBSCRIBE,
        "schema": agent_command("schema"),
        "get": agent_command("get"),
        "set": agent_command("set", step(value)),
        "try": agent_command("try", step(value)),
        "watch": agent_command("watch"),
        "apply": agent_command("apply", struct.pack("<IB", 600, 0) + block(b"") + step(value)),
        "apply, saved": agent_command("apply", struct.pack("<IB", 0, 1) + block(b"x") + step(value)),
        "confirm": agent_command("confirm"),
        "save": agent_command("save", b"\0" + block(b"a note")),
        "history": agent_command("history"),
        "revision": agent_command("revision", struct.pack("<Q", 1)),
    }
