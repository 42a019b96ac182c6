"""Memory that runs out."""

import os
import re
import sys

from line import Control, Line, Outcome

FOLDER = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(FOLDER, "shortage"))

import starved_client  # noqa: E402
import starved_life  # noqa: E402
import starved_sessions  # noqa: E402
import trials  # noqa: E402

TARGETS = ("lparams_agent", "lparams_server", "lparamsctl", "failing_memory")
MODULE_TEST = "tests/module/module_test"
SLIPS = "tests/slips.so"
COMMANDS, START, RECOVERY, END, CLIENT = 0.45, 0.2, 0.15, 0.1, 0.1  # of the time
CONTROL_SECONDS = 20


class Memory(Line):
    NAME = "memory"
    TRIED = ("every n-th allocation fails once, then for good: start, recovery, each command in a "
             "session, saves, the end, the client's apply; once in each call of the module")
    WANTED = ("no crash, no leak, no lock left held, an acknowledged save survives, an error in "
              "words; the module throws std::bad_alloc and nothing else")
    MINUTES = 5
    BUILDS = {"release-32": TARGETS + ("module_test",)}
    SHORT = True

    def run(self, context):
        made = trials.Trials(context.build("release-32", *TARGETS), context)
        seconds = 0 if context.short else context.seconds
        try:
            starved_sessions.Sessions(made).go(COMMANDS * seconds)
            starved_life.starts(made, starved_life.START, START * seconds)
            starved_life.starts(made, starved_life.RECOVERY, RECOVERY * seconds)
            starved_life.ends(made, END * seconds)
            starved_client.applies(made, CLIENT * seconds)
        finally:
            made.close()
        if not context.short:  # it is among the tests
            self.module(context, made)
        phases = [f"{what} {tried} of {count}" for what, (tried, count) in made.counts.items()]
        context.say("allocations that failed: " + ", ".join(phases))
        tried, count = (sum(numbers) for numbers in zip(*made.counts.values()))
        return Outcome(not made.finds, f"{tried} of {count} allocations: {len(made.finds)} finds",
                       made.counts, tuple(f"{find} (seed {context.seed})" for find in made.finds))

    def module(self, context, made):
        counted, said = self.module_test(context, {})
        made.counts["the module's calls"] = [counted, counted]
        if said or not counted:
            made.finds.append(f"the module: {said}")

    @staticmethod
    def module_test(context, environment):
        """Every allocation of every call of the module, in a process of its test's: returns how
        many failed, and what the test said if it does not pass."""
        build = context.build("release-32", "module_test", "lparams_server")
        done = context.run([os.path.join(build, MODULE_TEST),
                            "--gtest_filter=ExceptionsWithoutMemory.*"],
                           env=dict(os.environ, **environment))
        counted = re.findall(r"^(.+): (\d+) allocations failed$", done.stdout, re.M)
        return (sum(int(count) for _, count in counted),
                done.stdout[-2000:] if done.returncode != 0 else "")

    def controls(self, context):
        build = context.build("release-32", *TARGETS, "slips")
        made = [self.control(build, context, *fault) for fault in (
            ("keep-memory", "each client costs 16 KiB for ever", "bytes are kept"),
            ("unchecked-memory", "what malloc() gives is not looked at", "the agent ended with"),
            ("keep-lock", "a lock is held on after there was no memory", "not served"))]
        _, said = self.module_test(context, {"LD_PRELOAD": os.path.join(build, SLIPS),
                                             "SLIP": "keep-lock-at-throw"})
        return made + [Control("the module holds a lock on when it throws", "isAnyLocked" in said,
                               "its test fails" if said else "its test passes")]

    def control(self, build, context, slip, name, word):
        made = trials.Trials(build, context, os.path.join(build, SLIPS), {"SLIP": slip})
        made.enough = 1
        try:
            starved_sessions.Sessions(made).go(CONTROL_SECONDS)
        finally:
            made.close()
        named = [find for find in made.finds if word in find]
        return Control(name, bool(named), named[0] if named else f"nothing of it in {made.finds}")
