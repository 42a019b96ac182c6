#!/usr/bin/env python3
"""Calls are failed only as they can fail."""

import os
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import errnos  # noqa: E402


def errors(name, arguments):
    return [effect for effect in errnos.effects(name, arguments) if effect.startswith("error=")]


class Errnos(unittest.TestCase):
    def test_what_a_process_tells_itself_arrives(self):
        # A signal that asio's handler cannot pass on would be lost.
        self.assertEqual(errors("write", '9<pipe:[4711]>, "\\17\\0\\0\\0", 4'), [])
        self.assertEqual(errors("write", '14<anon_inode:[eventfd]>, "\\1\\0\\0\\0", 8'), [])

    def test_what_it_tells_others_may_not(self):
        for arguments in ('2<pipe:[4711]>, "lparams_agent: ", 15', '1</dev/null>, "", 1',
                          '4</run/settings.new>, "/ROOT=", 6'):
            self.assertIn("error=EFBIG", errors("write", arguments))


if __name__ == "__main__":
    unittest.main()
