"""Many clients for long, and agents that are killed meanwhile."""

import os
import sys

from line import Control, Line, Outcome

FOLDER = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path[:0] = [os.path.join(FOLDER, "soak"), os.path.join(FOLDER, "peers")]

import endurance  # noqa: E402

TARGETS = ("lparams_agent", "lparams_server")
SHORT_SECONDS = 6
CONTROL_SECONDS = 24


class SoakLine(Line):
    NAME = "soak"
    TRIED = ("16 clients: writes with revisions, saves, applies, watches; the agent is killed at "
             "random moments, and started again")
    WANTED = "0 lost acknowledged saves, 0 lost updates, events complete and in order, flat memory"
    MINUTES = 30
    BUILDS = {"release-32": TARGETS}
    SHORT = True

    def run(self, context):
        soak = endurance.Soak(context.build("release-32", *TARGETS), context)
        soak.go_on(SHORT_SECONDS if context.short else context.seconds)
        totals = dict(soak.totals, agents=soak.lives, growth=soak.growth)
        return Outcome(not soak.wrong, f"{soak.lives} agents, {totals['writes']} writes, "
                       f"{totals['conflicts']} conflicts, {totals['saves']} saves, "
                       f"{totals['notices']} notices, memory {soak.growth} KiB more: "
                       f"{len(soak.wrong)} finds", totals,
                       tuple(f"{wrong} (seed {context.seed})" for wrong in soak.wrong[:20]))

    def controls(self, context):
        build = context.build("release-32", *TARGETS, "slips")
        leak = {"LD_PRELOAD": os.path.join(build, "tests/slips.so"), "SLIP": "keep-memory"}
        return [self.control(build, context, *fault) for fault in (
            (endurance.Plan(forgetful_disk=True), "syncs keep nothing", "lost save"),
            (endurance.Plan(careless=True), "revisions do not count", "lost updates"),
            (endurance.Plan(forgets=100), "one event in a hundred is left out", "events of"),
            (endurance.Plan(environment=leak), "each client costs 16 KiB for ever",
             "memory grows"))]

    def control(self, build, context, plan, name, word):
        soak = endurance.Soak(build, context, plan)
        soak.go_on(CONTROL_SECONDS)
        named = [wrong for wrong in soak.wrong if word in wrong]
        return Control(name, bool(named), named[0] if named else f"nothing of it in {soak.wrong}")
