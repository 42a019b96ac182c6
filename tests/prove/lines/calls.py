"""System calls that fail, are interrupted, short or late, and disks in trouble."""

import os
import sys

import crash_runs
from line import CannotRun, Control, Line, Outcome

FOLDER = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.append(os.path.join(FOLDER, "calls"))

import agent_process  # noqa: E402
import errnos  # noqa: E402
import life  # noqa: E402
import rounds  # noqa: E402

KINDS = {"error": "failed calls of load and save", "full": "full disks",
         "read-only": "read-only disks"}
TARGETS = crash_runs.TARGETS + ("lparamsctl", "short_calls")
LEGACY_SYSTEM_FILE = "/etc/kestrel/localsettings.xml"
SHORT_SECONDS = 2
SHORT_PARTS = 1  # of the agent's life and of the client's commands
AGENT, CLIENT = 0.4, 0.15  # of the time
LITTLE = 240  # seconds, in which not everything can be tried


class Calls(Line):
    NAME = "calls"
    TRIED = ("system calls of agent and client fail with each of their errors, are interrupted, take "
             "one byte, come late; every call of load and save fails; full and read-only disks")
    WANTED = "0 lost, 0 unreported, 0 that hang"
    MINUTES = 8
    BUILDS = {"release-32": TARGETS}
    SHORT = True

    def run(self, context):
        build = context.build("release-32", *TARGETS)
        if reason := agent_process.why_no_tracer():
            raise CannotRun(f"calls cannot be traced here: {reason}")
        if os.path.exists(LEGACY_SYSTEM_FILE):
            raise CannotRun(f"{LEGACY_SYSTEM_FILE} exists: the agent would import and delete it")
        made = rounds.Rounds(build, context)
        parts, commands = life.PARTS, rounds.client_parts()
        if context.short:
            parts = context.random.sample(parts, SHORT_PARTS)
            commands = context.random.sample(commands, SHORT_PARTS) + ["client set"]
        made.try_all(parts, SHORT_SECONDS if context.short else AGENT * context.seconds)
        made.try_all(commands, SHORT_SECONDS if context.short else CLIENT * context.seconds)
        quick = ("--quick",) if context.short or context.seconds < LITTLE else ()
        if context.short:
            quick += ("--part", "4")
        counts = crash_runs.crash_test(context, build, "--kinds", ",".join(KINDS), *quick)
        disk = crash_runs.outcome(context, counts, KINDS)
        tried = (f"{made.counts['hit']} of {made.counts['points']} disturbances of agent and client, "
                 f"of {len(made.kinds)} kinds: {len(made.finds)} finds")
        return Outcome(disk.met and not made.finds and made.counts["hit"] > 0,
                       f"{tried}; {disk.result}", dict(disk.figures, **made.counts),
                       tuple(f"{find} (seed {context.seed})" for find in made.finds) + disk.finds)

    def controls(self, context):
        build = context.build("release-32", *TARGETS, "slips")
        made = [crash_runs.control(context, "deaf", "errors of writes are taken for success",
                                   "--kinds", "error", "--only", "settings, save")]
        return made + [self.control(build, context, *fault) for fault in (
            ("short-write", "a short write is taken for a whole one", [life.SESSION],
             {("write", errnos.SHORT)}),
            ("interrupted", "an interrupted receive ends the session", [life.SESSION],
             {("recv", "error=EINTR")}),
            ("stay-open", "what cannot be sent leaves the session open", [life.SESSION],
             {("send", "error=ENOBUFS"), ("send", "error=EPIPE")}),
            ("deaf-output", "the client takes failed writes for good ones",
             ["client get", "client backup"], {("write", "error=EIO"), ("writev", "error=EIO")}))]

    def control(self, build, context, slip, name, parts, only):
        made = rounds.Rounds(build, context, {"LD_PRELOAD": os.path.join(build, crash_runs.SLIPS),
                                              "SLIP": slip})
        made.try_all(parts, context.seconds, only)
        return Control(name, bool(made.finds), made.finds[0].replace("\n", " ")[:200] if made.finds
                       else f"nothing in {made.counts['hit']} calls")
