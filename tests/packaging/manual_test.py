#!/usr/bin/env python3
"""The manual pages: man(1) has nothing to say against them, and their options are those of --help.

Usage: manual_test.py BUILD_DIR"""

import os
import re
import shutil
import subprocess
import sys
import unittest

SKIPPED = 77  # exit status
PAGES = ("lparamsctl.1", "lparams_agent.8", "localsettings.ini.5", "lparams-catalogue.5",
         "lparams-bridge.7")

build = None


def rendered(page, width=200):
    """What man(1) shows, without bold, and what it complains of."""
    done = subprocess.run(
        ["man", "--warnings", "-l", os.path.join(build, "packaging/manual", page + ".gz")],
        env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": str(width), "MAN_KEEP_FORMATTING": "",
             "MANPAGER": "cat", "MAN_DISABLE_SECCOMP": "1"},
        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=True)
    return re.sub(r"\x1b\[[0-9;]*m|.\x08", "", done.stdout), done.stderr


def help_of(program, *verb):
    return subprocess.run([os.path.join(build, program), *verb, "--help"], check=True, text=True,
                          stdout=subprocess.PIPE).stdout


def options_in(text):
    """Those that are explained there, not those that are only spoken of."""
    return set(re.findall(r"^ +(?:-\w, ?)?(--[\w-]+)(?= |=|$)", text, re.MULTILINE))


def verbs_in(text):
    found = re.search(r"^Subcommands:\n((?: .*\n)+)", text, re.MULTILINE)
    return re.findall(r"^  (\S+)", found[1], re.MULTILINE) if found else []


def all_verbs(program, *verb):
    text = help_of(program, *verb)
    if verb:
        yield verb, text
    for name in verbs_in(text):
        yield from all_verbs(program, *verb, name)


class Manual(unittest.TestCase):
    def test_no_warning(self):
        for page in PAGES:
            with self.subTest(page):
                self.assertEqual(rendered(page, 80)[1], "")
                text, complaints = rendered(page)
                self.assertEqual(complaints, "")
                name = page.rsplit(".", 1)[0]
                self.assertRegex(text, rf"(?m)^NAME\n +{re.escape(name)} - \w")

    def test_options_of_the_agent(self):
        text, _ = rendered("lparams_agent.8")
        options = options_in(help_of("lparams_agent"))
        self.assertGreater(len(options), 5)
        self.assertEqual(options_in(text), options)

    def test_options_of_the_client_and_of_each_of_its_verbs(self):
        text, _ = rendered("lparamsctl.1")
        general, commands = re.split(r"^COMMANDS$", text, flags=re.MULTILINE)
        commands = re.split(r"^[A-Z]", commands, maxsplit=1, flags=re.MULTILINE)[0]
        self.assertEqual(options_in(general), options_in(help_of("lparamsctl")))
        parts = re.split(r"^   (\S.*)$", commands, flags=re.MULTILINE)[1:]
        shown = {tuple(verb.split()): options_in(part)
                 for verb, part in zip(parts[::2], parts[1::2])}
        told = {verb: options_in(help_text) - {"--help"}
                for verb, help_text in all_verbs("lparamsctl")}
        self.assertGreater(len(told), 10)
        self.assertEqual(shown, told)

    def test_every_setting_is_in_the_catalogue(self):
        text, _ = rendered("lparams-catalogue.5")
        with open(os.path.join(os.path.dirname(__file__), "../../docs/catalogue.md"),
                  encoding="utf-8") as file:
            names = re.findall(r"^\| \d+ \| `(\w+)`", file.read(), re.MULTILINE)
        self.assertGreater(len(names), 50)
        self.assertEqual(re.findall(r"^       ([A-Z]\w+)$", text, re.MULTILINE), names)


def main():
    global build
    build = sys.argv.pop()
    if shutil.which("man") is None:
        print("man is not there")
        sys.exit(SKIPPED)
    unittest.main(verbosity=2)


if __name__ == "__main__":
    main()
