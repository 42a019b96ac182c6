"""All pairs of operations at the same time, under tools that see which accesses nothing orders."""

import os
import re
import subprocess

from line import CannotRun, Control, Line, Outcome

TARGETS = ("races", "lparams_server")
PAIRS = 55  # of ten operations, each with itself too
ROUNDS = 3
PLANTED = ("write", "peek")  # looks at what is written, without its lock
SECONDS = 900  # in which a run of all pairs ends, however slow the machine is
USAGE = 2  # how it ends without arguments
REPORT = "WARNING: ThreadSanitizer:"


def launcher(context, program):
    """What a program with the thread sanitizer is started by: it cannot have each layout of
    addresses."""
    for command in (["setarch", "-R"], []):
        try:
            done = context.run([*command, program], limit=SECONDS)
        except OSError:
            continue
        if done.returncode == USAGE:
            return command
    raise CannotRun("the thread sanitizer cannot start with this machine's layout of addresses")


def reports(said):
    """What was reported, each with the pair of operations before it."""
    pair, found = "before the first pair", []
    for text in re.split(r"^(?==================$|pair )", said, flags=re.M):
        if text.startswith("pair "):
            pair = text.split("\n")[0]
        if REPORT in text:
            found.append(f"{pair}: {text[text.index(REPORT):][:3000]}")
    return found


def perform(context, rounds, *pair):
    """Runs it; returns all that was found, and how many pairs there were."""
    build = context.build("tsan", *TARGETS)
    program = os.path.join(build, "tests", "prove", "races", "races")
    command = [*launcher(context, program), program, str(rounds), *pair]
    environment = dict(os.environ, TSAN_OPTIONS="exitcode=0")
    try:
        done = context.run(command, limit=SECONDS, env=environment, on_line=context.say_some)
    except subprocess.TimeoutExpired as late:
        return [f"did not end: {late.output[-1000:]}"], 0
    found = reports(done.stdout)
    if done.returncode != 0:
        found.append(f"ended with {done.returncode}: {done.stdout[-1000:]}")
    return found, len(re.findall(r"^pair ", done.stdout, re.M))


class RacesLine(Line):
    NAME = "races"
    TRIED = ("all pairs of read, write, save, isChanged, list, subscribe, close, stop, hook and "
             "observers at the same time, under the thread sanitizer")
    WANTED = "0 reports"
    MINUTES = 2
    BUILDS = {"tsan": TARGETS}

    def run(self, context):
        found, pairs, rounds = [], 0, 0
        while not rounds or (context.left() and not found):
            more, pairs = perform(context, ROUNDS)
            found += more
            rounds += ROUNDS
            if pairs != PAIRS:
                found.append(f"{pairs} pairs instead of {PAIRS}")
            context.say(f"{rounds} rounds, {len(found)} reports")
        return Outcome(not found, f"{pairs} pairs, {rounds} times each: {len(found)} reports",
                       {"pairs": pairs, "rounds": rounds}, tuple(found))

    def controls(self, context):
        found, _ = perform(context, ROUNDS, *PLANTED)
        named = [one for one in found if "peek" in one and "data race" in one]
        return [Control("a value that is read without its lock", bool(named),
                        named[0].split("\n")[0] if named else f"nothing of it in {found}")]
