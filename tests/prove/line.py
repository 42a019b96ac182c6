"""What a line of the proof is, and what comes out of it."""

from typing import NamedTuple


class Outcome(NamedTuple):
    met: bool
    result: str  # in a few words, for the table
    figures: dict = {}  # for the JSON: name to number or text
    finds: tuple = ()  # each a text that says what was found, and how to see it again


class Control(NamedTuple):
    """A planted fault."""
    name: str
    found: bool
    how: str  # found, or missed


class CannotRun(Exception):
    """This machine lacks what the line needs; says what."""


class Line:
    NAME = ""
    TRIED = ""  # what is done to the product
    WANTED = ""
    MINUTES = 1  # of a whole run; what there is of time is shared in these proportions
    BUILDS = {}  # preset to the targets that have to be there before
    SHORT = False  # has a form of seconds for the tests, which builds nothing; see Context.short

    def run(self, context):
        """Returns an Outcome after about context.seconds, or raises CannotRun."""
        raise NotImplementedError

    def controls(self, context):
        """Plants faults one by one, and returns a Control for each, or raises CannotRun."""
        raise NotImplementedError
