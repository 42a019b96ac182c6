"""What a process holds: descriptors, threads, memory."""

import os
import time
from typing import NamedTuple

PATIENCE = 30  # seconds; sessions end a moment after their clients
PAUSE = 0.05


class Footprint(NamedTuple):
    descriptors: int
    threads: int
    resident: int  # KiB


def footprint(pid):
    with open(f"/proc/{pid}/status", encoding="ascii") as file:
        status = dict(line.split(":", 1) for line in file)
    return Footprint(len(os.listdir(f"/proc/{pid}/fd")), int(status["Threads"]),
                     int(status["VmRSS"].split()[0]))


def settled(pid, descriptors, threads):
    """The footprint as soon as there are no more of these than that, or when patience is at its
    end."""
    end = time.monotonic() + PATIENCE
    while True:
        now = footprint(pid)
        if (now.descriptors <= descriptors and now.threads <= threads) or time.monotonic() > end:
            return now
        time.sleep(PAUSE)
