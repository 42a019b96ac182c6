"""Single bits that flip in the settings file or in its twin, the shadow copy, and what becomes of
them."""

import os
import shutil

from recovery_check import Lost, texts_of, write_files
from scenarios import SETTINGS, SHADOW_COPY
from starts import DEGRADED, SERVED, comparable, start_really

HEALED = "settings healed from the twin"
REFUSED = "settings kept and told, saves refused"
EDIT = "settings taken for an edit, each value told"
HARMLESS = "settings edited without another value, told"
REWRITTEN = "twin told and written anew"
CLASSES = (HEALED, REFUSED, EDIT, HARMLESS, REWRITTEN)

RECOVERED_WORDS = ": the settings file was recovered "
DEGRADED_WORDS = ": degraded: "
EDITED_WORDS = ": the settings file is not what was saved last"
VALUE_WORDS = ": the settings file has another value than what was saved last"
TWIN_WORDS = ": the shadow copy is damaged"


class Flip:
    """Of one bit, in one of the two files."""

    def __init__(self, files, name, bit):
        """`files`: intact ones."""
        self.intact, self.name, self.bit = files, name, bit
        content = bytearray(files[name])
        content[bit // 8] ^= 1 << bit % 8
        self.flipped = bytes(content)

    def __str__(self):
        return f"bit {self.bit} of {self.name}"

    def lay_down(self, directory):
        """Returns the state directory."""
        state = os.path.join(directory, "state")
        os.mkdir(directory, 0o700)
        write_files(state, dict(self.intact, **{self.name: self.flipped}))
        return state

    def play(self, starts, served, directory):
        """Two starts. `served`: what is served of the intact files. Returns the class; raises
        Lost."""
        try:
            state = self.lay_down(directory)
            first = starts.start(state)
            kind = self.judge(first, served)
            second = starts.start(state)
            self.require_kept(second)
            if (second.status, second.served) != (first.status, first.served):
                raise Lost(f"the second start serves something else: {second.log}")
            return kind
        finally:
            shutil.rmtree(directory, ignore_errors=True)

    def require_kept(self, start):
        texts = texts_of(start.files)
        if self.intact[SETTINGS] not in texts:
            raise Lost(f"what was saved is gone: {start.log}")
        if self.name == SETTINGS and self.flipped not in texts:
            raise Lost(f"what was found is gone: {start.log}")

    def judge(self, start, served):
        if start.status not in (SERVED, DEGRADED):
            raise Lost(f"no start, {start.status}: {start.log}")
        self.require_kept(start)
        kind = self.kind_of(start, start.served == served)
        if kind is None:
            raise Lost(f"nothing tells that {self} was flipped, and it is "
                       f"{'not ' if start.served == served else ''}another value: {start.log}")
        return kind

    def kind_of(self, start, same):
        """None: nobody can have noticed. `same`: the values are those that were saved."""
        whole = start.files[SETTINGS] == self.intact[SETTINGS]
        if self.name == SHADOW_COPY:
            healed = same and whole and start.files[SHADOW_COPY] == self.intact[SHADOW_COPY]
            return REWRITTEN if healed and TWIN_WORDS in start.log else None
        if start.status == DEGRADED:
            return REFUSED if DEGRADED_WORDS in start.log else None
        if RECOVERED_WORDS in start.log:
            return HEALED if same and whole else None
        if EDITED_WORDS not in start.log:
            return None
        if same:
            return HARMLESS
        return EDIT if VALUE_WORDS in start.log else None

    def compare(self, build, starts, directory):
        """The quick start with the agent's own. Raises Lost."""
        try:
            quick = comparable(starts.start(self.lay_down(directory)))
            shutil.rmtree(directory)
            real = comparable(start_really(build, self.lay_down(directory), directory))
            if quick != real:
                raise Lost(f"{self}: the agent makes something else of it: {real[:2]} is not "
                           f"{quick[:2]}")
        finally:
            shutil.rmtree(directory, ignore_errors=True)
