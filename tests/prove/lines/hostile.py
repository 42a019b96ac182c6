"""Peers that mean no good: are the others served, and is nothing kept of them?"""

import os
import sys

from line import Control, Line, Outcome

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "peers"))

import siege  # noqa: E402

SESSIONS = 100_000
SHORT_SESSIONS = 500
TARGETS = ("lparams_agent", "lparams_server", "lparamsctl")


class Hostile(Line):
    NAME = "hostile"
    TRIED = ("100,000 mutated sessions, 300 clients at once, slow bytes, no reads, half closes, "
             "floods of connects, no descriptors or threads left, clients stopped in the middle")
    WANTED = ("the others are served, their 99th percentile at most 10 times the quiet one; memory "
              "and descriptors back to the start")
    MINUTES = 4
    BUILDS = {"release-32": TARGETS}
    SHORT = True

    def run(self, context):
        build = context.build("release-32", *TARGETS)
        made = siege.besiege(build, context, SHORT_SESSIONS if context.short else SESSIONS,
                             patience=0.3 if context.short else 6)
        finds = made.finds + siege.exhaust(build, context)
        return Outcome(not finds, f"{made.sessions} mutated sessions; longest 99th percentile "
                       f"{made.worst:.1f} times the quiet one: {len(finds)} finds", made.figures,
                       tuple(f"{find} (seed {context.seed})" for find in finds))

    def controls(self, context):
        build = context.build("release-32", *TARGETS, "slips")
        return [self.control(build, context, *fault) for fault in (
            ("keep-descriptors", 1000, "every tenth session's descriptor is kept", "descriptors"),
            ("keep-memory", 1000, "each client costs 16 KiB for ever", "resident"),
            ("one-at-a-time", 100, "sessions wait for each other", "99th percentile"))]

    def control(self, build, context, slip, sessions, name, word):
        environment = {"LD_PRELOAD": os.path.join(build, "tests/slips.so"), "SLIP": slip}
        finds = siege.besiege(build, context, sessions, 0.5, environment).finds
        named = [find for find in finds if word in find]
        return Control(name, bool(named), named[0] if named else f"nothing of it in {finds}")
