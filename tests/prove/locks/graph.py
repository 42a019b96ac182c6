"""What the recorder has written, as a graph: which lock was taken while which other one was held."""

import bisect
import collections
import os
import re
import subprocess

# Who holds a lock stands behind these.
WRAPPER = re.compile(
    r"^(?:__gthread_|std::|agent::Mutex(?:Lock)?::|basekit::ObjectLevelLockable::Lock::|"
    r"__interceptor_|\?\?)")
FOREIGN = re.compile(r"/usr/|/tests/(?!prove/locks/planted)")  # not the products
OF_THE_LIBRARY = re.compile(r"/libstdc\+\+\.so")  # its code is in there; wrappers are in the products
BASES = {"LPARAMS::Server::ParamGroup"}  # the products have only objects of classes derived from them
LOCKED = re.compile(r"[lL]ock\w*(?:<[^;]*?>)? \w+[({](?:\*?this->)?([^,;]*?)[)}];")


FRAME = r"(?:-|[^|\t]+\+[0-9a-f]+)"
PLACE = rf"{FRAME}(?:\|{FRAME})*"
PAIR = re.compile(rf"({PLACE})\t({PLACE})")


class Symbols:
    """Where addresses of files are, in words."""

    def __init__(self):
        self.places = {}
        self.tables = {}

    def resolve(self, frames):
        by_file = collections.defaultdict(set)
        for frame in frames:
            file, offset = frame.rsplit("+", 1)
            by_file[file].add(offset)
        for file, offsets in by_file.items():
            offsets = sorted(offsets)
            answer = subprocess.run(["addr2line", "-f", "-C", "-e", file],
                                    input="".join(f"0x{one}\n" for one in offsets), text=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
            lines = answer.stdout.splitlines()
            for offset, function, place in zip(offsets, lines[::2], lines[1::2]):
                self.places[f"{file}+{offset}"] = function, place.split(" (")[0]

    def place(self, frame):
        return self.places.get(frame, ("??", "??:0"))

    def class_of(self, object_):
        """The class whose table of virtual functions the object points at; None if it is none."""
        if object_ == "-":
            return None
        file, offset = object_.rsplit("+", 1)
        if file not in self.tables:
            self.tables[file] = self.read_tables(file)
        tables = self.tables[file]
        offset = int(offset, 16)
        at = bisect.bisect_right(tables, (offset, "~", 0)) - 1
        if at < 0 or offset >= tables[at][0] + tables[at][2]:
            return None
        return tables[at][1]

    @staticmethod
    def read_tables(file):
        answer = subprocess.run(["nm", "-C", "-S", file], text=True, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, check=False).stdout
        found = re.findall(r"^(\w+) (\w+) \w vtable for (.*)$", answer, re.M)
        return sorted((int(at, 16), name, int(size, 16)) for at, size, name in found)


def scope(function):
    """The class or namespace that a function is in."""
    plain = function.replace("(anonymous namespace)::", "")
    while (shorter := re.sub(r"<[^<>]*>", "", plain)) != plain:
        plain = shorter
    return plain.split("(")[0].split()[-1].rpartition("::")[0]


def expression(place, lines):
    """What the source at FILE:LINE locks."""
    file, _, line = place.rpartition(":")
    if file not in lines:
        with open(file, encoding="utf-8") as source:
            lines[file] = source.read().splitlines()
    number = int(line) if line.isdigit() else 0
    text = lines[file][number - 1] if 0 < number <= len(lines[file]) else ""
    found = LOCKED.search(text)
    return found.group(1) if found else text.strip()


class Graph:
    """Names of locks, and edges (held, taken) with an example of each."""

    def __init__(self):
        self.locks = {}
        self.edges = {}

    def name(self, lock, symbols, lines):
        object_, *frames = lock.split("|")
        if frames and OF_THE_LIBRARY.search(frames[0]):
            return None  # such as the one around the locale of the process
        places = [symbols.place(frame) for frame in frames]
        for (function, place) in places:
            if not WRAPPER.match(function):
                break
        else:
            return None
        if place.startswith("??") or FOREIGN.search(place) or function.startswith("asio::"):
            return None
        of_class = symbols.class_of(object_)
        if of_class and ("(anonymous namespace)" in of_class or of_class in BASES):
            return None  # a test's own
        if of_class:
            return of_class, f"{function} at {place}"
        return f"{scope(function)}: {expression(place, lines)}", f"{function} at {place}"

    def read(self, directory):
        texts = set()
        for name in os.listdir(directory):
            with open(os.path.join(directory, name), encoding="utf-8") as file:
                texts.update(file.read().splitlines())
        # A process that was killed, or may write no more, leaves half a line.
        pairs = sorted(match.groups() for text in texts if (match := PAIR.fullmatch(text)))
        symbols, lines, names = Symbols(), {}, {}
        places = {place for pair in pairs for place in pair if place != "-"}
        symbols.resolve({frame for place in places for frame in place.split("|")[1:]
                         if frame != "-"})
        for place in places:
            names[place] = self.name(place, symbols, lines)
        for held, taken in pairs:
            lock, other = names.get(taken), names.get(held)
            if lock:
                self.locks.setdefault(lock[0], lock[1])
            if lock and other:
                self.edges.setdefault((other[0], lock[0]), (other[1], lock[1]))
