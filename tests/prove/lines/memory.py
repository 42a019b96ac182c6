"""Memory that runs out."""

import os
import sys

from line import Control, Line, Outcome

FOLDER = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(FOLDER, "shortage"))

import trials  # noqa: E402

TARGETS = ("lparams_agent", "lparams_server", "lparamsctl", "failing_memory")
FEW = 2  # allocations of each kind
MANY = 20  # of the client: of some it knows nothing but to end
PER_SECOND = 0.7  # allocations of each kind for each second
MORE_THAN_THE_END_MAKES = 200


class Memory(Line):
    NAME = "memory"
    TRIED = ("every n-th allocation fails once, then for good: start, each command in a session, the "
             "end, the client's apply")
    WANTED = ("no crash, no leak, no lock left held, an acknowledged save survives, an error in "
              "words")
    MINUTES = 5
    BUILDS = {"release-32": TARGETS}
    SHORT = True

    def run(self, context):
        made = trials.Trials(context.build("release-32", *TARGETS), context)
        most = FEW if context.short else max(50, int(PER_SECOND * context.seconds))
        try:
            made.commands(most)
            made.starts(most)
            made.ends(MORE_THAN_THE_END_MAKES)
            made.client(max(most, MANY))
        finally:
            made.close()
        return Outcome(not made.finds, f"{sum(made.counts.values())} allocations, of each kind at "
                       f"most {most} tried: {len(made.finds)} finds", made.counts,
                       tuple(f"{find} (seed {context.seed})" for find in made.finds))

    def controls(self, context):
        build = context.build("release-32", *TARGETS, "slips")
        return [self.control(build, context, *fault) for fault in (
            ("keep-memory", "each client costs 16 KiB for ever", "bytes are kept"),
            ("unchecked-memory", "what malloc() gives is not looked at", "the agent ended with"),
            ("keep-lock", "a lock is held on after there was no memory", "not served"))]

    def control(self, build, context, slip, name, word):
        made = trials.Trials(build, context, os.path.join(build, "tests/slips.so"), {"SLIP": slip})
        made.enough = 1
        try:
            made.commands(MANY)
        finally:
            made.close()
        named = [find for find in made.finds if word in find]
        return Control(name, bool(named), named[0] if named else f"nothing of it in {made.finds}")
