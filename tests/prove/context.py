"""What a line is given to work with."""

import os
import random
import signal
import subprocess
import threading
import time

import builds

SILENCE = 15  # seconds


class Context:
    """`seconds`: how long the line may take. `seed`, `random`: for whatever is chosen. `scratch`:
    a directory of its own, in memory where there is one, which is removed. `short`: the form for
    the tests. `keep`: a directory in build/ that stays, for corpora and finds."""

    def __init__(self, name, root, seconds, seed, scratch, short_build=None, clock=None):
        """`short_build`: the directory of the build whose tests run. `clock`: what has passed of
        the whole run, in words."""
        self.name, self.root, self.seconds, self.seed = name, root, seconds, seed
        self.scratch = scratch
        self.short_build = short_build
        self.short = short_build is not None
        self.keep = os.path.join(root, "build", "prove", name)
        self.random = random.Random(f"{name} {seed}")
        self.all = False  # all choices, not a sample of them
        self.begun = time.monotonic()
        self.spoke = self.begun
        self.clock = clock or (lambda: "")

    def begin(self):
        """The line's time begins now: for what has had to be built first."""
        self.begun = time.monotonic()

    def left(self):
        """Seconds of the line's time that are left; never negative."""
        return max(0, self.begun + self.seconds - time.monotonic())

    def say(self, text):
        self.spoke = time.monotonic()
        print(f"{self.clock()}{self.name}: {text}", flush=True)

    def build(self, preset, *targets):
        """The build directory, with these targets built. In the short form nothing is built: it
        is the directory of the tests."""
        if self.short:
            return self.short_build
        return builds.build(self.root, preset, targets, self.say)

    def say_some(self, text):
        """Of what comes often, only what comes after some silence."""
        if time.monotonic() - self.spoke > SILENCE:
            self.say(text)

    def run(self, command, limit=None, on_line=None, **options):
        """As subprocess.run(), with all that it writes as text, in the scratch directory. At the
        limit (in seconds) it is killed with its group, and subprocess.TimeoutExpired is raised.
        `on_line`: is given each line at once."""
        settings = {"cwd": self.scratch, "stdin": subprocess.DEVNULL, "text": True,
                    "errors": "replace", **options}
        process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                   process_group=0, **settings)
        late = threading.Event()

        def end():
            late.set()
            os.killpg(process.pid, signal.SIGKILL)

        timer = threading.Timer(limit or threading.TIMEOUT_MAX, end)
        timer.daemon = True
        timer.start()
        said = []
        with process.stdout:
            for line in process.stdout:
                said.append(line)
                if on_line:
                    on_line(line.rstrip("\n"))
        timer.cancel()
        process.wait()
        if late.is_set():
            raise subprocess.TimeoutExpired(command, limit, "".join(said))
        return subprocess.CompletedProcess(command, process.returncode, "".join(said))
