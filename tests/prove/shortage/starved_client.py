"""`lparamsctl apply` with each allocation of the client failing in turn."""

import os
import subprocess

from afterwards import what_is_wrong
from every_request import NAME

CLIENT_STATUSES = (69, 70, 74, 75)
WHAT = "lparamsctl apply"


def applies(trials, seconds):
    trials.renew()
    agent = trials.start(disturbed=False)
    try:
        agent.listening()
        for for_good in (False, True):
            trials.memory.count()
            applied(trials, agent, 11)
            for number in trials.chosen(WHAT, trials.memory.counted(), seconds / 2):
                trials.context.say_some(f"{WHAT}: allocation {number}")
                trials.memory.begin(number, for_good)
                done = applied(trials, agent, 12 + number % 500)
                wrong = judged(done, failed=trials.memory.end())
                if wrong:
                    trials.find(WHAT, number, for_good, wrong)
            wrong = what_is_wrong(agent, trials.state, "apply", OSError())
            if wrong:
                trials.find(WHAT, 0, for_good, wrong)
    finally:
        agent.kill()


def applied(trials, agent, value):
    document = os.path.join(trials.directory, "document")
    with open(document, "w", encoding="ascii") as file:
        file.write(f"{NAME}={value}\n")
    return subprocess.run(
        [os.path.join(trials.build, "lparamsctl"), "--socket", agent.socket, "apply", document],
        env=dict(os.environ, **trials.memory.environment()), stdin=subprocess.DEVNULL,
        capture_output=True, timeout=60, check=False)


def judged(done, failed):
    """What is wrong with how the client ended; `failed`: whether an allocation has."""
    if done.returncode == 0:
        return ""
    if not failed:
        return f"it ended with {done.returncode} without a cause"
    if done.returncode not in CLIENT_STATUSES or not done.stderr:
        return f"it ended with {done.returncode}: {done.stderr.decode()}"
    return ""
