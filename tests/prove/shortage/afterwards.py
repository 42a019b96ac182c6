"""How an agent is after a request without memory."""

import re
import subprocess

from agent_process import Hung
from bridge_client import block
from every_request import NAME, SAVES
from recovery_check import read_files, unsealed
from scenarios import SETTINGS, SHADOW_COPY

DYING = 2  # seconds


def what_is_wrong(agent, state, what, said):
    """With the agent, or with its answer to the request; empty if nothing is. `said`: the reply, what
    the connection failed with, or in words why there is no reply. `state`: its directory."""
    if isinstance(said, str):
        return said
    if not isinstance(said, OSError) and said.result != 1 and not said.text:
        return f"it failed without a word: {said}"
    if has_ended(agent, said):
        return how_it_ended(agent)
    try:
        client = agent.connect()
        client.read_all()  # no lock is held
        client.write("LOG", client.read("LOG"))
        wrong = what_is_lost(client, state, said) if what in SAVES else ""
        client.close()
        return wrong
    except (OSError, Hung) as error:
        if has_ended(agent, error):
            return how_it_ended(agent)
        return f"not served afterwards: {error!r}; {agent.said()[-500:]}"


def what_is_lost(client, state, said):
    """Of a save."""
    files = read_files(state)
    acknowledged = not isinstance(said, OSError) and said.result == 1
    value = client.ask("get", block(NAME.encode())).output
    running = re.search(rb"TIMEOUT.....(\d+)", value, re.S).group(1)
    held = re.search(rb"\bEXCHANGE_TIMEOUT=(\d+)", files[SETTINGS]).group(1)
    if acknowledged and held != running:
        return "a save was acknowledged, and is not in the file"
    if acknowledged and unsealed(files[SHADOW_COPY]) != files[SETTINGS]:
        return "a save was acknowledged, and is not in the shadow copy"
    again = client.save()
    return "" if again.result == 1 else f"no save afterwards: {again.text}"


def has_ended(agent, said):
    """Where a session ended without a reply, the agent may be about to end."""
    try:
        agent.process.wait(DYING if isinstance(said, ConnectionResetError) else 0)
        return True
    except subprocess.TimeoutExpired:
        return False


def how_it_ended(agent):
    return f"the agent ended with {agent.process.returncode}: {agent.said()[-500:]}"
