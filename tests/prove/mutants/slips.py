"""Finds places where a programmer could have slipped, in sources as clang-format leaves them, and says
what would stand there. Works on the text: what does not compile is no slip, and is left out later."""

import dataclasses
import hashlib
import itertools
import os
import re

DROPPED_CALL = "dropped call"
SWAPPED_ORDER = "swapped order"
OFF_BY_ONE = "off by one"
DROPPED_SYNC = "dropped sync"
DROPPED_LOCK = "dropped lock"
WRONG_CONSTANT = "wrong constant"
DROPPED_CHECK = "dropped check"
KINDS = [DROPPED_SYNC, DROPPED_LOCK, SWAPPED_ORDER, DROPPED_CHECK, OFF_BY_ONE, DROPPED_CALL,
         WRONG_CONSTANT]

FOLDERS = ["lparams", "bridge", "agent", "client", "editing", "documents", "checking", "inspection",
           "markup", "schema", "platform", "programs", "text"]


@dataclasses.dataclass(frozen=True)
class Slip:
    """The text from `begin` to `end` of a file replaced by another one."""

    path: str
    kind: str
    begin: int
    end: int
    before: str
    after: str
    occurrence: int  # of the same text in this file, from 0

    @property
    def key(self):
        """Stays the same while the text around changes."""
        name = "\0".join([self.path, self.kind, self.before, self.after, str(self.occurrence)])
        return hashlib.sha256(name.encode()).hexdigest()[:10]

    def applied(self, text):
        assert text[self.begin:self.end] == self.before
        return text[:self.begin] + self.after + text[self.end:]

    def __str__(self):
        def line(text):
            return " ".join(text.split())[:90] or "(nothing)"
        return f"{self.key} {self.path}: {self.kind}: {line(self.before)} -> {line(self.after)}"


def masked(text):
    """The text with blanks in the place of comments, literals of characters and preprocessor lines."""
    pattern = re.compile(
        r'//[^\n]*|/\*.*?\*/|R"([^ ()\\\n]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Za-z_])\'(?:\\.|[^\'\\\n])+\''
        r"|^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", re.S | re.M)
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


@dataclasses.dataclass
class Statement:
    begin: int
    end: int  # behind its ";", or behind the head of a block, where its "{" is
    block: int  # which block it stands in
    opens: bool  # a block


OPENS_FUNCTION = re.compile(r"\)\s*(?:const|noexcept|override|final|mutable|->[^;]*|\s)*$|"
                            r"\b(?:else|do|try)\s*$|\)\s*:.*\)\s*$", re.S)
OPENS_SCOPE = re.compile(r"\b(?:namespace|class|struct|union|enum|extern)\b")


def statements(text):
    """The statements of all function bodies, in a text that masked() has made."""
    found = []
    stack = []  # of (is in a function, block)
    blocks = itertools.count()
    begin = depth = 0
    for at, sign in enumerate(text):
        if sign in "([":
            depth += 1
        elif sign in ")]":
            depth -= 1
        elif depth > 0:
            continue  # also the bodies of lambdas that are arguments
        elif sign == "{":
            head = text[begin:at]
            inside = bool(stack) and stack[-1][0]
            opens = not OPENS_SCOPE.search(head) and bool(OPENS_FUNCTION.search(head))
            if inside and not opens:
                stack.append((None, 0))  # an initialiser, or a lambda: a part of its statement
                continue
            if inside:
                found.append(Statement(begin, at, stack[-1][1], True))
            stack.append((inside or opens, next(blocks)))
            begin = at + 1
        elif sign == "}":
            if not stack:
                return found  # not what clang-format leaves
            if stack.pop()[0] is not None:
                begin = at + 1
        elif sign == ";" and not (stack and stack[-1][0] is None):
            if stack and stack[-1][0]:
                found.append(Statement(begin, at + 1, stack[-1][1], False))
            begin = at + 1
    for statement in found:
        while text[statement.begin].isspace():
            statement.begin += 1
    return [one for one in found if one.begin < one.end - (not one.opens)]


CALL = re.compile(r"(?:\(void\)\s*)?(?:\*?this->|::)?[\w:]+(?:(?:\.|->|\(\)\.|\(\)->)\w+)*\(.*\);$", re.S)
NO_CALL = re.compile(r"(?:return|throw|delete|using|static_assert|if|for|while|switch|assert|case)\b")
SYNC = re.compile(r"[^(]*(?:\b[fF]?[sS]ync|Sync|[fF]lush)")
LOCK = re.compile(r"(?:const )?[\w:]*(?:Lock|lock_guard|scoped_lock|unique_lock|shared_lock)\w*"
                  r"(?:<[^;]*>)? \w+[({].*;$", re.S)
GUARD = re.compile(r"if \([^;]*\) (?:return|throw|continue|break)\b.*;$", re.S)
ASSIGNMENT = re.compile(r"[\w.:>\-\[\]]+ [+\-|&]?= .*;$", re.S)
OPTION = re.compile(r'(?:app|command)\.add_\w+\("|add[A-Z]\w*\(command\b')
POSITIONAL = re.compile(r'command\.add_option\("(?!-)')
BUFFER = re.compile(r"(?:array<char, |\bchar \w+\[)[^;\n]*$")


