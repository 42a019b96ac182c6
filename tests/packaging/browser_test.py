#!/usr/bin/python3
"""Looks at the catalogue's page of a package in a browser, from a file.

Usage: browser_test.py PACKAGES"""

import glob
import os
import re
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.ui import WebDriverWait

DRIVER = "/usr/bin/chromedriver"
PAGE = "usr/share/doc/lparams-doc/catalogue.html"
SETTING = "IKE.EXCHANGE_TIMEOUT"
WAIT_LIMIT = 60  # seconds

place = None  # where the package is unpacked


def start_browser(script=True):
    options = webdriver.ChromeOptions()
    # Its own page only, so it needs no sandbox, which containers and root do not let it have.
    for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                 f"--user-data-dir={tempfile.mkdtemp(dir=place)}"):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    if not script:
        options.add_experimental_option(
            "prefs", {"profile.managed_default_content_settings.javascript": 2})
    return webdriver.Chrome(options=options, service=Service(DRIVER))


class Page(unittest.TestCase):
    script = True

    @classmethod
    def setUpClass(cls):
        cls.browser = start_browser(cls.script)
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        self.open("")

    def open(self, fragment):
        self.browser.get("about:blank")
        self.browser.get("file://" + os.path.join(place, PAGE) + fragment)

    def shown(self):
        """Of each setting that has a place on the page, the text."""
        return dict(self.browser.execute_script("""
            return Array.from(document.querySelectorAll('tbody tr'))
                .filter(row => row.getClientRects().length > 0)
                .map(row => [row.id, row.innerText])"""))

    def headings(self):
        return [head.text for head in self.browser.find_elements(By.TAG_NAME, "h2") if head.text]


class WithScript(Page):
    def tearDown(self):
        self.assertEqual(self.browser.get_log("browser"), [])

    def press(self, *keys):
        self.browser.switch_to.active_element.send_keys(*keys)

    def focused(self):
        return self.browser.switch_to.active_element

    def count(self):
        return self.browser.find_element(By.ID, "count").text

    def test_search_for_a_name_and_see_its_limits(self):
        number = len(self.shown())
        self.assertGreater(number, 50)
        self.assertEqual(self.count(), f"{number} of {number} settings")
        self.press("/")
        self.press("ike.exchange_timeout")
        self.assertEqual(list(self.shown()), [SETTING])
        self.assertRegex(self.shown()[SETTING], r"\b60\b.*a whole number from 5 to 600")
        self.assertEqual(self.headings(), ["IKE"])
        self.assertEqual(self.count(), f"1 of {number} settings")
        self.press(Keys.ESCAPE)
        self.assertEqual(len(self.shown()), number)

    def test_search_for_words(self):
        self.press("/")
        self.press("_LL_DETAILS kernel")
        self.assertEqual(list(self.shown()), ["LOG.LOG_LEVEL_KERNEL"])
        self.press("x")
        self.assertEqual((self.shown(), self.headings()), ({}, []))

    def test_by_keyboard(self):
        self.press("/")
        self.press("exchange_timeout", Keys.ARROW_DOWN)
        self.assertEqual(self.focused().text, SETTING)
        self.press(Keys.ARROW_DOWN)
        self.assertEqual(self.focused().text, "IKE.SHORT_EXCHANGE_TIMEOUT")
        self.press(Keys.ENTER)
        WebDriverWait(self.browser, WAIT_LIMIT).until(
            lambda browser: browser.current_url.endswith("#IKE.SHORT_EXCHANGE_TIMEOUT"))
        self.assertEqual(self.focused().text, "IKE.SHORT_EXCHANGE_TIMEOUT")
        self.press(Keys.ARROW_UP)
        self.press(Keys.ARROW_UP)
        self.assertEqual(self.focused().get_attribute("id"), "search")

    def test_a_link_shows_its_setting(self):
        self.open("#USERS.PMP_TIMEOUT")
        row = self.browser.find_element(By.CSS_SELECTOR, "tr:target")
        self.assertTrue(row.text.startswith("USERS[USER].PMP_TIMEOUT"))
        top, height, seen = self.browser.execute_script(
            "const box = arguments[0].getBoundingClientRect();"
            "return [box.top, box.height, innerHeight]", row)
        self.assertTrue(0 <= top and top + height <= seen)

    def test_a_link_shows_what_is_hidden(self):
        self.press("/")
        self.press("POLICY")
        self.assertNotIn(SETTING, self.shown())
        self.browser.execute_script(f"location.hash = '{SETTING}'")
        WebDriverWait(self.browser, WAIT_LIMIT).until(lambda _: SETTING in self.shown())
        self.assertEqual(self.focused().text, SETTING)

    def test_dark_and_light(self):
        brightness = []
        for scheme in ("light", "dark"):
            self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
                "features": [{"name": "prefers-color-scheme", "value": scheme}]})
            body = self.browser.find_element(By.TAG_NAME, "body")
            for name in ("color", "background-color"):
                numbers = re.findall(r"\d+", body.value_of_css_property(name))[:3]
                brightness.append(sum(map(int, numbers)) / 3)
        text, back, dark_text, dark_back = brightness
        self.assertGreater(back - text, 150)
        self.assertGreater(dark_text - dark_back, 150)


class WithoutScript(Page):
    script = False

    def test_everything_is_there(self):
        self.assertGreater(len(self.shown()), 50)
        self.assertIn("a whole number from 5 to 600", self.shown()[SETTING])
        self.assertFalse(self.browser.find_element(By.ID, "search").is_displayed())


def main():
    global place
    [package] = glob.glob(os.path.join(sys.argv.pop(), "lparams-doc_*_all.deb"))
    with tempfile.TemporaryDirectory() as place:
        subprocess.run(["dpkg-deb", "-x", package, place], check=True)
        unittest.main(verbosity=2)


if __name__ == "__main__":
    main()
