#!/usr/bin/env python3
"""The collection passes those sanity tests of ansible-test that need no network. Ends with 77 where
there is no Ansible.

Usage: collection_test.py"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SKIPPED = 77  # exit status
COLLECTIONS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../packaging/ansible")
EXAMPLES = os.path.join(COLLECTIONS, "../../examples/fleet")
PROGRAMS = "/usr/lib/python3/dist-packages/ansible_test/_util/controller/sanity"
MODULES = ("confirm", "facts", "settings", "users")
SANITY = ("compile", "empty-init", "future-import-boilerplate", "ignores", "line-endings",
          "metaclass-boilerplate", "no-assert", "no-basestring", "no-dict-iteritems",
          "no-dict-iterkeys", "no-dict-itervalues", "no-get-exception", "no-illegal-filenames",
          "no-main-display", "no-smart-quotes", "no-unicode-literals", "replace-urlopen", "shebang",
          "symlinks", "use-argspec-type-path", "use-compat-six")


class Collection(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="collection-")
        self.addCleanup(place.cleanup)
        self.root = place.name
        shutil.copytree(os.path.join(COLLECTIONS, "ansible_collections"),
                        os.path.join(self.root, "ansible_collections"))
        self.collection = os.path.join(self.root, "ansible_collections/lparams/gateway")

    def run_there(self, *command):
        return subprocess.run(
            command, cwd=self.collection, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, check=False,
            env={"PATH": "/usr/bin:/bin", "HOME": self.root, "LC_ALL": "C.UTF-8",
                 "PYTHONPATH": self.root, "PYTHONDONTWRITEBYTECODE": "1",
                 "ANSIBLE_COLLECTIONS_PATH": self.root})

    def test_sanity(self):
        wanted = [word for name in SANITY for word in ("--test", name)]
        done = self.run_there("ansible-test", "sanity", "--python", "default", "--color", "no",
                              *wanted)
        self.assertEqual(done.returncode, 0, done.stdout)
        for name in SANITY:
            self.assertIn(f'Running sanity test "{name}"', done.stdout)

    def test_modules_are_valid_but_for_the_header_of_a_licence(self):
        done = self.run_there("/usr/bin/python3", f"{PROGRAMS}/validate-modules/validate.py",
                              "--format", "plain", "--arg-spec", "--collection",
                              "ansible_collections/lparams/gateway", "--collection-version",
                              "1.0.0", "plugins/modules")
        said = re.findall(r"^\S+/lparams_(\w+)\.py:\S+ E(\S+)", done.stdout, re.MULTILINE)
        self.assertEqual(sorted(said), [(name, "missing-gplv3-license") for name in MODULES],
                         done.stdout)
        self.assertEqual(len(done.stdout.splitlines()), len(MODULES), done.stdout)

    def test_yaml(self):
        done = self.run_there("yamllint", "-c", f"{PROGRAMS}/yamllint/config/default.yml", ".",
                              EXAMPLES)
        self.assertEqual((done.returncode, done.stdout), (0, ""))

    def test_the_document_shows_the_examples(self):
        with open(os.path.join(COLLECTIONS, "../../docs/fleet.md"), encoding="utf-8") as file:
            shown = re.findall(r"^```yaml\n(.*?)^```$", file.read(), re.MULTILINE | re.DOTALL)
        files = []
        for name in ("group_vars/gateways.yml", "gateways.yml", "port.yml"):
            with open(os.path.join(EXAMPLES, name), encoding="utf-8") as file:
                files.append(file.read())
        self.assertEqual(shown, files)

    def test_documentation_can_be_read(self):
        for name in MODULES:
            done = self.run_there("ansible-doc", "-t", "module", f"lparams.gateway.lparams_{name}")
            self.assertEqual(done.returncode, 0, done.stdout)
            self.assertIn("EXAMPLES:", done.stdout)
            self.assertNotIn("WARNING", done.stdout)


def main():
    for program in ("ansible-test", "yamllint"):
        if shutil.which(program, path="/usr/bin:/bin") is None:
            print(program, "is not there")
            sys.exit(SKIPPED)
    unittest.main(verbosity=2)


if __name__ == "__main__":
    main()
