"""Single flipped bits in the settings file, with an intact shadow copy beside it: whatever the agent
makes of the file, what was saved last stays."""

import os

from agent_process import Agent, Hung
from recovery_check import Lost, read_files, settings_of, texts_of, write_files
from scenarios import SETTINGS, SHADOW_COPY


def positions(text, count):
    """So many bits, all over the text, each bit of a byte as often."""
    return [at * len(text) // count * 8 + at % 8 for at in range(count)]


def flip(build, text, shadow_copy, bit, directory):
    """Raises Lost. Returns what became of the start, in a word."""
    flipped = bytearray(text)
    flipped[bit // 8] ^= 1 << bit % 8
    state = os.path.join(directory, "state")
    os.mkdir(directory, 0o700)
    write_files(state, {SETTINGS: bytes(flipped), SHADOW_COPY: shadow_copy})
    for _ in range(2):
        agent = Agent(build, state, directory)
        try:
            if not agent.listening():
                raise Lost(f"no start, exit {agent.wait()}: {agent.said()}")
            found = settings_of(agent, state)
        except (OSError, Hung) as error:
            raise Lost(f"no service: {error}; {agent.said()}") from None
        finally:
            agent.kill()
        texts = texts_of(read_files(state))
        if text not in texts or bytes(flipped) not in texts:
            raise Lost(f"a text is gone: {agent.said()}")
    return "degraded" if found.degraded else ""
