"""The start of an agent, and its end, with each allocation failing in turn."""

import os
import re

from agent_process import Hung
from scenarios import SETTINGS, SHADOW_COPY

EXIT_STATUSES = (69, 74, 78)  # of a start that cannot be
# The module's own start-up ends the process, in the words of the C++ library.
TERMINATED = re.compile(r"terminate called after throwing an instance of '.*bad_alloc'")
ABORTED = -6
START, RECOVERY = "start", "recovery"


def starts(trials, what, seconds):
    """`what`: START, or RECOVERY, from the shadow copy. Until the agent listens."""
    prepare(trials, what)
    trials.memory.count()
    agent = trials.start()
    agent.listening()
    count = trials.memory.counted()
    expected = values(agent)
    agent.kill()
    for for_good in (False, True):
        for number in trials.chosen(what, count, seconds / 2):
            trials.context.say_some(f"{what}: allocation {number} of {count}")
            for wrong in started(trials, what, number, for_good, expected):
                trials.find(what, number, for_good, wrong)


def prepare(trials, what):
    trials.renew()
    if what == RECOVERY:
        with open(os.path.join(trials.state, SETTINGS), "wb") as file:
            file.write(trials.settings[:len(trials.settings) // 2])
        with open(os.path.join(trials.state, SHADOW_COPY), "wb") as file:
            file.write(trials.settings)


def values(agent):
    client = agent.connect()
    try:
        return client.read_all(), client.status()["degraded"]
    finally:
        client.close()


def values_or_end(agent):
    """None: it has ended just after it began to listen."""
    try:
        return values(agent)
    except OSError:
        agent.wait()
        return None


def started(trials, what, number, for_good, expected):
    """What is wrong with a start, and with the next one."""
    prepare(trials, what)
    trials.memory.begin(number, for_good)
    agent = trials.start()
    try:
        listens = agent.listening()
        trials.memory.end()
        served = values_or_end(agent) if listens else None
        if served:
            if served[0] != expected[0] and not served[1]:
                yield "other settings, and not as degraded"
        else:
            status = agent.wait()
            if not ended_in_words(agent, status) and not (
                    status == ABORTED and TERMINATED.search(agent.said())):
                yield f"it ended with {status}: {agent.said()}"
    except (OSError, Hung) as error:
        yield f"not served: {error!r} {agent.said()}"
    finally:
        trials.memory.end()
        agent.kill()
    again = trials.start(disturbed=False)
    try:
        if not again.listening() or values(again) != expected:
            yield f"lost afterwards: {again.said()}"
    finally:
        again.kill()


def ended_in_words(agent, status):
    return status in EXIT_STATUSES and ": error: " in agent.said()


def ends(trials, seconds):
    """The end of an agent."""
    agent = trials.start()
    agent.listening()
    trials.memory.count()
    agent.process.terminate()
    agent.wait()
    count = trials.memory.counted()
    agent.kill()
    for for_good in (False, True):
        for number in trials.chosen("end", count, seconds / 2):
            wrong = ended(trials, number, for_good)
            if wrong:
                trials.find("end", number, for_good, wrong)


def ended(trials, number, for_good):
    agent = trials.start()
    agent.listening()
    trials.memory.begin(number, for_good)
    agent.process.terminate()
    try:
        status = agent.wait()
        return "" if status == 0 or ended_in_words(agent, status) else f"{status}: {agent.said()}"
    except Hung as error:
        return f"it does not end: {error}"
    finally:
        trials.memory.end()
        agent.kill()
