"""What a disk can hold after a power cut, from the recorded calls.

The contents of a file are durable up to its last fsync. The entries of the directory - a creation, a
rename, a removal, each one step - are durable up to the last fsync of the directory; of those since
then any may have reached the disk, in any combination."""

import itertools
import os

from performance import SAVE, START

MAX_FREE_CHANGES = 8  # above it only so many subsets: all prefixes, and all but up to two


class File:
    """One file, whatever its names."""

    def __init__(self, durable=None):
        self.durable = durable  # None: never synced
        self.content = durable or b""

    def possible_contents(self):
        """What the disk can hold of it."""
        if self.content == self.durable:
            return {self.content}
        new, old = self.content, self.durable or b""
        half = len(new) // 2
        line_ends = [at + 1 for at in range(len(new)) if new[at:at + 1] == b"\n"]
        lengths = {0, half, len(new)}
        if len(line_ends) > 1:
            lengths |= {line_ends[len(line_ends) // 2], line_ends[-2]}
        contents = {new[:length] for length in lengths}
        contents |= {bytes(len(new)), new[:half] + bytes(len(new) - half), old,
                     new[:half] + old[half:]}
        return contents


class Disk:
    """The state directory while the calls are replayed."""

    def __init__(self, directory, files):
        self.directory = directory
        self.durable = {name: File(content) for name, content in files.items()}
        self.changes = []  # of entries, not yet durable; each: name to File, or to None
        self.open = {}  # descriptor to File; to None for the directory

    def entries(self, changes=None):
        entries = dict(self.durable)
        for change in self.changes if changes is None else changes:
            entries.update(change)
        return {name: file for name, file in entries.items() if file is not None}

    def name(self, path):
        return os.path.relpath(path, self.directory)

    def put(self, name, content):
        """Somebody else has written a file and synced it, or removed it: None."""
        self.changes.append({name: None if content is None else File(content)})
        self.sync_entries()

    def sync_entries(self):
        self.durable = self.entries()
        self.changes = []

    def replay(self, call):
        """True: what is on the disk may have changed."""
        if call.result is None or call.result < 0:
            return False
        if call.name == "openat":
            return self.replay_open(call)
        if call.name == "close":
            self.open.pop(call.descriptor, None)
        elif call.name in ("write", "writev"):
            self.open[call.descriptor].content += call.data[:call.result]
        elif call.name == "fsync":
            file = self.open[call.descriptor]
            if file is None:
                self.sync_entries()
            else:
                file.durable = file.content
        elif call.name in ("rename", "renameat2"):
            old, new = map(self.name, call.paths)
            self.changes.append({old: None, new: self.entries()[old]})
        elif call.name == "unlink":
            self.changes.append({self.name(call.paths[0]): None})
        elif call.name not in ("read", "flock", "fchmod"):
            raise RuntimeError("the model does not know the call " + call.label())
        return call.name not in ("close", "read", "flock", "fchmod")

    def replay_open(self, call):
        if call.paths[0] == self.directory:
            self.open[call.result] = None
            return False
        name = self.name(call.paths[0])
        file = self.entries().get(name)
        created = file is None
        if created:
            file = File()
            self.changes.append({name: file})
        truncated = "O_TRUNC" in call.flags and file.content != b""
        if truncated:
            file.content = b""
        elif file.content and "O_WRONLY" in call.flags:
            raise RuntimeError("the model knows no writing over a part of a file: " + call.label())
        self.open[call.result] = file
        return created or truncated

    def subsets(self):
        """The combinations of changes that can have reached the disk."""
        count = len(self.changes)
        if count <= MAX_FREE_CHANGES:
            sizes = range(count + 1)
        else:
            yield from (self.changes[:length] for length in range(count + 1))
            sizes = (count - 2, count - 1)
        for size in sizes:
            yield from (list(subset) for subset in itertools.combinations(self.changes, size))

    def states(self):
        """Every state that a power cut can leave: sets of (name, content). Some come twice."""
        for subset in self.subsets():
            entries = sorted(self.entries(subset).items())
            contents = [file.possible_contents() for _, file in entries]
            for chosen in itertools.product(*contents):
                yield frozenset(zip((name for name, _ in entries), chosen))


def states_of(reference, points):
    """(state, expectation) at the calls that are in `points`, by phase, and before and after all."""
    disk = Disk(reference.state, reference.scenario.files)
    for phase in (START, SAVE):
        if phase == SAVE:
            for name, content in reference.scenario.edits.items():
                disk.put(name, content)
        expectation = reference.expectation(phase)
        yield from ((state, expectation) for state in disk.states())
        for call in reference.calls[phase]:
            if disk.replay(call) and call in points[phase]:
                yield from ((state, expectation) for state in disk.states())
    final = reference.after_save if reference.scenario.save.succeeds else expectation
    yield from ((state, final) for state in disk.states())
