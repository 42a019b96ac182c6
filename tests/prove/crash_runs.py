"""Lines that are a part of the crash-state test, tests/crash/run."""

import json
import os

from line import CannotRun, Control, Outcome

SKIPPED = 77  # exit status
TARGETS = ("lparams_agent", "lparams_server", "failing_disk")
SLIPS = "tests/slips.so"


def crash_test(context, build, *arguments, slip=""):
    """The counts. `slip`: of planted_slips.cc, if the agent is to have one."""
    report = os.path.join(context.scratch, "counts.json")
    command = [os.path.join(context.root, "tests", "crash", "run"), "--json", report, *arguments]
    environment = dict(os.environ)
    if slip:
        environment.update(AGENT_PRELOAD=os.path.join(build, SLIPS), SLIP=slip)
    done = context.run([*command, build], env=environment, on_line=context.say_some)
    if done.returncode == SKIPPED:
        raise CannotRun(done.stdout.strip())
    if not os.path.exists(report):
        raise RuntimeError(done.stdout)
    with open(report, encoding="utf-8") as file:
        counts = json.load(file)
    os.unlink(report)
    return counts


def outcome(context, counts, kinds):
    """`kinds`: those that were asked for, each to its name in words."""
    total, lost = counts["total"], counts["lost"]
    tried = [f"{total.get(kind, 0)} {words}" for kind, words in kinds.items()]
    complete = all(total.get(kind, 0) > 0 for kind in kinds)
    return Outcome(complete and not lost, f"{', '.join(tried)}: {len(lost)} lost", total,
                   tuple(f"{loss} (seed {context.seed})" for loss in lost))


def control(context, slip, name, *arguments):
    """That a run of the crash-state test finds a slip of the agent's."""
    build = context.build("release-32", *TARGETS, "slips")
    counts = crash_test(context, build, "--quick", *arguments, slip=slip)
    lost = counts["lost"]
    return Control(name, bool(lost), f"{len(lost)} lost, such as {lost[0][:80]!r}" if lost
                   else "nothing was noticed")
