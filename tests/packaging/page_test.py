#!/usr/bin/env python3
"""The catalogue's page for browsers: whole, well-formed, and on its own.

Usage: page_test.py BUILD_DIR"""

import os
import re
import sys
import unittest
import xml.etree.ElementTree as ElementTree

DOCUMENT = os.path.join(os.path.dirname(__file__), "../../docs/catalogue.md")
SIZE_LIMIT = 64 * 1024  # bytes of a page that is to stay small

path = None


def rows_of_document():
    """Of each parameter: group, name, meaning, default, limits and where it is, without marks."""
    with open(DOCUMENT, encoding="utf-8") as file:
        for line in file:
            if line.startswith("## "):
                group = line[3:].strip()
            elif re.match(r"\| \d+ \|", line):
                cells = [cell.strip().replace("`", "") for cell in line.split("|")]
                _, _, name, meaning, class_name, type_id, default, limits, where, _ = cells
                yield group, name, meaning, default, limits, where, f"{class_name} {type_id}"


class Page(unittest.TestCase):
    def setUp(self):
        self.page = ElementTree.parse(path).getroot()  # throws if it is not well-formed

    def test_every_setting_with_its_limits(self):
        shown = []
        for section in self.page.iter("section"):
            for row in section.findall("table/tbody/tr"):
                name, *cells = ["".join(cell.itertext()) for cell in row]
                group = section.get("id")
                self.assertEqual(section.findtext("h2"), group)
                owner, _, member = name.rpartition(".")
                self.assertEqual(owner, "USERS[USER]" if group == "USERS" else group)
                self.assertEqual(row.get("id"), f"{group}.{member}")
                shown.append((group, member, *cells))
        self.assertGreater(len(shown), 50)
        self.assertEqual(shown, list(rows_of_document()))

    def test_links_lead_to_what_is_there(self):
        places = [element.get("id") for element in self.page.iter() if element.get("id")]
        self.assertEqual(len(places), len(set(places)))
        for link in self.page.iter("a"):
            self.assertIn(link.get("href").removeprefix("#"), places)

    def test_nothing_from_elsewhere(self):
        with open(path, encoding="utf-8") as file:
            text = file.read()
        self.assertEqual(re.findall(r"//[a-z]|\bsrc=|@import|\burl\(|<link|\bfetch\b|XMLHttp", text), [])
        [policy] = [element.get("content") for element in self.page.iter("meta")
                    if element.get("http-equiv") == "Content-Security-Policy"]
        self.assertIn("default-src 'none';", policy)
        self.assertLess(len(text), SIZE_LIMIT)

    def test_no_search_without_script(self):
        self.assertEqual([form.get("hidden") for form in self.page.iter("form")], [""])


def main():
    global path
    path = os.path.join(sys.argv.pop(), "packaging/catalogue.html")
    unittest.main(verbosity=2)


if __name__ == "__main__":
    main()
