"""One line at work, in a process of its own: nothing that it starts outlives it."""

import json
import os
import shutil
import signal
import sys
import time
import traceback

import processes
from line import CannotRun, Control, Outcome

LATE = 3  # times its seconds, and then some, until a line is taken for hung
LATE_SECONDS = 600


class Hung(Exception):
    pass


def do(task, context):
    """The work itself: returns what goes into the results."""
    try:
        made = task(context)
        if isinstance(made, Outcome):
            return {"state": "met" if made.met else "not met", "result": made.result,
                    "figures": made.figures, "finds": list(made.finds)}
        found = all(control.found for control in made) and made
        return {"state": "found" if found else "not found",
                "controls": [Control(*control)._asdict() for control in made]}
    except CannotRun as lack:
        return {"state": "cannot run", "result": str(lack)}
    except Exception:  # of the line itself: no result is no good result
        return {"state": "broken", "result": traceback.format_exc()}


def wait(pid, limit):
    end = time.monotonic() + limit
    while os.waitpid(pid, os.WNOHANG)[0] == 0:
        if time.monotonic() > end:
            raise Hung
        time.sleep(0.05)


def perform(task, context):
    """Lets task(context) run; returns what came out of it, as a dictionary."""
    os.mkdir(context.scratch, 0o700)
    result_file = context.scratch + ".json"
    begun = time.monotonic()
    sys.stdout.flush()
    pid = os.fork()
    if pid == 0:
        os.setpgid(0, 0)
        signal.signal(signal.SIGINT, signal.default_int_handler)
        try:
            result = do(task, context)
            with open(result_file, "w", encoding="utf-8") as file:
                json.dump(result, file)
        except BaseException:
            os._exit(1)
        os._exit(0)
    try:
        wait(pid, context.seconds * LATE + LATE_SECONDS)
        with open(result_file, encoding="utf-8") as file:
            result = json.load(file)
    except Hung:
        result = {"state": "broken", "result": "it did not end"}
    except (OSError, json.JSONDecodeError):
        result = {"state": "broken", "result": "it ended without a result"}
    except KeyboardInterrupt:
        processes.interrupt(pid)
        raise
    finally:
        processes.end_descendants()
        shutil.rmtree(context.scratch, ignore_errors=True)
    result["seconds"] = round(time.monotonic() - begun, 1)
    return result
