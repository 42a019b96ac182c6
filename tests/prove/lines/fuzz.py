"""libFuzzer on what comes from files and sockets; the targets are in tests/prove/fuzz/."""

import os
import re
from concurrent.futures import ThreadPoolExecutor

from line import Control, Line, Outcome

TARGETS = ("settings_file", "record", "markup", "document", "session")
PRESET = "fuzz-32"
PROGRAMS = tuple(f"fuzz_{target}" for target in TARGETS)
PARTS = 2  # of each target's time: five targets fill two processors
CONTROL_SECONDS = 120  # until a planted fault has to be found
# A try takes milliseconds; the machine may be busy. A process has 4 GiB at most.
LIMITS = ("-timeout=60", "-rss_limit_mb=2000", "-max_len=8192")
# Freed memory is watched in a smaller amount, which makes a tenth more tries.
WHY = re.compile(r"^(FOUND: .*|.*ERROR: .*|.*runtime error: .*)$", re.M)
SANITIZER = "quarantine_size_mb=16"
STATUS = re.compile(r"cov: (\d+) ft: (\d+) corp: (\d+)/\S+.* exec/s: (\d+)")


class Run:
    """One target, in a corpus of its own that stays in build/."""

    def __init__(self, context, build, target, planted=False):
        self.context, self.target = context, target
        self.program = os.path.join(build, "tests", "prove", "fuzz",
                                    f"fuzz_{target}" + ("_planted" if planted else ""))
        place = os.path.join(context.scratch if planted else context.keep, target)
        self.corpus = os.path.join(place, "corpus")
        self.artifacts = os.path.join(place, "finds")
        for directory in (self.corpus, self.artifacts):
            os.makedirs(directory, exist_ok=True)
        self.edges = self.speed = self.tries = self.parts = self.seconds = 0
        self.finds = []

    def started(self, *arguments, limit=None, on_line=None):
        # Each with a directory of its own: the targets make files.
        work = os.path.join(self.context.scratch, "work-" + self.target)
        os.makedirs(work, exist_ok=True)
        return self.context.run(["nice", "-n", "10", self.program, *arguments], limit=limit,
                                on_line=on_line, env=dict(os.environ, TMPDIR=work, ASAN_OPTIONS=SANITIZER))

    def fuzz(self, seconds):
        """For so many seconds more. Returns self."""
        self.parts += 1
        made = self.started("--seeds", self.corpus)
        if made.returncode != 0:
            raise RuntimeError(made.stdout)
        before = set(os.listdir(self.artifacts))
        # What the products log is nobody's business; what was found is asked for once more.
        seed = (self.context.seed + self.parts) % 2**31
        done = self.started(f"-max_total_time={int(seconds)}", f"-seed={seed}",
                            f"-dict={self.corpus}.dict", f"-artifact_prefix={self.artifacts}/",
                            "-close_fd_mask=2", "-print_final_stats=1", *LIMITS, self.corpus,
                            limit=seconds * 2 + 300, on_line=self.tell)
        counts = re.search(r"stat::number_of_executed_units: (\d+)", done.stdout)
        self.tries += int(counts[1]) if counts else 0
        self.seconds += int(seconds)
        if done.returncode != 0:
            names = sorted(set(os.listdir(self.artifacts)) - before)
            self.finds += [self.reason(os.path.join(self.artifacts, name), done.stdout)
                           for name in names] or [
                f"{self.target}: {done.stdout[-2000:]}"]
        return self

    def tell(self, text):
        status = STATUS.search(text)
        if status:
            self.edges, self.speed = max(self.edges, int(status[1])), int(status[4])
            self.context.say_some(f"{self.target}: {self.edges} edges, {self.speed} tries/s")

    def reason(self, artifact, said_before):
        said = self.started(artifact, limit=300).stdout
        if why := WHY.search(said):
            return f"{self.target}: {why[1]} ({artifact})"
        why = WHY.search(said_before)
        told = why[1] if why else said_before[-2000:]
        return f"{self.target}: {told}; not a second time ({artifact})"


class Fuzz(Line):
    NAME = "fuzz"
    TRIED = "mutated settings files, records, markup, documents and sessions, 32 bit, sanitizers"
    WANTED = "0 finds in 10 minutes each"
    MINUTES = 25
    BUILDS = {PRESET: PROGRAMS}

    def run(self, context):
        build = context.build(PRESET, *PROGRAMS)
        workers = min(os.cpu_count(), len(TARGETS))
        part = context.left() * workers / (len(TARGETS) * PARTS)
        runs = [Run(context, build, target) for target in TARGETS]
        with ThreadPoolExecutor(workers) as pool:  # no target meets itself
            list(pool.map(lambda run: run.fuzz(part), runs * PARTS))
        figures = {run.target: {"seconds": run.seconds, "tries": run.tries,
                                "tries per second": round(run.tries / run.seconds),
                                "edges": run.edges} for run in runs}
        finds = [find for run in runs for find in run.finds]
        words = ", ".join(f"{target} {made['tries per second']}/s {made['edges']} edges"
                          for target, made in figures.items())
        return Outcome(not finds and all(run.tries for run in runs),
                       f"{len(finds)} finds in {part * PARTS / 60:.1f} minutes each: {words}",
                       figures, tuple(finds))

    def controls(self, context):
        build = context.build(PRESET, *(f"{program}_planted" for program in PROGRAMS))
        made = []
        for target in TARGETS:
            run = Run(context, build, target, planted=True).fuzz(CONTROL_SECONDS)
            made.append(Control(f"a fault in {target}", bool(run.finds),
                                run.finds[0][:150] if run.finds else "not found"))
        return made
