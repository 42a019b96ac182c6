"""System calls that fail, and disks in trouble."""

import crash_runs
from line import Line

KINDS = {"error": "failed calls", "full": "full disks", "read-only": "read-only disks"}


class Calls(Line):
    NAME = "calls"
    TRIED = "every call of load and save fails, with each of its errors; full and read-only disks"
    WANTED = "0 lost, 0 unreported, 0 that hang"
    MINUTES = 5
    BUILDS = {"release-32": crash_runs.TARGETS}
    SHORT = True

    def run(self, context):
        build = context.build("release-32", *crash_runs.TARGETS)
        quick = ("--quick",) if context.short else ()
        counts = crash_runs.crash_test(context, build, "--kinds", ",".join(KINDS), *quick)
        return crash_runs.outcome(context, counts, KINDS)

    def controls(self, context):
        return [crash_runs.control(context, "deaf", "errors of writes are taken for success",
                                   "--kinds", "error", "--only", "settings, save")]
