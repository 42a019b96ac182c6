"""All pairs of operations at the same time, under tools that see which accesses nothing orders."""

import os
import re
import subprocess
import sys

from line import Control, Line, Outcome

RACES = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "races")
sys.path.insert(0, RACES)

import tools  # noqa: E402

PAIRS = 55  # of ten operations, each with itself too
ROUNDS = 2
PLANTED = ("write", "peek")  # looks at what is written, without its lock
SECONDS = 900  # in which a run of all pairs ends, however slow the machine is


def perform(context, tool, rounds, *pair):
    """Runs it; returns all that was found, and how many pairs there were."""
    command, variables = tool.prepare(context)
    try:
        done = context.run([*command, tool.program(context), str(rounds), *pair], limit=SECONDS,
                           env=dict(os.environ, **variables), on_line=context.say_some)
    except subprocess.TimeoutExpired as late:
        return [f"did not end: {late.output[-1000:]}"], 0
    found = tool.reports(done.stdout)
    if done.returncode != 0:
        found.append(f"ended with {done.returncode}: {done.stdout[-1000:]}")
    return found, len(re.findall(r"^pair ", done.stdout, re.M))


class RacesLine(Line):
    NAME = "races"
    TRIED = ("all pairs of read, write, save, isChanged, list, subscribe, close, stop, hook and "
             "observers at the same time, under the thread sanitizer, Helgrind and DRD")
    WANTED = "0 reports"
    MINUTES = 4
    BUILDS = {tool.PRESET: tools.TARGETS for tool in tools.TOOLS}

    def run(self, context):
        finds, rounds = [], dict.fromkeys((tool.NAME for tool in tools.TOOLS), 0)
        while not finds and (context.left() or 0 in rounds.values()):
            for tool in tools.TOOLS:
                found, pairs = perform(context, tool, ROUNDS)
                if pairs != PAIRS:
                    found.append(f"{pairs} pairs instead of {PAIRS}")
                finds += [f"{tool.NAME}: {one}" for one in found]
                rounds[tool.NAME] += ROUNDS
                context.say(f"{tool.NAME}: {rounds[tool.NAME]} rounds, {len(found)} reports")
        words = ", ".join(f"{count} times under {name}" for name, count in rounds.items())
        return Outcome(not finds, f"{PAIRS} pairs, {words}: {len(finds)} reports",
                       {"pairs": PAIRS, "rounds": rounds}, tuple(finds))

    def controls(self, context):
        return [self.control(tool, perform(context, tool, ROUNDS, *PLANTED)[0])
                for tool in tools.TOOLS]

    @staticmethod
    def control(tool, found):
        named = [one for one in found if "peek" in one and tool.REPORT.search(one)]
        return Control(f"{tool.NAME}: a value that is read without its lock", bool(named),
                       named[0].split("\n")[0] if named else f"nothing of it in {found}")
