"""The processes below this one, whatever sessions and groups they are in."""

import ctypes
import os
import signal
import time

PR_SET_CHILD_SUBREAPER = 36  # prctl(2)
POLITE = 5  # seconds to tidy up after SIGINT


def adopt_orphans():
    """From now on every process below this one stays below it, also if its parent ends."""
    if ctypes.CDLL(None, use_errno=True).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")


def parents():
    """Process to its parent, of all that there are."""
    found = {}
    for name in os.listdir("/proc"):
        if not name.isdigit():
            continue
        try:
            with open(f"/proc/{name}/stat", "rb") as file:
                found[int(name)] = int(file.read().rpartition(b")")[2].split()[1])
        except (FileNotFoundError, ProcessLookupError):
            pass
    return found


def descendants(of=None):
    parent_of = parents()
    below = {of or os.getpid()}
    size = 0
    while size != len(below):
        size = len(below)
        below |= {process for process, parent in parent_of.items() if parent in below}
    return below - {of or os.getpid()}


def reap():
    """True: there are no children any more."""
    try:
        while os.waitpid(-1, os.WNOHANG)[0] != 0:
            pass
        return False
    except ChildProcessError:
        return True


def end_descendants():
    """Ends and reaps them all, also those that they start meanwhile."""
    while not reap():
        for process in descendants():
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass
        time.sleep(0.01)


def interrupt(group):
    """Lets the children of this process that are in the group tidy up, for a while."""
    try:
        os.killpg(group, signal.SIGINT)
    except ProcessLookupError:
        return
    end = time.monotonic() + POLITE
    while time.monotonic() < end:
        try:
            if os.waitpid(-group, os.WNOHANG)[0] != 0:
                return
        except ChildProcessError:
            return
        time.sleep(0.01)
