"""libFuzzer on what comes from files and sockets; the targets are in tests/prove/fuzz/."""

import math
import os
import re
from concurrent.futures import ThreadPoolExecutor

from line import Control, Line, Outcome

TARGETS = ("settings_file", "record", "markup", "document", "session")
PRESET = "fuzz-32"
PROGRAMS = tuple(f"fuzz_{target}" for target in TARGETS)
CONTROL_SECONDS = 120  # until a planted fault has to be found
# A try takes milliseconds; the machine may be busy. A process has 4 GiB at most.
LIMITS = ("-timeout=60", "-rss_limit_mb=2000", "-max_len=8192")
STATUS = re.compile(r"cov: (\d+) ft: (\d+) corp: (\d+)/\S+.* exec/s: (\d+)")


class Run:
    """One target for some seconds, in a corpus of its own that stays in build/."""

    def __init__(self, context, build, target, planted=False):
        self.context, self.target = context, target
        self.program = os.path.join(build, "tests", "prove", "fuzz",
                                    f"fuzz_{target}" + ("_planted" if planted else ""))
        place = os.path.join(context.scratch if planted else context.keep, target)
        self.corpus = os.path.join(place, "corpus")
        self.artifacts = os.path.join(place, "finds")
        for directory in (self.corpus, self.artifacts):
            os.makedirs(directory, exist_ok=True)
        self.edges = self.speed = self.tries = 0
        self.finds = []

    def started(self, *arguments, limit=None, on_line=None):
        # Each with a directory of its own: the targets make files.
        work = os.path.join(self.context.scratch, "work-" + self.target)
        os.makedirs(work, exist_ok=True)
        return self.context.run(["nice", "-n", "10", self.program, *arguments], limit=limit,
                                on_line=on_line, env=dict(os.environ, TMPDIR=work))

    def fuzz(self, seconds):
        """Returns self."""
        made = self.started("--seeds", self.corpus)
        if made.returncode != 0:
            raise RuntimeError(made.stdout)
        before = set(os.listdir(self.artifacts))
        # What the products log is nobody's business; what was found is asked for once more.
        done = self.started(f"-max_total_time={int(seconds)}", f"-seed={self.context.seed}",
                            f"-dict={self.corpus}.dict", f"-artifact_prefix={self.artifacts}/",
                            "-close_fd_mask=2", "-print_final_stats=1", *LIMITS, self.corpus,
                            limit=seconds * 2 + 300, on_line=self.tell)
        counts = re.search(r"stat::number_of_executed_units: (\d+)", done.stdout)
        self.tries = int(counts[1]) if counts else 0
        if done.returncode != 0:
            names = sorted(set(os.listdir(self.artifacts)) - before)
            self.finds = [self.reason(os.path.join(self.artifacts, name)) for name in names]
            self.finds = self.finds or [f"{self.target}: {done.stdout[-2000:]}"]
        return self

    def tell(self, text):
        status = STATUS.search(text)
        if status:
            self.edges, self.speed = int(status[1]), int(status[4])
            self.context.say_some(f"{self.target}: {self.edges} edges, {self.speed} tries/s")

    def reason(self, artifact):
        said = self.started(artifact, limit=300).stdout
        why = re.search(r"^(FOUND: .*|.*ERROR: .*|.*runtime error: .*)$", said, re.M)
        return f"{self.target}: {why[1] if why else 'not found a second time'} ({artifact})"


class Fuzz(Line):
    NAME = "fuzz"
    TRIED = "mutated settings files, records, markup, documents and sessions, 32 bit, sanitizers"
    WANTED = "0 finds in 10 minutes each"
    MINUTES = 30
    BUILDS = {PRESET: PROGRAMS}

    def run(self, context):
        build = context.build(PRESET, *PROGRAMS)
        processors = os.cpu_count()
        each = context.left() / math.ceil(len(TARGETS) / processors)
        with ThreadPoolExecutor(processors) as pool:
            runs = list(pool.map(lambda target: Run(context, build, target).fuzz(each), TARGETS))
        figures = {run.target: {"seconds": round(each), "tries": run.tries,
                                "tries per second": round(run.tries / each), "edges": run.edges}
                   for run in runs}
        finds = [find for run in runs for find in run.finds]
        words = ", ".join(f"{run.target} {run.tries / each:.0f}/s {run.edges} edges" for run in runs)
        return Outcome(not finds and all(run.tries for run in runs),
                       f"{len(finds)} finds in {each / 60:.1f} minutes each: {words}", figures,
                       tuple(finds))

    def controls(self, context):
        build = context.build(PRESET, *(f"{program}_planted" for program in PROGRAMS))
        made = []
        for target in TARGETS:
            run = Run(context, build, target, planted=True).fuzz(CONTROL_SECONDS)
            made.append(Control(f"a fault in {target}", bool(run.finds),
                                run.finds[0][:150] if run.finds else "not found"))
        return made
