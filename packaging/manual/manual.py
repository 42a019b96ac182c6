#!/usr/bin/env python3
"""Writes the source of a manual page, in Markdown.

Usage: manual.py program PROGRAM MORE    from the program's own --help and the sections in MORE
       manual.py catalogue PRINTER       from the program that prints the catalogue
       manual.py document FILE NAME WHAT from a document, with its links and its title taken out"""

import os
import re
import subprocess
import sys


def output(*command):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout


def prose(text):
    return re.sub(r"([\\`*_<>\[\]|~^#])", r"\\\1", text)


def head(name, what):
    return f"# NAME\n\n{name} - {what}\n"


class Help:
    """What a program or one of its verbs says to --help."""

    def __init__(self, *command):
        lines = output(*command, "--help").rstrip("\n").splitlines()
        self.summary = lines[0]
        self.usage = lines[1].removeprefix("Usage: ")
        self.lists = {}  # of "Positionals", "Options", "Subcommands": (term, meaning)
        at = 2
        while at < len(lines):
            title = lines[at].removesuffix(":")
            if title in ("Positionals", "Options", "Subcommands"):
                at = self.read_list(title, lines, at + 1)
            elif lines[at]:
                break
            else:
                at += 1
        self.notes = "\n".join(lines[at:]).split("\n\n")

    def read_list(self, title, lines, at):
        entries = self.lists.setdefault(title, [])
        while at < len(lines) and lines[at].startswith("  "):
            if lines[at].startswith(" " * 10):
                term, meaning = entries[-1]
                entries[-1] = (term, f"{meaning} {lines[at].strip()}".strip())
            else:
                term, _, meaning = lines[at].strip().partition("  ")
                entries.append((term.replace(",--", ", --"), meaning.strip()))
            at += 1
        return at


def definitions(entries):
    for term, meaning in entries:
        # The default of --module is where this build has it.
        term = re.sub(r"=\S*/lparams_server\.so", "", term)
        yield f"`{term}`\n\n:   {prose(meaning)}\n"


def paragraphs(notes):
    """Indented lines are meant as they stand."""
    for note in notes:
        plain, literal = [], []
        for line in note.splitlines():
            (literal if line.startswith(" ") else plain).append(line)
        if plain:
            yield prose("\n".join(plain)) + "\n"
        if literal:
            yield "```\n" + "\n".join(literal) + "\n```\n"


def verbs(program, words=()):
    """Each with its own verbs in its place, in the order of the help."""
    told = Help(program, *words)
    if words:
        yield words, told
    for name, _ in told.lists.get("Subcommands", []):
        yield from verbs(program, (*words, name))


def program_page(program, more):
    name = os.path.basename(program)
    told = Help(program)
    whatis = told.summary[0].lower() + told.summary[1:].rstrip(".").partition(", ")[0]
    yield head(name, prose(whatis))
    yield f"# SYNOPSIS\n\n`{told.usage}`\n"
    yield f"# DESCRIPTION\n\n{prose(told.summary)}\n"
    statuses = [note for note in told.notes if note.startswith("Exit status:")]
    yield from paragraphs(note for note in told.notes if note not in statuses)
    yield "# OPTIONS\n"
    yield from definitions(told.lists["Options"])
    of_verbs = list(verbs(program))
    if of_verbs:
        yield "# COMMANDS\n\nEach also takes the options above, before or behind its name.\n"
    for words, verb in of_verbs:
        yield f"## {' '.join(words)}\n\n`{verb.usage}`\n\n{prose(verb.summary)}.\n"
        yield from definitions(verb.lists.get("Positionals", []))
        yield from definitions(entry for entry in verb.lists["Options"]
                               if entry[0] != "-h, --help")
        yield from paragraphs(verb.notes)
    with open(more, encoding="utf-8") as file:
        yield file.read()
    yield "# EXIT STATUS\n"
    for note in statuses:
        for line in note.splitlines()[1:]:
            number, _, meaning = line.strip().partition("  ")
            yield f"`{number}`\n\n:   {prose(meaning)}\n"


def catalogue_page(printer):
    yield head("lparams-catalogue", "every setting of the VPN gateway")
    yield ("# DESCRIPTION\n\nThe settings by group, in the order of the settings file, with default "
           "and limits, which are inclusive. In lparamsctl(1) a setting is called GROUP.NAME, one of "
           "a user USERS\\[USER\\].NAME.\n")
    for line in output(printer).splitlines():
        if line.startswith("## "):
            yield "# " + line[3:] + "\n"
        elif re.match(r"\| \d+ \|", line):
            _, _, name, meaning, _, _, default, limits, where, _ = [
                cell.strip() for cell in line.split("|")]
            limits = re.sub(r"`([^`]+)` (-?\d+)", r"\1 (\2)", limits)
            yield (f"{name}\n\n:   {prose(meaning + '. ' if meaning else '')}Default: "
                   f"{default}. {prose(limits[0].upper() + limits[1:])}."
                   f"{' In the file only.' if where == 'file only' else ''}\n")
    yield "# SEE ALSO\n\nlparamsctl(1), localsettings.ini(5)\n"


def as_definitions(table):
    """Of each row its first two cells, and the others by their titles."""
    rows = [[cell.strip() for cell in line.strip("|").split("|")] for line in table]
    titles = rows[0]
    for row in rows[2:]:
        rest = ". ".join(f"{title}: {cell}" for title, cell in zip(titles[2:], row[2:]))
        yield f"{row[0]}\n\n:   {row[1]}. {rest}.\n"


def narrow_tables(text):
    """A line of a terminal is too short for more than four columns."""
    return re.sub(r"(?:^\|(?:[^|\n]*\|){5,}\n)+",
                  lambda table: "\n" + "\n".join(as_definitions(table[0].splitlines())), text,
                  flags=re.MULTILINE)


def document_page(path, name, what):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    text = re.sub(r"\[([^\]]+)\]\([^)]*\)", r"\1", text)
    text = re.sub(r"^# .*\n", "# DESCRIPTION\n", text, count=1)
    text = narrow_tables(text)
    code = False
    yield head(name, what)
    for line in text.splitlines():
        code ^= line.startswith("```")
        yield line if code else re.sub(r"^#(#+) ", r"\1 ", line)
    yield "\n# SEE ALSO\n\nlparamsctl(1), lparams\\_agent(8), lparams-catalogue(5)"


def main(arguments):
    pages = {"program": program_page, "catalogue": catalogue_page, "document": document_page}
    if not arguments or arguments[0] not in pages:
        print(__doc__, file=sys.stderr)
        return 2
    print("\n".join(pages[arguments[0]](*arguments[1:])))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
