"""Starts the real agent on what a crash has left, and judges what it serves."""

import os
from typing import NamedTuple

from agent_process import Agent, Hung
from scenarios import SETTINGS, SHADOW_COPY


class Settings(NamedTuple):
    text: bytes  # of the settings file
    values: tuple  # of all groups, as the bridge serves them
    degraded: bool = False


class Expectation(NamedTuple):
    allowed: tuple  # of Settings: any one of them, as a whole
    keeps: tuple  # contents that have to be in some file


class Lost(Exception):
    """Settings were lost; says how."""


def read_files(directory):
    files = {}
    for name in sorted(os.listdir(directory)):
        with open(os.path.join(directory, name), "rb") as file:
            files[name] = file.read()
    return files


def write_files(directory, files):
    os.mkdir(directory, 0o700)
    for name, content in files.items():
        with open(os.path.join(directory, name), "wb") as file:
            file.write(content)


def unsealed(content):
    """A shadow copy without the line of its checksum."""
    seal = content.rfind(b"#xxh3-128=")
    return content if seal < 0 else content[:seal]


def settings_of(agent, state):
    client = agent.connect()
    try:
        values = client.read_all()
        degraded = client.status()["degraded"] is not None
    finally:
        client.close()
    return Settings(read_files(state).get(SETTINGS, b""), values, degraded)


def texts_of(files):
    """What the files hold, with and without a seal."""
    contents = set(files.values())
    return contents | {unsealed(content) for content in contents}


def recover(build, state, run, expectation):
    """Raises Lost unless the agent starts and serves what is expected, and all of it is there."""
    agent = Agent(build, state, run)
    try:
        if not agent.listening():
            raise Lost(f"no start, exit {agent.wait()}: {agent.said()}")
        found = settings_of(agent, state)
    except (OSError, Hung) as error:
        raise Lost(f"no service: {error}; {agent.said()}") from None
    finally:
        agent.kill()
    if found not in expectation.allowed:
        texts = [settings.text for settings in expectation.allowed]
        known = "of the expected text" if found.text in texts else "of another text"
        known += ", degraded" if found.degraded else ""
        raise Lost(f"other settings than expected are served, {known}: {agent.said()}")
    files = read_files(state)
    if not found.degraded and unsealed(files.get(SHADOW_COPY, b"")) != found.text:
        raise Lost("the shadow copy differs from the settings file after the start")
    for content in expectation.keeps:
        if content not in texts_of(files):
            raise Lost(f"{content[:30]!r}... is in no file any more: {', '.join(files)}")
