"""Bits of the settings file that flip."""

import crash_runs
from line import Line

KINDS = {"flip": "flipped bits"}
FLIPS_PER_SECOND = 30


class Rot(Line):
    NAME = "rot"
    TRIED = "single bits of the settings file are flipped, all over it"
    WANTED = "what was saved last is kept, and so is what was found"
    MINUTES = 5
    BUILDS = {"release-32": crash_runs.TARGETS}
    SHORT = True

    def run(self, context):
        build = context.build("release-32", *crash_runs.TARGETS)
        flips = 20 if context.short else max(100, int(context.seconds * FLIPS_PER_SECOND))
        counts = crash_runs.crash_test(context, build, "--kinds", "flip", "--flips", str(flips))
        return crash_runs.outcome(context, counts, KINDS)

    def controls(self, context):
        return [crash_runs.control(context, "no-copies", "what is found is not kept",
                                   "--kinds", "flip")]
