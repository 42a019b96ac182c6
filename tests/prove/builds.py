"""Builds of presets, that say how far they are."""

import os
import re
import subprocess
import time

SAY_EVERY = 15  # seconds


class BuildFailed(Exception):
    pass


def build(root, preset, targets, say):
    """Builds the targets, or all if there are none. Returns the build directory, or raises
    BuildFailed with what was said."""
    directory = os.path.join(root, "build", preset)
    say(f"building {preset}: {' '.join(targets) or 'everything'}")
    run(["cmake", "-S", root, "--preset", preset], say)
    command = ["cmake", "--build", directory, "-j", str(os.cpu_count())]
    run(command + (["--target", *targets] if targets else []), say)
    return directory


def run(command, say):
    said = []
    spoke = time.monotonic()
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace") as process:
        for line in process.stdout:
            said.append(line)
            step = re.match(r"\[(\d+/\d+)\]", line)
            if step and time.monotonic() - spoke > SAY_EVERY:
                spoke = time.monotonic()
                say(f"building, {step[1]}")
    if process.returncode != 0:
        raise BuildFailed("".join(said[-60:]))
