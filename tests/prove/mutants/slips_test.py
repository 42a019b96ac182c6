#!/usr/bin/env python3
"""What the finder of slips finds, and what it leaves alone."""

import os
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import slips  # noqa: E402

SOURCE = '''// f(); would be a call
#include "x.h"
namespace a {
constexpr int LIMIT = 16'384;  // bytes
class B : public C {
 public:
  explicit B(int x) : x_(x) {}
  void declared(int);
};
int f(const B& b, int n) {
  const MutexLock lock(mutex_);
  if (n < 3) return n;
  if (b.isOpen()) {
    b.close();
    log("f(); 77");
  }
  for (int i = 0; i < n; ++i) count(i + 1);
  width = n;
  height = 1;
  size = height;
  const Table t = {{1, 2}, {3, 4}};
  each([&](int one) { use(one); });
  if (::fsync(file) != 0) throw Failure(path);
  std::cout.flush();
  return n;
}
}  // namespace a
'''


class Slips(unittest.TestCase):
    def setUp(self):
        self.found = slips.slips_of("a/b.cc", SOURCE)

    def of(self, kind):
        return [(slip.before, slip.after) for slip in self.found if slip.kind == kind]

    def test_calls_locks_and_syncs_are_dropped(self):
        self.assertEqual(self.of(slips.DROPPED_CALL), [
            ("b.close();", ";"), ('log("f(); 77");', ";"),
            ("each([&](int one) { use(one); });", ";")])
        self.assertEqual(self.of(slips.DROPPED_LOCK), [("const MutexLock lock(mutex_);", ";")])
        self.assertEqual(self.of(slips.DROPPED_SYNC), [("::fsync(file)", "0"),
                                                       ("std::cout.flush();", ";")])

    def test_checks_are_dropped(self):
        self.assertEqual(self.of(slips.DROPPED_CHECK), [
            ("if (n < 3) return n;", ";"),
            ("if (b.isOpen()) ", "if (false && (b.isOpen())) "),
            ("if (::fsync(file) != 0) throw Failure(path);", ";")])

    def test_bounds_are_off_by_one(self):
        self.assertEqual(self.of(slips.OFF_BY_ONE), [(" < ", " <= "), (" < ", " <= "), (" + 1", "")])

    def test_constants_are_wrong(self):
        self.assertEqual(self.of(slips.WRONG_CONSTANT), [
            ("16'384", "16385"), ("3", "4"), ("2", "3"), ("3", "4"), ("4", "5")])

    def test_nothing_in_a_literal_is_a_slip(self):
        source = """constexpr const char* NOTES =
    R"~(Exit status: 64
f(); )" 65)~";
const char* const what = "66";
"""
        self.assertEqual(slips.slips_of("a/b.cc", source), [])

    def test_the_size_of_a_buffer_is_no_slip(self):
        source = "char digits[64];\nstd::array<char, 16 * 1024> chunk{};\nchar f(int x = 7);\n"
        self.assertEqual([slip.before for slip in slips.slips_of("a/b.cc", source)], ["7"])

    def test_options_may_be_in_any_order_but_two_positional_ones(self):
        flag, first, second = ('command.add_flag("--x", x, "X");',
                               'command.add_option("FIRST", first)->required();',
                               'command.add_option("SECOND", second);')
        for pair, swaps in (((flag, first), 0), ((first, "addJson(command, json);"), 0),
                            ((first, second), 1), ((flag, "f();"), 1)):
            source = "void add() {\n  " + "\n  ".join(pair) + "\n}\n"
            found = [slip for slip in slips.slips_of("a/b.cc", source)
                     if slip.kind == slips.SWAPPED_ORDER]
            self.assertEqual(len(found), swaps, pair)

    def test_neighbours_change_places_if_that_makes_a_difference(self):
        self.assertEqual(self.of(slips.SWAPPED_ORDER), [
            ('b.close();\n    log("f(); 77");', 'log("f(); 77");\n    b.close();'),
            ("height = 1;\n  size = height;", "size = height;\n  height = 1;")])

    def test_each_is_applied_where_it_is(self):
        constants = [slip for slip in self.found if slip.kind == slips.WRONG_CONSTANT]
        self.assertIn("if (n < 4)", constants[1].applied(SOURCE))
        self.assertIn("{{1, 2}, {4, 4}}", constants[3].applied(SOURCE))
        self.assertEqual(len({slip.key for slip in self.found}), len(self.found))

    def test_a_sample_takes_of_all_kinds(self):
        class First:
            def shuffle(self, some):
                some.sort(key=lambda slip: slip.key)
        taken = slips.sample(self.found, len(slips.KINDS), First())
        self.assertEqual({slip.kind for slip in taken}, set(slips.KINDS))

    def test_the_products_have_enough_of_them(self):
        root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.dirname(
            os.path.abspath(__file__)))))
        self.assertGreaterEqual(len(slips.stock(root)), 400)


if __name__ == "__main__":
    unittest.main()
