"""What of the sources has run, from the counts that the processes have left in files."""

import glob
import os
from typing import NamedTuple

# Beside the flags of the preset; the counts are in a file that is mapped, and outlive any end.
FLAGS = ["-std=c++20", "-fprofile-instr-generate", "-fprofile-update=atomic", "-fcoverage-mapping",
         "-mllvm", "-runtime-counter-relocation"]
COUNTS = "%m%c.profraw"  # a file for each program and library, which all its processes share
ELF = b"\x7fELF"


class Source(NamedTuple):
    lines: dict  # number to how often it has run; only lines with code
    branches: int  # ways out of conditions
    taken: int

    @property
    def uncovered(self):
        return sorted(number for number, count in self.lines.items() if count == 0)


def programs(directory):
    """The executables and loadable libraries of a build."""
    found = []
    for folder, _, names in os.walk(directory):
        for name in names:
            path = os.path.join(folder, name)
            if os.access(path, os.X_OK) and not os.path.islink(path) and os.path.isfile(path):
                with open(path, "rb") as file:
                    if file.read(len(ELF)) == ELF:
                        found.append(path)
    return sorted(found)


def read_report(text):
    """Path to Source, of a report in the format of lcov; see geninfo(1)."""
    found = {}
    for line in text.splitlines():
        kind, _, rest = line.partition(":")
        if kind == "SF":
            path, lines, branches, taken = rest, {}, 0, 0
        elif kind == "DA":
            number, count = rest.split(",")[:2]
            lines[int(number)] = int(count)
        elif kind == "BRDA":
            branches += 1
            taken += rest.rpartition(",")[2] not in ("-", "0")
        elif kind == "end_of_record":
            found[path] = Source(lines, branches, taken)
    return found


def read(context, folder, objects):
    """Path to Source, of all sources of the objects."""
    merged = os.path.join(context.scratch, "merged.profdata")
    checked(context, ["llvm-profdata", "merge", "--sparse", "--failure-mode=all", "-o", merged,
                      *glob.glob(os.path.join(folder, "*.profraw"))])
    others = [word for path in objects[1:] for word in ("-object", path)]
    return read_report(checked(context, ["llvm-cov", "export", "-format=lcov", "-instr-profile",
                                         merged, objects[0], *others]))


def checked(context, command):
    done = context.run(command)
    if done.returncode != 0:
        raise RuntimeError(f"{command[0]}: {done.stdout[-2000:]}")
    return done.stdout
