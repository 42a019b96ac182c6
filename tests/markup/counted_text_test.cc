// The platform's helpers for texts without a terminator.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <string_view>

#include "platform/markup_document.h"
#include "tests/support/readable_bytes.h"

using testing_support::inQuotes;

namespace {

bool equal(std::string_view left, std::string_view right) {
  return streq(left.data(), static_cast<unsigned>(left.size()), right.data(),
               static_cast<unsigned>(right.size()));
}

TEST(CountedText, IsEqualByteForByteOverItsWholeLength) {
  const std::string_view zero("a\0b", 3);
  const struct {
    std::string_view left, right;
    bool equal;
  } rows[] = {
      {"Module", "Module", true},
      {"Module", "module", false},
      {"Module", "Modul", false},
      {"Modul", "Module", false},
      {"", "", true},
      {"", "a", false},
      {zero, zero, true},
      {zero, "a", false},
      {zero, {"a\0c", 3}, false},
      {{}, {}, true},
      {{}, "", true},
      {"\xFF", "\xFF", true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(equal(row.left, row.right), row.equal) << inQuotes(row.left) << inQuotes(row.right);
  }
}

TEST(CountedText, IsReadAsADecimalNumber) {
  const struct {
    std::string_view text;
    int number;
  } rows[] = {
      {"0", 0},
      {"7", 7},
      {"101", 101},
      {"-5", -5},
      {"0012", 12},
      {"-0", 0},
      {"2147483647", INT_MAX},
      {"-2147483648", INT_MIN},
      {"0000000000009", 9},
  };
  const MLDoc document;
  for (const auto& row : rows) {
    const ChPair text{row.text.data(), row.text.data() + row.text.size()};
    int number = 99;
    EXPECT_TRUE(strtoint(text.begin, text.end, number)) << row.text;
    EXPECT_EQ(number, row.number) << row.text;
    EXPECT_EQ(document.getInt(text), row.number) << row.text;
  }
}

TEST(CountedText, ThatIsNoNumberAsAWholeIsRefused) {
  const MLDoc document;
  for (const std::string_view bytes :
       {"", " ", "-", "+5", "--5", "- 5", " 5", "5 ", "5\n", "5x", "0x10", "1.5", "1e3", "five",
        "2147483648", "-2147483649", "99999999999999999999"}) {
    const ChPair text{bytes.data(), bytes.data() + bytes.size()};
    int number = 99;
    EXPECT_FALSE(strtoint(text.begin, text.end, number)) << inQuotes(bytes);
    EXPECT_EQ(number, 99) << inQuotes(bytes);
    EXPECT_EQ(document.getInt(text), 0) << inQuotes(bytes);
  }
  int number = 99;
  EXPECT_FALSE(strtoint(nullptr, nullptr, number));
  EXPECT_EQ(document.getInt({}), 0);
}

TEST(CountedText, EndsWhereItsEndPointerSays) {
  const std::string_view digits = "12345";
  int number = 0;
  EXPECT_TRUE(strtoint(digits.data() + 1, digits.data() + 3, number));
  EXPECT_EQ(number, 23);
}

}  // namespace