def is_call(statement):
    if NO_CALL.match(statement) or not CALL.match(statement):
        return False
    depth = 0  # one call from its first "(" to the last ")"
    for at, sign in enumerate(statement[statement.startswith("(void)") and 6:]):
        depth += (sign == "(") - (sign == ")")
        if depth < 0:
            return False
    return depth == 0


def independent(first, second):
    """Whether two assignments are to different things that the other one does not look at."""
    targets = [ASSIGNMENT.match(one) and one.split(" ")[0] for one in (first, second)]
    return all(targets) and targets[0] not in second and targets[1] not in first


def in_any_order(first, second):
    """Whether two options of a command line are added: their order is that of the help alone."""
    both = first, second
    return all(OPTION.match(one) for one in both) and not all(POSITIONAL.match(one) for one in both)


def find(path, text):
    """All slips of a file, as (kind, begin, end, replacement)."""
    mask = masked(text)
    lines = statements(mask)
    for statement in lines:
        words = mask[statement.begin:statement.end]
        span = statement.begin, statement.end
        if statement.opens:
            condition = re.match(r"(if \()(.*)(\) )$", words, re.S)
            if condition and ";" not in words:
                inner = text[statement.begin + 4:statement.end - 2]
                yield DROPPED_CHECK, *span, f"if (false && ({inner})) "
        elif LOCK.match(words):
            yield DROPPED_LOCK, *span, ";"
        elif is_call(words):
            yield (DROPPED_SYNC if SYNC.search(words) else DROPPED_CALL), *span, ";"
        elif GUARD.match(words):
            yield DROPPED_CHECK, *span, ";"
    for match in re.finditer(r"::(?:fsync|fdatasync|syncfs)\(\w+\)", mask):
        yield DROPPED_SYNC, *match.span(), "0"
    for first, second in zip(lines, lines[1:]):
        if first.opens or second.opens or first.block != second.block:
            continue
        pair = mask[first.begin:first.end], mask[second.begin:second.end]
        movable = all(is_call(one) or (ASSIGNMENT.match(one) and not NO_CALL.match(one))
                      for one in pair)
        words = text[first.begin:first.end], text[second.begin:second.end]
        if (movable and not independent(*pair) and not in_any_order(*words)
                and mask[first.end:second.begin].isspace()):
            between = text[first.end:second.begin]
            yield (SWAPPED_ORDER, first.begin, second.end,
                   text[second.begin:second.end] + between + text[first.begin:first.end])
    bodies = [range(one.begin, one.end) for one in lines]
    others = {" < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " + 1": "", " - 1": ""}
    for match in re.finditer(r" (?:<|<=|>|>=) | [+\-] 1\b(?!')", mask):
        if any(match.start() in body for body in bodies):
            yield OFF_BY_ONE, *match.span(), others[match.group()]
    for match in re.finditer(r"(?<![\w.'])(?:0[xX][0-9A-Fa-f']+|[0-9][0-9']*)(?=[uUlL]*\b)", mask):
        number = int(match.group().replace("'", ""), 0 if "x" in match.group().lower() else 10)
        line_begin = mask.rfind("\n", 0, match.start()) + 1
        # That a buffer has a byte more, nobody can notice.
        if number > 1 and not BUFFER.search(mask[line_begin:match.start()]):
            yield WRONG_CONSTANT, *match.span(), str(number + 1)


def slips_of(path, text):
    seen = {}
    result = []
    for kind, begin, end, after in sorted(find(path, text), key=lambda one: one[1:3]):
        before = text[begin:end]
        if before == after:
            continue
        name = kind, before, after
        result.append(Slip(path, kind, begin, end, before, after, seen.setdefault(name, 0)))
        seen[name] += 1
    return result


def stock(root, of_a_file=2):
    """A fixed choice: of each product file so many, of different kinds; all syncs and locks."""
    chosen = []
    for folder in FOLDERS:
        for directory, _, names in sorted(os.walk(os.path.join(root, folder))):
            for name in sorted(names):
                if not name.endswith((".cc", ".h")):
                    continue
                path = os.path.relpath(os.path.join(directory, name), root)
                with open(os.path.join(root, path), encoding="utf-8") as file:
                    chosen += choice(slips_of(path, file.read()), of_a_file)
    return chosen


def choice(slips, number):
    by_kind = {}
    for slip in sorted(slips, key=lambda one: one.key):
        by_kind.setdefault(slip.kind, []).append(slip)
    rare = by_kind.pop(DROPPED_SYNC, []) + by_kind.pop(DROPPED_LOCK, [])
    # Which kind comes first differs from file to file.
    order = sorted(by_kind.values(), key=lambda some: some[0].key)
    turns = [slip for turn in itertools.zip_longest(*order) for slip in turn if slip]
    return rare + turns[:number]


def sample(slips, number, random):
    """So many, of all kinds alike as far as there are some."""
    queues = {kind: [slip for slip in slips if slip.kind == kind] for kind in KINDS}
    for queue in queues.values():
        random.shuffle(queue)
    taken = []
    while len(taken) < number and any(queues.values()):
        for queue in queues.values():
            if queue and len(taken) < number:
                taken.append(queue.pop())
    return taken
