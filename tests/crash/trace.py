"""Reads what strace has written."""

import re
from typing import NamedTuple, Optional

LINE = re.compile(r"^(\d+) +(\w+)\((.*)\) += (-?\d+|\?)(?:<([^>]*)>)?(.*)$", re.S)
UNFINISHED = re.compile(r"^(\d+) +(\w+)\((.*) <unfinished \.\.\.>$", re.S)
RESUMED = re.compile(r"^(\d+) +<\.\.\. (\w+) resumed>(.*)$", re.S)
STRING = re.compile(r'"((?:[^"\\]|\\.)*)"', re.S)
DESCRIPTOR = re.compile(r"^(\d+)<([^>]*)>")
DIRECTORY_DESCRIPTOR = re.compile(r"AT_FDCWD<[^>]*>")
TIME = re.compile(r"-\d{8}T\d{6}Z(-\d+)?")

TAKES_DESCRIPTOR = {"read", "write", "writev", "pwrite64", "fsync", "fdatasync", "ftruncate",
                    "ftruncate64", "fchmod", "flock", "close"}


class Call(NamedTuple):
    thread: int
    name: str
    nth: int  # its number among the thread's calls of this name, from 1 on
    descriptor: Optional[int]
    paths: tuple
    data: bytes  # what was written
    flags: str
    result: Optional[int]  # None: the call did not return
    injected: bool

    def touches(self, directory):
        return any(path == directory or path.startswith(directory + "/") for path in self.paths)

    def label(self):
        """Tells the call in every run, whenever and wherever that is."""
        names = [TIME.sub("-TIME", path.rsplit("/", 1)[-1]) for path in self.paths]
        return " ".join([self.name] + names)


def unescape(text):
    return text.encode("latin-1").decode("unicode_escape").encode("latin-1")


def parse_call(thread, name, nth, arguments, result, rest):
    strings = [unescape(text) for text in STRING.findall(arguments)]
    descriptor = DESCRIPTOR.match(arguments)
    paths, data = (), b""
    if name in TAKES_DESCRIPTOR:
        paths = (descriptor.group(2),) if descriptor else ()
        if name in ("write", "writev", "pwrite64"):
            data = b"".join(strings)
    else:
        paths = tuple(string.decode("latin-1") for string in strings)
    flags = STRING.sub("", DIRECTORY_DESCRIPTOR.sub("", arguments)) if name == "openat" else ""
    return Call(thread, name, nth, int(descriptor.group(1)) if descriptor else None, paths, data,
                flags, None if result in (None, "?") else int(result), "(INJECTED)" in rest)


def complete_lines(text):
    """Puts calls together that another thread has cut in two; those that never returned come
    last."""
    cut = {}
    for line in text.splitlines():
        if match := UNFINISHED.match(line):
            cut[match.group(1)] = line[:-len(" <unfinished ...>")]
        elif match := RESUMED.match(line):
            yield cut.pop(match.group(1)) + match.group(3)
        else:
            yield line
    for line in cut.values():
        yield line + ") = ?"


def parse_trace(text):
    """The calls, in order. Counts, as the tracer does, each name in each thread."""
    calls = []
    counts = {}
    for line in complete_lines(text):
        match = LINE.match(line)
        if not match:
            continue  # a signal, an exit
        thread, name, arguments, result, _, rest = match.groups()
        if name == "execve":
            continue
        key = (thread, name)
        counts[key] = counts.get(key, 0) + 1
        calls.append(parse_call(int(thread), name, counts[key], arguments, result, rest))
    return calls
