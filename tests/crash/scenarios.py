"""What the agent is made to do, on what it finds."""

import os
import re
import struct
from typing import NamedTuple, Optional

SETTINGS = "localsettings.ini"
SHADOW_COPY = "localsettings.ini.good"
BACKUP = "localsettings.ini.bak"
LEGACY = "localsettings.xml"
IMPORTING = "localsettings.xml.importing"

CHANGED_GROUP = "ADMIN"
CHANGED_VALUE = struct.pack("<I", 4321)  # of its first parameter


class Save(NamedTuple):
    force: bool = False
    succeeds: bool = True


class Scenario(NamedTuple):
    """A start, a change over the bridge, and a save."""
    name: str
    files: dict  # in the state directory before the start: name to bytes
    save: Save = Save()
    edit: Optional[bytes] = None  # put into the settings file behind the agent's back
    keeps: tuple = ()  # contents that have to be somewhere in the directory for ever


def many_users(text, count):
    """The text with more users: made of its first one."""
    user = re.search(rb"        /USER=\n.*?\n        end=\n", text, re.S).group()
    users = b"".join(re.sub(rb"NAME=.*", b"NAME=user%d" % number, user, 1)
                     for number in range(count))
    return text.replace(user, users + user, 1)


def scenarios(source):
    """`source`: the folder of the project, for its examples."""
    def example(name):
        with open(os.path.join(source, "examples", name), "rb") as file:
            return file.read()

    settings = example(SETTINGS)
    legacy = example(LEGACY)
    edited = settings.replace(b"EXCHANGE_TIMEOUT=", b"EXCHANGE_TIMEOUT=1", 1)
    damaged = edited[:len(edited) // 2]
    older = settings.replace(b"IKE_PORT=", b"IKE_PORT=1", 1)
    return [
        Scenario("settings, save", {SETTINGS: settings}),
        Scenario("first start, save", {}),
        Scenario("earlier version, save", {LEGACY: legacy}, keeps=(legacy,)),
        Scenario("import cut short, save", {IMPORTING: legacy}, keeps=(legacy,)),
        Scenario("damaged, shadow copy, save",
                 {SETTINGS: damaged, SHADOW_COPY: settings, BACKUP: older},
                 keeps=(damaged,)),
        Scenario("damaged, .bak, save", {SETTINGS: damaged, BACKUP: settings}, keeps=(damaged,)),
        Scenario("edited, forced save", {SETTINGS: settings, SHADOW_COPY: settings}, Save(force=True),
                 edit=edited, keeps=(edited,)),
        Scenario("edited, refused save", {SETTINGS: settings, SHADOW_COPY: settings},
                 Save(succeeds=False), edit=edited, keeps=(edited,)),
        Scenario("many users, save", {SETTINGS: many_users(settings, 25)}),
    ]
