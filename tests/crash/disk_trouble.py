"""A disk that becomes full, or read-only, and stays so until somebody sees to it."""

import os

KINDS = ("full", "read-only")
LIBRARY = "tests/failing_disk.so"
NEEDS_SPACE = ("write", "writev")
CHANGES = NEEDS_SPACE + ("rename", "renameat2", "unlink")


def steps(kind, calls):
    """How many of the calls such a disk would not carry out."""
    return sum(call.name in (NEEDS_SPACE if kind == "full" else CHANGES) or
               kind != "full" and ("O_CREAT" in call.flags or "O_WRONLY" in call.flags)
               for call in calls)


class Trouble:
    """Begins and ends when it is told to."""

    def __init__(self, build, run):
        self.library = os.path.join(build, LIBRARY)
        self.switch = os.path.join(run, "trouble")

    def environment(self, state):
        return {"LD_PRELOAD": self.library, "DISK_PLACE": state, "DISK_TROUBLE": self.switch}

    def begin(self, kind, count):
        """`count`: so many calls are carried out before."""
        with open(self.switch + ".new", "w", encoding="ascii") as file:
            file.write(f"{kind} {count}")
        os.rename(self.switch + ".new", self.switch)

    def end(self):
        os.unlink(self.switch)
