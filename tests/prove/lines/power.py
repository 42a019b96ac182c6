"""Kills and power cuts at every step of load and save, and machines that lose their power."""

import os
import sys

import crash_runs
from line import Control, Line

FOLDER = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path[:0] = [os.path.join(FOLDER, "outage"), os.path.join(FOLDER, "soak")]

import disk  # noqa: E402
import outages  # noqa: E402

KINDS = {"kill": "kills", "power": "states after a power cut"}
CUTS = 200
SHORT_CUTS = 6
CONTROL_CUTS = 40


class Power(Line):
    NAME = "power"
    TRIED = ("the agent is killed, and the power cut, at every call of load and save; disks with ext4 "
             "and ext2 lose their power while it writes and saves")
    WANTED = "0 lost"
    MINUTES = 4
    BUILDS = {"release-32": crash_runs.TARGETS}
    SHORT = True

    def run(self, context):
        build = context.build("release-32", *crash_runs.TARGETS)
        quick = ("--quick", "--part", "2") if context.short else ()
        made = crash_runs.outcome(context, crash_runs.crash_test(
            context, build, "--kinds", ",".join(KINDS), *quick), KINDS)
        try:
            disk.keep_mounts_private()
        except disk.NoDisk as lack:
            return made._replace(result=f"{made.result}; no real power cuts: {lack}")
        cuts = outages.Outages(build, context).go_on(SHORT_CUTS if context.short else CUTS,
                                                     context.seconds / 2)
        return made._replace(
            met=made.met and not cuts.lost and cuts.saves() > 0,
            result=f"{made.result}; {cuts.cuts} real power cuts, {cuts.saves()} saves before them: "
                   f"{len(cuts.lost)} lost",
            figures=dict(made.figures, **{"real power cuts": cuts.cuts, "real saves": cuts.saves()}),
            finds=made.finds + tuple(cuts.lost))

    def controls(self, context):
        made = [crash_runs.control(context, "no-sync", "fsync of files is left out",
                                   "--kinds", "power", "--only", "settings, save")]
        name = "fsync of files is left out, for real"
        try:
            disk.keep_mounts_private()
        except disk.NoDisk as lack:
            return made + [Control(name, False, f"cannot run: {lack}")]
        build = context.build("release-32", *crash_runs.TARGETS, "slips")
        slip = {"LD_PRELOAD": os.path.join(build, crash_runs.SLIPS), "SLIP": "no-sync"}
        lost = outages.Outages(build, context, slip).go_on(CONTROL_CUTS, context.seconds).lost
        return made + [Control(name, bool(lost), f"{len(lost)} lost, such as {lost[0][:120]!r}"
                               if lost else "nothing was noticed")]
