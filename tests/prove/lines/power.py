"""Kills and power cuts at every step of load and save."""

import crash_runs
from line import Line

KINDS = {"kill": "kills", "power": "states after a power cut"}


class Power(Line):
    NAME = "power"
    TRIED = "the agent is killed, and the power cut, at every call of load and save"
    WANTED = "0 lost"
    MINUTES = 3
    BUILDS = {"release-32": crash_runs.TARGETS}
    SHORT = True

    def run(self, context):
        build = context.build("release-32", *crash_runs.TARGETS)
        quick = ("--quick",) if context.short else ()
        counts = crash_runs.crash_test(context, build, "--kinds", ",".join(KINDS), *quick)
        return crash_runs.outcome(context, counts, KINDS)

    def controls(self, context):
        return [crash_runs.control(context, "no-sync", "fsync of files is left out",
                                   "--kinds", "power", "--only", "settings, save")]
