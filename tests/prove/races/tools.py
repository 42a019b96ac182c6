"""The tools that look on: how a program runs under each, and what each reports."""

import os
import re

from line import CannotRun

HERE = os.path.dirname(os.path.abspath(__file__))
PROGRAM = os.path.join("tests", "prove", "races", "races")
TARGETS = ("races", "lparams_server")
USAGE = 2  # how the program ends without arguments
START_SECONDS = 60


class Tool:
    """`prepare(context)` returns the start of a command line and the variables of its environment,
    or raises CannotRun."""

    NAME = PRESET = ""
    REPORT = None  # what a report begins with

    def program(self, context):
        return os.path.join(context.build(self.PRESET, *TARGETS), PROGRAM)

    def prepare(self, context):
        raise NotImplementedError

    def reports(self, said):
        """What was reported, each with the pair of operations before it."""
        pair, found = "before the first pair", []
        for text in re.split(r"^(?==================$|pair |==\d+== *$)", said, flags=re.M):
            if named := re.match(r"pair .*", text):
                pair = named.group()
            if at := self.REPORT.search(text):
                found.append(f"{pair}: {text[at.start():][:3000]}")
        return found


class ThreadSanitizer(Tool):
    NAME = "thread sanitizer"
    PRESET = "tsan"
    REPORT = re.compile(r"WARNING: ThreadSanitizer:")

    def prepare(self, context):
        """It cannot have each layout of addresses."""
        for command in (["setarch", "-R"], []):
            try:
                done = context.run([*command, self.program(context)], limit=START_SECONDS)
            except OSError:
                continue
            if done.returncode == USAGE:
                return command, {"TSAN_OPTIONS": "exitcode=0"}
        raise CannotRun("the thread sanitizer cannot start with this machine's layout of addresses")


class Valgrind(Tool):
    PRESET = "debug-32"
    REPORT = re.compile(r"Possible data race|Thread #\d+: |Thread #\d+'s call|Conflicting (?:load|store)|"
                        r"Mutex |mutex is|not locked|lock order|Probably a race")
    COMPILE = ("g++", "-std=c++20", "-m32", "-O1", "-g1", "-shared", "-fPIC",
               f"-Wl,--version-script={HERE}/versions.map", "-Wl,-soname,libpthread.so.0")
    OPTIONS = DEFINES = ()

    def prepare(self, context):
        library = os.path.join(context.scratch, self.NAME + ".so")
        done = context.run([*self.COMPILE, *self.DEFINES, "-o", library,
                            os.path.join(HERE, "named_calls.cc")])
        if done.returncode != 0:
            raise CannotRun(done.stdout)
        return (["valgrind", f"--tool={self.NAME.lower()}", *self.OPTIONS,
                 f"--suppressions={HERE}/valgrind.supp"], {"LD_PRELOAD": library})


class Helgrind(Valgrind):
    NAME = "Helgrind"
    DEFINES = ("-DNAMED",)


class Drd(Valgrind):
    NAME = "DRD"
    OPTIONS = ("--report-signal-unlocked=no",)  # a condition may be signalled without its lock


TOOLS = (ThreadSanitizer(), Helgrind(), Drd())
