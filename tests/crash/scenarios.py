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
    ever: bool = True  # if it does not succeed: a forced one does


class Scenario(NamedTuple):
    """A start, a change over the bridge, and a save."""
    name: str
    files: dict  # in the state directory before the start: name to bytes
    save: Save = Save()
    edits: dict = {}  # made behind the agent's back: name to bytes, or to None for a removal
    keeps: tuple = ()  # contents that have to be somewhere in the directory for ever
    degraded: bool = False  # the start is
    changes: bool = True
    text: Optional[bytes] = None  # what else is written, which no start would accept

    def options(self):
        return ("--accept-any",) if self.text else ()

    def is_complete(self):
        """The settings file is, so that it is served whatever the disk says."""
        return self.files.get(SETTINGS, b"").endswith(b"\nend=\n")

    def is_large(self):
        """Takes a while in each of its runs."""
        return len(self.text or b"") > 1024 * 1024

    def changed_record(self, record):
        rest = record[len(CHANGED_VALUE):]
        if self.text:  # the last parameter, behind a flag
            rest = rest[:1] + struct.pack("<I", len(self.text)) + self.text
        return CHANGED_VALUE + rest


def many_users(text, count):
    """The text with more users: made of its first one."""
    user = re.search(rb"        /USER=\n.*?\n        end=\n", text, re.S).group()
    users = b"".join(re.sub(rb"NAME=.*", b"NAME=user%d" % number, user, 1)
                     for number in range(count))
    return text.replace(user, users + user, 1)


def example(source, name):
    with open(os.path.join(source, "examples", name), "rb") as file:
        return file.read()


def scenarios(source, sealed):
    """`source`: the folder of the project, for its examples. `sealed` makes a shadow copy of a
    text."""
    settings = example(source, SETTINGS)
    legacy = example(source, LEGACY)
    edited = settings.replace(b"EXCHANGE_TIMEOUT=", b"EXCHANGE_TIMEOUT=1", 1)
    damaged = edited[:len(edited) // 2]
    older = settings.replace(b"IKE_PORT=", b"IKE_PORT=1", 1)
    flipped = settings.replace(b"NATT_PORT=4500", b"NATT_PORT=45p0", 1)  # one bit: loaded, reported
    well_formed = {SETTINGS: flipped, SHADOW_COPY: sealed(settings)}
    both = {SETTINGS: settings, SHADOW_COPY: sealed(settings)}
    broken = legacy[:len(legacy) // 2]
    unreadable = Save(succeeds=False, ever=False)
    return [
        Scenario("settings, save", {SETTINGS: settings}),
        Scenario("first start, save", {}),
        Scenario("earlier version, save", {LEGACY: legacy}, keeps=(legacy,)),
        Scenario("import cut short, save", {IMPORTING: legacy}, keeps=(legacy,)),
        Scenario("broken import, forced save", {LEGACY: broken}, Save(force=True), keeps=(broken,),
                 degraded=True),
        Scenario("broken import, refused save", {LEGACY: broken}, Save(succeeds=False),
                 keeps=(broken,), degraded=True),
        Scenario("damaged, shadow copy, save",
                 {SETTINGS: damaged, SHADOW_COPY: settings, BACKUP: older},
                 keeps=(damaged,)),
        Scenario("damaged, .bak, save", {SETTINGS: damaged, BACKUP: settings}, keeps=(damaged,)),
        Scenario("well-formed, forced save", well_formed, Save(force=True),
                 keeps=(flipped, settings), degraded=True),
        Scenario("well-formed, refused save", well_formed, Save(succeeds=False),
                 keeps=(flipped, settings), degraded=True),
        Scenario("edited, forced save", {SETTINGS: settings, SHADOW_COPY: settings}, Save(force=True),
                 edits={SETTINGS: edited}, keeps=(edited,)),
        Scenario("edited, refused save", {SETTINGS: settings, SHADOW_COPY: settings},
                 Save(succeeds=False), edits={SETTINGS: edited}, keeps=(edited,)),
        Scenario("twin gone, save", both, edits={SHADOW_COPY: None}),
        Scenario("twin gone, unchanged, save", both, edits={SHADOW_COPY: None}, changes=False),
        Scenario("twin cut off, save", both, edits={SHADOW_COPY: settings[:1000]}),
        Scenario("too large, refused save", both, unreadable,
                 text=b"x" * (16 * 1024 * 1024 - 100)),
        Scenario("breaks out, refused save", both, unreadable, text=b"a\n    end=\nend=\n"),
        Scenario("many users, save", {SETTINGS: many_users(settings, 25)}),
    ]
